#pragma once

#include <cstdint>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What is done to files that were built, once they are whole. Paths as machine::Files takes them;
/// each method answers the system's code.
class FinishedFiles {
 public:
  virtual ~FinishedFiles() = default;

  /// Sets when a file or folder was last changed: 100 ns since 1601-01-01 UTC. What is made in a
  /// folder changes its time again.
  virtual SystemCode setModified(const std::string& path, std::uint64_t modified) = 0;

  /// Renames a folder with all that is in it on the same volume. Never replaces: where something
  /// stands at `target` it answers 183.
  virtual SystemCode moveFolder(const std::string& source, const std::string& target) = 0;
};

}  // namespace trelv::machine
