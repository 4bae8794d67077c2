#include "platform/FileSystemObject.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"

namespace trelv {
namespace {

/// Raises when a call of the system did not answer "done".
void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

bool isSeparator(char c) { return c == '\\' || c == '/'; }

bool isDriveRoot(const std::string& path) {
  return path.size() == 3 && path[1] == ':' && isSeparator(path[2]);
}

bool endsWithSeparator(const std::string& path) {
  return !path.empty() && isSeparator(path.back());
}

/// As the file calls want it: without trailing backslash, except for the root of a drive.
std::string bareFolder(std::string path) {
  while (endsWithSeparator(path) && !isDriveRoot(path)) {
    path.pop_back();
  }
  return path;
}

std::string child(const std::string& folder, const std::string& name) {
  return endsWithSeparator(folder) ? folder + name : folder + "\\" + name;
}

void removeOneFile(machine::Files& files, const std::string& path, bool readOnly, bool force) {
  if (readOnly && force) {
    require(files.setReadOnly(path, false), path);
  }
  require(files.removeFile(path), path);
}

/// Removes a folder with everything in it, in the order of its listing. A pack may bring thousands
/// of folders in each other: one path grows and shrinks with them.
class TreeRemoval {
 public:
  TreeRemoval(machine::Files& files, std::string folder, bool force)
      : files_(files), path_(std::move(folder)), force_(force) {}

  void run(const machine::FileFacts& facts) {
    enter(facts);
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.entries.size()) {
        leave();
        continue;
      }
      const machine::FolderEntry entry = std::move(level.entries[level.next++]);
      path_ = child(path_, entry.name);
      if (entry.facts.folder) {
        enter(entry.facts);
      } else {
        removeOneFile(files_, path_, entry.facts.readOnly, force_);
        path_.resize(level.length);
      }
    }
  }

 private:
  /// A folder on the way to where the work is, and what of it is still to be removed.
  struct Level {
    /// Of its path.
    std::size_t length = 0;
    bool readOnly = false;
    std::vector<machine::FolderEntry> entries;
    std::size_t next = 0;
  };

  void enter(const machine::FileFacts& facts) {
    Level level{path_.size(), facts.readOnly, {}, 0};
    // What a link points to belongs to somebody else.
    if (!facts.reparsePoint) {
      require(files_.list(path_, "", level.entries), path_);
    }
    levels_.push_back(std::move(level));
  }

  void leave() {
    if (levels_.back().readOnly && force_) {
      require(files_.setReadOnly(path_, false), path_);
    }
    require(files_.removeFolder(path_), path_);
    levels_.pop_back();
    if (!levels_.empty()) {
      path_.resize(levels_.back().length);
    }
  }

  machine::Files& files_;
  std::string path_;
  const bool force_;
  std::vector<Level> levels_;
};

/// Full path of the copy: a target with a trailing backslash is the folder that gets it.
std::string copyPath(const std::string& source, const std::string& target) {
  const std::string named = bareFolder(source);
  return endsWithSeparator(target) ? child(target, named.substr(named.find_last_of("\\/") + 1))
                                   : target;
}

void copyOneFile(machine::Files& files, const std::string& source, const std::string& target,
                 bool overwrite) {
  machine::FileFacts facts;
  if (!overwrite && files.look(target, facts) == system_code::kSuccess) {
    throw failureFromSystemCode(system_code::kFileExists, target);
  }
  require(files.copyFile(source, target), target);
}

}  // namespace

bool FileSystemObject::fileExists(const std::string& path) {
  machine::FileFacts facts;
  return !endsWithSeparator(path) && files_.look(path, facts) == system_code::kSuccess &&
         !facts.folder;
}

bool FileSystemObject::folderExists(const std::string& path) {
  machine::FileFacts facts;
  return files_.look(bareFolder(path), facts) == system_code::kSuccess && facts.folder;
}

bool FileSystemObject::mayExist(const std::string& path) {
  machine::FileFacts facts;
  return !meansMissing(files_.look(path, facts));
}

void FileSystemObject::requireReplaceable(const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = files_.look(path, facts);
  if (meansMissing(code)) {
    return;
  }
  require(code, path);
  if (facts.readOnly || facts.folder) {
    throw failureFromSystemCode(system_code::kAccessDenied, path);
  }
}

void FileSystemObject::createFolder(const std::string& path) {
  require(files_.makeFolder(bareFolder(path)), path);
}

void FileSystemObject::deleteFile(const std::string& path, bool force) {
  machine::FileFacts facts;
  const SystemCode code = files_.look(path, facts);
  if (code == system_code::kPathNotFound || (code == system_code::kSuccess && facts.folder)) {
    throw failureFromSystemCode(system_code::kFileNotFound, path);
  }
  require(code, path);
  removeOneFile(files_, path, facts.readOnly, force);
}

bool FileSystemObject::deleteFileIfThere(const std::string& path, bool force) {
  machine::FileFacts facts;
  const SystemCode looked = files_.look(path, facts);
  if (meansMissing(looked) || (looked == system_code::kSuccess && facts.folder)) {
    return false;
  }
  require(looked, path);
  if (facts.readOnly && force) {
    require(files_.setReadOnly(path, false), path);
  }
  const SystemCode code = files_.removeFile(path);
  if (!meansMissing(code)) {
    require(code, path);
  }
  return !meansMissing(code);
}

void FileSystemObject::deleteFolder(const std::string& path, bool force) {
  const std::string folder = bareFolder(path);
  if (isRoot(folder)) {
    throw failureFromSystemCode(system_code::kAccessDenied, path);
  }
  machine::FileFacts facts;
  const SystemCode code = files_.look(folder, facts);
  if (code == system_code::kFileNotFound || (code == system_code::kSuccess && !facts.folder)) {
    throw failureFromSystemCode(system_code::kPathNotFound, path);
  }
  require(code, path);
  TreeRemoval(files_, folder, force).run(facts);
}

void FileSystemObject::copyFile(const std::string& source, const std::string& target,
                                bool overwrite) {
  if (!fileExists(source)) {
    throw failureFromSystemCode(system_code::kFileNotFound, source);
  }
  copyOneFile(files_, source, copyPath(source, target), overwrite);
}

std::vector<machine::FolderEntry> FileSystemObject::fileEntries(const std::string& folder,
                                                                const std::string& ending) {
  std::vector<machine::FolderEntry> entries;
  require(files_.list(bareFolder(folder), ending, entries), folder);
  std::erase_if(entries, [](const machine::FolderEntry& entry) { return entry.facts.folder; });
  return entries;
}

std::vector<std::string> FileSystemObject::files(const std::string& folder) {
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : fileEntries(folder)) {
    names.push_back(entry.name);
  }
  return names;
}

std::vector<std::string> FileSystemObject::folders(const std::string& folder) {
  std::vector<machine::FolderEntry> entries;
  require(files_.list(bareFolder(folder), "", entries), folder);
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : entries) {
    if (entry.facts.folder) {
      names.push_back(entry.name);
    }
  }
  return names;
}

std::uint64_t FileSystemObject::dateLastModified(const std::string& path) {
  constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
  machine::FileFacts facts;
  const SystemCode code = files_.look(path, facts);
  if (code == system_code::kPathNotFound || (code == system_code::kSuccess && facts.folder)) {
    throw failureFromSystemCode(system_code::kFileNotFound, path);
  }
  require(code, path);
  return facts.modified / kUnitsPerSecond;
}

std::vector<std::string> FileSystemObject::readLines(const std::string& path) {
  std::string bytes;
  require(files_.read(path, std::numeric_limits<std::size_t>::max(), bytes), path);
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
    const bool carriageReturn = end < bytes.size() && end > at && bytes[end - 1] == '\r';
    lines.push_back(bytes.substr(at, end - at - (carriageReturn ? 1 : 0)));
    at = end + 1;
  }
  return lines;
}

void FileSystemObject::writeText(const std::string& path, const std::string& bytes) {
  require(files_.write(path, bytes), path);
}

bool FileSystemObject::liesAtOrIn(const std::string& path, const std::string& folder) {
  return equalNoCase(path.substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || endsWithSeparator(folder) ||
          isSeparator(path[folder.size()]));
}

bool FileSystemObject::isRoot(const std::string& folder) {
  if (folder.rfind("\\\\", 0) == 0) {
    const std::size_t share = folder.find('\\', 2);
    return share == std::string::npos || folder.find('\\', share + 1) == std::string::npos;
  }
  return isDriveRoot(folder) || (folder.size() == 2 && folder[1] == ':');
}

std::string FileSystemObject::parentFolderName(const std::string& path) {
  const std::string folder = bareFolder(path);
  if (folder.empty() || isDriveRoot(folder)) {
    return {};
  }
  const std::size_t last = folder.find_last_of("\\/");
  if (last == std::string::npos) {
    return {};
  }
  return bareFolder(folder.substr(0, last + 1));
}

}  // namespace trelv
