#pragma once

#include "platform/Program.h"

/// The maintenance form: removal and repair of one integrated product.
namespace trelv::frmProdTrelvMaintain {

/// Shows the form modally and returns when it closes.
void showModal(Program& program);

}  // namespace trelv::frmProdTrelvMaintain
