#pragma once

#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What a path on a command line names: relative ones begin in the current folder.
class GivenPaths {
 public:
  virtual ~GivenPaths() = default;

  /// The full path as machine::Files takes it: drive or share, "\" between the levels, no trailing
  /// one unless it is a root. Nothing is looked up. An empty text answers 161.
  virtual SystemCode fullPath(const std::string& given, std::string& full) = 0;

  /// What stands between the levels of a path that a user reads: "\" or "/".
  virtual char separator() const = 0;
};

}  // namespace trelv::machine
