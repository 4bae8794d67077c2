#pragma once

#include "machine/Machine.h"
#include "posix/Absent.h"
#include "posix/PosixFiles.h"
#include "posix/PosixLocale.h"
#include "posix/PosixProfileFiles.h"
#include "posix/PosixSystem.h"

namespace trelv::posix {

/// Owner of everything that stands for this Linux system.
struct PosixMachine {
  PosixFiles files;
  PosixLocale locale;
  PosixProfileFiles profiles{files, locale};
  NoRegistry registry;
  NoPrograms processes;
  PosixEnvironment environment;
  PosixSystemFacts system;
  PosixClock clock;
  PosixVersionResources versions{files};
  NoStore store;
  NoSupport support;
  NoDesktop desktop;
  NoAutomation automation;
  PosixExclusion exclusion;

  machine::Machine machine() {
    return {files,  profiles, registry, processes, environment, system,     clock,
            locale, versions, store,    support,   desktop,     automation, exclusion};
  }
};

}  // namespace trelv::posix
