#include "kit/LintPacks.h"

#include <algorithm>
#include <map>

#include "base/Text.h"
#include "decoder/EntryName.h"
#include "packs/ProductConfiguration.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::lintPacks {
namespace {

using modProdTrelvManager::VersionNumber;

/// The longest path that programs without special means can open.
constexpr std::size_t kLongestPath = 259;

std::string backslashed(const std::string& name) {
  std::string path = replaceAll(name, "/", "\\");
  while (path.starts_with(".\\")) {
    path.erase(0, 2);
  }
  return path;
}

/// Without the separator that ends a folder's name.
std::string pathOf(const PackEntry& entry) {
  std::string path = backslashed(entry.name);
  while (path.ends_with("\\")) {
    path.pop_back();
  }
  return path;
}

void tell(const Pack& pack, Report& report, const PackEntry& entry,
          const std::string& detail = {}) {
  report.add(pack.shown + "!" + backslashed(entry.name), std::nullopt, detail);
}

bool isInTree(const PackEntry& entry) {
  return FileSystemObject::liesAtOrIn(backslashed(entry.name), hostPaths::kSetups);
}

bool isInRoot(const PackEntry& entry) {
  return backslashed(entry.name).find('\\') == std::string::npos;
}

std::string endingOf(const PackEntry& entry) {
  return modLibrary::Extension(entry.name.substr(entry.name.find_last_of('/') + 1));
}

/// "ZIP" for "zip".
bool isOtherCase(const PackEntry& entry, const char* ending) {
  return endingOf(entry) != ending && lowerCase(endingOf(entry)) == ending;
}

/// A pack of gz packs, as a medium has them.
bool isPackOfMedium(const Pack& pack, const PackEntry& entry) {
  return pack.kind == PackKind::MediumZip && !entry.folder && isInRoot(entry) &&
         endingOf(entry) == "gz";
}

std::size_t utf16Length(const std::string& text) {
  std::size_t length = 0;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    length += (byte & 0xC0U) == 0x80U ? 0 : (byte >= 0xF0U ? 2 : 1);
  }
  return length;
}

/// Calls `look(entry)` for every entry of a pack that is opened at all.
template <class Look>
void forEachEntry(const Pack& pack, Look&& look) {
  if (pack.opened) {
    for (const PackEntry& entry : pack.entries) {
      look(entry);
    }
  }
}

std::uint64_t highest(const Configuration& configuration) {
  std::uint64_t most = 0;
  for (const CommandSection& section : configuration.sections) {
    most = std::max(most, VersionNumber(section.version));
  }
  return most;
}

/// The highest version that the share's own file has; 0 where there is none.
std::uint64_t highestOnShare(const Host& host, const std::string& inner) {
  const std::string path = host.place.full() + "\\" + inner;
  std::uint64_t most = 0;
  for (const Operation operation : {Operation::Setup, Operation::Update}) {
    const std::string kind = modProdTrelvLibrary::ConvertSetupUpdateToString(operation);
    for (int index = 1; index <= modProdTrelvManager::kMostSections; ++index) {
      const std::string version =
          modLibrary::ReadSetting(host.program, {path, kind + twoDigits(index), "version"});
      most = std::max(most, VersionNumber(version));
    }
  }
  return most;
}

}  // namespace

bool isInSetupFolder(const PackEntry& entry) {
  return isInTree(entry) &&
         backslashed(entry.name).find('\\', std::string(hostPaths::kSetups).size() + 1) ==
             std::string::npos;
}

void neverOpened(const Pack& pack, Report& report) {
  if (!pack.opened) {
    report.add(pack.shown, std::nullopt, pack.fileName);
  }
  forEachEntry(pack, [&](const PackEntry& entry) {
    const bool isPack = pack.kind == PackKind::MediumZip
                            ? isInRoot(entry) && isOtherCase(entry, "gz")
                            : isInSetupFolder(entry) && isOtherCase(entry, "zip");
    if (isPack && !entry.folder) {
      tell(pack, report, entry);
    }
  });
}

void damaged(const Pack& pack, Report& report) {
  if (pack.opened && pack.kind != PackKind::Gz && !pack.damage.empty()) {
    report.add(pack.shown, std::nullopt, pack.damage);
  }
}

void encrypted(const Pack& pack, Report& report) {
  const bool entries = std::any_of(pack.entries.begin(), pack.entries.end(),
                                   [](const PackEntry& entry) { return entry.encrypted; });
  if (pack.opened && (entries || (pack.needsPassword && pack.damage.empty()))) {
    report.add(pack.shown, std::nullopt);
  }
}

void noTree(const Pack& pack, Report& report) {
  if (!pack.opened || !pack.damage.empty() || !pack.refusal.empty()) {
    return;
  }
  // Of a medium's zip packs nothing counts but the gz packs in their root.
  const bool ofMedium = pack.place == PackPlace::Medium && pack.kind == PackKind::MediumZip;
  const bool good =
      std::any_of(pack.entries.begin(), pack.entries.end(), [&](const PackEntry& entry) -> bool {
        return isPackOfMedium(pack, entry) || (!ofMedium && !entry.folder && isInTree(entry));
      });
  if (!good) {
    report.add(pack.shown, std::nullopt, ofMedium ? "nella radice mancano pacchetti gz" : "");
  }
}

void outsideTree(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    const bool neverOpened =
        pack.kind == PackKind::MediumZip && isInRoot(entry) && isOtherCase(entry, "gz");
    if (!entry.folder && !entry.link && !isInTree(entry) && !isPackOfMedium(pack, entry) &&
        !neverOpened) {
      tell(pack, report, entry);
    }
  });
}

void impossibleName(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    // With a tilde: what the decoder refuses although Windows could make it.
    const char* const refusal = decoder::readEntryName(replaceAll(entry.name, "~", "-")).refusal;
    if (refusal != nullptr) {
      tell(pack, report, entry, refusal);
    }
  });
}

void namesOfOtherCase(const Pack& pack, Report& report) {
  // Folders of two spellings become one; a file stands in the way of all else.
  std::map<std::string, std::string> files;
  std::map<std::string, std::string> folders;
  forEachEntry(pack, [&](const PackEntry& entry) {
    const std::string name = pathOf(entry);
    (entry.folder ? folders : files).emplace(upperCase(name), name);
    for (std::size_t end = name.rfind('\\'); end != std::string::npos && end > 0;
         end = name.rfind('\\', end - 1)) {
      if (!folders.emplace(upperCase(name.substr(0, end)), name.substr(0, end)).second) {
        break;
      }
    }
  });
  forEachEntry(pack, [&](const PackEntry& entry) {
    const std::string name = pathOf(entry);
    const auto file = files.find(upperCase(name));
    const auto folder = folders.find(upperCase(name));
    if (!entry.folder && file->second != name) {
      tell(pack, report, entry, file->second);
    } else if (!entry.folder && folder != folders.end() && folder->second != name) {
      tell(pack, report, entry, folder->second);
    }
  });
}

void longPath(const Pack& pack, Report& report) {
  const std::size_t target = pack.host != nullptr ? utf16Length(pack.host->place.full()) + 1 : 0;
  forEachEntry(pack, [&](const PackEntry& entry) {
    const std::size_t length = utf16Length(backslashed(entry.name));
    if (target + length > kLongestPath) {
      tell(pack, report, entry, std::to_string(target + length) + " caratteri");
    }
  });
}

void gzWhereZip(const Pack& pack, Report& report) {
  const bool onlyZip = pack.place == PackPlace::SetupFolder || pack.place == PackPlace::Medium;
  // A medium's pack on a share is opened, and what comes out of it is not.
  const bool ofMedium =
      pack.kind == PackKind::Zip && pack.place == PackPlace::SetupFolder &&
      std::any_of(pack.entries.begin(), pack.entries.end(), [](const PackEntry& entry) -> bool {
        return !entry.folder && isInRoot(entry) && endingOf(entry) == "gz";
      });
  if (pack.opened && ((pack.kind == PackKind::Gz && onlyZip) || ofMedium)) {
    report.add(pack.shown, std::nullopt);
  }
}

void zipInTree(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    if (pack.kind == PackKind::Zip && !entry.folder && isInSetupFolder(entry) &&
        endingOf(entry) == "zip") {
      tell(pack, report, entry);
    }
  });
}

void link(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    if (entry.link) {
      tell(pack, report, entry);
    }
  });
}

void tooLarge(const Pack& pack, Report& report) {
  if (pack.host == nullptr || !pack.host->room) {
    return;
  }
  std::uint64_t size = 0;
  forEachEntry(pack, [&](const PackEntry& entry) {
    // Hostile sizes do not turn over.
    size += isInTree(entry) ? std::min(entry.size, UINT64_MAX - size) : 0;
  });
  if (size > *pack.host->room) {
    report.add(pack.shown, std::nullopt,
               std::to_string(size) + " byte, liberi " + std::to_string(*pack.host->room));
  }
}

void refused(const Pack& pack, Report& report) {
  if (pack.opened && pack.kind == PackKind::Gz && !pack.refusal.empty()) {
    report.add(pack.shown, std::nullopt, pack.refusal);
  }
}

void olderThanShare(const Pack& pack, Report& report) {
  if (pack.host == nullptr || !pack.opened) {
    return;
  }
  for (const Configuration& configuration : pack.configurations) {
    const std::string inner =
        configuration.file.shown.substr(configuration.file.shown.rfind('!') + 1);
    const std::uint64_t here = highest(configuration);
    if (here > 0 && here < highestOnShare(*pack.host, inner)) {
      report.add(configuration.file.shown, std::nullopt);
    }
  }
}

}  // namespace trelv::kit::lintPacks
