#pragma once

#include "machine/Processes.h"

namespace trelv::win32 {

/// Starts programs through the wide functions.
class Win32Processes : public machine::Processes {
 public:
  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;
};

}  // namespace trelv::win32
