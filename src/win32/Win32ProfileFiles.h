#pragma once

#include "machine/ProfileFiles.h"

namespace trelv::win32 {

/// Ini files through the platform's ANSI functions.
class Win32ProfileFiles : public machine::ProfileFiles {
 public:
  std::string readValue(const std::string& section, const std::string& key,
                        const std::string& defaultValue, std::uint32_t size,
                        const std::string& file) override;
  std::uint32_t writeValue(const std::string& section, const std::string& key,
                           const std::string& value, const std::string& file) override;
};

}  // namespace trelv::win32
