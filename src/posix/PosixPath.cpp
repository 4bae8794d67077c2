#include "posix/PosixPath.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/Text.h"

namespace trelv::posix {
namespace {

constexpr std::string_view kLiteral = "\\\\?\\";

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

bool exists(const std::string& path) {
  struct stat facts {};
  return lstat(path.c_str(), &facts) == 0;
}

/// The name in the folder that is equal without regard to case; the given one where there is none.
std::string nameIn(const std::string& folder, const std::string& name) {
  const std::unique_ptr<DIR, FolderCloser> open(opendir(folder.empty() ? "/" : folder.c_str()));
  if (!open) {
    return name;
  }
  std::string found;
  while (const dirent* const entry = readdir(open.get())) {
    const std::string other = entry->d_name;
    if (equalNoCase(other, name) && (found.empty() || other < found)) {
      found = other;
    }
  }
  return found.empty() ? name : found;
}

std::vector<std::string> namesOf(std::string_view path) {
  std::vector<std::string> names;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('\\'), path.size());
    const std::string_view name = path.substr(0, end);
    if (name == "..") {
      if (!names.empty()) {
        names.pop_back();
      }
    } else if (!name.empty() && name != ".") {
      names.emplace_back(name);
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

bool isOnDrive(std::string_view path) {
  return path.size() >= 2 && (path[0] == 'Z' || path[0] == 'z') && path[1] == ':' &&
         (path.size() == 2 || path[2] == '\\');
}

}  // namespace

SystemCode hostPath(const std::string& path, std::string& result) {
  std::string_view rest = path;
  if (rest.starts_with(kLiteral)) {
    rest.remove_prefix(kLiteral.size());
  }
  if (!isOnDrive(rest)) {
    return system_code::kPathNotFound;
  }
  std::string found;
  for (const std::string& name : namesOf(rest.substr(2))) {
    const std::string next = found + "/" + name;
    found = exists(next) ? next : found + "/" + nameIn(found, name);
  }
  result = found.empty() ? "/" : found;
  return system_code::kSuccess;
}

std::string shownPath(const std::string& hostPath) {
  std::string path = std::string(kRoot).substr(0, 2) + replaceAll(hostPath, "/", "\\");
  while (path.size() > 3 && path.back() == '\\') {
    path.pop_back();
  }
  return path;
}

SystemCode codeOf(int error, const std::string& hostPath) {
  switch (error) {
    case 0:
      return system_code::kSuccess;
    case ENOENT: {
      const std::size_t end = hostPath.find_last_of('/');
      const bool parent = end == std::string::npos || end == 0 || exists(hostPath.substr(0, end));
      return parent ? system_code::kFileNotFound : system_code::kPathNotFound;
    }
    case ENOTDIR:
      return system_code::kPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return system_code::kAccessDenied;
    case EEXIST:
      return system_code::kAlreadyExists;
    case ENOTEMPTY:
      return system_code::kDirectoryNotEmpty;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return system_code::kDiskFull;
    case EBUSY:
    case ETXTBSY:
      return system_code::kSharingViolation;
    case ENAMETOOLONG:
    case EINVAL:
      return system_code::kInvalidName;
    case ENOMEM:
      return system_code::kOutOfMemory;
    default:
      return system_code::kReadFault;
  }
}

SystemCode PosixGivenPaths::fullPath(const std::string& given, std::string& full) {
  if (given.empty()) {
    return system_code::kBadPathname;
  }
  std::error_code failed;
  const std::filesystem::path path =
      std::filesystem::absolute(replaceAll(given, "\\", "/"), failed);
  if (failed) {
    return codeOf(failed.value(), given);
  }
  full = shownPath(path.lexically_normal().string());
  return system_code::kSuccess;
}

SystemCode PosixGivenPaths::room(const std::string& full, std::uint64_t& bytes) {
  std::string path;
  const SystemCode code = hostPath(full, path);
  if (code != system_code::kSuccess) {
    return code;
  }
  std::error_code failed;
  const std::filesystem::space_info space = std::filesystem::space(path, failed);
  if (failed) {
    return codeOf(failed.value(), path);
  }
  bytes = space.available;
  return system_code::kSuccess;
}

}  // namespace trelv::posix
