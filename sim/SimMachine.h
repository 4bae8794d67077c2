#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "machine/Machine.h"
#include "sim/SimAutomation.h"
#include "sim/SimCalls.h"
#include "sim/SimDesktop.h"
#include "sim/SimDisk.h"
#include "sim/SimExclusion.h"
#include "sim/SimFiles.h"
#include "sim/SimHostLibraries.h"
#include "sim/SimProcesses.h"
#include "sim/SimProfileFiles.h"
#include "sim/SimRegistry.h"
#include "sim/SimSystem.h"

namespace trelv::sim {

/// Version resources: those that files of the disks were given.
class SimVersionResources : public machine::VersionResources {
 public:
  SimVersionResources(SimVolumes& volumes, SimCalls& calls) : volumes_(volumes), calls_(calls) {}
  SystemCode read(const std::string& path, machine::FileVersion& version) override;

 private:
  SimVolumes& volumes_;
  SimCalls& calls_;
};

/// One simulated workstation: Windows XP, Italian, user mario (administrator), drive C: with
/// C:\WINDOWS\system32, C:\Program Files, C:\Users\mario\Temp and the manager's own executable
/// C:\Lumo\Programmi\TrelvManager.exe, which runs. No registry keys, no support library, no word
/// processor, an empty configuration store with the path C:\Lumo\Client. Everything can be changed
/// through the parts.
class SimMachine {
 public:
  SimMachine();
  ~SimMachine();
  SimMachine(const SimMachine&) = delete;
  SimMachine& operator=(const SimMachine&) = delete;

  /// What the program gets.
  machine::Machine& machine() { return machine_; }

  // --- Parts

  SimFiles& files() { return files_; }
  SimProfileFiles& profiles() { return profiles_; }
  SimRegistry& registry() { return registry_; }
  SimProcesses& programs() { return processes_; }
  SimEnvironment& environment() { return environment_; }
  SimSystem& system() { return system_; }
  SimClock& clock() { return clock_; }
  SimLocale& locale() { return locale_; }
  SimConfigurationLibrary& configuration() { return configuration_; }
  SimSupportLibrary& support() { return support_; }
  SimDesktop& desktop() { return desktop_; }
  SimAutomation& automation() { return automation_; }
  SimExclusion& exclusion() { return exclusion_; }
  SimVolumes& volumes() { return volumes_; }
  SimCalls& callLog() { return calls_; }

  // --- Set-up

  /// Mounts a disk under a drive ("S:") or share name ("\\server\share"); a new one when none is
  /// given. Gives the disk. A drive counts as local until system() connects it to a share.
  std::shared_ptr<SimDisk> mount(const std::string& name, std::shared_ptr<SimDisk> disk = nullptr);
  void unmount(const std::string& name);
  /// The disk that a full path lies on; raises std::out_of_range when none is mounted there.
  SimDisk& diskOf(const std::string& path);
  /// Version block, product type, suite bits, NT 4.0's "ProductSuite" value and, on terminal
  /// servers, the user's own Windows folder C:\Users\mario\windows for bare ini names.
  void setEdition(WindowsEdition edition);
  /// The program that was ended by force, or with its session, can be started anew: its windows are
  /// gone, the world is as it was left.
  void startSession();
  /// Where the program was started from; the file is made when missing and counts as running.
  /// The current folder becomes the program's.
  void setExecutable(const std::string& path);
  /// Command line: the executable in quotes, a blank and these arguments.
  void setArguments(const std::string& arguments);
  /// Another configuration library in the place of configuration(); not owned.
  void useConfigurationLibrary(machine::ConfigurationLibrary& library);

  // --- Files in one line, without a trace in the calls

  void putFile(const std::string& path, std::string_view bytes);
  std::string fileText(const std::string& path);
  bool fileExists(const std::string& path);
  bool folderExists(const std::string& path);
  void makeFolders(const std::string& path);
  void removeTree(const std::string& path);
  void setFileVersion(const std::string& path, const machine::FileVersion& version);
  /// Value of an ini key as another program on this machine reads it; empty when missing.
  std::string iniValue(const std::string& file, const std::string& section, const std::string& key);
  /// Writes an ini key as another program does; the folder is made when missing.
  void setIniValue(const std::string& file, const std::string& section, const std::string& key,
                   const std::string& value);

  // --- What happened

  /// Every machine call in order, as text: "files.read S:\prg\com\agdvcomp.ini".
  std::vector<std::string> calls() const { return calls_.texts(); }
  std::size_t callCount() const { return calls_.count(); }
  Openings openings(const std::string& prefix) const { return calls_.openings(prefix); }
  const std::deque<StartedProgram>& started() const { return processes_.started(); }
  const std::vector<SimBox>& boxes() const { return desktop_.boxes(); }
  /// Runs `hook` just before call number `number` (from 1), or before the next call whose text
  /// begins with `beginning`: lets something else happen between two calls.
  void onCall(std::size_t number, SimCalls::Hook hook) { calls_.onCall(number, std::move(hook)); }
  void onCall(const std::string& beginning, SimCalls::Hook hook) {
    calls_.onCall(beginning, std::move(hook));
  }

 private:
  void fillDisk();
  void fillEnvironment();

  SimCalls calls_;
  SimClock clock_;
  SimLocale locale_;
  SimVolumes volumes_;
  SimFiles files_;
  SimEnvironment environment_;
  SimSystem system_;
  SimProfileFiles profiles_;
  SimRegistry registry_;
  SimProcesses processes_;
  SimVersionResources versions_;
  SimConfigurationLibrary configuration_;
  ConfigurationSocket configurationSocket_;
  SimSupportLibrary support_;
  SimDesktop desktop_;
  SimAutomation automation_;
  SimExclusion exclusion_;
  /// Lives as long as this program runs from its executable.
  std::shared_ptr<void> runningExecutable_;
  machine::Machine machine_;
};

}  // namespace trelv::sim
