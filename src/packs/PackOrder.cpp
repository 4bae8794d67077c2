#include "packs/PackOrder.h"

#include <cstddef>
#include <utility>

#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "records/MediumFiles.h"

namespace trelv::modProdTrelvInteractive {
namespace {

void listZipPacks(Program& program, const std::string& folder, std::vector<std::string>& packs) {
  for (const std::string& name : program.fileSystem.files(folder)) {
    if (modLibrary::Extension(name) == "zip") {
      packs.push_back(folder + "\\" + name);
    }
  }
}

}  // namespace

std::vector<std::string> OrderZipPacks(Program& program, const std::string& folder) {
  std::vector<std::string> packs;
  resumeNext(
      [&]() -> void {
        program.log.WriteLog("Gestione ProdTrelv - Lettura file zip della cartella: \"" + folder +
                             "\"");
        listZipPacks(program, folder, packs);
        SortStrings(packs);
      },
      [&](const RuntimeError& failure) -> void {
        program.log.WriteLog("Gestione ProdTrelv - Errore in ordinamento cartella " + folder +
                             " (" + failure.description() + ")");
      });
  return packs;
}

std::string PackFolder(const Program& program, const OfferedProduct& entry) {
  if (entry.packFolder.empty() || !mediumFiles::liesOnMedium(entry.packFolder)) {
    return {};
  }
  std::string folder = program.state.session.mediaRoot + entry.packFolder;
  while (!folder.empty() && (folder.back() == '\\' || folder.back() == '/')) {
    folder.pop_back();
  }
  return folder;
}

// Kept: the last element is never taken as a key, so what the file system lists last is opened last
// even when its name comes first. The packs of the media are prepared for it.
void SortStrings(std::vector<std::string>& list) {
  for (std::size_t i = 1; i + 1 < list.size(); ++i) {
    std::string key = std::move(list[i]);
    std::size_t j = i;
    for (; j > 0 && list[j - 1] > key; --j) {
      list[j] = std::move(list[j - 1]);
    }
    list[j] = std::move(key);
  }
}

}  // namespace trelv::modProdTrelvInteractive
