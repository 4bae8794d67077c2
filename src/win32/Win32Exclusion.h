#pragma once

#include "machine/Exclusion.h"

namespace trelv::win32 {

/// Marks are files that are opened without write sharing and deleted by the system with their last
/// handle.
class Win32Exclusion : public machine::Exclusion {
 public:
  SystemCode take(const std::string& path, const std::string& text, std::uint32_t milliseconds,
                  std::unique_ptr<machine::Mark>& mark) override;
};

}  // namespace trelv::win32
