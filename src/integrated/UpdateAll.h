#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Brings every product of the server's catalogue up to date on server and client. Never raises;
/// each failure is logged and the procedure goes on. Paths have no trailing backslash.
void UpdateAllProdottiComplementari(Program& program, const std::string& serverPath,
                                    const std::string& integrationPath,
                                    const std::string& programsPath);

}  // namespace trelv::modProdTrelvManager
