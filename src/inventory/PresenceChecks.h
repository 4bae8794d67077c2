#pragma once

#include "base/Codes.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvInfo {

/// Looks for a product on server and workstation and puts all that it learns (sides, versions,
/// folders) into the product information record, replacing it whole; the product report has each
/// step. Products from Veltra on and Undefined change nothing. What is missing or cannot be read
/// counts as absent.
void CheckProduct(Program& program, Product productCode);

}  // namespace trelv::modProdTrelvInfo
