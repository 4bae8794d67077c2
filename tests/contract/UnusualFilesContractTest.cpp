#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "contract/Contract.h"

// Files by other names, hidden ones, such as are deleted while others have them open, long paths.
namespace trelv::contract {
namespace {

using machine::FileFacts;
using machine::FolderEntry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::size_t kNoLimit = 1U << 20U;

class UnusualFiles : public Contract {
 protected:
  machine::Files& files() { return machine().files; }

  SystemCode look(const std::string& path) {
    FileFacts facts;
    return files().look(path, facts);
  }

  std::uint64_t modified(const std::string& name) {
    FileFacts facts;
    EXPECT_EQ(files().look(path(name), facts), system_code::kSuccess);
    return facts.modified;
  }

  std::vector<std::string> namesIn(const std::string& folder, const std::string& ending = {}) {
    std::vector<FolderEntry> entries;
    EXPECT_EQ(files().list(folder, ending, entries), system_code::kSuccess);
    std::vector<std::string> names;
    for (const FolderEntry& entry : entries) names.push_back(entry.name);
    return names;
  }
};

// --- identify

TEST_F(UnusualFiles, AFileOrFolderIsTheSameByAllItsNamesAndNoOther) {
  const std::string file = putFile("Setup.ini", "x");
  putFile("b.ini", "x");
  world().putFolder(path("sub"));
  machine::FileIdentity one;
  machine::FileIdentity other;
  ASSERT_EQ(files().identify(file, one), system_code::kSuccess);
  for (const std::string& name :
       {path("SETUP.INI"), path("sub\\..\\setup.ini"), "\\\\?\\" + file}) {
    ASSERT_EQ(files().identify(name, other), system_code::kSuccess) << name;
    EXPECT_TRUE(one == other) << name;
  }
  for (const std::string& name : {path("b.ini"), path("sub"), world().folder()}) {
    ASSERT_EQ(files().identify(name, other), system_code::kSuccess) << name;
    EXPECT_FALSE(one == other) << name;
  }
  ASSERT_EQ(files().identify(path("sub"), one), system_code::kSuccess);
  ASSERT_EQ(files().identify(path("SUB"), other), system_code::kSuccess);
  EXPECT_TRUE(one == other);
  EXPECT_EQ(files().identify(path("none.txt"), other), 2U);
  EXPECT_EQ(files().identify(path("none\\a.txt"), other), 3U);
}

TEST_F(UnusualFiles, ALinkIsTheFolderThatItLeadsTo) {
  CONTRACT_NEEDS(Ability::FolderLinks, "no links here");
  world().putFolder(path("sub"));
  world().putFolder(path("sub\\below"));
  world().putFolderLink(path("link"), path("sub"));
  machine::FileIdentity one;
  machine::FileIdentity other;
  ASSERT_EQ(files().identify(path("sub"), one), system_code::kSuccess);
  ASSERT_EQ(files().identify(path("link"), other), system_code::kSuccess);
  EXPECT_TRUE(one == other);
  ASSERT_EQ(files().identify(path("sub\\below"), one), system_code::kSuccess);
  ASSERT_EQ(files().identify(path("link\\below"), other), system_code::kSuccess);
  EXPECT_TRUE(one == other);
}

// --- Hidden files

TEST_F(UnusualFiles, ReplaceFileTakesTheNameOfAHiddenTarget) {
  const std::string target = putFile("b.txt", "old");
  world().conceal(target);
  EXPECT_EQ(files().replaceFile(putFile("a.txt", "new"), target), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(target), "new");
}

TEST_F(UnusualFiles, HiddenFilesAreLookedAtListedReadAndRemoved) {
  const std::string file = putFile("a.txt", "text");
  world().conceal(file);
  FileFacts facts;
  ASSERT_EQ(files().look(file, facts), system_code::kSuccess);
  EXPECT_TRUE(facts.hidden);
  EXPECT_TRUE(facts.system);
  std::vector<FolderEntry> entries;
  ASSERT_EQ(files().list(world().folder(), "", entries), system_code::kSuccess);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_TRUE(entries[0].facts.hidden);
  std::string content;
  EXPECT_EQ(files().read(file, kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(file), system_code::kSuccess);
}

TEST_F(UnusualFiles, CopyFileOntoAHiddenTargetIsDoneAsAWholeOrRefusedWith5) {
  const std::string target = putFile("b.txt", "old");
  world().conceal(target);
  const SystemCode code = files().copyFile(putFile("a.txt", "new"), target);
  // Windows refuses. Wine copies.
  EXPECT_THAT(code, testing::AnyOf(system_code::kSuccess, 5U));
  EXPECT_EQ(world().fileBytes(target), code == system_code::kSuccess ? "new" : "old");
}

TEST_F(UnusualFiles, CopyFileCarriesTheHiddenAttributesAndOverwritesItsOwnCopy) {
  const std::string file = putFile("a.txt", "x");
  world().conceal(file);
  ASSERT_EQ(files().copyFile(file, path("b.txt")), system_code::kSuccess);
  FileFacts facts;
  ASSERT_EQ(files().look(path("b.txt"), facts), system_code::kSuccess);
  EXPECT_EQ(facts.hidden, world().can(Ability::CopiesStayHidden));
  EXPECT_EQ(facts.system, world().can(Ability::CopiesStayHidden));
  EXPECT_EQ(files().copyFile(file, path("b.txt")), system_code::kSuccess);
}

// --- Files that are deleted while others have them open

TEST_F(UnusualFiles, AFileThatIsDeletedWhileItIsOpenGoesWhenItIsClosed) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  ASSERT_EQ(files().makeFolder(path("sub")), system_code::kSuccess);
  const std::string file = putFile("sub\\a.txt", "text");
  const std::string other = putFile("b.txt", "new");
  {
    const auto held = world().hold(file, {.read = true, .write = true, .remove = true});
    ASSERT_EQ(files().removeFile(file), system_code::kSuccess);
    std::string content = "text";
    // Windows refuses every use of it. Wine refuses only to put another one in its place.
    const auto refusedOrWine = testing::AnyOf(system_code::kSuccess, 5U);
    EXPECT_THAT(look(file), refusedOrWine);
    EXPECT_THAT(namesIn(path("sub")), ElementsAre("a.txt"));
    EXPECT_THAT(files().copyRights(file, other), refusedOrWine);
    EXPECT_THAT(files().readPart(file, 0, 1, content), refusedOrWine);
    EXPECT_THAT(files().read(file, kNoLimit, content), refusedOrWine);
    EXPECT_THAT(files().write(file, "x"), refusedOrWine);
    EXPECT_THAT(files().removeFile(file), refusedOrWine);
    EXPECT_THAT(files().copyFile(other, file), refusedOrWine);
    EXPECT_EQ(files().replaceFile(other, file), 5U);
    EXPECT_EQ(files().removeFolder(path("sub")), 145U);
  }
  EXPECT_EQ(look(file), 2U);
  EXPECT_EQ(files().removeFolder(path("sub")), system_code::kSuccess);
}

// --- Long paths

class LongPaths : public UnusualFiles {
 protected:
  /// A folder whose path has more than 300 characters, with all its parents.
  std::string longFolder() {
    std::string folder = world().folder();
    while (folder.size() <= kLong) {
      folder += "\\" + std::string(30, 'd');
      EXPECT_EQ(files().makeFolder(folder), system_code::kSuccess) << folder.size();
    }
    return folder;
  }

  static constexpr std::size_t kLong = 300;
};

TEST_F(LongPaths, FilesAreMadeReadChangedAndRemoved) {
  const std::string file = longFolder() + "\\a.txt";
  std::string content;
  FileFacts facts;
  ASSERT_EQ(files().write(file, "one"), system_code::kSuccess);
  ASSERT_EQ(files().append(file, " two"), system_code::kSuccess);
  ASSERT_EQ(files().read(file, kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(content, "one two");
  ASSERT_EQ(files().look(file, facts), system_code::kSuccess);
  EXPECT_EQ(facts.size, 7U);
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  ASSERT_EQ(files().look(file, facts), system_code::kSuccess);
  EXPECT_TRUE(facts.readOnly);
  ASSERT_EQ(files().setReadOnly(file, false), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(file), system_code::kSuccess);
  EXPECT_EQ(look(file), 2U);
}

TEST_F(LongPaths, AFolderTellsTheNamesOfItsEntriesAlone) {
  const std::string folder = longFolder();
  ASSERT_EQ(files().write(folder + "\\a.txt", "x"), system_code::kSuccess);
  ASSERT_EQ(files().makeFolder(folder + "\\sub"), system_code::kSuccess);
  EXPECT_THAT(namesIn(folder), UnorderedElementsAre("a.txt", "sub"));
  EXPECT_THAT(namesIn(folder, "txt"), ElementsAre("a.txt"));
  EXPECT_THAT(namesIn(folder + "\\sub"), IsEmpty());
}

TEST_F(LongPaths, FilesAreCopiedWithTheirTimesAndPutInPlace) {
  const std::string folder = longFolder();
  const std::string file = putFile("a.txt", "text");
  world().makeOld(file);
  FileFacts facts;
  ASSERT_EQ(files().copyFile(file, folder + "\\b.txt"), system_code::kSuccess);
  ASSERT_EQ(files().look(folder + "\\b.txt", facts), system_code::kSuccess);
  EXPECT_EQ(facts.modified, modified("a.txt"));
  ASSERT_EQ(files().copyFile(folder + "\\b.txt", folder + "\\c.txt"), system_code::kSuccess);
  EXPECT_EQ(files().replaceFile(folder + "\\c.txt", folder + "\\b.txt"), system_code::kSuccess);
  EXPECT_EQ(files().replaceFile(folder + "\\b.txt", path("d.txt")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("d.txt")), "text");
  EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(LongPaths, FoldersAreRemovedLevelByLevel) {
  std::string folder = longFolder();
  EXPECT_EQ(files().makeFolder(folder), 183U);
  for (; folder != world().folder(); folder.erase(folder.rfind('\\'))) {
    EXPECT_EQ(files().removeFolder(folder), system_code::kSuccess) << folder.size();
  }
}

TEST_F(LongPaths, WhatIsMissingIsToldAsEverywhere) {
  const std::string folder = longFolder();
  std::vector<FolderEntry> entries;
  std::string content;
  EXPECT_EQ(look(folder + "\\none.txt"), 2U);
  EXPECT_EQ(look(folder + "\\none\\a.txt"), 3U);
  EXPECT_EQ(files().read(folder + "\\none.txt", kNoLimit, content), 2U);
  EXPECT_EQ(files().removeFile(folder + "\\none.txt"), 2U);
  EXPECT_EQ(files().list(folder + "\\none", "", entries), 3U);
  EXPECT_EQ(files().removeFolder(folder.substr(0, folder.rfind('\\'))), 145U);
}

TEST_F(LongPaths, PathsAreReadAsShortOnesAre) {
  const std::string folder = longFolder();
  ASSERT_EQ(files().write(folder + "\\a.txt", "x"), system_code::kSuccess);
  std::string slashes = folder;
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  EXPECT_EQ(look(slashes + "/A.TXT"), system_code::kSuccess);
  EXPECT_EQ(look(folder + "\\none\\..\\a.txt"), system_code::kSuccess);
  EXPECT_EQ(look(folder + "\\.\\a.txt"), system_code::kSuccess);
  EXPECT_EQ(look(folder + "\\a.txt. ."), system_code::kSuccess);
}

TEST_F(LongPaths, ALiteralPathStaysAsItIs) {
  const std::string literal = "\\\\?\\" + longFolder();
  ASSERT_EQ(files().write(literal + "\\a.txt", "x"), system_code::kSuccess);
  EXPECT_THAT(namesIn(literal), ElementsAre("a.txt"));
  EXPECT_EQ(files().removeFile(literal + "\\a.txt"), system_code::kSuccess);
  putFile("b.txt", "x");
  EXPECT_EQ(look("\\\\?\\" + path("b.txt")), system_code::kSuccess);
}

}  // namespace
}  // namespace trelv::contract
