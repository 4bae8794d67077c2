#include "interactive/modProdTrelvInteractive.h"

// Not built yet

namespace trelv::modProdTrelvInteractive {

void StartInstall(Program& /*program*/) {}

}  // namespace trelv::modProdTrelvInteractive
