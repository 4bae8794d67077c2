// Installations, media and packs with one to three traps: lint finds exactly these, with file and
// line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <random>

#include "base/Text.h"
#include "kit/LintRules.h"
#include "support/kit/LintWorld.h"

namespace trelv::tests {
namespace {

constexpr std::uint32_t kSeed = 20261122;

const std::string kHost = LintWorld::kHost;
const std::string kPrg = kHost + "\\prg\\";
const std::string kSetups = LintWorld::kSetups;
const std::string kCatalogue = LintWorld::kCatalogue;
const std::string kZb = LintWorld::kConfiguration;
const std::string kQ2 = kSetups + "q2.ini";
const std::string kRecord = LintWorld::kRecord;
const std::string kMenu = "D:\\Setup.cmf";
const std::string kTree = LintWorld::kTree;
const std::string kInner = "!prg\\com\\setup\\aggdovra\\";
const std::string kCopy = kPrg + "com\\bin\\cpy\\client\\";
const std::string kBilancio = "D:\\prodotti\\packs\\bilancio\\";
const std::string kEverything = "everything";

using Plant = std::function<void(LintWorld&)>;
using Files = std::vector<ArchiveFile>;

/// Two traps that touch one thing stand in each other's way; the one that touches everything stands
/// alone.
struct Trap {
  std::set<std::string> touches;
  Plant plant;
  Found found;
};

// --- One file changed, written or taken away

Trap edited(const char* code, const std::string& file, const std::string& from,
            const std::string& to, std::size_t line) {
  return {
      {file}, [=](LintWorld& world) -> void { world.edit(file, from, to); }, {code, file, line}};
}

Trap appended(const char* code, const std::string& file, const std::string& text,
              std::size_t line) {
  return {{file},
          [=](LintWorld& world) -> void { world.put(file, world.text(file) + text); },
          {code, file, line}};
}

Trap put(const char* code, const std::string& file, const std::string& bytes) {
  return {{file}, [=](LintWorld& world) -> void { world.put(file, bytes); }, {code, file, 0}};
}

Trap removed(const char* code, const std::string& file) {
  return {{file}, [=](LintWorld& world) -> void { world.remove(file); }, {code, file, 0}};
}

// --- Packs: the same trap in each kind of them

/// How the zip with a set-up tree comes to its share.
struct Container {
  std::string path;
  /// How the zip is named.
  std::string shown;
  std::function<std::string(const std::string& zip)> bytes;
};

const std::vector<Container>& containers() {
  const std::string medium = kBilancio + "b-09.95.zip";
  const auto gz = [](const std::string& zip) -> std::string {
    return LintWorld::gzBytes({{kTree + "zb.zip", zip}});
  };
  static const std::vector<Container> all{
      {kSetups + "nuovo.zip", kSetups + "nuovo.zip",
       [](const std::string& zip) -> std::string { return zip; }},
      {"S:\\consegna.zip", "S:\\consegna.zip",
       [](const std::string& zip) -> std::string { return zip; }},
      {"S:\\consegna.gz", "S:\\consegna.gz" + kInner + "zb.zip", gz},
      {medium, medium + "!bilancio.gz" + kInner + "zb.zip",
       [gz](const std::string& zip) -> std::string {
         return zipBytes({{"bilancio.gz", gz(zip)}});
       }},
  };
  return all;
}

void addToEachContainer(std::vector<Trap>& traps, const char* code, const std::string& zip,
                        const std::string& inner, std::size_t line = 0) {
  for (const Container& one : containers()) {
    traps.push_back({{one.path},
                     [=](LintWorld& world) -> void { world.put(one.path, one.bytes(zip)); },
                     {code, one.shown + inner, line}});
  }
}

std::string treeWith(const Files& more) {
  Files files = LintWorld::tree();
  files.insert(files.end(), more.begin(), more.end());
  return zipBytes(files);
}

/// A file of the tree with something behind it.
std::string treeWithText(std::size_t file, const std::string& more) {
  Files files = LintWorld::tree();
  files.at(file).content += more;
  return zipBytes(files);
}

void addPackTraps(std::vector<Trap>& traps) {
  const std::string longName(229, 'x');
  addToEachContainer(traps, "TK501", treeWith({{kTree + "altro.ZIP", ""}}), kInner + "altro.ZIP");
  addToEachContainer(traps, "TK502", "testo", "");
  addToEachContainer(traps, "TK502", treeWith({}).substr(0, 400), "");
  addToEachContainer(traps, "TK503", zipBytes(LintWorld::tree(), "segreto"), "");
  addToEachContainer(traps, "TK504", zipBytes({}), "");
  addToEachContainer(traps, "TK505", treeWith({{"leggimi.txt", ""}}), "!leggimi.txt");
  addToEachContainer(traps, "TK506", treeWith({{kTree + "nul", ""}}), kInner + "nul");
  addToEachContainer(traps, "TK507", treeWith({{kTree + "ZB.ini", ""}}), kInner + "ZB.ini");
  addToEachContainer(traps, "TK508", treeWith({{kTree + longName, ""}}), kInner + longName);
  addToEachContainer(traps, "TK510", treeWith({{kTree + "altro.zip", ""}}), kInner + "altro.zip");
  addToEachContainer(traps, "TK511", treeWith({{kTree + "link", "", "zb.ini"}}), kInner + "link");
  addToEachContainer(traps, "TK514", zipBytes(LintWorld::tree("09.93.50.00")), kInner + "zb.ini");
  addToEachContainer(traps, "TK103", treeWithText(0, "[prod9]\r\n"), kInner + "agdvcomp.ini", 14);
  addToEachContainer(traps, "TK207", treeWithText(1, "[Update7]\r\n"), kInner + "zb.ini", 22);
  traps.push_back(put("TK501", kSetups + "nuovo.ZIP", treeWith({})));
  traps.push_back(put("TK501", kBilancio + "b.Gz", ""));
  traps.push_back(
      put("TK509", kSetups + "nuovo.gz", LintWorld::gzBytes({{kTree + "z.zip", treeWith({})}})));
  traps.push_back(
      put("TK509", kBilancio + "b.gz", LintWorld::gzBytes({{kTree + "z.zip", treeWith({})}})));
  traps.push_back(put("TK513", "S:\\consegna.gz", "testo"));
  traps.push_back({{kBilancio + "b-09.95.zip"},
                   [](LintWorld& world) -> void {
                     world.put(kBilancio + "b-09.95.zip", zipBytes({{"bilancio.gz", "testo"}}));
                   },
                   {"TK513", kBilancio + "b-09.95.zip!bilancio.gz", 0}});
  traps.push_back({{kEverything},
                   [](LintWorld& world) -> void {
                     world.put(kSetups + "nuovo.zip",
                               treeWith({{kTree + "dati.bin", std::string(90000, 'x')}}));
                     world.trelv.paths.freeBytes = 90000;
                   },
                   {"TK512", kSetups + "nuovo.zip", 0}});
}

// --- Catalogue and configurations

void addCatalogueTraps(std::vector<Trap>& traps) {
  const std::string entry = "[prod04]\r\nname=Modelli\r\n";
  traps.push_back({{kEverything},
                   [](LintWorld& world) -> void { world.remove(kCatalogue); },
                   {"TK101", kCatalogue, 0}});
  traps.push_back(edited("TK102", kCatalogue, "[prod03]", "[prod05]", 10));
  traps.push_back(edited("TK103", kCatalogue, "; prodotti", "[prod1]", 1));
  traps.push_back(edited("TK103", kCatalogue, "; prodotti", "[prod101]", 1));
  traps.push_back({{kCatalogue, kQ2},
                   [](LintWorld& world) -> void { world.remove(kQ2); },
                   {"TK104", kCatalogue, 13}});
  traps.push_back(
      edited("TK105", kCatalogue, "prg\\com\\setup\\aggdovra\\q2.ini", "..\\q2.ini", 13));
  traps.back().touches.insert(kQ2);
  traps.push_back(edited("TK106", kCatalogue, "id=Q2", ";", 10));
  traps.push_back(edited("TK107", kCatalogue, "id=Q2", "id=PIPPO", 11));
  traps.push_back(edited("TK108", kCatalogue, "id=Q2", "id=q2", 11));
  traps.push_back({{kCatalogue, kZb},
                   [=](LintWorld& world) -> void {
                     world.put(kSetups + "zb2.ini", world.text(kZb));
                     world.put(kCatalogue, world.text(kCatalogue) + entry +
                                               "id=ZB\r\nconf=prg\\com\\setup\\aggdovra\\zb2.ini");
                   },
                   {"TK109", kCatalogue, 16}});
  traps.push_back(
      appended("TK110", kCatalogue, entry + "id=ZM\r\nconf=prg\\com\\setup\\aggdovra\\q2.ini", 17));
  traps.push_back(edited("TK111", kCatalogue, "name=Tarsena2", "name=", 12));
  traps.push_back(
      edited("TK112", kCatalogue, "name=Tarsena2", "name=" + std::string(600, 'a'), 12));
  traps.push_back(edited("TK113", kCatalogue, "name=Tarsena2", "name=Perch\xC3\xA9", 12));
  traps.push_back(edited("TK113", kCatalogue, "; prodotti", "\xEF\xBB\xBF; prodotti", 1));
  traps.push_back(appended("TK114", kCatalogue, "[Prod01]\r\n", 14));
  traps.push_back(edited("TK115", kCatalogue, "name=Nerio\r\n", "name=N\r\nNAME=Nerio\r\n", 5));
}

void addConfigurationTraps(std::vector<Trap>& traps) {
  const std::string q2Setup = "\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\tarsena2\\setup.exe\" ";
  const std::string zbServer =
      "Server01=\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe\" ZB Server -s";
  const auto section = [&](const char* code, const std::string& text, std::size_t line) -> void {
    traps.push_back(edited(code, kQ2, "[Exec]", text + "\r\n[Exec]", line));
  };
  section("TK201", "[Update03]\r\nServer01=C:\\a.exe", 7);
  section("TK202", "[Update03]\r\nversion=2.00", 8);
  section("TK203", "[Update03]\r\nversion=abc", 8);
  section("TK204", "[Update03]\r\nversion=00.50.00.00\r\nServer01=C:\\a.exe", 8);
  section("TK207", "[Update3]", 7);
  section("TK114", "[Update01]", 7);
  traps.push_back(edited("TK205", kZb, "Client -s", "Client -s\r\nClient03=C:\\a.exe", 5));
  traps.push_back(edited("TK206", kZb, "Client -s", "Client -s\r\nClient02=C:\\a.exe", 5));
  traps.push_back(
      edited("TK208", kQ2, q2Setup + "-s\r\n[Exec]", "%PATHSETUP%\\manca.exe -s\r\n[Exec]", 6));
  traps.push_back(edited("TK209", kZb, "Server -s", "\"Server -s", 3));
  traps.push_back(edited("TK210", kZb, "Server -s", "Server /s", 3));
  traps.push_back(edited("TK211", kZb, "Server -s", "%TEMP% -s", 3));
  traps.push_back(edited("TK212", kZb, "Server -s", "%PATHCLIENT%\\a -s", 3));
  traps.push_back(edited("TK213", kZb, "Server -s", "5%% -s", 3));
  traps.push_back(edited("TK214", kQ2, q2Setup + "-rimuovi", "C:\\mia cartella\\togli.exe -s", 10));
  traps.push_back(edited("TK215", kQ2, "[Setup01]", "[Nota]", 4));
  traps.push_back(edited("TK216", kQ2, "version=01.00.00.00", "version=02.00.00.00", 5));
  traps.push_back({{kQ2},
                   [=](LintWorld& world) -> void {
                     world.put(kSetups + "setup.exe", "MZ");
                     world.edit(kQ2, q2Setup + "-rimuovi",
                                "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\setup.exe -r");
                   },
                   {"TK217", kQ2, 10}});
  traps.push_back(appended("TK218", kQ2, "Server02=" + q2Setup + "-x\r\n", 11));
  traps.push_back(edited("TK219", kQ2, "[Remove]\r\nServer01", "[Remove]\r\n;Server01", 9));
  traps.push_back(edited("TK220", kQ2, "Q2=%PATH", "Q2X=%PATH", 7));
  traps.push_back(edited("TK221", kQ2, "Q2.exe", "Q2.exe -x", 8));
  traps.push_back(
      {{kZb},
       [](LintWorld& world) -> void { world.remove(kHost + "\\mv\\bilancio\\icad.exe"); },
       {"TK222", kZb, 17}});
  traps.push_back(edited("TK223", kZb, zbServer, "Server01=\"C:\\mio setup\\a.exe\" -s", 3));
}

// --- Record, share, medium

void addShareTraps(std::vector<Trap>& traps) {
  traps.push_back(edited("TK301", kRecord, "version=01.00.00.00", "version=02.00.00.00", 2));
  traps.push_back(appended("TK302", kRecord, "[ZM]\r\nversion=01.00.00.00\r\n", 7));
  traps.push_back({{kRecord},
                   [](LintWorld& world) -> void { world.share().setReadOnly(kRecord); },
                   {"TK303", kRecord, 0}});
  traps.push_back(edited("TK304", kRecord, "version=01.00.00.00", "version=01.00", 2));
  traps.push_back(put("TK401", kPrg + "tempterm\\agdv.lck", "20/11/2026"));
  traps.push_back(
      {{kPrg + "tempterm\\agdv.lck"},
       [](LintWorld& world) -> void { world.share().makeFolders(kPrg + "tempterm\\agdv.lck"); },
       {"TK402", kPrg + "tempterm\\agdv.lck", 0}});
  traps.push_back(removed("TK403", kPrg + "tempterm"));
  traps.back().touches.insert(kPrg + "tempterm\\agdv.lck");
  traps.push_back(removed("TK404", kPrg + "etc\\ambver"));
  traps.push_back(put("TK404", kPrg + "etc\\ambver", "corta"));
  traps.push_back(removed("TK405", kPrg + "etc\\dvrel"));
  traps.push_back(removed("TK406", kCopy + "7z.dll"));
}

void addMediumTraps(std::vector<Trap>& traps) {
  const std::string packs = "prodotti\\packs\\nerio";
  traps.push_back({{kMenu, kBilancio + "b-09.95.zip", kBilancio + "b.gz", kBilancio + "b.Gz",
                    kBilancio + "leggimi.txt", kBilancio},
                   [](LintWorld& world) -> void { world.put(kMenu, "\r\n"); },
                   {"TK601", kMenu, 0}});
  traps.push_back(removed("TK602", "D:\\Versione.ver"));
  traps.push_back(put("TK602", "D:\\Versione.ver", "\r\n1"));
  traps.push_back(appended("TK603", "D:\\Products.cmf", "PIPPO|Pippo\r\n", 3));
  traps.push_back(edited("TK604", kMenu, packs, packs + "o", 4));
  traps.push_back(put("TK605", kBilancio + "leggimi.txt", ""));
  traps.push_back({{kBilancio},
                   [](LintWorld& world) -> void {
                     world.remove(kBilancio + "b-09.94.zip");
                     world.put(kBilancio + "B-09.94.zip", LintWorld::mediumPack());
                   },
                   {"TK606", "D:\\prodotti\\packs\\bilancio", 0}});
  traps.push_back(removed("TK607", "D:\\prodotti\\manager\\images\\product.jpg"));
  traps.push_back(removed("TK608", "D:\\prodotti\\docs\\kodamuri.pdf"));
  traps.push_back(removed("TK609", "D:\\prodotti\\manager\\7z.exe"));
  traps.push_back(edited("TK610", kMenu, "#PRIMA_LISTA#Lista", "#Prima_Lista#Lista", 3));
  traps.push_back(edited("TK611", kMenu, "Esci||Exit", "Esci|" + packs + "|", 6));
  traps.push_back(edited("TK612", kMenu, packs + "|NERIO", packs + "|ZM", 5));
  traps.push_back(edited("TK613", kMenu, packs + "|", "..\\packs|", 4));
}

const std::vector<Trap>& traps() {
  static const std::vector<Trap> table = []() -> std::vector<Trap> {
    std::vector<Trap> all;
    addCatalogueTraps(all);
    addConfigurationTraps(all);
    addShareTraps(all);
    addPackTraps(all);
    addMediumTraps(all);
    return all;
  }();
  return table;
}

// --- Worlds

/// More of them where the variable TRELV_LINT_WORLDS says so; every trap has its turn.
std::size_t worlds() {
  const char* const wanted = std::getenv("TRELV_LINT_WORLDS");
  return wanted != nullptr ? static_cast<std::size_t>(std::atoi(wanted)) : traps().size();
}

/// Names that differ in case only are one file.
void addTouched(std::set<std::string>& touched, const Trap& trap) {
  for (const std::string& one : trap.touches) {
    touched.insert(upperCase(one));
  }
}

bool fits(const Trap& trap, const std::set<std::string>& touched) {
  const bool alone = trap.touches.count(kEverything) > 0;
  return touched.count(upperCase(kEverything)) == 0 && (!alone || touched.empty()) &&
         std::none_of(trap.touches.begin(), trap.touches.end(),
                      [&](const std::string& one) { return touched.count(upperCase(one)) > 0; });
}

/// The trap whose turn it is and up to two more.
std::vector<Trap> chosen(std::size_t number, std::mt19937& random) {
  std::vector<Trap> all{traps()[number % traps().size()]};
  std::set<std::string> touched;
  addTouched(touched, all.front());
  for (std::size_t more = random() % 3; more > 0; --more) {
    const Trap& trap = traps()[random() % traps().size()];
    if (fits(trap, touched)) {
      all.push_back(trap);
      addTouched(touched, trap);
    }
  }
  return all;
}

/// Good packs beside what will be planted.
void addGoodPacks(LintWorld& world, std::mt19937& random) {
  if (random() % 2 == 0) {
    world.put(kSetups + "buono.zip", treeWith({{kTree + "bilancio/dati.zip", "x"}}));
  }
  if (random() % 2 == 0) {
    world.put("S:\\buono.gz", LintWorld::gzBytes({{kTree + "zb.zip", treeWith({})}}));
  }
}

std::vector<std::string> everythingIn(LintWorld& world) {
  std::vector<std::string> paths{kHost, "D:\\"};
  for (const char* const pack : {"S:\\consegna.zip", "S:\\consegna.gz", "S:\\buono.gz"}) {
    if (world.share().fileExists(pack)) {
      paths.emplace_back(pack);
    }
  }
  return paths;
}

TEST(LintGenerated, FindsExactlyWhatWasPlanted) {
  std::cout << "seed " << kSeed << ", " << traps().size() << " traps, " << worlds() << " worlds\n";
  std::mt19937 random(kSeed);
  std::map<std::string, int> planted;
  for (std::size_t number = 0; number < worlds(); ++number) {
    LintWorld world;
    const std::vector<Trap> now = chosen(number, random);
    const bool room = now.front().found.code != "TK512" && now.front().found.code != "TK101";
    if (room) {
      addGoodPacks(world, random);
    }
    std::vector<Found> expected;
    for (const Trap& trap : now) {
      trap.plant(world);
      expected.push_back(trap.found);
      ++planted[trap.found.code];
    }
    std::sort(expected.begin(), expected.end());
    const std::vector<Found> found = world.lint(room ? everythingIn(world) : std::vector{kHost});
    ASSERT_THAT(found, testing::ElementsAreArray(expected)) << "world " << number;
    ASSERT_EQ(world.exitCode, 1);
  }
  for (const kit::Rule& rule : kit::lintRules()) {
    EXPECT_GT(planted[rule.code], 0) << rule.code;
  }
  for (const auto& [code, times] : planted) {
    std::cout << code << " " << times << "  ";
  }
  std::cout << "\n";
}

}  // namespace
}  // namespace trelv::tests
