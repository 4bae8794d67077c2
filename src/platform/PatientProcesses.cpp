#include "platform/PatientProcesses.h"

#include <utility>

namespace trelv {

PatientProcesses::PatientProcesses(machine::Processes& processes, machine::Clock& clock)
    : processes_(processes),
      patience_([&clock](std::uint32_t milliseconds) -> void { clock.pause(milliseconds); }) {}

SystemCode PatientProcesses::start(const std::string& commandLine, bool visible,
                                   std::unique_ptr<machine::RunningProcess>& process) {
  return patiently(commandLine,
                   [&]() -> SystemCode { return processes_.start(commandLine, visible, process); });
}

SystemCode PatientProcesses::startTool(const std::string& commandLine, bool visible,
                                       std::unique_ptr<machine::RunningProcess>& process) {
  return patiently(commandLine, [&]() -> SystemCode {
    return processes_.startTool(commandLine, visible, process);
  });
}

SystemCode PatientProcesses::startBound(const std::string& commandLine, bool visible,
                                        std::unique_ptr<machine::RunningProcess>& process) {
  return patiently(commandLine, [&]() -> SystemCode {
    return processes_.startBound(commandLine, visible, process);
  });
}

void PatientProcesses::whenSessionEnds(const std::string& reason, std::function<void()> action) {
  processes_.whenSessionEnds(reason, std::move(action));
}

bool PatientProcesses::isRunning(std::uint32_t processId) {
  return processes_.isRunning(processId);
}

SystemCode PatientProcesses::patiently(const std::string& commandLine,
                                       const std::function<SystemCode()>& attempt) {
  return patience_.change(commandLine, attempt, []() -> bool { return true; });
}

}  // namespace trelv
