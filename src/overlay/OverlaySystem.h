#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "machine/Automation.h"
#include "machine/Clock.h"
#include "machine/Environment.h"
#include "machine/HostLibraries.h"
#include "machine/Locale.h"
#include "machine/Registry.h"
#include "machine/SystemFacts.h"
#include "machine/VersionResources.h"
#include "overlay/Steps.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// The wall clock below, plus what the program has paused: pausing takes no time.
class OverlayClock : public machine::Clock {
 public:
  explicit OverlayClock(machine::Clock& below) : below_(below) {}

  machine::LocalTime now() override;
  machine::LocalTime localTime(std::uint64_t moment) override { return below_.localTime(moment); }
  void pause(std::uint32_t milliseconds) override { paused_ += milliseconds; }

 private:
  machine::Clock& below_;
  std::uint64_t paused_ = 0;
};

/// Environment variables; those that were set stay on top.
class OverlayEnvironment : public machine::Environment {
 public:
  OverlayEnvironment(machine::Environment& below, machine::Locale& locale, Steps& steps)
      : below_(below), locale_(locale), steps_(steps) {}

  bool get(const std::string& name, std::string& value) override;
  bool set(const std::string& name, const std::string& value) override;

 private:
  machine::Environment& below_;
  machine::Locale& locale_;
  Steps& steps_;
  /// By upper-case name.
  std::map<std::string, std::string> set_;
};

/// Who the program takes itself for.
struct Process {
  /// Full path of its executable.
  std::string executable = {};
  /// The whole command line, program included.
  std::string commandLine = {};
  /// Administrator's rights are taken away.
  bool asUser = false;
};

/// What the system below tells, but for the process.
class OverlaySystem : public machine::SystemFacts {
 public:
  OverlaySystem(machine::SystemFacts& below, Process process)
      : below_(below), process_(std::move(process)) {}

  bool queryVersion(VersionRecord& record) override { return below_.queryVersion(record); }
  bool suiteIncludes(std::uint16_t mask) override { return below_.suiteIncludes(mask); }
  bool hasKernelFunction(const std::string& name) override {
    return below_.hasKernelFunction(name);
  }
  bool isWow64() override { return below_.isWow64(); }
  SystemCode isAdministrator(bool& member) override;
  SystemCode userName(std::uint32_t size, std::string& name) override {
    return below_.userName(size, name);
  }
  SystemCode systemWindowsFolder(std::string& folder) override {
    return below_.systemWindowsFolder(folder);
  }
  SystemCode shellFolder(int number, std::string& folder) override {
    return below_.shellFolder(number, folder);
  }
  SystemCode temporaryFolder(std::string& folder) override {
    return below_.temporaryFolder(folder);
  }
  std::uint32_t driveType(const std::string& root) override { return below_.driveType(root); }
  SystemCode connectionName(const std::string& drive, std::uint32_t size,
                            std::string& name) override {
    return below_.connectionName(drive, size, name);
  }
  SystemCode deviceNames(const std::string& drive, std::uint32_t size,
                         std::string& names) override {
    return below_.deviceNames(drive, size, names);
  }
  SystemCode computerName(std::string& name) override { return below_.computerName(name); }
  std::uint32_t processId() override { return below_.processId(); }
  std::uint32_t sessionId() override { return below_.sessionId(); }
  std::string executablePath() override { return process_.executable; }
  std::string startedPath() override { return process_.executable; }
  std::string commandLine() override { return process_.commandLine; }

 private:
  machine::SystemFacts& below_;
  Process process_;
};

/// Version resources of files that may be on top: copies have those of their source.
class OverlayVersions : public machine::VersionResources {
 public:
  OverlayVersions(machine::VersionResources& below, Tree& tree) : below_(below), tree_(tree) {}

  SystemCode read(const std::string& path, machine::FileVersion& version) override;

 private:
  machine::VersionResources& below_;
  Tree& tree_;
};

/// The host's support library below; without administrator's rights where they are taken away.
class OverlaySupport : public machine::SupportLibrary {
 public:
  OverlaySupport(machine::SupportLibrary& below, bool asUser) : below_(below), asUser_(asUser) {}

  machine::SupportAnswer isAdministrator() override;
  machine::SupportAnswer temporaryPath(std::string& buffer) override {
    return below_.temporaryPath(buffer);
  }

 private:
  machine::SupportLibrary& below_;
  bool asUser_;
};

/// A word processor that is noted instead of started, where one is registered.
class OverlayAutomation : public machine::Automation {
 public:
  OverlayAutomation(machine::Registry& registry, Steps& steps)
      : registry_(registry), steps_(steps) {}

  machine::AutomationAnswer startWord(std::unique_ptr<machine::WordProcessor>& word) override;

 private:
  machine::Registry& registry_;
  Steps& steps_;
};

}  // namespace trelv::overlay
