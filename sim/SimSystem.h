#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "machine/Clock.h"
#include "machine/Environment.h"
#include "machine/Locale.h"
#include "machine/SystemFacts.h"
#include "sim/SimCalls.h"

namespace trelv::sim {

/// A clock that moves only when it is told to, or when the program lets time pass: no test waits.
/// Starts on 16 November 2026 at 09:30:00.
class SimClock : public machine::Clock {
 public:
  machine::LocalTime now() override { return now_; }
  /// Local time is universal time here.
  machine::LocalTime localTime(std::uint64_t moment) override;
  void pause(std::uint32_t milliseconds) override;
  /// Time that the program spends waiting for somebody else, not counted as a pause of its own.
  void wait(std::uint32_t milliseconds);
  /// Who lets time pass when a program pauses or waits: gets the milliseconds and returns when they
  /// are over, having moved this clock with pass(). Null: nobody, the clock just moves on.
  void setSleeper(std::function<void(std::uint32_t)> sleeper) { sleeper_ = std::move(sleeper); }
  /// So much time is over.
  void pass(std::uint64_t milliseconds);
  void set(const machine::LocalTime& time) { now_ = time; }
  /// Forward only.
  void advance(std::uint32_t seconds);
  /// What happens on the machine when so much time has passed from now on: a scanner lets go of a
  /// file, say. Once.
  void after(std::uint32_t milliseconds, std::function<void()> happens);
  /// How long the program has paused, in milliseconds.
  std::uint64_t paused() const { return paused_; }

 private:
  void moveTo(std::uint64_t elapsed);

  machine::LocalTime now_{2026, 11, 16, 9, 30, 0};
  /// Milliseconds since the beginning.
  std::uint64_t elapsed_ = 0;
  std::uint64_t paused_ = 0;
  std::multimap<std::uint64_t, std::function<void()>> events_;
  std::function<void(std::uint32_t)> sleeper_;
};

enum class Language { Italian, English };

/// Code page 1252 and the user's formats: Italian dd/MM/yyyy HH:mm:ss, English M/d/yyyy h:mm:ss AM.
class SimLocale : public machine::Locale {
 public:
  void setLanguage(Language language) { language_ = language; }

  std::string shortDate(const machine::LocalTime& time) override;
  std::string longTime(const machine::LocalTime& time) override;
  std::string monthName(int month) override;
  std::string truthText(bool value) override;
  std::string upperCase(const std::string& text) override;
  std::string toAnsi(const std::string& text) override;
  std::string fromAnsi(const std::string& bytes) override;

 private:
  Language language_ = Language::Italian;
};

/// Environment variables; names without regard to case, kept in their spelling.
class SimEnvironment : public machine::Environment {
 public:
  explicit SimEnvironment(SimCalls& calls) : calls_(calls) {}

  bool get(const std::string& name, std::string& value) override;
  bool set(const std::string& name, const std::string& value) override;

  // For tests, without a trace in the calls.
  std::string value(const std::string& name) const;
  bool has(const std::string& name) const;
  void put(const std::string& name, const std::string& value);
  void remove(const std::string& name);
  /// All variables by their spelling.
  std::map<std::string, std::string> snapshot() const;

 private:
  struct Variable {
    std::string name;
    std::string value;
  };

  SimCalls& calls_;
  std::map<std::string, Variable> variables_;
};

enum class WindowsEdition {
  Win95,
  Win98,
  WinMe,
  NT4,
  NT4TerminalServer,
  Win2000Pro,
  Win2000Server,
  Win2000TerminalServer,
  XP,
  XP64,
  Win2003,
  Win2003TerminalServer,
  Vista,
  Win2008,
  Win2008TerminalServer,
  Seven,
  Win2008R2,
  Win2008R2TerminalServer,
  Win8,
  Win10
};

/// True for the editions that are terminal servers: bare ini names go to the user's own folder.
bool isTerminalServer(WindowsEdition edition);
/// The version block of an edition in its extended form.
VersionRecord versionOf(WindowsEdition edition);

/// What stands behind a drive's letter.
struct SimDrive {
  std::uint32_t type = machine::drive_type::kFixed;
  /// Share of a network drive.
  std::string share;
  /// Devices, the current one first.
  std::vector<std::string> devices;
};

/// What the system tells of itself. SimMachine::setEdition chooses the Windows.
class SimSystem : public machine::SystemFacts {
 public:
  SimSystem(SimCalls& calls, SimEnvironment& environment);

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
  std::uint32_t processId() override { return processId_; }
  std::uint32_t sessionId() override { return sessionId_; }
  std::string executablePath() override { return executablePath_; }
  std::string startedPath() override {
    return startedPath_.empty() ? executablePath_ : startedPath_;
  }
  std::string commandLine() override { return commandLine_; }

  void setVersion(const VersionRecord& extended) { version_ = extended; }
  const VersionRecord& version() const { return version_; }
  /// How often the version block was asked for, failed ones included.
  std::size_t versionQueries() const { return versionQueries_; }
  void failVersionQuery(bool fail = true) { failVersionQuery_ = fail; }
  void setWow64(bool wow64) { wow64_ = wow64; }
  /// Takes away a function that only later systems have.
  void removeKernelFunction(const std::string& name) { kernelFunctions_.erase(name); }
  void setAdministrator(bool member) { administrator_ = member; }
  bool administrator() const { return administrator_; }
  /// The administrator query answers this code (0 = it works).
  void failAdministratorQuery(SystemCode code) { administratorCode_ = code; }
  void setUserName(const std::string& name) { userName_ = name; }
  /// The user name cannot be read: the query answers this code (0 = it works).
  void failUserName(SystemCode code) { userNameCode_ = code; }
  void setWindowsFolder(const std::string& folder) { windowsFolder_ = folder; }
  const std::string& windowsFolder() const { return windowsFolder_; }
  void setShellFolder(int number, const std::string& folder) { shellFolders_[number] = folder; }
  /// A local drive ("S:") with a device of its own; does nothing where the drive is known.
  void addLocalDrive(const std::string& drive);
  /// A network drive that is connected to a share ("\\server\share").
  void connectDrive(const std::string& drive, const std::string& share);
  /// Makes a drive one of another kind, any number that the system knows (2 removable, 5 a disc, 6
  /// in memory); its names stay.
  void setDriveType(const std::string& drive, std::uint32_t type);
  void removeDrive(const std::string& drive);
  /// The names of a network drive cannot be had: asking for its share, or for its devices too,
  /// answers this code (0 = it works).
  void failConnectionName(SystemCode code) { connectionCode_ = code; }
  void failDeviceNames(SystemCode code) { deviceCode_ = code; }
  /// What a drive stands for, in the place of what addLocalDrive or connectDrive gave it.
  void setDevices(const std::string& drive, const std::vector<std::string>& devices);
  void setComputerName(const std::string& name) { computerName_ = name; }
  /// The computer's name cannot be read: the query answers this code (0 = it works).
  void failComputerName(SystemCode code) { computerNameCode_ = code; }
  /// The program's process; processes with other numbers run only when SimProcesses says so.
  void setProcessId(std::uint32_t id) { processId_ = id; }
  void setSessionId(std::uint32_t id) { sessionId_ = id; }
  void setExecutablePath(const std::string& path) { executablePath_ = path; }
  /// The program was started by another name of its executable; empty: by the name it has.
  void setStartedPath(const std::string& path) { startedPath_ = path; }
  void setCommandLine(const std::string& line) { commandLine_ = line; }

 private:
  SimCalls& calls_;
  SimEnvironment& environment_;
  VersionRecord version_;
  std::size_t versionQueries_ = 0;
  bool failVersionQuery_ = false;
  bool wow64_ = false;
  std::set<std::string> kernelFunctions_{"GetProcAddress", "IsWow64Process",
                                         "Wow64EnableWow64FsRedirection"};
  bool administrator_ = true;
  SystemCode administratorCode_ = system_code::kSuccess;
  SystemCode userNameCode_ = system_code::kSuccess;
  std::string userName_ = "mario";
  std::string windowsFolder_ = "C:\\WINDOWS";
  std::map<int, std::string> shellFolders_;
  /// By upper-case name ("S:").
  std::map<std::string, SimDrive> drives_;
  SystemCode connectionCode_ = system_code::kSuccess;
  SystemCode deviceCode_ = system_code::kSuccess;
  std::string computerName_ = "STAZIONE";
  SystemCode computerNameCode_ = system_code::kSuccess;
  std::uint32_t processId_ = 4711;
  std::uint32_t sessionId_ = 1;
  std::string executablePath_;
  std::string startedPath_;
  std::string commandLine_;
};

}  // namespace trelv::sim
