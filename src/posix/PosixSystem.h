#pragma once

#include <string>

#include "machine/Clock.h"
#include "machine/Console.h"
#include "machine/Environment.h"
#include "machine/Exclusion.h"
#include "machine/Files.h"
#include "machine/SystemFacts.h"
#include "machine/VersionResources.h"

/// What a Linux system has of its own: clock, environment, user, console, locked files.
namespace trelv::posix {

class PosixClock : public machine::Clock {
 public:
  machine::LocalTime now() override;
  machine::LocalTime localTime(std::uint64_t moment) override;
  void pause(std::uint32_t milliseconds) override;
};

class PosixEnvironment : public machine::Environment {
 public:
  bool get(const std::string& name, std::string& value) override;
  bool set(const std::string& name, const std::string& value) override;
};

/// No edition of Windows; one fixed drive, which is the file system. The folders of Windows and of
/// its programs have their usual names, on a drive that is not there: commands that name them can
/// be told from others.
class PosixSystemFacts : public machine::SystemFacts {
 public:
  bool queryVersion(VersionRecord& record) override;
  bool suiteIncludes(std::uint16_t mask) override;
  bool hasKernelFunction(const std::string& name) override;
  bool isWow64() override;
  SystemCode isAdministrator(bool& member) override;
  SystemCode userName(std::uint32_t size, std::string& name) override;
  SystemCode systemWindowsFolder(std::string& folder) override;
  SystemCode shellFolder(int number, std::string& folder) override;
  SystemCode temporaryFolder(std::string& folder) override;
  std::uint32_t driveType(const std::string& root) override;
  SystemCode connectionName(const std::string& drive, std::uint32_t size,
                            std::string& name) override;
  SystemCode deviceNames(const std::string& drive, std::uint32_t size, std::string& names) override;
  SystemCode computerName(std::string& name) override;
  std::uint32_t processId() override;
  std::uint32_t sessionId() override;
  std::string executablePath() override;
  std::string startedPath() override;
  std::string commandLine() override;
};

/// The file version in a Windows program, found in its resources; of a very large one only the
/// first 64 MB are looked at.
class PosixVersionResources : public machine::VersionResources {
 public:
  explicit PosixVersionResources(machine::Files& files) : files_(files) {}
  SystemCode read(const std::string& path, machine::FileVersion& version) override;

 private:
  machine::Files& files_;
};

/// Marks are files that are locked as a whole; they exclude programs of this system only.
class PosixExclusion : public machine::Exclusion {
 public:
  SystemCode take(const std::string& path, const std::string& text, std::uint32_t milliseconds,
                  std::unique_ptr<machine::Mark>& mark) override;
};

/// The process's standard streams. One that the caller has closed cannot be written, and a reader
/// who has gone is told as a failure.
class PosixConsole : public machine::Console {
 public:
  PosixConsole();
  SystemCode print(std::string_view text) override;
  void complain(std::string_view text) override;
  bool errorIsTerminal() override;
  bool inputIsTerminal() override;
  std::optional<std::string> readLine() override;
};

}  // namespace trelv::posix
