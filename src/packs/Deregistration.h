#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Deregisters every ActiveX control (extension "ocx", lower case) of `folder`, which has no
/// trailing backslash, one command after the other. A command that cannot be started is reported
/// and the next one follows. Never raises: a run-time failure ends it with one log line.
void DeregisterOcxInFolder(Program& program, const std::string& folder);

}  // namespace trelv::modProdTrelvManager
