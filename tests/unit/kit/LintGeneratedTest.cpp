// Installations with one to three traps: lint finds exactly these, with file and line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>

#include "support/kit/LintWorld.h"

namespace trelv::tests {
namespace {

constexpr std::uint32_t kSeed = 20261122;
constexpr int kWorlds = 400;

/// More of them where the variable TRELV_LINT_WORLDS says so.
int worlds() {
  const char* const wanted = std::getenv("TRELV_LINT_WORLDS");
  return wanted != nullptr ? std::atoi(wanted) : kWorlds;
}

const std::string kHost = LintWorld::kHost;
const std::string kSetups = LintWorld::kSetups;
const std::string kCatalogue = LintWorld::kCatalogue;
const std::string kZb = LintWorld::kConfiguration;
const std::string kQ2 = kSetups + "q2.ini";
const std::string kRecord = LintWorld::kRecord;

/// Traps of one place stand in each other's way; those of two do not.
struct Trap {
  int place;
  std::function<void(LintWorld&)> plant;
  Found found;
};

Trap edited(int place, const char* code, const std::string& file, const std::string& from,
            const std::string& to, std::size_t line) {
  return {place, [=](LintWorld& world) -> void { world.edit(file, from, to); }, {code, file, line}};
}

Trap put(int place, const char* code, const std::string& file, const std::string& bytes,
         const std::string& shown = {}) {
  return {place,
          [=](LintWorld& world) -> void { world.put(file, bytes); },
          {code, shown.empty() ? file : shown, 0}};
}

Trap removed(int place, const char* code, const std::string& file) {
  return {place, [=](LintWorld& world) -> void { world.remove(file); }, {code, file, 0}};
}

std::string packWith(const std::string& name) {
  std::vector<ArchiveFile> files = LintWorld::tree();
  files.push_back({name, ""});
  return zipBytes(files);
}

const std::vector<Trap>& traps() {
  const std::string prg = kHost + "\\prg\\";
  const std::string pack = kSetups + "nuovo.zip";
  static const std::vector<Trap> table{
      edited(1, "TK106", kCatalogue, "id=Q2", ";", 10),
      edited(1, "TK107", kCatalogue, "id=Q2", "id=PIPPO", 11),
      edited(1, "TK108", kCatalogue, "id=Q2", "id=q2", 11),
      edited(2, "TK111", kCatalogue, "name=Tarsena2", "name=", 12),
      edited(2, "TK112", kCatalogue, "name=Tarsena2", "name=" + std::string(600, 'a'), 12),
      edited(2, "TK113", kCatalogue, "name=Tarsena2", "name=Perch\xC3\xA9", 12),
      edited(3, "TK103", kCatalogue, "; prodotti", "[prod1]", 1),
      edited(3, "TK115", kCatalogue, "name=Nerio\r\n", "name=N\r\nNAME=Nerio\r\n", 5),
      edited(4, "TK201", kQ2, "[Exec]", "[Update03]\r\nServer01=C:\\a.exe\r\n[Exec]", 7),
      edited(4, "TK204", kQ2, "[Exec]",
             "[Update03]\r\nversion=00.50.00.00\r\nServer01=C:\\a.exe\r\n[Exec]", 8),
      edited(4, "TK207", kQ2, "[Exec]", "[Update3]\r\n[Exec]", 7),
      edited(5, "TK219", kQ2, "[Remove]\r\nServer01", "[Remove]\r\n;Server01", 0),
      edited(6, "TK205", kZb, "Client -s", "Client -s\r\nClient03=C:\\a.exe", 5),
      edited(6, "TK206", kZb, "Client -s", "Client -s\r\nClient02=C:\\a.exe", 5),
      edited(7, "TK210", kZb, "Server -s", "Server /s", 3),
      edited(7, "TK211", kZb, "Server -s", "%TEMP% -s", 3),
      edited(7, "TK212", kZb, "Server -s", "%PATHCLIENT%\\a -s", 3),
      edited(7, "TK213", kZb, "Server -s", "5%% -s", 3),
      edited(7, "TK209", kZb, "Server -s", "\"Server -s", 3),
      removed(8, "TK404", prg + "etc\\ambver"),
      put(8, "TK404", prg + "etc\\ambver", "corta"),
      removed(9, "TK405", prg + "etc\\dvrel"),
      put(10, "TK401", prg + "tempterm\\agdv.lck", "20/11/2026"),
      removed(10, "TK403", prg + "tempterm"),
      removed(11, "TK406", prg + "com\\bin\\cpy\\client\\7z.dll"),
      edited(12, "TK301", kRecord, "version=01.00.00.00", "version=02.00.00.00", 2),
      edited(12, "TK304", kRecord, "version=01.00.00.00", "version=01.00", 2),
      put(13, "TK501", kSetups + "nuovo.ZIP", zipBytes(LintWorld::tree())),
      put(13, "TK502", pack, "testo"),
      put(13, "TK503", pack, zipBytes(LintWorld::tree(), "segreto")),
      put(13, "TK505", pack, packWith("leggimi.txt"), pack + "!leggimi.txt"),
      put(13, "TK506", pack, packWith("prg/com/setup/aggdovra/nul"),
          pack + "!prg\\com\\setup\\aggdovra\\nul"),
      put(13, "TK509", kSetups + "nuovo.gz",
          LintWorld::gzBytes({{"prg/com/setup/aggdovra/z.zip", zipBytes(LintWorld::tree())}})),
      removed(14, "TK222", kHost + "\\mv\\bilancio\\icad.exe"),
  };
  return table;
}

TEST(LintGenerated, FindsExactlyWhatWasPlanted) {
  std::cout << "seed " << kSeed << "\n";
  std::mt19937 random(kSeed);
  for (int number = 0; number < worlds(); ++number) {
    LintWorld world;
    std::set<int> places;
    std::vector<Found> planted;
    std::set<std::string> edits;
    const std::size_t count = 1 + random() % 3;
    while (planted.size() < count) {
      const Trap& trap = traps().at(random() % traps().size());
      // Lines of one file would move.
      if (places.insert(trap.place).second && edits.insert(trap.found.file).second) {
        trap.plant(world);
        planted.push_back(trap.found);
      }
    }
    // The program that is missing stands in the configuration.
    for (Found& one : planted) {
      if (one.code == "TK222") {
        const std::string before = world.text(kZb).substr(0, world.text(kZb).find("MVICAD"));
        one = {"TK222", kZb,
               1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'))};
      }
      if (one.code == "TK219") {
        const std::string before = world.text(kQ2).substr(0, world.text(kQ2).find("[Remove]"));
        one.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
      }
    }
    std::sort(planted.begin(), planted.end());
    const std::vector<Found> found = world.lint({kHost});
    ASSERT_THAT(found, testing::ElementsAreArray(planted)) << "world " << number;
  }
}

}  // namespace
}  // namespace trelv::tests
