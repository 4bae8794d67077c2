#pragma once

#include <string>

#include "platform/Program.h"

/// Installation of one product from its pack, without forms. The pack is a file name in the
/// manager's own folder. Neither raises: a failure is reported and logged; a pack that cannot be
/// opened is told by whoever opens it and does not end the installation.
namespace trelv::modProdTrelvManager {

/// Opens the pack for the host's server, whose folder is `targetFolder` (a trailing backslash is
/// taken off), brings the manager's client copy up to date and tells the user. The product's set-up
/// does not run here but when the host starts a product the next time.
void InstallSingleProdottoComplementareIntegrato(Program& program, const std::string& productName,
                                                 std::string& targetFolder,
                                                 const std::string& packName);

/// Opens the pack into the temporary folder, runs the set-up of `productId`, the only selected
/// product from then on, from there, and deletes what was unpacked.
void InstallSingleProdottoComplementareStandAlone(Program& program, const std::string& productId,
                                                  const std::string& packName);

}  // namespace trelv::modProdTrelvManager
