#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "packs/SetupTreeCopy.h"
#include "platform/modLibrary.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::CopySetupTree;
using modProdTrelvManager::RemoveCopiesUnderWay;

constexpr const char* kSource = "C:\\w";
constexpr const char* kTarget = "T:\\t";
/// What a copy of this process is called while it is under way.
constexpr const char* kUnderWay = "TrelvManager-STAZIONE-1-4711.tmp";

/// A tree on C: that is copied onto a folder of the share T:.
class SetupTreeCopy : public testing::Test {
 protected:
  SetupTreeCopy() {
    machine_.mount("T:");
    machine_.makeFolders(kTarget);
    machine_.makeFolders(kSource);
  }

  /// Files of the source, each with the text "new"; files of the target with the text "old".
  void bring(const std::string& paths) { put(kSource, paths, "new"); }
  void have(const std::string& paths) { put(kTarget, paths, "old"); }
  void put(const std::string& folder, const std::string& paths, const std::string& text) {
    for (const std::string& path : wordsOf(paths)) {
      machine_.putFile(folder + "\\" + path, text);
    }
  }
  /// Text of a file of the target, "-" where there is none.
  std::string brought(const std::string& path) {
    const std::string full = std::string(kTarget) + "\\" + path;
    return machine_.fileExists(full) ? machine_.fileText(full) : "-";
  }
  static std::string inTarget(const std::string& path) {
    return std::string(kTarget) + "\\" + path;
  }

  RuntimeError copy() {
    try {
      CopySetupTree(program_, kSource, kTarget);
      return {};
    } catch (const RuntimeError& failure) {
      return failure;
    }
  }
  /// Files in the order in which they got their names, below the target.
  std::vector<std::string> arrivals() {
    std::vector<std::string> paths;
    for (const sim::SimCall& call : machine_.callLog().all()) {
      if (call.kind == sim::CallKind::FileReplace) {
        paths.push_back(call.target.substr(std::string(kTarget).size() + 1));
      }
    }
    return paths;
  }
  sim::SimDisk& share() { return machine_.diskOf("T:\\"); }
  bool leavesNoTemporary() { return share().tree().find(".tmp") == std::string::npos; }

  sim::SimMachine machine_;
  FakeProgram program_{machine_};
};

TEST_F(SetupTreeCopy, BringsEverythingAndKeepsWhatOnlyTheTargetHas) {
  bring("a.txt e\\f\\b.txt both\\a.txt");
  machine_.makeFolders("C:\\w\\empty");
  have("both\\A.TXT both\\kept.txt");
  EXPECT_EQ(copy().number(), 0);
  for (const char* const path : {"a.txt", "e\\f\\b.txt", "both\\a.txt"}) {
    EXPECT_EQ(brought(path), "new") << path;
  }
  EXPECT_EQ(brought("both\\kept.txt"), "old");
  EXPECT_TRUE(machine_.folderExists(inTarget("empty")));
  EXPECT_EQ(machine_.fileText("C:\\w\\e\\f\\b.txt"), "new");
  EXPECT_TRUE(leavesNoTemporary());
}

TEST_F(SetupTreeCopy, FilesKeepTheirDates) {
  bring("a.txt");
  machine_.diskOf("C:\\").setModified("C:\\w\\a.txt", {2020, 1, 2, 3, 4, 6});
  copy();
  EXPECT_EQ(share().modifiedTicks(inTarget("a.txt")),
            machine_.diskOf("C:\\").modifiedTicks("C:\\w\\a.txt"));
}

TEST_F(SetupTreeCopy, MoreThanAHundredFoldersInEachOtherAreNotCopied) {
  std::string deep;
  for (int level = 0; level < 100; ++level) {
    deep += "d\\";
  }
  bring(deep + "a.txt");
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought(deep + "a.txt"), "new");
  bring("b.txt " + deep + "d\\a.txt");
  const std::string before = share().tree();
  const RuntimeError failure = copy();
  EXPECT_EQ(failure.number(), 75);
  EXPECT_EQ(failure.description(), "Troppi livelli di cartelle: C:\\w\\" + deep + "d");
  EXPECT_EQ(share().tree(), before);
  RemoveCopiesUnderWay(program_, kSource, kTarget);
}

// --- The order

TEST_F(SetupTreeCopy, WhatNamesAVersionArrivesBehindWhatItStarts) {
  bring(
      "AGDVCOMP.INI q2.ini q2.exe conf\\zb.INI conf\\zb.dat tarsena2\\x\\setup.exe z.ini z\\z.exe");
  EXPECT_EQ(copy().number(), 0);
  EXPECT_THAT(arrivals(), ElementsAre("conf\\zb.dat", "tarsena2\\x\\setup.exe", "z\\z.exe",
                                      "conf\\zb.INI", "q2.exe", "q2.ini", "z.ini", "AGDVCOMP.INI"));
}

TEST_F(SetupTreeCopy, ACatalogueBelowTheTreeIsAFileAsAnyOther) {
  bring("agdvcomp.ini old\\agdvcomp.ini a.txt");
  copy();
  EXPECT_THAT(arrivals(), ElementsAre("old\\agdvcomp.ini", "a.txt", "agdvcomp.ini"));
}

TEST_F(SetupTreeCopy, AFileInUseKeepsAllThatNamesAVersionFromArriving) {
  bring("q2.ini agdvcomp.ini tarsena2\\1.exe tarsena2\\2.exe");
  have("q2.ini agdvcomp.ini tarsena2\\1.exe tarsena2\\2.exe");
  share().holdOpen(inTarget("tarsena2\\2.exe"), sim::Sharing::Read);
  const RuntimeError failure = copy();
  EXPECT_EQ(failure.number(), 70);
  EXPECT_EQ(failure.description(), "File in uso da un altro programma: T:\\t\\tarsena2\\2.exe");
  EXPECT_EQ(brought("tarsena2\\1.exe"), "new");
  EXPECT_EQ(brought("tarsena2\\2.exe"), "old");
  EXPECT_EQ(brought("q2.ini"), "old");
  EXPECT_EQ(brought("agdvcomp.ini"), "old");
  EXPECT_TRUE(leavesNoTemporary());
  // Delivered once more, it arrives whole.
  share().release(inTarget("tarsena2\\2.exe"));
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("tarsena2\\2.exe"), "new");
  EXPECT_EQ(brought("agdvcomp.ini"), "new");
}

// --- Each file whole

TEST_F(SetupTreeCopy, NoFileIsMissingOrHalfUnderItsNameWhileItIsReplaced) {
  bring("a\\1.exe a.ini");
  have("a\\1.exe a.ini");
  for (const char* const call : {"files.copyFile", "files.replaceFile"}) {
    for (const char* const path : {"a\\1.exe", "a.ini"}) {
      machine_.onCall(std::string(call) + " " +
                          (call == std::string("files.copyFile")
                               ? "C:\\w\\" + std::string(path)
                               : modLibrary::ParentPath(inTarget(path)) + "\\" + kUnderWay),
                      [this, path] { EXPECT_EQ(brought(path), "old") << path; });
    }
  }
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("a\\1.exe"), "new");
}

TEST_F(SetupTreeCopy, AFullDiskLeavesWholeFilesAndNoTemporary) {
  machine_.putFile("C:\\w\\a.txt", std::string(100, 'n'));
  have("a.txt");
  share().setCapacity(50);
  const RuntimeError failure = copy();
  EXPECT_EQ(failure.number(), 61);
  EXPECT_THAT(failure.description(), HasSubstr("T:\\t\\a.txt"));
  EXPECT_EQ(brought("a.txt"), "old");
  EXPECT_TRUE(leavesNoTemporary());
}

TEST_F(SetupTreeCopy, ReadOnlyFilesAreReplacedOnBothSides) {
  bring("a.txt b.txt");
  have("a.txt");
  share().setReadOnly(inTarget("a.txt"));
  machine_.diskOf("C:\\").setReadOnly("C:\\w\\b.txt");
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("a.txt"), "new");
  EXPECT_TRUE(share().isReadOnly(inTarget("b.txt")));
  EXPECT_EQ(copy().number(), 0) << "once more";
  EXPECT_TRUE(leavesNoTemporary());
}

TEST_F(SetupTreeCopy, AReadOnlyFileInUseStaysReadOnly) {
  bring("a.txt");
  have("a.txt");
  share().setReadOnly(inTarget("a.txt"));
  share().holdOpen(inTarget("a.txt"), sim::Sharing::Read);
  EXPECT_EQ(copy().description(), "File in uso da un altro programma: T:\\t\\a.txt");
  EXPECT_TRUE(share().isReadOnly(inTarget("a.txt")));
  EXPECT_TRUE(leavesNoTemporary());
}

TEST_F(SetupTreeCopy, ATemporaryThatIsReadOnlyLikeItsFileGoesToo) {
  bring("a.txt");
  have("a.txt");
  machine_.diskOf("C:\\").setReadOnly("C:\\w\\a.txt");
  share().holdOpen(inTarget("a.txt"), sim::Sharing::Read);
  EXPECT_EQ(copy().number(), 70);
  EXPECT_TRUE(leavesNoTemporary());
}

// A set-up of an earlier pack runs by now, and the next pack of the search copies it again.
TEST_F(SetupTreeCopy, AFileInUseThatHasTheSameContentCountsAsCopied) {
  bring("1.exe 2.exe a.ini");
  copy();
  const std::shared_ptr<void> running = share().run(inTarget("1.exe"));
  share().setReadOnly(inTarget("2.exe"));
  share().holdOpen(inTarget("2.exe"), sim::Sharing::Read);
  machine_.putFile("C:\\w\\a.ini", "newer");
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("a.ini"), "newer");
  EXPECT_TRUE(leavesNoTemporary());
  machine_.putFile("C:\\w\\1.exe", "nex");
  EXPECT_EQ(copy().number(), 70) << "other content of the same length";
}

TEST_F(SetupTreeCopy, RightsAreNotTakenForUse) {
  bring("a.txt");
  have("a.txt");
  share().denyWriting(kTarget);
  EXPECT_EQ(copy().description(), "Autorizzazione negata: T:\\t\\a.txt");
  EXPECT_EQ(brought("a.txt"), "old");
  EXPECT_EQ(machine_.callLog().countOf("files.clearReadOnly"), 0U);
}

// --- What a copy meets

TEST_F(SetupTreeCopy, AFileInThePlaceOfAFolderIs58AndTheReverse70) {
  bring("a.txt e\\1.txt");
  have("e");
  EXPECT_EQ(copy().number(), 58);
  EXPECT_EQ(brought("e"), "old");
  EXPECT_EQ(brought("a.txt"), "-") << "told before the first file";
  share().removeTree(inTarget("e"));
  share().makeFolders(inTarget("a.txt"));
  EXPECT_EQ(copy().number(), 70);
  EXPECT_TRUE(machine_.folderExists(inTarget("a.txt")));
  EXPECT_TRUE(leavesNoTemporary());
}

TEST_F(SetupTreeCopy, NeedsASourceAndATarget) {
  bring("a.txt");
  share().removeTree(kTarget);
  share().put("T:\\t", "x");
  EXPECT_EQ(copy().number(), 58);
  machine_.removeTree(kSource);
  share().removeTree(kTarget);
  const RuntimeError failure = copy();
  EXPECT_EQ(failure.number(), 76);
  EXPECT_EQ(failure.description(), "Impossibile trovare il percorso: C:\\w");
  EXPECT_FALSE(machine_.folderExists(kTarget));
}

TEST_F(SetupTreeCopy, AFileThatIsGoneIsNamedAndNotItsTarget) {
  bring("a\\1.txt");
  have("a\\1.txt");
  machine_.onCall("files.copyFile", [this] { machine_.removeTree("C:\\w\\a"); });
  const RuntimeError failure = copy();
  EXPECT_THAT(failure.description(), HasSubstr("C:\\w\\a\\1.txt"));
  EXPECT_EQ(brought("a\\1.txt"), "old");
}

TEST_F(SetupTreeCopy, AFolderOfTheTargetThatIsGoneIsNamed) {
  bring("a\\1.txt");
  machine_.onCall("files.copyFile", [this] { share().removeTree(inTarget("a")); });
  EXPECT_THAT(copy().description(), HasSubstr("T:\\t\\a\\1.txt"));
}

TEST_F(SetupTreeCopy, ALinkIsRefusedBeforeAnythingIsCopied) {
  machine_.putFile("C:\\secret\\a.txt", "x");
  bring("a.txt");
  for (const bool toFolder : {true, false}) {
    machine_.diskOf("C:\\").putLink("C:\\w\\link", toFolder ? "C:\\secret" : "C:\\secret\\a.txt",
                                    toFolder);
    const RuntimeError failure = copy();
    EXPECT_EQ(failure.number(), 75);
    EXPECT_EQ(failure.description(), "Collegamento non copiato: C:\\w\\link");
    machine_.removeTree("C:\\w\\link");
  }
  EXPECT_THAT(share().names(kTarget), IsEmpty());
}

// --- Temporaries

TEST_F(SetupTreeCopy, TemporariesAreNamedForComputerSessionAndProcess) {
  bring("a.txt");
  machine_.system().setProcessId(7);
  machine_.system().setSessionId(3);
  machine_.system().setComputerName("UFFICIO");
  copy();
  EXPECT_EQ(machine_.callLog().countOf("files.copyFile C:\\w\\a.txt -> "
                                       "T:\\t\\TrelvManager-UFFICIO-3-7.tmp"),
            1U);
}

TEST_F(SetupTreeCopy, WhatACopyThatWasEndedByForceLeftGoesWithTheNextOne) {
  bring("a\\1.txt");
  have(
      "a\\TrelvManager-ALTRA-2-99.tmp TrelvManager-STAZIONE-1-1.TMP a\\x.tmp "
      "altra\\TrelvManager-ALTRA-2-99.tmp");
  share().setReadOnly(inTarget("a\\TrelvManager-ALTRA-2-99.tmp"));
  copy();
  EXPECT_EQ(brought("a\\TrelvManager-ALTRA-2-99.tmp"), "-");
  EXPECT_EQ(brought("TrelvManager-STAZIONE-1-1.TMP"), "-");
  EXPECT_EQ(brought("a\\x.tmp"), "old") << "somebody else's";
  EXPECT_EQ(brought("altra\\TrelvManager-ALTRA-2-99.tmp"), "old") << "not of this tree";
}

TEST_F(SetupTreeCopy, OneThatAnotherWorkstationTakesAwayIsMadeAgain) {
  bring("a.txt");
  machine_.onCall("files.replaceFile", [this] { share().removeTree(inTarget(kUnderWay)); });
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("a.txt"), "new");
}

TEST_F(SetupTreeCopy, CopiesUnderWayAreRemovedFromTheFoldersOfTheTree) {
  bring("a\\b\\1.txt");
  have("a\\b\\TrelvManager-ALTRA-2-99.tmp TrelvManager-ALTRA-2-99.tmp");
  RemoveCopiesUnderWay(program_, kSource, kTarget);
  EXPECT_TRUE(leavesNoTemporary());
  EXPECT_EQ(brought("a\\b\\1.txt"), "-");
  RemoveCopiesUnderWay(program_, "C:\\manca", "T:\\manca");
}

// --- What others have in hand, and hidden files

TEST_F(SetupTreeCopy, AFileThatAScannerHoldsForAMomentIsWaitedFor) {
  bring("a.txt b.txt");
  have("a.txt");
  sim::SimDisk& share = machine_.diskOf(kTarget);
  share.holdOpen(inTarget("a.txt"), sim::Sharing::None);
  machine_.clock().after(1500, [&share] { share.release(inTarget("a.txt")); });
  EXPECT_EQ(copy().number(), 0);
  EXPECT_EQ(brought("a.txt"), "new");
  EXPECT_EQ(brought("b.txt"), "new");
}

TEST_F(SetupTreeCopy, AHiddenFileIsOverwrittenAndAHiddenOneCopiedAgain) {
  bring("a.txt hidden.txt");
  have("a.txt");
  machine_.diskOf(kTarget).setConcealed(inTarget("a.txt"));
  machine_.diskOf(kSource).setConcealed(std::string(kSource) + "\\hidden.txt");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(copy().number(), 0);
    EXPECT_EQ(brought("a.txt"), "new");
    EXPECT_EQ(brought("hidden.txt"), "new");
  }
  EXPECT_EQ(machine_.clock().paused(), 0U);
}

}  // namespace
}  // namespace trelv::tests
