#pragma once

#include <memory>

#include "machine/Processes.h"
#include "win32/SessionWindow.h"

namespace trelv::win32 {

/// Starts programs through the wide functions.
class Win32Processes : public machine::Processes {
 public:
  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override;
  bool isRunning(std::uint32_t processId) override;
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override;

 private:
  /// As long as something is to be done then.
  std::unique_ptr<SessionWindow> session_;
};

}  // namespace trelv::win32
