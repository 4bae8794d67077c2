#pragma once

#include <stdexcept>
#include <string>

#include "base/SystemCode.h"

namespace trelv::kit {

/// A verb could not do its work: ends it with exit code 2 and one line on standard error.
class Failure : public std::runtime_error {
 public:
  /// `path` as the user named it, `reason` in Italian without a final stop.
  Failure(const std::string& path, const std::string& reason)
      : std::runtime_error(path + ": " + reason) {}
  /// The reason is what the system's code means.
  Failure(const std::string& path, SystemCode code);
};

/// The command line asks for what there is not: exit code 64.
class WrongUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace trelv::kit
