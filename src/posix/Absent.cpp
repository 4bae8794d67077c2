#include "posix/Absent.h"

#include <cerrno>
#include <csignal>

namespace trelv::posix {
namespace {

/// What the configuration store answers where the registry names no schema.
constexpr std::int32_t kNoSchema = -4001;

}  // namespace

SystemCode NoRegistry::openKey(machine::Hive /*hive*/, const std::string& /*path*/,
                               std::uint32_t /*access*/,
                               std::unique_ptr<machine::RegistryKey>& /*key*/) {
  return system_code::kFileNotFound;
}

SystemCode NoRegistry::createKey(machine::Hive /*hive*/, const std::string& /*path*/,
                                 std::uint32_t /*access*/,
                                 std::unique_ptr<machine::RegistryKey>& /*key*/) {
  return system_code::kAccessDenied;
}

SystemCode NoPrograms::start(const std::string& /*commandLine*/, bool /*visible*/,
                             std::unique_ptr<machine::RunningProcess>& /*process*/) {
  return system_code::kFileNotFound;
}

SystemCode NoPrograms::startTool(const std::string& /*commandLine*/, bool /*visible*/,
                                 std::unique_ptr<machine::RunningProcess>& /*process*/) {
  return system_code::kFileNotFound;
}

SystemCode NoPrograms::startBound(const std::string& /*commandLine*/, bool /*visible*/,
                                  std::unique_ptr<machine::RunningProcess>& /*process*/) {
  return system_code::kFileNotFound;
}

void NoPrograms::whenSessionEnds(const std::string& /*reason*/, std::function<void()> /*action*/) {}

bool NoPrograms::isRunning(std::uint32_t processId) {
  return kill(static_cast<pid_t>(processId), 0) == 0 || errno != ESRCH;
}

std::int32_t NoStore::getParameter(const std::string& /*product*/, const std::string& /*section*/,
                                   const std::string& /*key*/, const std::string& /*attribute*/,
                                   const std::string& /*defaultValue*/, std::int32_t /*size*/,
                                   std::string& /*buffer*/) {
  return kNoSchema;
}

std::int32_t NoStore::setParameter(const std::string& /*product*/, const std::string& /*section*/,
                                   const std::string& /*key*/, const std::string& /*attribute*/,
                                   std::int32_t /*type*/, const std::string& /*value*/) {
  return kNoSchema;
}

std::int32_t NoStore::getConfigPath(std::int32_t /*kind*/, std::string& /*buffer*/) {
  return kNoSchema;
}

machine::SupportAnswer NoSupport::isAdministrator() { return machine::SupportAnswer::Absent; }
machine::SupportAnswer NoSupport::temporaryPath(std::string& /*buffer*/) {
  return machine::SupportAnswer::Absent;
}

machine::BoxAnswer NoDesktop::messageBox(const std::string& /*title*/, const std::string& /*text*/,
                                         machine::BoxIcon /*icon*/,
                                         machine::BoxButtons /*buttons*/) {
  return machine::BoxAnswer::None;
}
std::optional<std::string> NoDesktop::inputBox(const std::string& /*title*/,
                                               const std::string& /*prompt*/) {
  return std::nullopt;
}
bool NoDesktop::showModal(machine::Form& /*form*/) { return false; }
std::unique_ptr<machine::ShownForm> NoDesktop::showModeless(machine::Form& /*form*/) {
  return nullptr;
}
machine::FormWindow* NoDesktop::activeForm() { return nullptr; }
void NoDesktop::processEvents() {}
void NoDesktop::setHourglass(bool /*on*/) {}

machine::AutomationAnswer NoAutomation::startWord(
    std::unique_ptr<machine::WordProcessor>& /*word*/) {
  return {machine::automation_code::kNotRegistered, "", ""};
}

}  // namespace trelv::posix
