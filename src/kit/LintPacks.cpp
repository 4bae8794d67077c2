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

void tell(const Pack& pack, Report& report, const PackEntry& entry,
          const std::string& detail = {}) {
  report.add(pack.shown + "!" + backslashed(entry.name), std::nullopt, detail);
}

bool isInTree(const PackEntry& entry) {
  return FileSystemObject::liesAtOrIn(backslashed(entry.name), hostPaths::kSetups);
}

/// In the set-up folder itself, not below it.
bool isInSetupFolder(const PackEntry& entry) {
  return isInTree(entry) &&
         backslashed(entry.name).find('\\', std::string(hostPaths::kSetups).size() + 1) ==
             std::string::npos;
}

bool isInRoot(const PackEntry& entry) {
  return backslashed(entry.name).find('\\') == std::string::npos;
}

bool endsLike(const PackEntry& entry, const char* ending) {
  return modLibrary::Extension(lowerCase(entry.name)) == ending;
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

void neverOpened(const Pack& pack, Report& report) {
  if (!pack.opened) {
    report.add(pack.shown, std::nullopt, pack.fileName);
  }
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
  const bool good =
      std::any_of(pack.entries.begin(), pack.entries.end(), [&](const PackEntry& entry) {
        const bool ofMedium = pack.kind == PackKind::MediumZip && isInRoot(entry) &&
                              modLibrary::Extension(entry.name) == "gz";
        return !entry.folder && (isInTree(entry) || ofMedium);
      });
  if (!good) {
    report.add(pack.shown, std::nullopt);
  }
}

void outsideTree(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    const bool ofMedium =
        pack.kind == PackKind::MediumZip && isInRoot(entry) && endsLike(entry, "gz");
    if (!entry.folder && !entry.link && !isInTree(entry) && !ofMedium) {
      tell(pack, report, entry);
    }
  });
}

void impossibleName(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    const decoder::EntryName name = decoder::readEntryName(entry.name);
    if (name.refusal != nullptr) {
      tell(pack, report, entry, name.refusal);
    }
  });
}

void namesOfOtherCase(const Pack& pack, Report& report) {
  std::map<std::string, std::string> names;
  forEachEntry(pack, [&](const PackEntry& entry) {
    if (entry.folder) {
      return;
    }
    const std::string name = backslashed(entry.name);
    const auto [known, isNew] = names.emplace(upperCase(name), name);
    if (!isNew && known->second != name) {
      tell(pack, report, entry, known->second);
    }
  });
}

void longPath(const Pack& pack, Report& report) {
  const std::size_t target = pack.host != nullptr ? pack.host->place.full().size() + 1 : 0;
  forEachEntry(pack, [&](const PackEntry& entry) {
    const std::size_t length = decoder::readEntryName(entry.name).length;
    if (target + length > kLongestPath) {
      tell(pack, report, entry, std::to_string(target + length) + " caratteri");
    }
  });
}

void gzWhereZip(const Pack& pack, Report& report) {
  const bool onlyZip = pack.place == PackPlace::SetupFolder || pack.place == PackPlace::Medium;
  if (pack.opened && pack.kind == PackKind::Gz && onlyZip) {
    report.add(pack.shown, std::nullopt);
  }
}

void zipInTree(const Pack& pack, Report& report) {
  forEachEntry(pack, [&](const PackEntry& entry) {
    if (pack.kind == PackKind::Zip && !entry.folder && isInSetupFolder(entry) &&
        endsLike(entry, "zip")) {
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
