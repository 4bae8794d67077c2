#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// The four numbers of a fixed file version: major, minor, build, revision.
using FileVersion = std::array<std::uint16_t, 4>;

/// Version resources of program files.
class VersionResources {
 public:
  virtual ~VersionResources() = default;

  /// Reads the fixed file version. A file without version resource answers 1812, a missing one 2.
  virtual SystemCode read(const std::string& path, FileVersion& version) = 0;
};

}  // namespace trelv::machine
