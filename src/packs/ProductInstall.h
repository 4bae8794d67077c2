#pragma once

#include <string>

#include "platform/Program.h"

/// Installation of one product from its pack, without forms.
namespace trelv::modProdTrelvManager {

/// Opens the pack (a file name in the manager's own folder) into the host server folder
/// `targetFolder`, which loses one trailing backslash, and refreshes the manager's client copy.
void InstallSingleProdottoComplementareIntegrato(Program& program, const std::string& productName,
                                                 std::string& targetFolder,
                                                 const std::string& packName);

/// Opens the pack into the temporary folder and runs the product's set-up from there.
void InstallSingleProdottoComplementareStandAlone(Program& program, const std::string& productId,
                                                  const std::string& packName);

}  // namespace trelv::modProdTrelvManager
