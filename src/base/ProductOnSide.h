#pragma once

#include <string>

#include "base/Codes.h"

namespace trelv {

/// One product on one side of an installation.
struct ProductOnSide {
  /// Letter by letter as the catalogue has it.
  std::string id;
  Side side = Side::None;
};

}  // namespace trelv
