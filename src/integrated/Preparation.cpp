#include "integrated/Preparation.h"

// Not built yet

namespace trelv::modProdTrelvManager {

void PreparaInstSrvAll(Program& /*program*/, const std::string& /*serverPath*/) {}

void PreparaInstClientAll(Program& /*program*/, const std::string& /*serverPath*/,
                          const std::string& /*programsPath*/) {}

}  // namespace trelv::modProdTrelvManager
