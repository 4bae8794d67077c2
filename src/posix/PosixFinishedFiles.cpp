#include "posix/PosixFinishedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "posix/PosixPath.h"

namespace trelv::posix {

SystemCode PosixFinishedFiles::setModified(const std::string& path, std::uint64_t modified) {
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
  const std::array<timespec, 2> times{time, time};
  return codeOf(utimensat(AT_FDCWD, plain.c_str(), times.data(), 0) == 0 ? 0 : errno, plain);
}

SystemCode PosixFinishedFiles::moveFolder(const std::string& source, const std::string& target) {
  std::string from;
  std::string to;
  SystemCode code = hostPath(source, from);
  if (code == system_code::kSuccess) {
    code = hostPath(target, to);
  }
  if (code != system_code::kSuccess) {
    return code;
  }
  const int answer = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  return codeOf(answer == 0 ? 0 : errno, from);
}

}  // namespace trelv::posix
