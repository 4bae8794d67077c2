#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "machine/Processes.h"
#include "sim/SimFiles.h"
#include "sim/SimSystem.h"

namespace trelv::sim {

class SimMachine;

/// What a test learns of one started program.
struct StartedProgram {
  /// The command line as it was passed.
  std::string commandLine;
  /// Full path of the program that was found.
  std::string program;
  /// What follows the program, split as programs split it, quotes removed.
  std::vector<std::string> arguments;
  bool waited = false;
  /// Was started to end with the program that started it.
  bool bound = false;
  bool visible = true;
  /// Its script has run to the end.
  bool ended = false;
  std::uint32_t exitCode = 0;
  /// Variables at the moment of the start, by their spelling.
  std::map<std::string, std::string> environment;
};

/// A program while it runs: what its script sees.
class SimProcess {
 public:
  SimProcess(SimMachine& simMachine, std::string childCommandLine, const StartedProgram& record)
      : machine_(simMachine), commandLine_(std::move(childCommandLine)), record_(record) {}

  /// The machine it runs on.
  SimMachine& machine() const { return machine_; }
  /// The command line that the program sees: with quotes put round a path with blanks.
  const std::string& commandLine() const { return commandLine_; }
  const std::string& program() const { return record_.program; }
  const std::vector<std::string>& arguments() const { return record_.arguments; }
  bool visible() const { return record_.visible; }
  /// Value of a variable it inherited; empty when not set. No regard to case.
  std::string variable(const std::string& name) const;
  const std::map<std::string, std::string>& environment() const { return record_.environment; }

 private:
  SimMachine& machine_;
  std::string commandLine_;
  const StartedProgram& record_;
};

/// Programs of one machine: which file a command line means and what runs then.
class SimProcesses : public machine::Processes {
 public:
  SimProcesses(SimMachine& simMachine, SimVolumes& volumes, SimSystem& system,
               SimEnvironment& environment, SimCalls& calls);

  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;

  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override;

  bool isRunning(std::uint32_t processId) override;
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override;
  /// What a user who ended the session now would read; empty when nothing is to be done then.
  const std::string& sessionReason() const { return sessionReason_; }
  /// For scripts: Windows ends the session while this program runs. The manager does what it said
  /// and ends: throws Killed. Its next start has to be made ready by SimMachine::startSession.
  [[noreturn]] void endSession();
  /// Another process of this number runs, or has ended.
  void setRunning(std::uint32_t processId, bool running = true);

  /// Puts a program at a full path; the script is part of the file: copies of it do the same, and
  /// on a share every workstation can start it.
  void define(const std::string& path, ProgramScript script = nullptr);

  /// All started programs in order. References stay valid.
  const std::deque<StartedProgram>& started() const { return started_; }
  std::vector<std::string> startedCommandLines() const;

  /// True: a started program's script runs when it is waited for, to its end or until it is ready,
  /// or when runDeferred is called, not at its start.
  void setDeferred(bool deferred) { deferred_ = deferred; }
  void runDeferred();
  /// Starting this program answers `code` (0 lifts it).
  void failStart(const std::string& programPath, SystemCode code);
  /// Starting it answers 740 as long as the user is no administrator.
  void requireElevation(const std::string& programPath);
  /// Every wait answers `code` (0 = waits work); the program runs to its end all the same.
  void failWaits(SystemCode code) { waitCode_ = code; }

  /// What a command line means.
  struct Found {
    /// Full path of the program.
    std::string program;
    std::string argumentText;
    /// The command line that the program sees.
    std::string childCommandLine;
  };
  /// Finds the program of a command line; answers as start() would.
  SystemCode resolve(const std::string& commandLine, Found& found) const;
  /// The same as startTool() would.
  SystemCode resolveTool(const std::string& commandLine, Found& found) const;

 private:
  friend class SimRunning;

  /// What a program that has not run yet needs; the token keeps its file in use.
  struct Running {
    std::string commandLine;
    ProgramScript script;
    std::shared_ptr<void> token;
  };

  SystemCode resolveQuoted(const std::string& commandLine, Found& found) const;
  SystemCode resolveByCuts(const std::string& commandLine, Found& found) const;
  SystemCode candidate(const std::string& name, std::string& program) const;
  SystemCode startAny(const std::string& commandLine, bool visible, bool bound,
                      std::unique_ptr<machine::RunningProcess>& process);
  SystemCode startFound(const std::string& commandLine, bool visible, bool bound,
                        const Found& found, std::unique_ptr<machine::RunningProcess>& process);
  std::string search(const std::string& name) const;
  std::string existing(const std::string& path) const;
  SystemCode refusal(const std::string& program) const;
  void run(std::size_t index);
  void end(std::size_t index);
  SystemCode waitFor(std::size_t index);
  SystemCode waitUntilReady(std::size_t index, std::uint32_t milliseconds);
  SystemCode exitCodeOf(std::size_t index, std::uint32_t& code);

  SimMachine& machine_;
  SimVolumes& volumes_;
  SimSystem& system_;
  SimEnvironment& environment_;
  SimCalls& calls_;
  std::deque<StartedProgram> started_;
  std::vector<Running> running_;
  std::map<std::string, SystemCode> startCodes_;
  std::set<std::string> elevated_;
  std::set<std::uint32_t> others_;
  std::string sessionReason_;
  std::function<void()> sessionAction_;
  bool deferred_ = false;
  SystemCode waitCode_ = system_code::kSuccess;
};

/// Splits argument text as programs do: blanks and tabs separate, quotes group and are removed.
std::vector<std::string> splitArguments(const std::string& text);

}  // namespace trelv::sim
