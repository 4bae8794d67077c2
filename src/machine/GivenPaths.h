#pragma once

#include <cstdint>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What a path on a command line names: relative ones begin in the current folder; and how much can
/// still be put there.
class GivenPaths {
 public:
  virtual ~GivenPaths() = default;

  /// The full path as machine::Files takes it: drive or share, "\" between the levels, no trailing
  /// one unless it is a root. Nothing is looked up. An empty text answers 161.
  virtual SystemCode fullPath(const std::string& given, std::string& full) = 0;

  /// Bytes that this user can still write below an existing folder; `full` as fullPath gives it.
  /// Nothing is written. A missing folder answers 2 or 3.
  virtual SystemCode room(const std::string& full, std::uint64_t& bytes) = 0;

  /// What stands between the levels of a path that a user reads: "\" or "/".
  virtual char separator() const = 0;
};

}  // namespace trelv::machine
