#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Brings the version records to four fields where Dovra is at one release before 11.0, whose
/// set-ups left them wrong. Acts on the server's and on the client's record, on each only once: a
/// "ZB" of "09.93.00" or "09.93.00.…" tells that it was here. `serverPath` has no trailing
/// backslash. Never raises; each failure is one log line.
void CorrectDovraBefore11(Program& program, const std::string& serverPath);

}  // namespace trelv::modProdTrelvManager
