#pragma once

#include "machine/VersionResources.h"

namespace trelv::win32 {

/// Version resources through the system's version library.
class Win32VersionResources : public machine::VersionResources {
 public:
  SystemCode read(const std::string& path, machine::FileVersion& version) override;
};

}  // namespace trelv::win32
