#pragma once

#include <string>

#include "base/InstallationPaths.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Brings every product of the server's catalogue up to date on server and client, after the checks
/// that may refuse it (integration with another server, a blocking suite, a standalone product).
/// Never raises; each failure is one log line and the procedure goes on. Returns early, without its
/// closing log line, when refused or when a product update run says to stop.
void UpdateAllProdottiComplementari(Program& program, const InstallationPaths& paths);

/// Text of the box that tells of products installed on their own; `list` as
/// EsisteProdottoComplementareStandalone gives it.
std::string standaloneRefusal(const std::string& list);

}  // namespace trelv::modProdTrelvManager
