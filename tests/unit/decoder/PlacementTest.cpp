#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/RuntimeError.h"
#include "decoder/Placement.h"
#include "unit/decoder/Lay.h"

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
  lay(tree, {"~QALBUNEX1.TMP/", "~qalbunex2.tmp"});
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
    lay(tree, {folder.name("a/"), folder.name("a/b/"), folder.name("a/b/c"), folder.name("d")});
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

/// Unpacks "prg/new.zip" and "prg/com/old.zip" and gives them their names.
std::string placeIn(MemoryTree& tree) {
  TemporaryFolder folder(tree);
  lay(tree, {folder.name("prg/"), folder.name("prg/com/")});
  tree.put(folder.name("prg/new.zip"), "new");
  tree.put(folder.name("prg/com/old.zip"), "newer");
  return failureOf([&] { folder.place(); });
}

TEST(Placement, NewFoldersAreMovedAsAWholeOrFilledFileByFile) {
  for (const bool movable : {true, false}) {
    MemoryTree tree;
    if (!movable) {
      tree.failAlways("moveFolder", system_code::kAccessDenied);
    }
    EXPECT_EQ(placeIn(tree), "");
    EXPECT_THAT(tree.names(), ElementsAre("prg/", "prg/com/", "prg/com/old.zip", "prg/new.zip"));
    EXPECT_TRUE(!movable || tree.calls() < 10);
  }
}

TEST(Placement, AFolderThatStandsKeepsWhatIsInIt) {
  MemoryTree tree;
  lay(tree, {"PRG/", "PRG/com/", "PRG/com/old.zip", "PRG/com/mine.txt"});
  EXPECT_EQ(placeIn(tree), "");
  EXPECT_EQ(tree.at("prg/com/old.zip").content, "newer");
  EXPECT_EQ(tree.at("prg/com/mine.txt").content, "old");
  EXPECT_EQ(tree.at("prg/new.zip").content, "new");
  EXPECT_EQ(tree.names().size(), 5U);
}

TEST(Placement, WhatIsInTheWayStopsAllBeforeAnythingIsMoved) {
  const std::pair<const char*, const char*> rows[]{
      {"prg/COM@", "un collegamento al posto di una voce del pacco: \"C:\\T\\prg\\com\""},
      {"prg/new.zip@", "un collegamento al posto di una voce del pacco: \"C:\\T\\prg\\new.zip\""},
      {"prg/com", "un file al posto di una cartella del pacco: \"C:\\T\\prg\\com\""},
      {"prg/new.zip/", "una cartella al posto di un file del pacco: \"C:\\T\\prg\\new.zip\""}};
  for (const auto& [stands, failure] : rows) {
    MemoryTree tree;
    lay(tree, {"prg/", stands});
    EXPECT_EQ(placeIn(tree), std::string("nella cartella di destinazione c'è ") + failure);
    EXPECT_THAT(tree.names(), ElementsAre("prg/", stands));
  }
}

TEST(Placement, ALinkThatCameWhileFoldersWereMovedStopsItToo) {
  MemoryTree tree;
  lay(tree, {"prg/"});
  tree.before("moveFolder", [&] { tree.putLink("prg/new.zip"); });
  EXPECT_EQ(placeIn(tree),
            "nella cartella di destinazione c'è un collegamento al posto di una voce del pacco: "
            "\"C:\\T\\prg\\new.zip\"");
  EXPECT_THAT(tree.names(), ElementsAre("prg/", "prg/com/", "prg/com/old.zip", "prg/new.zip@"));
}

TEST(Placement, AFolderThatCanNeitherBeMovedNorMadeIsNamed) {
  MemoryTree tree;
  tree.before("moveFolder", [&] { tree.failAlways("makeFolder", system_code::kSharingViolation); });
  tree.failAlways("moveFolder", system_code::kAccessDenied);
  EXPECT_EQ(placeIn(tree), "File in uso da un altro programma: C:\\T\\prg");
  EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(Placement, AFolderWithMoreEntriesThanAreRememberedIsPlacedWhole) {
  MemoryTree tree;
  constexpr int kMany = 20000;
  {
    TemporaryFolder folder(tree);
    for (int number = 0; number < kMany; ++number) {
      tree.put(folder.name("f" + std::to_string(number)), "");
    }
    EXPECT_EQ(failureOf([&] { folder.place(); }), "");
  }
  EXPECT_EQ(tree.names().size(), static_cast<std::size_t>(kMany));
  EXPECT_TRUE(tree.stands("f19999"));
}

}  // namespace
}  // namespace trelv::decoder
