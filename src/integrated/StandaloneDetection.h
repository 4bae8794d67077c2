#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Is a complementary product installed on its own on this machine, so that an integrated
/// installation must not be mixed in? `list` receives the display names, each followed by CR LF.
/// False on a machine that has the integration record. `serverPath` is accepted but not used.
bool EsisteProdottoComplementareStandalone(Program& program, const std::string& serverPath,
                                           std::string& list);

}  // namespace trelv::modProdTrelvManager
