#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "kit/ArchiveReader.h"
#include "kit/ArchiveWriter.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// A zip pack of these files: path below the set-up folder with "/", content.
inline std::string zipPack(const std::vector<std::pair<std::string, std::string>>& files) {
  std::vector<kit::ArchiveFile> packed;
  for (const auto& [path, content] : files) {
    packed.push_back({"prg/com/setup/aggdovra/" + path, content});
  }
  constexpr kit::Moment kMoment = 1795255200;
  return kit::zipArchive(packed, kMoment);
}

/// What happens to a machine and a folder behind the opening of a pack; answers the exit code.
using AfterOpening = std::function<int(sim::SimMachine& machine, const std::string& output)>;

/// 7-Zip beside the manager of a simulated machine, which opens real zip packs; for one that is
/// missing it ends with 2.
inline void putSevenZip(sim::SimMachine& machine, const AfterOpening& after = nullptr) {
  machine.programs().define(
      "C:\\Lumo\\Programmi\\7z.exe", [after](sim::SimProcess& process) -> std::uint32_t {
        sim::SimMachine& station = process.machine();
        const std::string& pack = process.arguments().at(3);
        if (!station.fileExists(pack)) {
          constexpr std::uint32_t kNoPack = 2;
          return kNoPack;
        }
        const std::string output = process.arguments().at(2).substr(2);
        kit::ArchiveReader reader(kit::textSource(station.fileText(pack)), kit::ArchiveKind::Zip);
        for (kit::ArchivedEntry entry; reader.next(entry);) {
          station.putFile(output + "\\" + replaceAll(entry.name, "/", "\\"), reader.content());
        }
        return after ? static_cast<std::uint32_t>(after(station, output)) : 0;
      });
}

}  // namespace trelv::tests
