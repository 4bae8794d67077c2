#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Does this machine have products that were installed without the host, beside which no
/// integrated one may be put? `list` receives their display names, one a line, each with CR LF. A
/// machine with an integration record has none, whatever stands there. Never raises.
bool EsisteProdottoComplementareStandalone(Program& program, std::string& list);

}  // namespace trelv::modProdTrelvManager
