#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/PackExtraction.h"
#include "platform/modLibrary.h"
#include "support/Matchers.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using namespace modProdTrelvManager;
using sim::CallKind;

const std::string kTree = "prg\\com\\setup\\aggdovra\\";
constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kWork = "C:\\Users\\mario\\Temp";
constexpr const char* kWorkTree = "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra";
/// What a.zip leaves there.
constexpr const char* kUnpacked = "prg\\com\\setup\\aggdovra\\a.ini=a";
constexpr const char* kTarget = "T:\\Dovra";
constexpr const char* kTargetTree = "T:\\Dovra\\prg\\com\\setup\\aggdovra";

std::string commandFor(const std::string& zip, const std::string& output = kWork) {
  return R"("C:\Lumo\Programmi\7z.exe" x -y -o")" + output + "\" \"" + zip + "\"";
}

std::string inSetup(const std::string& name) { return kSetup + ("\\" + name); }
std::string inTarget(const std::string& name) { return kTargetTree + ("\\" + name); }
std::string inWork(const std::string& name) { return kWorkTree + ("\\" + name); }

/// A pack with one file in the set-up tree.
std::string zipOf(const std::string& name, const std::string& text, std::uint32_t exitCode = 0) {
  return packBytes({{kTree + name, text}}, exitCode);
}

/// Packs wait on S:, the target lies on T:, the temporary folder is C:\Users\mario\Temp\.
class PackExtraction : public testing::Test {
 public:
  PackExtraction() {
    for (const char* const drive : {"S:", "T:", "D:"}) {
      machine_.mount(drive);
    }
    machine_.makeFolders(kSetup);
  }

  /// A pack a.zip with a.ini in the set-up tree, for each letter.
  PackExtraction& putPacks(const std::string& letters) {
    for (const std::string& letter : wordsOf(letters)) {
      put(letter + ".zip", zipOf(letter + ".ini", letter));
    }
    return *this;
  }
  PackExtraction& put(const std::string& name, const std::string& pack) {
    machine_.putFile(inSetup(name), pack);
    return *this;
  }
  /// Puts a protected file "old" into the target.
  PackExtraction& putInTarget(const std::string& name) {
    machine_.putFile(inTarget(name), "old");
    target().setReadOnly(inTarget(name));
    return *this;
  }
  /// Every file that a pack brings is protected.
  PackExtraction& protectUnpackedFiles() {
    programs_.onFile = [this](const std::string& path) { machine_.diskOf(path).setReadOnly(path); };
    return *this;
  }
  /// The machine refuses these calls.
  PackExtraction& refusing(std::initializer_list<CallKind> kinds, SystemCode code) {
    machine_.callLog().setInjector(refuse(kinds, code));
    return *this;
  }

  bool scan(const std::string& target = kTarget, bool removePacks = true) {
    return OpenZipPacksInFolder(program_, kSetup, target, removePacks);
  }
  /// The failure that a scan raises; a default-made one where it raises none.
  RuntimeError failureOfScan(const std::string& target = kTarget) {
    try {
      EXPECT_TRUE(scan(target));
      return {};
    } catch (const RuntimeError& failure) {
      return failure;
    }
  }

  std::vector<std::string> started() { return machine_.programs().startedCommandLines(); }
  /// The commands that open these packs of the set-up folder.
  static std::vector<std::string> commandsFor(const std::string& names) {
    std::vector<std::string> commands = wordsOf(names);
    for (std::string& name : commands) {
      name = commandFor(inSetup(name));
    }
    return commands;
  }
  /// Names of what waits in the set-up folder.
  std::vector<std::string> waiting() { return machine_.diskOf("S:\\").names(kSetup); }
  /// Text of a file of the target's set-up tree, "-" where there is none.
  std::string brought(const std::string& name) {
    return machine_.fileExists(inTarget(name)) ? machine_.fileText(inTarget(name)) : "-";
  }
  /// Files at and below a folder with their texts: "a.ini=a nerio\\x=new".
  std::string filesOf(const std::string& folder) {
    std::vector<std::string> files;
    std::istringstream tree(machine_.folderExists(folder) ? machine_.diskOf(folder).tree(folder)
                                                          : "");
    for (std::string line; std::getline(tree, line);) {
      const std::string path = line.substr(0, line.rfind(' '));
      if (line.back() != '\\') {
        files.push_back(path + "=" + machine_.fileText(folder.substr(0, 3) + path));
      }
    }
    return joined(without(folder.substr(3) + "\\", files));
  }
  bool nothingUnpacked() { return !machine_.folderExists("C:\\Users\\mario\\Temp\\prg"); }

  const std::vector<std::string>& lines() { return program_.lines(); }
  std::vector<std::string> boxes() { return machine_.desktop().boxTexts(); }
  sim::SimDesktop& desktop() { return machine_.desktop(); }
  sim::SimDisk& target() { return machine_.diskOf("T:\\"); }

  sim::SimMachine machine_;
  PackPrograms programs_{machine_};
  FakeProgram program_{machine_};
};

// --- The zip packs of a folder

TEST_F(PackExtraction, AZipPackIsOpenedRemovedAndCopied) {
  putPacks("a");
  EXPECT_TRUE(scan());
  EXPECT_EQ(started(), commandsFor("a.zip"));
  EXPECT_TRUE(machine_.started()[0].waited && machine_.started()[0].visible);
  EXPECT_EQ(
      program_.logText(),
      R"(Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Apertura pacco zip con comando: "C:\Lumo\Programmi\7z.exe" x -y -o"C:\Users\mario\Temp" "S:\Lumo\prg\com\setup\aggdovra\a.zip"
Gestione ProdTrelv - Rimozione pacco zip: S:\Lumo\prg\com\setup\aggdovra\a.zip
Cancellazione file: S:\Lumo\prg\com\setup\aggdovra\a.zip effettuata con successo
Creazione path avvenuta correttamente:T:\Dovra
Creazione path avvenuta correttamente:T:\Dovra\prg
Creazione path avvenuta correttamente:T:\Dovra\prg\com
Creazione path avvenuta correttamente:T:\Dovra\prg\com\setup
Creazione path avvenuta correttamente:T:\Dovra\prg\com\setup\aggdovra
)");
  EXPECT_THAT(waiting(), IsEmpty());
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_TRUE(nothingUnpacked());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(PackExtraction, AFolderWithoutPacksIsListedOnceAndToldInOneLine) {
  put("agdvcomp.ini", "x");
  EXPECT_TRUE(scan());
  EXPECT_EQ(lines().size(), 1U);
  EXPECT_EQ(machine_.openings("S:\\").lists, 1U);
  EXPECT_EQ(machine_.openings("S:\\").files(), 0U);
  EXPECT_EQ(machine_.openings("S:\\").looks, 0U);
  EXPECT_EQ(machine_.openings("T:\\").looks, 0U);
}

TEST_F(PackExtraction, OnlyTheExtensionZipInLowerCaseCounts) {
  for (const char* const name : {"A.ZIP", "b.Zip", "zip", "c.zipx", "d.zip.bak", "e.gz", "f.7z",
                                 "g.tar.zip", ".zip", "h. zip"}) {
    put(name, zipOf("x.ini", "x"));
  }
  machine_.makeFolders(inSetup("folder.zip"));
  scan();
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("g.tar.zip")), commandFor(inSetup(".zip")),
                                     commandFor(inSetup("h. zip"))));
}

TEST_F(PackExtraction, TheCopyIsRepeatedAfterEveryPack) {
  putPacks("a b");
  scan();
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile " + inWork("a.ini")), 2U);
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile " + inWork("b.ini")), 1U);
}

TEST_F(PackExtraction, WithoutRemovalNothingIsCopiedAndTheNextScanElsewhereDropsWhatIsUnpacked) {
  putPacks("a").protectUnpackedFiles();
  EXPECT_TRUE(scan(kWork, false));
  EXPECT_EQ(filesOf(kWork), kUnpacked);
  EXPECT_TRUE(scan(kTarget, false));
  EXPECT_EQ(filesOf(kWork), "");
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_EQ(target().tree(), "");
  EXPECT_THAT(lines(), Each(Not(HasSubstr("Rimozione pacco zip"))));
  EXPECT_THAT(desktop().shownForms(), IsEmpty());
  machine_.removeTree(inSetup("a.zip"));
  // Also where no pack waits.
  machine_.putFile("C:\\Users\\mario\\Temp\\prg\\etc\\old.ini", "x");
  scan(kWork);
  EXPECT_FALSE(nothingUnpacked());
  scan();
  EXPECT_TRUE(nothingUnpacked());
  EXPECT_TRUE(machine_.folderExists(kWork));
}

TEST_F(PackExtraction, TheTemporaryFolderLosesOneTrailingBackslashOnly) {
  putPacks("a");
  machine_.support().setTemporaryPath("D:\\T\\\\");
  scan("D:\\T\\");
  putPacks("a");
  machine_.support().setTemporaryPath("D:\\T");
  scan();
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip"), "D:\\T\\"),
                                     commandFor(inSetup("a.zip"), "D:\\T")));
  EXPECT_EQ(brought("a.ini"), "a");
}

TEST_F(PackExtraction, WhatADecoderLeftThatWasEndedByForceGoesBeforeTheNextOne) {
  machine_.support().setTemporaryPath("D:\\T");
  machine_.putFile("D:\\T\\~qalbunex1.tmp\\prg\\half.bin", "x");
  machine_.putFile("D:\\T\\~Qalbunex2.tmp\\b", "x");
  machine_.putFile("D:\\T\\~altro1.tmp\\keep.txt", "x");
  machine_.putFile("D:\\T\\~qalbunex3.txt\\keep.txt", "x");
  machine_.putFile("D:\\T\\~qalbunex4.tmp", "a file");
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_FALSE(machine_.folderExists("D:\\T\\~qalbunex1.tmp"));
  EXPECT_FALSE(machine_.folderExists("D:\\T\\~Qalbunex2.tmp"));
  EXPECT_TRUE(machine_.fileExists("D:\\T\\~altro1.tmp\\keep.txt"));
  EXPECT_TRUE(machine_.fileExists("D:\\T\\~qalbunex3.txt\\keep.txt"));
  EXPECT_TRUE(machine_.fileExists("D:\\T\\~qalbunex4.tmp"));
}

TEST_F(PackExtraction, WithoutATemporaryFolderOrATargetNothingIsDone) {
  putPacks("a");
  machine_.putFile("C:\\prg\\keep.txt", "x");
  EXPECT_TRUE(scan(""));
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "", true));
  machine_.support().setTemporaryPath("");
  EXPECT_TRUE(scan());
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  const std::string temporary = "temporanea non disponibile: nessun pacco viene aperto";
  EXPECT_THAT(endsOf(lines(), "Gestione ProdTrelv - Cartella "),
              ElementsAre("di destinazione non disponibile: nessun pacco viene aperto", temporary,
                          temporary, temporary));
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_TRUE(machine_.fileExists("C:\\prg\\keep.txt"));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(PackExtraction, AMissingFolderRaisesBeforeItsLine) {
  machine_.removeTree(kSetup);
  const RuntimeError failure = failureOfScan();
  EXPECT_EQ(failure.number(), 76);
  EXPECT_EQ(failure.description(),
            "Impossibile trovare il percorso: S:\\Lumo\\prg\\com\\setup\\aggdovra");
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(PackExtraction, ThePlacesOfThePackAndOfTheManagerMayHaveBlanks) {
  machine_.setExecutable("C:\\Program Files\\Lumo\\TrelvManager.exe");
  machine_.programs().define("C:\\Program Files\\Lumo\\7z.exe");
  put("il pacco.zip", zipOf("a.ini", "a"));
  scan(kWork);
  EXPECT_THAT(started(),
              ElementsAre(R"("C:\Program Files\Lumo\7z.exe" x -y -o"C:\Users\mario\Temp" )"
                          R"("S:\Lumo\prg\com\setup\aggdovra\il pacco.zip")"));
}

// --- What a scan opens, copies and leaves

/// Packs and what is in their way; the packs that were opened, the files and texts of the target's
/// tree; the packs that wait afterwards, the files of the work folder, boxes, the failure's number.
struct Scan : Row {
  void (*arrange)(PackExtraction&);
  const char* opened;
  const char* brought = "";
  const char* waiting = "";
  const char* left = "";
  std::size_t boxes = 0;
  std::int32_t failure = 0;
  const char* target = kTarget;
};

using Packs = PackExtraction;

const std::vector<Scan> kScans{
    {"SetUpTreeOnlyIsCopiedAndTheWholeTopFolderRemoved",
     [](Packs& t) {
       t.put("a.zip", packBytes({{kTree + "a.ini", "a"}, {"prg\\o", "o"}, {"x.txt", "x"}}))
           .protectUnpackedFiles();
     },
     "a.zip", "a.ini=a", "", "x.txt=x"},
    {"PacksGoInTheOrderOfTheFileSystemAndTheLastWins",
     [](Packs& t) { t.put("b.zip", zipOf("same.ini", "b")).put("a.zip", zipOf("same.ini", "a")); },
     "b.zip a.zip", "same.ini=a"},
    {"WhatTheTargetHasIsReplacedAndTheRestStays",
     [](Packs& t) {
       t.put("a.zip", zipOf("nerio\\x", "a")).putInTarget("NERIO\\X").putInTarget("nerio\\kept");
     },
     "a.zip", "NERIO\\kept=old NERIO\\x=a"},
    // The copy carries the attribute over, and is made again after the second pack.
    {"ReadOnlyFilesDoNotStopTheNextPack",
     [](Packs& t) { t.putPacks("a b").protectUnpackedFiles(); }, "a.zip b.zip", "a.ini=a b.ini=b"},
    {"TargetIsTheWorkFolder", [](Packs& t) { t.putPacks("a"); }, "a.zip", "", "", kUnpacked, 0, 0,
     "c:\\USERS\\Mario\\temp"},
    // It waits for the next scan, also where it lands in the same folder.
    {"PackInAPack", [](Packs& t) { t.put("a.zip", zipOf("b.zip", "x")); }, "a.zip", "", "b.zip", "",
     0, 0, "S:\\Lumo"},
    {"NoDesktop", [](Packs& t) { t.putPacks("a").desktop().setPresent(false); }, "a.zip",
     "a.ini=a"},
    {"PackWithoutASetUpTree",
     [](Packs& t) {
       t.put("a.zip", packBytes({{"x.txt", "x"}})).putPacks("b");
     },
     "a.zip", "", "b.zip", "x.txt=x", 0, 76},
    {"WarningCountsAsOpened", [](Packs& t) { t.put("a.zip", zipOf("a.ini", "a", 1)); }, "a.zip",
     "a.ini=a"},
    {"ExitCode2", [](Packs& t) { t.put("a.zip", zipOf("a.ini", "a", 2)).putPacks("b"); },
     "a.zip b.zip", "b.ini=b", "a.zip", "", 1},
    {"ExitCodesAboveAndOfACrash",
     [](Packs& t) {
       t.put("a.zip", zipOf("a", "a", 255)).put("b.zip", zipOf("b", "b", 0xC0000005U));
     },
     "a.zip b.zip", "", "a.zip b.zip", "", 2},
    {"ExitCodeThatCannotBeHad",
     [](Packs& t) { t.putPacks("a").refusing({CallKind::ProcessExitCode}, 5); }, "a.zip", "",
     "a.zip", "", 1},
    // What the system answers for a process that has not ended.
    {"WaitThatFails",
     [](Packs& t) {
       t.putPacks("a").refusing({CallKind::ProcessWait, CallKind::ProcessExitCode}, 6);
     },
     "a.zip", "", "a.zip", "", 1},
    {"ReadOnlyFilesOfAFailedPackGoBeforeTheNextOne",
     [](Packs& t) {
       t.put("a.zip", packBytes({{kTree + "x", "x"}, {"prg\\x", "x"}}, 2))
           .putPacks("b")
           .protectUnpackedFiles();
     },
     "a.zip b.zip", "b.ini=b", "a.zip", "", 1},
    {"FailedPackWhereTheTargetIsTheWorkFolder",
     [](Packs& t) { t.put("a.zip", zipOf("a.ini", "a", 2)); }, "a.zip", "", "a.zip", kUnpacked, 1,
     0, kWork},
    {"LeftoversThatCannotBeRemoved",
     [](Packs& t) {
       t.put("a.zip", zipOf("a.ini", "a", 2))
           .putPacks("b")
           .desktop()
           .onBox([&t](const sim::SimBox&) {
             t.machine_.diskOf(kWork).holdOpen(inWork("a.ini"), sim::Sharing::Read);
           });
     },
     "a.zip", "", "a.zip b.zip", kUnpacked, 1},
    // Nothing excludes one workstation from another here.
    {"AnotherWorkstationTookThePackMeanwhile",
     [](Packs& t) {
       t.putPacks("a").machine_.onCall("processes.start",
                                       [&t] { t.machine_.removeTree(inSetup("a.zip")); });
     },
     "a.zip", "", "", "", 1}};

class PackScan : public PackExtraction, public testing::WithParamInterface<Scan> {};

TEST_P(PackScan, OpensCopiesAndLeaves) {
  GetParam().arrange(*this);
  EXPECT_EQ(failureOfScan(GetParam().target).number(), GetParam().failure);
  EXPECT_EQ(started(), commandsFor(GetParam().opened));
  EXPECT_EQ(joined(waiting()), GetParam().waiting);
  EXPECT_EQ(filesOf(kTargetTree), GetParam().brought);
  EXPECT_EQ(filesOf(kWork), GetParam().left);
  EXPECT_EQ(boxes().size(), GetParam().boxes);
  EXPECT_FALSE(desktop().hourglass());
  EXPECT_EQ(desktop().activeForm(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, PackScan, testing::ValuesIn(kScans), NameOfRow());

// --- Wait form and pointer

TEST_F(PackExtraction, TheWaitFormStandsUnderTheHourglassWhileTheTreeIsCopied) {
  putPacks("a b");
  std::vector<std::string> seen;
  const auto see = [&](const std::string& where) {
    seen.push_back(where + (desktop().hourglass() ? " hourglass" : "") +
                   (desktop().activeForm() != nullptr ? " form" : ""));
  };
  desktop().onForm("frmwait", [&](sim::SimFormWindow&) { see("shown"); });
  machine_.onCall("files.copyFile", [&] { see("copying"); });
  machine_.onCall("files.removeFile", [&] { see("removing the pack"); });
  scan();
  EXPECT_THAT(seen,
              ElementsAre("removing the pack", "shown hourglass form", "copying hourglass form"));
  EXPECT_THAT(desktop().shownForms(), ElementsAre("frmwait", "frmwait"));
  EXPECT_THAT(desktop().unloadedForms(), ElementsAre("frmwait", "frmwait"));
  EXPECT_THAT(desktop().hourglassChanges(), ElementsAre(true, false, true, false));
}

// Whoever delivers packs relies on an opened one being gone; see docs/quirks.md.
TEST_F(PackExtraction, WhatACopyThatFailedLeftIsGoneWithTheNextScan) {
  putPacks("a");
  putInTarget("a.ini").target().holdOpen(inTarget("a.ini"), sim::Sharing::Read);
  const RuntimeError failure = failureOfScan();
  EXPECT_EQ(failure.number(), 70);
  EXPECT_EQ(failure.description(), "File in uso da un altro programma: " + inTarget("a.ini"));
  EXPECT_THAT(desktop().shownForms(), ElementsAre("frmwait"));
  EXPECT_THAT(desktop().hourglassChanges(), ElementsAre(true, false));
  EXPECT_EQ(desktop().activeForm(), nullptr);
  EXPECT_THAT(waiting(), IsEmpty());
  EXPECT_EQ(filesOf(kWork), kUnpacked);
  target().release(inTarget("a.ini"));
  scan();
  EXPECT_TRUE(nothingUnpacked());
  EXPECT_EQ(brought("a.ini"), "old");
}

// --- What an earlier run left

class Leftovers : public PackExtraction {
 public:
  Leftovers() {
    machine_.putFile(inWork("zb.ini"), "09.94");
    machine_.putFile(inWork("nerio\\half.exe"), "half");
  }
  static constexpr const char* kTop = "C:\\Users\\mario\\Temp\\prg";
};

TEST_F(Leftovers, DoNotReachTheTargetWithTheNextPack) {
  putPacks("a");
  scan();
  EXPECT_EQ(filesOf(kTargetTree), "a.ini=a");
  EXPECT_TRUE(nothingUnpacked());
}

TEST_F(Leftovers, ThatCannotBeRemovedKeepEveryPackClosedAndTheCallerGoesOn) {
  putPacks("a b");
  machine_.diskOf("C:\\").holdOpen(inWork("zb.ini"), sim::Sharing::Read);
  EXPECT_TRUE(scan());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(waiting(), ElementsAre("a.zip", "b.zip"));
  EXPECT_EQ(target().tree(), "");
  EXPECT_THAT(endsOf(lines(),
                     "Gestione ProdTrelv - Contenuto di un pacco non rimosso, nessun altro "
                     "pacco viene aperto: "),
              ElementsAre("C:\\Users\\mario\\Temp\\prg (File in uso da un altro programma: " +
                          inWork("zb.ini") + ")"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
  machine_.diskOf("C:\\").release(inWork("zb.ini"));
  scan();
  EXPECT_EQ(filesOf(kTargetTree), "a.ini=a b.ini=b");
}

TEST_F(Leftovers, AFileInTheirPlaceIsRemovedToo) {
  machine_.removeTree(kTop);
  machine_.putFile(kTop, "x");
  machine_.diskOf("C:\\").setReadOnly(kTop);
  putPacks("a");
  scan();
  EXPECT_EQ(brought("a.ini"), "a");
  machine_.putFile(kTop, "x");
  scan();
  EXPECT_FALSE(machine_.fileExists(kTop));
}

TEST_F(Leftovers, AFileInTheirPlaceThatAFailedPackLeftKeepsNoOtherPackClosed) {
  machine_.removeTree(kTop);
  put("a.zip", "no pack").putPacks("b");
  machine_.desktop().onBox([this](const sim::SimBox&) { machine_.putFile(kTop, "x"); });
  scan();
  EXPECT_EQ(filesOf(kTargetTree), "b.ini=b");
  EXPECT_FALSE(machine_.fileExists(kTop));
}

TEST_F(Leftovers, ALinkInTheirPlaceIsNotFollowed) {
  machine_.removeTree(kTop);
  machine_.putFile("C:\\keep\\a.txt", "x");
  machine_.diskOf("C:\\").putLink(kTop, "C:\\keep");
  putPacks("a");
  scan();
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_EQ(machine_.fileText("C:\\keep\\a.txt"), "x");
}

TEST_F(Leftovers, OfACopyThatWasEndedByForceGoOnTheTargetToo) {
  const std::string half = inTarget("nerio\\TrelvManager-STAZIONE-1-99.tmp");
  machine_.putFile(half, "half");
  scan();
  EXPECT_FALSE(machine_.fileExists(half));
  EXPECT_TRUE(nothingUnpacked());
}

// --- The work folder under another name

class OtherNames : public PackExtraction {
 public:
  /// The user's temporary folder is the host's folder: T: and the share are one disk.
  void useHostFolderAsTemporaryFolder(const std::string& name) {
    machine_.mount("\\\\server\\lumo", machine_.volumes().diskOf("T:\\"));
    machine_.makeFolders(kTarget);
    machine_.putFile("T:\\Dovra\\prg\\applidir", "x");
    machine_.putFile(inTarget("old.ini"), "old");
    machine_.support().setTemporaryPath(name);
  }
  std::size_t linesThatSaySo() {
    std::size_t count = 0;
    for (const std::string& line : lines()) {
      count += line.find("il suo contenuto non viene rimosso") != std::string::npos ? 1U : 0U;
    }
    return count;
  }
};

TEST_F(OtherNames, OfTheTargetAreTheTarget) {
  for (const char* const name : {"\\\\SERVER\\lumo\\Dovra\\", "\\\\Server\\Lumo\\DOVRA\\"}) {
    useHostFolderAsTemporaryFolder(name);
    putPacks("a");
    scan();
    EXPECT_EQ(filesOf(kTarget),
              "prg\\applidir=x prg\\com\\setup\\aggdovra\\old.ini=old "
              "prg\\com\\setup\\aggdovra\\a.ini=a")
        << name;
    scan();
    EXPECT_TRUE(machine_.fileExists("T:\\Dovra\\prg\\applidir")) << name;
    machine_.removeTree(inTarget("a.ini"));
  }
  EXPECT_EQ(linesThatSaySo(), 1U);
}

TEST_F(OtherNames, OfTheHostsFolderKeepItAndEveryPack) {
  useHostFolderAsTemporaryFolder("\\\\server\\lumo\\Dovra\\");
  program_.state.startup.paths.server = kTarget;
  putPacks("a");
  scan("D:\\Integrazione");
  scan("D:\\Integrazione");
  EXPECT_EQ(filesOf(kTarget), "prg\\applidir=x prg\\com\\setup\\aggdovra\\old.ini=old");
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre(inSetup("a.zip")));
  EXPECT_EQ(linesThatSaySo(), 1U);
}

// --- Packs that cannot be opened

TEST_F(PackExtraction, APackThatAsksForAPasswordIsKeptAndToldWithoutStarting7Zip) {
  put("a.zip", "7z\xBC\xAF\x27\x1C and so on, which may be encrypted");
  putPacks("b");
  EXPECT_TRUE(scan());
  EXPECT_EQ(started(), commandsFor("b.zip"));
  EXPECT_EQ(endsOf(boxes(), "Errore in esecuzione comando: "), commandsFor("a.zip"));
  EXPECT_EQ(endsOf(lines(), "Gestione ProdTrelv - Apertura pacco zip con comando: "),
            commandsFor("a.zip b.zip"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Pacco zip protetto o incompleto, non aperto: " +
                       inSetup("a.zip")));
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_EQ(brought("b.ini"), "b");
  scan();
  EXPECT_EQ(boxes().size(), 1U);
}

TEST_F(PackExtraction, APackWithThousandsOfFoldersInEachOtherIsKeptAndToldWithoutStarting7Zip) {
  std::string name;
  for (int level = 0; level < 3000; ++level) {
    name += "a/";
  }
  const std::string header = "PK\3\4" + std::string(26, '\0');
  std::string entry = "PK\1\2" + std::string(42, '\0') + name;
  entry[28] = static_cast<char>(name.size() & 0xFFU);
  entry[29] = static_cast<char>(name.size() >> 8U);
  std::string end = "PK\5\6" + std::string(18, '\0');
  end[8] = end[10] = 1;
  end[12] = static_cast<char>(entry.size() & 0xFFU);
  end[13] = static_cast<char>(entry.size() >> 8U);
  end[16] = static_cast<char>(header.size());
  put("a.zip", header + entry + end);
  putPacks("b");
  EXPECT_TRUE(scan());
  EXPECT_EQ(started(), commandsFor("b.zip"));
  EXPECT_EQ(endsOf(boxes(), "Errore in esecuzione comando: "), commandsFor("a.zip"));
  EXPECT_THAT(
      lines(),
      Contains("Gestione ProdTrelv - Pacco zip con troppi livelli di cartelle, non aperto: " +
               inSetup("a.zip")));
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
}

// --- Programs that end with the manager

TEST_F(PackExtraction, WhatOpensPacksEndsWithTheManagerAndSetUpsDoNot) {
  putPacks("a");
  machine_.putFile("D:\\p\\b.gz", packBytes({{kTree + "b.zip", zipOf("b.ini", "b")}}));
  scan();
  OpenSinglePacks(program_, "D:\\p\\b.gz", kTarget);
  machine_.programs().define("D:\\setup.exe");
  modLibrary::Execute(program_, "D:\\setup.exe", true);
  std::vector<bool> bound;
  for (const sim::StartedProgram& program : machine_.started()) {
    bound.push_back(program.bound);
  }
  EXPECT_EQ(bound, std::vector<bool>({true, true, true, false}));
}

TEST_F(PackExtraction, A7ZipWhoseManagerWasEndedDoesNotUnpackIntoTheNextOnesWork) {
  putPacks("a");
  machine_.programs().setDeferred(true);
  machine_.callLog().setInjector([this](const sim::SimCall& call) -> std::optional<SystemCode> {
    if (call.kind == CallKind::ProcessWait) {
      machine_.callLog().setDead(true);
      throw sim::Killed(sim::Unfinished::NotBegun);
    }
    return std::nullopt;
  });
  EXPECT_THROW(scan(), sim::Killed);
  machine_.callLog().setInjector(nullptr);
  machine_.startSession();
  machine_.programs().runDeferred();
  EXPECT_TRUE(nothingUnpacked());
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
}

TEST_F(PackExtraction, AMissingSevenZipIsReportedAndShownForEachPack) {
  machine_.removeTree(PackPrograms::kSevenZip);
  putPacks("a b");
  EXPECT_TRUE(scan());
  EXPECT_EQ(endsOf(program_.reportTexts(), "Errore in esecuzione programma: "),
            commandsFor("a.zip b.zip"));
  EXPECT_EQ(endsOf(boxes(), "Errore in esecuzione comando: "), commandsFor("a.zip b.zip"));
  EXPECT_THAT(waiting(), ElementsAre("a.zip", "b.zip"));
}

// The scan runs for each product and side, and catalogues and command lines spell paths as they
// like.
TEST_F(PackExtraction, AFailingPackIsTriedAndShownOncePerProcessWhateverCaseItsFoldersAreGivenIn) {
  put("a.zip", packBytes({}, 2));
  EXPECT_TRUE(scan());
  EXPECT_TRUE(scan());
  EXPECT_EQ(lines().size(), 3U) << "no removal is told";
  OpenZipPacksInFolder(program_, "s:\\LUMO\\prg\\com\\setup\\aggdovra", kTarget, true);
  scan("t:\\DOVRA");
  EXPECT_EQ(started(), commandsFor("a.zip"));
  EXPECT_THAT(machine_.boxes(),
              ElementsAre(isBox(BoxIcon::Critical,
                                "Errore in esecuzione comando: " + commandFor(inSetup("a.zip")))));
  FakeProgram next(machine_);
  OpenZipPacksInFolder(next, kSetup, kTarget, true);
  EXPECT_EQ(started().size(), 2U);
  EXPECT_EQ(boxes().size(), 2U);
}

TEST_F(PackExtraction, APackThatAnotherWorkstationDeletesFirstIsNoFailure) {
  putPacks("a");
  machine_.onCall("files.removeFile " + inSetup("a.zip"),
                  [&] { machine_.removeTree(inSetup("a.zip")); });
  EXPECT_TRUE(scan());
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_EQ(brought("a.ini"), "a");
}

TEST_F(PackExtraction, AFailingPackThatIsReplacedIsTriedAgain) {
  put("a.zip", packBytes({}, 2));
  scan();
  sim::SimDisk& disk = machine_.diskOf("S:\\");
  const sim::FileTicks before = disk.modifiedTicks(inSetup("a.zip"));
  putPacks("a");
  disk.setModifiedTicks(inSetup("a.zip"), before);
  scan();
  EXPECT_EQ(brought("a.ini"), "a");
  put("b.zip", packBytes({}, 2));
  scan();
  put("b.zip", packBytes({}, 3));
  disk.setModifiedTicks(inSetup("b.zip"), before + 1);
  scan();
  EXPECT_EQ(boxes().size(), 3U);
}

TEST_F(PackExtraction, APackThatCannotBeRemovedIsReportedCopiedAndNotOpenedAgain) {
  putPacks("a");
  machine_.diskOf("S:\\").setReadOnly(inSetup("a.zip"));
  EXPECT_TRUE(scan());
  EXPECT_TRUE(scan());
  EXPECT_THAT(program_.reportTexts(), ElementsAre("Errore in cancellazione file: "));
  EXPECT_EQ(started(), commandsFor("a.zip"));
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  scan("T:\\Altro");
  EXPECT_EQ(machine_.fileText("T:\\Altro\\prg\\com\\setup\\aggdovra\\a.ini"), "a");
}

TEST_F(PackExtraction, APackThatAScannerReadsWhileItIsDeletedIsOpenedOnce) {
  putPacks("a");
  sim::SimDisk& disk = machine_.diskOf("S:\\");
  disk.holdOpen(inSetup("a.zip"), sim::Sharing::All);
  EXPECT_TRUE(scan());
  EXPECT_THAT(waiting(), ElementsAre("a.zip")) << "it goes when the scanner closes it";
  EXPECT_TRUE(scan());
  EXPECT_EQ(started(), commandsFor("a.zip"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reportTexts(), IsEmpty());
  EXPECT_EQ(brought("a.ini"), "a");
  disk.release(inSetup("a.zip"));
  EXPECT_THAT(waiting(), IsEmpty());
}

// A server may encrypt too: what kept its encryption there could be read by nobody else.
TEST_F(PackExtraction, APackThatWasUnpackedInAnEncryptedTemporaryFolderIsReadByEveryone) {
  putPacks("a");
  machine_.makeFolders(kWork);
  machine_.diskOf(kWork).encrypt(kWork, "mario");
  programs_.onFile = [this](const std::string& path) {
    EXPECT_TRUE(machine_.diskOf(path).isEncrypted(path)) << path;
  };
  EXPECT_TRUE(scan("C:\\Lumo"));
  EXPECT_THAT(program_.reportTexts(), IsEmpty());
  machine_.volumes().setUser("anna");
  std::string text;
  EXPECT_EQ(machine_.files().read("C:\\Lumo\\" + kTree + "a.ini", 10, text), system_code::kSuccess);
  EXPECT_EQ(text, "a");
}

// --- What the user does while lines are logged

class PackScanWithAForm : public PackExtraction, public testing::WithParamInterface<std::size_t> {};

TEST_P(PackScanWithAForm, LosesNothingByAClickThatOpensTheSamePacksMeanwhile) {
  putPacks("a b");
  RealProgram program(machine_);
  sim::SimFormWindow form("frmProdTrelvStandalone");
  desktop().activate(form);
  bool clicked = false;
  desktop().onEvents(GetParam(), [&] {
    clicked = true;
    OpenZipPacksInFolder(program, kSetup, kTarget, true);
  });
  try {
    OpenZipPacksInFolder(program, kSetup, kTarget, true);
  } catch (const RuntimeError& failure) {
    // The click's scan removed the tree that this one was about to copy.
    EXPECT_EQ(failure.number(), 76);
  }
  EXPECT_EQ(filesOf(kTargetTree), "a.ini=a b.ini=b");
  EXPECT_TRUE(clicked);
  EXPECT_FALSE(desktop().hourglass());
  EXPECT_EQ(desktop().activeForm(), &form);
}

// Before the scan's line, both openings and both removals: wherever the click falls.
INSTANTIATE_TEST_SUITE_P(Round, PackScanWithAForm, testing::Range(std::size_t{1}, std::size_t{8}));

// --- Links

TEST_F(PackExtraction, ALinkInAPackIsNeverFollowed) {
  machine_.putFile("C:\\secret\\a.txt", "x");
  putPacks("a");
  programs_.onFile = [this](const std::string& path) {
    machine_.diskOf(path).putLink(inWork("link"), "C:\\secret");
  };
  EXPECT_EQ(failureOfScan().number(), 75);
  EXPECT_FALSE(machine_.folderExists(inTarget("link")));
  scan();
  EXPECT_EQ(machine_.fileText("C:\\secret\\a.txt"), "x");
  EXPECT_TRUE(nothingUnpacked());
}

// --- Kept ini files

TEST_F(PackExtraction, KeptIniFilesAreForgottenWhenTheTreeWasCopiedOrItsCopyFailed) {
  const auto value = [this] {
    return program_.configurationFiles.read({inTarget("1.ini"), "S", "k"}, 511);
  };
  for (const bool fails : {false, true}) {
    machine_.putFile(inTarget("1.ini"), "[S]\r\nk=old\r\n");
    put("a.zip", packBytes({{kTree + "1.ini", "[S]\r\nk=new\r\n"}, {kTree + "2.ini", "y"}}));
    putInTarget("2.ini");
    if (fails) {
      target().holdOpen(inTarget("2.ini"), sim::Sharing::Read);
    }
    // Somebody reads it between 7-Zip's end and the copy.
    machine_.onCall("files.copyFile", [&] { EXPECT_EQ(value(), "old"); });
    EXPECT_EQ(failureOfScan().number(), fails ? 70 : 0);
    EXPECT_EQ(value(), "new");
  }
}

// --- One zip pack

TEST_F(PackExtraction, OneZipPackIsOpenedIntoItsDestinationAndRemovedOnDemand) {
  put("a.zip", packBytes({{"nerio.gz", "x"}}));
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", false));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Apertura pacco zip con comando: " +
                                   commandFor(inSetup("a.zip"), "C:\\Opera")));
  EXPECT_TRUE(machine_.started()[0].waited);
  EXPECT_EQ(machine_.fileText("C:\\Opera\\nerio.gz"), "x");
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", true));
  EXPECT_THAT(endsOf(lines(), "Gestione ProdTrelv - Rimozione pacco zip: "),
              ElementsAre(inSetup("a.zip")));
  EXPECT_THAT(waiting(), IsEmpty());
}

// Asked for by hand: told each time.
TEST_F(PackExtraction, OneZipPackAnswersTrueAlsoWhenItCouldNotBeOpened) {
  put("a.zip", packBytes({}, 2));
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", true));
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", true));
  const auto refusal = isBox(BoxIcon::Critical, "Errore in esecuzione comando: " +
                                                    commandFor(inSetup("a.zip"), "C:\\Opera"));
  EXPECT_THAT(machine_.boxes(), ElementsAre(refusal, refusal));
  EXPECT_THAT(waiting(), ElementsAre("a.zip"));
  EXPECT_EQ(lines().size(), 2U);
}

// --- Packs for the decoder

/// Gz packs in D:\p.
class GzPacks : public PackExtraction {
 public:
  /// A pack whose output holds these zip packs.
  void putGz(const std::string& name, const PackContent& zips, std::uint32_t exitCode = 0,
             const std::string& tree = kTree) {
    PackContent content;
    for (const auto& [zip, bytes] : zips) {
      content.emplace_back(tree + zip, bytes);
    }
    machine_.putFile("D:\\p\\" + name, packBytes(content, exitCode));
  }
  void openNerio(const std::string& target = kTarget) {
    OpenSinglePacks(program_, "D:\\p\\nerio.gz", target);
  }
};

TEST_F(GzPacks, OnePackIsDecodedAndItsZipPacksOpened) {
  putGz("nerio.gz", {{"a.zip", zipOf("a.ini", "a")}});
  openNerio();
  EXPECT_THAT(
      started(),
      ElementsAre(R"("C:\Lumo\Programmi\qalbunex.exe" "D:\p\nerio.gz" "C:\Users\mario\Temp")",
                  commandFor(inWork("a.zip"))));
  EXPECT_TRUE(machine_.started()[0].waited && machine_.started()[0].visible);
  EXPECT_EQ(lines()[0],
            "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
            "\"C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\"");
  EXPECT_EQ(lines()[2], "Gestione ProdTrelv - Rimozione pacco zip: " + inWork("a.zip"));
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_TRUE(nothingUnpacked());
  EXPECT_TRUE(machine_.fileExists("D:\\p\\nerio.gz"));
  // Unpacked in place where the target is the work folder.
  openNerio(kWork);
  EXPECT_THAT(machine_.diskOf("C:\\").names(kWorkTree), ElementsAre("a.ini"));
}

// The whole tree is copied: a pack that still waits in it reaches the target too.
TEST_F(GzPacks, APackThatStillWaitsIsCopiedAlong) {
  putGz("nerio.gz", {{"a.zip", zipOf("a.ini", "a")}, {"b.zip", zipOf("b.ini", "b")}});
  openNerio();
  EXPECT_THAT(target().names(kTargetTree), UnorderedElementsAre("a.ini", "b.ini", "b.zip"));
}

// The tree has the spelling of whoever made the pack.
TEST_F(GzPacks, AFailedZipPackDoesNotTakeTheOthersAlongWhateverCaseTheTreeIsInNorReadOnlyFiles) {
  const std::string half = packBytes({{kTree + "half.ini", "h"},
                                      {kTree + "dir\\x", "x"},
                                      {"prg\\com\\setup\\y", "y"},
                                      {"prg\\etc\\z", "z"}},
                                     2);
  programs_.onFile = [this](const std::string& path) {
    machine_.diskOf(path).setReadOnly(path, path.find("half.ini") != std::string::npos);
  };
  for (const std::string& tree : {kTree, std::string("PRG\\Com\\SETUP\\AggDovra\\")}) {
    SCOPED_TRACE(tree);
    putGz("nerio.gz", {{"a.zip", half}, {"b.zip", zipOf("b.ini", "b")}}, 0, tree);
    openNerio();
    EXPECT_EQ(brought("b.ini"), "b");
    EXPECT_EQ(brought("half.ini"), "-");
    EXPECT_FALSE(machine_.folderExists(inTarget("dir")));
    target().removeTree(kTarget);
  }
  // The decoder wrote another pack under the same name: it was tried again.
  EXPECT_EQ(boxes().size(), 2U);
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, AFailingPackDoesNotEndTheScanOfItsFolderAndAMissingFolderIsReported) {
  machine_.putFile("D:\\p\\a.gz", "no pack");
  putGz("b.gz", {{"b.zip", zipOf("b.ini", "b")}});
  OpenFolderPacks(program_, "D:\\p", kTarget);
  EXPECT_EQ(brought("b.ini"), "b");
  OpenFolderPacks(program_, "D:\\no", kTarget);
  EXPECT_THAT(program_.reports(),
              ElementsAre(isReport("OpenSinglePacks", "Errore in Apertura Pacco ", 76),
                          isReport("OpenFolderPacks", "Errore in Apertura Pacchi", 76)));
  EXPECT_EQ(
      lines().back(),
      "Gestione ProdTrelv - Errore in Apertura PacchiImpossibile trovare il percorso: D:\\no");
}

// A single installation clears nothing first: see docs/quirks.md.
TEST_F(GzPacks, WhatStoodThereBeforeCountsAsWhatTheDecoderWrote) {
  machine_.putFile(inWork("old.ini"), "old");
  putGz("nerio.gz", {{"a.zip", zipOf("a.ini", "a")}});
  openNerio();
  EXPECT_EQ(filesOf(kTargetTree), "old.ini=old a.ini=a");
  EXPECT_TRUE(nothingUnpacked());
}

TEST_F(GzPacks, APackIsNotOpenedWhileAnotherSessionHasTheWorkFolder) {
  putGz("nerio.gz", {{"a.zip", zipOf("a.ini", "a")}});
  const auto mark =
      machine_.exclusion().takeForAnother(kWork + std::string("\\TrelvManager.lck"), "anna, ALTRA");
  openNerio();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre("D:\\p\\nerio.gz"));
  EXPECT_EQ(lines().size(), 1U);
}

TEST_F(GzPacks, AFailingDecoderIsNotTold) {
  putGz("nerio.gz", {{"a.zip", zipOf("a.ini", "a")}}, 3);
  openNerio();
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, ADecoderThatWritesNothingIsReportedByItsMissingFolder) {
  machine_.putFile("D:\\p\\nerio.gz", "no pack");
  openNerio();
  EXPECT_THAT(program_.reports(),
              ElementsAre(isReport("OpenSinglePacks", "Errore in Apertura Pacco ", 76)));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Errore in Apertura Pacco Impossibile trovare il "
                          "percorso: C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra"));
}

TEST_F(GzPacks, ADecoderThatCannotBeStartedIsReported) {
  machine_.removeTree(PackPrograms::kDecoder);
  machine_.makeFolders(kWorkTree);
  openNerio();
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: \"C:\\Lumo\\Programmi\\qalbunex.exe\" "
                          "\"D:\\p\\nerio.gz\" \"C:\\Users\\mario\\Temp\""));
  EXPECT_THAT(lines(), Contains(HasSubstr("Inizio verifica presenza di pacchi zip")));
}

TEST_F(GzPacks, AFolderIsOpenedInTheOrderOfTheFileSystem) {
  putGz("b.gz", {{"b.zip", zipOf("same.ini", "of b")}});
  putGz("a.gz", {{"a.zip", zipOf("same.ini", "of a")}});
  putGz("C.GZ", {{"c.zip", zipOf("c.ini", "c")}});
  putGz("d.tar.gz", {{"d.zip", zipOf("d.ini", "d")}});
  machine_.putFile("D:\\p\\gz", "x");
  machine_.makeFolders("D:\\p\\e.gz");
  OpenFolderPacks(program_, "D:\\p", kTarget);
  // The lines name the target, not the folder that holds the packs.
  EXPECT_THAT(endsOf(lines(), "Gestione ProdTrelv - Apertura pacco :"),
              ElementsAre("T:\\Dovra\\b.gz", "T:\\Dovra\\a.gz", "T:\\Dovra\\d.tar.gz"));
  EXPECT_EQ(brought("same.ini"), "of a");
  EXPECT_EQ(started()[0], R"("C:\Lumo\Programmi\qalbunex.exe" "D:\p\b.gz" "C:\Users\mario\Temp")");
  EXPECT_EQ(started().size(), 6U);
  EXPECT_TRUE(machine_.fileExists("D:\\p\\a.gz"));
}

TEST_F(GzPacks, PacksThatCouldNotBeOpenedAreNotedOnceEach) {
  std::vector<std::string>& unopened = program_.state.packs.unopened;
  unopened = {"vecchio"};
  OpenZipPack(program_, inSetup("manca.zip"), "D:\\Out", false);
  EXPECT_THAT(unopened, ElementsAre("vecchio", inSetup("manca.zip")));
  put("guasto.gz", "no pack");
  OpenSinglePacks(program_, inSetup("guasto.gz"), kTarget);
  OpenFolderPacks(program_, "S:\\Manca", kTarget);
  EXPECT_THAT(unopened,
              ElementsAre("vecchio", inSetup("manca.zip"), inSetup("guasto.gz"), "S:\\Manca"));
  // Also where the tree of another stands.
  unopened.clear();
  machine_.makeFolders(kWorkTree);
  OpenSinglePacks(program_, inSetup("guasto.gz"), kTarget);
  EXPECT_THAT(unopened, ElementsAre(inSetup("guasto.gz")));
}

}  // namespace
}  // namespace trelv::tests
