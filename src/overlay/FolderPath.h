#pragma once

#include <string>
#include <vector>

namespace trelv::overlay {

/// A path taken apart as the system reads it, without asking it: "/" counts as "\", "." and ".."
/// are resolved as text, trailing blanks and points of names go; a literal path ("\\?\C:\a") is
/// taken as it stands.
struct FolderPath {
  /// "C:\", "\\server\share", "\\?\C:\"; "\", "C:." and "." for what depends on the current drive
  /// or folder.
  std::string root;
  std::vector<std::string> levels;
  /// Written with a separator behind its last level, so that it can mean a folder only.
  bool namesFolder = false;
};

/// Never called with an empty path.
FolderPath folderPath(const std::string& path);

/// A name in a folder: "C:\" and "a" give "C:\a".
std::string joined(const std::string& folder, const std::string& name);

}  // namespace trelv::overlay
