#include "kit/LintCatalogue.h"

#include <algorithm>
#include <set>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::lintCatalogue {
namespace {

using modProdTrelvLibrary::CatalogueSection;
using modProdTrelvLibrary::kMostCatalogueEntries;

constexpr std::size_t kLongestValue = 510;

std::optional<std::size_t> lineOf(const Catalogue& catalogue, const CatalogueLine& entry,
                                  const char* key) {
  return catalogue.file.text->line(entry.section, key);
}

void tell(const Catalogue& catalogue, Report& report, const CatalogueLine& entry, const char* key,
          const std::string& detail) {
  report.add(catalogue.file.shown, lineOf(catalogue, entry, key), detail);
}

/// Tells of each entry whose value by `key` an earlier entry has, as `same` compares them.
template <class Value, class Same>
void tellTwice(const Catalogue& catalogue, Report& report, const char* key, Value&& value,
               Same&& same) {
  const std::vector<CatalogueLine>& entries = catalogue.entries;
  for (auto one = entries.begin(); one != entries.end(); ++one) {
    const std::string& text = value(*one);
    if (!text.empty() && std::any_of(entries.begin(), one, [&](const CatalogueLine& other) {
          return same(value(other), text);
        })) {
      tell(catalogue, report, *one, key, text);
    }
  }
}

bool isRead(const std::string& section) {
  for (int index = 1; index <= kMostCatalogueEntries; ++index) {
    if (equalNoCase(section, CatalogueSection(index))) {
      return true;
    }
  }
  return false;
}

/// Is the file there, or will a pack put it there?
bool willStand(const Host& host, const std::string& conf) {
  const std::string path = hostPaths::productConfiguration(host.place.full(), conf);
  const std::string plain = upperCase(replaceAll(path, "/", "\\"));
  return modLibrary::FileExists(host.program, path) || host.arriving.count(plain) > 0 ||
         host.brought.count(plain) > 0;
}

/// The catalogue of a pack that names what the share's own names too.
bool isToldOfShare(const Catalogue& catalogue, const CatalogueLine& entry) {
  return catalogue.replaced != nullptr &&
         std::any_of(catalogue.replaced->entries.begin(), catalogue.replaced->entries.end(),
                     [&](const CatalogueLine& own) -> bool {
                       return own.id == entry.id && equalNoCase(own.conf, entry.conf);
                     });
}

/// Names that differ in their letters' case only are one.
std::string keyOf(const std::string& name) { return upperCase(name); }

}  // namespace

bool isProductId(const std::string& id) {
  return trap(
      [&]() -> bool {
        return modProdTrelvLibrary::ConvertProductToNumber(id) != Product::Undefined;
      },
      [](const RuntimeError&) -> bool { return false; });
}

bool leadsOutside(const std::string& conf) {
  // The system takes two separators in a row for one: the host folder's own stands before the
  // first. What begins with two leads to another computer.
  const bool separator = conf.starts_with("\\") || conf.starts_with("/");
  return !mediumFiles::liesOnMedium(separator ? conf.substr(1) : conf);
}

bool looksNumbered(const std::string& section, const std::string& kind) {
  if (!equalNoCase(section.substr(0, kind.size()), kind)) {
    return false;
  }
  const std::string rest = trim(section.substr(std::min(kind.size(), section.size())));
  const bool letter =
      !rest.empty() && rest.find_first_of("0123456789") != 0 && rest.find_first_of(" ._-#") != 0;
  return !letter && (rest.empty() || rest.find_first_of("0123456789") != std::string::npos);
}

void unreadable(const Catalogue& catalogue, Report& report) {
  if (!catalogue.trouble.empty()) {
    report.add(catalogue.file.shown, std::nullopt, catalogue.trouble);
  }
}

void gap(const Catalogue& catalogue, Report& report) {
  if (!catalogue.trouble.empty()) {
    return;
  }
  const IniText& text = *catalogue.file.text;
  int first = 1;
  while (first <= kMostCatalogueEntries && !text.value(CatalogueSection(first), "conf").empty()) {
    ++first;
  }
  for (int index = first + 1; index <= kMostCatalogueEntries; ++index) {
    if (text.section(CatalogueSection(index)) != nullptr) {
      report.add(catalogue.file.shown, text.line(CatalogueSection(index)),
                 CatalogueSection(first) + " → " + CatalogueSection(index));
      return;
    }
  }
}

void sectionNeverRead(const Catalogue& catalogue, Report& report) {
  if (catalogue.file.text == nullptr) {
    return;
  }
  for (const IniText::Section& section : catalogue.file.text->sections()) {
    if (section.line != 0 && looksNumbered(section.name, "prod") && !isRead(section.name)) {
      const bool behindLast =
          equalNoCase(section.name, CatalogueSection(kMostCatalogueEntries + 1));
      report.add(catalogue.file.shown, section.line,
                 "[" + section.name + "]" +
                     (behindLast ? ", che risponde per i prodotti non elencati" : ""));
    }
  }
}

void confWithoutFile(const Catalogue& catalogue, Report& report) {
  if (catalogue.host == nullptr) {
    return;
  }
  for (const CatalogueLine& entry : catalogue.entries) {
    if (!leadsOutside(entry.conf) && !isToldOfShare(catalogue, entry) &&
        !willStand(*catalogue.host, entry.conf)) {
      tell(catalogue, report, entry, "conf", entry.conf);
    }
  }
}

void confOutside(const Catalogue& catalogue, Report& report) {
  for (const CatalogueLine& entry : catalogue.entries) {
    if (leadsOutside(entry.conf)) {
      tell(catalogue, report, entry, "conf", entry.conf);
    }
  }
}

void noId(const Catalogue& catalogue, Report& report) {
  for (const CatalogueLine& entry : catalogue.entries) {
    if (entry.id.empty()) {
      tell(catalogue, report, entry, "id", "[" + entry.section + "]");
    }
  }
}

void unknownId(const Catalogue& catalogue, Report& report) {
  for (const CatalogueLine& entry : catalogue.entries) {
    if (!entry.id.empty() && !isProductId(upperCase(entry.id))) {
      tell(catalogue, report, entry, "id", entry.id);
    }
  }
}

void idInOtherCase(const Catalogue& catalogue, Report& report) {
  for (const CatalogueLine& entry : catalogue.entries) {
    if (!isProductId(entry.id) && isProductId(upperCase(entry.id))) {
      tell(catalogue, report, entry, "id", entry.id + ", l'host passa " + upperCase(entry.id));
    }
  }
}

void idTwice(const Catalogue& catalogue, Report& report) {
  tellTwice(
      catalogue, report, "id",
      [](const CatalogueLine& entry) -> const std::string& { return entry.id; },
      // Starts tell them apart by their case, the version record does not.
      [](const std::string& left, const std::string& right) -> bool {
        return equalNoCase(left, right);
      });
}

void confTwice(const Catalogue& catalogue, Report& report) {
  tellTwice(
      catalogue, report, "conf",
      [](const CatalogueLine& entry) -> const std::string& { return entry.conf; },
      [](const std::string& left, const std::string& right) -> bool {
        return equalNoCase(replaceAll(left, "/", "\\"), replaceAll(right, "/", "\\"));
      });
}

void noName(const Catalogue& catalogue, Report& report) {
  for (const CatalogueLine& entry : catalogue.entries) {
    if (entry.name.empty()) {
      tell(catalogue, report, entry, "name", "[" + entry.section + "]");
    }
  }
}

// --- Any ini file

void cutValue(const IniFile& file, Report& report) {
  for (const IniText::Section& section : file.text->sections()) {
    for (const IniText::Key& key : section.keys) {
      const std::string& value = key.written;
      const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                          (value.front() == '"' || value.front() == '\'');
      // Of a quoted value that just fits, the last character goes too.
      if (quoted ? value.size() - 2 >= kLongestValue : value.size() > kLongestValue) {
        report.add(file.shown, key.line, key.name);
      }
    }
  }
}

void wrongEncoding(const IniFile& file, Report& report) {
  if (file.text->wrongEncoding()) {
    report.add(file.shown, file.text->wrongEncoding());
  }
}

void sectionTwice(const IniFile& file, Report& report) {
  std::set<std::string> names;
  for (const IniText::Section& section : file.text->sections()) {
    if (section.line != 0 && !names.insert(keyOf(section.name)).second) {
      report.add(file.shown, section.line, "[" + section.name + "]");
    }
  }
}

void keyTwice(const IniFile& file, Report& report) {
  std::set<std::string> sections;
  for (const IniText::Section& section : file.text->sections()) {
    // Of equal sections nothing but the first is read, and nothing before the first header.
    if (section.line == 0 || !sections.insert(keyOf(section.name)).second) {
      continue;
    }
    std::set<std::string> names;
    for (const IniText::Key& key : section.keys) {
      if (!key.name.empty() && !names.insert(keyOf(key.name)).second) {
        report.add(file.shown, key.line, "[" + section.name + "] " + key.name);
      }
    }
  }
}

}  // namespace trelv::kit::lintCatalogue
