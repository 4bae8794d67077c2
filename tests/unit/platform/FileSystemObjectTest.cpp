#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "platform/FileSystemObject.h"
#include "sim/SimMachine.h"

namespace trelv {
namespace {

class FileSystemObjectTest : public testing::Test {
 protected:
  /// Number of the failure that `action` raises, 0 when it raises none.
  template <class Action>
  static std::int32_t failureOf(Action&& action) {
    try {
      action();
    } catch (const RuntimeError& failure) {
      return failure.number();
    }
    return 0;
  }

  sim::SimMachine machine;
  FileSystemObject object{machine.machine().files};
};

TEST_F(FileSystemObjectTest, TellsFilesFromFolders) {
  machine.putFile("C:\\d\\a.txt", "x");
  EXPECT_TRUE(object.fileExists("C:\\d\\a.txt"));
  EXPECT_FALSE(object.folderExists("C:\\d\\a.txt"));
  EXPECT_TRUE(object.folderExists("C:\\d"));
  EXPECT_FALSE(object.fileExists("C:\\d"));
  EXPECT_TRUE(object.fileExists("c:\\D\\A.TXT"));
}

TEST_F(FileSystemObjectTest, WhatCannotBeLookedAtMayExist) {
  machine.putFile("C:\\d\\a.txt", "x");
  EXPECT_TRUE(object.mayExist("C:\\d\\a.txt"));
  EXPECT_TRUE(object.mayExist("C:\\d"));
  EXPECT_FALSE(object.mayExist("C:\\d\\b.txt"));
  EXPECT_FALSE(object.mayExist("C:\\e\\b.txt"));
  machine.callLog().setInjector(
      [](const sim::SimCall&) { return std::optional<SystemCode>(system_code::kBadNetPath); });
  EXPECT_TRUE(object.mayExist("C:\\d\\b.txt"));
}

TEST_F(FileSystemObjectTest, OnlyAWritableFileOrNothingIsReplaceable) {
  machine.putFile("C:\\d\\a.txt", "x");
  const auto replaceable = [&](const char* path) {
    return failureOf([&] { object.requireReplaceable(path); });
  };
  EXPECT_EQ(replaceable("C:\\d\\a.txt"), 0);
  EXPECT_EQ(replaceable("C:\\d\\b.txt"), 0);
  EXPECT_EQ(replaceable("C:\\e\\b.txt"), 0);
  EXPECT_EQ(replaceable("C:\\d"), 70);
  ASSERT_EQ(machine.files().setReadOnly("C:\\d\\a.txt", true), system_code::kSuccess);
  EXPECT_EQ(replaceable("C:\\d\\a.txt"), 70);
  machine.callLog().setInjector(
      [](const sim::SimCall&) { return std::optional<SystemCode>(system_code::kBadNetPath); });
  EXPECT_EQ(replaceable("C:\\d\\b.txt"), 76);
}

TEST_F(FileSystemObjectTest, TakesATrailingBackslashForFoldersOnly) {
  machine.putFile("C:\\d\\a.txt", "x");
  EXPECT_TRUE(object.folderExists("C:\\d\\"));
  EXPECT_FALSE(object.fileExists("C:\\d\\a.txt\\"));
  EXPECT_FALSE(object.folderExists("C:\\d\\a.txt\\"));
}

TEST_F(FileSystemObjectTest, KnowsRootsAndNothingOfEmptyPaths) {
  EXPECT_TRUE(object.folderExists("C:\\"));
  EXPECT_FALSE(object.folderExists("Q:\\"));
  EXPECT_FALSE(object.folderExists(""));
  EXPECT_FALSE(object.fileExists(""));
}

TEST_F(FileSystemObjectTest, MakesOneFolder) {
  object.createFolder("C:\\d");
  object.createFolder("C:\\d\\e\\");
  EXPECT_TRUE(machine.folderExists("C:\\d\\e"));
}

TEST_F(FileSystemObjectTest, RefusesToMakeAnExistingFolder) {
  machine.makeFolders("C:\\d");
  EXPECT_EQ(failureOf([&] { object.createFolder("C:\\d"); }), 58);
}

TEST_F(FileSystemObjectTest, RefusesToMakeAFolderWithoutItsParent) {
  EXPECT_EQ(failureOf([&] { object.createFolder("C:\\d\\e"); }), 76);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
}

TEST_F(FileSystemObjectTest, DeletesAFile) {
  machine.putFile("C:\\a.txt", "x");
  object.deleteFile("C:\\a.txt", false);
  EXPECT_FALSE(machine.fileExists("C:\\a.txt"));
}

TEST_F(FileSystemObjectTest, DeletingAMissingFileIs53WhereverItIsMissing) {
  machine.makeFolders("C:\\d");
  EXPECT_EQ(failureOf([&] { object.deleteFile("C:\\a.txt", false); }), 53);
  EXPECT_EQ(failureOf([&] { object.deleteFile("C:\\no\\a.txt", false); }), 53);
  EXPECT_EQ(failureOf([&] { object.deleteFile("C:\\d", false); }), 53);
}

TEST_F(FileSystemObjectTest, DeletesAReadOnlyFileWithForceOnly) {
  machine.putFile("C:\\a.txt", "x");
  machine.diskOf("C:\\").setReadOnly("C:\\a.txt");
  EXPECT_EQ(failureOf([&] { object.deleteFile("C:\\a.txt", false); }), 70);
  EXPECT_TRUE(machine.fileExists("C:\\a.txt"));
  object.deleteFile("C:\\a.txt", true);
  EXPECT_FALSE(machine.fileExists("C:\\a.txt"));
}

TEST_F(FileSystemObjectTest, AFileInUseIs70AndItsDescriptionNamesIt) {
  machine.putFile("C:\\a.txt", "x");
  machine.diskOf("C:\\").holdOpen("C:\\a.txt", sim::Sharing::Read);
  try {
    object.deleteFile("C:\\a.txt", false);
    FAIL() << "deleted";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), 70);
    EXPECT_EQ(failure.description(), "File in uso da un altro programma: C:\\a.txt");
  }
}

TEST_F(FileSystemObjectTest, DeletesAFolderWithEverythingInIt) {
  machine.putFile("C:\\d\\e\\f\\a.txt", "x");
  machine.putFile("C:\\d\\b.txt", "x");
  machine.makeFolders("C:\\d\\empty");
  object.deleteFolder("C:\\d", false);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
}

TEST_F(FileSystemObjectTest, DeletesReadOnlyContentWithForceOnly) {
  machine.putFile("C:\\d\\e\\a.txt", "x");
  machine.diskOf("C:\\").setReadOnly("C:\\d\\e\\a.txt");
  EXPECT_EQ(failureOf([&] { object.deleteFolder("C:\\d", false); }), 70);
  EXPECT_TRUE(machine.fileExists("C:\\d\\e\\a.txt"));
  object.deleteFolder("C:\\d", true);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
}

TEST_F(FileSystemObjectTest, StopsAtTheFirstFailure) {
  machine.putFile("C:\\d\\1.txt", "x");
  machine.putFile("C:\\d\\2.txt", "x");
  machine.putFile("C:\\d\\3.txt", "x");
  machine.diskOf("C:\\").holdOpen("C:\\d\\2.txt", sim::Sharing::None);
  EXPECT_EQ(failureOf([&] { object.deleteFolder("C:\\d", true); }), 70);
  EXPECT_FALSE(machine.fileExists("C:\\d\\1.txt"));
  EXPECT_TRUE(machine.fileExists("C:\\d\\3.txt"));
}

TEST_F(FileSystemObjectTest, NeverFollowsALinkOutOfAFolder) {
  machine.putFile("C:\\keep\\a.txt", "x");
  machine.putFile("C:\\keep.txt", "y");
  machine.makeFolders("C:\\d\\e");
  machine.diskOf("C:\\").putLink("C:\\d\\e\\link", "C:\\keep");
  machine.diskOf("C:\\").putLink("C:\\d\\e\\link.txt", "C:\\keep.txt", false);
  object.deleteFolder("C:\\d", true);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
  EXPECT_EQ(machine.fileText("C:\\keep\\a.txt"), "x");
  EXPECT_EQ(machine.fileText("C:\\keep.txt"), "y");
}

TEST_F(FileSystemObjectTest, DeletesALinkInPlaceOfTheFolderItself) {
  machine.putFile("C:\\keep\\a.txt", "x");
  machine.diskOf("C:\\").putLink("C:\\link", "C:\\keep");
  object.deleteFolder("C:\\link", true);
  EXPECT_FALSE(machine.diskOf("C:\\").exists("C:\\link"));
  EXPECT_EQ(machine.fileText("C:\\keep\\a.txt"), "x");
}

TEST_F(FileSystemObjectTest, DeletingAMissingFolderOrAFileIs76) {
  machine.putFile("C:\\a.txt", "x");
  EXPECT_EQ(failureOf([&] { object.deleteFolder("C:\\d", false); }), 76);
  EXPECT_EQ(failureOf([&] { object.deleteFolder("C:\\no\\d", false); }), 76);
  EXPECT_EQ(failureOf([&] { object.deleteFolder("C:\\a.txt", false); }), 76);
}

TEST_F(FileSystemObjectTest, NeverDeletesARoot) {
  machine.mount("\\\\srv\\dati");
  machine.putFile("\\\\srv\\dati\\a.txt", "x");
  for (const char* const root : {"C:\\", "C:", "\\\\srv\\dati", "\\\\srv\\dati\\", "\\\\srv"}) {
    EXPECT_EQ(failureOf([&] { object.deleteFolder(root, true); }), 70) << root;
  }
  EXPECT_TRUE(machine.fileExists("\\\\srv\\dati\\a.txt"));
  EXPECT_TRUE(machine.folderExists("C:\\WINDOWS"));
}

// --- Copying a file

TEST_F(FileSystemObjectTest, CopiesAFileWithItsTime) {
  machine.putFile("C:\\a.txt", "new");
  machine.diskOf("C:\\").setModified("C:\\a.txt", {2008, 1, 2, 3, 4, 5});
  machine.putFile("C:\\d\\b.txt", "old and longer");
  object.copyFile("C:\\a.txt", "C:\\d\\b.txt");
  EXPECT_EQ(machine.fileText("C:\\d\\b.txt"), "new");
  EXPECT_EQ(object.dateLastModified("C:\\a.txt"), object.dateLastModified("C:\\d\\b.txt"));
  EXPECT_EQ(machine.fileText("C:\\a.txt"), "new");
}

TEST_F(FileSystemObjectTest, CopiesAFileIntoAFolderNamedWithABackslash) {
  machine.putFile("C:\\a.txt", "x");
  machine.makeFolders("C:\\d");
  object.copyFile("C:\\a.txt", "C:\\d\\");
  EXPECT_EQ(machine.fileText("C:\\d\\a.txt"), "x");
}

TEST_F(FileSystemObjectTest, CopyingOverAnExistingFileIs58WhenItMustNotBeOverwritten) {
  machine.putFile("C:\\a.txt", "new");
  machine.putFile("C:\\b.txt", "old");
  EXPECT_EQ(failureOf([&] { object.copyFile("C:\\a.txt", "C:\\b.txt", false); }), 58);
  EXPECT_EQ(machine.fileText("C:\\b.txt"), "old");
  object.copyFile("C:\\a.txt", "C:\\c.txt", false);
  EXPECT_EQ(machine.fileText("C:\\c.txt"), "new");
}

TEST_F(FileSystemObjectTest, CopyingAMissingFileOrAFolderAsFileIs53) {
  machine.makeFolders("C:\\d");
  EXPECT_EQ(failureOf([&] { object.copyFile("C:\\a.txt", "C:\\b.txt"); }), 53);
  EXPECT_EQ(failureOf([&] { object.copyFile("C:\\no\\a.txt", "C:\\b.txt"); }), 53);
  EXPECT_EQ(failureOf([&] { object.copyFile("C:\\d", "C:\\b.txt"); }), 53);
  EXPECT_FALSE(machine.fileExists("C:\\b.txt"));
}

TEST_F(FileSystemObjectTest, CopyingIntoAMissingFolderIs76) {
  machine.putFile("C:\\a.txt", "x");
  EXPECT_EQ(failureOf([&] { object.copyFile("C:\\a.txt", "C:\\no\\b.txt"); }), 76);
}

TEST_F(FileSystemObjectTest, CopyingOntoAFolderOrAReadOnlyOrABusyFileIs70) {
  machine.putFile("C:\\a.txt", "new");
  machine.makeFolders("C:\\d");
  machine.putFile("C:\\r.txt", "old");
  machine.diskOf("C:\\").setReadOnly("C:\\r.txt");
  machine.putFile("C:\\busy.txt", "old");
  machine.diskOf("C:\\").holdOpen("C:\\busy.txt", sim::Sharing::Read);
  for (const char* const target : {"C:\\d", "C:\\r.txt", "C:\\busy.txt"}) {
    EXPECT_EQ(failureOf([&] { object.copyFile("C:\\a.txt", target, true); }), 70) << target;
  }
  EXPECT_EQ(machine.fileText("C:\\r.txt"), "old");
  EXPECT_TRUE(machine.diskOf("C:\\").isReadOnly("C:\\r.txt"));
}

// --- Copying a folder

TEST_F(FileSystemObjectTest, CopiesAFolderWithEverythingInIt) {
  machine.putFile("C:\\s\\a.txt", "1");
  machine.putFile("C:\\s\\e\\f\\b.txt", "22");
  machine.makeFolders("C:\\s\\empty");
  machine.makeFolders("C:\\d");
  object.copyFolder("C:\\s", "C:\\d\\t");
  EXPECT_EQ(machine.diskOf("C:\\").tree("C:\\d\\t"),
            "d\\t\\a.txt 1\nd\\t\\e\\\nd\\t\\e\\f\\\nd\\t\\e\\f\\b.txt 2\nd\\t\\empty\\\n");
  EXPECT_EQ(machine.fileText("C:\\s\\e\\f\\b.txt"), "22");
}

TEST_F(FileSystemObjectTest, CopyMergesIntoAnExistingTreeOnAnotherDrive) {
  machine.mount("S:");
  machine.putFile("C:\\s\\both\\a.txt", "new");
  machine.putFile("C:\\s\\both\\only.txt", "source");
  machine.putFile("S:\\t\\BOTH\\A.TXT", "old");
  machine.putFile("S:\\t\\both\\kept.txt", "target");
  object.copyFolder("C:\\s\\", "S:\\t");
  EXPECT_EQ(machine.fileText("S:\\t\\both\\a.txt"), "new");
  EXPECT_EQ(machine.fileText("S:\\t\\both\\only.txt"), "source");
  EXPECT_EQ(machine.fileText("S:\\t\\both\\kept.txt"), "target");
  EXPECT_THAT(machine.diskOf("S:\\").names("S:\\t\\both"),
              testing::ElementsAre("A.TXT", "kept.txt", "only.txt"));
}

TEST_F(FileSystemObjectTest, CopiesAFolderIntoTheOneNamedWithABackslash) {
  machine.putFile("C:\\s\\a.txt", "1");
  machine.makeFolders("C:\\d");
  object.copyFolder("C:\\s", "C:\\d\\");
  EXPECT_EQ(machine.fileText("C:\\d\\s\\a.txt"), "1");
}

TEST_F(FileSystemObjectTest, CopyingAFolderNeedsTheParentOfItsTarget) {
  machine.putFile("C:\\s\\a.txt", "1");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\no\\t"); }), 76);
}

TEST_F(FileSystemObjectTest, CopyingAMissingFolderOrAFileAsFolderIs76) {
  machine.putFile("C:\\a.txt", "x");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t"); }), 76);
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\a.txt", "C:\\t"); }), 76);
  EXPECT_FALSE(machine.folderExists("C:\\t"));
}

TEST_F(FileSystemObjectTest, CopyingAFolderWithoutOverwritingStopsAtAnExistingFile) {
  machine.putFile("C:\\s\\1.txt", "new");
  machine.putFile("C:\\s\\2.txt", "new");
  machine.putFile("C:\\s\\3.txt", "new");
  machine.putFile("C:\\t\\2.txt", "old");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t", false); }), 58);
  EXPECT_EQ(machine.fileText("C:\\t\\2.txt"), "old");
  EXPECT_TRUE(machine.fileExists("C:\\t\\1.txt"));
  EXPECT_FALSE(machine.fileExists("C:\\t\\3.txt"));
}

TEST_F(FileSystemObjectTest, CopyingAFolderOverwritesReadOnlyFilesWithForceOnly) {
  machine.putFile("C:\\s\\e\\a.txt", "new");
  machine.putFile("C:\\t\\e\\a.txt", "old");
  machine.diskOf("C:\\").setReadOnly("C:\\t\\e\\a.txt");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t", true); }), 70);
  EXPECT_EQ(machine.fileText("C:\\t\\e\\a.txt"), "old");
  EXPECT_TRUE(machine.diskOf("C:\\").isReadOnly("C:\\t\\e\\a.txt"));
  object.copyFolder("C:\\s", "C:\\t", true, true);
  EXPECT_EQ(machine.fileText("C:\\t\\e\\a.txt"), "new");
}

TEST_F(FileSystemObjectTest, ForceDoesNotHelpAgainstOtherRefusals) {
  machine.putFile("C:\\s\\a.txt", "new");
  machine.putFile("C:\\t\\a.txt", "old");
  machine.diskOf("C:\\").denyWriting("C:\\t");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t", true, true); }), 70);
  EXPECT_EQ(machine.callLog().countOf("files.clearReadOnly"), 0U);
  machine.diskOf("C:\\").setReadOnly("C:\\t\\a.txt");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t", true, true); }), 70);
  EXPECT_EQ(machine.fileText("C:\\t\\a.txt"), "old");
}

TEST_F(FileSystemObjectTest, CopyOfAFolderStopsAtABusyFileAndNamesIt) {
  machine.putFile("C:\\s\\1.txt", "new");
  machine.putFile("C:\\s\\2.txt", "new");
  machine.putFile("C:\\s\\3.txt", "new");
  machine.putFile("C:\\t\\2.txt", "old");
  machine.diskOf("C:\\").holdOpen("C:\\t\\2.txt", sim::Sharing::Read);
  try {
    object.copyFolder("C:\\s", "C:\\t", true, true);
    FAIL() << "copied";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), 70);
    EXPECT_EQ(failure.description(), "File in uso da un altro programma: C:\\t\\2.txt");
  }
  EXPECT_EQ(machine.fileText("C:\\t\\1.txt"), "new");
  EXPECT_EQ(machine.fileText("C:\\t\\2.txt"), "old");
  EXPECT_FALSE(machine.fileExists("C:\\t\\3.txt"));
}

TEST_F(FileSystemObjectTest, AFileInThePlaceOfAFolderIs58) {
  machine.makeFolders("C:\\s\\e");
  machine.putFile("C:\\t\\e", "file");
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t"); }), 58);
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t\\e"); }), 58);
  EXPECT_EQ(machine.fileText("C:\\t\\e"), "file");
}

TEST_F(FileSystemObjectTest, NeverCopiesAFolderOntoOrIntoItself) {
  machine.putFile("C:\\s\\a.txt", "x");
  const std::string before = machine.diskOf("C:\\").tree("C:\\s");
  for (const char* const target : {"C:\\s", "c:\\S\\", "C:\\s\\t", "C:\\S\\a\\b"}) {
    EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", target); }), 70) << target;
  }
  EXPECT_EQ(machine.diskOf("C:\\").tree("C:\\s"), before);
  object.copyFolder("C:\\s", "C:\\s2");
  EXPECT_TRUE(machine.fileExists("C:\\s2\\a.txt"));
}

TEST_F(FileSystemObjectTest, NeverFollowsALinkOutOfAFolderThatIsCopied) {
  machine.putFile("C:\\secret\\a.txt", "x");
  machine.makeFolders("C:\\s");
  machine.diskOf("C:\\").putLink("C:\\s\\link", "C:\\secret");
  try {
    object.copyFolder("C:\\s", "C:\\t");
    FAIL() << "copied";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), 75);
    EXPECT_EQ(failure.description(), "Collegamento non copiato: C:\\s\\link");
  }
  machine.removeTree("C:\\s\\link");
  machine.diskOf("C:\\").putLink("C:\\s\\link.txt", "C:\\secret\\a.txt", false);
  EXPECT_EQ(failureOf([&] { object.copyFolder("C:\\s", "C:\\t"); }), 75);
  EXPECT_EQ(machine.diskOf("C:\\").tree("C:\\t"), "");
}

// --- Listing, dates, text

TEST_F(FileSystemObjectTest, ListsFilesOnlyInTheOrderOfTheFileSystem) {
  for (const char* const name : {"b.zip", "A.zip", "c.zip"}) {
    machine.putFile(std::string("C:\\d\\") + name, "xy");
  }
  machine.makeFolders("C:\\d\\e.zip");
  machine.diskOf("C:\\").setListingOrder("C:\\d", {"c.zip", "e.zip", "A.zip", "b.zip"});
  EXPECT_THAT(object.files("C:\\d"), testing::ElementsAre("c.zip", "A.zip", "b.zip"));
  EXPECT_THAT(object.files("C:\\d\\"), testing::SizeIs(3));
  EXPECT_EQ(object.fileEntries("C:\\d").at(0).facts.size, 2U);
  machine.putFile("C:\\d\\zip.txt", "xyz");
  EXPECT_THAT(object.fileEntries("C:\\d\\", "zip"), testing::SizeIs(3));
  EXPECT_EQ(object.fileEntries("C:\\d", "TXT").at(0).name, "zip.txt");
}

TEST_F(FileSystemObjectTest, ListsFoldersOnlyInTheOrderOfTheFileSystem) {
  machine.putFile("C:\\d\\a.txt", "x");
  machine.makeFolders("C:\\d\\z");
  machine.makeFolders("C:\\d\\b");
  EXPECT_THAT(object.folders("C:\\d\\"), testing::ElementsAre("z", "b"));
}

TEST_F(FileSystemObjectTest, ListingAMissingFolderIs76) {
  EXPECT_EQ(failureOf([&] { object.files("C:\\no"); }), 76);
  EXPECT_EQ(failureOf([&] { object.folders("C:\\no"); }), 76);
}

TEST_F(FileSystemObjectTest, TellsFromTheTextsWhatLiesInAFolder) {
  EXPECT_TRUE(FileSystemObject::liesAtOrIn("C:\\d", "c:\\D"));
  EXPECT_TRUE(FileSystemObject::liesAtOrIn("C:\\d\\e", "c:\\D"));
  EXPECT_TRUE(FileSystemObject::liesAtOrIn("C:\\d", "C:\\"));
  EXPECT_FALSE(FileSystemObject::liesAtOrIn("C:\\de", "C:\\d"));
  EXPECT_FALSE(FileSystemObject::liesAtOrIn("C:\\", "C:\\d"));
}

TEST_F(FileSystemObjectTest, DatesAreWholeSeconds) {
  constexpr sim::FileTicks kSecond = 10'000'000;
  sim::SimDisk& disk = machine.diskOf("C:\\");
  const auto dateAt = [&](sim::FileTicks ticks) {
    machine.putFile("C:\\a.txt", "x");
    disk.setModifiedTicks("C:\\a.txt", ticks);
    return object.dateLastModified("C:\\a.txt");
  };
  EXPECT_EQ(dateAt(1000 * kSecond), 1000U);
  EXPECT_EQ(dateAt(1000 * kSecond + kSecond - 1), 1000U);
  EXPECT_EQ(dateAt(1001 * kSecond), 1001U);
}

TEST_F(FileSystemObjectTest, TheDateOfAMissingFileOrAFolderIs53) {
  machine.makeFolders("C:\\d");
  for (const char* const path : {"C:\\a.txt", "C:\\no\\a.txt", "C:\\d"}) {
    EXPECT_EQ(failureOf([&] { object.dateLastModified(path); }), 53) << path;
  }
}

TEST_F(FileSystemObjectTest, ReadsLinesWithBothEnds) {
  const auto linesOf = [&](const std::string& text) {
    machine.putFile("C:\\a.txt", text);
    return object.readLines("C:\\a.txt");
  };
  using Lines = std::vector<std::string>;
  EXPECT_EQ(linesOf("a\r\nb\nc"), (Lines{"a", "b", "c"}));
  EXPECT_EQ(linesOf("a\r\n\r\n"), (Lines{"a", ""}));
  EXPECT_EQ(linesOf("a\rb\r\n"), (Lines{"a\rb"}));
  EXPECT_EQ(linesOf("a\r"), (Lines{"a\r"}));
  EXPECT_EQ(linesOf("\x1A"
                    "a\n"),
            (Lines{"\x1A"
                   "a"}));
  EXPECT_EQ(linesOf("\n"), (Lines{""}));
  EXPECT_EQ(linesOf(""), (Lines{}));
}

TEST_F(FileSystemObjectTest, ReadingAMissingTextIs53Or76) {
  EXPECT_EQ(failureOf([&] { object.readLines("C:\\a.txt"); }), 53);
  EXPECT_EQ(failureOf([&] { object.readLines("C:\\no\\a.txt"); }), 76);
}

TEST_F(FileSystemObjectTest, WritesATextInThePlaceOfAnother) {
  object.writeText("C:\\a.txt", "long text\r\n");
  object.writeText("C:\\a.txt", "x\r\n");
  EXPECT_EQ(machine.fileText("C:\\a.txt"), "x\r\n");
  EXPECT_EQ(failureOf([&] { object.writeText("C:\\no\\a.txt", "x"); }), 76);
}

struct ParentRow {
  const char* path;
  const char* parent;
};

class ParentFolderNameTest : public testing::TestWithParam<ParentRow> {};

TEST_P(ParentFolderNameTest, IsTakenFromTheTextAlone) {
  EXPECT_EQ(FileSystemObject::parentFolderName(GetParam().path), GetParam().parent);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ParentFolderNameTest,
    testing::Values(ParentRow{"C:\\a\\b", "C:\\a"}, ParentRow{"C:\\a\\b\\", "C:\\a"},
                    ParentRow{"C:\\a", "C:\\"}, ParentRow{"C:\\a\\", "C:\\"}, ParentRow{"C:\\", ""},
                    ParentRow{"C:", ""}, ParentRow{"a", ""}, ParentRow{"", ""},
                    ParentRow{"\\a", ""}, ParentRow{"a\\b", "a"},
                    ParentRow{"\\\\srv\\share\\x", "\\\\srv\\share"},
                    ParentRow{"\\\\srv\\share", "\\\\srv"}, ParentRow{"\\\\srv", ""},
                    ParentRow{"C:/a/b", "C:/a"}, ParentRow{"C:\\a\\\\b", "C:\\a"}));

}  // namespace
}  // namespace trelv
