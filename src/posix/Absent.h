#pragma once

#include <memory>
#include <string>

#include "machine/Automation.h"
#include "machine/Desktop.h"
#include "machine/HostLibraries.h"
#include "machine/Processes.h"
#include "machine/Registry.h"

/// What a system that is no Windows does not have: each answers as an empty one would.
namespace trelv::posix {

/// Every key is missing, none can be made.
class NoRegistry : public machine::Registry {
 public:
  SystemCode openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                     std::unique_ptr<machine::RegistryKey>& key) override;
  SystemCode createKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                       std::unique_ptr<machine::RegistryKey>& key) override;
};

/// No program is found; processes of this system are known by their numbers.
class NoPrograms : public machine::Processes {
 public:
  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override;
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override;
  bool isRunning(std::uint32_t processId) override;
};

/// Neither the schema nor the store is named anywhere.
class NoStore : public machine::ConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override;
  std::int32_t setParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute, std::int32_t type,
                            const std::string& value) override;
  std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) override;
};

class NoSupport : public machine::SupportLibrary {
 public:
  machine::SupportAnswer isAdministrator() override;
  machine::SupportAnswer temporaryPath(std::string& buffer) override;
};

/// Nothing is shown.
class NoDesktop : public machine::Desktop {
 public:
  machine::BoxAnswer messageBox(const std::string& title, const std::string& text,
                                machine::BoxIcon icon, machine::BoxButtons buttons) override;
  std::optional<std::string> inputBox(const std::string& title, const std::string& prompt) override;
  bool showModal(machine::Form& form) override;
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) override;
  machine::FormWindow* activeForm() override;
  void processEvents() override;
  void setHourglass(bool on) override;
};

class NoAutomation : public machine::Automation {
 public:
  machine::AutomationAnswer startWord(std::unique_ptr<machine::WordProcessor>& word) override;
};

}  // namespace trelv::posix
