#pragma once

#include <cstdint>
#include <string>

#include "base/Codes.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// Run kinds: who calls the product update run.
namespace run_kind {
constexpr std::int32_t kUpdateAll = 1;
/// Each command is cut at its first blank: only the program, no arguments.
constexpr std::int32_t kProgramOnly = 4;
}  // namespace run_kind

/// Brings one product on one side to the versions of its configuration file (full path).
/// `currentVersion` is raised to the version of each section whose command ran. Paths have no
/// trailing backslash. True: go on with the next product; false: the whole procedure stops.
bool ProductUpdateRun(Program& program, std::int32_t runKind, const std::string& serverPath,
                      const std::string& integrationPath, const std::string& programsPath,
                      const std::string& configurationPath, Operation operation, Side side,
                      std::string& currentVersion);

/// Resolves the placeholders of `command` in place and runs it, waiting for its end. True when it
/// was started, false when it was refused.
bool RunCommand(Program& program, std::string& command, const std::string& serverPath,
                const std::string& integrationPath, const std::string& programsPath);

/// A version as a number: dots removed, the digits that then stand first, saturating; 0 for none.
std::uint64_t VersionNumber(const std::string& version);

/// Full path of the update lock of a side.
std::string LockPath(Program& program, Side side, const std::string& serverPath);

}  // namespace trelv::modProdTrelvManager
