#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Runs the set-up or update commands of every selected product (see ProgramState) that the
/// catalogue below `rootFolder` (no trailing backslash) lists. Whether a product is set up or
/// updated, and on which side, is what its presence check finds. How the runs end is not told to
/// the caller. Never raises; a failure is reported, logged and ends it.
void ExecuteDirectSetup(Program& program, const std::string& rootFolder);

}  // namespace trelv::modProdTrelvManager
