#include "integrated/StandaloneDetection.h"

// Not built yet

namespace trelv::modProdTrelvManager {

bool EsisteProdottoComplementareStandalone(Program& /*program*/, const std::string& /*serverPath*/,
                                           std::string& /*list*/) {
  return false;
}

}  // namespace trelv::modProdTrelvManager
