#pragma once

#include <string>

#include "base/Codes.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvInfo {

/// Is the product installed on its own on this machine, outside the host product? Runs
/// its presence check, which fills the product information record, and tells the answer in log and
/// product report. Never raises: a failure is told in one log line and answers false.
bool VerifyInstallationMode(Program& program, Product productCode);

/// Does a folder's path lead to another machine? False for a local drive and for a share of this
/// computer, be it named by a connected drive's letter or as \\server\share. The path of a
/// connected drive is replaced by that of its share or device.
bool IsServerPathRemote(Program& program, std::string& path);

}  // namespace trelv::modProdTrelvInfo
