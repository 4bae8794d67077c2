#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/Codes.h"
#include "base/InstallationPaths.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Who calls the product update run.
enum class RunKind : std::int32_t {
  UpdateAll = 1,
  /// What follows the first blank of a command is dropped, so its program gets no arguments.
  ProgramOnly = 4
};

/// What becomes of the procedure that a step belongs to.
enum class Procedure { GoesOn, Stops };

/// Brings one product on one side to the versions of its configuration file (full path): the
/// commands of the 100 sections of `operation` that stand above `currentVersion` are run one after
/// the other, each waited for. `currentVersion` is raised to the version of each section whose
/// command ran. While commands run, the side's update lock file exists. The procedure stops where
/// another session holds the lock (told in a box) or a run-time failure ended the run (one log
/// line; a lock that this run took is removed). When Windows ends the session while a command runs,
/// `recordSoFar` is called, which puts `currentVersion` as it stands into its record, the lock is
/// removed, one log line says so, and the program ends. Never raises.
Procedure ProductUpdateRun(Program& program, RunKind runKind, const InstallationPaths& paths,
                           const std::string& configurationPath, Operation operation, Side side,
                           std::string& currentVersion,
                           const std::function<void()>& recordSoFar = nullptr);

/// Resolves the placeholders of `command` in place and runs it, waiting for its end. True when it
/// was started, whatever its exit code; false when the user is no administrator (told in a box) or
/// it could not be started (reported). Never raises.
bool RunCommand(Program& program, std::string& command, const InstallationPaths& paths);

/// A version as a number: dots removed, then the digits that stand first, saturating; 0 for none.
std::uint64_t VersionNumber(const std::string& version);

/// Full path of the update lock of a side: the workstation's for Client, else the server's.
std::string LockPath(Program& program, Side side, const std::string& serverPath);

}  // namespace trelv::modProdTrelvManager
