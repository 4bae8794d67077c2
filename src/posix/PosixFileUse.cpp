#include "posix/PosixFileUse.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include "posix/OpenFile.h"
#include "posix/PosixFiles.h"
#include "posix/PosixPath.h"

namespace trelv::posix {
namespace {

namespace fs = std::filesystem;

SystemCode factsOf(const std::string& path, std::string& hostName, struct stat& facts) {
  const SystemCode code = hostPath(path, hostName);
  if (code != system_code::kSuccess) {
    return code;
  }
  return stat(hostName.c_str(), &facts) == 0 ? system_code::kSuccess : codeOf(errno, hostName);
}

bool isSameFile(const fs::path& descriptor, const struct stat& facts) {
  struct stat other {};
  return stat(descriptor.c_str(), &other) == 0 && other.st_dev == facts.st_dev &&
         other.st_ino == facts.st_ino;
}

/// Has a process the file open, as far as this user may see its files?
bool hasOpen(const fs::path& process, const struct stat& facts) {
  std::error_code refused;
  for (fs::directory_iterator each(process / "fd", refused), end; !refused && each != end;
       each.increment(refused)) {
    if (isSameFile(each->path(), facts)) {
      return true;
    }
  }
  return false;
}

bool isSeenOpen(const struct stat& facts) {
  std::error_code refused;
  for (fs::directory_iterator each("/proc", refused), end; !refused && each != end;
       each.increment(refused)) {
    const std::string name = each->path().filename();
    const bool isProcess = name.find_first_not_of("0123456789") == std::string::npos;
    if (isProcess && name != std::to_string(getpid()) && hasOpen(each->path(), facts)) {
      return true;
    }
  }
  return false;
}

/// Has anybody else the file open, of whatever user? While the answer is no and the file stays open
/// here nobody opens it. Not every file system tells, nor does it tell everybody.
bool isRefusedForOthers(const OpenFile& file) {
  if (!file) {
    return false;
  }
  // Whoever comes meanwhile waits; this process must not be ended for it.
  std::signal(SIGIO, SIG_IGN);
  return fcntl(file.get(), F_SETLEASE, F_WRLCK) != 0 && errno == EAGAIN;
}

bool isAsSeen(const std::string& path, const machine::FileFacts& seen) {
  machine::FileFacts now;
  return PosixFiles().look(path, now) == system_code::kSuccess && now.modified == seen.modified &&
         now.size == seen.size;
}

}  // namespace

SystemCode PosixFileUse::owner(const std::string& path, std::string& account) {
  constexpr SystemCode kNoSuchAccount = 1332;
  std::string hostName;
  struct stat facts {};
  const SystemCode code = factsOf(path, hostName, facts);
  if (code != system_code::kSuccess) {
    return code;
  }
  // Longer than any entry of a directory service that has been seen.
  std::array<char, 16384> texts{};
  passwd record{};
  passwd* entry = nullptr;
  getpwuid_r(facts.st_uid, &record, texts.data(), texts.size(), &entry);
  // A question that fails finds none either.
  if (entry == nullptr) {
    return kNoSuchAccount;
  }
  account = entry->pw_name;
  return system_code::kSuccess;
}

std::optional<bool> PosixFileUse::isOpen(const std::string& path) {
  std::string hostName;
  struct stat facts {};
  if (factsOf(path, hostName, facts) != system_code::kSuccess || !isSeenOpen(facts)) {
    return std::nullopt;
  }
  return true;
}

SystemCode PosixFileUse::removeUnused(const std::string& path, const machine::FileFacts& seen) {
  std::string hostName;
  struct stat facts {};
  const SystemCode code = factsOf(path, hostName, facts);
  if (code != system_code::kSuccess) {
    return code;
  }
  if ((facts.st_mode & S_IWUSR) == 0 || !S_ISREG(facts.st_mode)) {
    return system_code::kAccessDenied;
  }
  const OpenFile file(open(hostName.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (isRefusedForOthers(file) || isSeenOpen(facts)) {
    return system_code::kSharingViolation;
  }
  if (!isAsSeen(path, seen)) {
    return machine::kFileChanged;
  }
  return unlink(hostName.c_str()) == 0 ? system_code::kSuccess : codeOf(errno, hostName);
}

}  // namespace trelv::posix
