// What catalogue and configuration file have against a product.

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "kit/CauseFinders.h"
#include "packs/ProductConfiguration.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::causes {
namespace {

using modProdTrelvManager::VersionNumber;

constexpr const char* kCatalogue = "catalogo";

std::string catalogueSetting(const ProductHistory& history, int index, const char* key) {
  return modLibrary::ReadSetting(history.program(),
                                 {hostPaths::catalogue(history.serverPath()),
                                  modProdTrelvLibrary::CatalogueSection(index), key});
}

/// Index of the product's section behind the catalogue's end; 0 where there is none.
int sectionBehindEnd(const ProductHistory& history) {
  for (int index = static_cast<int>(history.entries().size()) + 1;
       index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    if (equalNoCase(catalogueSetting(history, index, "id"), history.product())) {
      return index;
    }
  }
  return 0;
}

/// The first section behind the one that ends the catalogue; the product's own where that is it.
int firstBehindGap(const ProductHistory& history, int own) {
  int index = static_cast<int>(history.entries().size()) + 2;
  while (index < own && catalogueSetting(history, index, "id").empty() &&
         catalogueSetting(history, index, "conf").empty()) {
    ++index;
  }
  return std::min(index, own);
}

// --- The configuration file

/// A section of the product's configuration file, seen from one side.
struct Section {
  std::string name;
  std::string version;
  /// Commands that a run reads, from the first on without a gap.
  int commands = 0;
  /// The first key behind the gap; empty where nothing stands there.
  std::string keyBehindGap;
};

std::string notHigherVersion(const LogLine& line) {
  return textBetween(line.text, " la versione: ", " è minore o uguale a quella corrente: ");
}

std::string currentVersion(const LogLine& line) {
  const std::string before = " è minore o uguale a quella corrente: ";
  const std::size_t at = line.text.find(before);
  return at == std::string::npos ? std::string() : line.text.substr(at + before.size());
}

/// What a run of the product found in the configuration file.
class SideConfiguration {
 public:
  SideConfiguration(const ProductHistory& history, Side side)
      : history_(history), side_(side), run_(history.run(side)) {
    if (run_ == nullptr) {
      return;
    }
    const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(operation());
    for (int index = 1; index <= modProdTrelvManager::kMostSections; ++index) {
      addSection(kind + twoDigits(index));
    }
    current_ = versionBehindRun();
  }

  const std::vector<Section>& sections() const { return sections_; }
  const SideRun* run() const { return run_; }
  /// The side's version when the run had ended.
  const std::string& current() const { return current_; }
  std::string command(int index) const {
    return modProdTrelvLibrary::ConvertClientServerToString(side_) + twoDigits(index);
  }
  /// Highest version of the sections that have commands; "" where none has.
  std::string highest() const;
  /// The line that tells that a section's version is no higher; null where there is none.
  const LogLine* notHigherLine(const std::string& version) const;
  Found at(const Section& section, const std::string& key) const {
    return Stop{stepOf(side_),
                inIniFile(history_.program(), history_.entry().configuration, section.name, key)};
  }

 private:
  Operation operation() const;
  bool hasSetUp() const;
  std::string versionBehindRun() const;
  void addSection(const std::string& name);
  std::string setting(const std::string& section, const std::string& key) const {
    return modLibrary::ReadSetting(history_.program(),
                                   {history_.entry().configuration, section, key});
  }

  const ProductHistory& history_;
  const Side side_;
  const SideRun* run_;
  std::vector<Section> sections_;
  std::string current_;
};

bool SideConfiguration::hasSetUp() const {
  const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(Operation::Setup);
  for (int index = 1; index <= modProdTrelvManager::kMostSections; ++index) {
    if (!setting(kind + twoDigits(index), command(1)).empty()) {
      return true;
    }
  }
  return false;
}

/// Set-up or update: what the run says, else what the record says, which such a run leaves alone.
Operation SideConfiguration::operation() const {
  for (const LogLine& line : run_->lines) {
    if (line.text.find(": Tipo=Setup - ") != std::string::npos) {
      return Operation::Setup;
    }
    if (line.text.find(": Tipo=Update - ") != std::string::npos) {
      return Operation::Update;
    }
  }
  const LogLine* const line = run_->find(log_line::kNotHigher);
  if (line == nullptr && hasSetUp()) {
    // A set-up would have left a line.
    return Operation::Update;
  }
  const std::string recorded = line != nullptr ? currentVersion(*line) : history_.recorded(side_);
  return recorded.empty() ? Operation::Setup : Operation::Update;
}

void SideConfiguration::addSection(const std::string& name) {
  Section section{name, setting(name, "version"), 0, ""};
  if (section.version.empty() && setting(name, command(1)).empty()) {
    return;
  }
  int index = 1;
  for (; index <= modProdTrelvManager::kMostCommands && !setting(name, command(index)).empty();
       ++index) {
    ++section.commands;
  }
  for (; index <= modProdTrelvManager::kMostCommands && section.keyBehindGap.empty(); ++index) {
    if (!setting(name, command(index)).empty()) {
      section.keyBehindGap = command(index);
    }
  }
  if (section.commands > 0 || !section.keyBehindGap.empty()) {
    sections_.push_back(section);
  }
}

std::string SideConfiguration::versionBehindRun() const {
  const LogLine* const done = run_->findLast(log_line::kDone);
  const LogLine* const notHigher = run_->findLast(log_line::kNotHigher);
  if (notHigher != nullptr && (done == nullptr || done->number < notHigher->number)) {
    return currentVersion(*notHigher);
  }
  const std::string recorded = history_.recorded(side_);
  // A workstation's record is not at hand everywhere: the run raised the version to this one.
  return recorded.empty() && done != nullptr ? highest() : recorded;
}

std::string SideConfiguration::highest() const {
  std::string version;
  for (const Section& section : sections_) {
    if (section.commands > 0 && VersionNumber(section.version) > VersionNumber(version)) {
      version = section.version;
    }
  }
  return version;
}

const LogLine* SideConfiguration::notHigherLine(const std::string& version) const {
  const auto found =
      std::find_if(run_->lines.begin(), run_->lines.end(), [&version](const LogLine& line) -> bool {
        return beginsWith(line.text, log_line::kNotHigher) && notHigherVersion(line) == version;
      });
  return found == run_->lines.end() ? nullptr : &*found;
}

/// The fields of a version as numbers.
std::vector<std::uint64_t> fieldsOf(const std::string& version) {
  std::vector<std::uint64_t> fields;
  std::size_t from = 0;
  while (from <= version.size()) {
    const std::size_t end = std::min(version.find('.', from), version.size());
    fields.push_back(VersionNumber(version.substr(from, end - from)));
    from = end + 1;
  }
  return fields;
}

/// Would a reader, who compares field by field, take the version for the higher one?
bool readsHigher(const std::string& version, const std::string& than) {
  std::vector<std::uint64_t> left = fieldsOf(version);
  std::vector<std::uint64_t> right = fieldsOf(than);
  left.resize(std::max(left.size(), right.size()));
  right.resize(left.size());
  return left > right;
}

/// The first section for which `holds`, as evidence of its `key`.
template <class Test, class Key>
Found firstSection(const SideConfiguration& configuration, const Test& holds, const Key& key) {
  for (const Section& section : configuration.sections()) {
    if (holds(section)) {
      return configuration.at(section, key(section));
    }
  }
  return std::nullopt;
}

/// The last word about a side's version: in the log, else the record itself.
Evidence versionEvidence(const ProductHistory& history, Side side) {
  const SideRun* const run = history.run(side);
  for (const char* const beginning : {log_line::kNotHigher, log_line::kDone}) {
    const LogLine* const line = run == nullptr ? nullptr : run->findLast(beginning);
    if (line != nullptr) {
      return history.inLog(*line);
    }
  }
  return inIniFile(history.program(), versionRecord(history.program(), side, history.serverPath()),
                   history.product(), "version");
}

}  // namespace

Found catalogueGap(const ProductHistory& history, Side /*side*/) {
  const int own = history.place() ? 0 : sectionBehindEnd(history);
  return own == 0
             ? Found()
             : Found(Stop{
                   kCatalogue,
                   inIniFile(history.program(), hostPaths::catalogue(history.serverPath()),
                             modProdTrelvLibrary::CatalogueSection(firstBehindGap(history, own)),
                             "")});
}

Found notInCatalogue(const ProductHistory& history, Side /*side*/) {
  return history.place()
             ? Found()
             : Found(Stop{kCatalogue,
                          {hostPaths::catalogue(history.serverPath()), std::nullopt, ""}});
}

Found noConfiguration(const ProductHistory& history, Side side) {
  const SideRun* const run = history.run(side);
  const LogLine* const line = run == nullptr ? nullptr : run->find(log_line::kNoConfiguration);
  return line == nullptr ? Found() : Found(Stop{stepOf(side), history.inLog(*line)});
}

Found noVersion(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  return firstSection(
      configuration,
      [](const Section& section) -> bool {
        return section.commands > 0 && VersionNumber(section.version) == 0;
      },
      [](const Section& section) -> std::string {
        return section.version.empty() ? "" : "version";
      });
}

Found fieldCount(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  for (const Section& section : configuration.sections()) {
    if (section.commands > 0 && VersionNumber(section.version) > 0 &&
        VersionNumber(section.version) <= VersionNumber(configuration.current()) &&
        readsHigher(section.version, configuration.current())) {
      const LogLine* const line = configuration.notHigherLine(section.version);
      return line != nullptr ? Found(Stop{stepOf(side), history.inLog(*line)})
                             : configuration.at(section, "version");
    }
  }
  return std::nullopt;
}

Found commandGap(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  return firstSection(
      configuration,
      [&](const Section& section) -> bool {
        return !section.keyBehindGap.empty() && VersionNumber(section.version) > 0 &&
               (VersionNumber(section.version) >= VersionNumber(configuration.current()) ||
                readsHigher(section.version, configuration.current()));
      },
      [](const Section& section) -> std::string { return section.keyBehindGap; });
}

Found secondCommand(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  // Where the first command could not be started the second one has done its work.
  if (configuration.run() == nullptr || configuration.run()->find(log_line::kNotDone) != nullptr) {
    return std::nullopt;
  }
  return firstSection(
      configuration,
      [&](const Section& section) -> bool {
        return section.commands > 1 && VersionNumber(section.version) > 0 &&
               VersionNumber(section.version) == VersionNumber(configuration.current());
      },
      [&](const Section& /*section*/) -> std::string { return configuration.command(2); });
}

Found versionNotHigher(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  if (configuration.run() == nullptr) {
    return std::nullopt;
  }
  std::string highest = configuration.highest();
  if (highest.empty()) {
    highest = configuredVersion(history.program(), history.entry().configuration, side);
  }
  return !highest.empty() && VersionNumber(configuration.current()) > VersionNumber(highest)
             ? Found(Stop{stepOf(side), versionEvidence(history, side)})
             : Found();
}

Found upToDate(const ProductHistory& history, Side side) {
  const SideConfiguration configuration(history, side);
  if (configuration.run() == nullptr) {
    return std::nullopt;
  }
  std::string highest = configuration.highest();
  if (highest.empty()) {
    highest = configuredVersion(history.program(), history.entry().configuration, side);
  }
  return VersionNumber(configuration.current()) == VersionNumber(highest) ||
                 (configuration.sections().empty() && highest.empty())
             ? Found(Stop{stepOf(side), versionEvidence(history, side)})
             : Found();
}

}  // namespace trelv::kit::causes
