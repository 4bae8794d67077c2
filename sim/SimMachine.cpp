#include "sim/SimMachine.h"

#include <stdexcept>

#include "sim/SimText.h"

namespace trelv::sim {
namespace {

using namespace system_code;

constexpr const char* kProductOptions = "System\\CurrentControlSet\\Control\\ProductOptions";
constexpr const char* kUserProfile = "C:\\Users\\mario";
constexpr const char* kPrivateWindowsFolder = "C:\\Users\\mario\\windows";
constexpr const char* kExecutable = "C:\\Lumo\\Programmi\\TrelvManager.exe";
constexpr std::uint32_t kWholeBuffer = 65535;

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('\\')); }

bool isDrive(const std::string& name) { return name.size() == 2 && name[1] == ':'; }

}  // namespace

SystemCode SimVersionResources::read(const std::string& path, machine::FileVersion& version) {
  if (const auto injected = calls_.enter(CallKind::FileVersionRead, "versions.read", path)) {
    return *injected;
  }
  const SimVolumes::Place place = volumes_.find(path, true);
  if (place.code != kSuccess || place.node->folder) {
    return kFileNotFound;
  }
  const std::optional<Sharing>& held = place.node->held;
  if (held && (static_cast<unsigned>(*held) & static_cast<unsigned>(Sharing::Read)) == 0) {
    return kSharingViolation;
  }
  if (!place.node->version) {
    return kResourceDataNotFound;
  }
  version = *place.node->version;
  return kSuccess;
}

SimMachine::SimMachine()
    : files_(volumes_, calls_, clock_),
      environment_(calls_),
      system_(calls_, environment_),
      profiles_(files_, system_, calls_),
      registry_(calls_),
      processes_(*this, volumes_, system_, environment_, calls_),
      versions_(volumes_, calls_),
      configurationSocket_(calls_, configuration_),
      support_(calls_),
      desktop_(calls_, files_),
      automation_(calls_, files_),
      exclusion_(volumes_, files_, calls_, clock_),
      machine_{files_,   profiles_, registry_,   processes_, environment_,
               system_,  clock_,    locale_,     versions_,  configurationSocket_,
               support_, desktop_,  automation_, exclusion_} {
  mount("C:");
  fillDisk();
  fillEnvironment();
  setEdition(WindowsEdition::XP);
  setExecutable(kExecutable);
  setArguments("");
}

SimMachine::~SimMachine() = default;

void SimMachine::fillDisk() {
  makeFolders("C:\\WINDOWS\\system32");
  makeFolders("C:\\Program Files");
  makeFolders(std::string(kUserProfile) + "\\Temp");
}

void SimMachine::fillEnvironment() {
  const std::string profile = kUserProfile;
  environment_.put("USERPROFILE", profile);
  environment_.put("TEMP", profile + "\\Temp");
  environment_.put("TMP", profile + "\\Temp");
  environment_.put("USERNAME", "mario");
  environment_.put("COMPUTERNAME", "STAZIONE");
  environment_.put("USERDOMAIN", "STAZIONE");
  environment_.put("SESSIONNAME", "Console");
  environment_.put("windir", "C:\\WINDOWS");
  environment_.put("SystemRoot", "C:\\WINDOWS");
  environment_.put("ProgramFiles", "C:\\Program Files");
  environment_.put("PATH", "C:\\WINDOWS\\system32;C:\\WINDOWS");
}

std::shared_ptr<SimDisk> SimMachine::mount(const std::string& name, std::shared_ptr<SimDisk> disk) {
  if (disk == nullptr) {
    disk = std::make_shared<SimDisk>();
  }
  volumes_.mount(name, disk);
  if (isDrive(name)) {
    system_.addLocalDrive(name);
  }
  return disk;
}

void SimMachine::unmount(const std::string& name) {
  volumes_.unmount(name);
  system_.removeDrive(name);
}

SimDisk& SimMachine::diskOf(const std::string& path) { return volumes_.disk(path); }

void SimMachine::setEdition(WindowsEdition edition) {
  system_.setVersion(versionOf(edition));
  const bool terminalServer = isTerminalServer(edition);
  profiles_.setPrivateWindowsFolder(terminalServer ? kPrivateWindowsFolder : "");
  if (terminalServer) {
    makeFolders(kPrivateWindowsFolder);
  }
  registry_.removeValue(machine::Hive::LocalMachine, kProductOptions, "ProductSuite");
  if (edition == WindowsEdition::NT4TerminalServer) {
    registry_.setStored(machine::Hive::LocalMachine, kProductOptions, "ProductSuite",
                        machine::value_type::kMultiText,
                        wideOf("Terminal Server") + std::string(4, '\0'));
  }
}

void SimMachine::startSession() {
  desktop_.endProgram();
  calls_.setDead(false);
  processes_.whenSessionEnds("", nullptr);
  system_.setProcessId(system_.processId() + 4);
}

void SimMachine::setExecutable(const std::string& path) {
  if (!fileExists(path)) {
    processes_.define(path);
  }
  runningExecutable_ = diskOf(path).run(path);
  system_.setExecutablePath(path);
  volumes_.setCurrentFolder(parentOf(path));
}

void SimMachine::setArguments(const std::string& arguments) {
  system_.setCommandLine("\"" + system_.executablePath() + "\"" +
                         (arguments.empty() ? "" : " " + arguments));
}

void SimMachine::useConfigurationLibrary(machine::ConfigurationLibrary& library) {
  configurationSocket_.use(library);
}

void SimMachine::putFile(const std::string& path, std::string_view bytes) {
  SimDisk& disk = diskOf(path);
  disk.put(path, bytes);
  disk.setModified(path, clock_.now());
}

std::string SimMachine::fileText(const std::string& path) { return diskOf(path).text(path); }

bool SimMachine::fileExists(const std::string& path) { return diskOf(path).fileExists(path); }

bool SimMachine::folderExists(const std::string& path) { return diskOf(path).folderExists(path); }

void SimMachine::makeFolders(const std::string& path) { diskOf(path).makeFolders(path); }

void SimMachine::removeTree(const std::string& path) { diskOf(path).removeTree(path); }

void SimMachine::setFileVersion(const std::string& path, const machine::FileVersion& version) {
  diskOf(path).setVersion(path, version);
}

std::string SimMachine::iniValue(const std::string& file, const std::string& section,
                                 const std::string& key) {
  return profiles_.quietRead(section, key, "", kWholeBuffer, file);
}

void SimMachine::setIniValue(const std::string& file, const std::string& section,
                             const std::string& key, const std::string& value) {
  const std::string path = volumes_.fullPath(profiles_.placeOf(file));
  makeFolders(parentOf(path));
  if (profiles_.quietWrite(section, key, value, path) == 0) {
    throw std::logic_error("the ini file cannot be written: " + path);
  }
}

}  // namespace trelv::sim
