#pragma once

#include <optional>
#include <string>

#include "base/SystemCode.h"
#include "machine/Files.h"

namespace trelv::machine {

/// A file is not the one any more that was looked at.
constexpr SystemCode kFileChanged = 1006;

/// Who has to do with a file. Paths as in Files. Nothing here waits, and no question is in
/// anybody's way: the file is not opened for reading, writing or deleting.
class FileUse {
 public:
  virtual ~FileUse() = default;

  /// The account that owns a file, with its domain or computer where the system names one
  /// ("STAZIONE\mario"). Missing answers 2 or 3, an account that is not known any more another
  /// code.
  virtual SystemCode owner(const std::string& path, std::string& account) = 0;

  /// Does another process have the file open? Nothing where the system does not tell, a file of
  /// another computer for example.
  virtual std::optional<bool> isOpen(const std::string& path) = 0;

  /// Removes a file that nobody has open, in one step: one that somebody has open, in whatever way,
  /// stays and answers 32, a read-only one 5. One that was made anew or written since it was looked
  /// at (`seen`) stays and answers kFileChanged.
  virtual SystemCode removeUnused(const std::string& path, const FileFacts& seen) = 0;
};

}  // namespace trelv::machine
