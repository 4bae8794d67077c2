#pragma once

#include <cstdint>
#include <string>

#include "base/SystemCode.h"
#include "base/VersionRecord.h"

namespace trelv::machine {

/// Shell folder numbers.
constexpr int kCommonDesktopFolder = 25;
/// Data that programs keep for all users.
constexpr int kCommonDataFolder = 35;
constexpr int kProgramFilesFolder = 38;
constexpr int kUserProfileFolder = 40;
/// "Common Files", below Program Files.
constexpr int kCommonFilesFolder = 43;

/// Drive types that the program tells apart.
namespace drive_type {
constexpr std::uint32_t kNoRoot = 1;
constexpr std::uint32_t kFixed = 3;
constexpr std::uint32_t kNetwork = 4;
}  // namespace drive_type

/// What the system tells of itself, its user and this process.
class SystemFacts {
 public:
  virtual ~SystemFacts() = default;

  /// Queries the version block; `record.size` says which form (148 or 156; any other fails). False
  /// leaves the record as it was.
  virtual bool queryVersion(VersionRecord& record) = 0;

  /// Are all bits of `mask` among those of the installed suites? Asked of Windows, not of a record.
  virtual bool suiteIncludes(std::uint16_t mask) = 0;

  /// Does the system's kernel library have a function of this name? Asked before what only later
  /// systems have.
  virtual bool hasKernelFunction(const std::string& name) = 0;

  /// True in a 32-bit program on a 64-bit Windows.
  virtual bool isWow64() = 0;

  /// Membership of the local administrators group in this process's token (a filtered token is no
  /// member). A failed query answers its code.
  virtual SystemCode isAdministrator(bool& member) = 0;

  /// The account that this process runs under; at most `size` - 1 characters.
  virtual SystemCode userName(std::uint32_t size, std::string& name) = 0;

  /// The system's Windows folder (never the per-user one of a Terminal Server), without trailing
  /// backslash unless it is a root.
  virtual SystemCode systemWindowsFolder(std::string& folder) = 0;

  /// A shell folder by its number, without trailing backslash.
  virtual SystemCode shellFolder(int number, std::string& folder) = 0;

  /// The user's temporary folder, with trailing backslash; its existence is not tested.
  virtual SystemCode temporaryFolder(std::string& folder) = 0;

  /// Type of the drive with this root ("S:\"), a value of drive_type or another of the system's.
  virtual std::uint32_t driveType(const std::string& root) = 0;

  /// Name of the share ("\\server\share") that a drive ("S:") is connected to; at most `size` - 1
  /// characters, a longer one answers 234. A local drive answers 2250, one that is not there 1200.
  virtual SystemCode connectionName(const std::string& drive, std::uint32_t size,
                                    std::string& name) = 0;

  /// Names of the devices that a drive ("S:") stands for, the current one first, each followed by a
  /// NUL and the last one by another. `size` is the buffer's size in characters; too small a buffer
  /// answers 122, a drive that is not there 2.
  virtual SystemCode deviceNames(const std::string& drive, std::uint32_t size,
                                 std::string& names) = 0;

  /// Name of this computer, without leading backslashes.
  virtual SystemCode computerName(std::string& name) = 0;

  /// Numbers of this process and of the session it runs in; they cannot fail (a session that is not
  /// known is 0).
  virtual std::uint32_t processId() = 0;
  virtual std::uint32_t sessionId() = 0;

  /// Full path of the running executable in long names, however it was started.
  virtual std::string executablePath() = 0;

  /// The same as it was named at the start, which may have been by short names.
  virtual std::string startedPath() = 0;

  /// The whole command line of the process, program included, as it was passed.
  virtual std::string commandLine() = 0;
};

}  // namespace trelv::machine
