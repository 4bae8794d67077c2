#include "packs/PackExtraction.h"

// Not built yet

namespace trelv::modProdTrelvManager {

bool OpenZipPacksInFolder(Program& /*program*/, const std::string& /*folder*/,
                          const std::string& /*target*/, bool /*removePacks*/) {
  return true;
}

}  // namespace trelv::modProdTrelvManager
