#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/Patience.h"
#include "machine/Clock.h"
#include "machine/Processes.h"

namespace trelv {

/// The processes of a machine, with patience in starting: a program that was just copied, and that
/// a scanner has in hand for a moment, does not fail to start. A refused right keeps nobody
/// waiting.
class PatientProcesses : public machine::Processes {
 public:
  PatientProcesses(machine::Processes& processes, machine::Clock& clock);

  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override;
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override;
  bool isRunning(std::uint32_t processId) override;

 private:
  SystemCode patiently(const std::string& commandLine, const std::function<SystemCode()>& attempt);

  machine::Processes& processes_;
  Patience patience_;
};

}  // namespace trelv
