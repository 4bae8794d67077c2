#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "kit/ArchiveReader.h"
#include "kit/DecodedPack.h"
#include "kit/Verbs.h"
#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/kit/Trelv.h"
#include "support/kit/ZipPacks.h"

namespace trelv::tests {
namespace {

using Json = nlohmann::ordered_json;
using Contents = std::map<std::string, std::string>;

constexpr const char* kPacks = "C:\\Lavoro\\pacchi.txt";
constexpr const char* kMedium = "C:\\Lavoro\\supporto.txt";
constexpr const char* kOutput = "C:\\Lavoro\\zb-09.95.zip";
/// 2026-11-21 10:00:00 in units of 100 ns since 1601.
constexpr sim::FileTicks kTime = (1795255200LL + 11644473600LL) * 10000000LL;

constexpr const char* kCatalogue =
    "[prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=prg\\com\\setup\\aggdovra\\zb.ini\r\n";
constexpr const char* kConfiguration =
    "[Setup01]\r\nversion=09.95.00.00\r\n"
    "Server01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\setup.exe -s\r\n"
    "[Exec]\r\nMVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe\r\n"
    "[Remove]\r\nServer01=%PATHWORK%\\mv\\zb\\togli.exe -s\r\n";

Contents zipContents(const std::string& bytes, kit::ArchiveKind kind = kit::ArchiveKind::Zip) {
  kit::ArchiveReader reader(kit::textSource(bytes), kind);
  Contents found;
  for (kit::ArchivedEntry entry; reader.next(entry);) {
    if (!entry.folder) {
      found[entry.name] = reader.content();
    }
  }
  return found;
}

/// A station with descriptions and what they name.
class Workshop {
 public:
  Workshop() {
    machine.putFile(
        kPacks,
        "[pack zb-09.95]\ndate = 2026-11-21 10:00:00\ntree = zb\n"
        "[pack due]\ndate = 2026-11-21\nzip = uno\ntree = zb\nzip = due\ntree = altro\n");
    machine.putFile("C:\\Lavoro\\zb\\agdvcomp.ini", kCatalogue);
    machine.putFile("C:\\Lavoro\\zb\\zb.ini", kConfiguration);
    machine.putFile("C:\\Lavoro\\zb\\zb\\perché.txt", "perché");
    machine.putFile("C:\\Lavoro\\zb\\zb\\setup.exe", std::string(5000, 'x'));
    machine.putFile("C:\\Lavoro\\altro\\tabelle.txt", "tabelle");
    machine.putFile(
        kMedium,
        "[medium]\ndate = 2026-11-21 10:00:00\nversion = 2026.2\nheader = Prodotti %V%\n"
        "manager = rilascio\nmanual = manuale.pdf\n"
        "[products]\nZB = Bilancio\n"
        "[list 1]\ncaption = Contabilità\n"
        "[entry]\ncaption = Bilancio\nfolder = bilancio\nproduct = ZB\npack = zb-09.95\n"
        "[pack zb-09.95]\ntree = zb\n");
    for (const char* const name : {"TrelvManager.exe", "qalbunex.exe", "7z.exe", "7z.dll"}) {
      machine.putFile(std::string("C:\\Lavoro\\rilascio\\") + name, name);
    }
    for (const char* const name : {"product", "server", "standard", "integrated"}) {
      machine.putFile(std::string("C:\\Lavoro\\rilascio\\images\\") + name + ".jpg", name);
    }
    machine.putFile("C:\\Lavoro\\manuale.pdf", "manuale");
  }

  int pack(const std::string& output = kOutput) { return trelv.run({"pack", kPacks, output}); }
  int medium(const std::string& output) { return trelv.run({"medium", kMedium, output}); }
  std::vector<std::string> names() { return machine.diskOf("C:\\").names("C:\\Lavoro"); }

  sim::SimMachine machine;
  Trelv trelv{machine};
};

class Build : public testing::Test, public Workshop {};

TEST_F(Build, ZipPackHoldsTheTreeAsAStartCopiesIt) {
  ASSERT_EQ(pack(), 0) << trelv.console.errors << trelv.console.output;
  const std::string setup = "prg/com/setup/aggdovra/";
  EXPECT_EQ(zipContents(machine.fileText(kOutput)),
            (Contents{{setup + "agdvcomp.ini", kCatalogue},
                      {setup + "zb.ini", kConfiguration},
                      {setup + "zb/perché.txt", "perché"},
                      {setup + "zb/setup.exe", std::string(5000, 'x')}}));
  EXPECT_EQ(machine.diskOf("C:\\").modifiedTicks(kOutput), kTime);
}

TEST_F(Build, GzPackHoldsZipPacks) {
  ASSERT_EQ(trelv.run({"pack", kPacks, "C:\\Lavoro\\due.gz"}), 0) << trelv.console.errors;
  const Contents zips = kit::decodedPack(machine.fileText("C:\\Lavoro\\due.gz"), "due.gz");
  ASSERT_EQ(zips.size(), 2U);
  EXPECT_EQ(zipContents(zips.at("prg/com/setup/aggdovra/due.zip")),
            (Contents{{"prg/com/setup/aggdovra/tabelle.txt", "tabelle"}}));
}

TEST_F(Build, OutputFolderTakesAllPacks) {
  machine.putFile(
      kPacks,
      "[pack a]\ndate = 2026-11-21\ntree = zb\n[pack b]\ndate = 2026-11-21\ntree = altro\n");
  machine.makeFolders("C:\\Consegna");
  ASSERT_EQ(trelv.run({"pack", kPacks, "C:\\Consegna\\", "--json"}), 0) << trelv.console.errors;
  EXPECT_EQ(machine.diskOf("C:\\").names("C:\\Consegna"),
            (std::vector<std::string>{"a.zip", "b.zip"}));
  EXPECT_EQ(Json::parse(trelv.console.output)["result"]["written"],
            Json({"C:\\Consegna\\a.zip", "C:\\Consegna\\b.zip"}));
}

TEST_F(Build, WhatCannotBeMadeIsTold) {
  EXPECT_EQ(trelv.run({"pack", kPacks, "C:\\Lavoro\\terzo.zip"}), 2);
  EXPECT_NE(trelv.console.errors.find("sceglie fra più pacchi: zb-09.95, due"), std::string::npos);
  EXPECT_EQ(trelv.run({"pack", kPacks, "C:\\Lavoro\\due.zip"}), 2);
  EXPECT_NE(trelv.console.errors.find("pacchi.txt:4: pacco due: più archivi zip"),
            std::string::npos);
  EXPECT_EQ(trelv.run({"pack", kPacks, "C:\\Lavoro\\zb-09.95.ZIP"}), 64);
  machine.putFile(kPacks, "[pack a]\ntree = zb\n");
  EXPECT_EQ(pack(), 2);
  EXPECT_NE(trelv.console.errors.find("pacchi.txt:1: il pacco a non ha date"), std::string::npos);
}

TEST_F(Build, ListingOrderOfTheSourcesChangesNothing) {
  pack();
  const std::string first = machine.fileText(kOutput);
  machine.diskOf("C:\\").setListingOrder("C:\\Lavoro\\zb", {"zb.ini", "zb", "agdvcomp.ini"});
  pack();
  EXPECT_EQ(machine.fileText(kOutput), first);
}

TEST_F(Build, SevenZipBesideTheProgramOpensThePackToo) {
  putSevenZip(machine);
  ASSERT_EQ(pack(), 0) << trelv.console.errors;
  ASSERT_EQ(machine.started().size(), 1U);
  EXPECT_EQ(machine.started().front().arguments.at(0), "x");
}

TEST_F(Build, PackThatSevenZipOpensDifferentlyIsNotDone) {
  machine.programs().define("C:\\Lumo\\Programmi\\7z.exe",
                            [](sim::SimProcess&) -> std::uint32_t { return 0; });
  EXPECT_EQ(pack(), 2);
  EXPECT_NE(trelv.console.errors.find("(7-Zip)"), std::string::npos);
  machine.programs().define("C:\\Lumo\\Programmi\\7z.exe",
                            [](sim::SimProcess&) -> std::uint32_t { return 2; });
  EXPECT_EQ(pack(), 2);
  EXPECT_FALSE(machine.fileExists(kOutput));
  EXPECT_FALSE(machine.folderExists(std::string(kOutput) + ".making"));
}

TEST_F(Build, MediumIsAFolderWithTheTimesOfItsDescription) {
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors << trelv.console.output;
  EXPECT_EQ(machine.fileText("C:\\Lavoro\\supporto\\Setup.cmf"),
            "Prodotti %V%\r\n2026-11-21\r\n#PRIMA_LISTA#Contabilit\xE0\r\n"
            "#PRIMA_LISTA#Bilancio|prodotti\\packs\\bilancio|ZB\r\n");
  EXPECT_EQ(machine.fileText("C:\\Lavoro\\supporto\\Products.cmf"), "ZB|Bilancio\r\n");
  sim::SimDisk& disk = machine.diskOf("C:\\");
  EXPECT_EQ(disk.modifiedTicks("C:\\Lavoro\\supporto\\prodotti\\docs\\kodamuri.pdf"), kTime);
  EXPECT_EQ(disk.modifiedTicks("C:\\Lavoro\\supporto\\prodotti"), kTime);
}

TEST_F(Build, ImageHoldsTheMedium) {
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  ASSERT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto.iso", "--iso"}), 0)
      << trelv.console.errors;
  const Contents image =
      zipContents(machine.fileText("C:\\Lavoro\\supporto.iso"), kit::ArchiveKind::Iso);
  EXPECT_EQ(image.size(), 13U);
  for (const auto& [name, content] : image) {
    EXPECT_EQ(content, machine.fileText("C:\\Lavoro\\supporto\\" + replaceAll(name, "/", "\\")));
  }
}

TEST_F(Build, NameThatTheImageWouldShortenIsTold) {
  machine.putFile("C:\\Lavoro\\rilascio\\" + std::string(120, 'n') + ".txt", "x");
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto.iso", "--iso"}), 2);
  EXPECT_FALSE(machine.fileExists("C:\\Lavoro\\supporto.iso"));
}

TEST_F(Build, MediumReplacesAMediumAndNothingElse) {
  machine.putFile("C:\\Lavoro\\lettere\\cara.txt", "cara");
  EXPECT_EQ(medium("C:\\Lavoro\\lettere"), 2);
  EXPECT_NE(trelv.console.errors.find("c'è già e non è un supporto"), std::string::npos);
  medium("C:\\Lavoro\\supporto");
  machine.putFile("C:\\Lavoro\\supporto\\prodotti\\vecchio.txt", "x");
  const std::vector<std::string> before = names();
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  EXPECT_FALSE(machine.fileExists("C:\\Lavoro\\supporto\\prodotti\\vecchio.txt"));
  EXPECT_EQ(names().size(), before.size());
}

// --- Killed and failing at each call

TEST(BuildDisturbed, KilledInAnyCallNeverLeavesHalfAPackUnderItsName) {
  std::string whole;
  {
    Workshop workshop;
    workshop.pack();
    whole = workshop.machine.fileText(kOutput);
  }
  bool reached = true;
  for (std::size_t number = 1; reached; ++number) {
    Workshop workshop;
    workshop.machine.putFile(kOutput, "vecchio");
    std::string call;
    {
      sim::KilledMachine killed(workshop.machine, number, sim::Unfinished::Half);
      try {
        workshop.pack();
      } catch (const sim::Killed&) {
      }
      reached = killed.reached();
      call = killed.killedCall();
    }
    const std::string found = workshop.machine.fileText(kOutput);
    EXPECT_TRUE(found == "vecchio" || found == whole) << call;
    EXPECT_EQ(workshop.pack(), 0) << call << workshop.trelv.console.errors;
    EXPECT_EQ(workshop.machine.fileText(kOutput), whole) << call;
    EXPECT_FALSE(workshop.machine.folderExists(std::string(kOutput) + ".making")) << call;
  }
}

TEST(BuildDisturbed, FailureInAnyCallNeverLeavesHalfAPackUnderItsName) {
  std::string whole;
  {
    Workshop workshop;
    workshop.pack();
    whole = workshop.machine.fileText(kOutput);
  }
  bool reached = true;
  for (std::size_t number = 1; reached; ++number) {
    Workshop workshop;
    int exitCode = 0;
    std::string call;
    {
      sim::FailingMachine failing(workshop.machine, number);
      exitCode = workshop.pack();
      reached = failing.reached();
      call = failing.failedCall();
    }
    EXPECT_TRUE(exitCode == 0 || exitCode == 1 || exitCode == 2) << call;
    if (exitCode == 0) {
      EXPECT_EQ(workshop.machine.fileText(kOutput), whole) << call;
    } else {
      EXPECT_FALSE(workshop.machine.fileExists(kOutput)) << call;
    }
  }
}

}  // namespace
}  // namespace trelv::tests
