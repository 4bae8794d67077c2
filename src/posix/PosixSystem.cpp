#include "posix/PosixSystem.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "posix/OpenFile.h"
#include "posix/PosixPath.h"

namespace trelv::posix {
namespace {

constexpr std::int64_t kSecondsTo1970 = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;

machine::LocalTime localTimeOf(std::time_t seconds) {
  std::tm parts{};
  localtime_r(&seconds, &parts);
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
          parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

SystemCode writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return errno == ENOSPC || errno == EDQUOT ? system_code::kDiskFull : system_code::kWriteFault;
    }
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  return system_code::kSuccess;
}

/// The next file that is opened must not take the place of a standard stream. What stands there
/// instead can be read only, or written only, as the stream can not.
void keepPlaceOf(int stream) {
  if (fcntl(stream, F_GETFD) == -1) {
    open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

/// A file that is locked for one process, and removed when it is let go.
class LockedFile : public machine::Mark {
 public:
  LockedFile(std::string path, int descriptor) : path_(std::move(path)), file_(descriptor) {}
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;
  ~LockedFile() override {
    // What stands there else is the mark of another process.
    if (stands()) {
      unlink(path_.c_str());
    }
  }

  /// Nobody removed the file between its opening and its locking.
  bool stands() const {
    struct stat mine {};
    struct stat there {};
    return fstat(file_.get(), &mine) == 0 && stat(path_.c_str(), &there) == 0 &&
           mine.st_ino == there.st_ino && mine.st_dev == there.st_dev;
  }
  int descriptor() const { return file_.get(); }

 private:
  std::string path_;
  OpenFile file_;
};

SystemCode tryToTake(const std::string& plain, const std::string& text,
                     std::unique_ptr<machine::Mark>& mark) {
  const int descriptor = open(plain.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor < 0) {
    return codeOf(errno, plain);
  }
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    close(descriptor);
    return system_code::kSharingViolation;
  }
  auto taken = std::make_unique<LockedFile>(plain, descriptor);
  if (!taken->stands() || ftruncate(descriptor, 0) != 0) {
    return system_code::kSharingViolation;
  }
  writeAll(descriptor, text);
  mark = std::move(taken);
  return system_code::kSuccess;
}

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i > 0; --i) {
    number = (number << 8U) | static_cast<unsigned char>(bytes[at + i - 1]);
  }
  return number;
}

/// The fixed part of a version resource begins with these bytes: its signature and its own version.
constexpr std::string_view kFixedVersion{"\xBD\x04\xEF\xFE\x00\x00\x01\x00", 8};
constexpr std::size_t kLargestProgram = std::size_t{64} << 20U;

machine::FileVersion versionAt(std::string_view bytes, std::size_t at) {
  const std::uint32_t high = numberAt(bytes, at);
  const std::uint32_t low = numberAt(bytes, at + 4);
  const auto part = [](std::uint32_t number) -> std::uint16_t {
    return static_cast<std::uint16_t>(number & 0xFFFFU);
  };
  return {part(high >> 16U), part(high), part(low >> 16U), part(low)};
}

SystemCode textOfLength(std::string text, std::uint32_t size, std::string& result) {
  if (text.size() + 1 > size) {
    return system_code::kInsufficientBuffer;
  }
  result = std::move(text);
  return system_code::kSuccess;
}

}  // namespace

machine::LocalTime PosixClock::now() { return localTimeOf(std::time(nullptr)); }

machine::LocalTime PosixClock::localTime(std::uint64_t moment) {
  return localTimeOf(static_cast<std::int64_t>(moment) / kTicksPerSecond - kSecondsTo1970);
}

void PosixClock::pause(std::uint32_t milliseconds) {
  const timespec length{milliseconds / 1000, static_cast<long>(milliseconds % 1000) * 1000000};
  nanosleep(&length, nullptr);
}

bool PosixEnvironment::get(const std::string& name, std::string& value) {
  const char* const found = std::getenv(name.c_str());
  if (found != nullptr) {
    value = found;
  }
  return found != nullptr;
}

bool PosixEnvironment::set(const std::string& name, const std::string& value) {
  return setenv(name.c_str(), value.c_str(), 1) == 0;
}

bool PosixSystemFacts::queryVersion(VersionRecord& /*record*/) { return false; }
bool PosixSystemFacts::suiteIncludes(std::uint16_t /*mask*/) { return false; }
bool PosixSystemFacts::hasKernelFunction(const std::string& /*name*/) { return false; }
bool PosixSystemFacts::isWow64() { return false; }

SystemCode PosixSystemFacts::isAdministrator(bool& member) {
  member = geteuid() == 0;
  return system_code::kSuccess;
}

SystemCode PosixSystemFacts::userName(std::uint32_t size, std::string& name) {
  const passwd* const user = getpwuid(geteuid());
  return textOfLength(user != nullptr ? user->pw_name : std::to_string(geteuid()), size, name);
}

SystemCode PosixSystemFacts::systemWindowsFolder(std::string& folder) {
  folder = "C:\\WINDOWS";
  return system_code::kSuccess;
}

SystemCode PosixSystemFacts::shellFolder(int number, std::string& folder) {
  if (number != machine::kProgramFilesFolder) {
    return system_code::kPathNotFound;
  }
  folder = "C:\\Program Files";
  return system_code::kSuccess;
}

SystemCode PosixSystemFacts::temporaryFolder(std::string& folder) {
  std::error_code failed;
  const std::filesystem::path path = std::filesystem::temp_directory_path(failed);
  if (failed) {
    return codeOf(failed.value(), "/tmp");
  }
  folder = shownPath(path.string()) + "\\";
  return system_code::kSuccess;
}

std::uint32_t PosixSystemFacts::driveType(const std::string& root) {
  std::string plain;
  return hostPath(root, plain) == system_code::kSuccess ? machine::drive_type::kFixed
                                                        : machine::drive_type::kNoRoot;
}

SystemCode PosixSystemFacts::connectionName(const std::string& /*drive*/, std::uint32_t /*size*/,
                                            std::string& /*name*/) {
  constexpr SystemCode kNotConnected = 2250;
  return kNotConnected;
}

SystemCode PosixSystemFacts::deviceNames(const std::string& /*drive*/, std::uint32_t /*size*/,
                                         std::string& /*names*/) {
  return system_code::kFileNotFound;
}

SystemCode PosixSystemFacts::computerName(std::string& name) {
  std::array<char, HOST_NAME_MAX + 1> buffer{};
  if (gethostname(buffer.data(), buffer.size()) != 0) {
    return system_code::kReadFault;
  }
  name = buffer.data();
  return system_code::kSuccess;
}

std::uint32_t PosixSystemFacts::processId() { return static_cast<std::uint32_t>(getpid()); }
std::uint32_t PosixSystemFacts::sessionId() { return 0; }

std::string PosixSystemFacts::executablePath() {
  std::error_code failed;
  const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", failed);
  return failed ? std::string() : shownPath(path.string());
}

std::string PosixSystemFacts::startedPath() { return executablePath(); }
std::string PosixSystemFacts::commandLine() { return "\"" + executablePath() + "\""; }

SystemCode PosixVersionResources::read(const std::string& path, machine::FileVersion& version) {
  std::string bytes;
  const SystemCode code = files_.read(path, kLargestProgram, bytes);
  if (code != system_code::kSuccess) {
    return meansMissing(code) ? system_code::kFileNotFound : code;
  }
  const std::size_t at = bytes.starts_with("MZ") ? bytes.find(kFixedVersion) : std::string::npos;
  if (at == std::string::npos || at + 16 > bytes.size()) {
    return system_code::kResourceDataNotFound;
  }
  version = versionAt(bytes, at + kFixedVersion.size());
  return system_code::kSuccess;
}

SystemCode PosixExclusion::take(const std::string& path, const std::string& text,
                                std::uint32_t milliseconds, std::unique_ptr<machine::Mark>& mark) {
  constexpr std::uint32_t kPause = 20;
  std::string plain;
  const SystemCode found = hostPath(path, plain);
  if (found != system_code::kSuccess) {
    return found;
  }
  PosixClock clock;
  for (std::uint32_t waited = 0;; waited += kPause) {
    const SystemCode code = tryToTake(plain, text, mark);
    if (code != system_code::kSharingViolation || waited >= milliseconds) {
      return code == system_code::kFileNotFound ? system_code::kPathNotFound : code;
    }
    clock.pause(kPause);
  }
}

PosixConsole::PosixConsole() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    keepPlaceOf(stream);
  }
  std::signal(SIGPIPE, SIG_IGN);
}

SystemCode PosixConsole::print(std::string_view text) { return writeAll(STDOUT_FILENO, text); }
void PosixConsole::complain(std::string_view text) { writeAll(STDERR_FILENO, text); }
bool PosixConsole::errorIsTerminal() { return isatty(STDERR_FILENO) != 0; }
bool PosixConsole::inputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

std::optional<std::string> PosixConsole::readLine() {
  std::string line;
  char letter = '\0';
  ssize_t got = 0;
  while ((got = read(STDIN_FILENO, &letter, 1)) == 1 && letter != '\n') {
    line += letter;
  }
  return got != 1 && line.empty() ? std::nullopt : std::optional<std::string>(line);
}

}  // namespace trelv::posix
