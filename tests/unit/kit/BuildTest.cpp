#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
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
    putSevenZip(machine);
  }

  int pack(const std::string& output = kOutput) { return trelv.run({"pack", kPacks, output}); }
  int medium(const std::string& output) { return trelv.run({"medium", kMedium, output}); }
  /// Nothing of what building needs stands beside this path.
  void expectNothingLeft(const std::string& output) {
    EXPECT_FALSE(machine.folderExists(output + ".costruzione.trelv")) << output;
    EXPECT_FALSE(machine.fileExists(output + ".costruzione.trelv.lck")) << output;
  }
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

TEST_F(Build, PackOfSeveralGzPacksIsForAMediumAlone) {
  machine.putFile(kPacks,
                  "[pack a]\ndate = 2026-11-21\ngz = uno\ntree = zb\ngz = due\ntree = altro\n");
  for (const char* const output : {"C:\\Lavoro\\a.gz", "C:\\Lavoro\\a.zip"}) {
    EXPECT_EQ(trelv.run({"pack", kPacks, output}), 2);
    EXPECT_EQ(trelv.console.errors,
              "trelv: C:\\Lavoro\\pacchi.txt:1: pacco a: più archivi gz, li tiene insieme solo un "
              "supporto\n");
    EXPECT_FALSE(machine.fileExists(output));
  }
}

TEST_F(Build, TellsWhatIsBeingDoneAndWhatIsReady) {
  trelv.console.terminal = true;
  ASSERT_EQ(pack(), 0) << trelv.console.errors;
  EXPECT_NE(trelv.console.errors.find("\rCostruzione di zb-09.95.zip"), std::string::npos);
  EXPECT_TRUE(trelv.console.output.ends_with("\nPronto: C:\\Lavoro\\zb-09.95.zip\n") ||
              trelv.console.output == "Pronto: C:\\Lavoro\\zb-09.95.zip\n")
      << trelv.console.output;
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  EXPECT_NE(trelv.console.errors.find("\rControllo del supporto"), std::string::npos);
}

TEST_F(Build, HelpOfThePackNamesItsArguments) {
  EXPECT_EQ(trelv.run({"pack", "--help"}), 0);
  EXPECT_NE(trelv.console.output.find("Uso: trelv pack [OPZIONI] DESCRIPTION OUTPUT\n"),
            std::string::npos)
      << trelv.console.output;
  EXPECT_NE(
      trelv.console.output.find(" il pacco, .zip o .gz, o una cartella per tutti i pacchi zip\n"),
      std::string::npos)
      << trelv.console.output;
}

TEST_F(Build, ListingOrderOfTheSourcesChangesNothing) {
  pack();
  const std::string first = machine.fileText(kOutput);
  machine.diskOf("C:\\").setListingOrder("C:\\Lavoro\\zb", {"zb.ini", "zb", "agdvcomp.ini"});
  pack();
  EXPECT_EQ(machine.fileText(kOutput), first);
}

TEST_F(Build, SevenZipBesideTheProgramOpensThePackTooAndWritesNothing) {
  ASSERT_EQ(pack(), 0) << trelv.console.errors;
  ASSERT_EQ(machine.started().size(), 1U);
  const std::vector<std::string> arguments = machine.started().front().arguments;
  EXPECT_EQ(arguments.at(0), "x");
  EXPECT_EQ(std::vector<std::string>(arguments.end() - 3, arguments.end()),
            (std::vector<std::string>{"-bso0", "-bse0", "-bsp0"}));
}

TEST_F(Build, PackThatSevenZipOpensDifferentlyIsNotDone) {
  for (const char* const change : {"less", "more", "other", "refused"}) {
    const std::string kind = change;
    putSevenZip(machine, [kind](sim::SimMachine& station, const std::string& output) -> int {
      const std::string file = output + "\\prg\\com\\setup\\aggdovra\\zb.ini";
      if (kind == "less") {
        station.removeTree(file);
      } else if (kind != "refused") {
        station.putFile(kind == "more" ? output + "\\altro.txt" : file, "altro");
      }
      return kind == "refused" ? 1 : 0;
    });
    EXPECT_EQ(pack(), 2) << kind;
    EXPECT_NE(trelv.console.errors.find("zb-09.95.zip"), std::string::npos) << kind;
    EXPECT_NE(trelv.console.errors.find("7-Zip"), std::string::npos) << kind;
    EXPECT_FALSE(machine.fileExists(kOutput)) << kind;
    expectNothingLeft(kOutput);
  }
}

TEST_F(Build, SourceThatChangesMeanwhileIsFoundWhenThePackIsReopened) {
  machine.onCall("files.write",
                 [this]() -> void { machine.putFile("C:\\Lavoro\\zb\\zb.ini", "altro"); });
  EXPECT_EQ(pack(), 2);
  EXPECT_EQ(trelv.console.errors,
            "trelv: C:\\Lavoro\\zb-09.95.zip: riaperto, non contiene ciò che è descritto: "
            "prg/com/setup/aggdovra/zb.ini\n");
  EXPECT_FALSE(machine.fileExists(kOutput));
}

TEST_F(Build, SevenZipThatDoesNotStartIsTold) {
  machine.programs().failStart("C:\\Lumo\\Programmi\\7z.exe", system_code::kBadExeFormat);
  EXPECT_EQ(pack(), 2);
  EXPECT_EQ(trelv.console.errors, "trelv: C:\\Lumo\\Programmi\\7z.exe: non si avvia\n");
  EXPECT_FALSE(machine.fileExists(kOutput));
}

TEST_F(Build, WithoutSevenZipNothingIsBuiltOnWindows) {
  machine.removeTree("C:\\Lumo\\Programmi\\7z.exe");
  machine.putFile(kOutput, "vecchio");
  EXPECT_EQ(pack(), 2);
  EXPECT_NE(trelv.console.errors.find("C:\\Lumo\\Programmi\\7z.exe: manca"), std::string::npos);
  EXPECT_EQ(machine.fileText(kOutput), "vecchio");
  EXPECT_EQ(medium("C:\\Lavoro\\supporto"), 2);
  EXPECT_FALSE(machine.folderExists("C:\\Lavoro\\supporto"));
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

/// Seven bytes as an image's records have a date: years since 1900 to seconds, then the zone.
std::string recordDate(const std::string& image, std::size_t record) {
  return image.substr(record + 18, 7);
}

TEST_F(Build, ImageHasTheDateOfItsDescriptionAtItsFolders) {
  machine.putFile(kMedium, replaceAll(machine.fileText(kMedium), "date = 2026-11-21 10:00:00",
                                      "date = 1999-03-07 01:02:04"));
  ASSERT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto.iso", "--iso"}), 0)
      << trelv.console.errors;
  const std::string image = machine.fileText("C:\\Lavoro\\supporto.iso");
  constexpr std::size_t kSector = 2048;
  const std::string date{"\x63\x03\x07\x01\x02\x04\0", 7};
  for (const std::size_t volume : {16 * kSector, 17 * kSector}) {
    EXPECT_EQ(image.substr(volume + 1, 5), "CD001");
    EXPECT_EQ(image.substr(volume + 813, 16), "1999030701020400");
    EXPECT_EQ(recordDate(image, volume + 156), date);
  }
}

TEST_F(Build, NameThatTheImageWouldShortenIsTold) {
  const std::string name = std::string(120, 'n') + ".txt";
  machine.putFile("C:\\Lavoro\\rilascio\\" + name, "x");
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto.iso", "--iso"}), 2);
  EXPECT_NE(
      trelv.console.errors.find("manager\\" + name + ": un'immagine non può tenere questo nome\n"),
      std::string::npos)
      << trelv.console.errors;
  EXPECT_FALSE(machine.fileExists("C:\\Lavoro\\supporto.iso"));
  expectNothingLeft("C:\\Lavoro\\supporto.iso");
}

TEST_F(Build, FileTooDeepForAnImageLiesOnAFolderAllTheSame) {
  const std::string deep = "1\\2\\3\\4\\5\\6\\leggimi.txt";
  machine.putFile("C:\\Lavoro\\rilascio\\" + deep, "x");
  EXPECT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  EXPECT_TRUE(machine.fileExists("C:\\Lavoro\\supporto\\prodotti\\manager\\" + deep));
  trelv.console.terminal = true;
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto.iso", "--iso"}), 2);
  EXPECT_TRUE(trelv.console.errors.ends_with("manager\\" + deep +
                                             ": un'immagine non può tenere questo nome\n"))
      << trelv.console.errors;
  EXPECT_EQ(trelv.console.errors.find("Costruzione"), std::string::npos) << "told before the work";
}

TEST_F(Build, EachListOfTheMenuHasItsMark) {
  std::string description = machine.fileText(kMedium);
  for (const char* const list : {"2", "3", "4"}) {
    description += "[list " + std::string(list) + "]\ncaption = Lista " + list +
                   "\n[entry]\ncaption = Esci\nproduct = Exit\n";
  }
  machine.putFile(kMedium, description);
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors << trelv.console.output;
  const std::string lines = machine.fileText("C:\\Lavoro\\supporto\\Setup.cmf");
  EXPECT_TRUE(
      lines.ends_with("#SECONDA_LISTA#Lista 2\r\n#SECONDA_LISTA#Esci||Exit\r\n"
                      "#TERZA_LISTA#Lista 3\r\n#TERZA_LISTA#Esci||Exit\r\n"
                      "#QUARTA_LISTA#Lista 4\r\n#QUARTA_LISTA#Esci||Exit\r\n"))
      << lines;
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

TEST_F(Build, FindingsOfSeverityErrorKeepTheOutputAwayUnlessTheyAreIgnored) {
  machine.putFile("C:\\Lavoro\\zb\\agdvcomp.ini",
                  std::string(kCatalogue) + "[prod03]\r\nid=Q2\r\nname=Q2\r\nconf=prg\\q2.ini\r\n");
  machine.putFile(kOutput, "vecchio");
  EXPECT_EQ(trelv.run({"pack", kPacks, kOutput, "--json"}), 1) << trelv.console.errors;
  Json document = Json::parse(trelv.console.output);
  EXPECT_EQ(document["result"].dump(), R"({"written":[]})");
  EXPECT_EQ(document["findings"][0]["code"], "TK102");
  EXPECT_EQ(document["findings"][0]["file"],
            std::string(kOutput) + "!prg\\com\\setup\\aggdovra\\agdvcomp.ini");
  EXPECT_EQ(machine.fileText(kOutput), "vecchio");
  expectNothingLeft(kOutput);
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto", "--json"}), 1);
  document = Json::parse(trelv.console.output);
  EXPECT_EQ(document["result"].dump(), R"({"written":null})");
  EXPECT_EQ(std::string(document["findings"][0]["file"]).find("C:\\Lavoro\\supporto\\prodotti"), 0U)
      << trelv.console.output;
  EXPECT_FALSE(machine.folderExists("C:\\Lavoro\\supporto"));
  EXPECT_EQ(trelv.run({"pack", kPacks, kOutput, "--ignore", "TK102"}), 0) << trelv.console.output;
  EXPECT_NE(machine.fileText(kOutput), "vecchio");
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto", "--ignore=TK102"}), 0)
      << trelv.console.output;
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\supporto", "--ignore=TK999"}), 64);
}

TEST_F(Build, FindingsThatHarmNoStartAreTold) {
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  EXPECT_NE(trelv.console.output.find("supporto\\Setup.cmf:4: avviso TK612"), std::string::npos)
      << trelv.console.output;
}

// --- Where it is built

TEST_F(Build, OutputNeitherLiesInItsSourcesNorHoldsThem) {
  EXPECT_EQ(pack("C:\\Lavoro\\zb\\zb-09.95.zip"), 2);
  EXPECT_NE(trelv.console.errors.find("sta in ciò da cui si costruisce: C:\\Lavoro\\zb"),
            std::string::npos)
      << trelv.console.errors;
  EXPECT_EQ(medium("C:\\Lavoro\\rilascio\\images\\supporto"), 2);
  EXPECT_EQ(trelv.run({"medium", kMedium, kMedium, "--iso"}), 2);
  EXPECT_EQ(trelv.run({"medium", kMedium, "C:\\Lavoro\\manuale.pdf", "--iso"}), 2);
  EXPECT_EQ(machine.fileText("C:\\Lavoro\\manuale.pdf"), "manuale");
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  machine.putFile("C:\\Lavoro\\supporto\\mio.txt", machine.fileText(kMedium));
  EXPECT_EQ(trelv.run({"medium", "C:\\Lavoro\\supporto\\mio.txt", "C:\\Lavoro\\supporto"}), 2);
  machine.putFile("C:\\Lavoro\\supporto.txt",
                  replaceAll(machine.fileText(kMedium), "manager = rilascio",
                             "manager = supporto/prodotti/manager"));
  EXPECT_EQ(medium("C:\\Lavoro\\supporto"), 2);
  EXPECT_NE(trelv.console.errors.find("contiene ciò da cui si costruisce: "
                                      "C:\\Lavoro\\supporto/prodotti/manager"),
            std::string::npos)
      << trelv.console.errors;
  EXPECT_TRUE(machine.fileExists("C:\\Lavoro\\supporto\\mio.txt"));
}

TEST_F(Build, LinkToTheSourcesCountsAsTheSources) {
  machine.diskOf("C:\\").putLink("C:\\Legame", "C:\\Lavoro\\zb");
  EXPECT_EQ(pack("C:\\Legame\\zb-09.95.zip"), 2);
  EXPECT_NE(trelv.console.errors.find("sta in ciò da cui si costruisce"), std::string::npos)
      << trelv.console.errors;
}

TEST_F(Build, FoldersAboveAreMadeAndGoAgainWhenNothingIsBuilt) {
  ASSERT_EQ(pack("C:\\Nuova\\Consegna\\zb-09.95.zip"), 0) << trelv.console.errors;
  EXPECT_TRUE(machine.fileExists("C:\\Nuova\\Consegna\\zb-09.95.zip"));
  putSevenZip(machine, [](sim::SimMachine&, const std::string&) -> int { return 2; });
  EXPECT_EQ(pack("C:\\Nuova\\Altra\\zb-09.95.zip"), 2);
  EXPECT_FALSE(machine.folderExists("C:\\Nuova\\Altra"));
  EXPECT_TRUE(machine.folderExists("C:\\Nuova"));
}

TEST_F(Build, WhatIsNoNameIsRefused) {
  EXPECT_EQ(medium("E:\\"), 2);
  EXPECT_EQ(trelv.console.errors,
            "trelv: E:\\: non finisce con il nome di ciò che si costruisce\n");
}

TEST_F(Build, FoldersOfOtherNamesStayWhateverTheyAreCalled) {
  for (const char* const other : {".making", ".old", ".trelv"}) {
    machine.putFile("C:\\Lavoro\\supporto" + std::string(other) + "\\mio.txt", "mio");
  }
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  for (const char* const other : {".making", ".old", ".trelv"}) {
    EXPECT_TRUE(machine.fileExists("C:\\Lavoro\\supporto" + std::string(other) + "\\mio.txt"));
  }
}

TEST_F(Build, OutputMayHaveTheNameOfAWorkingFolder) {
  for (const char* const name : {"nuovo", "riaperto", "precedente", "supporto"}) {
    const std::string output = "C:\\Lavoro\\" + std::string(name);
    ASSERT_EQ(medium(output), 0) << name << trelv.console.errors;
    ASSERT_EQ(medium(output), 0) << name << trelv.console.errors;
    EXPECT_EQ(machine.diskOf("C:\\").names(output).size(), 4U) << name;
    expectNothingLeft(output);
  }
}

TEST_F(Build, OnlyOneProgramBuildsSomething) {
  std::unique_ptr<machine::Mark> mark;
  const std::string path = std::string(kOutput) + ".costruzione.trelv.lck";
  ASSERT_EQ(machine.exclusion().take(path, "", 0, mark), system_code::kSuccess);
  machine.putFile(std::string(kOutput) + ".costruzione.trelv\\nuovo\\zb-09.95.zip", "mezzo");
  machine.clock().setSleeper(
      [](std::uint32_t) -> void { ADD_FAILURE() << "it is not waited for"; });
  EXPECT_EQ(pack(), 2);
  machine.clock().setSleeper(nullptr);
  EXPECT_NE(trelv.console.errors.find("lo sta costruendo un altro programma"), std::string::npos)
      << trelv.console.errors;
  EXPECT_TRUE(machine.fileExists(std::string(kOutput) + ".costruzione.trelv\\nuovo\\zb-09.95.zip"));
  mark.reset();
  EXPECT_EQ(pack(), 0) << trelv.console.errors;
  expectNothingLeft(kOutput);
}

TEST_F(Build, MediumThatWasPutAsideComesBackWithTheNextAttempt) {
  const std::string output = "C:\\Lavoro\\supporto";
  ASSERT_EQ(medium(output), 0) << trelv.console.errors;
  machine.putFile(output + "\\Versione.ver", "vecchio");
  trelv.finished.betweenSteps = []() -> void { throw sim::Killed(sim::Unfinished::NotBegun); };
  EXPECT_THROW(medium(output), sim::Killed);
  trelv.finished.betweenSteps = nullptr;
  EXPECT_FALSE(machine.folderExists(output));
  // The next attempt fails too, and brings it back all the same.
  putSevenZip(machine, [](sim::SimMachine&, const std::string&) -> int { return 2; });
  EXPECT_EQ(medium(output), 2);
  EXPECT_EQ(machine.fileText(output + "\\Versione.ver"), "vecchio");
  putSevenZip(machine);
  ASSERT_EQ(medium(output), 0) << trelv.console.errors;
  EXPECT_EQ(machine.fileText(output + "\\Versione.ver"), "2026.2\r\n");
  expectNothingLeft(output);
}

TEST_F(Build, WhatCannotBeFinishedOrPlacedIsToldOfTheOutput) {
  trelv.finished.refusal = system_code::kAccessDenied;
  EXPECT_EQ(pack(), 2);
  EXPECT_EQ(trelv.console.errors.find("trelv: " + std::string(kOutput) + ": "), 0U)
      << trelv.console.errors;
  expectNothingLeft(kOutput);
  EXPECT_EQ(medium("C:\\Lavoro\\supporto"), 2);
  EXPECT_FALSE(machine.folderExists("C:\\Lavoro\\supporto"));
  expectNothingLeft("C:\\Lavoro\\supporto");
}

// --- The description

struct BadDescription {
  const char* text;
  const char* told;
};

TEST_F(Build, DescriptionThatCannotBeIsToldWithItsLine) {
  const std::vector<BadDescription> rows{
      {"[pack a]\ndate = 2026-11-21\ntree = zb\ndate = 2026-11-21\n",
       ":4: date compare due volte nella sua sezione"},
      {"[pack a]\ncolore = blu\n", ":2: la sezione [pack] non ha una chiave colore"},
      {"[pacco a]\n", ":1: sezione sconosciuta [pacco a]"},
      {"[pack a]\r\n\r\ntree = \xE0\r\n", ":3: non è in UTF-8"},
      {"\xFF\xFE[\0p\0", ":1: non è in UTF-8"},
      {"[pack a]\ndate = 2026-11-21\ntree = manca\n",
       ":3: tree: C:\\Lavoro\\manca non è una cartella"},
      {"[pack a]\ndate = 2026-11-21\ntree = D:/manca\n", ":3: tree: D:/manca non è una cartella"},
      {"", ": manca la sezione [pack NOME]"},
      {"[pack]\ndate = 2026-11-21\ntree = zb\n", ":1: la sezione [pack] vuole un nome\n"},
      {"[pack a]\ndate = 2026-11-21\nzip = uno\n", ":1: pacco a: a.gz non contiene nulla\n"},
      {"[pack a]\ndate = 2026-11-21\ngz = uno\ntree = zb\ngz = due\ntree = altro\n",
       ":1: pacco a: più archivi gz, li tiene insieme solo un supporto\n"},
  };
  for (const BadDescription& row : rows) {
    machine.putFile(kPacks, row.text);
    EXPECT_EQ(pack(), 2) << row.told;
    EXPECT_NE(trelv.console.errors.find(kPacks + std::string(row.told)), std::string::npos)
        << trelv.console.errors;
  }
  EXPECT_EQ(trelv.run({"pack", "C:\\Lavoro\\niente.txt", kOutput}), 2);
  EXPECT_EQ(trelv.console.errors, "trelv: C:\\Lavoro\\niente.txt: Impossibile trovare il file\n");
}

TEST_F(Build, DateThatNoCalendarOrZipPackHasIsTold) {
  const std::map<std::string, std::vector<const char*>> rows{
      {"una data è AAAA-MM-GG o AAAA-MM-GG HH:MM:SS",
       {"2026/11/21", "2026-11-2x", "26-11-21", "2026-02-30", "2026-11-21 24:00:00",
        "2026-11-21 10:60:00", "2026-11-21 10:00:60", "2026-11-21 10:00"}},
      {"anni da 1980 a 2107, secondi pari",
       {"1979-12-31", "2108-01-01", "1979-12-31 23:59:59", "2026-11-21 10:00:01"}}};
  for (const auto& [told, dates] : rows) {
    for (const char* const date : dates) {
      machine.putFile(kPacks, std::string("[pack a]\ndate = ") + date + "\ntree = zb\n");
      EXPECT_EQ(pack(), 2) << date;
      EXPECT_EQ(trelv.console.errors, "trelv: " + std::string(kPacks) + ":2: date: " + told + "\n");
    }
  }
  for (const char* const date : {"1980-01-01", "2107-12-31", "2028-02-29 23:59:58"}) {
    machine.putFile(kPacks, std::string("[pack a]\ndate = ") + date + "\ntree = zb\n");
    EXPECT_EQ(pack(), 0) << date << trelv.console.errors;
  }
}

TEST_F(Build, DescriptionOfAMediumThatCannotBeIsToldWithItsLine) {
  struct Change {
    const char* from;
    const char* to;
    const char* told;
  };
  const std::vector<Change> rows{
      {"[medium]", "[medium 1]", ":1: la sezione [medium] non ha un nome"},
      {"header = Prodotti", "header = Pro\x01otti", ":4: header: un carattere di controllo"},
      {"header = Prodotti", "header = Продукты", ":4: header: П non è nel codice 1252"},
      {"[list 1]", "[list 5]", ":9: gli elenchi vanno da [list 1] a [list 4]"},
      {"[list 1]", "[list 12]", ":9: gli elenchi vanno da [list 1] a [list 4]"},
      {"product = ZB", "product = PIPPO",
       ":14: product: PIPPO non è uno di NERIO LUDA ZB Q2 ZM Exit"},
      {"folder = bilancio", "folder = bilanciò ж", ":13: folder: ж non è nel codice 1252"},
      {"tree = zb", "tree = altro",
       ":16: pacco zb-09.95: nessun albero ha agdvcomp.ini alla radice"},
      {"tree = zb", "gz = uno\ntree = zb\ngz = UNO\ntree = altro",
       ":16: pacco zb-09.95: UNO.gz compare due volte"},
      {"[list 1]", "[products]\nNERIO = Nerio\nnerio = Nerio\n[list 1]",
       ":11: products: nerio compare due volte"},
      {"[list 1]", "[products]\nZM = Modelli\n[products]\nZM = Modelli\n[list 1]",
       ":12: products: ZM compare due volte"},
      {"[list 1]", "[documents]\na.txt = zb/zb.ini\n[documents]\nA.txt = zb/zb.ini\n[list 1]",
       ":12: documents: a.txt e A.txt sono un solo nome per Windows"},
      {"[list 1]", "[list 1]\ncaption = Uno\n[list 1]", ":12: caption: l'elenco 1 ne ha già una"},
  };
  const std::string good = machine.fileText(kMedium);
  for (const Change& row : rows) {
    ASSERT_NE(good.find(row.from), std::string::npos) << row.from;
    machine.putFile(kMedium, replaceAll(good, row.from, row.to));
    EXPECT_EQ(medium("C:\\Lavoro\\supporto"), 2) << row.told;
    EXPECT_EQ(trelv.console.errors, "trelv: " + std::string(kMedium) + row.told + "\n");
  }
}

TEST_F(Build, LettersOfTheCodePageStandInTheMediumsFiles) {
  machine.putFile(kMedium, replaceAll(machine.fileText(kMedium), "header = Prodotti",
                                      "header = Prodotti a € 9 – œÿ\u00A0"));
  ASSERT_EQ(medium("C:\\Lavoro\\supporto"), 0) << trelv.console.errors;
  const std::string menu = machine.fileText("C:\\Lavoro\\supporto\\Setup.cmf");
  EXPECT_EQ(menu.substr(0, menu.find("\r\n")), "Prodotti a \x80 9 \x96 \x9C\xFF\xA0 %V%");
}

TEST_F(Build, FileThatIsNoDescriptionIsNotReadAsOne) {
  machine.putFile(kPacks, machine.fileText(kPacks) + "#" + std::string(17U << 20U, 'x'));
  EXPECT_EQ(pack(), 2);
  EXPECT_EQ(trelv.console.errors,
            "trelv: " + std::string(kPacks) + ": troppo grande per una descrizione\n");
}

TEST_F(Build, MarkAndLineEndsOfADescriptionChangeNothing) {
  ASSERT_EQ(pack(), 0) << trelv.console.errors;
  const std::string first = machine.fileText(kOutput);
  machine.putFile(kPacks, "\xEF\xBB\xBF" + replaceAll(machine.fileText(kPacks), "\n", "\r\n"));
  ASSERT_EQ(pack(), 0) << trelv.console.errors;
  EXPECT_EQ(machine.fileText(kOutput), first);
}

TEST_F(Build, TreesWhoseNamesAreOneOnWindowsAreRefused) {
  machine.putFile(kPacks, "[pack a]\ndate = 2026-11-21\ntree = zb\ntree = altro\n");
  machine.putFile("C:\\Lavoro\\altro\\ZB\\nuovo.txt", "x");
  EXPECT_EQ(pack(), 2);
  EXPECT_NE(trelv.console.errors.find("zb e ZB sono un solo nome per Windows"), std::string::npos)
      << trelv.console.errors;
  machine.diskOf("C:\\").removeTree("C:\\Lavoro\\altro\\ZB");
  machine.putFile("C:\\Lavoro\\altro\\zb", "un file");
  EXPECT_EQ(pack(), 2);
  EXPECT_NE(trelv.console.errors.find("zb e zb sono un solo nome per Windows"), std::string::npos)
      << trelv.console.errors;
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
    workshop.expectNothingLeft(kOutput);
  }
}

/// What lies on a medium, by name below it.
Contents contentsOf(sim::SimMachine& machine, const std::string& folder,
                    const std::string& below = "") {
  Contents found;
  for (const std::string& name : machine.diskOf(folder).names(folder)) {
    const std::string path = folder + "\\" + name;
    if (machine.folderExists(path)) {
      found.merge(contentsOf(machine, path, below + name + "\\"));
    } else {
      found[below + name] = machine.fileText(path);
    }
  }
  return found;
}

TEST(BuildDisturbed, KilledInAnyCallLeavesTheOldMediumOrTheNewOne) {
  const std::string output = "C:\\Lavoro\\supporto";
  bool reached = true;
  for (std::size_t number = 1; reached; number += 7) {
    Workshop workshop;
    ASSERT_EQ(workshop.medium(output), 0) << workshop.trelv.console.errors;
    const Contents whole = contentsOf(workshop.machine, output);
    workshop.machine.putFile(output + "\\Versione.ver", "vecchio");
    const Contents old = contentsOf(workshop.machine, output);
    std::string call;
    {
      sim::KilledMachine killed(workshop.machine, number, sim::Unfinished::Half);
      try {
        workshop.medium(output);
      } catch (const sim::Killed&) {
      }
      reached = killed.reached();
      call = killed.killedCall();
    }
    const Contents found = contentsOf(workshop.machine, output);
    EXPECT_TRUE(found == old || found == whole) << call;
    EXPECT_EQ(workshop.medium(output), 0) << call << workshop.trelv.console.errors;
    EXPECT_EQ(contentsOf(workshop.machine, output), whole) << call;
    workshop.expectNothingLeft(output);
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
    if (exitCode == 0) {
      EXPECT_EQ(workshop.machine.fileText(kOutput), whole) << call;
      continue;
    }
    // What lint cannot read is a damaged pack to it.
    EXPECT_TRUE(exitCode == 2 || (exitCode == 1 && call.starts_with("files.readPart"))) << call;
    EXPECT_FALSE(workshop.machine.fileExists(kOutput)) << call;
    const std::string& errors = workshop.trelv.console.errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), exitCode == 2 ? 1 : 0) << call;
  }
}

}  // namespace
}  // namespace trelv::tests
