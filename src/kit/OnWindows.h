#pragma once

#include "machine/SystemFacts.h"

namespace trelv::kit {

/// Is this a Windows? Elsewhere there is none whose version could be asked for.
bool isWindows(machine::SystemFacts& system);

}  // namespace trelv::kit
