#pragma once

#include <cstdint>
#include <functional>
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

  /// Waits until the program's first window is ready for input, which it is once it has read what
  /// it was started with; at most so long. A program without windows, or that is not ready in time,
  /// answers its code.
  virtual SystemCode waitUntilReady(std::uint32_t milliseconds) = 0;

  /// Exit code of the ended process; a failed query answers its code.
  virtual SystemCode exitCode(std::uint32_t& code) = 0;
};

/// Starts programs as the current user.
class Processes {
 public:
  virtual ~Processes() = default;

  /// Starts a command line (UTF-8, quoted by the caller where that is needed: Windows looks for the
  /// program in it) at normal priority. The process gets our environment and current folder but
  /// none of our handles. Without `visible` its first window stays hidden. `process` is set on
  /// success.
  virtual SystemCode start(const std::string& commandLine, bool visible,
                           std::unique_ptr<RunningProcess>& process) = 0;

  /// The same for a program that the system or the site provides and that is named without a
  /// folder: never one of the current folder, which may be anybody's. It is looked for beside this
  /// program, in the system folder, the Windows folder and those folders of PATH that are named in
  /// full, with ".exe" where its name has no extension; else 2.
  virtual SystemCode startTool(const std::string& commandLine, bool visible,
                               std::unique_ptr<RunningProcess>& process) = 0;

  /// The same as start() for a program that does a part of our own work: it ends with us, however
  /// we end, and when `process` is destroyed. Where the system does not allow that (before Windows
  /// 8, when we are ourselves bound to somebody in this way) it goes on like any other.
  virtual SystemCode startBound(const std::string& commandLine, bool visible,
                                std::unique_ptr<RunningProcess>& process) = 0;

  /// What is to be done when Windows ends the session (log-off, restart) while this program waits
  /// for another one. `action` has to be short; the program ends with it, whatever it was about to
  /// do. `reason` is what Windows Vista and later tell a user who ends the session meanwhile. In
  /// the place of what was said before; without an action nothing is done.
  virtual void whenSessionEnds(const std::string& reason, std::function<void()> action) = 0;

  /// Does a process of this number run on this computer, in whatever session? One that cannot be
  /// asked counts as running. Numbers are given out again when a process has ended.
  virtual bool isRunning(std::uint32_t processId) = 0;
};

}  // namespace trelv::machine
