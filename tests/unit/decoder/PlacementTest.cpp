#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/RuntimeError.h"
#include "decoder/Placement.h"
#include "support/decoder/MemoryTree.h"

namespace trelv::decoder {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What ends the work; empty when nothing does.
std::string failureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RuntimeError& failure) {
    return failure.description();
  }
  return "";
}

TEST(TemporaryFolder, TakesANameThatIsFree) {
  MemoryTree tree;
  tree.putFolder("~QALBUNEX1.TMP");
  tree.put("~qalbunex2.tmp", "of somebody");
  {
    const TemporaryFolder folder(tree);
    EXPECT_EQ(folder.name(), "~qalbunex3.tmp");
    EXPECT_EQ(folder.name("a/b"), "~qalbunex3.tmp/a/b");
    EXPECT_TRUE(tree.stands("~qalbunex3.tmp"));
  }
  EXPECT_THAT(tree.names(), ElementsAre("~QALBUNEX1.TMP/", "~qalbunex2.tmp"));
}

TEST(TemporaryFolder, IsRemovedWithAllThatIsInIt) {
  MemoryTree tree;
  {
    const TemporaryFolder folder(tree);
    tree.putFolder(folder.name("a"));
    tree.putFolder(folder.name("a/b"));
    tree.put(folder.name("a/b/c"), "x");
    tree.put(folder.name("d"), "x");
  }
  EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(TemporaryFolder, WhichCannotBeRemovedStaysAndTheWorkEnds) {
  MemoryTree tree;
  {
    const TemporaryFolder folder(tree);
    tree.put(folder.name("a"), "x");
    tree.failAlways("removeFile", system_code::kSharingViolation);
  }
  EXPECT_THAT(tree.names(), ElementsAre("~qalbunex1.tmp/", "~qalbunex1.tmp/a"));
}

TEST(TemporaryFolder, WhichCannotBeMadeIsAFailure) {
  MemoryTree tree;
  tree.failAlways("makeFolder", system_code::kAccessDenied);
  EXPECT_EQ(failureOf([&] { const TemporaryFolder folder(tree); }),
            "Autorizzazione negata: C:\\T\\~qalbunex1.tmp");
}

class PlacementTest : public testing::Test {
 protected:
  /// Unpacks "prg/new.zip" and "prg/com/old.zip" and gives them their names.
  std::string place() {
    TemporaryFolder folder(tree_);
    tree_.putFolder(folder.name("prg"));
    tree_.put(folder.name("prg/new.zip"), "new");
    tree_.putFolder(folder.name("prg/com"));
    tree_.put(folder.name("prg/com/old.zip"), "newer");
    return failureOf([&] { folder.place(); });
  }

  MemoryTree tree_;
};

TEST_F(PlacementTest, NewFoldersAreMovedAsAWhole) {
  EXPECT_EQ(place(), "");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/com/", "prg/com/old.zip", "prg/new.zip"));
  EXPECT_LT(tree_.calls(), 10);
}

TEST_F(PlacementTest, AFolderThatStandsKeepsWhatIsInIt) {
  tree_.putFolder("PRG");
  tree_.putFolder("PRG/com");
  tree_.put("PRG/com/old.zip", "old");
  tree_.put("PRG/com/mine.txt", "mine");
  EXPECT_EQ(place(), "");
  EXPECT_EQ(tree_.at("prg/com/old.zip").content, "newer");
  EXPECT_EQ(tree_.at("prg/com/mine.txt").content, "mine");
  EXPECT_EQ(tree_.at("prg/new.zip").content, "new");
  EXPECT_EQ(tree_.names().size(), 5U);
}

TEST_F(PlacementTest, AFolderThatCannotBeMovedIsFilledFileByFile) {
  tree_.failAlways("moveFolder", system_code::kAccessDenied);
  EXPECT_EQ(place(), "");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/com/", "prg/com/old.zip", "prg/new.zip"));
}

TEST_F(PlacementTest, ALinkInTheWayOfAFolderStopsAllBeforeAnythingIsMoved) {
  tree_.putFolder("prg");
  tree_.putLink("prg/COM");
  EXPECT_EQ(place(),
            "nella cartella di destinazione c'è un collegamento al posto di una voce del pacco: "
            "\"C:\\T\\prg\\com\"");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/COM@"));
}

TEST_F(PlacementTest, ALinkInTheWayOfAFileStopsAllBeforeAnythingIsMoved) {
  tree_.putFolder("prg");
  tree_.putLink("prg/new.zip");
  EXPECT_NE(place(), "");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/new.zip@"));
}

TEST_F(PlacementTest, ALinkThatCameWhileFoldersWereMovedStopsItToo) {
  tree_.putFolder("prg");
  tree_.before("moveFolder", [this] { tree_.putLink("prg/new.zip"); });
  EXPECT_EQ(place(),
            "nella cartella di destinazione c'è un collegamento al posto di una voce del pacco: "
            "\"C:\\T\\prg\\new.zip\"");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/com/", "prg/com/old.zip", "prg/new.zip@"));
}

TEST_F(PlacementTest, AFolderThatCanNeitherBeMovedNorMadeIsNamed) {
  tree_.before("moveFolder",
               [this] { tree_.failAlways("makeFolder", system_code::kSharingViolation); });
  tree_.failAlways("moveFolder", system_code::kAccessDenied);
  EXPECT_EQ(place(), "File in uso da un altro programma: C:\\T\\prg");
  EXPECT_THAT(tree_.names(), IsEmpty());
}

TEST_F(PlacementTest, AFileInTheWayOfAFolderStopsAllBeforeAnythingIsMoved) {
  tree_.putFolder("prg");
  tree_.put("prg/com", "a file");
  EXPECT_EQ(place(),
            "nella cartella di destinazione c'è un file al posto di una cartella del pacco: "
            "\"C:\\T\\prg\\com\"");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/com"));
}

TEST_F(PlacementTest, AFolderInTheWayOfAFileStopsAllBeforeAnythingIsMoved) {
  tree_.putFolder("prg");
  tree_.putFolder("prg/new.zip");
  EXPECT_EQ(place(),
            "nella cartella di destinazione c'è una cartella al posto di un file del pacco: "
            "\"C:\\T\\prg\\new.zip\"");
  EXPECT_THAT(tree_.names(), ElementsAre("prg/", "prg/new.zip/"));
}

TEST_F(PlacementTest, AFolderWithMoreEntriesThanAreRememberedIsPlacedWhole) {
  constexpr int kMany = 20000;
  {
    TemporaryFolder folder(tree_);
    for (int number = 0; number < kMany; ++number) {
      tree_.put(folder.name("f" + std::to_string(number)), "");
    }
    EXPECT_EQ(failureOf([&] { folder.place(); }), "");
  }
  EXPECT_EQ(tree_.names().size(), static_cast<std::size_t>(kMany));
  EXPECT_TRUE(tree_.stands("f19999"));
}

}  // namespace
}  // namespace trelv::decoder
