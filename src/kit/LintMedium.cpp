#include "kit/LintMedium.h"

#include <algorithm>
#include <array>
#include <set>

#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/LintCatalogue.h"
#include "packs/PackOrder.h"
#include "platform/modLibrary.h"

namespace trelv::kit::lintMedium {
namespace {

constexpr const char* kExit = "Exit";

/// One entry of the menu with the line it stands on.
struct Entry {
  OfferedProduct product;
  std::size_t line;
};

/// What the program makes of a line that stands among the options.
mediumFiles::SetupFile readLine(const std::string& line) {
  return mediumFiles::readSetup({"", "", line});
}

bool hasEntry(const mediumFiles::SetupFile& setup) {
  return std::any_of(setup.menu.begin(), setup.menu.end(),
                     [](const MenuPage& page) -> bool { return !page.entries.empty(); });
}

/// Does the line begin with a marker? With one value more any menu line is an entry.
bool isMenuLine(const std::string& line) { return hasEntry(readLine(line + "|x")); }

constexpr std::size_t kLinesBeforeOptions = 2;

std::vector<Entry> entriesOf(const Medium& medium) {
  std::vector<Entry> entries;
  const std::vector<std::string>& lines = medium.setup.lines;
  for (std::size_t i = kLinesBeforeOptions; i < lines.size(); ++i) {
    for (const MenuPage& page : readLine(lines[i]).menu) {
      for (const OfferedProduct& product : page.entries) {
        entries.push_back({product, i + 1});
      }
    }
  }
  return entries;
}

/// Menus offer the five products only.
bool isKnown(const std::string& identifier) {
  constexpr std::array kProducts{"NERIO", "Q2", "ZB", "LUDA", "ZM"};
  return std::any_of(kProducts.begin(), kProducts.end(),
                     [&](const char* product) -> bool { return equalNoCase(identifier, product); });
}

void checkText(const MediumText& text, Report& report) {
  const bool empty = std::all_of(text.lines.begin(), text.lines.end(),
                                 [](const std::string& line) { return trim(line).empty(); });
  if (!text.stands) {
    report.add(text.shown, std::nullopt, "manca o non si legge");
  } else if (empty) {
    report.add(text.shown, std::nullopt, "è vuoto");
  } else if (text.odd) {
    report.add(text.shown, std::nullopt, "non è testo semplice");
  }
}

std::string rooted(const Medium& medium, const std::string& relative) {
  std::string path = medium.place.full() + (medium.place.full().ends_with("\\") ? "" : "\\") +
                     replaceAll(relative, "/", "\\");
  while (path.size() > 3 && path.ends_with("\\")) {
    path.pop_back();
  }
  return path;
}

/// The folder of an entry's packs; empty where it names none on the medium.
std::string packFolder(const Medium& medium, const Entry& entry) {
  const std::string& folder = entry.product.packFolder;
  return folder.empty() || !mediumFiles::liesOnMedium(folder) ? std::string()
                                                              : rooted(medium, folder);
}

std::vector<std::string> namesIn(const Medium& medium, const std::string& folder, bool folders) {
  std::vector<machine::FolderEntry> entries;
  std::vector<std::string> names;
  const SystemCode code = medium.program.machine.files.list(folder, "", entries);
  if (code != system_code::kSuccess && !meansMissing(code) && code != system_code::kDirectoryName) {
    throw Failure(medium.place.shown(folder), code);
  }
  for (const machine::FolderEntry& entry : entries) {
    if (entry.facts.folder == folders) {
      names.push_back(entry.name);
    }
  }
  std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
    return upperCase(left) < upperCase(right);
  });
  return names;
}

bool isZip(const std::string& name) { return modLibrary::Extension(name) == "zip"; }

/// Another ending, or one that differs in its letters only, is told of by the packs' own rules.
bool isPackOfAnyKind(const std::string& name) {
  const std::string ending = lowerCase(modLibrary::Extension(name));
  return ending == "zip" || ending == "gz";
}

/// Calls `look(folder)` once for each folder of packs that is there.
template <class Look>
void forEachPackFolder(const Medium& medium, Look&& look) {
  std::set<std::string> seen;
  for (const Entry& entry : entriesOf(medium)) {
    const std::string folder = packFolder(medium, entry);
    if (!folder.empty() && seen.insert(upperCase(folder)).second &&
        modLibrary::FolderExists(medium.program, folder)) {
      look(folder);
    }
  }
}

/// Folders, two levels below the root, in which the program lies.
std::vector<std::string> programFolders(const Medium& medium) {
  std::vector<std::string> found;
  for (const std::string& upper : namesIn(medium, medium.place.full(), true)) {
    for (const std::string& lower : namesIn(medium, rooted(medium, upper), true)) {
      const std::string folder = rooted(medium, upper + "\\" + lower);
      if (modLibrary::FileExists(medium.program, folder + "\\TrelvManager.exe")) {
        found.push_back(folder);
      }
    }
  }
  return found;
}

}  // namespace

void setupFile(const Medium& medium, Report& report) { checkText(medium.setup, report); }

// Nothing but its first line is read.
void versionFile(const Medium& medium, Report& report) {
  MediumText text = medium.version;
  text.lines.resize(std::min<std::size_t>(text.lines.size(), 1));
  checkText(text, report);
}

void productsFile(const Medium& medium, Report& report) {
  checkText(medium.products, report);
  for (std::size_t i = 0; i < medium.products.lines.size(); ++i) {
    for (const ListedProduct& product : mediumFiles::readProducts({medium.products.lines[i]})) {
      if (!lintCatalogue::isProductId(product.identifier)) {
        report.add(medium.products.shown, i + 1, "prodotto sconosciuto: " + product.identifier);
      }
    }
  }
}

void entryWithoutPacks(const Medium& medium, Report& report) {
  for (const Entry& entry : entriesOf(medium)) {
    if (entry.product.identifier == kExit || !mediumFiles::liesOnMedium(entry.product.packFolder)) {
      continue;
    }
    const std::string folder = packFolder(medium, entry);
    const std::vector<std::string> names =
        folder.empty() ? std::vector<std::string>() : namesIn(medium, folder, false);
    if (std::none_of(names.begin(), names.end(), isZip)) {
      report.add(medium.setup.shown, entry.line,
                 entry.product.caption + ": " + entry.product.packFolder);
    }
  }
}

void otherFiles(const Medium& medium, Report& report) {
  forEachPackFolder(medium, [&](const std::string& folder) {
    for (const std::string& name : namesIn(medium, folder, false)) {
      if (!isPackOfAnyKind(name)) {
        report.add(medium.place.shown(folder + "\\" + name), std::nullopt);
      }
    }
  });
}

// The medium is taken to list its files by name, as the file systems of disks and images do.
void otherOrder(const Medium& medium, Report& report) {
  forEachPackFolder(medium, [&](const std::string& folder) {
    std::vector<std::string> names = namesIn(medium, folder, false);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& name) { return !isZip(name); }),
                names.end());
    std::vector<std::string> opened = names;
    modProdTrelvInteractive::SortStrings(opened);
    const auto [first, byName] = std::mismatch(opened.begin(), opened.end(), names.begin());
    if (first != opened.end()) {
      report.add(medium.place.shown(folder), std::nullopt, *first + " prima di " + *byName);
    }
  });
}

void noPicture(const Medium& medium, Report& report) {
  for (const std::string& folder : programFolders(medium)) {
    for (const char* const name : {"product.jpg", "setup_fase1.jpg"}) {
      const std::string picture = folder + "\\images\\" + name;
      if (!modLibrary::FileExists(medium.program, picture)) {
        report.add(medium.place.shown(picture), std::nullopt);
      }
    }
  }
}

void noManual(const Medium& medium, Report& report) {
  const std::string folder = rooted(medium, "prodotti\\docs");
  if (!modLibrary::FileExists(medium.program, folder + "\\kodamuri.pdf") &&
      !modLibrary::FileExists(medium.program, folder + "\\UserManual.doc")) {
    report.add(medium.place.shown(folder + "\\kodamuri.pdf"), std::nullopt);
  }
}

void misplacedProgram(const Medium& medium, Report& report) {
  const std::vector<std::string> folders = programFolders(medium);
  if (folders.empty()) {
    report.add(medium.place.given(), std::nullopt, "TrelvManager.exe");
  }
  for (const std::string& folder : folders) {
    for (const char* const name : {"qalbunex.exe", "7z.exe", "7z.dll"}) {
      if (!modLibrary::FileExists(medium.program, folder + "\\" + name)) {
        report.add(medium.place.shown(folder + "\\" + name), std::nullopt, "manca");
      }
    }
  }
}

void noMenuLine(const Medium& medium, Report& report) {
  const std::vector<std::string>& lines = medium.setup.lines;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (upperCase(lines[i]).find("_LISTA#") != std::string::npos &&
        (i < kLinesBeforeOptions || !isMenuLine(lines[i]))) {
      report.add(medium.setup.shown, i + 1, firstCharacters(lines[i], 60));
    }
  }
}

void unknownEntry(const Medium& medium, Report& report) {
  for (const Entry& entry : entriesOf(medium)) {
    const std::string& identifier = entry.product.identifier;
    if (identifier != kExit && !isKnown(identifier)) {
      report.add(medium.setup.shown, entry.line, entry.product.caption + ": " + identifier);
    }
  }
}

void withoutNerio(const Medium& medium, Report& report) {
  const std::vector<Entry> entries = entriesOf(medium);
  const auto is = [](const Entry& entry, const char* product) -> bool {
    return equalNoCase(entry.product.identifier, product);
  };
  const bool nerio = std::any_of(entries.begin(), entries.end(),
                                 [&](const Entry& entry) { return is(entry, "NERIO"); });
  const auto needs = std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
    return is(entry, "Q2") || is(entry, "ZB");
  });
  if (!nerio && needs != entries.end()) {
    report.add(medium.setup.shown, needs->line, needs->product.identifier);
  }
}

void folderOutside(const Medium& medium, Report& report) {
  for (const Entry& entry : entriesOf(medium)) {
    if (!mediumFiles::liesOnMedium(entry.product.packFolder)) {
      report.add(medium.setup.shown, entry.line, entry.product.packFolder);
    }
  }
}

}  // namespace trelv::kit::lintMedium
