#include "packs/ProductInstall.h"

// Not built yet

namespace trelv::modProdTrelvManager {

void InstallSingleProdottoComplementareIntegrato(Program& /*program*/,
                                                 const std::string& /*productName*/,
                                                 std::string& /*targetFolder*/,
                                                 const std::string& /*packName*/) {}

void InstallSingleProdottoComplementareStandAlone(Program& /*program*/,
                                                  const std::string& /*productId*/,
                                                  const std::string& /*packName*/) {}

}  // namespace trelv::modProdTrelvManager
