#include "kit/Description.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "decoder/EntryName.h"
#include "decoder/WideText.h"
#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "platform/FileSystemObject.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kLargest = std::size_t{16} << 20U;
constexpr const char* kShowPath = "%SHOW_PATH_INTEGRATION%";
constexpr const char* kManual = "kodamuri.pdf";
constexpr const char* kManager = "TrelvManager.exe";
constexpr const char* kExit = "EXIT";
constexpr std::array kProducts{"NERIO", "LUDA", "ZB", "Q2", "ZM"};
constexpr std::size_t kLists = 4;

/// What is wrong with a description, and in which of its lines (0: in none).
struct Fault {
  std::size_t line;
  std::string text;
};

[[noreturn]] void fault(std::size_t line, std::string text) { throw Fault{line, std::move(text)}; }

// --- The text

/// What stands behind a key.
struct Value {
  std::size_t line = 0;
  std::string key;
  std::string text;
};

/// A section "[kind name]" with its values in their order.
struct Section {
  std::size_t line = 0;
  std::string kind;
  std::string name;
  std::vector<Value> values;

  std::vector<Value> all(const std::string& key) const {
    std::vector<Value> found;
    std::copy_if(values.begin(), values.end(), std::back_inserter(found),
                 [&](const Value& value) -> bool { return value.key == key; });
    return found;
  }
  bool has(const std::string& key) const { return !all(key).empty(); }
  /// A key's value; one of the section's line without text where it is missing.
  Value get(const std::string& key) const {
    const std::vector<Value> found = all(key);
    return found.empty() ? Value{line, key, ""} : found.front();
  }
};

using Keys = std::vector<std::string>;

/// What a section may hold.
struct Rule {
  const char* kind;
  Keys required;
  Keys optional;
  /// Those that may stand more than once.
  Keys repeated;
  /// The header carries a name.
  bool named = false;
  /// The keys are the author's own.
  bool free = false;
};

const std::vector<Rule>& rules() {
  static const std::vector<Rule> all{
      {"medium",
       {"date", "version", "header", "manager", "manual"},
       {"manager-date", "show-integration-path"},
       {}},
      {"products", {}, {}, {}, false, true},
      {"documents", {}, {}, {}, false, true},
      {"list", {}, {"caption"}, {}, true},
      {"entry", {"caption", "product"}, {"folder"}, {"pack", "command"}},
      {"pack", {}, {"date"}, {"gz", "zip", "tree"}, true},
  };
  return all;
}

bool holds(const Keys& keys, const std::string& key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

const Rule* ruleOf(const std::string& kind) {
  const auto found = std::find_if(rules().begin(), rules().end(),
                                  [&](const Rule& rule) -> bool { return rule.kind == kind; });
  return found == rules().end() ? nullptr : &*found;
}

/// Without blanks and tabs at its ends.
std::string stripped(const std::string& text) {
  constexpr const char* kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos
             ? std::string()
             : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Section sectionOf(std::size_t number, const std::string& line) {
  const std::string inner =
      line.back() == ']' ? stripped(line.substr(1, line.size() - 2)) : std::string();
  const std::size_t end = std::min(inner.find_first_of(" \t"), inner.size());
  Section section{number, inner.substr(0, end), stripped(inner.substr(end)), {}};
  const Rule* const rule = ruleOf(section.kind);
  if (rule == nullptr) {
    std::string kinds;
    for (const Rule& each : rules()) {
      kinds += (kinds.empty() ? "" : ", ") + std::string(each.kind);
    }
    fault(number, "sezione sconosciuta " + line + ": ci sono " + kinds);
  }
  if (rule->named != !section.name.empty()) {
    fault(number, "la sezione [" + section.kind + "] " +
                      (rule->named ? "vuole un nome" : "non ha un nome"));
  }
  return section;
}

Value valueOf(std::size_t number, const std::string& line, const Section& section) {
  const std::size_t equals = line.find('=');
  const Rule& rule = *ruleOf(section.kind);
  if (equals == std::string::npos || stripped(line.substr(0, equals)).empty()) {
    fault(number, "né una sezione né chiave = valore");
  }
  Value value{number, stripped(line.substr(0, equals)), stripped(line.substr(equals + 1))};
  if (!rule.free && !holds(rule.required, value.key) && !holds(rule.optional, value.key) &&
      !holds(rule.repeated, value.key)) {
    fault(number, "la sezione [" + section.kind + "] non ha una chiave " + value.key);
  }
  if (value.text.empty()) {
    fault(number, value.key + " non ha un valore");
  }
  if (!holds(rule.repeated, value.key) && section.has(value.key)) {
    fault(number, value.key + " compare due volte nella sua sezione");
  }
  return value;
}

std::vector<Section> sectionsOf(const std::string& text) {
  std::vector<Section> sections;
  std::size_t number = 0;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = stripped(text.substr(at, end - at));
    at = end + 1;
    ++number;
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.front() == '[') {
      sections.push_back(sectionOf(number, line));
    } else if (sections.empty()) {
      fault(number, "una riga prima della prima sezione");
    } else {
      sections.back().values.push_back(valueOf(number, line, sections.back()));
    }
  }
  for (const Section& section : sections) {
    for (const std::string& key : ruleOf(section.kind)->required) {
      if (!section.has(key)) {
        fault(section.line, "la sezione [" + section.kind + "] non ha " + key);
      }
    }
  }
  return sections;
}

// --- Values

Moment momentOfValue(const Value& value) {
  const std::optional<Moment> moment = momentOf(value.text);
  if (!moment) {
    fault(value.line, value.key + ": una data è AAAA-MM-GG o AAAA-MM-GG HH:MM:SS");
  }
  // A zip pack tells nothing before 1980 nor after 2107, and every second second only.
  const int year = std::stoi(value.text.substr(0, 4));
  if (year < 1980 || year > 2107 || *moment % 2 != 0) {
    fault(value.line, value.key + ": anni da 1980 a 2107, secondi pari");
  }
  return *moment;
}

bool yesOrNo(const Value& value) {
  if (value.text != "yes" && value.text != "no") {
    fault(value.line, value.key + ": yes o no");
  }
  return value.text == "yes";
}

/// The first letter that code page 1252 lacks.
std::string letterOutside(const std::string& text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view before = rest;
    decoder::takeCharacter(rest);
    std::string letter(before.substr(0, before.size() - rest.size()));
    if (!inCodePage(letter)) {
      return letter;
    }
  }
  return "";
}

/// A text that becomes a line of its own in a file of the medium.
std::string lineText(const Value& value) {
  if (!inCodePage(value.text)) {
    fault(value.line, value.key + ": " + letterOutside(value.text) + " non è nel codice 1252");
  }
  if (std::any_of(value.text.begin(), value.text.end(),
                  [](char letter) -> bool { return static_cast<unsigned char>(letter) < 0x20; })) {
    fault(value.line, value.key + ": un carattere di controllo");
  }
  if (value.text.find(kShowPath) != std::string::npos) {
    fault(value.line, value.key + ": " + kShowPath + " sta per show-integration-path");
  }
  return value.text;
}

/// A text that becomes a field of such a line.
std::string fieldText(const Value& value) {
  if (value.text.find('|') != std::string::npos) {
    fault(value.line, value.key + ": | separa i valori nei file del supporto");
  }
  return lineText(value);
}

/// Why Windows does not take this as the name of a file; null where it does.
const char* refusalOfName(const std::string& name) {
  if (name.find('/') != std::string::npos) {
    return "carattere che Windows non ammette";
  }
  return decoder::readEntryName(name).refusal;
}

std::string fileName(const Value& value, const std::string& name) {
  if (const char* const refusal = refusalOfName(name)) {
    fault(value.line,
          value.key + ": " + name + " non è un nome di file per Windows (" + refusal + ")");
  }
  return name;
}

std::string listOfProducts() {
  std::string text;
  for (const char* const product : kProducts) {
    text += (text.empty() ? "" : " ") + std::string(product);
  }
  return text;
}

bool isProduct(const std::string& text) {
  return std::any_of(kProducts.begin(), kProducts.end(),
                     [&](const char* product) -> bool { return equalNoCase(product, text); });
}

void requireDistinct(std::size_t line, const std::string& what,
                     const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t earlier = 0; earlier < i; ++earlier) {
      if (equalNoCase(names[i], names[earlier])) {
        fault(line, what + ": " + names[i] + " compare due volte");
      }
    }
  }
}

/// Names that differ in case only are one file or folder on Windows.
void requireOneCase(const Value& value, const std::vector<SourceFile>& files) {
  struct Named {
    std::string name;
    bool folder;
  };
  std::map<std::string, Named> seen;
  for (const SourceFile& file : files) {
    for (std::size_t at = 0; at < file.name.size();) {
      at = std::min(file.name.find('/', at + 1), file.name.size());
      const std::string name = file.name.substr(0, at);
      const Named named{name, at < file.name.size()};
      const auto [place, isNew] = seen.try_emplace(upperCase(name), named);
      const Named& other = place->second;
      if (!isNew && (other.name != name || !other.folder || !named.folder)) {
        fault(value.line,
              value.key + ": " + other.name + " e " + name + " sono un solo nome per Windows");
      }
    }
  }
}

// --- What a description describes

/// Reads one description.
class Reader {
 public:
  Reader(Workplace& workplace, const std::string& given)
      : files_(workplace.machine.files),
        paths_(workplace.paths),
        given_(given),
        full_(GivenPath(workplace.paths, given).full()),
        sources_{{full_, given}} {}

  MediumPlan medium() {
    return told<MediumPlan>([&]() -> MediumPlan {
      MediumPlan plan = mediumOf(sectionsOf(text()));
      plan.sources = sources_;
      return plan;
    });
  }
  PacksPlan packs() {
    return told<PacksPlan>([&]() -> PacksPlan {
      const std::vector<Section> sections = sectionsOf(text());
      const bool hasMedium =
          std::any_of(sections.begin(), sections.end(),
                      [](const Section& section) -> bool { return section.kind == "medium"; });
      std::optional<Moment> moment;
      if (hasMedium) {
        moment = momentOfValue(only(sections, "medium").get("date"));
      }
      return {packsOf(sections, moment), sources_};
    });
  }

 private:
  /// A fault becomes the failure of this file.
  template <class Result>
  Result told(const std::function<Result()>& work) {
    try {
      return work();
    } catch (const Fault& found) {
      throw Failure(found.line == 0 ? given_ : given_ + ":" + std::to_string(found.line),
                    found.text);
    }
  }

  std::string text() {
    std::string bytes;
    const SystemCode code = files_.read(full_, kLargest + 1, bytes);
    if (code != system_code::kSuccess) {
      throw Failure(given_, code);
    }
    if (bytes.size() > kLargest) {
      throw Failure(given_, "troppo grande per una descrizione");
    }
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kMark)) {
      bytes.erase(0, kMark.size());
    }
    std::size_t line = 1;
    for (std::string_view rest = bytes; !rest.empty();) {
      const std::optional<std::uint32_t> letter = decoder::takeCharacter(rest);
      if (!letter) {
        fault(line, "non è in UTF-8");
      }
      line += *letter == '\n' ? 1 : 0;
    }
    return bytes;
  }

  static const Section& only(const std::vector<Section>& sections, const std::string& kind) {
    const Section* found = nullptr;
    for (const Section& section : sections) {
      if (section.kind == kind && found != nullptr) {
        fault(section.line, "la sezione [" + kind + "] compare due volte");
      }
      found = section.kind == kind ? &section : found;
    }
    if (found == nullptr) {
      fault(0, "manca la sezione [" + kind + "]");
    }
    return *found;
  }

  // Files and folders that it names.

  /// Relative to the description.
  std::string fullOf(const Value& value) {
    const std::string text = replaceAll(value.text, "/", "\\");
    if (!isAbsolute(value.text)) {
      return FileSystemObject::parentFolderName(full_) + "\\" + withoutEnd(text);
    }
    std::string full;
    if (paths_.fullPath(value.text, full) != system_code::kSuccess) {
      fault(value.line, value.key + ": " + value.text + " non è un percorso");
    }
    return full;
  }

  static bool isAbsolute(const std::string& text) {
    return text.front() == '\\' || text.front() == '/' || (text.size() > 1 && text[1] == ':');
  }

  static std::string withoutEnd(std::string text) {
    while (text.size() > 1 && (text.ends_with('\\') || text.ends_with('/'))) {
      text.pop_back();
    }
    return text;
  }

  std::string shownOf(const Value& value) const {
    const std::size_t end = given_.find_last_of("\\/");
    if (isAbsolute(value.text)) {
      return withoutEnd(value.text);
    }
    return withoutEnd((end == std::string::npos ? "" : given_.substr(0, end + 1)) + value.text);
  }

  SourceFile sourceFile(const Value& value, const std::string& name) {
    machine::FileFacts facts;
    const std::string full = fullOf(value);
    if (files_.look(full, facts) != system_code::kSuccess || facts.folder) {
      fault(value.line, value.key + ": " + shownOf(value) + " non è un file");
    }
    sources_.push_back({full, shownOf(value)});
    return {name, sources_.back()};
  }

  std::vector<SourceFile> sourceTree(const Value& value) {
    machine::FileFacts facts;
    const std::string root = fullOf(value);
    if (files_.look(root, facts) != system_code::kSuccess || !facts.folder) {
      fault(value.line, value.key + ": " + shownOf(value) + " non è una cartella");
    }
    sources_.push_back({root, shownOf(value)});
    std::vector<SourceFile> found;
    gather(value, root, "", found);
    if (found.empty()) {
      fault(value.line, value.key + ": " + shownOf(value) + " è vuota");
    }
    requireOneCase(value, found);
    return found;
  }

  /// A folder's files, then its folders, each by the bytes of its name.
  void gather(const Value& value, const std::string& root, const std::string& below,
              std::vector<SourceFile>& found) {
    const std::string folder = below.empty() ? root : root + "\\" + replaceAll(below, "/", "\\");
    std::vector<machine::FolderEntry> entries;
    const SystemCode code = files_.list(folder, "", entries);
    if (code != system_code::kSuccess) {
      throw Failure(shownOf(value) + (below.empty() ? "" : "/" + below), code);
    }
    std::sort(entries.begin(), entries.end(),
              [](const machine::FolderEntry& left, const machine::FolderEntry& right) -> bool {
                return left.name < right.name;
              });
    for (const machine::FolderEntry& entry : entries) {
      const std::string name = below.empty() ? entry.name : below + "/" + entry.name;
      const std::string shown = shownOf(value) + "/" + name;
      if (entry.facts.reparsePoint) {
        fault(value.line, value.key + ": " + shown + " non è né un file né una cartella");
      }
      if (const char* const refusal = refusalOfName(entry.name)) {
        fault(value.line,
              value.key + ": " + shown + " ha un nome che Windows non ammette (" + refusal + ")");
      }
      if (entry.facts.folder) {
        gather(value, root, name, found);
      } else {
        found.push_back({name, {folder + "\\" + entry.name, shown}});
      }
    }
  }

  // Packs.

  std::vector<PackPlan> packsOf(const std::vector<Section>& sections,
                                std::optional<Moment> moment) {
    std::vector<PackPlan> packs;
    for (const Section& section : sections) {
      if (section.kind != "pack") {
        continue;
      }
      for (const PackPlan& other : packs) {
        if (equalNoCase(other.name, section.name)) {
          fault(section.line, "il pacco " + section.name + " compare due volte");
        }
      }
      packs.push_back(packOf(section, moment));
    }
    return packs;
  }

  PackPlan packOf(const Section& section, std::optional<Moment> moment) {
    PackPlan pack;
    pack.line = section.line;
    pack.name = fileName({section.line, "pack", section.name}, section.name);
    if (section.has("date")) {
      moment = momentOfValue(section.get("date"));
    }
    if (!moment) {
      fault(section.line, "il pacco " + section.name + " non ha date");
    }
    pack.moment = *moment;
    pack.gzParts = gzPartsOf(section);
    return pack;
  }

  /// The values gz, zip and tree in their order: each tree goes into the zip pack that was named
  /// last, this one into the gz pack that was named last. What is not named has the pack's name.
  std::vector<GzPart> gzPartsOf(const Section& section) {
    std::vector<GzPart> parts;
    for (const Value& value : section.values) {
      if (value.key == "date") {
        continue;
      }
      if (value.key == "gz" || parts.empty()) {
        parts.push_back({partName(section, value, "gz"), {}});
      }
      if (value.key == "zip" || (value.key == "tree" && parts.back().zips.empty())) {
        parts.back().zips.push_back({partName(section, value, "zip"), {}});
      }
      if (value.key == "tree") {
        addTree(parts.back().zips.back(), value);
      }
    }
    requireFilled(section, parts);
    return parts;
  }

  static std::string partName(const Section& section, const Value& value,
                              const std::string& ending) {
    const std::string& name = value.key == ending ? value.text : section.name;
    return fileName({value.line, ending, ""}, name + "." + ending);
  }

  static void requireFilled(const Section& section, const std::vector<GzPart>& parts) {
    const std::string what = "pacco " + section.name;
    std::vector<std::string> gzNames;
    for (const GzPart& part : parts) {
      std::vector<std::string> zipNames;
      for (const ZipPart& zip : part.zips) {
        zipNames.push_back(zip.name);
      }
      const bool empty = part.zips.empty() ||
                         std::any_of(part.zips.begin(), part.zips.end(),
                                     [](const ZipPart& zip) -> bool { return zip.files.empty(); });
      if (empty) {
        fault(section.line, what + ": " + part.name + " non contiene nulla");
      }
      requireDistinct(section.line, what, zipNames);
      gzNames.push_back(part.name);
    }
    if (parts.empty()) {
      fault(section.line, what + ": non contiene nulla");
    }
    requireDistinct(section.line, what, gzNames);
  }

  void addTree(ZipPart& zip, const Value& value) {
    for (SourceFile& file : sourceTree(value)) {
      for (const SourceFile& other : zip.files) {
        if (other.name == file.name) {
          fault(value.line, "tree: " + file.name + " è già in " + zip.name);
        }
      }
      zip.files.push_back(std::move(file));
    }
    requireOneCase(value, zip.files);
  }

  // The medium.

  MediumPlan mediumOf(const std::vector<Section>& sections) {
    MediumPlan plan;
    const Section& head = only(sections, "medium");
    plan.moment = momentOfValue(head.get("date"));
    plan.version = lineText(head.get("version"));
    plan.header = lineText(head.get("header"));
    plan.showIntegrationPath =
        head.has("show-integration-path") && yesOrNo(head.get("show-integration-path"));
    plan.products = productsOf(sections);
    plan.packs = packsOf(sections, plan.moment);
    requireCatalogues(plan.packs);
    plan.lists = listsOf(sections, plan.packs);
    requireUsed(plan);
    plan.documents = documentsOf(sections, head);
    plan.manager = sourceTree(head.get("manager"));
    plan.managerMoment =
        head.has("manager-date") ? momentOfValue(head.get("manager-date")) : plan.moment;
    if (std::none_of(plan.manager.begin(), plan.manager.end(),
                     [](const SourceFile& file) -> bool { return file.name == kManager; })) {
      fault(head.get("manager").line, "manager: nella cartella manca TrelvManager.exe");
    }
    return plan;
  }

  static std::vector<std::string> productsOf(const std::vector<Section>& sections) {
    std::vector<std::string> lines;
    std::vector<std::string> products;
    for (const Section& section : sections) {
      for (const Value& value :
           section.kind == "products" ? section.values : std::vector<Value>()) {
        if (!isProduct(value.key)) {
          fault(value.line, "products: " + value.key + " non è uno di " + listOfProducts());
        }
        products.push_back(value.key);
        requireDistinct(value.line, "products", products);
        lines.push_back(value.key + "|" + fieldText(value));
      }
    }
    return lines;
  }

  static void requireCatalogues(const std::vector<PackPlan>& packs) {
    const auto isCatalogue = [](const SourceFile& file) -> bool {
      return equalNoCase(file.name, hostPaths::kCatalogueFile);
    };
    for (const PackPlan& pack : packs) {
      bool any = false;
      for (const GzPart& gz : pack.gzParts) {
        for (const ZipPart& zip : gz.zips) {
          any = any || std::any_of(zip.files.begin(), zip.files.end(), isCatalogue);
        }
      }
      if (!any) {
        fault(pack.line, "pacco " + pack.name + ": nessun albero ha " + hostPaths::kCatalogueFile +
                             " alla radice");
      }
    }
  }

  std::vector<SourceFile> documentsOf(const std::vector<Section>& sections, const Section& head) {
    std::vector<SourceFile> documents{sourceFile(head.get("manual"), kManual)};
    for (const Section& section : sections) {
      for (const Value& value :
           section.kind == "documents" ? section.values : std::vector<Value>()) {
        const Value named{value.line, "documents", value.key};
        documents.push_back(sourceFile(value, fileName(named, value.key)));
        requireOneCase(named, documents);
      }
    }
    return documents;
  }

  static std::vector<ListPlan> listsOf(const std::vector<Section>& sections,
                                       const std::vector<PackPlan>& packs) {
    std::vector<ListPlan> lists(kLists);
    ListPlan* current = nullptr;
    for (const Section& section : sections) {
      if (section.kind == "list") {
        const bool known =
            section.name.size() == 1 && section.name[0] >= '1' && section.name[0] <= '4';
        if (!known) {
          fault(section.line, "gli elenchi vanno da [list 1] a [list 4]");
        }
        current = &lists[static_cast<std::size_t>(section.name[0] - '1')];
        takeCaption(section, *current);
      } else if (section.kind == "entry") {
        if (current == nullptr) {
          fault(section.line, "una voce prima del primo elenco");
        }
        current->entries.push_back(entryOf(section, packs));
        requireOwnFolder(section, lists);
      }
    }
    return lists;
  }

  /// A list may be gone on with further down, its caption stands once.
  static void takeCaption(const Section& section, ListPlan& list) {
    if (!section.has("caption")) {
      return;
    }
    const Value caption = section.get("caption");
    if (!list.caption.empty()) {
      fault(caption.line, "caption: l'elenco " + section.name + " ne ha già una");
    }
    list.caption = fieldText(caption);
  }

  static EntryPlan entryOf(const Section& section, const std::vector<PackPlan>& packs) {
    const Value product = section.get("product");
    if (!isProduct(product.text) && upperCase(product.text) != kExit) {
      fault(product.line,
            "product: " + product.text + " non è uno di " + listOfProducts() + " Exit");
    }
    EntryPlan entry{
        fieldText(section.get("caption")), section.get("folder").text, fieldText(product), {}, {}};
    for (const Value& value : section.all("pack")) {
      entry.packs.push_back(packNamed(value, packs));
    }
    for (const Value& value : section.all("command")) {
      entry.commands.push_back(fieldText(value));
    }
    if (!entry.folder.empty()) {
      fieldText(section.get("folder"));
      fileName(section.get("folder"), entry.folder);
    }
    if (upperCase(product.text) != kExit && (entry.folder.empty() || entry.packs.empty())) {
      fault(section.line, "voce " + entry.caption + ": manca folder o pack");
    }
    if (!entry.packs.empty() && entry.folder.empty()) {
      fault(section.line, "voce " + entry.caption + ": pacchi senza cartella");
    }
    requireDistinctGz(section, entry, packs);
    return entry;
  }

  /// Packs of one entry are opened into one folder, where a later gz pack replaces its namesake.
  static void requireDistinctGz(const Section& section, const EntryPlan& entry,
                                const std::vector<PackPlan>& packs) {
    std::vector<std::string> names;
    for (const std::size_t index : entry.packs) {
      for (const GzPart& part : packs[index].gzParts) {
        names.push_back(part.name);
      }
    }
    requireDistinct(section.line, "voce " + entry.caption, names);
  }

  static std::size_t packNamed(const Value& value, const std::vector<PackPlan>& packs) {
    for (std::size_t i = 0; i < packs.size(); ++i) {
      if (equalNoCase(packs[i].name, value.text)) {
        return i;
      }
    }
    fault(value.line, "manca la sezione [pack " + value.text + "]");
  }

  static void requireOwnFolder(const Section& section, const std::vector<ListPlan>& lists) {
    const Value folder = section.get("folder");
    std::size_t found = 0;
    for (const ListPlan& list : lists) {
      for (const EntryPlan& entry : list.entries) {
        found += !folder.text.empty() && equalNoCase(entry.folder, folder.text) ? 1 : 0;
      }
    }
    if (found > 1) {
      fault(folder.line, "folder: " + folder.text + " ha già una voce");
    }
  }

  static void requireUsed(const MediumPlan& plan) {
    for (std::size_t i = 0; i < plan.packs.size(); ++i) {
      bool used = false;
      for (const ListPlan& list : plan.lists) {
        for (const EntryPlan& entry : list.entries) {
          used = used || std::find(entry.packs.begin(), entry.packs.end(), i) != entry.packs.end();
        }
      }
      if (!used) {
        fault(plan.packs[i].line,
              "il pacco " + plan.packs[i].name + " non appartiene a nessuna voce");
      }
    }
  }

  machine::Files& files_;
  machine::GivenPaths& paths_;
  std::string given_;
  std::string full_;
  std::vector<Source> sources_;
};

}  // namespace

MediumPlan readMediumPlan(Workplace& workplace, const std::string& description) {
  return Reader(workplace, description).medium();
}

PacksPlan readPacksPlan(Workplace& workplace, const std::string& description) {
  return Reader(workplace, description).packs();
}

std::optional<std::string> inCodePage(const std::string& text) {
  // What it has between 80 and 9F; 0 where it has nothing.
  static constexpr std::array<std::uint32_t, 32> kMiddle{
      0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
  std::string bytes;
  for (std::string_view rest = text; !rest.empty();) {
    const std::optional<std::uint32_t> letter = decoder::takeCharacter(rest);
    if (!letter) {
      return std::nullopt;
    }
    const auto* const middle = std::find(kMiddle.begin(), kMiddle.end(), *letter);
    if (*letter < 0x80 || (*letter >= 0xA0 && *letter <= 0xFF)) {
      bytes += static_cast<char>(*letter);
    } else if (middle != kMiddle.end()) {
      bytes += static_cast<char>(0x80 + (middle - kMiddle.begin()));
    } else {
      return std::nullopt;
    }
  }
  return bytes;
}

}  // namespace trelv::kit
