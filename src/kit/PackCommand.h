#pragma once

#include <string>

#include "overlay/OverlayProcesses.h"

namespace trelv::kit {

/// Takes the manager's command lines apart that open packs: 7-Zip's and the decoder's, which lie in
/// `managerFolder` (full path without trailing backslash).
overlay::FindUnpacking packCommands(const std::string& managerFolder);

}  // namespace trelv::kit
