#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "packs/PackExtraction.h"
#include "support/FakeProgram.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::OpenFolderPacks;
using modProdTrelvManager::OpenSinglePacks;
using modProdTrelvManager::OpenZipPack;
using modProdTrelvManager::OpenZipPacksInFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kWork = "C:\\Users\\mario\\Temp";
constexpr const char* kWorkTree = "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra";
constexpr const char* kTarget = "T:\\Dovra";
constexpr const char* kTargetTree = "T:\\Dovra\\prg\\com\\setup\\aggdovra";

std::string commandFor(const std::string& zip, const std::string& output = kWork) {
  return R"("C:\Lumo\Programmi\7z.exe" x -y -o")" + output + "\" \"" + zip + "\"";
}

/// Content of a pack with one file in the set-up tree.
PackContent oneFile(const std::string& name, const std::string& text) {
  return {{"prg\\com\\setup\\aggdovra\\" + name, text}};
}

/// Packs wait on S:, the target lies on T:, the temporary folder is C:\Users\mario\Temp\.
class PackExtraction : public testing::Test {
 protected:
  PackExtraction() {
    machine_.mount("S:");
    machine_.mount("T:");
    machine_.mount("D:");
    machine_.makeFolders(kSetup);
  }

  static std::string inSetup(const std::string& name) { return std::string(kSetup) + "\\" + name; }
  static std::string inTarget(const std::string& name) {
    return std::string(kTargetTree) + "\\" + name;
  }

  void putPack(const std::string& name, const PackContent& content, std::uint32_t exitCode = 0) {
    machine_.putFile(inSetup(name), packBytes(content, exitCode));
  }
  bool scan(const std::string& target = kTarget, bool removePacks = true) {
    return OpenZipPacksInFolder(program_, kSetup, target, removePacks);
  }
  /// Number and description of the failure that a scan raises.
  RuntimeError failureOfScan() {
    try {
      scan();
    } catch (const RuntimeError& failure) {
      return failure;
    }
    ADD_FAILURE() << "nothing was raised";
    return {};
  }

  std::vector<std::string> started() { return machine_.programs().startedCommandLines(); }
  const std::vector<std::string>& lines() { return program_.lines(); }
  std::vector<std::string> boxes() { return machine_.desktop().boxTexts(); }
  sim::SimDesktop& desktop() { return machine_.desktop(); }

  void expectNothingShownAnyMore() {
    EXPECT_FALSE(desktop().hourglass());
    EXPECT_EQ(desktop().activeForm(), nullptr);
  }

  sim::SimMachine machine_;
  PackPrograms programs_{machine_};
  FakeProgram program_{machine_};
};

// --- The zip packs of a folder

TEST_F(PackExtraction, AZipPackIsOpenedRemovedAndCopied) {
  putPack("a.zip", oneFile("nerio.ini", "[Setup01]"));
  EXPECT_TRUE(scan());
  EXPECT_THAT(started(), ElementsAre(R"("C:\Lumo\Programmi\7z.exe" x -y -o"C:\Users\mario\Temp" )"
                                     R"("S:\Lumo\prg\com\setup\aggdovra\a.zip")"));
  EXPECT_TRUE(machine_.started()[0].waited);
  EXPECT_TRUE(machine_.started()[0].visible);
  EXPECT_THAT(
      lines(),
      ElementsAre(
          R"(Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra")",
          R"(Gestione ProdTrelv - Apertura pacco zip con comando: "C:\Lumo\Programmi\7z.exe" x -y -o"C:\Users\mario\Temp" "S:\Lumo\prg\com\setup\aggdovra\a.zip")",
          R"(Gestione ProdTrelv - Rimozione pacco zip: S:\Lumo\prg\com\setup\aggdovra\a.zip)",
          R"(Cancellazione file: S:\Lumo\prg\com\setup\aggdovra\a.zip effettuata con successo)",
          R"(Creazione path avvenuta correttamente:T:\Dovra)",
          R"(Creazione path avvenuta correttamente:T:\Dovra\prg)",
          R"(Creazione path avvenuta correttamente:T:\Dovra\prg\com)",
          R"(Creazione path avvenuta correttamente:T:\Dovra\prg\com\setup)",
          R"(Creazione path avvenuta correttamente:T:\Dovra\prg\com\setup\aggdovra)"));
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.fileText(inTarget("nerio.ini")), "[Setup01]");
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(PackExtraction, AFolderWithoutPacksIsListedOnceAndToldInOneLine) {
  machine_.putFile(inSetup("agdvcomp.ini"), "x");
  EXPECT_TRUE(scan());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in "
                                   "cartella: \"S:\\Lumo\\prg\\com\\setup\\aggdovra\""));
  EXPECT_EQ(machine_.openings("S:\\").lists, 1U);
  EXPECT_EQ(machine_.openings("S:\\").files(), 0U);
  EXPECT_EQ(machine_.openings("S:\\").looks, 0U);
  EXPECT_EQ(machine_.openings("T:\\").looks, 0U);
}

TEST_F(PackExtraction, OnlyTheExtensionZipInLowerCaseCounts) {
  const PackContent content = oneFile("x.ini", "x");
  for (const char* const name : {"A.ZIP", "b.Zip", "zip", "c.zipx", "d.zip.bak", "e.gz", "f.7z"}) {
    putPack(name, content);
  }
  machine_.makeFolders(inSetup("folder.zip"));
  scan();
  EXPECT_THAT(started(), IsEmpty());
  putPack("g.tar.zip", content);
  putPack(".zip", content);
  putPack("h. zip", content);
  scan();
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("g.tar.zip")), commandFor(inSetup(".zip")),
                                     commandFor(inSetup("h. zip"))));
}

TEST_F(PackExtraction, PacksAreOpenedInTheOrderOfTheFileSystemAndTheLastWins) {
  putPack("a.zip", oneFile("same.ini", "of a"));
  putPack("b.zip", oneFile("same.ini", "of b"));
  machine_.diskOf("S:\\").setListingOrder(kSetup, {"b.zip", "a.zip"});
  scan();
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("b.zip")), commandFor(inSetup("a.zip"))));
  EXPECT_EQ(machine_.fileText(inTarget("same.ini")), "of a");
  EXPECT_EQ(machine_.openings(kSetup).lists, 1U);
}

TEST_F(PackExtraction, TheCopyIsRepeatedAfterEveryPack) {
  putPack("a.zip", oneFile("a.ini", "a"));
  putPack("b.zip", oneFile("b.ini", "b"));
  scan();
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile C:\\Users\\mario\\Temp\\prg\\com\\setup\\"
                                       "aggdovra\\a.ini"),
            2U);
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile C:\\Users\\mario\\Temp\\prg\\com\\setup\\"
                                       "aggdovra\\b.ini"),
            1U);
}

TEST_F(PackExtraction, OverwritesWhatTheTargetHasAndLeavesTheRest) {
  putPack("a.zip", {{"prg\\com\\setup\\aggdovra\\nerio\\setup.exe", "new"},
                    {"prg\\com\\setup\\aggdovra\\nerio.ini", "new"}});
  machine_.putFile(inTarget("nerio\\setup.exe"), "old");
  machine_.putFile(inTarget("nerio\\kept.dat"), "kept");
  machine_.putFile(inTarget("NERIO.INI"), "old");
  machine_.diskOf("T:\\").setReadOnly(inTarget("NERIO.INI"));
  scan();
  EXPECT_EQ(machine_.fileText(inTarget("nerio\\setup.exe")), "new");
  EXPECT_EQ(machine_.fileText(inTarget("nerio\\kept.dat")), "kept");
  EXPECT_EQ(machine_.fileText(inTarget("nerio.ini")), "new");
}

TEST_F(PackExtraction, OnlyTheSetUpTreeIsCopiedAndTheWholeTopFolderRemoved) {
  putPack("a.zip", {{"prg\\com\\setup\\aggdovra\\a.ini", "a"},
                    {"prg\\etc\\other.ini", "o"},
                    {"readme.txt", "r"}});
  programs_.onFile = [this](const std::string& path) { machine_.diskOf(path).setReadOnly(path); };
  scan();
  EXPECT_EQ(machine_.diskOf("T:\\").tree(),
            "Dovra\\\nDovra\\prg\\\nDovra\\prg\\com\\\nDovra\\prg\\com\\setup\\\n"
            "Dovra\\prg\\com\\setup\\aggdovra\\\nDovra\\prg\\com\\setup\\aggdovra\\a.ini 1\n");
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_TRUE(machine_.fileExists("C:\\Users\\mario\\Temp\\readme.txt"));
}

TEST_F(PackExtraction, ReadOnlyFilesOfAnEarlierPackDoNotStopTheNextOne) {
  putPack("a.zip", oneFile("a.ini", "a"));
  putPack("b.zip", oneFile("b.ini", "b"));
  programs_.onFile = [this](const std::string& path) { machine_.diskOf(path).setReadOnly(path); };
  machine_.onCall("processes.start \"C:\\Lumo\\Programmi\\7z.exe\"", [this] {
    // The copy carries the attribute over.
    machine_.putFile(inTarget("a.ini"), "old");
    machine_.diskOf("T:\\").setReadOnly(inTarget("a.ini"));
  });
  scan();
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
}

TEST_F(PackExtraction, WithoutRemovalNothingIsCopied) {
  putPack("a.zip", oneFile("a.ini", "a"));
  EXPECT_TRUE(scan(kWork, false));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.fileText(std::string(kWorkTree) + "\\a.ini"), "a");
  EXPECT_TRUE(scan(kTarget, false));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.diskOf("T:\\").tree(), "");
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_THAT(lines(),
              Not(Contains("Gestione ProdTrelv - Rimozione pacco zip: " + inSetup("a.zip"))));
  EXPECT_THAT(desktop().shownForms(), IsEmpty());
}

TEST_F(PackExtraction, NothingIsCopiedOrRemovedWhereTheTargetIsTheWorkFolder) {
  putPack("a.zip", oneFile("a.ini", "a"));
  EXPECT_TRUE(scan("c:\\USERS\\Mario\\temp"));
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.fileText(std::string(kWorkTree) + "\\a.ini"), "a");
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile"), 0U);
  EXPECT_THAT(desktop().hourglassChanges(), IsEmpty());
}

TEST_F(PackExtraction, AFolderWithoutPacksStillLosesTheUnpackedTreeOfTheWorkFolder) {
  machine_.putFile("C:\\Users\\mario\\Temp\\prg\\etc\\old.ini", "x");
  machine_.diskOf("C:\\").setReadOnly("C:\\Users\\mario\\Temp\\prg\\etc\\old.ini");
  scan(kWork);
  EXPECT_TRUE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  scan();
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_TRUE(machine_.folderExists(kWork));
}

TEST_F(PackExtraction, TheTemporaryFolderLosesOneTrailingBackslashOnly) {
  machine_.support().setTemporaryPath("D:\\T\\\\");
  putPack("a.zip", oneFile("a.ini", "a"));
  scan("D:\\T\\");
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip"), "D:\\T\\")));
}

TEST_F(PackExtraction, TheTemporaryFolderWithoutTrailingBackslashStaysAsItIs) {
  machine_.support().setTemporaryPath("D:\\T");
  putPack("a.zip", oneFile("a.ini", "a"));
  scan();
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip"), "D:\\T")));
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
}

TEST_F(PackExtraction, WithoutATemporaryFolderNothingIsDone) {
  machine_.support().setTemporaryPath("");
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.putFile("C:\\prg\\keep.txt", "x");
  EXPECT_TRUE(scan());
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
                  "\"S:\\Lumo\\prg\\com\\setup\\aggdovra\"",
                  "Gestione ProdTrelv - Cartella temporanea non disponibile: nessun pacco viene "
                  "aperto"));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_TRUE(machine_.fileExists("C:\\prg\\keep.txt"));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(PackExtraction, WithoutATargetNothingIsDone) {
  putPack("a.zip", oneFile("a.ini", "a"));
  EXPECT_TRUE(scan(""));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Cartella di destinazione non disponibile: nessun pacco viene "
            "aperto");
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(PackExtraction, AMissingFolderRaisesBeforeItsLine) {
  machine_.removeTree(kSetup);
  const RuntimeError failure = failureOfScan();
  EXPECT_EQ(failure.number(), 76);
  EXPECT_EQ(failure.description(),
            "Impossibile trovare il percorso: S:\\Lumo\\prg\\com\\setup\\aggdovra");
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(PackExtraction, TheFolderIsListedBeforeTheFirstPackIsOpened) {
  putPack("a.zip", oneFile("inner.zip", packBytes(oneFile("b.ini", "b"))));
  scan(kWork);
  // A pack that a pack brings waits for the next scan, also where it lands in the same folder.
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip"))));
  EXPECT_TRUE(machine_.fileExists(std::string(kWorkTree) + "\\inner.zip"));
}

TEST_F(PackExtraction, ThePlacesOfThePackAndOfTheManagerMayHaveBlanks) {
  machine_.setExecutable("C:\\Program Files\\Lumo\\TrelvManager.exe");
  const PackPrograms elsewhere(machine_);
  machine_.programs().define("C:\\Program Files\\Lumo\\7z.exe");
  putPack("il pacco.zip", oneFile("a.ini", "a"));
  scan(kWork);
  EXPECT_THAT(started(),
              ElementsAre(R"("C:\Program Files\Lumo\7z.exe" x -y -o"C:\Users\mario\Temp" )"
                          R"("S:\Lumo\prg\com\setup\aggdovra\il pacco.zip")"));
}

// --- Wait form and pointer

TEST_F(PackExtraction, TheWaitFormStandsUnderTheHourglassWhileTheTreeIsCopied) {
  putPack("a.zip", oneFile("a.ini", "a"));
  putPack("b.zip", oneFile("b.ini", "b"));
  bool shownAtCopy = false;
  bool hourglassAtForm = false;
  bool shownAtOpening = false;
  desktop().onForm("frmwait",
                   [&](sim::SimFormWindow&) { hourglassAtForm = desktop().hourglass(); });
  machine_.onCall("files.copyFile", [&] {
    shownAtCopy = desktop().hourglass() && desktop().activeForm() != nullptr;
  });
  machine_.onCall("files.removeFile", [&] { shownAtOpening = desktop().activeForm() != nullptr; });
  scan();
  EXPECT_TRUE(shownAtCopy);
  EXPECT_TRUE(hourglassAtForm);
  EXPECT_FALSE(shownAtOpening);
  EXPECT_THAT(desktop().shownForms(), ElementsAre("frmwait", "frmwait"));
  EXPECT_THAT(desktop().unloadedForms(), ElementsAre("frmwait", "frmwait"));
  EXPECT_THAT(desktop().hourglassChanges(), ElementsAre(true, false, true, false));
  expectNothingShownAnyMore();
}

TEST_F(PackExtraction, WaitFormAndHourglassGoWhenACopyFails) {
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.putFile(inTarget("a.ini"), "old");
  machine_.diskOf("T:\\").holdOpen(inTarget("a.ini"), sim::Sharing::Read);
  const RuntimeError failure = failureOfScan();
  EXPECT_EQ(failure.number(), 70);
  EXPECT_EQ(failure.description(),
            "File in uso da un altro programma: T:\\Dovra\\prg\\com\\setup\\aggdovra\\a.ini");
  EXPECT_THAT(desktop().shownForms(), ElementsAre("frmwait"));
  EXPECT_THAT(desktop().hourglassChanges(), ElementsAre(true, false));
  expectNothingShownAnyMore();
}

TEST_F(PackExtraction, WithoutADesktopTheTreeIsCopiedAllTheSame) {
  putPack("a.zip", oneFile("a.ini", "a"));
  desktop().setPresent(false);
  scan();
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  expectNothingShownAnyMore();
}

TEST_F(PackExtraction, APackWithoutASetUpTreeEndsTheScan) {
  putPack("a.zip", {{"readme.txt", "x"}});
  putPack("b.zip", oneFile("b.ini", "b"));
  EXPECT_EQ(failureOfScan().number(), 76);
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_TRUE(machine_.fileExists(inSetup("b.zip")));
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip"))));
}

// Whoever delivers packs relies on an opened one being gone; see docs/quirks.md.
TEST_F(PackExtraction, WhatACopyThatFailedLeftIsGoneWithTheNextScan) {
  putPack("a.zip", oneFile("a.ini", "new"));
  machine_.putFile(inTarget("a.ini"), "old");
  machine_.diskOf("T:\\").holdOpen(inTarget("a.ini"), sim::Sharing::Read);
  failureOfScan();
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.fileText(std::string(kWorkTree) + "\\a.ini"), "new");
  machine_.diskOf("T:\\").release(inTarget("a.ini"));
  scan();
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "old");
}

// --- Packs that cannot be opened

TEST_F(PackExtraction, AFailingPackIsToldInABoxAndKeptAndTheScanGoesOn) {
  putPack("a.zip", {}, 2);
  putPack("b.zip", oneFile("b.ini", "b"));
  EXPECT_TRUE(scan());
  EXPECT_THAT(started(), ElementsAre(commandFor(inSetup("a.zip")), commandFor(inSetup("b.zip"))));
  ASSERT_EQ(machine_.boxes().size(), 1U);
  const sim::SimBox& box = machine_.boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.text, "Errore in esecuzione comando: " + commandFor(inSetup("a.zip")));
  EXPECT_EQ(box.icon, machine::BoxIcon::Critical);
  EXPECT_EQ(box.buttons, machine::BoxButtons::Ok);
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
  EXPECT_THAT(lines(),
              Not(Contains("Gestione ProdTrelv - Rimozione pacco zip: " + inSetup("a.zip"))));
}

TEST_F(PackExtraction, AWarningCountsAsOpened) {
  putPack("a.zip", oneFile("a.ini", "a"), 1);
  scan();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, EveryHigherExitCodeIsAFailure) {
  for (const std::uint32_t code : {2U, 7U, 8U, 255U, 0xC0000005U}) {
    putPack(std::to_string(code) + ".zip", oneFile("x.ini", "x"), code);
  }
  scan();
  EXPECT_EQ(boxes().size(), 5U);
  EXPECT_THAT(machine_.diskOf("S:\\").names(kSetup), testing::SizeIs(5));
  EXPECT_EQ(machine_.diskOf("T:\\").tree(), "");
}

TEST_F(PackExtraction, AnExitCodeThatCannotBeHadIsAFailure) {
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::ProcessExitCode
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  scan();
  EXPECT_EQ(boxes().size(), 1U);
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, AWaitThatFailsLeavesThePackOfAProgramThatStillRuns) {
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    // What the system answers for a process that has not ended.
    constexpr SystemCode kWaitFailed = 6;
    return call.kind == sim::CallKind::ProcessWait || call.kind == sim::CallKind::ProcessExitCode
               ? std::optional<SystemCode>(kWaitFailed)
               : std::nullopt;
  });
  scan();
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, AMissingSevenZipIsReportedAndShownForEachPack) {
  machine_.removeTree(PackPrograms::kSevenZip);
  putPack("a.zip", oneFile("a.ini", "a"));
  putPack("b.zip", oneFile("b.ini", "b"));
  EXPECT_TRUE(scan());
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: " + commandFor(inSetup("a.zip")),
                          "Errore in esecuzione programma: " + commandFor(inSetup("b.zip"))));
  EXPECT_THAT(boxes(),
              ElementsAre("Errore in esecuzione comando: " + commandFor(inSetup("a.zip")),
                          "Errore in esecuzione comando: " + commandFor(inSetup("b.zip"))));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, AFailingPackIsTriedAndShownOncePerProcess) {
  putPack("a.zip", {}, 2);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(scan());
  }
  EXPECT_EQ(started().size(), 1U);
  EXPECT_EQ(boxes().size(), 1U);
  EXPECT_EQ(lines().size(), 4U);
  FakeProgram next(machine_);
  OpenZipPacksInFolder(next, kSetup, kTarget, true);
  EXPECT_EQ(started().size(), 2U);
  EXPECT_EQ(boxes().size(), 2U);
}

// The scan runs for each product and side, and catalogues and command lines spell paths as they
// like.
TEST_F(PackExtraction, AFailingPackIsTriedOnceWhateverCaseItsFoldersAreGivenIn) {
  putPack("a.zip", {}, 2);
  scan();
  OpenZipPacksInFolder(program_, "s:\\LUMO\\prg\\com\\setup\\aggdovra", kTarget, true);
  scan("t:\\DOVRA");
  EXPECT_EQ(started().size(), 1U);
  EXPECT_EQ(boxes().size(), 1U);
}

TEST_F(PackExtraction, AFailingPackThatIsReplacedIsTriedAgain) {
  putPack("a.zip", {}, 2);
  scan();
  const std::string path = inSetup("a.zip");
  const sim::FileTicks before = machine_.diskOf(path).modifiedTicks(path);
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.diskOf(path).setModifiedTicks(path, before);
  scan();
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  putPack("b.zip", {}, 2);
  scan();
  putPack("b.zip", {}, 3);
  machine_.diskOf(path).setModifiedTicks(inSetup("b.zip"), before + 1);
  scan();
  EXPECT_EQ(boxes().size(), 3U);
}

TEST_F(PackExtraction, WhatAFailedPackLeftIsRemovedBeforeTheNextOne) {
  putPack("a.zip", {{"prg\\com\\setup\\aggdovra\\half.ini", "half"}, {"prg\\etc\\x", "x"}}, 2);
  putPack("b.zip", oneFile("b.ini", "b"));
  scan();
  EXPECT_FALSE(machine_.fileExists(inTarget("half.ini")));
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
}

TEST_F(PackExtraction, ReadOnlyFilesThatAFailedPackLeftAreRemovedToo) {
  putPack("a.zip", oneFile("half.ini", "half"), 2);
  putPack("b.zip", oneFile("b.ini", "b"));
  programs_.onFile = [this](const std::string& path) { machine_.diskOf(path).setReadOnly(path); };
  scan();
  EXPECT_FALSE(machine_.fileExists(inTarget("half.ini")));
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
}

TEST_F(PackExtraction, WhatAFailedPackLeftStaysWhereTheTargetIsTheWorkFolder) {
  putPack("a.zip", oneFile("half.ini", "half"), 2);
  scan(kWork);
  EXPECT_TRUE(machine_.fileExists(std::string(kWorkTree) + "\\half.ini"));
}

TEST_F(PackExtraction, LeftoversThatCannotBeRemovedEndTheScan) {
  putPack("a.zip", oneFile("half.ini", "half"), 2);
  putPack("b.zip", oneFile("b.ini", "b"));
  desktop().onBox([this](const sim::SimBox&) {
    const std::string half = std::string(kWorkTree) + "\\half.ini";
    machine_.diskOf(half).holdOpen(half, sim::Sharing::Read);
  });
  EXPECT_EQ(failureOfScan().number(), 70);
  EXPECT_TRUE(machine_.fileExists(inSetup("b.zip")));
  EXPECT_EQ(machine_.diskOf("T:\\").tree(), "");
}

TEST_F(PackExtraction, APackThatCannotBeRemovedIsReportedCopiedAndNotOpenedAgain) {
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.diskOf("S:\\").setReadOnly(inSetup("a.zip"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(scan());
  }
  EXPECT_THAT(program_.reportTexts(), ElementsAre("Errore in cancellazione file: "));
  EXPECT_EQ(started().size(), 1U);
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  scan("T:\\Altro");
  EXPECT_EQ(machine_.fileText("T:\\Altro\\prg\\com\\setup\\aggdovra\\a.ini"), "a");
}

// Two workstations that look for packs at once: nothing excludes one from the other here.
TEST_F(PackExtraction, APackThatAnotherWorkstationTookMeanwhileIsToldInABox) {
  putPack("a.zip", oneFile("a.ini", "a"));
  machine_.onCall("processes.start", [this] { machine_.removeTree(inSetup("a.zip")); });
  EXPECT_TRUE(scan());
  EXPECT_THAT(boxes(),
              ElementsAre("Errore in esecuzione comando: " + commandFor(inSetup("a.zip"))));
  EXPECT_EQ(machine_.diskOf("T:\\").tree(), "");
}

// --- What the user does while lines are logged

TEST(PackExtractionWithAForm, AClickThatOpensTheSamePacksMeanwhileLosesNothing) {
  // Before the scan's line, both openings and both removals: wherever the click falls.
  for (std::size_t round = 1; round <= 7; ++round) {
    sim::SimMachine machine;
    machine.mount("S:");
    machine.mount("T:");
    const PackPrograms programs(machine);
    machine.putFile(std::string(kSetup) + "\\a.zip", packBytes(oneFile("a.ini", "a")));
    machine.putFile(std::string(kSetup) + "\\b.zip", packBytes(oneFile("b.ini", "b")));
    RealProgram program(machine);
    sim::SimFormWindow form("frmProdTrelvStandalone");
    machine.desktop().activate(form);
    bool clicked = false;
    machine.desktop().onEvents(round, [&] {
      clicked = true;
      OpenZipPacksInFolder(program, kSetup, kTarget, true);
    });
    try {
      OpenZipPacksInFolder(program, kSetup, kTarget, true);
    } catch (const RuntimeError& failure) {
      // The click's scan removed the tree that this one was about to copy.
      EXPECT_EQ(failure.number(), 76) << round;
    }
    EXPECT_EQ(machine.fileText(std::string(kTargetTree) + "\\a.ini"), "a") << round;
    EXPECT_EQ(machine.fileText(std::string(kTargetTree) + "\\b.ini"), "b") << round;
    EXPECT_TRUE(clicked) << round;
    EXPECT_FALSE(machine.desktop().hourglass()) << round;
    EXPECT_EQ(machine.desktop().activeForm(), &form) << round;
    machine.desktop().deactivate();
  }
}

// --- Links

TEST_F(PackExtraction, ALinkInAPackIsNeverFollowed) {
  machine_.putFile("C:\\secret\\a.txt", "x");
  putPack("a.zip", oneFile("a.ini", "a"));
  programs_.onFile = [this](const std::string& path) {
    machine_.diskOf(path).putLink(std::string(kWorkTree) + "\\link", "C:\\secret");
  };
  EXPECT_EQ(failureOfScan().number(), 75);
  EXPECT_FALSE(machine_.folderExists(inTarget("link")));
  scan();
  EXPECT_EQ(machine_.fileText("C:\\secret\\a.txt"), "x");
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
}

// --- Kept ini files

TEST_F(PackExtraction, KeptIniFilesAreForgottenWhenTheTreeWasCopied) {
  const std::string file = inTarget("nerio.ini");
  machine_.putFile(file, "[Setup01]\r\nversion=1\r\n");
  putPack("a.zip", oneFile("nerio.ini", "[Setup01]\r\nversion=2\r\n"));
  std::string before;
  machine_.onCall("files.copyFile", [&] {
    // Somebody reads it between 7-Zip's end and the copy.
    before = program_.configurationFiles.read("Setup01", "version", file, 511);
  });
  scan();
  EXPECT_EQ(before, "1");
  EXPECT_EQ(program_.configurationFiles.read("Setup01", "version", file, 511), "2");
}

TEST_F(PackExtraction, KeptIniFilesAreForgottenAlsoWhenTheCopyFailed) {
  const std::string file = inTarget("1.ini");
  machine_.putFile(file, "[S]\r\nk=old\r\n");
  machine_.putFile(inTarget("2.ini"), "x");
  machine_.diskOf("T:\\").holdOpen(inTarget("2.ini"), sim::Sharing::Read);
  putPack("a.zip", {{"prg\\com\\setup\\aggdovra\\1.ini", "[S]\r\nk=new\r\n"},
                    {"prg\\com\\setup\\aggdovra\\2.ini", "y"}});
  machine_.onCall("files.copyFile", [&] { program_.configurationFiles.read("S", "k", file, 511); });
  failureOfScan();
  EXPECT_EQ(program_.configurationFiles.read("S", "k", file, 511), "new");
}

// --- One zip pack

TEST_F(PackExtraction, OneZipPackIsOpenedIntoItsDestination) {
  putPack("a.zip", {{"nerio.gz", "x"}});
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", false));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Apertura pacco zip con comando: " +
                                   commandFor(inSetup("a.zip"), "C:\\Opera")));
  EXPECT_TRUE(machine_.started()[0].waited);
  EXPECT_EQ(machine_.fileText("C:\\Opera\\nerio.gz"), "x");
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, OneZipPackIsRemovedOnDemand) {
  putPack("a.zip", {{"nerio.gz", "x"}});
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", true));
  EXPECT_EQ(lines()[1], "Gestione ProdTrelv - Rimozione pacco zip: " + inSetup("a.zip"));
  EXPECT_FALSE(machine_.fileExists(inSetup("a.zip")));
}

TEST_F(PackExtraction, OneZipPackAnswersTrueAlsoWhenItCouldNotBeOpened) {
  putPack("a.zip", {}, 2);
  for (int i = 0; i < 2; ++i) {
    // Asked for by hand: told each time.
    EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "C:\\Opera", true));
  }
  ASSERT_EQ(machine_.boxes().size(), 2U);
  EXPECT_EQ(machine_.boxes()[0].title, "TrelvManager");
  EXPECT_EQ(machine_.boxes()[0].icon, machine::BoxIcon::Critical);
  EXPECT_EQ(machine_.boxes()[0].text,
            "Errore in esecuzione comando: " + commandFor(inSetup("a.zip"), "C:\\Opera"));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
  EXPECT_EQ(lines().size(), 2U);
}

TEST_F(PackExtraction, OneZipPackWithoutDestinationIsNotOpened) {
  putPack("a.zip", {{"nerio.gz", "x"}});
  EXPECT_TRUE(OpenZipPack(program_, inSetup("a.zip"), "", true));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Cartella temporanea non disponibile: "
                                   "nessun pacco viene aperto"));
  EXPECT_TRUE(machine_.fileExists(inSetup("a.zip")));
}

// --- Packs for the decoder

class GzPacks : public PackExtraction {
 protected:
  /// A pack whose output holds these zip packs.
  static std::string gzBytes(const std::vector<std::pair<std::string, std::string>>& zips,
                             std::uint32_t exitCode = 0) {
    PackContent content;
    for (const auto& [name, bytes] : zips) {
      content.emplace_back("prg\\com\\setup\\aggdovra\\" + name, bytes);
    }
    return packBytes(content, exitCode);
  }
  static std::string zipOf(const std::string& name, const std::string& text) {
    return packBytes(oneFile(name, text));
  }
};

TEST_F(GzPacks, OnePackIsDecodedAndItsZipPacksOpened) {
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", zipOf("a.ini", "a")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  const std::string inner = std::string(kWorkTree) + "\\a.zip";
  EXPECT_THAT(
      started(),
      ElementsAre(R"("C:\Lumo\Programmi\qalbunex.exe" "D:\p\nerio.gz" "C:\Users\mario\Temp")",
                  commandFor(inner)));
  EXPECT_TRUE(machine_.started()[0].waited);
  EXPECT_TRUE(machine_.started()[0].visible);
  EXPECT_EQ(lines()[0],
            "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
            "\"C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\"");
  EXPECT_EQ(lines()[2], "Gestione ProdTrelv - Rimozione pacco zip: " + inner);
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  EXPECT_FALSE(machine_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_TRUE(machine_.fileExists("D:\\p\\nerio.gz"));
}

TEST_F(GzPacks, OnePackIsUnpackedInPlaceWhereTheTargetIsTheWorkFolder) {
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", zipOf("a.ini", "a")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kWork);
  EXPECT_EQ(machine_.diskOf("C:\\").names(kWorkTree), std::vector<std::string>{"a.ini"});
}

// The whole tree is copied: a pack that still waits in it reaches the target too.
TEST_F(GzPacks, APackThatStillWaitsIsCopiedAlong) {
  machine_.putFile("D:\\p\\nerio.gz",
                   gzBytes({{"a.zip", zipOf("a.ini", "a")}, {"b.zip", zipOf("b.ini", "b")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_THAT(machine_.diskOf("T:\\").names(kTargetTree),
              testing::UnorderedElementsAre("a.ini", "b.ini", "b.zip"));
}

TEST_F(GzPacks, AFailedZipPackDoesNotTakeTheOthersAlong) {
  machine_.putFile("D:\\p\\nerio.gz",
                   gzBytes({{"a.zip", packBytes({{"prg\\com\\setup\\aggdovra\\half.ini", "h"},
                                                 {"prg\\com\\setup\\aggdovra\\dir\\x", "x"},
                                                 {"prg\\com\\setup\\y", "y"},
                                                 {"prg\\etc\\z", "z"}},
                                                2)},
                            {"b.zip", zipOf("b.ini", "b")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_EQ(boxes().size(), 1U);
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
  EXPECT_FALSE(machine_.fileExists(inTarget("half.ini")));
  EXPECT_FALSE(machine_.folderExists(inTarget("dir")));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, ReadOnlyFilesThatAFailedZipPackLeftAreRemovedToo) {
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", packBytes(oneFile("half.ini", "h"), 2)},
                                               {"b.zip", zipOf("b.ini", "b")}}));
  programs_.onFile = [this](const std::string& path) {
    if (path.find("half.ini") != std::string::npos) {
      machine_.diskOf(path).setReadOnly(path);
    }
  };
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_FALSE(machine_.fileExists(inTarget("half.ini")));
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// The tree has the spelling of whoever made the pack.
TEST_F(GzPacks, AFailedZipPackLeavesTheOthersWhateverCaseTheTreeIsIn) {
  const std::string tree = "PRG\\Com\\SETUP\\AggDovra\\";
  machine_.putFile("D:\\p\\nerio.gz",
                   packBytes({{tree + "a.zip", packBytes(oneFile("half.ini", "h"), 2)},
                              {tree + "b.zip", zipOf("b.ini", "b")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
  EXPECT_FALSE(machine_.fileExists(inTarget("half.ini")));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, AZipPackThatFailedIsTriedAgainWhenItIsDecodedAgain) {
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", packBytes({}, 2)}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_EQ(boxes().size(), 2U);
}

TEST_F(GzPacks, AFailingDecoderIsNotTold) {
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", zipOf("a.ini", "a")}}, 3));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_EQ(machine_.fileText(inTarget("a.ini")), "a");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, ADecoderThatWritesNothingIsReportedByItsMissingFolder) {
  machine_.putFile("D:\\p\\nerio.gz", "no pack");
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  ASSERT_EQ(program_.reports().size(), 1U);
  const FakeReport& report = program_.reports()[0];
  EXPECT_EQ(report.module, "ModProdTrelvManager");
  EXPECT_EQ(report.procedure, "OpenSinglePacks");
  EXPECT_EQ(report.message, "Errore in Apertura Pacco ");
  EXPECT_EQ(report.kind, ReportKind::ProgramError);
  EXPECT_EQ(report.failure.number(), 76);
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Errore in Apertura Pacco Impossibile trovare il "
                          "percorso: C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra"));
}

TEST_F(GzPacks, ADecoderThatCannotBeStartedIsReported) {
  machine_.removeTree(PackPrograms::kDecoder);
  machine_.makeFolders(kWorkTree);
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: \"C:\\Lumo\\Programmi\\qalbunex.exe\" "
                          "\"D:\\p\\nerio.gz\" \"C:\\Users\\mario\\Temp\""));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in "
                                "cartella: \"C:\\Users\\mario\\Temp\\prg\\com\\setup\\"
                                "aggdovra\""));
}

TEST_F(GzPacks, WithoutATemporaryFolderNothingIsDecoded) {
  machine_.support().setTemporaryPath("");
  machine_.putFile("D:\\p\\nerio.gz", gzBytes({{"a.zip", zipOf("a.ini", "a")}}));
  OpenSinglePacks(program_, "D:\\p\\nerio.gz", kTarget);
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Cartella temporanea non disponibile: "
                                   "nessun pacco viene aperto"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(GzPacks, AFolderIsOpenedInTheOrderOfTheFileSystem) {
  machine_.putFile("D:\\p\\b.gz", gzBytes({{"b.zip", zipOf("same.ini", "of b")}}));
  machine_.putFile("D:\\p\\a.gz", gzBytes({{"a.zip", zipOf("same.ini", "of a")}}));
  machine_.putFile("D:\\p\\C.GZ", gzBytes({{"c.zip", zipOf("c.ini", "c")}}));
  machine_.putFile("D:\\p\\d.tar.gz", gzBytes({{"d.zip", zipOf("d.ini", "d")}}));
  machine_.putFile("D:\\p\\gz", "x");
  machine_.makeFolders("D:\\p\\e.gz");
  OpenFolderPacks(program_, "D:\\p", kTarget);
  std::vector<std::string> announced;
  for (const std::string& line : lines()) {
    if (line.rfind("Gestione ProdTrelv - Apertura pacco :", 0) == 0) {
      announced.push_back(line);
    }
  }
  // The lines name the target, not the folder that holds the packs.
  EXPECT_THAT(announced, ElementsAre("Gestione ProdTrelv - Apertura pacco :T:\\Dovra\\b.gz",
                                     "Gestione ProdTrelv - Apertura pacco :T:\\Dovra\\a.gz",
                                     "Gestione ProdTrelv - Apertura pacco :T:\\Dovra\\d.tar.gz"));
  EXPECT_EQ(machine_.fileText(inTarget("same.ini")), "of a");
  EXPECT_EQ(started()[0], R"("C:\Lumo\Programmi\qalbunex.exe" "D:\p\b.gz" "C:\Users\mario\Temp")");
  EXPECT_EQ(started().size(), 6U);
  EXPECT_TRUE(machine_.fileExists("D:\\p\\a.gz"));
}

TEST_F(GzPacks, AFolderThatIsMissingIsReported) {
  OpenFolderPacks(program_, "D:\\no", kTarget);
  ASSERT_EQ(program_.reports().size(), 1U);
  const FakeReport& report = program_.reports()[0];
  EXPECT_EQ(report.module, "ModProdTrelvManager");
  EXPECT_EQ(report.procedure, "OpenFolderPacks");
  EXPECT_EQ(report.message, "Errore in Apertura Pacchi");
  EXPECT_EQ(report.failure.number(), 76);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in Apertura PacchiImpossibile "
                                   "trovare il percorso: D:\\no"));
}

TEST_F(GzPacks, PacksThatCouldNotBeOpenedAreNotedOnceEach) {
  program_.state.packs.unopened = {"vecchio"};
  OpenZipPack(program_, inSetup("manca.zip"), "D:\\Out", false);
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre("vecchio", inSetup("manca.zip")));
  machine_.putFile(inSetup("guasto.gz"), "no pack");
  OpenSinglePacks(program_, inSetup("guasto.gz"), kTarget);
  OpenFolderPacks(program_, "S:\\Manca", kTarget);
  EXPECT_THAT(program_.state.packs.unopened,
              ElementsAre("vecchio", inSetup("manca.zip"), inSetup("guasto.gz"), "S:\\Manca"));
}

TEST_F(GzPacks, APackWhoseDecoderFailsIsNotedAlsoWhereTheTreeOfAnotherStands) {
  machine_.makeFolders(kWorkTree);
  machine_.putFile(inSetup("guasto.gz"), "no pack");
  OpenSinglePacks(program_, inSetup("guasto.gz"), kTarget);
  EXPECT_THAT(program_.state.packs.unopened, ElementsAre(inSetup("guasto.gz")));
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(GzPacks, AFailingPackDoesNotEndTheScanOfItsFolder) {
  machine_.putFile("D:\\p\\a.gz", "no pack");
  machine_.putFile("D:\\p\\b.gz", gzBytes({{"b.zip", zipOf("b.ini", "b")}}));
  OpenFolderPacks(program_, "D:\\p", kTarget);
  EXPECT_THAT(program_.reportTexts(), ElementsAre("Errore in Apertura Pacco "));
  EXPECT_EQ(machine_.fileText(inTarget("b.ini")), "b");
}

}  // namespace
}  // namespace trelv::tests
