#include "kit/LintConfiguration.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>
#include <string_view>

#include "base/Text.h"
#include "base/Trap.h"
#include "packs/ProductConfiguration.h"
#include "packs/ProductUpdateRun.h"
#include "packs/SetupFolderGuard.h"
#include "platform/modLibrary.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::lintConfiguration {
namespace {

using modProdTrelvManager::kMostCommands;
using modProdTrelvManager::kMostSections;
using modProdTrelvManager::VersionNumber;

/// What stands for the server path where there is none.
constexpr const char* kNoServer = "Q:\\Lumo";

constexpr std::array kPlaceholders{
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
    // Of equals the last: what was added later is the odd one.
    const auto worst = std::max_element(versions.rbegin(), versions.rend(),
                                        [](const ReadVersion& left, const ReadVersion& right) {
                                          return left.conflicts < right.conflicts;
                                        });
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

/// The text between the percent signs that the program looks for, signs included.
std::vector<std::string> placeholdersIn(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t at = text.find('%'); at != std::string::npos;) {
    const std::size_t end = text.find('%', at + 1);
    if (end == std::string::npos) {
      return found;
    }
    const std::string name = text.substr(at + 1, end - at - 1);
    const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char letter) {
      return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_' ||
             letter == '(' || letter == ')';
    });
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

InstallationPaths pathsOf(const Configuration& configuration) {
  const std::string server =
      configuration.host != nullptr ? configuration.host->place.full() : kNoServer;
  return {server, server, ""};
}

std::string resolved(const Configuration& configuration, std::string text) {
  return modProdTrelvLibrary::ReplacePlaceholders(*configuration.program, text,
                                                  pathsOf(configuration));
}

bool isThere(Host& host, const std::string& path) {
  const auto known = host.known.find(path);
  const bool stands =
      known != host.known.end() ? known->second : modLibrary::FileExists(host.program, path);
  host.known[path] = stands;
  return stands || std::find(host.arriving.begin(), host.arriving.end(), upperCase(path)) !=
                       host.arriving.end();
}

/// Does one of the product's programs stand on the share? Before its first set-up none does, nor
/// what removes it.
bool isInstalled(const Configuration& configuration) {
  return std::any_of(configuration.programs.begin(), configuration.programs.end(),
                     [&](const Command& command) -> bool {
                       return isThere(*configuration.host,
                                      programOf(resolved(configuration, command.text)));
                     });
}

/// Is it a path below the share at which no file stands? Programs elsewhere are not judged.
bool isMissingBelow(Host& host, const std::string& path) {
  const std::string name = path.substr(path.find_last_of('\\') + 1);
  return FileSystemObject::liesAtOrIn(path, host.place.full()) && !isThere(host, path) &&
         (name.find('.') != std::string::npos || !isThere(host, path + ".exe"));
}

// --- Words of a command line

bool isSwitchOrDate(const std::string& word) {
  const std::size_t slash = word.find('/');
  if (slash == std::string::npos) {
    return false;
  }
  const std::string before = word.substr(0, slash);
  const bool number = std::all_of(before.begin(), before.end(), isDigit);
  return before.empty() || number || before.back() == ':' || before.back() == '=' ||
         word.find("//") != std::string::npos;
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool quoted = false;
  for (const char letter : text + " ") {
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

std::string folderOf(const Configuration& configuration, const Command& command) {
  return modProdTrelvManager::FolderOfCommand(*configuration.program,
                                              resolved(configuration, command.text));
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

/// One of the four kinds, and nothing but a number behind it.
bool looksLikeSection(const std::string& name) {
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  const std::string kind = trim(name.substr(0, digits));
  return equalNoCase(kind, "Setup") || equalNoCase(kind, "Update") || equalNoCase(kind, "Exec") ||
         equalNoCase(kind, "Remove");
}

}  // namespace

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
    for (const char* const side : {"Server", "Client"}) {
      int index = 1;
      while (index <= kMostCommands && !text.value(section.name, side + twoDigits(index)).empty()) {
        ++index;
      }
      const IniText::Section* const written = text.section(section.name);
      const bool more =
          written != nullptr && std::count_if(written->keys.begin(), written->keys.end(),
                                              [&](const IniText::Key& key) -> bool {
                                                return equalNoCase(key.name.substr(0, 6), side);
                                              }) >= index;
      for (int behind = index + 1; more && behind <= kMostCommands; ++behind) {
        const std::string key = side + twoDigits(behind);
        if (!text.value(section.name, key).empty()) {
          report.add(configuration.file.shown, text.line(section.name, key),
                     "[" + section.name + "] " + key);
          break;
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
  const bool installed = isInstalled(configuration);
  forEachCommand(configuration, [&](const CommandSection& section, const Command& command) {
    if (section.operation == Operation::Remove && !installed) {
      return;
    }
    const std::string program = programOf(resolved(configuration, command.text));
    if (isMissingBelow(*configuration.host, program)) {
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
    for (const char* const placeholder : kPlaceholders) {
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
    if (!modProdTrelvManager::IsRemovableSetupFolder(*configuration.program, pathsOf(configuration),
                                                     folder)) {
      tell(configuration, report, command, configuration.host->place.shown(folder));
    }
  }
}

void removalsInOneFolder(const Configuration& configuration, Report& report) {
  const CommandSection* const section = removal(configuration);
  std::set<std::string> folders;
  for (const Command& command : section != nullptr ? section->server : std::vector<Command>()) {
    const std::string folder = upperCase(folderOf(configuration, command));
    if (!folder.empty() && !folders.insert(folder).second) {
      tell(configuration, report, command, "");
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
  const std::vector<std::string> codes = programCodes(configuration.product);
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
        !isThere(*configuration.host, program)) {
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
