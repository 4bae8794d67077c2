#pragma once

#include <cstdint>

#include "platform/Program.h"

namespace trelv::modProdTrelvInfo {

/// Looks for a product on server and workstation and puts all that it learns (sides, versions,
/// folders) into the product information record, replacing it whole; the product report has each
/// step. `productCode` is a product number (10 to 70); any other changes nothing. What is missing
/// or cannot be read counts as absent.
void CheckProduct(Program& program, std::int32_t productCode);

}  // namespace trelv::modProdTrelvInfo
