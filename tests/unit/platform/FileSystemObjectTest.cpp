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
