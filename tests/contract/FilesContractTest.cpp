#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

using machine::FileFacts;
using machine::FolderEntry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::size_t kNoLimit = 1U << 20U;

class FilesContract : public Contract {
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

// --- look

TEST_F(FilesContract, LookTellsAFilesSize) {
  FileFacts facts;
  ASSERT_EQ(files().look(putFile("a.txt", "12345"), facts), system_code::kSuccess);
  EXPECT_FALSE(facts.folder);
  EXPECT_FALSE(facts.readOnly);
  EXPECT_FALSE(facts.reparsePoint);
  EXPECT_EQ(facts.size, 5U);
}

TEST_F(FilesContract, LookTellsAFolder) {
  world().putFolder(path("sub"));
  FileFacts facts;
  ASSERT_EQ(files().look(path("sub"), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.folder);
  EXPECT_FALSE(facts.reparsePoint);
  EXPECT_EQ(facts.size, 0U);
}

TEST_F(FilesContract, LookAtAMissingFileAnswers2) { EXPECT_EQ(look(path("none.txt")), 2U); }

TEST_F(FilesContract, LookBelowAMissingFolderAnswers3) { EXPECT_EQ(look(path("none\\a.txt")), 3U); }

TEST_F(FilesContract, LookAtAnEmptyPathAnswers3) { EXPECT_EQ(look(""), 3U); }

TEST_F(FilesContract, LookLeavesTheFactsWhenItFails) {
  FileFacts facts;
  facts.size = 99;
  EXPECT_EQ(files().look(path("none.txt"), facts), 2U);
  EXPECT_EQ(facts.size, 99U);
}

TEST_F(FilesContract, TheRootOfADriveIsAFolder) {
  FileFacts facts;
  ASSERT_EQ(files().look(world().folder().substr(0, 3), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.folder);
}

TEST_F(FilesContract, PathsMatchWithoutRegardToCase) {
  putFile("Setup.Ini", "x");
  EXPECT_EQ(look(path("SETUP.ini")), system_code::kSuccess);
  std::string content;
  EXPECT_EQ(files().read(path("setup.INI"), kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(content, "x");
}

TEST_F(FilesContract, AccentedNamesMatchWithoutRegardToCase) {
  putFile("citt\u00E0.txt", "x");
  EXPECT_EQ(look(path("CITT\u00C0.TXT")), system_code::kSuccess);
  EXPECT_THAT(namesIn(world().folder()), ElementsAre("citt\u00E0.txt"));
}

TEST_F(FilesContract, ParentLevelsAreResolvedAsText) {
  putFile("a.txt", "x");
  EXPECT_EQ(look(path("none\\..\\a.txt")), system_code::kSuccess);
}

TEST_F(FilesContract, TrailingBlanksAndPointsOfNamesDoNotCount) {
  putFile("a.txt", "x");
  EXPECT_EQ(look(path("a.txt. .")), system_code::kSuccess);
}

TEST_F(FilesContract, AFileOnTheWayIsNoFolder) {
  putFile("a.txt", "x");
  EXPECT_EQ(look(path("a.txt\\b.txt")), 3U);
}

// --- Times of change

constexpr std::uint64_t kSecond = 10'000'000;

TEST_F(FilesContract, ALaterWriteHasALaterTime) {
  ASSERT_EQ(files().write(path("a.txt"), "one"), system_code::kSuccess);
  ASSERT_EQ(files().write(path("b.txt"), "one"), system_code::kSuccess);
  const std::uint64_t before = modified("a.txt");
  world().passASecond();
  ASSERT_EQ(files().write(path("a.txt"), "two"), system_code::kSuccess);
  ASSERT_EQ(files().append(path("b.txt"), "two"), system_code::kSuccess);
  EXPECT_GE(modified("a.txt"), before + kSecond);
  EXPECT_GE(modified("b.txt"), before + kSecond);
}

TEST_F(FilesContract, ReadingAndLookingLeaveTheTime) {
  const std::string file = putFile("a.txt", "x");
  world().makeOld(file);
  const std::uint64_t before = modified("a.txt");
  std::string content;
  ASSERT_EQ(files().read(file, kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(modified("a.txt"), before);
}

TEST_F(FilesContract, ALookAndAListingTellTheSameTime) {
  const std::string file = putFile("a.txt", "x");
  world().makeOld(file);
  std::vector<FolderEntry> entries;
  ASSERT_EQ(files().list(world().folder(), "", entries), system_code::kSuccess);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].facts.modified, modified("a.txt"));
  EXPECT_EQ(modified("a.txt") / kSecond, static_cast<std::uint64_t>(world().modifiedSeconds(file)));
}

TEST_F(FilesContract, ACopyHasTheTimeOfItsSourceToTheLastDigit) {
  const std::string file = putFile("a.txt", "x");
  putFile("b.txt", "y");
  world().passASecond();
  ASSERT_EQ(files().copyFile(file, path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(modified("b.txt"), modified("a.txt"));
}

TEST_F(FilesContract, AReplacedFileKeepsTheTimeThatItsSourceHad) {
  const std::string file = putFile("a.txt", "x");
  putFile("b.txt", "y");
  world().makeOld(file);
  const std::uint64_t before = modified("a.txt");
  ASSERT_EQ(files().replaceFile(file, path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(modified("b.txt"), before);
}

// --- read

TEST_F(FilesContract, ReadGivesAllBytes) {
  const std::string bytes("a\0\r\n\x1A\xFF", 6);
  std::string content = "old";
  ASSERT_EQ(files().read(putFile("a.bin", bytes), kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(content, bytes);
}

TEST_F(FilesContract, ReadOfAnEmptyFileGivesNoBytes) {
  std::string content = "old";
  ASSERT_EQ(files().read(putFile("a.bin", ""), kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(content, "");
}

TEST_F(FilesContract, ReadStopsAtTheLimit) {
  std::string content;
  ASSERT_EQ(files().read(putFile("a.bin", "123456"), 4, content), system_code::kSuccess);
  EXPECT_EQ(content, "1234");
}

TEST_F(FilesContract, ReadOfALargeFileIsWhole) {
  std::string bytes;
  for (int i = 0; i < 50000; ++i) bytes += std::to_string(i);
  std::string content;
  ASSERT_EQ(files().read(putFile("a.bin", bytes), kNoLimit, content), system_code::kSuccess);
  EXPECT_TRUE(content == bytes);
}

TEST_F(FilesContract, ReadThatFailsLeavesTheContent) {
  std::string content = "old";
  EXPECT_EQ(files().read(path("none"), kNoLimit, content), 2U);
  EXPECT_EQ(files().read(path("none\\a"), kNoLimit, content), 3U);
  EXPECT_EQ(files().read(world().folder(), kNoLimit, content), 5U);
  EXPECT_EQ(content, "old");
}

TEST_F(FilesContract, ReadOfAFileHeldWithoutReadSharingAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.txt", "x");
  const auto held = world().hold(file, {.read = false, .write = true, .remove = true});
  std::string content = "old";
  EXPECT_EQ(files().read(file, kNoLimit, content), 32U);
  EXPECT_EQ(content, "old");
}

TEST_F(FilesContract, ReadOfAFileThatAnotherReadsWorks) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.txt", "x");
  const auto held = world().hold(file, {.read = true, .write = false, .remove = false});
  std::string content;
  EXPECT_EQ(files().read(file, kNoLimit, content), system_code::kSuccess);
  EXPECT_EQ(content, "x");
}

// --- write

TEST_F(FilesContract, WriteMakesAFile) {
  ASSERT_EQ(files().write(path("a.txt"), "one\r\n"), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("a.txt")), "one\r\n");
}

TEST_F(FilesContract, WriteReplacesWhatAFileHeld) {
  ASSERT_EQ(files().write(putFile("a.txt", "a longer text"), "one"), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("a.txt")), "one");
}

TEST_F(FilesContract, WriteKeepsTheSpellingOfAnExistingName) {
  putFile("Setup.Ini", "x");
  ASSERT_EQ(files().write(path("SETUP.INI"), "y"), system_code::kSuccess);
  EXPECT_THAT(namesIn(world().folder()), ElementsAre("Setup.Ini"));
}

TEST_F(FilesContract, WriteBelowAMissingFolderAnswers3) {
  EXPECT_EQ(files().write(path("none\\a.txt"), "x"), 3U);
  EXPECT_FALSE(world().exists(path("none")));
}

TEST_F(FilesContract, WriteOntoAFolderAnswers5) {
  EXPECT_EQ(files().write(world().folder(), "x"), 5U);
}

TEST_F(FilesContract, WriteOntoAReadOnlyFileAnswers5) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  const std::string file = putFile("a.txt", "old");
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  EXPECT_EQ(files().write(file, "new"), 5U);
  EXPECT_EQ(world().fileBytes(file), "old");
}

TEST_F(FilesContract, WriteOntoAFileHeldWithoutWriteSharingAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.txt", "old");
  {
    const auto held = world().hold(file, {.read = true, .write = false, .remove = true});
    EXPECT_EQ(files().write(file, "new"), 32U);
  }
  EXPECT_EQ(world().fileBytes(file), "old");
}

// --- append

TEST_F(FilesContract, AppendMakesAFileAndGoesOnAtItsEnd) {
  ASSERT_EQ(files().append(path("a.log"), "one\r\n"), system_code::kSuccess);
  ASSERT_EQ(files().append(path("a.log"), "two\r\n"), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("a.log")), "one\r\ntwo\r\n");
}

TEST_F(FilesContract, AppendBelowAMissingFolderAnswers3) {
  EXPECT_EQ(files().append(path("none\\a.log"), "x"), 3U);
}

TEST_F(FilesContract, AppendToAFolderAnswers5) {
  EXPECT_EQ(files().append(world().folder(), "x"), 5U);
}

TEST_F(FilesContract, AppendToAReadOnlyFileAnswers5) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  const std::string file = putFile("a.log", "old");
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  EXPECT_EQ(files().append(file, "new"), 5U);
}

TEST_F(FilesContract, AppendWhileAReaderDeniesWritingAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.log", "old");
  {
    const auto held = world().hold(file, {.read = true, .write = false, .remove = true});
    EXPECT_EQ(files().append(file, "new"), 32U);
  }
  EXPECT_EQ(world().fileBytes(file), "old");
}

TEST_F(FilesContract, AppendWhileAReaderSharesWorks) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.log", "old ");
  {
    const auto held = world().hold(file, {.read = true, .write = true, .remove = false});
    EXPECT_EQ(files().append(file, "new"), system_code::kSuccess);
  }
  EXPECT_EQ(world().fileBytes(file), "old new");
}

// --- removeFile, setReadOnly

TEST_F(FilesContract, RemoveFileRemoves) {
  EXPECT_EQ(files().removeFile(putFile("a.txt", "x")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("a.txt")));
}

TEST_F(FilesContract, RemoveFileOfWhatIsMissingAnswers2And3) {
  EXPECT_EQ(files().removeFile(path("none.txt")), 2U);
  EXPECT_EQ(files().removeFile(path("none\\a.txt")), 3U);
}

TEST_F(FilesContract, RemoveFileOfAFolderAnswers5) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().removeFile(path("sub")), 5U);
  EXPECT_TRUE(world().exists(path("sub")));
}

TEST_F(FilesContract, RemoveFileOfAReadOnlyOneAnswers5) {
  const std::string file = putFile("a.txt", "x");
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(file), 5U);
  EXPECT_TRUE(world().exists(file));
  ASSERT_EQ(files().setReadOnly(file, false), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(file), system_code::kSuccess);
}

TEST_F(FilesContract, RemoveFileOfAnOpenOneAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = putFile("a.txt", "x");
  const auto held = world().hold(file, {.read = true, .write = true, .remove = false});
  EXPECT_EQ(files().removeFile(file), 32U);
  EXPECT_TRUE(world().exists(file));
}

TEST_F(FilesContract, ReadOnlyIsSetAndCleared) {
  const std::string file = putFile("a.txt", "x");
  FileFacts facts;
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  ASSERT_EQ(files().look(file, facts), system_code::kSuccess);
  EXPECT_TRUE(facts.readOnly);
  ASSERT_EQ(files().setReadOnly(file, false), system_code::kSuccess);
  ASSERT_EQ(files().look(file, facts), system_code::kSuccess);
  EXPECT_FALSE(facts.readOnly);
}

TEST_F(FilesContract, ReadOnlyOfWhatIsMissingAnswers2And3) {
  EXPECT_EQ(files().setReadOnly(path("none.txt"), true), 2U);
  EXPECT_EQ(files().setReadOnly(path("none\\a.txt"), true), 3U);
}

// --- Folders

TEST_F(FilesContract, MakeFolderMakesOneLevel) {
  EXPECT_EQ(files().makeFolder(path("sub")), system_code::kSuccess);
  FileFacts facts;
  ASSERT_EQ(files().look(path("sub"), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.folder);
}

TEST_F(FilesContract, MakeFolderBelowAMissingOneAnswers3) {
  EXPECT_EQ(files().makeFolder(path("none\\sub")), 3U);
}

TEST_F(FilesContract, MakeFolderOfWhatIsThereAnswers183) {
  EXPECT_EQ(files().makeFolder(world().folder()), 183U);
  EXPECT_EQ(files().makeFolder(putFile("a.txt", "x")), 183U);
}

TEST_F(FilesContract, RemoveFolderRemovesAnEmptyOne) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().removeFolder(path("sub")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("sub")));
}

TEST_F(FilesContract, RemoveFolderOfWhatIsMissingAnswers2And3) {
  EXPECT_EQ(files().removeFolder(path("none")), 2U);
  EXPECT_EQ(files().removeFolder(path("none\\sub")), 3U);
}

TEST_F(FilesContract, RemoveFolderOfAFullOneAnswers145) {
  world().putFolder(path("sub"));
  putFile("sub\\a.txt", "x");
  EXPECT_EQ(files().removeFolder(path("sub")), 145U);
  EXPECT_TRUE(world().exists(path("sub\\a.txt")));
}

TEST_F(FilesContract, RemoveFolderOfAFileAnswers267) {
  EXPECT_EQ(files().removeFolder(putFile("a.txt", "x")), 267U);
  EXPECT_TRUE(world().exists(path("a.txt")));
}

TEST_F(FilesContract, AFolderLinkIsAFolderAndAReparsePoint) {
  CONTRACT_NEEDS(Ability::FolderLinks, "links to folders cannot be made here");
  world().putFolder(path("real"));
  putFile("real\\a.txt", "x");
  world().putFolderLink(path("link"), path("real"));
  FileFacts facts;
  ASSERT_EQ(files().look(path("link"), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.folder);
  EXPECT_TRUE(facts.reparsePoint);
  EXPECT_EQ(look(path("link\\a.txt")), system_code::kSuccess);
  std::vector<FolderEntry> entries;
  ASSERT_EQ(files().list(world().folder(), "", entries), system_code::kSuccess);
  for (const FolderEntry& entry : entries) {
    EXPECT_EQ(entry.facts.reparsePoint, entry.name == "link") << entry.name;
  }
}

TEST_F(FilesContract, RemoveFolderOfALinkNeverTouchesWhatItsTargetHolds) {
  CONTRACT_NEEDS(Ability::FolderLinks, "links to folders cannot be made here");
  world().putFolder(path("real"));
  putFile("real\\a.txt", "x");
  world().putFolderLink(path("link"), path("real"));
  const SystemCode code = files().removeFolder(path("link"));
  // Windows removes the link. Wine refuses while the target holds something.
  EXPECT_THAT(code, testing::AnyOf(system_code::kSuccess, system_code::kDirectoryNotEmpty));
  EXPECT_EQ(world().exists(path("link")), code != system_code::kSuccess);
  EXPECT_TRUE(world().exists(path("real\\a.txt")));
}

// --- list

TEST_F(FilesContract, ListGivesEveryEntryOnce) {
  putFile("b.txt", "12");
  putFile("a.zip", "");
  world().putFolder(path("sub"));
  putFile("sub\\inner.txt", "x");
  EXPECT_THAT(namesIn(world().folder()), UnorderedElementsAre("a.zip", "b.txt", "sub"));
}

TEST_F(FilesContract, ListGivesTheFactsOfEachEntry) {
  putFile("b.txt", "12");
  world().putFolder(path("sub"));
  ASSERT_EQ(files().setReadOnly(path("b.txt"), true), system_code::kSuccess);
  std::vector<FolderEntry> entries;
  ASSERT_EQ(files().list(world().folder(), "", entries), system_code::kSuccess);
  ASSERT_EQ(entries.size(), 2U);
  for (const FolderEntry& entry : entries) {
    EXPECT_EQ(entry.facts.folder, entry.name == "sub");
    EXPECT_EQ(entry.facts.readOnly, entry.name == "b.txt");
    EXPECT_EQ(entry.facts.size, entry.name == "b.txt" ? 2U : 0U);
  }
  ASSERT_EQ(files().setReadOnly(path("b.txt"), false), system_code::kSuccess);
}

TEST_F(FilesContract, ListOfAnEmptyFolderIsEmpty) {
  std::vector<FolderEntry> entries = {{"old", {}}};
  ASSERT_EQ(files().list(world().folder(), "", entries), system_code::kSuccess);
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(FilesContract, ListByEndingGivesWhatEndsSoInAnyCase) {
  for (const char* const name :
       {"a.zip", "B.ZIP", "pack. zip", "zip", "a.zip.txt", "c.zi", "è.zip"})
    putFile(name, "");
  world().putFolder(path("folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), "zip"),
              UnorderedElementsAre("a.zip", "B.ZIP", "pack. zip", "zip", "è.zip", "folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), ".zip"),
              UnorderedElementsAre("a.zip", "B.ZIP", "è.zip", "folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), "gz"), IsEmpty());
}

TEST_F(FilesContract, ListByEndingKeepsTheOrder) {
  for (const char* const name : {"10.zip", "9.zip", "x.ini", "B.zip", "a.zip", "y.ini", "_x.zip"})
    putFile(name, "");
  std::vector<std::string> all = namesIn(world().folder());
  std::erase_if(all, [](const std::string& name) { return name.ends_with(".ini"); });
  EXPECT_EQ(namesIn(world().folder(), "zip"), all);
}

TEST_F(FilesContract, ListGivesTheSameOrderEachTime) {
  for (const char* const name : {"10.zip", "9.zip", "B.zip", "a.zip", "_x.zip"}) putFile(name, "");
  EXPECT_EQ(namesIn(world().folder()), namesIn(world().folder()));
}

TEST_F(FilesContract, ListOfALinkToAFolderGivesWhatItsTargetHolds) {
  CONTRACT_NEEDS(Ability::FolderLinks, "links to folders cannot be made here");
  world().putFolder(path("real"));
  putFile("real\\a.txt", "x");
  world().putFolderLink(path("link"), path("real"));
  EXPECT_THAT(namesIn(path("link")), ElementsAre("a.txt"));
}

TEST_F(FilesContract, ListThatFailsLeavesTheEntries) {
  std::vector<FolderEntry> entries = {{"old", {}}};
  EXPECT_EQ(files().list(path("none"), "", entries), 3U);
  EXPECT_EQ(files().list(path("none\\sub"), "", entries), 3U);
  EXPECT_EQ(files().list(putFile("a.txt", "x"), "", entries), 267U);
  EXPECT_EQ(files().list(path("none"), "zip", entries), 3U);
  EXPECT_EQ(files().list(path("none\\sub"), "zip", entries), 3U);
  EXPECT_EQ(files().list(path("a.txt"), "zip", entries), 267U);
  EXPECT_EQ(entries.size(), 1U);
}

// --- copyFile

TEST_F(FilesContract, CopyFileCopiesBytesAndTime) {
  const std::string file = putFile("a.txt", "text");
  world().makeOld(file);
  ASSERT_EQ(files().copyFile(file, path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("b.txt")), "text");
  EXPECT_EQ(world().modifiedSeconds(path("b.txt")), world().modifiedSeconds(file));
  EXPECT_TRUE(world().exists(file));
}

TEST_F(FilesContract, CopyFileOverwrites) {
  putFile("b.txt", "a longer text");
  ASSERT_EQ(files().copyFile(putFile("a.txt", "new"), path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("b.txt")), "new");
}

TEST_F(FilesContract, CopyFileOfWhatIsMissingAnswers2And3) {
  EXPECT_EQ(files().copyFile(path("none.txt"), path("b.txt")), 2U);
  EXPECT_EQ(files().copyFile(path("none\\a.txt"), path("b.txt")), 3U);
  EXPECT_FALSE(world().exists(path("b.txt")));
}

TEST_F(FilesContract, CopyFileBelowAMissingFolderAnswers3) {
  EXPECT_EQ(files().copyFile(putFile("a.txt", "x"), path("none\\b.txt")), 3U);
}

TEST_F(FilesContract, CopyFileFromOrOntoAFolderAnswers5) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().copyFile(path("sub"), path("b.txt")), 5U);
  EXPECT_EQ(files().copyFile(putFile("a.txt", "x"), path("sub")), 5U);
}

TEST_F(FilesContract, CopyFileOntoAReadOnlyTargetAnswers5) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  const std::string target = putFile("b.txt", "old");
  ASSERT_EQ(files().setReadOnly(target, true), system_code::kSuccess);
  EXPECT_EQ(files().copyFile(putFile("a.txt", "new"), target), 5U);
  EXPECT_EQ(world().fileBytes(target), "old");
}

TEST_F(FilesContract, CopyFileCarriesTheReadOnlyAttribute) {
  const std::string file = putFile("a.txt", "x");
  ASSERT_EQ(files().setReadOnly(file, true), system_code::kSuccess);
  ASSERT_EQ(files().copyFile(file, path("b.txt")), system_code::kSuccess);
  FileFacts facts;
  ASSERT_EQ(files().look(path("b.txt"), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.readOnly);
}

TEST_F(FilesContract, CopyFileOfOrOntoAHeldFileAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string source = putFile("a.txt", "new");
  const std::string target = putFile("b.txt", "old");
  {
    const auto held = world().hold(source, {.read = false, .write = false, .remove = false});
    EXPECT_EQ(files().copyFile(source, target), 32U);
  }
  {
    const auto held = world().hold(target, {.read = true, .write = false, .remove = false});
    EXPECT_EQ(files().copyFile(source, target), 32U);
  }
  EXPECT_EQ(world().fileBytes(target), "old");
}

TEST_F(FilesContract, CopyFileOntoItselfAnswers32AndLeavesIt) {
  const std::string file = putFile("a.txt", "text");
  EXPECT_EQ(files().copyFile(file, path("A.TXT")), 32U);
  EXPECT_EQ(world().fileBytes(file), "text");
}

TEST_F(FilesContract, CopyFileOfAFileThatOthersReadWorks) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string source = putFile("a.txt", "text");
  const auto held = world().hold(source, {.read = true, .write = false, .remove = false});
  EXPECT_EQ(files().copyFile(source, path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("b.txt")), "text");
}

TEST_F(FilesContract, CopyFileToAnotherVolumeKeepsBytesAndTime) {
  CONTRACT_NEEDS(Ability::OtherVolume, "there is no other volume here");
  const std::string file = putFile("a.txt", "text");
  world().makeOld(file);
  const std::string target = world().otherVolumeFolder() + "\\b.txt";
  ASSERT_EQ(files().copyFile(file, target), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(target), "text");
  EXPECT_EQ(world().modifiedSeconds(target), world().modifiedSeconds(file));
}

// --- A program that runs

TEST_F(FilesContract, ARunningProgramCannotBeDeletedOverwrittenOrReplaced) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  const std::string bytes = world().fileBytes(program);
  const std::string other = putFile("new.txt", "new");
  const auto running = world().keepRunning(program);
  EXPECT_EQ(files().removeFile(program), 5U);
  EXPECT_EQ(files().copyFile(other, program), 32U);
  EXPECT_EQ(files().write(program, "new"), 32U);
  EXPECT_EQ(files().replaceFile(other, program), 5U);
  EXPECT_TRUE(world().exists(other));
  EXPECT_TRUE(world().fileBytes(program) == bytes);
}

TEST_F(FilesContract, ARunningProgramCanBePutAsideAndANewOneTakesItsName) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  const std::string other = putFile("new.txt", "new");
  const auto running = world().keepRunning(program);
  std::string content;
  EXPECT_EQ(files().read(program, 2, content), system_code::kSuccess);
  EXPECT_EQ(content, "MZ");
  ASSERT_EQ(files().replaceFile(program, path("old.exe")), system_code::kSuccess);
  EXPECT_EQ(files().copyFile(other, program), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(program), "new");
  EXPECT_EQ(files().removeFile(path("old.exe")), 5U) << "it still runs, under its other name";
  EXPECT_TRUE(world().exists(path("old.exe")));
}

TEST_F(FilesContract, AProgramThatHasEndedIsAFileAsAnyOther) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  world().keepRunning(program).reset();
  EXPECT_EQ(files().write(program, "new"), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(program), system_code::kSuccess);
}

// --- replaceFile

TEST_F(FilesContract, ReplaceFileMovesToANewName) {
  EXPECT_EQ(files().replaceFile(putFile("a.txt", "new"), path("b.txt")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("a.txt")));
  EXPECT_EQ(world().fileBytes(path("b.txt")), "new");
}

TEST_F(FilesContract, ReplaceFileTakesTheTargetsPlace) {
  putFile("b.txt", "old");
  EXPECT_EQ(files().replaceFile(putFile("a.txt", "new"), path("b.txt")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("a.txt")));
  EXPECT_EQ(world().fileBytes(path("b.txt")), "new");
}

TEST_F(FilesContract, ReplaceFileOfWhatIsMissingAnswers2) {
  putFile("b.txt", "old");
  EXPECT_EQ(files().replaceFile(path("none.txt"), path("b.txt")), 2U);
  EXPECT_EQ(world().fileBytes(path("b.txt")), "old");
}

TEST_F(FilesContract, ReplaceFileBelowAMissingFolderAnswers3) {
  EXPECT_EQ(files().replaceFile(putFile("a.txt", "x"), path("none\\b.txt")), 3U);
  EXPECT_TRUE(world().exists(path("a.txt")));
}

TEST_F(FilesContract, ReplaceFileOntoAFolderAnswers5) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().replaceFile(putFile("a.txt", "x"), path("sub")), 5U);
  EXPECT_TRUE(world().exists(path("a.txt")));
}

TEST_F(FilesContract, ReplaceFileOntoAReadOnlyTargetIsDoneAsAWholeOrRefusedWith5) {
  const std::string source = putFile("a.txt", "new");
  const std::string target = putFile("b.txt", "old");
  ASSERT_EQ(files().setReadOnly(target, true), system_code::kSuccess);
  const SystemCode code = files().replaceFile(source, target);
  // Windows refuses. Wine replaces.
  EXPECT_THAT(code, testing::AnyOf(system_code::kSuccess, 5U));
  EXPECT_EQ(world().fileBytes(target), code == system_code::kSuccess ? "new" : "old");
  EXPECT_EQ(world().exists(source), code != system_code::kSuccess);
}

TEST_F(FilesContract, ReplaceFileOntoItselfKeepsIt) {
  const std::string file = putFile("setup.ini", "x");
  EXPECT_EQ(files().replaceFile(file, path("Setup.INI")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(file), "x");
}

TEST_F(FilesContract, ReplaceFileOnAnotherVolumeAnswers17) {
  CONTRACT_NEEDS(Ability::OtherVolume, "there is no other volume here");
  const std::string source = putFile("a.txt", "new");
  const std::string target = world().otherVolumeFolder() + "\\b.txt";
  world().putFile(target, "old");
  EXPECT_EQ(files().replaceFile(source, target), 17U);
  EXPECT_EQ(world().fileBytes(source), "new");
  EXPECT_EQ(world().fileBytes(target), "old");
}

TEST_F(FilesContract, ReplaceFileOntoAnOpenTargetAnswers5) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string source = putFile("a.txt", "new");
  const std::string target = putFile("b.txt", "old");
  {
    const auto held = world().hold(target, {.read = true, .write = true, .remove = false});
    EXPECT_EQ(files().replaceFile(source, target), 5U);
  }
  EXPECT_EQ(world().fileBytes(target), "old");
  EXPECT_TRUE(world().exists(source));
}

TEST_F(FilesContract, ReplaceFileOfAnOpenSourceAnswers32) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string source = putFile("a.txt", "new");
  {
    const auto held = world().hold(source, {.read = true, .write = true, .remove = false});
    EXPECT_EQ(files().replaceFile(source, path("b.txt")), 32U);
  }
  EXPECT_TRUE(world().exists(source));
  EXPECT_FALSE(world().exists(path("b.txt")));
}

}  // namespace
}  // namespace trelv::contract
