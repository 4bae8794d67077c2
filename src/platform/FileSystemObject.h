#pragma once

#include <string>
#include <vector>

#include "machine/Files.h"

namespace trelv {

/// The file-system object that the whole process shares: the semantics of the scripting run-time
/// library's object over the machine's files. Failures are raised as RuntimeError (53, 58, 70, 76,
/// ...) whose description names the path. Paths are UTF-8.
class FileSystemObject {
 public:
  explicit FileSystemObject(machine::Files& files) : files_(files) {}

  /// Exact kinds: a file is no folder and the other way round. Empty text is false; a trailing
  /// backslash is fine for a folder and false for a file. Never raises.
  bool fileExists(const std::string& path);
  bool folderExists(const std::string& path);

  /// Makes one folder. Raises 58 when it exists, 76 when its parent is missing.
  void createFolder(const std::string& path);

  /// Deletes one file; raises 53 when missing, 70 when read-only (unless `force`).
  void deleteFile(const std::string& path, bool force);

  /// Deletes a folder with everything in it, read-only content included when `force`. A link or
  /// junction, the folder itself included, is removed and what it points to left alone. Raises 76
  /// when missing, 70 for a root; the first failure ends it.
  void deleteFolder(const std::string& path, bool force);

  /// Parent of a path, as text only: C:\a\b gives C:\a, C:\a gives C:\,
  /// \\srv\share\x gives \\srv\share, that gives \\srv;
  /// C:\, \\srv and a bare name give "".
  static std::string parentFolderName(const std::string& path);

 private:
  machine::Files& files_;
};

/// Gives the shared object. Implemented by startup/modProdTrelvLibrary.
class FileSystemObjects {
 public:
  virtual ~FileSystemObjects() = default;
  /// The shared object, made on first use; null (after a report) when it cannot be made.
  virtual FileSystemObject* fileSystemObject() = 0;
};

}  // namespace trelv
