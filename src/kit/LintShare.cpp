#include "kit/LintShare.h"

#include <algorithm>

#include "base/Text.h"
#include "kit/ProgramVersion.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit::lintShare {
namespace {

using modProdTrelvManager::VersionNumber;

/// What the self-update keeps of the environment file's last line.
constexpr std::size_t kEnvironmentHead = 7;
constexpr std::size_t kLargestEnvironment = std::size_t{16} << 20U;

struct RecordedVersion {
  const IniText::Section* section;
  std::string version;
  /// Null for a product whose configuration cannot be read.
  const Configuration* configuration;
};

const Configuration* configurationOf(const VersionRecords& records, const std::string& id) {
  const auto found = std::find_if(
      records.configurations->begin(), records.configurations->end(),
      [&](const Configuration& each) -> bool { return equalNoCase(each.product, id); });
  return found == records.configurations->end() ? nullptr : &*found;
}

std::vector<RecordedVersion> recorded(const VersionRecords& records) {
  std::vector<RecordedVersion> found;
  if (records.file.text == nullptr) {
    return found;
  }
  for (const IniText::Section& section : records.file.text->sections()) {
    const std::string version = records.file.text->value(section.name, "version");
    if (section.line != 0 && !version.empty()) {
      found.push_back({&section, version, configurationOf(records, section.name)});
    }
  }
  return found;
}

/// The versions that the configuration brings.
std::vector<std::string> versionsOf(const Configuration& configuration) {
  std::vector<std::string> versions;
  for (const CommandSection& section : configuration.sections) {
    if (!section.version.empty() && section.operation != Operation::Remove) {
      versions.push_back(section.version);
    }
  }
  return versions;
}

bool lists(const std::vector<CatalogueLine>& entries, const std::string& id) {
  return std::any_of(entries.begin(), entries.end(),
                     [&](const CatalogueLine& entry) -> bool { return equalNoCase(entry.id, id); });
}

void tell(const VersionRecords& records, Report& report, const RecordedVersion& one) {
  report.add(records.file.shown, records.file.text->line(one.section->name, "version"),
             one.section->name + " " + one.version);
}

std::ptrdiff_t fields(const std::string& version) {
  return std::count(version.begin(), version.end(), '.') + 1;
}

SystemCode look(const Share& share, const std::string& path, machine::FileFacts& facts) {
  return share.host->program.machine.files.look(path, facts);
}

bool isFolder(const Share& share, const std::string& path) {
  return modLibrary::FolderExists(share.host->program, path);
}

bool isFile(const Share& share, const std::string& path) {
  return modLibrary::FileExists(share.host->program, path);
}

void tell(const Share& share, Report& report, const std::string& path,
          const std::string& detail = {}) {
  report.add(share.host->place.shown(path), std::nullopt, detail);
}

/// False too where one of them cannot be asked.
bool onAnotherVolume(const Share& share, const std::string& path, const std::string& other) {
  machine::Files& files = share.host->program.machine.files;
  machine::FileIdentity left;
  machine::FileIdentity right;
  return files.identify(path, left) == system_code::kSuccess &&
         files.identify(other, right) == system_code::kSuccess && left.volume != right.volume;
}

/// The fields of a program's version, each a number; none of an empty text.
std::vector<std::uint64_t> fieldsOf(const std::string& version) {
  std::vector<std::uint64_t> numbers;
  for (std::size_t at = 0; at < version.size();) {
    const std::size_t end = std::min(version.find('.', at), version.size());
    numbers.push_back(VersionNumber(version.substr(at, end - at)));
    at = end + 1;
  }
  return numbers;
}

/// The last line, as the self-update reads it.
std::string lastLine(std::string text) {
  if (text.ends_with("\n")) {
    text.pop_back();
    if (text.ends_with("\r")) {
      text.pop_back();
    }
  }
  return text.substr(text.rfind('\n') + 1);
}

}  // namespace

void recordedAbove(const VersionRecords& records, Report& report) {
  for (const RecordedVersion& one : recorded(records)) {
    if (one.configuration == nullptr) {
      continue;
    }
    const std::vector<std::string> versions = versionsOf(*one.configuration);
    const bool above = !versions.empty() &&
                       std::all_of(versions.begin(), versions.end(), [&](const std::string& other) {
                         return VersionNumber(one.version) > VersionNumber(other);
                       });
    if (above) {
      tell(records, report, one);
    }
  }
}

void notInCatalogue(const VersionRecords& records, Report& report) {
  if (!records.catalogue->trouble.empty()) {
    return;
  }
  for (const RecordedVersion& one : recorded(records)) {
    if (!lists(records.catalogue->entries, one.section->name) &&
        !lists(records.catalogue->withoutConf, one.section->name)) {
      report.add(records.file.shown, one.section->line, one.section->name);
    }
  }
}

void notWritable(const VersionRecords& records, Report& report) {
  machine::Files& files = records.host->program.machine.files;
  if (records.facts.readOnly || files.mayAddFile(records.folder) == system_code::kAccessDenied) {
    report.add(records.file.shown, std::nullopt);
  }
}

void otherFields(const VersionRecords& records, Report& report) {
  for (const RecordedVersion& one : recorded(records)) {
    if (one.configuration == nullptr) {
      continue;
    }
    const std::vector<std::string> versions = versionsOf(*one.configuration);
    const bool differs = !versions.empty() &&
                         std::none_of(versions.begin(), versions.end(), [&](const std::string& v) {
                           return fields(v) == fields(one.version);
                         });
    if (differs) {
      tell(records, report, one);
    }
  }
}

void lock(const Share& share, Report& report) {
  const std::string path = hostPaths::serverLock(share.host->place.full());
  machine::FileFacts facts;
  if (look(share, path, facts) == system_code::kSuccess && !facts.folder) {
    tell(share, report, path);
  }
}

void folderAsLock(const Share& share, Report& report) {
  const std::string path = hostPaths::serverLock(share.host->place.full());
  if (isFolder(share, path)) {
    tell(share, report, path);
  }
}

void temporaryFolder(const Share& share, Report& report) {
  const std::string server = share.host->place.full();
  const std::string path = hostPaths::temporaryFolder(server);
  if (!isFolder(share, path)) {
    tell(share, report, path, "manca");
  } else if (onAnotherVolume(share, path, hostPaths::recordFolder(server)) ||
             onAnotherVolume(share, path, hostPaths::copiesFolder(server))) {
    tell(share, report, path, "è su un altro volume");
  }
}

void environmentFile(const Share& share, Report& report) {
  const std::string path =
      hostPaths::recordFolder(share.host->place.full()) + "\\" + hostPaths::kEnvironmentFile;
  std::string text;
  const SystemCode code = share.host->program.machine.files.read(path, kLargestEnvironment, text);
  const std::string line = lastLine(text);
  if (code != system_code::kSuccess) {
    tell(share, report, path, "manca o non si legge");
  } else if (text.empty()) {
    tell(share, report, path, "è vuoto");
  } else if (line.size() < kEnvironmentHead) {
    tell(share, report, path, line.empty() ? "ultima riga vuota" : "ultima riga corta: " + line);
  }
}

void noRelease(const Share& share, Report& report) {
  const std::string server = share.host->place.full();
  const std::string path = hostPaths::dovraRelease(server);
  if (isFolder(share, hostPaths::pluginFolder(server)) && !isFile(share, path)) {
    tell(share, report, path);
  }
}

void clientCopy(const Share& share, Report& report) {
  const std::string folder = hostPaths::clientCopyFolder(share.host->place.full()) + "\\";
  const std::string manager = folder + "TrelvManager.exe";
  if (!isFile(share, manager)) {
    return;
  }
  for (const char* const name : {"qalbunex.exe", "7z.exe", "7z.dll"}) {
    if (!isFile(share, folder + name)) {
      tell(share, report, folder + name, "manca");
    }
  }
  const std::string version = modLibrary::FileVersionText(share.host->program, manager, true);
  if (fieldsOf(version) < fieldsOf(programVersion())) {
    tell(share, report, manager,
         (version.empty() ? "senza versione" : version) + std::string(", questa è la ") +
             programVersion());
  }
}

}  // namespace trelv::kit::lintShare
