#include "kit/LintConfiguration.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>
#include <string_view>

#include "base/Text.h"
#include "base/Trap.h"
#include "kit/LintCatalogue.h"
#include "packs/ProductConfiguration.h"
#include "packs/ProductUpdateRun.h"
#include "packs/SetupFolderGuard.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::lintConfiguration {
namespace {

using modProdTrelvManager::kMostCommands;
using modProdTrelvManager::kMostSections;
using modProdTrelvManager::VersionNumber;

/// What stands for the server path where there is none, and for a workstation's programs path.
constexpr const char* kNoServer = "Q:\\Lumo";
constexpr const char* kWorkstation = "Q:\\Lumo\\Client";

constexpr std::array kKinds{"Setup", "Update", "Remove", "Exec"};
constexpr std::array kSides{"Server", "Client"};

constexpr std::array<std::string_view, 10> kPlaceholders{
    "%PATHSETUP%", "%PATHWORK%", "%PATHCLIENT%",    "%PROGRAMFILES%",  "%INSTALLTYPE%",
    "%RRAPPDIR%",  "%BNAPPDIR%", "%OLV2007APPDIR%", "%OLV2008APPDIR%", "%KXKAPPDIR%"};

bool updates(const CommandSection& section) { return section.operation != Operation::Remove; }

std::vector<const CommandSection*> updateSections(const Configuration& configuration) {
  std::vector<const CommandSection*> found;
  for (const CommandSection& section : configuration.sections) {
    if (updates(section)) {
      found.push_back(&section);
    }
  }
  return found;
}

const CommandSection* removal(const Configuration& configuration) {
  const auto found = std::find_if(configuration.sections.begin(), configuration.sections.end(),
                                  [](const CommandSection& section) { return !updates(section); });
  return found == configuration.sections.end() ? nullptr : &*found;
}

/// Calls `look(section, command)` for every command of set-up, update and removal.
template <class Look>
void forEachCommand(const Configuration& configuration, Look&& look) {
  for (const CommandSection& section : configuration.sections) {
    for (const auto* const side : {&section.server, &section.client}) {
      for (const Command& command : *side) {
        look(section, command);
      }
    }
  }
}

/// The same, the programs of "Exec" included; `look(command)`.
template <class Look>
void forEachText(const Configuration& configuration, Look&& look) {
  forEachCommand(configuration,
                 [&](const CommandSection&, const Command& command) { look(command); });
  for (const Command& command : configuration.programs) {
    look(command);
  }
}

void tell(const Configuration& configuration, Report& report, const Command& command,
          const std::string& detail) {
  report.add(configuration.file.shown, command.line,
             "[" + command.section + "] " + command.key + (detail.empty() ? "" : ", " + detail));
}

std::optional<std::size_t> versionLine(const Configuration& configuration,
                                       const CommandSection& section) {
  return configuration.file.text->line(section.name, "version");
}

void tellVersion(const Configuration& configuration, Report& report, const CommandSection& section,
                 const std::string& detail) {
  report.add(configuration.file.shown, versionLine(configuration, section),
             "[" + section.name + "] " + detail);
}

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool isVersion(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char letter) -> bool { return isDigit(letter) || letter == '.'; }) &&
         std::any_of(text.begin(), text.end(), isDigit);
}

// --- Versions as a person reads them

/// Field by field; fewer fields come before more.
std::vector<std::uint64_t> fieldsOf(const std::string& version) {
  std::vector<std::uint64_t> fields;
  for (std::size_t at = 0; at <= version.size();) {
    const std::size_t end = std::min(version.find('.', at), version.size());
    fields.push_back(VersionNumber(version.substr(at, end - at)));
    at = end + 1;
  }
  return fields;
}

struct ReadVersion {
  const CommandSection* section;
  std::vector<std::uint64_t> fields;
  std::uint64_t number;
  std::size_t conflicts = 0;
};

/// Four fields of two digits, as all products have them.
bool isUsual(const std::string& version) {
  constexpr std::size_t kUsual = 11;
  constexpr std::size_t kFieldAndPoint = 3;
  std::size_t at = 0;
  return version.size() == kUsual &&
         std::all_of(version.begin(), version.end(), [&at](char letter) -> bool {
           return (++at % kFieldAndPoint == 0) == (letter == '.');
         });
}

/// Is `left` less likely than `right` the one that is written wrongly? Of equals the one that was
/// added later is.
bool isLessOdd(const ReadVersion& left, const ReadVersion& right) {
  return std::pair(left.conflicts, isUsual(right.section->version)) <
         std::pair(right.conflicts, isUsual(left.section->version));
}

template <class Value>
int order(const Value& left, const Value& right) {
  return left < right ? -1 : (right < left ? 1 : 0);
}

bool conflict(const ReadVersion& one, const ReadVersion& other) {
  return order(one.fields, other.fields) != order(one.number, other.number);
}

/// Nothing stands against another where both orders are the same: told without comparing all pairs.
bool allAgree(std::vector<ReadVersion> versions) {
  std::sort(versions.begin(), versions.end(),
            [](const ReadVersion& left, const ReadVersion& right) -> bool {
              return left.fields < right.fields;
            });
  return std::adjacent_find(versions.begin(), versions.end(), conflict) == versions.end();
}

/// Takes those away that stand against most others, one after the other, until the rest agree.
std::vector<const CommandSection*> oddOnes(std::vector<ReadVersion> versions) {
  std::vector<const CommandSection*> odd;
  if (allAgree(versions)) {
    return odd;
  }
  for (;;) {
    for (ReadVersion& one : versions) {
      one.conflicts = static_cast<std::size_t>(
          std::count_if(versions.begin(), versions.end(),
                        [&](const ReadVersion& other) -> bool { return conflict(one, other); }));
    }
    const auto worst = std::max_element(versions.rbegin(), versions.rend(), isLessOdd);
    if (worst == versions.rend() || worst->conflicts == 0) {
      return odd;
    }
    odd.push_back(worst->section);
    versions.erase(std::next(worst).base());
  }
}

// --- Command lines

/// The place in the text where the program's path ends, as the text stands: behind its closing
/// quote, else behind the first beginning that ends like a program, else at the first blank.
std::size_t programEnd(const std::string& text) {
  if (text.starts_with("\"")) {
    const std::size_t quote = text.find('"', 1);
    return quote == std::string::npos ? text.size() : quote + 1;
  }
  const std::string small = lowerCase(text);
  for (std::size_t blank = small.find(' ');; blank = small.find(' ', blank + 1)) {
    const std::string_view beginning = std::string_view(small).substr(0, blank);
    for (const char* const ending : {".exe", ".com", ".bat", ".cmd"}) {
      if (beginning.ends_with(ending)) {
        return beginning.size();
      }
    }
    if (blank == std::string::npos) {
      return std::min(small.find(' '), small.size());
    }
  }
}

std::string programOf(const std::string& text) {
  const std::string program = text.substr(0, programEnd(text));
  return replaceAll(program, "\"", "");
}

/// A letter first, as in the names of all variables.
bool isPlaceholderName(const std::string& name) {
  return !name.empty() && std::isalpha(static_cast<unsigned char>(name.front())) != 0 &&
         std::all_of(name.begin(), name.end(), [](char letter) -> bool {
           return std::isalnum(static_cast<unsigned char>(letter)) != 0 ||
                  std::string_view("_-.()").find(letter) != std::string_view::npos;
         });
}

/// A known placeholder without the sign that ends it; empty where each has its own.
std::string unfinishedPlaceholder(const std::string& text) {
  for (const std::string_view placeholder : kPlaceholders) {
    const std::string_view beginning = placeholder.substr(0, placeholder.size() - 1);
    for (std::size_t at = text.find(beginning); at != std::string::npos;
         at = text.find(beginning, at + 1)) {
      if (text.compare(at, placeholder.size(), placeholder) != 0) {
        return std::string(beginning);
      }
    }
  }
  return {};
}

/// The text between the percent signs that the program looks for, signs included.
std::vector<std::string> placeholdersIn(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t at = text.find('%'); at != std::string::npos;) {
    const std::size_t end = text.find('%', at + 1);
    if (end == std::string::npos) {
      return found;
    }
    const std::string name = text.substr(at + 1, end - at - 1);
    const bool isName = isPlaceholderName(name);
    if (isName) {
      found.push_back("%" + name + "%");
    }
    // What ends no name may begin the next one.
    at = isName ? text.find('%', end + 1) : end;
  }
  return found;
}

bool isKnown(const std::string& placeholder) {
  return std::find(kPlaceholders.begin(), kPlaceholders.end(), placeholder) != kPlaceholders.end();
}

/// Only removals know the workstation's programs path.
InstallationPaths pathsOf(const Configuration& configuration, const char* client = "") {
  const std::string server =
      configuration.host != nullptr ? configuration.host->place.full() : kNoServer;
  return {server, server, client};
}

std::string resolved(const Configuration& configuration, std::string text,
                     const char* client = "") {
  return modProdTrelvLibrary::ReplacePlaceholders(*configuration.program, text,
                                                  pathsOf(configuration, client));
}

bool isThere(Host& host, const std::string& path) {
  const auto known = host.known.find(path);
  const bool stands =
      known != host.known.end() ? known->second : modLibrary::FileExists(host.program, path);
  host.known[path] = stands;
  const std::string plain = upperCase(path);
  return stands || host.arriving.count(plain) > 0 || host.brought.count(plain) > 0;
}

bool isSameCommand(const Command& left, const Command& right) {
  return equalNoCase(left.section, right.section) && equalNoCase(left.key, right.key) &&
         left.text == right.text;
}

/// Commands of a pack that the share's own file has too: what they lack is told of that one.
bool isToldOfShare(const Configuration& configuration, const Command& command) {
  bool told = false;
  if (configuration.replaced != nullptr) {
    forEachText(*configuration.replaced,
                [&](const Command& own) { told = told || isSameCommand(own, command); });
  }
  return told;
}

/// Programs that a set-up puts there may be missing before the product is installed; what lies
/// beside the set-ups comes with its pack.
bool mayBeMissing(const Configuration& configuration, const CommandSection& section,
                  const std::string& program) {
  return section.operation == Operation::Remove && !isInstalled(configuration) &&
         !FileSystemObject::liesAtOrIn(program,
                                       hostPaths::setupFolder(configuration.host->place.full()));
}

/// Is it a path below the share at which no file stands? Programs elsewhere are not judged.
bool isMissingBelow(Host& host, const std::string& path) {
  const std::string name = path.substr(path.find_last_of('\\') + 1);
  return FileSystemObject::liesAtOrIn(path, host.place.full()) && !isThere(host, path) &&
         (name.find('.') != std::string::npos || !isThere(host, path + ".exe"));
}

// --- Words of a command line

/// A text behind the sign of an option ("-d=", "/log:") or a whole word.
std::string valueIn(const std::string& word) {
  const std::size_t equals = word.find('=');
  const std::string value = equals == std::string::npos ? word : word.substr(equals + 1);
  const std::size_t colon = value.find(':');
  const bool option = colon != std::string::npos && value.starts_with("-");
  return option ? value.substr(colon + 1) : value;
}

bool isDrivePath(const std::string& value) {
  return value.size() > 2 && std::isalpha(static_cast<unsigned char>(value[0])) != 0 &&
         value[1] == ':' && value[2] == '/';
}

/// "//server/share"
bool isSharePath(const std::string& value) {
  return value.starts_with("//") && value.size() > 2 && value[2] != '/' &&
         value.find('/', 2) != std::string::npos;
}

bool isDate(const std::string& value) {
  return value.find('/') != std::string::npos && isDigit(value.front()) && isDigit(value.back()) &&
         value.find_first_not_of("0123456789/") == std::string::npos;
}

bool isSwitchOrDate(const std::string& word) {
  const std::string value = valueIn(word);
  if (isSharePath(word) || word.find('/') == std::string::npos) {
    return false;
  }
  const bool path = isDrivePath(value) || isSharePath(value);
  return word.starts_with("/") || (!path && (value.starts_with("/") || isDate(value) ||
                                             value.find(":/") != std::string::npos ||
                                             value.find("//") != std::string::npos));
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool quoted = false;
  for (const char letter : text) {
    if (letter == '"') {
      quoted = !quoted;
    } else if (letter == ' ' && !quoted) {
      if (!word.empty()) {
        words.push_back(word);
      }
      word.clear();
    } else {
      word += letter;
    }
  }
  if (!word.empty()) {
    words.push_back(word);
  }
  return words;
}

/// Of a removal.
std::string folderOf(const Configuration& configuration, const Command& command) {
  return modProdTrelvManager::FolderOfCommand(*configuration.program,
                                              resolved(configuration, command.text, kWorkstation));
}

bool isDeleted(const Configuration& configuration, const std::string& folder) {
  return modProdTrelvManager::IsRemovableSetupFolder(*configuration.program,
                                                     pathsOf(configuration, kWorkstation), folder);
}

std::string highest(const Configuration& configuration, Operation operation,
                    const CommandSection*& section) {
  std::uint64_t most = 0;
  std::string version;
  for (const CommandSection* const one : updateSections(configuration)) {
    if (one->operation == operation && one->hasCommands() && VersionNumber(one->version) > most) {
      most = VersionNumber(one->version);
      version = one->version;
      section = one;
    }
  }
  return version;
}

/// Names of the programs of a product; empty for a product that nobody knows.
std::vector<std::string> programCodes(const std::string& product) {
  std::vector<std::string> codes;
  constexpr int kCodesOfProduct = 9;
  for (int offset = 1; offset <= kCodesOfProduct; ++offset) {
    resumeNext(
        [&]() -> void {
          const int number =
              static_cast<int>(modProdTrelvLibrary::ConvertProductToNumber(product)) + offset;
          codes.push_back(
              modProdTrelvLibrary::ConvertNumberToProgram(static_cast<std::int16_t>(number)));
        },
        [](const RuntimeError&) -> void {});
  }
  return codes;
}

/// The catalogue's product; else the one whose programs stand in the file.
std::string productOf(const Configuration& configuration) {
  std::string product = configuration.product;
  for (const Command& command : configuration.programs) {
    resumeNext(
        [&]() -> void {
          const auto program = modProdTrelvLibrary::ConvertProgramToNumber(upperCase(command.key));
          const auto number =
              modProdTrelvLibrary::ProgramToProduct(static_cast<std::int32_t>(program));
          product = product.empty() ? modProdTrelvLibrary::ConvertNumberToProduct(number) : product;
        },
        [](const RuntimeError&) -> void {});
  }
  return product;
}

std::set<std::string> sectionsThatAreRead() {
  std::set<std::string> names{"EXEC", "REMOVE"};
  for (const Operation operation : {Operation::Setup, Operation::Update, Operation::Exec}) {
    const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(operation);
    for (int index = 1; index <= kMostSections; ++index) {
      names.insert(upperCase(kind + twoDigits(index)));
    }
  }
  return names;
}

bool isSectionThatIsRead(const std::string& name) {
  static const std::set<std::string> names = sectionsThatAreRead();
  return names.count(upperCase(name)) > 0;
}

/// One of the four kinds, with a number or without.
bool looksLikeSection(const std::string& name) {
  return std::any_of(kKinds.begin(), kKinds.end(), [&](const char* kind) -> bool {
    return lintCatalogue::looksNumbered(name, kind);
  });
}

/// Its number, from 1; 0 where it is written otherwise than it is read.
int numberOfKey(const std::string& key, const std::string& side) {
  for (int index = 1; index <= kMostCommands; ++index) {
    if (equalNoCase(key, side + twoDigits(index))) {
      return index;
    }
  }
  return 0;
}

/// The keys with commands of a side, by their numbers; of a key that is there twice the first.
std::vector<IniText::Key> keysOfSide(const IniText::Section& section, const std::string& side) {
  std::map<std::pair<int, std::string>, IniText::Key> keys;
  for (const IniText::Key& key : section.keys) {
    if (lintCatalogue::looksNumbered(key.name, side) && !key.written.empty()) {
      keys.emplace(std::pair(numberOfKey(key.name, side), upperCase(key.name)), key);
    }
  }
  std::vector<IniText::Key> found;
  found.reserve(keys.size());
  for (const auto& [number, key] : keys) {
    found.push_back(key);
  }
  return found;
}

/// Number of the first command that is missing.
int firstMissing(const IniText& text, const std::string& section, const char* side) {
  int index = 1;
  while (index <= kMostCommands && !text.value(section, side + twoDigits(index)).empty()) {
    ++index;
  }
  return index;
}

}  // namespace

bool isInstalled(const Configuration& configuration) {
  return std::any_of(configuration.programs.begin(), configuration.programs.end(),
                     [&](const Command& command) -> bool {
                       return isThere(*configuration.host,
                                      programOf(resolved(configuration, command.text)));
                     });
}

void noVersion(const Configuration& configuration, Report& report) {
  for (const CommandSection* const section : updateSections(configuration)) {
    if (section->hasCommands() && section->version.empty()) {
      report.add(configuration.file.shown, configuration.file.text->line(section->name, "version"),
                 "[" + section->name + "]");
    }
  }
}

void otherOrder(const Configuration& configuration, Report& report) {
  std::vector<ReadVersion> versions;
  for (const CommandSection* const section : updateSections(configuration)) {
    if (isVersion(section->version)) {
      versions.push_back({section, fieldsOf(section->version), VersionNumber(section->version)});
    }
  }
  for (const CommandSection* const section : oddOnes(std::move(versions))) {
    tellVersion(configuration, report, *section, section->version);
  }
}

void notAVersion(const Configuration& configuration, Report& report) {
  for (const CommandSection* const section : updateSections(configuration)) {
    if (!section->version.empty() && !isVersion(section->version)) {
      tellVersion(configuration, report, *section, section->version);
    }
  }
}

void neverHigher(const Configuration& configuration, Report& report) {
  // By kind and side: the highest version so far.
  std::map<std::pair<Operation, bool>, std::uint64_t> highestSoFar;
  for (const CommandSection* const section : updateSections(configuration)) {
    const std::uint64_t number = VersionNumber(section->version);
    std::string sides;
    for (const bool server : {true, false}) {
      if (!(server ? section->server : section->client).empty() && number > 0) {
        std::uint64_t& most = highestSoFar[{section->operation, server}];
        if (number <= most) {
          sides += std::string(sides.empty() ? "" : ", ") + (server ? "Server" : "Client");
        }
        most = std::max(most, number);
      }
    }
    if (!sides.empty()) {
      tellVersion(configuration, report, *section, section->version + ", lato " + sides);
    }
  }
}

void commandGap(const Configuration& configuration, Report& report) {
  const IniText& text = *configuration.file.text;
  for (const CommandSection& section : configuration.sections) {
    const IniText::Section& written = *text.section(section.name);
    for (const char* const side : kSides) {
      const std::vector<IniText::Key> keys = keysOfSide(written, side);
      const int missing = keys.empty() ? kMostCommands : firstMissing(text, section.name, side);
      bool told = false;
      for (const IniText::Key& key : keys) {
        const int number = numberOfKey(key.name, side);
        const bool behind = number > missing && !text.value(section.name, key.name).empty();
        if (number == 0 || (behind && !told)) {
          report.add(configuration.file.shown, key.line, "[" + section.name + "] " + key.name);
          told = told || number != 0;
        }
      }
    }
  }
}

void secondCommand(const Configuration& configuration, Report& report) {
  for (const CommandSection* const section : updateSections(configuration)) {
    for (const auto* const side : {&section->server, &section->client}) {
      for (std::size_t i = 1; i < side->size(); ++i) {
        tell(configuration, report, (*side)[i], "");
      }
    }
  }
}

void sectionNeverRead(const Configuration& configuration, Report& report) {
  for (const IniText::Section& section : configuration.file.text->sections()) {
    if (looksLikeSection(section.name) && !isSectionThatIsRead(section.name)) {
      report.add(configuration.file.shown, section.line, "[" + section.name + "]");
    }
  }
}

void programNotOnShare(const Configuration& configuration, Report& report) {
  if (configuration.host == nullptr) {
    return;
  }
  forEachCommand(configuration, [&](const CommandSection& section, const Command& command) {
    const std::string program = programOf(resolved(configuration, command.text));
    if (isMissingBelow(*configuration.host, program) &&
        !mayBeMissing(configuration, section, program) && !isToldOfShare(configuration, command)) {
      tell(configuration, report, command, configuration.host->place.shown(program));
    }
  });
}

void unbalancedQuotes(const Configuration& configuration, Report& report) {
  forEachText(configuration, [&](const Command& command) {
    const auto quotes = std::count(command.text.begin(), command.text.end(), '"');
    const std::size_t first = command.text.find('"');
    // A value that begins and ends with quotes loses both: the first that is left closes what
    // nothing opens.
    const bool closesFirst = first != std::string::npos && first > 0 &&
                             first + 1 < command.text.size() && command.text[first - 1] != ' ' &&
                             command.text[first - 1] != '=' && command.text[first - 1] != ':' &&
                             command.text[first + 1] == ' ';
    if (quotes % 2 != 0 || closesFirst) {
      tell(configuration, report, command, "");
    }
  });
}

void slashThatIsNoPath(const Configuration& configuration, Report& report) {
  forEachText(configuration, [&](const Command& command) {
    const std::vector<std::string> words = wordsOf(command.text);
    const auto found = std::find_if(words.begin(), words.end(), isSwitchOrDate);
    if (found != words.end()) {
      tell(configuration, report, command, *found);
    }
  });
}

void unknownPlaceholder(const Configuration& configuration, Report& report) {
  forEachText(configuration, [&](const Command& command) {
    for (const std::string& placeholder : placeholdersIn(command.text)) {
      if (!isKnown(placeholder)) {
        tell(configuration, report, command, placeholder);
      }
    }
    const std::string unfinished = unfinishedPlaceholder(command.text);
    if (!unfinished.empty()) {
      tell(configuration, report, command, unfinished);
    }
  });
}

void emptyClientPath(const Configuration& configuration, Report& report) {
  forEachCommand(configuration, [&](const CommandSection& section, const Command& command) {
    if (updates(section) && command.text.find("%PATHCLIENT%") != std::string::npos) {
      tell(configuration, report, command, "");
    }
  });
}

void doublePercent(const Configuration& configuration, Report& report) {
  forEachText(configuration, [&](const Command& command) {
    std::string rest = command.text;
    for (const std::string_view placeholder : kPlaceholders) {
      rest = replaceAll(rest, placeholder, "?");
    }
    if (rest.find("%%") != std::string::npos) {
      tell(configuration, report, command, "");
    }
  });
}

void unquotedBlanks(const Configuration& configuration, Report& report) {
  forEachCommand(configuration, [&](const CommandSection&, const Command& command) {
    if (command.text.starts_with("\"")) {
      return;
    }
    const std::string program = programOf(command.text);
    if (program.find(' ') != std::string::npos ||
        program.find("%PROGRAMFILES%") != std::string::npos) {
      tell(configuration, report, command, program);
    }
  });
}

void updatesWithoutSetup(const Configuration& configuration, Report& report) {
  const CommandSection* firstUpdate = nullptr;
  for (const CommandSection* const section : updateSections(configuration)) {
    if (section->operation == Operation::Setup && section->hasCommands()) {
      return;
    }
    if (section->operation == Operation::Update && section->hasCommands() &&
        firstUpdate == nullptr) {
      firstUpdate = section;
    }
  }
  if (firstUpdate != nullptr) {
    report.add(configuration.file.shown, configuration.file.text->line(firstUpdate->name),
               "[" + firstUpdate->name + "]");
  }
}

void differentEnds(const Configuration& configuration, Report& report) {
  const CommandSection* setup = nullptr;
  const CommandSection* update = nullptr;
  const std::string setupEnd = highest(configuration, Operation::Setup, setup);
  const std::string updateEnd = highest(configuration, Operation::Update, update);
  if (setup == nullptr || update == nullptr ||
      VersionNumber(setupEnd) == VersionNumber(updateEnd)) {
    return;
  }
  // The lower one was forgotten.
  const bool setupIsLower = VersionNumber(setupEnd) < VersionNumber(updateEnd);
  tellVersion(configuration, report, setupIsLower ? *setup : *update,
              setupEnd + " e [" + update->name + "] " + updateEnd);
}

void keptFolder(const Configuration& configuration, Report& report) {
  const CommandSection* const section = removal(configuration);
  if (configuration.host == nullptr || section == nullptr) {
    return;
  }
  for (const Command& command : section->server) {
    const std::string folder = folderOf(configuration, command);
    if (!isDeleted(configuration, folder)) {
      tell(configuration, report, command, configuration.host->place.shown(folder));
    }
  }
}

void removalsInOneFolder(const Configuration& configuration, Report& report) {
  const CommandSection* const section = removal(configuration);
  std::vector<std::string> folders;
  for (const Command& command : section != nullptr ? section->server : std::vector<Command>()) {
    const std::string folder = folderOf(configuration, command);
    const bool goes =
        std::any_of(folders.begin(), folders.end(), [&](const std::string& earlier) -> bool {
          // With a folder goes what lies below it.
          return equalNoCase(folder, earlier) || (FileSystemObject::liesAtOrIn(folder, earlier) &&
                                                  isDeleted(configuration, earlier));
        });
    if (!folder.empty() && goes) {
      tell(configuration, report, command, "");
    }
    if (!folder.empty()) {
      folders.push_back(folder);
    }
  }
}

void noRemoval(const Configuration& configuration, Report& report) {
  const CommandSection* const section = removal(configuration);
  if (section == nullptr || section->server.empty()) {
    report.add(configuration.file.shown, configuration.file.text->line("Remove"));
  }
}

// A product may be delivered with one of many programs only: nothing is said where most are left
// out on purpose.
void programWithoutCommand(const Configuration& configuration, Report& report) {
  const std::vector<std::string> codes = programCodes(productOf(configuration));
  std::vector<std::string> missing;
  for (const std::string& code : codes) {
    const IniText& text = *configuration.file.text;
    if (text.value("Exec", code).empty()) {
      missing.push_back(code);
    }
  }
  if (missing.size() * 2 <= codes.size() || missing.size() == codes.size()) {
    for (const std::string& code : missing) {
      report.add(configuration.file.shown, configuration.file.text->line("Exec", code), code);
    }
  }
}

void programWithArguments(const Configuration& configuration, Report& report) {
  for (const Command& command : configuration.programs) {
    const std::size_t end = programEnd(command.text);
    const bool endsLikeProgram = command.text.substr(0, end).find('.') != std::string::npos;
    if (command.text.find('"') != std::string::npos ||
        (endsLikeProgram && !trim(command.text.substr(end)).empty())) {
      tell(configuration, report, command, command.text);
    }
  }
}

void programMissing(const Configuration& configuration, Report& report) {
  // Before the first set-up every program is missing.
  if (configuration.host == nullptr || !configuration.host->anythingInstalled) {
    return;
  }
  for (const Command& command : configuration.programs) {
    const std::string program = programOf(resolved(configuration, command.text));
    if (FileSystemObject::liesAtOrIn(program, configuration.host->place.full()) &&
        !isThere(*configuration.host, program) && !isToldOfShare(configuration, command)) {
      tell(configuration, report, command, configuration.host->place.shown(program));
    }
  }
}

// What follows the first blank goes before placeholders are resolved.
void cutByDirectSetup(const Configuration& configuration, Report& report) {
  forEachCommand(configuration, [&](const CommandSection& section, const Command& command) {
    if (updates(section) && command.text.find(' ') < programEnd(command.text)) {
      tell(configuration, report, command, command.text.substr(0, command.text.find(' ')));
    }
  });
}

}  // namespace trelv::kit::lintConfiguration
