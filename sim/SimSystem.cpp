#include "sim/SimSystem.h"

#include <array>
#include <chrono>
#include <utility>

#include "base/Text.h"
#include "sim/SimText.h"

namespace trelv::sim {
namespace {

using machine::LocalTime;
using namespace system_code;

constexpr std::uint32_t kWindows95Family = 1;
constexpr std::uint32_t kNtFamily = 2;
constexpr std::uint8_t kWorkstation = 1;
constexpr std::uint8_t kServer = 3;
constexpr std::uint16_t kTerminal = 0x10;
constexpr std::uint16_t kSingleUser = 0x100;

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysIn(int year, int month) {
  constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : kDays.at(static_cast<std::size_t>(month - 1));
}

void nextDay(LocalTime& time) {
  if (++time.day > daysIn(time.year, time.month)) {
    time.day = 1;
    if (++time.month > 12) {
      time.month = 1;
      ++time.year;
    }
  }
}

// What asking for the share of a drive answers where there is none.
constexpr SystemCode kBadDevice = 1200;
constexpr SystemCode kNotConnected = 2250;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::uint32_t kPerSecond = 1000;

std::string fourDigits(int year) {
  const std::string digits = std::to_string(year);
  return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

struct EditionFacts {
  WindowsEdition edition;
  std::uint32_t major;
  std::uint32_t minor;
  std::uint32_t build;
  std::uint32_t platform;
  std::uint8_t productType;
  std::uint16_t suite;
  std::uint16_t servicePack;
};

constexpr std::array kEditions{
    EditionFacts{WindowsEdition::Win95, 4, 0, 0x040003B6, kWindows95Family, 0, 0, 0},
    EditionFacts{WindowsEdition::Win98, 4, 10, 0x040A08AE, kWindows95Family, 0, 0, 0},
    EditionFacts{WindowsEdition::WinMe, 4, 90, 0x045A0BB8, kWindows95Family, 0, 0, 0},
    EditionFacts{WindowsEdition::NT4, 4, 0, 1381, kNtFamily, kWorkstation, 0, 6},
    EditionFacts{WindowsEdition::NT4TerminalServer, 4, 0, 1381, kNtFamily, kServer, 0x10, 6},
    EditionFacts{WindowsEdition::Win2000Pro, 5, 0, 2195, kNtFamily, kWorkstation, 0, 4},
    EditionFacts{WindowsEdition::Win2000Server, 5, 0, 2195, kNtFamily, kServer, 0, 4},
    EditionFacts{WindowsEdition::Win2000TerminalServer, 5, 0, 2195, kNtFamily, kServer, kTerminal,
                 4},
    EditionFacts{WindowsEdition::XP, 5, 1, 2600, kNtFamily, kWorkstation, kTerminal | kSingleUser,
                 3},
    EditionFacts{WindowsEdition::XP64, 5, 2, 3790, kNtFamily, kWorkstation, kTerminal | kSingleUser,
                 2},
    EditionFacts{WindowsEdition::Win2003, 5, 2, 3790, kNtFamily, kServer, kTerminal | kSingleUser,
                 2},
    EditionFacts{WindowsEdition::Win2003TerminalServer, 5, 2, 3790, kNtFamily, kServer, kTerminal,
                 2},
    EditionFacts{WindowsEdition::Vista, 6, 0, 6002, kNtFamily, kWorkstation,
                 kTerminal | kSingleUser, 2},
    EditionFacts{WindowsEdition::Win2008, 6, 0, 6002, kNtFamily, kServer, kTerminal | kSingleUser,
                 2},
    EditionFacts{WindowsEdition::Win2008TerminalServer, 6, 0, 6002, kNtFamily, kServer, kTerminal,
                 2},
    EditionFacts{WindowsEdition::Seven, 6, 1, 7601, kNtFamily, kWorkstation,
                 kTerminal | kSingleUser, 1},
    EditionFacts{WindowsEdition::Win2008R2, 6, 1, 7601, kNtFamily, kServer, kTerminal | kSingleUser,
                 1},
    EditionFacts{WindowsEdition::Win2008R2TerminalServer, 6, 1, 7601, kNtFamily, kServer, kTerminal,
                 1},
    EditionFacts{WindowsEdition::Win8, 6, 2, 9200, kNtFamily, kWorkstation, kTerminal | kSingleUser,
                 0},
    // What a program without a list of newer systems in its manifest is told.
    EditionFacts{WindowsEdition::Win10, 6, 2, 9200, kNtFamily, kWorkstation,
                 kTerminal | kSingleUser, 0},
};

std::string servicePackText(const EditionFacts& facts) {
  if (facts.edition == WindowsEdition::Win98) {
    return " A ";
  }
  if (facts.edition == WindowsEdition::NT4 || facts.edition == WindowsEdition::NT4TerminalServer) {
    return "Service Pack 6";
  }
  return facts.servicePack == 0 ? "" : "Service Pack " + std::to_string(facts.servicePack);
}

}  // namespace

bool isTerminalServer(WindowsEdition edition) {
  return edition == WindowsEdition::NT4TerminalServer ||
         edition == WindowsEdition::Win2000TerminalServer ||
         edition == WindowsEdition::Win2003TerminalServer ||
         edition == WindowsEdition::Win2008TerminalServer ||
         edition == WindowsEdition::Win2008R2TerminalServer;
}

VersionRecord versionOf(WindowsEdition edition) {
  VersionRecord record;
  record.size = kExtendedVersionRecord;
  for (const EditionFacts& facts : kEditions) {
    if (facts.edition == edition) {
      record.major = facts.major;
      record.minor = facts.minor;
      record.build = facts.build;
      record.platform = facts.platform;
      record.productType = facts.productType;
      record.suiteMask = facts.suite;
      record.servicePack = servicePackText(facts);
      record.servicePackMajor = facts.servicePack;
    }
  }
  return record;
}

// --- Clock

void SimClock::pause(std::uint32_t milliseconds) {
  paused_ += milliseconds;
  wait(milliseconds);
}

void SimClock::wait(std::uint32_t milliseconds) {
  if (sleeper_) {
    sleeper_(milliseconds);
  } else {
    pass(milliseconds);
  }
}

void SimClock::advance(std::uint32_t seconds) { pass(seconds * std::uint64_t{kPerSecond}); }

void SimClock::after(std::uint32_t milliseconds, std::function<void()> happens) {
  events_.emplace(elapsed_ + milliseconds, std::move(happens));
}

void SimClock::pass(std::uint64_t milliseconds) {
  const std::uint64_t end = elapsed_ + milliseconds;
  while (!events_.empty() && events_.begin()->first <= end) {
    const auto event = events_.extract(events_.begin());
    moveTo(event.key());
    event.mapped()();
  }
  moveTo(end);
}

void SimClock::moveTo(std::uint64_t elapsed) {
  auto rest = static_cast<std::int64_t>(elapsed / kPerSecond - elapsed_ / kPerSecond);
  elapsed_ = elapsed;
  rest += (now_.hour * 60 + now_.minute) * 60 + now_.second;
  for (; rest >= kSecondsPerDay; rest -= kSecondsPerDay) {
    nextDay(now_);
  }
  now_.hour = static_cast<int>(rest / 3600);
  now_.minute = static_cast<int>(rest / 60 % 60);
  now_.second = static_cast<int>(rest % 60);
}

LocalTime SimClock::localTime(std::uint64_t moment) {
  constexpr std::uint64_t kTicksPerSecond = 10'000'000;
  const auto seconds = static_cast<std::int64_t>(moment / kTicksPerSecond);
  const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::year{1601} / 1 / 1} +
                                         std::chrono::days{seconds / kSecondsPerDay}};
  const auto rest = static_cast<int>(seconds % kSecondsPerDay);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          rest / 3600,
          rest / 60 % 60,
          rest % 60};
}

// --- Locale

std::string SimLocale::shortDate(const LocalTime& time) {
  if (language_ == Language::English) {
    return std::to_string(time.month) + "/" + std::to_string(time.day) + "/" +
           fourDigits(time.year);
  }
  return twoDigits(time.day) + "/" + twoDigits(time.month) + "/" + fourDigits(time.year);
}

std::string SimLocale::longTime(const LocalTime& time) {
  const std::string rest = ":" + twoDigits(time.minute) + ":" + twoDigits(time.second);
  if (language_ == Language::English) {
    const int hour = time.hour % 12 == 0 ? 12 : time.hour % 12;
    return std::to_string(hour) + rest + (time.hour < 12 ? " AM" : " PM");
  }
  return twoDigits(time.hour) + rest;
}

std::string SimLocale::monthName(int month) {
  static constexpr std::array kItalian{"gennaio",   "febbraio", "marzo",    "aprile",
                                       "maggio",    "giugno",   "luglio",   "agosto",
                                       "settembre", "ottobre",  "novembre", "dicembre"};
  static constexpr std::array kEnglish{"January",   "February", "March",    "April",
                                       "May",       "June",     "July",     "August",
                                       "September", "October",  "November", "December"};
  if (month < 1 || month > 12) {
    return "";
  }
  const auto index = static_cast<std::size_t>(month - 1);
  return language_ == Language::English ? kEnglish.at(index) : kItalian.at(index);
}

std::string SimLocale::truthText(bool value) {
  if (language_ == Language::English) {
    return value ? "True" : "False";
  }
  return value ? "Vero" : "Falso";
}

std::string SimLocale::upperCase(const std::string& text) { return upperCaseOf(text); }

std::string SimLocale::toAnsi(const std::string& text) { return ansiOf(text); }

std::string SimLocale::fromAnsi(const std::string& bytes) { return textOfAnsi(bytes); }

// --- Environment

bool SimEnvironment::get(const std::string& name, std::string& value) {
  const bool injected = calls_.enter(CallKind::EnvironmentGet, "environment.get", name).has_value();
  if (injected || !has(name)) {
    return false;
  }
  value = this->value(name);
  return true;
}

bool SimEnvironment::set(const std::string& name, const std::string& value) {
  const bool injected = calls_.enter(CallKind::EnvironmentSet, "environment.set", name).has_value();
  if (injected || name.empty() || name.find('=') != std::string::npos) {
    return false;
  }
  put(name, textOfAnsi(ansiOf(value)));
  return true;
}

std::string SimEnvironment::value(const std::string& name) const {
  const auto found = variables_.find(upperCase(name));
  return found == variables_.end() ? "" : found->second.value;
}

bool SimEnvironment::has(const std::string& name) const {
  return variables_.count(upperCase(name)) > 0;
}

void SimEnvironment::put(const std::string& name, const std::string& value) {
  Variable& variable = variables_[upperCase(name)];
  variable.name = variable.name.empty() ? name : variable.name;
  variable.value = value;
}

void SimEnvironment::remove(const std::string& name) { variables_.erase(upperCase(name)); }

std::map<std::string, std::string> SimEnvironment::snapshot() const {
  std::map<std::string, std::string> copy;
  for (const auto& [key, variable] : variables_) {
    copy[variable.name] = variable.value;
  }
  return copy;
}

// --- System

SimSystem::SimSystem(SimCalls& calls, SimEnvironment& environment)
    : calls_(calls), environment_(environment) {}

bool SimSystem::queryVersion(VersionRecord& record) {
  ++versionQueries_;
  const auto injected =
      calls_.enter(CallKind::VersionQuery, "system.queryVersion", std::to_string(record.size));
  const bool known = record.size == kShortVersionRecord || record.size == kExtendedVersionRecord;
  if (injected || failVersionQuery_ || !known) {
    return false;
  }
  VersionRecord answer = version_;
  answer.size = record.size;
  if (record.size == kShortVersionRecord) {
    answer.servicePackMajor = 0;
    answer.servicePackMinor = 0;
    answer.suiteMask = 0;
    answer.productType = 0;
  }
  record = answer;
  return true;
}

bool SimSystem::suiteIncludes(std::uint16_t mask) {
  const bool injected =
      calls_.enter(CallKind::SuiteTest, "system.suiteIncludes", std::to_string(mask)).has_value();
  return !injected && (version_.suiteMask & mask) == mask;
}

bool SimSystem::hasKernelFunction(const std::string& name) {
  return !calls_.enter(CallKind::KernelFunctionQuery, "system.hasKernelFunction", name) &&
         kernelFunctions_.count(name) > 0;
}

bool SimSystem::isWow64() {
  return !calls_.enter(CallKind::Wow64Query, "system.isWow64", "").has_value() && wow64_;
}

SystemCode SimSystem::isAdministrator(bool& member) {
  const auto injected = calls_.enter(CallKind::AdministratorQuery, "system.isAdministrator", "");
  const SystemCode code = injected.value_or(administratorCode_);
  if (code == kSuccess) {
    member = administrator_;
  }
  return code;
}

SystemCode SimSystem::userName(std::uint32_t size, std::string& name) {
  const auto injected = calls_.enter(CallKind::UserNameQuery, "system.userName", "");
  const SystemCode code = injected.value_or(userNameCode_);
  if (code != kSuccess) {
    return code;
  }
  if (characterCount(userName_) + 1 > size) {
    return kInsufficientBuffer;
  }
  name = userName_;
  return kSuccess;
}

SystemCode SimSystem::systemWindowsFolder(std::string& folder) {
  const auto injected =
      calls_.enter(CallKind::WindowsFolderQuery, "system.systemWindowsFolder", "");
  if (!injected) {
    folder = windowsFolder_;
  }
  return injected.value_or(kSuccess);
}

SystemCode SimSystem::shellFolder(int number, std::string& folder) {
  const auto injected =
      calls_.enter(CallKind::ShellFolderQuery, "system.shellFolder", std::to_string(number));
  if (injected) {
    return *injected;
  }
  const std::string programs = wow64_ ? "C:\\Program Files (x86)" : "C:\\Program Files";
  const std::map<int, std::string> usual{
      {machine::kCommonDesktopFolder, "C:\\Users\\Public\\Desktop"},
      {machine::kCommonDataFolder, "C:\\ProgramData"},
      {machine::kProgramFilesFolder, programs},
      {machine::kUserProfileFolder, environment_.value("USERPROFILE")},
      {machine::kCommonFilesFolder, programs + "\\Common Files"}};
  const std::map<int, std::string>& folders =
      shellFolders_.count(number) > 0 ? shellFolders_ : usual;
  const auto found = folders.find(number);
  if (found == folders.end()) {
    return kInvalidParameter;
  }
  folder = found->second;
  return kSuccess;
}

SystemCode SimSystem::temporaryFolder(std::string& folder) {
  const auto injected = calls_.enter(CallKind::TemporaryFolderQuery, "system.temporaryFolder", "");
  if (injected) {
    return *injected;
  }
  std::string found = windowsFolder_;
  for (const char* variable : {"USERPROFILE", "TEMP", "TMP"}) {
    const std::string value = environment_.value(variable);
    found = value.empty() ? found : value;
  }
  folder = replaceAll(found, "/", "\\");
  if (folder.back() != '\\') {
    folder += "\\";
  }
  return kSuccess;
}

std::uint32_t SimSystem::driveType(const std::string& root) {
  const bool injected =
      calls_.enter(CallKind::DriveTypeQuery, "system.driveType", root).has_value();
  const auto found = drives_.find(upperCase(root.substr(0, 2)));
  return injected || found == drives_.end() ? machine::drive_type::kNoRoot : found->second.type;
}

SystemCode SimSystem::connectionName(const std::string& drive, std::uint32_t size,
                                     std::string& name) {
  const auto injected = calls_.enter(CallKind::ConnectionNameQuery, "system.connectionName", drive);
  const auto found = drives_.find(upperCase(drive));
  const SystemCode code = injected.value_or(connectionCode_);
  if (code != kSuccess) {
    return code;
  }
  if (found == drives_.end()) {
    return kBadDevice;
  }
  if (found->second.share.empty()) {
    return kNotConnected;
  }
  if (characterCount(found->second.share) + 1 > size) {
    return kMoreData;
  }
  name = found->second.share;
  return kSuccess;
}

SystemCode SimSystem::deviceNames(const std::string& drive, std::uint32_t size,
                                  std::string& names) {
  const auto injected = calls_.enter(CallKind::DeviceNamesQuery, "system.deviceNames", drive);
  const auto found = drives_.find(upperCase(drive));
  const SystemCode code = injected.value_or(deviceCode_);
  if (code != kSuccess) {
    return code;
  }
  if (found == drives_.end()) {
    return kFileNotFound;
  }
  std::string all;
  for (const std::string& device : found->second.devices) {
    all += device + '\0';
  }
  all += '\0';
  if (characterCount(all) > size) {
    return kInsufficientBuffer;
  }
  names = all;
  return kSuccess;
}

SystemCode SimSystem::computerName(std::string& name) {
  const auto injected = calls_.enter(CallKind::ComputerNameQuery, "system.computerName", "");
  const SystemCode code = injected.value_or(computerNameCode_);
  if (code == kSuccess) {
    name = computerName_;
  }
  return code;
}

void SimSystem::addLocalDrive(const std::string& drive) {
  drives_.try_emplace(
      upperCase(drive),
      SimDrive{machine::drive_type::kFixed, "", {"\\Device\\HarddiskVolume" + drive.substr(0, 1)}});
}

void SimSystem::connectDrive(const std::string& drive, const std::string& share) {
  drives_[upperCase(drive)] = {
      machine::drive_type::kNetwork,
      share,
      {"\\Device\\LanmanRedirector\\;" + drive + "000000000000a1b2" + share.substr(1)}};
}

void SimSystem::setDriveType(const std::string& drive, std::uint32_t type) {
  drives_[upperCase(drive)].type = type;
}

void SimSystem::removeDrive(const std::string& drive) { drives_.erase(upperCase(drive)); }

void SimSystem::setDevices(const std::string& drive, const std::vector<std::string>& devices) {
  drives_[upperCase(drive)].devices = devices;
}

}  // namespace trelv::sim
