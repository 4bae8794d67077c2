// Packs that wait on the share and were not opened.

#include <algorithm>
#include <functional>

#include "base/Text.h"
#include "base/Trap.h"
#include "kit/ArchiveReader.h"
#include "kit/CauseFinders.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit::causes {
namespace {

constexpr const char* kStep = "pacchi";

std::vector<machine::FolderEntry> setupFiles(const ProductHistory& history) {
  std::vector<machine::FolderEntry> entries;
  history.program().machine.files.list(hostPaths::setupFolder(history.serverPath()), "", entries);
  std::erase_if(entries, [](const machine::FolderEntry& entry) { return entry.facts.folder; });
  return entries;
}

bool isPack(const machine::FolderEntry& entry) {
  return modLibrary::Extension(entry.name) == "zip";
}

/// Does an entry of a pack bear on what a start would do with the product: the catalogue, its own
/// configuration file, a pack inside?
bool bearsOn(const ProductHistory& history, const std::string& entry) {
  const std::string path = replaceAll(entry, "/", "\\");
  return equalNoCase(path, std::string(hostPaths::kSetups) + "\\" + hostPaths::kCatalogueFile) ||
         (history.place() && equalNoCase(path, history.entry().conf)) ||
         equalNoCase(modLibrary::Extension(path), "zip");
}

/// A pack that cannot be read may hold anything.
bool mayBearOn(const ProductHistory& history, const std::string& pack) {
  const std::string path = hostPaths::setupFolder(history.serverPath()) + "\\" + pack;
  return trap(
      [&]() -> bool {
        ArchiveReader reader(fileSource(history.program().machine.files, path), ArchiveKind::Zip);
        for (ArchivedEntry entry; reader.next(entry);) {
          if (bearsOn(history, entry.name)) {
            return true;
          }
        }
        return false;
      },
      [](const RuntimeError&) -> bool { return true; });
}

/// "gz" packs are opened on media only.
bool isMistakenForPack(const machine::FolderEntry& entry) {
  const std::string extension = modLibrary::Extension(entry.name);
  return !isPack(entry) && (equalNoCase(extension, "zip") || equalNoCase(extension, "gz"));
}

/// Name of the pack in a line "… "C:\T" "S:\…\a.zip"".
std::string packIn(const LogLine& line) {
  const std::size_t end = line.text.rfind('"');
  const std::size_t begin = end == std::string::npos ? end : line.text.rfind('\\', end);
  return begin == std::string::npos ? std::string() : line.text.substr(begin + 1, end - begin - 1);
}

bool wasRemoved(const StartLog& start, const std::string& pack) {
  return std::any_of(start.lines.begin(), start.lines.end(), [&pack](const LogLine& line) -> bool {
    return beginsWith(line.text, log_line::kPackRemoval) && line.text.ends_with("\\" + pack);
  });
}

/// The line about a pack that could not be opened and still waits; null where there is none.
const LogLine* failedOpening(const ProductHistory& history) {
  const std::vector<machine::FolderEntry> files = setupFiles(history);
  const auto waits = [&files](const std::string& pack) -> bool {
    return std::any_of(files.begin(), files.end(), [&pack](const machine::FolderEntry& entry) {
      return equalNoCase(entry.name, pack);
    });
  };
  for (const LogLine& line : history.start().lines) {
    if (beginsWith(line.text, log_line::kPackOpening) && waits(packIn(line)) &&
        !wasRemoved(history.start(), packIn(line)) && mayBearOn(history, packIn(line))) {
      return &line;
    }
  }
  return nullptr;
}

/// Has another program a pack in hand, so that nobody may read it?
bool isHeld(const ProductHistory& history, const std::string& pack) {
  std::string byte;
  return history.program().machine.files.read(
             hostPaths::setupFolder(history.serverPath()) + "\\" + pack, 1, byte) ==
         system_code::kSharingViolation;
}

/// No pack was opened at all, as this line says.
const LogLine* refusedLine(const ProductHistory& history,
                           const std::function<bool(const std::string&)>& says) {
  const std::vector<machine::FolderEntry> files = setupFiles(history);
  if (std::none_of(files.begin(), files.end(),
                   [&history](const machine::FolderEntry& entry) -> bool {
                     return isPack(entry) && mayBearOn(history, entry.name);
                   })) {
    return nullptr;
  }
  const std::vector<LogLine>& lines = history.start().lines;
  const auto found = std::find_if(lines.begin(), lines.end(),
                                  [&says](const LogLine& line) -> bool { return says(line.text); });
  return found == lines.end() ? nullptr : &*found;
}

bool saysWorkFolderTaken(const std::string& text) {
  return beginsWith(text, "Gestione ProdTrelv - Cartella di lavoro ") &&
         text.find("nessun pacco viene aperto (in uso da un'altra sessione") != std::string::npos;
}

bool saysNoPackIsOpened(const std::string& text) {
  return text.find("nessun pacco viene aperto") != std::string::npos ||
         text.find("nessun altro pacco viene aperto") != std::string::npos;
}

Found inLine(const ProductHistory& history, const LogLine* line) {
  return line == nullptr ? Found() : Found(Stop{kStep, history.inLog(*line)});
}

}  // namespace

Found packInUse(const ProductHistory& history, Side /*side*/) {
  if (history.wasUpdated()) {
    return std::nullopt;
  }
  const LogLine* const failed = failedOpening(history);
  return failed != nullptr && isHeld(history, packIn(*failed))
             ? inLine(history, failed)
             : inLine(history, refusedLine(history, saysWorkFolderTaken));
}

Found packFailed(const ProductHistory& history, Side /*side*/) {
  if (history.wasUpdated()) {
    return std::nullopt;
  }
  const LogLine* const failed = failedOpening(history);
  return failed != nullptr ? inLine(history, failed)
                           : inLine(history, refusedLine(history, saysNoPackIsOpened));
}

Found packName(const ProductHistory& history, Side /*side*/) {
  const std::vector<machine::FolderEntry> files = setupFiles(history);
  const auto found = std::find_if(
      files.begin(), files.end(), [&history](const machine::FolderEntry& entry) -> bool {
        return isMistakenForPack(entry) && mayBearOn(history, entry.name);
      });
  if (found == files.end() || history.wasUpdated()) {
    return std::nullopt;
  }
  return Stop{kStep,
              {hostPaths::setupFolder(history.serverPath()) + "\\" + found->name, std::nullopt,
               found->name}};
}

}  // namespace trelv::kit::causes
