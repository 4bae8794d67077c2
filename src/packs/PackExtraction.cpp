#include "packs/PackExtraction.h"

// Not built yet

namespace trelv::modProdTrelvManager {

bool OpenZipPacksInFolder(Program& /*program*/, const std::string& /*folder*/,
                          const std::string& /*target*/, bool /*removePacks*/) {
  return true;
}

bool OpenZipPack(Program& /*program*/, const std::string& /*zipPath*/,
                 const std::string& /*destination*/, bool /*removePack*/) {
  return true;
}

void OpenFolderPacks(Program& /*program*/, const std::string& /*folder*/,
                     const std::string& /*target*/) {}

void OpenSinglePacks(Program& /*program*/, const std::string& /*packPath*/,
                     const std::string& /*target*/) {}

}  // namespace trelv::modProdTrelvManager
