#pragma once

#include "machine/Automation.h"
#include "machine/Clock.h"
#include "machine/Desktop.h"
#include "machine/Environment.h"
#include "machine/Exclusion.h"
#include "machine/Files.h"
#include "machine/HostLibraries.h"
#include "machine/Locale.h"
#include "machine/Processes.h"
#include "machine/ProfileFiles.h"
#include "machine/Registry.h"
#include "machine/SystemFacts.h"
#include "machine/VersionResources.h"

namespace trelv::machine {

/// All that the program asks of Windows. References only; the owner outlives every user.
struct Machine {
  Files& files;
  ProfileFiles& profiles;
  Registry& registry;
  Processes& processes;
  Environment& environment;
  SystemFacts& system;
  Clock& clock;
  Locale& locale;
  VersionResources& versions;
  ConfigurationLibrary& configuration;
  SupportLibrary& support;
  Desktop& desktop;
  Automation& automation;
  Exclusion& exclusion;
};

}  // namespace trelv::machine
