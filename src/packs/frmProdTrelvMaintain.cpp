#include "packs/frmProdTrelvMaintain.h"

// Not built yet

namespace trelv::frmProdTrelvMaintain {

void showModal(Program& /*program*/) {}

}  // namespace trelv::frmProdTrelvMaintain
