#pragma once

#include <optional>
#include <string>

#include "machine/FileUse.h"

namespace trelv::win32 {

class Win32FileUse : public machine::FileUse {
 public:
  SystemCode owner(const std::string& path, std::string& account) override;
  std::optional<bool> isOpen(const std::string& path) override;
  SystemCode removeUnused(const std::string& path, const machine::FileFacts& seen) override;
};

}  // namespace trelv::win32
