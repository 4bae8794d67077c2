#include "posix/PosixFinishedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "posix/PosixPath.h"

namespace trelv::posix {
namespace {

SystemCode renamed(const std::string& source, const std::string& target, unsigned kind) {
  std::string from;
  std::string to;
  SystemCode code = hostPath(source, from);
  if (code == system_code::kSuccess) {
    code = hostPath(target, to);
  }
  if (code != system_code::kSuccess) {
    return code;
  }
  int answer = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), kind);
  struct stat there {};
  // One that knows no such flag, as NFS, is asked without.
  if (answer != 0 && errno == EINVAL && kind == RENAME_NOREPLACE) {
    const bool stands = lstat(to.c_str(), &there) == 0;
    errno = EEXIST;
    answer = stands ? -1 : rename(from.c_str(), to.c_str());
  }
  return codeOf(answer == 0 ? 0 : errno, from);
}

}  // namespace

SystemCode PosixFinishedFiles::finish(const std::string& path, std::uint64_t modified) {
  constexpr std::int64_t kSecondsTo1970 = 11644473600;
  constexpr std::uint64_t kTicksPerSecond = 10000000;
  std::string plain;
  const SystemCode code = hostPath(path, plain);
  if (code != system_code::kSuccess) {
    return code;
  }
  timespec time{};
  time.tv_sec = static_cast<time_t>(modified / kTicksPerSecond) - kSecondsTo1970;
  time.tv_nsec = static_cast<long>(modified % kTicksPerSecond) * 100;
  constexpr mode_t kFile = 0644;
  constexpr mode_t kFolder = 0755;
  struct stat facts {};
  const bool done = stat(plain.c_str(), &facts) == 0 &&
                    chmod(plain.c_str(), S_ISDIR(facts.st_mode) ? kFolder : kFile) == 0;
  if (!done) {
    return codeOf(errno, plain);
  }
  const std::array<timespec, 2> times{time, time};
  return codeOf(utimensat(AT_FDCWD, plain.c_str(), times.data(), 0) == 0 ? 0 : errno, plain);
}

SystemCode PosixFinishedFiles::moveFolder(const std::string& source, const std::string& target) {
  return renamed(source, target, RENAME_NOREPLACE);
}

/// As on a system that exchanges no names.
SystemCode PosixFinishedFiles::replaceInTwoSteps(const machine::FolderReplacement& replacement) {
  SystemCode code = moveFolder(replacement.target, replacement.aside);
  if (code != system_code::kSuccess) {
    return code;
  }
  code = moveFolder(replacement.source, replacement.target);
  if (code != system_code::kSuccess) {
    moveFolder(replacement.aside, replacement.target);
  }
  return code;
}

SystemCode PosixFinishedFiles::replaceFolder(const machine::FolderReplacement& replacement) {
  SystemCode code = renamed(replacement.source, replacement.target, RENAME_EXCHANGE);
  // File systems that know no exchange (exFAT, NFS) refuse its flag.
  if (code == system_code::kInvalidName) {
    return replaceInTwoSteps(replacement);
  }
  if (code != system_code::kSuccess) {
    return code;
  }
  code = moveFolder(replacement.source, replacement.aside);
  if (code != system_code::kSuccess) {
    renamed(replacement.source, replacement.target, RENAME_EXCHANGE);
  }
  return code;
}

}  // namespace trelv::posix
