#pragma once

#include <cstddef>
#include <string>

#include "base/SystemCode.h"

namespace trelv::decoder {

/// A pack's bytes, read once from beginning to end.
class PackInput {
 public:
  virtual ~PackInput() = default;

  /// Full path, for the user.
  virtual std::string path() const = 0;
  /// Reads up to `size` bytes; `count` tells how many came and is 0 at the end only.
  virtual SystemCode read(char* buffer, std::size_t size, std::size_t& count) = 0;
};

}  // namespace trelv::decoder
