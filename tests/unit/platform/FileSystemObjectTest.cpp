#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "platform/FileSystemObject.h"
#include "platform/PatientFiles.h"
#include "sim/SimMachine.h"

namespace trelv {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using Lines = std::vector<std::string>;

class FileSystemObjectTest : public testing::Test {
 protected:
  /// Number of the failure that `action` raises, 0 when it raises none; its description stands in
  /// `description`.
  template <class Action>
  std::int32_t failureOf(Action&& action) {
    description.clear();
    try {
      action();
    } catch (const RuntimeError& failure) {
      description = failure.description();
      return failure.number();
    }
    return 0;
  }
  // The same of the calls under test.
  std::int32_t createFolder(const std::string& path) {
    return failureOf([&] { object.createFolder(path); });
  }
  std::int32_t deleteFile(const std::string& path, bool force = false) {
    return failureOf([&] { object.deleteFile(path, force); });
  }
  std::int32_t deleteFolder(const std::string& path, bool force = false) {
    return failureOf([&] { object.deleteFolder(path, force); });
  }
  std::int32_t copyFile(const std::string& source, const std::string& target,
                        bool overwrite = true) {
    return failureOf([&] { object.copyFile(source, target, overwrite); });
  }

  void put(const Lines& paths, const std::string& content = "x") {
    for (const std::string& path : paths) machine.putFile(path, content);
  }
  /// Content of a file, "-" when there is none.
  std::string text(const std::string& path) {
    return machine.fileExists(path) ? machine.fileText(path) : "-";
  }
  void refuseEveryCall() {
    machine.callLog().setInjector(
        [](const sim::SimCall&) { return std::optional<SystemCode>(system_code::kBadNetPath); });
  }

  sim::SimMachine machine;
  sim::SimDisk& disk = machine.diskOf("C:\\");
  FileSystemObject object{machine.machine().files};
  std::string description;
};

TEST_F(FileSystemObjectTest, TellsFilesFromFolders) {
  put({"C:\\d\\a.txt"});
  for (const char* const file : {"C:\\d\\a.txt", "c:\\D\\A.TXT"}) {
    EXPECT_TRUE(object.fileExists(file)) << file;
    EXPECT_FALSE(object.folderExists(file)) << file;
  }
  for (const char* const folder : {"C:\\d", "C:\\d\\", "C:\\"}) {
    EXPECT_TRUE(object.folderExists(folder)) << folder;
    EXPECT_FALSE(object.fileExists(folder)) << folder;
  }
  for (const char* const nothing : {"", "Q:\\", "C:\\d\\a.txt\\"}) {
    EXPECT_FALSE(object.folderExists(nothing)) << nothing;
    EXPECT_FALSE(object.fileExists(nothing)) << nothing;
  }
}

TEST_F(FileSystemObjectTest, WhatCannotBeLookedAtMayExist) {
  put({"C:\\d\\a.txt"});
  EXPECT_TRUE(object.mayExist("C:\\d\\a.txt"));
  EXPECT_TRUE(object.mayExist("C:\\d"));
  EXPECT_FALSE(object.mayExist("C:\\d\\b.txt"));
  EXPECT_FALSE(object.mayExist("C:\\e\\b.txt"));
  refuseEveryCall();
  EXPECT_TRUE(object.mayExist("C:\\d\\b.txt"));
}

TEST_F(FileSystemObjectTest, OnlyAWritableFileOrNothingIsReplaceable) {
  put({"C:\\d\\a.txt"});
  const auto replaceable = [&](const char* path) {
    return failureOf([&] { object.requireReplaceable(path); });
  };
  EXPECT_EQ(replaceable("C:\\d\\a.txt"), 0);
  EXPECT_EQ(replaceable("C:\\d\\b.txt"), 0);
  EXPECT_EQ(replaceable("C:\\e\\b.txt"), 0);
  EXPECT_EQ(replaceable("C:\\d"), 70);
  disk.setReadOnly("C:\\d\\a.txt");
  EXPECT_EQ(replaceable("C:\\d\\a.txt"), 70);
  refuseEveryCall();
  EXPECT_EQ(replaceable("C:\\d\\b.txt"), 76);
}

TEST_F(FileSystemObjectTest, MakesOneFolderThatIsNotThereBelowOneThatIs) {
  EXPECT_EQ(createFolder("C:\\d\\e"), 76);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
  EXPECT_EQ(createFolder("C:\\d"), 0);
  EXPECT_EQ(createFolder("C:\\d\\e\\"), 0);
  EXPECT_TRUE(machine.folderExists("C:\\d\\e"));
  EXPECT_EQ(createFolder("C:\\d"), 58);
}

// --- Deleting

TEST_F(FileSystemObjectTest, DeletesAFileAReadOnlyOneWithForceOnly) {
  put({"C:\\a.txt", "C:\\r.txt"});
  disk.setReadOnly("C:\\r.txt");
  EXPECT_EQ(deleteFile("C:\\a.txt"), 0);
  EXPECT_EQ(deleteFile("C:\\r.txt"), 70);
  EXPECT_EQ(text("C:\\a.txt") + text("C:\\r.txt"), "-x");
  EXPECT_EQ(deleteFile("C:\\r.txt", true), 0);
  EXPECT_EQ(text("C:\\r.txt"), "-");
}

TEST_F(FileSystemObjectTest, DeletingWhatIsMissingIs53ForAFileAnd76ForAFolder) {
  put({"C:\\d\\a.txt"});
  for (const char* const file : {"C:\\a.txt", "C:\\no\\a.txt", "C:\\d"}) {
    EXPECT_EQ(deleteFile(file), 53) << file;
  }
  for (const char* const folder : {"C:\\e", "C:\\no\\e", "C:\\d\\a.txt"}) {
    EXPECT_EQ(deleteFolder(folder), 76) << folder;
  }
}

TEST_F(FileSystemObjectTest, AFileInUseIs70AndItsDescriptionNamesIt) {
  put({"C:\\a.txt"});
  disk.holdOpen("C:\\a.txt", sim::Sharing::Read);
  EXPECT_EQ(deleteFile("C:\\a.txt"), 70);
  EXPECT_EQ(description, "File in uso da un altro programma: C:\\a.txt");
}

TEST_F(FileSystemObjectTest, DeletesAFolderWithEverythingInItReadOnlyContentWithForceOnly) {
  put({"C:\\d\\e\\f\\a.txt", "C:\\d\\b.txt", "C:\\r\\e\\a.txt"});
  machine.makeFolders("C:\\d\\empty");
  EXPECT_EQ(deleteFolder("C:\\d"), 0);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
  disk.setReadOnly("C:\\r\\e\\a.txt");
  EXPECT_EQ(deleteFolder("C:\\r"), 70);
  EXPECT_EQ(text("C:\\r\\e\\a.txt"), "x");
  EXPECT_EQ(deleteFolder("C:\\r", true), 0);
  EXPECT_FALSE(machine.folderExists("C:\\r"));
}

TEST_F(FileSystemObjectTest, StopsAtTheFirstFailure) {
  put({"C:\\d\\1.txt", "C:\\d\\2.txt", "C:\\d\\3.txt"});
  disk.holdOpen("C:\\d\\2.txt", sim::Sharing::None);
  EXPECT_EQ(deleteFolder("C:\\d", true), 70);
  EXPECT_EQ(text("C:\\d\\1.txt") + text("C:\\d\\3.txt"), "-x");
}

TEST_F(FileSystemObjectTest, NeverFollowsALinkOutOfAFolderNorInItsPlace) {
  put({"C:\\keep\\a.txt", "C:\\keep.txt"});
  machine.makeFolders("C:\\d\\e");
  disk.putLink("C:\\d\\e\\link", "C:\\keep");
  disk.putLink("C:\\d\\e\\link.txt", "C:\\keep.txt", false);
  disk.putLink("C:\\link", "C:\\keep");
  EXPECT_EQ(deleteFolder("C:\\d", true), 0);
  EXPECT_EQ(deleteFolder("C:\\link", true), 0);
  EXPECT_FALSE(machine.folderExists("C:\\d"));
  EXPECT_FALSE(disk.exists("C:\\link"));
  EXPECT_EQ(text("C:\\keep\\a.txt") + text("C:\\keep.txt"), "xx");
}

/// Folders in each other, as deep as a hostile pack makes them: each but the last holds one.
class DeepFolders : public PatientFiles {
 public:
  static constexpr std::size_t kLevels = 20000;

  explicit DeepFolders(sim::SimMachine& machine)
      : PatientFiles(machine.machine().files, machine.machine().clock) {}

  SystemCode look(const std::string& /*path*/, machine::FileFacts& facts) override {
    facts.folder = true;
    return system_code::kSuccess;
  }
  SystemCode list(const std::string& folder, const std::string& /*ending*/,
                  std::vector<machine::FolderEntry>& entries) override {
    entries.clear();
    if (folder.size() < std::string("C:\\d").size() + 2 * kLevels) {
      entries.push_back({"a", {}});
      entries.back().facts.folder = true;
    }
    return system_code::kSuccess;
  }
  SystemCode removeFolder(const std::string& path) override {
    removed.push_back(path.size());
    return system_code::kSuccess;
  }

  /// Lengths of their paths.
  std::vector<std::size_t> removed;
};

TEST_F(FileSystemObjectTest, DeletesAnyNumberOfFoldersInEachOther) {
  DeepFolders files(machine);
  FileSystemObject(files).deleteFolder("C:\\d", true);
  ASSERT_EQ(files.removed.size(), DeepFolders::kLevels + 1);
  EXPECT_EQ(files.removed.front(), 4 + 2 * DeepFolders::kLevels);
  EXPECT_EQ(files.removed.back(), 4U);
}

TEST_F(FileSystemObjectTest, NeverDeletesARoot) {
  machine.mount("\\\\srv\\dati");
  put({"\\\\srv\\dati\\a.txt"});
  for (const char* const root : {"C:\\", "C:", "\\\\srv\\dati", "\\\\srv\\dati\\", "\\\\srv"}) {
    EXPECT_EQ(deleteFolder(root, true), 70) << root;
  }
  EXPECT_TRUE(machine.fileExists("\\\\srv\\dati\\a.txt"));
  EXPECT_TRUE(machine.folderExists("C:\\WINDOWS"));
}

// --- Copying a file

TEST_F(FileSystemObjectTest, CopiesAFileWithItsTime) {
  put({"C:\\a.txt"}, "new");
  disk.setModified("C:\\a.txt", {2008, 1, 2, 3, 4, 5});
  put({"C:\\d\\b.txt"}, "old and longer");
  EXPECT_EQ(copyFile("C:\\a.txt", "C:\\d\\b.txt"), 0);
  EXPECT_EQ(text("C:\\d\\b.txt"), "new");
  EXPECT_EQ(object.dateLastModified("C:\\a.txt"), object.dateLastModified("C:\\d\\b.txt"));
  EXPECT_EQ(text("C:\\a.txt"), "new");
  EXPECT_EQ(copyFile("C:\\a.txt", "C:\\d\\"), 0) << "into a folder named with a backslash";
  EXPECT_EQ(text("C:\\d\\a.txt"), "new");
}

TEST_F(FileSystemObjectTest, CopyingOverAnExistingFileIs58WhenItMustNotBeOverwritten) {
  put({"C:\\a.txt"}, "new");
  put({"C:\\b.txt"}, "old");
  EXPECT_EQ(copyFile("C:\\a.txt", "C:\\b.txt", false), 58);
  EXPECT_EQ(copyFile("C:\\a.txt", "C:\\c.txt", false), 0);
  EXPECT_EQ(text("C:\\b.txt") + text("C:\\c.txt"), "oldnew");
}

TEST_F(FileSystemObjectTest, CopyingAMissingFileOrAFolderAsFileIs53AndIntoAMissingFolder76) {
  put({"C:\\d\\a.txt"});
  for (const char* const source : {"C:\\a.txt", "C:\\no\\a.txt", "C:\\d"}) {
    EXPECT_EQ(copyFile(source, "C:\\b.txt"), 53) << source;
  }
  EXPECT_EQ(text("C:\\b.txt"), "-");
  EXPECT_EQ(copyFile("C:\\d\\a.txt", "C:\\no\\b.txt"), 76);
}

TEST_F(FileSystemObjectTest, CopyingOntoAFolderOrAReadOnlyOrABusyFileIs70) {
  put({"C:\\a.txt"}, "new");
  put({"C:\\d\\r.txt", "C:\\d\\busy.txt"}, "old");
  disk.setReadOnly("C:\\d\\r.txt");
  disk.holdOpen("C:\\d\\busy.txt", sim::Sharing::Read);
  for (const char* const target : {"C:\\d", "C:\\d\\r.txt", "C:\\d\\busy.txt"}) {
    EXPECT_EQ(copyFile("C:\\a.txt", target), 70) << target;
  }
  EXPECT_EQ(text("C:\\d\\r.txt"), "old");
  EXPECT_TRUE(disk.isReadOnly("C:\\d\\r.txt"));
}

// --- Listing, dates, text

TEST_F(FileSystemObjectTest, ListsFilesOrFoldersOnlyInTheOrderOfTheFileSystem) {
  put({"C:\\d\\b.zip", "C:\\d\\A.zip", "C:\\d\\c.zip"}, "xy");
  machine.makeFolders("C:\\d\\e.zip");
  machine.makeFolders("C:\\d\\a");
  disk.setListingOrder("C:\\d", {"c.zip", "e.zip", "A.zip", "a", "b.zip"});
  EXPECT_THAT(object.files("C:\\d"), ElementsAre("c.zip", "A.zip", "b.zip"));
  EXPECT_THAT(object.files("C:\\d\\"), SizeIs(3));
  EXPECT_THAT(object.folders("C:\\d\\"), ElementsAre("e.zip", "a"));
  EXPECT_EQ(object.fileEntries("C:\\d").at(0).facts.size, 2U);
  put({"C:\\d\\zip.txt"});
  EXPECT_THAT(object.fileEntries("C:\\d\\", "zip"), SizeIs(3));
  EXPECT_EQ(object.fileEntries("C:\\d", "TXT").at(0).name, "zip.txt");
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

TEST_F(FileSystemObjectTest, DatesAreWholeSecondsAndThatOfWhatIsNoFileIs53) {
  constexpr sim::FileTicks kSecond = 10'000'000;
  put({"C:\\d\\a.txt"});
  const auto dateAt = [&](sim::FileTicks ticks) {
    disk.setModifiedTicks("C:\\d\\a.txt", ticks);
    return object.dateLastModified("C:\\d\\a.txt");
  };
  EXPECT_EQ(dateAt(1000 * kSecond), 1000U);
  EXPECT_EQ(dateAt(1000 * kSecond + kSecond - 1), 1000U);
  EXPECT_EQ(dateAt(1001 * kSecond), 1001U);
  for (const char* const path : {"C:\\a.txt", "C:\\no\\a.txt", "C:\\d"}) {
    EXPECT_EQ(failureOf([&] { object.dateLastModified(path); }), 53) << path;
  }
}

TEST_F(FileSystemObjectTest, ReadsLinesWithBothEnds) {
  const auto linesOf = [&](const std::string& content) {
    put({"C:\\a.txt"}, content);
    return object.readLines("C:\\a.txt");
  };
  EXPECT_EQ(linesOf("a\r\nb\nc"), (Lines{"a", "b", "c"}));
  EXPECT_EQ(linesOf("a\r\n\r\n"), (Lines{"a", ""}));
  EXPECT_EQ(linesOf("a\rb\r\n"), (Lines{"a\rb"}));
  EXPECT_EQ(linesOf("a\r"), (Lines{"a\r"}));
  EXPECT_EQ(linesOf("\x1A z\n"), (Lines{"\x1A z"}));
  EXPECT_EQ(linesOf("\n"), (Lines{""}));
  EXPECT_EQ(linesOf(""), (Lines{}));
  EXPECT_EQ(failureOf([&] { object.readLines("C:\\b.txt"); }), 53);
  EXPECT_EQ(failureOf([&] { object.readLines("C:\\no\\a.txt"); }), 76);
}

TEST_F(FileSystemObjectTest, WritesATextInThePlaceOfAnother) {
  object.writeText("C:\\a.txt", "long text\r\n");
  object.writeText("C:\\a.txt", "x\r\n");
  EXPECT_EQ(text("C:\\a.txt"), "x\r\n");
  EXPECT_EQ(failureOf([&] { object.writeText("C:\\no\\a.txt", "x"); }), 76);
}

TEST_F(FileSystemObjectTest, TheParentIsTakenFromTheTextAlone) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"C:\\a\\b", "C:\\a"},
      {"C:\\a\\b\\", "C:\\a"},
      {"C:\\a", "C:\\"},
      {"C:\\a\\", "C:\\"},
      {"C:\\", ""},
      {"C:", ""},
      {"a", ""},
      {"", ""},
      {"\\a", ""},
      {"a\\b", "a"},
      {"C:\\a\\b#c", "C:\\a"},
      {"C:/a/b", "C:/a"},
      {"C:\\a\\\\b", "C:\\a"},
      {"\\\\srv", ""},
      {"\\\\srv\\share", "\\\\srv"},
      {"\\\\srv\\share\\x", "\\\\srv\\share"}};
  for (const auto& [path, parent] : rows) {
    EXPECT_EQ(FileSystemObject::parentFolderName(path), parent) << path;
  }
}

}  // namespace
}  // namespace trelv
