#include "kit/Linting.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "base/Text.h"
#include "kit/ArchiveReading.h"
#include "kit/Failure.h"
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

}  // namespace

Linting::Linting(Workplace& workplace, const RuleChoice& rules, Progress& progress)
    : workplace_(workplace), rules_(rules), progress_(progress), quiet_(workplace.machine) {}

std::vector<Finding> Linting::run(const std::vector<std::string>& given) {
  std::vector<Thing> things;
  for (const std::string& path : given) {
    things.push_back(recognise(path));
    if (things.back().kind == Kind::Host && !host_) {
      host_ = std::make_unique<Host>(Host{quiet_.program(), things.back().place});
      std::uint64_t room = 0;
      if (workplace_.paths.room(things.back().place.full(), room) == system_code::kSuccess) {
        host_->room = room;
      }
    }
  }
  for (const Thing& thing : things) {
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
  }
  return std::move(findings_);
}

// --- What is it?

Linting::Thing Linting::recognise(const std::string& given) {
  GivenPath place(workplace_.paths, given);
  machine::FileFacts facts;
  const SystemCode code = workplace_.machine.files.look(place.full(), facts);
  if (code != system_code::kSuccess) {
    throw Failure(place.given(), code);
  }
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
  const SystemCode code = workplace_.machine.files.list(place.full(), "", entries);
  if (code != system_code::kSuccess) {
    throw Failure(place.given(), code);
  }
  throw Failure(place.given(), "non è la cartella di un host né un supporto");
}

Linting::Kind Linting::kindOfFile(const GivenPath& place) {
  std::string bytes;
  const SystemCode code = workplace_.machine.files.readPart(place.full(), 0, kSniffed, bytes);
  if (code != system_code::kSuccess) {
    throw Failure(place.given(), code);
  }
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
    trouble = meansMissing(code) ? "manca" : "non si legge";
    return nullptr;
  }
  if (bytes.size() > kLargestText) {
    trouble = "è troppo grande";
    return nullptr;
  }
  return keep(bytes);
}

Catalogue Linting::catalogueOf(const IniText* text, const std::string& shown,
                               const std::string& trouble, Host* host) {
  Catalogue catalogue{{shown, text}, trouble, {}, host};
  if (text == nullptr) {
    return catalogue;
  }
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string section = modProdTrelvLibrary::CatalogueSection(index);
    const std::string conf = text->value(section, "conf");
    if (!conf.empty()) {
      catalogue.entries.push_back(
          {section, text->value(section, "id"), text->value(section, "name"), conf});
    }
  }
  if (catalogue.entries.empty() && !isCatalogue(*text)) {
    catalogue.trouble = "non elenca prodotti";
  }
  return catalogue;
}

Configuration Linting::configurationOf(const IniText& text, const std::string& shown,
                                       const std::string& product, Host* host) {
  Configuration configuration{{shown, &text}, product, {}, {}, &quiet_.program(), host};
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
    std::string ignored;
    const IniText* const configuration =
        mediumFiles::liesOnMedium(entry.conf) ? readIni(file, ignored) : nullptr;
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

bool Linting::anythingInstalled(const Host& host,
                                const std::vector<Configuration>& configurations) {
  std::string trouble;
  const IniText* const record = readIni(hostPaths::serverVersionRecord(host.place.full()), trouble);
  if (record != nullptr) {
    for (const IniText::Section& section : record->sections()) {
      if (!record->value(section.name, "version").empty()) {
        return true;
      }
    }
  }
  for (const Configuration& configuration : configurations) {
    for (const Command& command : configuration.programs) {
      std::string path = command.text;
      modProdTrelvLibrary::ReplacePlaceholders(quiet_.program(), path,
                                               {host.place.full(), host.place.full(), ""});
      if (modLibrary::FileExists(quiet_.program(), path)) {
        return true;
      }
    }
  }
  return false;
}

void Linting::lintHost(const GivenPath& place) {
  Host other{quiet_.program(), place};
  Host& host = equalNoCase(host_->place.full(), place.full()) ? *host_ : other;
  const Products products = readProducts(host);
  host.anythingInstalled = anythingInstalled(host, products.configurations);
  if (&host == host_.get()) {
    hostProducts_ = std::make_unique<Products>(products);
  }
  const std::string folder = hostPaths::setupFolder(place.full());
  std::vector<machine::FolderEntry> entries;
  workplace_.machine.files.list(folder, "", entries);
  std::sort(entries.begin(), entries.end(),
            [](const machine::FolderEntry& left, const machine::FolderEntry& right) {
              return left.name < right.name;
            });
  std::vector<Finding> ofPacks;
  std::swap(ofPacks, findings_);
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder && endsLikePack(entry.name)) {
      lintPackFile(folder + "\\" + entry.name, place, PackPlace::SetupFolder);
    }
  }
  std::swap(ofPacks, findings_);
  judge(products);
  lintRecords(host, products);
  rules_.judge(Share{&host}, findings_);
  findings_.insert(findings_.end(), ofPacks.begin(), ofPacks.end());
}

void Linting::lintRecords(Host& host, const Products& products) {
  const std::string path = hostPaths::serverVersionRecord(host.place.full());
  VersionRecords records;
  std::string trouble;
  records.file.shown = host.place.shown(path);
  records.file.text = readIni(path, trouble);
  records.folder = hostPaths::recordFolder(host.place.full());
  records.catalogue = &products.catalogue;
  records.configurations = &products.configurations;
  records.host = &host;
  if (records.file.text != nullptr &&
      workplace_.machine.files.look(path, records.facts) == system_code::kSuccess) {
    rules_.judge(records, findings_);
  }
}

// --- Files on their own

void Linting::lintCatalogueFile(const GivenPath& place) {
  std::string trouble;
  const IniText* const text = readIni(place.full(), trouble);
  judge({catalogueOf(text, place.given(), trouble, host_.get()), {}});
}

void Linting::lintConfigurationFile(const GivenPath& place) {
  std::string trouble;
  const IniText* const text = readIni(place.full(), trouble);
  if (text == nullptr) {
    throw Failure(place.given(), trouble);
  }
  const Configuration configuration = configurationOf(*text, place.given(), "", host_.get());
  rules_.judge(configuration.file, findings_);
  rules_.judge(configuration, findings_);
}

// --- Packs

void Linting::lintPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place) {
  Pack pack;
  pack.shown = shownBy.shown(path);
  pack.fileName = lastName(path);
  pack.place = place;
  pack.host = host_.get();
  pack.opened = isOpened(pack.fileName);
  pack.kind = lowerCase(endingOf(path)) == "gz" ? PackKind::Gz : PackKind::Zip;
  if (place == PackPlace::Medium && pack.kind == PackKind::Zip) {
    pack.kind = PackKind::MediumZip;
  }
  progress_.tell(pack.shown);
  if (pack.kind != PackKind::Gz) {
    const auto obstacle = modProdTrelvManager::FindObstacle(workplace_.machine.files, path);
    pack.needsPassword = obstacle == modProdTrelvManager::ZipObstacle::Password;
    pack.tooDeep = obstacle == modProdTrelvManager::ZipObstacle::Levels;
  }
  lintArchive(fileSource(workplace_.machine.files, path), std::move(pack));
}

void Linting::lintArchive(const ByteSource& source, Pack pack) {
  Brought files;
  std::vector<std::pair<std::string, std::string>> inner;
  readArchive(source, pack, files, inner);
  judgePack(pack, files);
  for (auto& [name, bytes] : inner) {
    Pack other;
    other.shown = pack.shown + "!" + name;
    other.fileName = lastName(name);
    other.place = PackPlace::Archive;
    other.host = pack.host;
    other.kind = pack.kind == PackKind::Gz ? PackKind::Zip : PackKind::Gz;
    lintArchive(textSource(std::move(bytes)), std::move(other));
  }
}

void Linting::readArchive(const ByteSource& source, Pack& pack, Brought& files,
                          std::vector<std::pair<std::string, std::string>>& inner) {
  const auto isInner = [&](const PackEntry& entry) -> bool {
    const std::string ending = endingOf(entry.name);
    const bool root = backslashed(entry.name).find('\\') == std::string::npos;
    return pack.kind == PackKind::Gz
               ? ending == "zip" &&
                     FileSystemObject::liesAtOrIn(backslashed(entry.name), hostPaths::kSetups)
               : ending == "gz" && root;
  };
  const WantEntry want = [&](const PackEntry& entry) -> bool {
    if (pack.entries.size() >= kMostEntries) {
      throw Failure(pack.shown, "ha più di " + std::to_string(kMostEntries) + " voci");
    }
    pack.entries.push_back(entry);
    if (isInner(entry) && entry.size > kLargestInner) {
      throw Failure(pack.shown + "!" + backslashed(entry.name), "è troppo grande");
    }
    return isInner(entry) ||
           (lowerCase(endingOf(entry.name)) == "ini" && entry.size <= kLargestText);
  };
  const TakeContent take = [&](const PackEntry& entry, std::string content) -> void {
    const std::string name = backslashed(entry.name);
    if (isInner(entry)) {
      inner.emplace_back(name, std::move(content));
    } else {
      files.emplace(upperCase(name), std::move(content));
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

void Linting::judgePack(Pack& pack, const Brought& files) {
  Host* const host = pack.host;
  if (host != nullptr && pack.opened) {
    for (const PackEntry& entry : pack.entries) {
      if (!entry.folder) {
        host->arriving.push_back(upperCase(host->place.full() + "\\" + backslashed(entry.name)));
      }
    }
  }
  const auto textOf = [&](const std::string& inner) -> const IniText* {
    const auto found = files.find(upperCase(inner));
    return found == files.end() ? nullptr : keep(found->second);
  };
  const std::string catalogueName =
      std::string(hostPaths::kSetups) + "\\" + hostPaths::kCatalogueFile;
  const IniText* const text = textOf(catalogueName);
  Products products{catalogueOf(text, pack.shown + "!" + catalogueName, "", host), {}};
  std::map<std::string, std::string> ids;
  for (const CatalogueLine& entry : products.catalogue.entries) {
    ids.emplace(upperCase(replaceAll(entry.conf, "/", "\\")), entry.id);
  }
  if (hostProducts_) {
    for (const CatalogueLine& entry : hostProducts_->catalogue.entries) {
      ids.emplace(upperCase(replaceAll(entry.conf, "/", "\\")), entry.id);
    }
  }
  for (const PackEntry& entry : pack.entries) {
    const std::string name = backslashed(entry.name);
    const auto id = ids.find(upperCase(name));
    const bool direct =
        FileSystemObject::liesAtOrIn(name, hostPaths::kSetups) &&
        name.find('\\', std::string(hostPaths::kSetups).size() + 1) == std::string::npos;
    if (equalNoCase(name, catalogueName) || (id == ids.end() && !direct)) {
      continue;
    }
    const IniText* const configuration = textOf(name);
    if (configuration != nullptr && (id != ids.end() || isConfiguration(*configuration))) {
      products.configurations.push_back(configurationOf(*configuration, pack.shown + "!" + name,
                                                        id != ids.end() ? id->second : "", host));
    }
  }
  pack.configurations = products.configurations;
  rules_.judge(pack, findings_);
  if (pack.opened) {
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
      std::vector<machine::FolderEntry> entries;
      workplace_.machine.files.list(folder, "", entries);
      std::sort(entries.begin(), entries.end(),
                [](const machine::FolderEntry& left, const machine::FolderEntry& right) {
                  return left.name < right.name;
                });
      for (const machine::FolderEntry& file : entries) {
        if (!file.facts.folder && endsLikePack(file.name)) {
          lintPackFile(folder + "\\" + file.name, place, PackPlace::Medium);
        }
      }
    }
  }
}

}  // namespace trelv::kit
