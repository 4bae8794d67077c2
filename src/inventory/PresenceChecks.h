#pragma once

#include <cstdint>

#include "platform/Program.h"

namespace trelv::modProdTrelvInfo {

/// Finds out whether a product is on this machine, on which side, at which version and in which
/// folders. Fills the product information record whole and tells each step in the product report.
/// `productCode` is a product number (10 to 70); any other changes nothing. What is missing or
/// cannot be read counts as absent.
void CheckProduct(Program& program, std::int32_t productCode);

}  // namespace trelv::modProdTrelvInfo
