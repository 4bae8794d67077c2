#include "kit/PublicationJournal.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "platform/FileSystemObject.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFolder = "trelv";
constexpr const char* kJournalFile = "giornale.json";
constexpr const char* kUndoneFile = "annullata";
constexpr const char* kKeptFolder = "file";
constexpr const char* kSchema = "trelv-giornale/1";
constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
constexpr int kMostTries = 100;

Json jsonOf(const Fingerprint& print) {
  // Not every reader of JSON keeps 64 bits of a number.
  return {{"size", print.size}, {"hash", std::to_string(print.hash)}};
}

Fingerprint printOf(const Json& json) {
  return {json.at("size").get<std::uint64_t>(), std::stoull(json.at("hash").get<std::string>())};
}

Json jsonOf(const JournalFile& file) {
  Json brought = Json::array();
  for (const Fingerprint& print : file.brought) {
    brought.push_back(jsonOf(print));
  }
  return {{"path", file.path},
          {"kept", file.kept},
          {"keptPrint", jsonOf(file.keptPrint)},
          {"brought", brought}};
}

void require(bool holds) {
  if (!holds) {
    throw std::invalid_argument("journal");
  }
}

/// A name, or a path downward: a journal of ours leads nowhere else.
std::string downward(const std::string& path) {
  require(!path.empty() && path.find_first_of(":/*?\"<>|") == std::string::npos);
  for (std::size_t from = 0; from <= path.size();) {
    const std::size_t end = std::min(path.find('\\', from), path.size());
    const std::string level = path.substr(from, end - from);
    require(!level.empty() && level.find_first_not_of(". ") != std::string::npos);
    from = end + 1;
  }
  return path;
}

std::string nameOnly(const std::string& name) {
  require(name.find('\\') == std::string::npos);
  return downward(name);
}

std::string keptName(const std::string& name) { return name.empty() ? name : nameOnly(name); }

JournalFile fileOf(const Json& json) {
  JournalFile file{
      downward(json.at("path")), keptName(json.at("kept")), printOf(json.at("keptPrint")), {}};
  for (const Json& print : json.at("brought")) {
    file.brought.push_back(printOf(print));
  }
  return file;
}

std::string textOf(const Journal& journal) {
  Json packs = Json::array();
  for (const JournalPack& pack : journal.packs) {
    packs.push_back({{"name", pack.name}, {"print", jsonOf(pack.print)}, {"kept", pack.kept}});
  }
  Json files = Json::array();
  for (const JournalFile& file : journal.files) {
    files.push_back(jsonOf(file));
  }
  const Json whole{{"schema", kSchema},
                   {"written", journal.written},
                   {"author", journal.author},
                   {"packs", packs},
                   {"files", files},
                   {"folders", journal.folders},
                   {"recorded", journal.recorded}};
  return whole.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// Raises std::exception for what this program has not written.
Journal journalOf(const std::string& name, const std::string& text) {
  const Json whole = Json::parse(text);
  require(whole.at("schema") == kSchema);
  Journal journal{name, whole.at("written"), whole.at("author"),  {},
                  {},   whole.at("folders"), whole.at("recorded")};
  for (const Json& pack : whole.at("packs")) {
    journal.packs.push_back(
        {nameOnly(pack.at("name")), printOf(pack.at("print")), keptName(pack.at("kept"))});
  }
  for (const std::string& folder : journal.folders) {
    downward(folder);
  }
  for (const Json& file : whole.at("files")) {
    journal.files.push_back(fileOf(file));
  }
  return journal;
}

/// The number at the beginning of a journal's name; 0 for the name of anything else.
int numberOf(const std::string& name) {
  constexpr std::string_view kMoment = "-00000000-000000";
  const std::size_t digits = name.size() - std::min(name.size(), kMoment.size());
  if (digits < 4 || digits > 8) {
    return 0;
  }
  for (std::size_t at = 0; at < name.size(); ++at) {
    const bool digit = name[at] >= '0' && name[at] <= '9';
    if (at >= digits && kMoment[at - digits] == '-' ? name[at] != '-' : !digit) {
      return 0;
    }
  }
  return std::stoi(name.substr(0, digits));
}

bool isAfter(const std::string& name, const std::string& other) {
  return std::pair(numberOf(name), name) > std::pair(numberOf(other), other);
}

Journal parsed(const std::string& name, const std::string& file, const std::string& text) {
  try {
    return journalOf(name, text);
  } catch (const std::exception&) {
    throw RuntimeError(runtime_number::kInvalidFormat, "trelv",
                       file + ": giornale danneggiato o di un altro programma");
  }
}

std::string nameOf(int number, const machine::LocalTime& time) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%04d%02d%02d-%02d%02d%02d", number, time.year,
                time.month, time.day, time.hour, time.minute, time.second);
  return text.data();
}

}  // namespace

void requireDone(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

JournalShelf::JournalShelf(machine::Machine& machine, const std::string& serverPath)
    : machine_(machine),
      server_(serverPath),
      folder_(hostPaths::temporaryFolder(serverPath) + "\\" + kFolder) {}

std::string JournalShelf::keptPath(const Journal& journal, const std::string& kept) const {
  return path(journal.name) + "\\" + kKeptFolder + "\\" + kept;
}

std::string JournalShelf::stagedName(const std::string& journal, const std::string& pack) {
  return pack + "." + journal + kUnderWay;
}

void JournalShelf::prepare() {
  makeFolder(hostPaths::topFolder(server_));
  makeFolder(hostPaths::temporaryFolder(server_));
  makeFolder(folder_);
}

void JournalShelf::removeEmpty() { machine_.files.removeFolder(folder_); }

void JournalShelf::makeFolder(const std::string& path) {
  machine::FileFacts facts;
  if (machine_.files.look(path, facts) == system_code::kSuccess && facts.folder) {
    return;
  }
  const SystemCode code = machine_.files.makeFolder(path);
  if (code != system_code::kAlreadyExists) {
    requireDone(code, path);
  }
}

std::vector<std::string> JournalShelf::names() const {
  std::vector<machine::FolderEntry> entries;
  const SystemCode code = machine_.files.list(folder_, "", entries);
  if (!meansMissing(code)) {
    requireDone(code, folder_);
  }
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : entries) {
    if (entry.facts.folder && numberOf(entry.name) > 0) {
      names.push_back(entry.name);
    }
  }
  std::sort(names.begin(), names.end(),
            [](const std::string& left, const std::string& right) { return isAfter(right, left); });
  return names;
}

std::optional<Journal> JournalShelf::read(const std::string& name) const {
  const std::string file = path(name) + "\\" + kJournalFile;
  std::string text;
  const SystemCode code = machine_.files.read(file, kAll, text);
  if (meansMissing(code)) {
    return std::nullopt;
  }
  requireDone(code, file);
  return parsed(name, file, text);
}

std::string JournalShelf::begin() {
  const std::vector<std::string> all = names();
  int number = all.empty() ? 0 : numberOf(all.back());
  for (int tries = 0;; ++tries) {
    ++number;
    std::string name = nameOf(number, machine_.clock.now());
    const SystemCode code = machine_.files.makeFolder(path(name));
    if (code == system_code::kAlreadyExists && tries < kMostTries) {
      continue;
    }
    requireDone(code, path(name));
    makeFolder(path(name) + "\\" + kKeptFolder);
    return name;
  }
}

void JournalShelf::finish(const Journal& journal) {
  const std::string file = path(journal.name) + "\\" + kJournalFile;
  const std::string made = file + kUnderWay;
  const std::string text = textOf(journal);
  // What could not be read back is no journal.
  parsed(journal.name, file, text);
  requireDone(machine_.files.write(made, text), made);
  requireDone(machine_.files.moveFile(made, file), file);
}

bool JournalShelf::isDamaged(const std::string& name) const {
  try {
    read(name);
    return false;
  } catch (const RuntimeError& failure) {
    if (failure.number() != runtime_number::kInvalidFormat) {
      throw;
    }
    return true;
  }
}

bool JournalShelf::isUndone(const std::string& name) const {
  const std::string file = path(name) + "\\" + kUndoneFile;
  machine::FileFacts facts;
  const SystemCode code = machine_.files.look(file, facts);
  if (!meansMissing(code)) {
    requireDone(code, file);
  }
  return code == system_code::kSuccess;
}

void JournalShelf::setUndone(const std::string& name) {
  const std::string file = path(name) + "\\" + kUndoneFile;
  requireDone(machine_.files.write(file, ""), file);
}

void JournalShelf::freeKept(const std::string& name) {
  FileSystemObject fileSystem(machine_.files);
  const std::string kept = path(name) + "\\" + kKeptFolder;
  if (fileSystem.folderExists(kept)) {
    fileSystem.deleteFolder(kept, true);
  }
}

void JournalShelf::remove(const std::string& name) {
  FileSystemObject fileSystem(machine_.files);
  const std::string file = path(name) + "\\" + kJournalFile;
  if (fileSystem.fileExists(file)) {
    fileSystem.deleteFile(file, true);
  }
  if (fileSystem.folderExists(path(name))) {
    fileSystem.deleteFolder(path(name), true);
  }
}

}  // namespace trelv::kit
