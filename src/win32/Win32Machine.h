#pragma once

#include "machine/Machine.h"
#include "win32/HostLibraryFile.h"
#include "win32/Win32Automation.h"
#include "win32/Win32Clock.h"
#include "win32/Win32ConfigurationLibrary.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Environment.h"
#include "win32/Win32Exclusion.h"
#include "win32/Win32Files.h"
#include "win32/Win32Locale.h"
#include "win32/Win32Processes.h"
#include "win32/Win32ProfileFiles.h"
#include "win32/Win32Registry.h"
#include "win32/Win32SupportLibrary.h"
#include "win32/Win32SystemFacts.h"
#include "win32/Win32VersionResources.h"

namespace trelv::win32 {

/// Owner of everything that stands for this Windows machine.
struct Win32Machine {
  Win32Files files;
  Win32ProfileFiles profiles;
  Win32Registry registry;
  Win32Processes processes;
  Win32Environment environment;
  Win32SystemFacts system;
  Win32Clock clock;
  Win32Locale locale;
  Win32VersionResources versions;
  Win32ConfigurationLibrary hostConfiguration{LibraryFolders::ofThisProcess()};
  Win32SupportLibrary support{LibraryFolders::ofThisProcess()};
  Win32Desktop desktop;
  Win32Automation automation;
  Win32Exclusion exclusion;

  /// What a program asks this machine through, with the host suite's store.
  machine::Machine machine() {
    return {files,  profiles, registry,          processes, environment, system,     clock,
            locale, versions, hostConfiguration, support,   desktop,     automation, exclusion};
  }
};

}  // namespace trelv::win32
