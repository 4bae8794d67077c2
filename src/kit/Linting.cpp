#include "kit/Linting.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/Text.h"
#include "kit/ArchiveReading.h"
#include "kit/Failure.h"
#include "kit/LintCatalogue.h"
#include "kit/LintConfiguration.h"
#include "kit/LintPacks.h"
#include "packs/ProductConfiguration.h"
#include "packs/ZipProtection.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kLargestText = std::size_t{64} << 20U;
/// An archive within another one is kept in memory.
constexpr std::uint64_t kLargestInner = std::uint64_t{256} << 20U;
/// What of an archive's names is kept in memory.
constexpr std::size_t kMostEntries = 200'000;
constexpr std::size_t kSniffed = 0x10000;

constexpr const char* kMissing = "manca";

constexpr std::string_view kZipSignature = "PK";
constexpr std::string_view kGzSignature = "\x1F\x8B";

std::string endingOf(const std::string& name) {
  return modLibrary::Extension(name.substr(name.find_last_of("\\/") + 1));
}

bool endsLikePack(const std::string& name) {
  const std::string ending = lowerCase(endingOf(name));
  return ending == "zip" || ending == "gz";
}

bool isOpened(const std::string& name) {
  const std::string ending = endingOf(name);
  return ending == "zip" || ending == "gz";
}

std::string lastName(const std::string& path) { return path.substr(path.find_last_of("\\/") + 1); }

std::string backslashed(std::string name) {
  name = replaceAll(std::move(name), "/", "\\");
  while (name.starts_with(".\\")) {
    name.erase(0, 2);
  }
  return name;
}

/// "prod" and a number, a set-up or update section, the programs.
bool holdsSection(const IniText& text, const std::vector<std::string>& kinds) {
  return std::any_of(
      text.sections().begin(), text.sections().end(), [&](const IniText::Section& section) {
        const std::string kind =
            section.name.substr(0, section.name.find_last_not_of("0123456789") + 1);
        return std::any_of(kinds.begin(), kinds.end(),
                           [&](const std::string& one) { return equalNoCase(trim(kind), one); });
      });
}

bool isCatalogue(const IniText& text) { return holdsSection(text, {"prod"}); }
bool isConfiguration(const IniText& text) {
  return holdsSection(text, {"Setup", "Update", "Remove", "Exec"});
}

std::vector<Command> commandsOf(const IniText& text, const std::string& section, Side side) {
  const std::string kind = modProdTrelvLibrary::ConvertClientServerToString(side);
  std::vector<Command> commands;
  for (int index = 1; index <= modProdTrelvManager::kMostCommands; ++index) {
    const std::string key = kind + twoDigits(index);
    const std::string command = text.value(section, key);
    if (command.empty()) {
      break;
    }
    commands.push_back({section, key, command, text.line(section, key)});
  }
  return commands;
}

void requireThere(const GivenPath& place, SystemCode code) {
  if (code != system_code::kSuccess) {
    throw Failure(place.given(), code);
  }
}

void addSection(const IniText& text, const std::string& name, Operation operation,
                std::vector<CommandSection>& sections) {
  if (text.section(name) != nullptr) {
    sections.push_back({name, operation, text.value(name, "version"),
                        commandsOf(text, name, Side::Server),
                        commandsOf(text, name, Side::Client)});
  }
}

std::vector<std::string> splitLines(const std::string& bytes) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
    std::string line = bytes.substr(at, end - at);
    if (line.ends_with("\r")) {
      line.pop_back();
    }
    lines.push_back(std::move(line));
    at = end + 1;
  }
  return lines;
}

/// A file that remembers why it could not be read: an archive that ends early looks damaged.
class WatchedFile {
 public:
  WatchedFile(machine::Files& files, const std::string& path) {
    machine::FileFacts facts;
    failed_ = files.look(path, facts);
    if (failed_ == system_code::kSuccess && facts.folder) {
      failed_ = system_code::kAccessDenied;
    }
    source_ = {facts.size,
               [this, &files, path](std::uint64_t offset, std::size_t size,
                                    std::string& bytes) -> SystemCode {
                 const SystemCode code = files.readPart(path, offset, size, bytes);
                 failed_ = code != system_code::kSuccess ? code : failed_;
                 return code;
               }};
  }
  WatchedFile(const WatchedFile&) = delete;
  WatchedFile& operator=(const WatchedFile&) = delete;

  const ByteSource& source() const { return source_; }
  SystemCode failed() const { return failed_; }

 private:
  ByteSource source_;
  SystemCode failed_ = system_code::kSuccess;
};

}  // namespace

Linting::Linting(Workplace& workplace, const RuleChoice& rules, Progress& progress)
    : workplace_(workplace), rules_(rules), progress_(progress), quiet_(workplace.machine) {}

// Hosts come first: packs and files are compared with them wherever they stand among the arguments.
std::vector<Finding> Linting::run(const std::vector<std::string>& given) {
  const std::vector<Thing> things = recogniseAll(given);
  std::vector<std::vector<Finding>> found(things.size());
  for (const bool hosts : {true, false}) {
    for (std::size_t i = 0; i < things.size(); ++i) {
      if ((things[i].kind == Kind::Host) == hosts) {
        lint(things[i]);
        std::swap(found[i], findings_);
      }
    }
  }
  std::vector<Finding> all;
  for (std::vector<Finding>& each : found) {
    std::move(each.begin(), each.end(), std::back_inserter(all));
  }
  return all;
}

void Linting::lint(const Thing& thing) {
  progress_.tell(thing.place.given());
  switch (thing.kind) {
    case Kind::Host:
      lintHost(thing.place);
      break;
    case Kind::Medium:
      lintMedium(thing.place);
      break;
    case Kind::Pack:
      lintPackFile(thing.place.full(), thing.place, PackPlace::Alone);
      break;
    case Kind::Catalogue:
      lintCatalogueFile(thing.place);
      break;
    case Kind::Configuration:
      lintConfigurationFile(thing.place);
      break;
  }
  // What vanished meanwhile was not read whole.
  machine::FileFacts facts;
  requireThere(thing.place, workplace_.machine.files.look(thing.place.full(), facts));
}

// --- What is it?

/// Each thing once, by whatever names it is given.
std::vector<Linting::Thing> Linting::recogniseAll(const std::vector<std::string>& given) {
  std::vector<Thing> things;
  for (const std::string& path : given) {
    Thing thing = recognise(path);
    const bool known = std::any_of(things.begin(), things.end(), [&](const Thing& other) -> bool {
      return isSame(other.place, thing.place);
    });
    if (!known) {
      things.push_back(std::move(thing));
    }
  }
  return things;
}

bool Linting::isSame(const GivenPath& left, const GivenPath& right) {
  machine::FileIdentity one;
  machine::FileIdentity other;
  machine::Files& files = workplace_.machine.files;
  return equalNoCase(left.full(), right.full()) ||
         (files.identify(left.full(), one) == system_code::kSuccess &&
          files.identify(right.full(), other) == system_code::kSuccess && one == other);
}

Linting::Thing Linting::recognise(const std::string& given) {
  GivenPath place(workplace_.paths, given);
  machine::FileFacts facts;
  requireThere(place, workplace_.machine.files.look(place.full(), facts));
  const Kind kind = facts.folder ? kindOfFolder(place) : kindOfFile(place);
  return {std::move(place), kind};
}

Linting::Kind Linting::kindOfFolder(const GivenPath& place) {
  Program& program = quiet_.program();
  const auto holds = [&](const char* name) -> bool {
    return modLibrary::FileExists(program, place.full() + "\\" + name);
  };
  if (modLibrary::FolderExists(program, hostPaths::topFolder(place.full()))) {
    return Kind::Host;
  }
  if (holds("Setup.cmf") || holds("Versione.ver") || holds("Products.cmf") ||
      modLibrary::FolderExists(program, place.full() + "\\prodotti")) {
    return Kind::Medium;
  }
  std::vector<machine::FolderEntry> entries;
  requireThere(place, workplace_.machine.files.list(place.full(), "", entries));
  throw Failure(place.given(), "non è la cartella di un host né un supporto");
}

Linting::Kind Linting::kindOfFile(const GivenPath& place) {
  std::string bytes;
  requireThere(place, workplace_.machine.files.readPart(place.full(), 0, kSniffed, bytes));
  if (bytes.starts_with(kZipSignature) || bytes.starts_with(kGzSignature) ||
      endsLikePack(place.full())) {
    return Kind::Pack;
  }
  if (equalNoCase(lastName(place.full()), hostPaths::kCatalogueFile)) {
    return Kind::Catalogue;
  }
  std::string trouble;
  const IniText* const text = readIni(place.full(), trouble);
  if (text != nullptr && isCatalogue(*text)) {
    return Kind::Catalogue;
  }
  if (text != nullptr && isConfiguration(*text)) {
    return Kind::Configuration;
  }
  throw Failure(place.given(), "non è un pacchetto, un catalogo né un file di configurazione");
}

// --- Texts

const IniText* Linting::keep(const std::string& bytes) {
  texts_.emplace_back(workplace_.machine.locale, bytes);
  return &texts_.back();
}

const IniText* Linting::readIni(const std::string& path, std::string& trouble) {
  std::string bytes;
  const SystemCode code = workplace_.machine.files.read(path, kLargestText + 1, bytes);
  if (code != system_code::kSuccess) {
    trouble = meansMissing(code) ? kMissing : "non si legge";
    return nullptr;
  }
  if (bytes.size() > kLargestText) {
    trouble = "è troppo grande";
    return nullptr;
  }
  return keep(bytes);
}

const IniText* Linting::readExistingIni(const std::string& path, const GivenPath& place) {
  machine::FileFacts facts;
  const SystemCode code = workplace_.machine.files.look(path, facts);
  if (meansMissing(code) || facts.folder) {
    return nullptr;
  }
  if (code != system_code::kSuccess) {
    throw Failure(place.shown(path), code);
  }
  std::string trouble;
  const IniText* const text = readIni(path, trouble);
  if (text == nullptr && trouble != kMissing) {
    throw Failure(place.shown(path), trouble);
  }
  return text;
}

Catalogue Linting::catalogueOf(const IniText* text, const std::string& shown,
                               const std::string& trouble, Host* host) {
  Catalogue catalogue{{shown, text}, trouble, {}, {}, host, nullptr};
  if (text == nullptr) {
    return catalogue;
  }
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string section = modProdTrelvLibrary::CatalogueSection(index);
    const std::string conf = text->value(section, "conf");
    CatalogueLine entry{section, text->value(section, "id"), text->value(section, "name"), conf};
    (conf.empty() ? catalogue.withoutConf : catalogue.entries).push_back(std::move(entry));
  }
  if (catalogue.entries.empty() && !isCatalogue(*text)) {
    catalogue.trouble = "non elenca prodotti";
  }
  return catalogue;
}

Configuration Linting::configurationOf(const IniText& text, const std::string& shown,
                                       const std::string& product, Host* host) {
  Configuration configuration{{shown, &text}, product, {}, {}, &quiet_.program(), host, nullptr};
  for (const Operation operation : {Operation::Setup, Operation::Update}) {
    const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(operation);
    for (int index = 1; index <= modProdTrelvManager::kMostSections; ++index) {
      addSection(text, kind + twoDigits(index), operation, configuration.sections);
    }
  }
  addSection(text, modProdTrelvLibrary::ConvertSetupUpdateToString(Operation::Remove),
             Operation::Remove, configuration.sections);
  const std::string exec = modProdTrelvLibrary::ConvertSetupUpdateToString(Operation::Exec);
  if (const IniText::Section* const programs = text.section(exec)) {
    for (const IniText::Key& key : programs->keys) {
      const std::string command = text.value(exec, key.name);
      if (!command.empty()) {
        configuration.programs.push_back({exec, key.name, command, key.line});
      }
    }
  }
  return configuration;
}

Linting::Products Linting::readProducts(Host& host) {
  std::string trouble;
  const std::string path = hostPaths::catalogue(host.place.full());
  const IniText* const text = readIni(path, trouble);
  Products products{catalogueOf(text, host.place.shown(path), trouble, &host), {}};
  for (const CatalogueLine& entry : products.catalogue.entries) {
    const std::string file = hostPaths::productConfiguration(host.place.full(), entry.conf);
    const IniText* const configuration =
        lintCatalogue::leadsOutside(entry.conf) ? nullptr : readExistingIni(file, host.place);
    if (configuration != nullptr) {
      products.configurations.push_back(
          configurationOf(*configuration, host.place.shown(file), entry.id, &host));
    }
  }
  return products;
}

void Linting::judge(const Products& products) {
  if (products.catalogue.file.text != nullptr || !products.catalogue.trouble.empty()) {
    rules_.judge(products.catalogue, findings_);
  }
  if (products.catalogue.file.text != nullptr) {
    rules_.judge(products.catalogue.file, findings_);
  }
  std::set<std::string> judged;
  for (const Configuration& configuration : products.configurations) {
    // Two entries of a catalogue may name one file.
    if (judged.insert(upperCase(configuration.file.shown)).second) {
      rules_.judge(configuration.file, findings_);
      rules_.judge(configuration, findings_);
    }
  }
}

// --- A host folder

bool Linting::anythingInstalled(const KnownHost& known) {
  const Host& host = known.host;
  const IniText* const record =
      readExistingIni(hostPaths::serverVersionRecord(host.place.full()), host.place);
  if (record != nullptr && std::any_of(record->sections().begin(), record->sections().end(),
                                       [&](const IniText::Section& section) -> bool {
                                         return !record->value(section.name, "version").empty();
                                       })) {
    return true;
  }
  const std::vector<Configuration>& configurations = known.products.configurations;
  return std::any_of(
      configurations.begin(), configurations.end(),
      [](const Configuration& each) -> bool { return lintConfiguration::isInstalled(each); });
}

void Linting::readHost(KnownHost& known) {
  Host& host = known.host;
  std::uint64_t room = 0;
  if (workplace_.paths.room(host.place.full(), room) == system_code::kSuccess) {
    host.room = room;
  }
  known.products = readProducts(host);
  host.anythingInstalled = anythingInstalled(known);
}

/// Files of a folder by name; none where there is no such folder.
std::vector<std::string> Linting::filesIn(const std::string& folder, const GivenPath& place) {
  std::vector<machine::FolderEntry> entries;
  const SystemCode code = workplace_.machine.files.list(folder, "", entries);
  if (code != system_code::kSuccess && !meansMissing(code) && code != system_code::kDirectoryName) {
    throw Failure(place.shown(folder), code);
  }
  std::vector<std::string> names;
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder) {
      names.push_back(entry.name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

void Linting::lintHost(const GivenPath& place) {
  KnownHost& known = hosts_.emplace_back(KnownHost{{quiet_.program(), place}, {}});
  readHost(known);
  const std::string folder = hostPaths::setupFolder(place.full());
  std::vector<ReadPack> packs;
  for (const std::string& name : filesIn(folder, place)) {
    if (endsLikePack(name)) {
      readPackFile(folder + "\\" + name, place, PackPlace::SetupFolder, &known, packs);
    }
  }
  // What one of them brings may be what another one asks for.
  for (const ReadPack& pack : packs) {
    addArriving(pack.pack, known.host.arriving);
  }
  judge(known.products);
  lintRecords(known);
  rules_.judge(Share{&known.host}, findings_);
  for (ReadPack& pack : packs) {
    judgePack(pack, &known);
  }
}

void Linting::lintRecords(KnownHost& known) {
  Host& host = known.host;
  const std::string path = hostPaths::serverVersionRecord(host.place.full());
  VersionRecords records;
  records.file.shown = host.place.shown(path);
  records.file.text = readExistingIni(path, host.place);
  records.folder = hostPaths::recordFolder(host.place.full());
  records.catalogue = &known.products.catalogue;
  records.configurations = &known.products.configurations;
  records.host = &host;
  workplace_.machine.files.look(path, records.facts);
  rules_.judge(records, findings_);
  if (records.file.text != nullptr) {
    rules_.judge(records.file, findings_);
  }
}

// --- Files on their own

void Linting::lintCatalogueFile(const GivenPath& place) {
  std::string trouble;
  const IniText* const text = readIni(place.full(), trouble);
  judge({catalogueOf(text, place.given(), trouble, hostOf(compared())), {}});
}

void Linting::lintConfigurationFile(const GivenPath& place) {
  std::string trouble;
  const IniText* const text = readIni(place.full(), trouble);
  if (text == nullptr) {
    throw Failure(place.given(), trouble);
  }
  const Configuration configuration = configurationOf(*text, place.given(), "", hostOf(compared()));
  rules_.judge(configuration.file, findings_);
  rules_.judge(configuration, findings_);
}

// --- Packs

void Linting::lintPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place) {
  KnownHost* const known = compared();
  std::vector<ReadPack> packs;
  readPackFile(path, shownBy, place, known, packs);
  if (known != nullptr) {
    known->host.brought.clear();
    for (const ReadPack& pack : packs) {
      addArriving(pack.pack, known->host.brought);
    }
  }
  for (ReadPack& pack : packs) {
    judgePack(pack, known);
  }
  if (known != nullptr) {
    known->host.brought.clear();
  }
}

void Linting::addArriving(const Pack& pack, std::set<std::string>& arriving) {
  if (pack.host == nullptr || !pack.opened) {
    return;
  }
  for (const PackEntry& entry : pack.entries) {
    if (!entry.folder) {
      arriving.insert(upperCase(pack.host->place.full() + "\\" + backslashed(entry.name)));
    }
  }
}

void Linting::readPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place,
                           KnownHost* known, std::vector<ReadPack>& packs) {
  Pack pack;
  pack.shown = shownBy.shown(path);
  pack.fileName = lastName(path);
  pack.place = place;
  pack.host = hostOf(known);
  pack.opened = isOpened(pack.fileName);
  pack.kind = lowerCase(endingOf(path)) == "gz" ? PackKind::Gz : PackKind::Zip;
  if (place == PackPlace::Medium && pack.kind == PackKind::Zip) {
    pack.kind = PackKind::MediumZip;
  }
  progress_.tell(pack.shown);
  const std::string shown = pack.shown;
  const std::size_t before = packs.size();
  WatchedFile file(workplace_.machine.files, path);
  if (file.failed() == system_code::kSuccess) {
    if (pack.kind != PackKind::Gz) {
      const auto obstacle = modProdTrelvManager::FindObstacle(workplace_.machine.files, path);
      pack.needsPassword = obstacle == modProdTrelvManager::ZipObstacle::Password;
      pack.tooDeep = obstacle == modProdTrelvManager::ZipObstacle::Levels;
    }
    readArchive(file.source(), std::move(pack), packs);
  }
  if (meansMissing(file.failed()) && place != PackPlace::Alone) {
    // A start has opened it meanwhile.
    packs.resize(before);
  } else if (file.failed() != system_code::kSuccess) {
    throw Failure(shown, file.failed());
  }
}

bool Linting::isInner(const Pack& pack, const PackEntry& entry) {
  const std::string name = backslashed(entry.name);
  const std::string folder = pack.kind == PackKind::Gz ? hostPaths::kSetups : "";
  const char* const ending = pack.kind == PackKind::Gz ? "zip" : "gz";
  return !entry.folder && endingOf(entry.name) == ending &&
         equalNoCase(name.substr(0, name.size() - lastName(name).size()),
                     folder + (folder.empty() ? "" : "\\"));
}

void Linting::readArchive(const ByteSource& source, Pack given, std::vector<ReadPack>& packs) {
  const std::size_t at = packs.size();
  packs.push_back({std::move(given), {}});
  Inner inner;
  readContent(source, packs[at], inner);
  for (auto& [name, bytes] : inner) {
    Pack other;
    other.shown = packs[at].pack.shown + "!" + name;
    other.place = PackPlace::Archive;
    other.host = packs[at].pack.host;
    other.kind = packs[at].pack.kind == PackKind::Gz ? PackKind::Zip : PackKind::Gz;
    readArchive(textSource(std::move(bytes)), std::move(other), packs);
  }
}

void Linting::readContent(const ByteSource& source, ReadPack& read, Inner& inner) {
  Pack& pack = read.pack;
  const WantEntry want = [&](const PackEntry& entry) -> bool {
    if (pack.entries.size() >= kMostEntries) {
      throw Failure(pack.shown, "ha più di " + std::to_string(kMostEntries) + " voci");
    }
    pack.entries.push_back(entry);
    if (isInner(pack, entry) && entry.size > kLargestInner) {
      throw Failure(pack.shown + "!" + backslashed(entry.name), "è troppo grande");
    }
    return isInner(pack, entry) ||
           (lowerCase(endingOf(entry.name)) == "ini" && entry.size <= kLargestText);
  };
  const TakeContent take = [&](const PackEntry& entry, std::string content) -> void {
    const std::string name = backslashed(entry.name);
    if (isInner(pack, entry)) {
      inner.emplace_back(name, std::move(content));
    } else {
      read.files.emplace(upperCase(name), std::move(content));
    }
  };
  if (pack.kind == PackKind::Gz) {
    readGz(source, pack.shown, want, take);
    pack.refusal = decoderRefusal(source, pack.shown);
    return;
  }
  pack.damage = readZip(source, want, take);
  if (pack.tooDeep && pack.damage.empty()) {
    pack.damage = "troppe cartelle una nell'altra";
  }
  // A pack of a medium, wherever it lies, holds gz packs in its root.
  if (pack.kind == PackKind::Zip && pack.place == PackPlace::Alone && !inner.empty()) {
    pack.kind = PackKind::MediumZip;
  }
  if (pack.kind == PackKind::Zip) {
    inner.clear();
  }
}

/// The products that a pack's files belong to, by their path in it, upper case.
std::map<std::string, std::string> Linting::productsByFile(const Catalogue& catalogue,
                                                           const KnownHost* known) {
  std::map<std::string, std::string> ids;
  const auto add = [&](const Catalogue& one) -> void {
    for (const CatalogueLine& entry : one.entries) {
      ids.emplace(upperCase(replaceAll(entry.conf, "/", "\\")), entry.id);
    }
  };
  add(catalogue);
  if (known != nullptr) {
    add(known->products.catalogue);
  }
  return ids;
}

/// The host's own configuration that a file of a pack will replace; null where there is none.
const Configuration* Linting::replacedBy(const std::string& inner, const KnownHost* known) {
  if (known == nullptr) {
    return nullptr;
  }
  const GivenPath& place = known->host.place;
  const std::string shown = place.shown(place.full() + "\\" + inner);
  const std::vector<Configuration>& own = known->products.configurations;
  const auto found = std::find_if(own.begin(), own.end(), [&](const Configuration& one) -> bool {
    return equalNoCase(one.file.shown, shown);
  });
  return found == own.end() ? nullptr : &*found;
}

Linting::Products Linting::productsIn(const ReadPack& read, const KnownHost* known) {
  const Pack& pack = read.pack;
  const auto textOf = [&](const std::string& inner) -> const IniText* {
    const auto found = read.files.find(upperCase(inner));
    return found == read.files.end() ? nullptr : keep(found->second);
  };
  const std::string catalogueName =
      std::string(hostPaths::kSetups) + "\\" + hostPaths::kCatalogueFile;
  Products products{
      catalogueOf(textOf(catalogueName), pack.shown + "!" + catalogueName, "", pack.host), {}};
  products.catalogue.replaced = known != nullptr ? &known->products.catalogue : nullptr;
  const std::map<std::string, std::string> ids = productsByFile(products.catalogue, known);
  for (const PackEntry& entry : pack.entries) {
    const std::string name = backslashed(entry.name);
    const auto id = ids.find(upperCase(name));
    const bool listed = id != ids.end();
    const IniText* const text =
        !equalNoCase(name, catalogueName) && (listed || lintPacks::isInSetupFolder(entry))
            ? textOf(name)
            : nullptr;
    if (text != nullptr && (listed || isConfiguration(*text))) {
      products.configurations.push_back(
          configurationOf(*text, pack.shown + "!" + name, listed ? id->second : "", pack.host));
      products.configurations.back().replaced = replacedBy(name, known);
    }
  }
  return products;
}

void Linting::judgePack(ReadPack& read, const KnownHost* known) {
  const Products products = productsIn(read, known);
  read.pack.configurations = products.configurations;
  rules_.judge(read.pack, findings_);
  if (read.pack.opened) {
    judge(products);
  }
}

// --- A medium

MediumText Linting::readMediumText(const GivenPath& place, const char* name) {
  const std::string path = place.full() + (place.full().ends_with("\\") ? "" : "\\") + name;
  MediumText text{place.shown(path), false, {}, false};
  std::string bytes;
  text.stands = workplace_.machine.files.read(path, kLargestText, bytes) == system_code::kSuccess;
  for (const std::string& line : splitLines(bytes)) {
    text.odd =
        text.odd || !mediumFiles::isPlainLine(line) || line.size() > mediumFiles::kLongestLine;
    text.lines.push_back(workplace_.machine.locale.fromAnsi(line));
  }
  return text;
}

void Linting::lintMedium(const GivenPath& place) {
  Medium medium{quiet_.program(),
                place,
                readMediumText(place, "Setup.cmf"),
                readMediumText(place, "Versione.ver"),
                readMediumText(place, "Products.cmf"),
                {}};
  medium.menu = mediumFiles::readSetup(medium.setup.lines);
  rules_.judge(medium, findings_);
  std::vector<std::string> seen;
  for (const MenuPage& page : medium.menu.menu) {
    for (const OfferedProduct& entry : page.entries) {
      if (entry.packFolder.empty() || !mediumFiles::liesOnMedium(entry.packFolder)) {
        continue;
      }
      const std::string folder = place.full() + "\\" + replaceAll(entry.packFolder, "/", "\\");
      if (std::find(seen.begin(), seen.end(), upperCase(folder)) != seen.end()) {
        continue;
      }
      seen.push_back(upperCase(folder));
      for (const std::string& name : filesIn(folder, place)) {
        if (endsLikePack(name)) {
          lintPackFile(folder + "\\" + name, place, PackPlace::Medium);
        }
      }
    }
  }
}

}  // namespace trelv::kit
