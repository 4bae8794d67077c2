#pragma once

#include <string>

#include "kit/Workplace.h"

namespace trelv::kit {

/// A path of the command line: what the program works with, and what the user reads.
class GivenPath {
 public:
  /// Raises Failure where the text is no path.
  GivenPath(machine::GivenPaths& paths, const std::string& given);

  /// As machine::Files takes it, without trailing backslash unless it is a root.
  const std::string& full() const { return full_; }
  /// As it was given, without a trailing separator.
  const std::string& given() const { return given_; }
  /// How a full path is shown: one at or below this path begins as this was given; any other stays.
  std::string shown(const std::string& fullPath) const;

 private:
  std::string given_;
  std::string full_;
  char separator_;
};

}  // namespace trelv::kit
