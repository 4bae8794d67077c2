#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// A started process; its handles are closed when destroyed, the process goes on.
class RunningProcess {
 public:
  virtual ~RunningProcess() = default;

  /// Waits without limit until the process ends. Input and painting stay queued, messages sent by
  /// other programs are served. Answers 0, or the code of a wait that failed.
  virtual SystemCode wait() = 0;

  /// Exit code of the ended process; a failed query answers its code.
  virtual SystemCode exitCode(std::uint32_t& code) = 0;
};

/// Starts programs as the current user.
class Processes {
 public:
  virtual ~Processes() = default;

  /// Starts a command line (UTF-8; the system takes the program from it, quoting is the caller's),
  /// normal priority, no inherited handles, the caller's environment and current folder. `visible`
  /// false starts its main window hidden. `process` is set on success.
  virtual SystemCode start(const std::string& commandLine, bool visible,
                           std::unique_ptr<RunningProcess>& process) = 0;
};

}  // namespace trelv::machine
