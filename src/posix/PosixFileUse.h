#pragma once

#include <optional>
#include <string>

#include "machine/FileUse.h"

namespace trelv::posix {

/// A file that a process of this system has open is known as such where its user may see that;
/// those of other computers are not.
class PosixFileUse : public machine::FileUse {
 public:
  SystemCode owner(const std::string& path, std::string& account) override;
  std::optional<bool> isOpen(const std::string& path) override;
  SystemCode removeUnused(const std::string& path, const machine::FileFacts& seen) override;
};

}  // namespace trelv::posix
