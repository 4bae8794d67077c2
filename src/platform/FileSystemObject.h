#pragma once

#include <cstdint>
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

  /// False only where nothing is known to stand: a path that cannot be looked at counts as there.
  /// Never raises.
  bool mayExist(const std::string& path);

  /// Raises 70 where a read-only file or a folder stands: a rename would get past what a copy has
  /// to respect. Raises too when the path cannot be looked at.
  void requireReplaceable(const std::string& path);

  /// Makes one folder. Raises 58 when it exists, 76 when its parent is missing.
  void createFolder(const std::string& path);

  /// Deletes one file; raises 53 when missing, 70 when read-only (unless `force`).
  void deleteFile(const std::string& path, bool force);
  /// The same, false where it is missing, also when somebody else deletes it at that moment.
  bool deleteFileIfThere(const std::string& path, bool force);

  /// Deletes a folder with everything in it, read-only content included when `force`. A link or
  /// junction, the folder itself included, is removed and what it points to left alone. Raises 76
  /// when missing, 70 for a root; the first failure ends it. However deep it is: the stack does not
  /// grow with it.
  void deleteFolder(const std::string& path, bool force);

  /// Copies one file, its last-modified time and its attributes included. `target` names the copy;
  /// with a trailing backslash it is an existing folder that gets a copy of the same name. Raises
  /// 53 when the source is missing or a folder, 76 when the target's folder is missing, 58 when the
  /// target exists and not `overwrite`, 70 for a target that is a folder, is read-only (also with
  /// `overwrite`) or is in use.
  void copyFile(const std::string& source, const std::string& target, bool overwrite = true);

  /// What stands in a folder, sub-folders left out, unsorted: as the file system hands it out.
  /// One opening. `ending`: those whose names end so are enough, in any case; others may come too.
  /// Raises 76 when it is missing.
  std::vector<machine::FolderEntry> fileEntries(const std::string& folder,
                                                const std::string& ending = {});
  /// Their names, and the names of the folders in the same order.
  std::vector<std::string> files(const std::string& folder);
  std::vector<std::string> folders(const std::string& folder);

  /// When a file was last changed, in whole seconds since 1601-01-01 UTC: changes within the same
  /// second are equal. Raises 53 when it is missing or a folder.
  std::uint64_t dateLastModified(const std::string& path);

  /// The lines of a text file as bytes, without their ends: CR LF or LF ends a line, a lone CR does
  /// not; a last line without end counts, nothing after the last end does not. Raises 53 or 76 when
  /// missing.
  std::vector<std::string> readLines(const std::string& path);
  /// Makes or replaces a text file with exactly these bytes.
  void writeText(const std::string& path, const std::string& bytes);

  /// Does the path name the folder, or something in it? Told from the texts, without regard to
  /// case.
  static bool liesAtOrIn(const std::string& path, const std::string& folder);

  /// The root of a drive, with or without its backslash, or of a share?
  static bool isRoot(const std::string& folder);

  /// Parent of a path, as text only: C:\a\b gives C:\a, C:\a gives C:\,
  /// \\srv\share\x gives \\srv\share, that gives \\srv;
  /// C:\, \\srv and a bare name give "".
  static std::string parentFolderName(const std::string& path);

 private:
  machine::Files& files_;
};

}  // namespace trelv
