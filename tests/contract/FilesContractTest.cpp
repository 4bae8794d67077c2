#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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

  FileFacts factsOf(const std::string& path) {
    FileFacts facts;
    EXPECT_EQ(files().look(path, facts), system_code::kSuccess) << path;
    return facts;
  }

  std::uint64_t modified(const std::string& name) { return factsOf(path(name)).modified; }

  std::string contentOf(const std::string& path, std::size_t limit = kNoLimit) {
    std::string content = "old";
    EXPECT_EQ(files().read(path, limit, content), system_code::kSuccess) << path;
    return content;
  }

  std::vector<FolderEntry> entriesIn(const std::string& folder, const std::string& ending = {}) {
    std::vector<FolderEntry> entries = {{"old", {}}};
    EXPECT_EQ(files().list(folder, ending, entries), system_code::kSuccess) << folder;
    return entries;
  }

  std::vector<std::string> namesIn(const std::string& folder, const std::string& ending = {}) {
    std::vector<std::string> names;
    for (const FolderEntry& entry : entriesIn(folder, ending)) names.push_back(entry.name);
    return names;
  }

  /// A read-only file.
  std::string putReadOnly(const std::string& name, std::string_view bytes) {
    EXPECT_EQ(files().setReadOnly(putFile(name, bytes), true), system_code::kSuccess);
    return path(name);
  }

  void putFiles(const std::vector<std::string>& names) {
    for (const std::string& name : names) putFile(name, "");
  }
};

// --- Calls that are refused

/// A call that is given a path, and another one that leads to a file. What it would fill must stay
/// as it was.
struct Call {
  const char* name;
  SystemCode (*call)(machine::Files& files, const std::string& path, const std::string& other);
};

SystemCode look(machine::Files& files, const std::string& path, const std::string&) {
  FileFacts facts;
  facts.size = 99;
  const SystemCode code = files.look(path, facts);
  EXPECT_EQ(facts.size, 99U);
  return code;
}

SystemCode read(machine::Files& files, const std::string& path, const std::string&) {
  std::string content = "old";
  const SystemCode code = files.read(path, kNoLimit, content);
  EXPECT_EQ(content, "old");
  return code;
}

SystemCode readPart(machine::Files& files, const std::string& path, const std::string&) {
  std::string content = "old";
  const SystemCode code = files.readPart(path, 0, 4, content);
  EXPECT_EQ(content, "old");
  return code;
}

SystemCode list(machine::Files& files, const std::string& path, const std::string&) {
  std::vector<FolderEntry> entries = {{"old", {}}};
  const SystemCode code = files.list(path, "", entries);
  EXPECT_EQ(files.list(path, "zip", entries), code);
  EXPECT_EQ(entries.size(), 1U);
  return code;
}

template <auto Method, auto... More>
SystemCode at(machine::Files& files, const std::string& path, const std::string&) {
  return (files.*Method)(path, More...);
}
template <auto Method>
SystemCode from(machine::Files& files, const std::string& path, const std::string& other) {
  return (files.*Method)(path, other);
}
template <auto Method>
SystemCode onto(machine::Files& files, const std::string& path, const std::string& other) {
  return (files.*Method)(other, path);
}

using machine::Files;
constexpr Call kLook{"look", look};
constexpr Call kRead{"read", read};
constexpr Call kReadPart{"readPart", readPart};
constexpr Call kList{"list", list};
constexpr Call kWrite{"write", from<&Files::write>};
constexpr Call kAppend{"append", from<&Files::append>};
constexpr Call kRemoveFile{"removeFile", at<&Files::removeFile>};
constexpr Call kSetReadOnly{"setReadOnly", at<&Files::setReadOnly, true>};
constexpr Call kMakeFolder{"makeFolder", at<&Files::makeFolder>};
constexpr Call kRemoveFolder{"removeFolder", at<&Files::removeFolder>};
constexpr Call kCopyFrom{"copyFile from there", from<&Files::copyFile>};
constexpr Call kCopyOnto{"copyFile to there", onto<&Files::copyFile>};
constexpr Call kReplaceFrom{"replaceFile from there", from<&Files::replaceFile>};
constexpr Call kReplaceOnto{"replaceFile to there", onto<&Files::replaceFile>};

constexpr Call kMoveFrom{"moveFile from there", from<&Files::moveFile>};
constexpr Call kMoveOnto{"moveFile to there", onto<&Files::moveFile>};
constexpr Call kRightsFrom{"copyRights from there", from<&Files::copyRights>};
constexpr Call kRightsOnto{"copyRights to there", onto<&Files::copyRights>};

class RefusedCalls : public FilesContract {
 protected:
  /// Each of the calls answers the code and changes nothing, while what `keep` gives lives.
  void expectRefused(
      SystemCode code, const std::string& path, const std::vector<Call>& calls,
      const std::function<std::shared_ptr<void>()>& keep = [] { return nullptr; }) {
    const std::string other = putFile("other.txt", "other");
    const std::string before = seen(path);
    {
      const std::shared_ptr<void> kept = keep();
      for (const auto& [name, call] : calls) EXPECT_EQ(call(files(), path, other), code) << name;
    }
    EXPECT_TRUE(seen(path) == before);
    EXPECT_EQ(seen(other), "other");
  }

  void expectRefusedWhileHeld(Sharing sharing, SystemCode code, const std::vector<Call>& calls) {
    CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
    const std::string file = putFile("a.txt", "old");
    expectRefused(code, file, calls, [&] { return world().hold(file, sharing); });
  }

 private:
  std::string seen(const std::string& path) {
    if (!world().exists(path)) return "nothing";
    return factsOf(path).folder ? "folder" : world().fileBytes(path);
  }
};

TEST_F(RefusedCalls, OfWhatIsMissingAnswer2) {
  expectRefused(2, path("none"),
                {kLook, kRead, kReadPart, kRemoveFile, kSetReadOnly, kRemoveFolder, kCopyFrom,
                 kReplaceFrom, kMoveFrom, kRightsFrom, kRightsOnto});
}

TEST_F(RefusedCalls, BelowAMissingFolderAnswer3) {
  expectRefused(3, path("none\\a.txt"),
                {kLook, kRead, kReadPart, kWrite, kAppend, kRemoveFile, kSetReadOnly, kMakeFolder,
                 kRemoveFolder, kList, kCopyFrom, kCopyOnto, kReplaceOnto, kMoveOnto, kRightsFrom,
                 kRightsOnto});
  EXPECT_FALSE(world().exists(path("none")));
}

// As for a session of the same user that has not connected it.
TEST_F(RefusedCalls, OnADriveThatIsNotThereAnswer3) {
  expectRefused(3, "Q:\\Lumo\\a.txt",
                {kLook, kRead, kReadPart, kWrite, kAppend, kRemoveFile, kSetReadOnly, kMakeFolder,
                 kRemoveFolder, kList, kCopyFrom, kCopyOnto, kReplaceOnto, kMoveFrom, kMoveOnto,
                 kRightsFrom, kRightsOnto});
}

TEST_F(RefusedCalls, OfAnEmptyPathAMissingFolderOrAFileOnTheWayAnswer3) {
  EXPECT_EQ(look(files(), "", ""), 3U);
  expectRefused(3, path("none"), {kList});
  expectRefused(3, putFile("a.txt", "x") + "\\b.txt", {kLook});
}

TEST_F(RefusedCalls, ForFilesAnswer5OfAFolder) {
  world().putFolder(path("sub"));
  expectRefused(
      5, path("sub"),
      {kRead, kReadPart, kWrite, kAppend, kRemoveFile, kCopyFrom, kCopyOnto, kReplaceOnto});
}

TEST_F(RefusedCalls, ForFoldersAnswer267OfAFile) {
  expectRefused(267, putFile("a.txt", "x"), {kRemoveFolder, kList});
}

TEST_F(RefusedCalls, MakeFolderAnswers183OfWhatIsThere) {
  expectRefused(183, world().folder(), {kMakeFolder});
  expectRefused(183, putFile("a.txt", "x"), {kMakeFolder});
}

TEST_F(RefusedCalls, MoveFileAnswers183OntoWhatIsThere) {
  expectRefused(183, putFile("a.txt", "x"), {kMoveOnto});
  world().putFolder(path("sub"));
  expectRefused(183, path("sub"), {kMoveOnto});
}

TEST_F(RefusedCalls, RemoveFolderAnswers145OfAFullOne) {
  world().putFolder(path("sub"));
  putFile("sub\\a.txt", "x");
  expectRefused(145, path("sub"), {kRemoveFolder});
  EXPECT_TRUE(world().exists(path("sub\\a.txt")));
}

TEST_F(RefusedCalls, OntoAReadOnlyFileAnswer5) {
  CONTRACT_NEEDS(Ability::ReadOnlyRefusesWriting, "this user may write read-only files");
  expectRefused(5, putReadOnly("a.txt", "old"), {kWrite, kAppend, kCopyOnto});
}

TEST_F(RefusedCalls, OfAFileHeldWithoutReadSharingAnswer32) {
  expectRefusedWhileHeld({.read = false, .write = true, .remove = true}, 32,
                         {kRead, kReadPart, kCopyFrom});
}

TEST_F(RefusedCalls, OntoAFileHeldWithoutWriteSharingAnswer32) {
  expectRefusedWhileHeld({.read = true, .write = false, .remove = true}, 32,
                         {kWrite, kAppend, kCopyOnto});
}

TEST_F(RefusedCalls, OfAnOpenFileAnswer32AndOntoIt5) {
  const Sharing open{.read = true, .write = true, .remove = false};
  expectRefusedWhileHeld(open, 32, {kRemoveFile, kReplaceFrom, kMoveFrom});
  expectRefusedWhileHeld(open, 5, {kReplaceOnto});
}

TEST_F(RefusedCalls, OfARunningProgramAnswer5OrWhereItWouldBeWritten32) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  const auto run = [&] { return world().keepRunning(program); };
  expectRefused(5, program, {kRemoveFile, kReplaceOnto}, run);
  expectRefused(32, program, {kWrite, kCopyOnto}, run);
}

// --- look

TEST_F(FilesContract, LookTellsAFilesSize) {
  const FileFacts facts = factsOf(putFile("a.txt", "12345"));
  EXPECT_FALSE(facts.folder);
  EXPECT_FALSE(facts.readOnly);
  EXPECT_FALSE(facts.reparsePoint);
  EXPECT_EQ(facts.size, 5U);
}

TEST_F(FilesContract, LookTellsAFolder) {
  world().putFolder(path("sub"));
  const FileFacts facts = factsOf(path("sub"));
  EXPECT_TRUE(facts.folder);
  EXPECT_FALSE(facts.reparsePoint);
  EXPECT_EQ(facts.size, 0U);
}

TEST_F(FilesContract, TheRootOfADriveIsAFolder) {
  EXPECT_TRUE(factsOf(world().folder().substr(0, 3)).folder);
}

TEST_F(FilesContract, PathsMatchWithoutRegardToCase) {
  putFile("Setup.Ini", "x");
  EXPECT_EQ(factsOf(path("SETUP.ini")).size, 1U);
  EXPECT_EQ(contentOf(path("setup.INI")), "x");
}

TEST_F(FilesContract, AccentedNamesMatchWithoutRegardToCase) {
  putFile("citt\u00E0.txt", "x");
  EXPECT_EQ(factsOf(path("CITT\u00C0.TXT")).size, 1U);
  EXPECT_THAT(namesIn(world().folder()), ElementsAre("citt\u00E0.txt"));
}

TEST_F(FilesContract, ParentLevelsAreResolvedAsText) {
  putFile("a.txt", "x");
  EXPECT_EQ(factsOf(path("none\\..\\a.txt")).size, 1U);
}

TEST_F(FilesContract, TrailingBlanksAndPointsOfNamesDoNotCount) {
  putFile("a.txt", "x");
  EXPECT_EQ(factsOf(path("a.txt. .")).size, 1U);
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
  EXPECT_EQ(contentOf(file), "x");
  EXPECT_EQ(modified("a.txt"), before);
}

TEST_F(FilesContract, ALookAndAListingTellTheSameTime) {
  const std::string file = putFile("a.txt", "x");
  world().makeOld(file);
  const std::vector<FolderEntry> entries = entriesIn(world().folder());
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
  std::string large;
  for (int i = 0; i < 50000; ++i) large += std::to_string(i);
  for (const std::string& bytes : {std::string("a\0\r\n\x1A\xFF", 6), std::string(), large}) {
    EXPECT_TRUE(contentOf(putFile("a.bin", bytes)) == bytes) << bytes.size();
  }
}

TEST_F(FilesContract, ReadStopsAtTheLimit) {
  EXPECT_EQ(contentOf(putFile("a.bin", "123456"), 4), "1234");
}

// --- write, append

TEST_F(FilesContract, WriteMakesAFileAndReplacesWhatItHeld) {
  for (const char* const text : {"a longer text\r\n", "one"}) {
    ASSERT_EQ(files().write(path("a.txt"), text), system_code::kSuccess);
    EXPECT_EQ(world().fileBytes(path("a.txt")), text);
  }
}

TEST_F(FilesContract, WriteKeepsTheSpellingOfAnExistingName) {
  putFile("Setup.Ini", "x");
  ASSERT_EQ(files().write(path("SETUP.INI"), "y"), system_code::kSuccess);
  EXPECT_THAT(namesIn(world().folder()), ElementsAre("Setup.Ini"));
}

TEST_F(FilesContract, AppendMakesAFileAndGoesOnAtItsEnd) {
  ASSERT_EQ(files().append(path("a.log"), "one\r\n"), system_code::kSuccess);
  ASSERT_EQ(files().append(path("a.log"), "two\r\n"), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("a.log")), "one\r\ntwo\r\n");
}

// --- Files that others read

TEST_F(FilesContract, AFileThatOthersReadIsReadAndCopied) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string source = putFile("a.txt", "text");
  const auto held = world().hold(source, {.read = true, .write = false, .remove = false});
  EXPECT_EQ(contentOf(source), "text");
  EXPECT_EQ(files().copyFile(source, path("b.txt")), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(path("b.txt")), "text");
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

TEST_F(FilesContract, RemoveFileOfAReadOnlyOneAnswers5UntilThatIsCleared) {
  const std::string file = putReadOnly("a.txt", "x");
  EXPECT_EQ(files().removeFile(file), 5U);
  EXPECT_TRUE(world().exists(file));
  ASSERT_EQ(files().setReadOnly(file, false), system_code::kSuccess);
  EXPECT_EQ(files().removeFile(file), system_code::kSuccess);
}

TEST_F(FilesContract, ReadOnlyIsSetAndCleared) {
  const std::string file = putFile("a.txt", "x");
  for (const bool readOnly : {true, false}) {
    ASSERT_EQ(files().setReadOnly(file, readOnly), system_code::kSuccess);
    EXPECT_EQ(factsOf(file).readOnly, readOnly);
  }
}

// --- Folders

TEST_F(FilesContract, MakeFolderMakesOneLevel) {
  EXPECT_EQ(files().makeFolder(path("sub")), system_code::kSuccess);
  EXPECT_TRUE(factsOf(path("sub")).folder);
}

TEST_F(FilesContract, RemoveFolderRemovesAnEmptyOne) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().removeFolder(path("sub")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("sub")));
}

/// A link to a folder that holds one file.
class FolderLinkContract : public FilesContract {
 protected:
  void SetUp() override {
    CONTRACT_NEEDS(Ability::FolderLinks, "links to folders cannot be made here");
    world().putFolder(path("real"));
    putFile("real\\a.txt", "x");
    world().putFolderLink(path("link"), path("real"));
  }
};

TEST_F(FolderLinkContract, IsAFolderAndAReparsePoint) {
  const FileFacts facts = factsOf(path("link"));
  EXPECT_TRUE(facts.folder);
  EXPECT_TRUE(facts.reparsePoint);
  EXPECT_EQ(factsOf(path("link\\a.txt")).size, 1U);
  EXPECT_THAT(namesIn(world().folder()), UnorderedElementsAre("link", "real"));
  for (const FolderEntry& entry : entriesIn(world().folder())) {
    EXPECT_EQ(entry.facts.reparsePoint, entry.name == "link") << entry.name;
  }
}

TEST_F(FolderLinkContract, RemoveFolderNeverTouchesWhatItsTargetHolds) {
  const SystemCode code = files().removeFolder(path("link"));
  // Windows removes the link. Wine refuses while the target holds something.
  EXPECT_THAT(code, testing::AnyOf(system_code::kSuccess, system_code::kDirectoryNotEmpty));
  EXPECT_EQ(world().exists(path("link")), code != system_code::kSuccess);
  EXPECT_TRUE(world().exists(path("real\\a.txt")));
}

TEST_F(FolderLinkContract, ListGivesWhatItsTargetHolds) {
  EXPECT_THAT(namesIn(path("link")), ElementsAre("a.txt"));
}

// --- list

TEST_F(FilesContract, ListGivesEveryEntryOnce) {
  putFiles({"b.txt", "a.zip"});
  world().putFolder(path("sub"));
  putFile("sub\\inner.txt", "x");
  EXPECT_THAT(namesIn(world().folder()), UnorderedElementsAre("a.zip", "b.txt", "sub"));
}

TEST_F(FilesContract, ListGivesTheFactsOfEachEntry) {
  putReadOnly("b.txt", "12");
  world().putFolder(path("sub"));
  const std::vector<FolderEntry> entries = entriesIn(world().folder());
  ASSERT_EQ(entries.size(), 2U);
  for (const FolderEntry& entry : entries) {
    EXPECT_EQ(entry.facts.folder, entry.name == "sub");
    EXPECT_EQ(entry.facts.readOnly, entry.name == "b.txt");
    EXPECT_EQ(entry.facts.size, entry.name == "b.txt" ? 2U : 0U);
  }
}

TEST_F(FilesContract, ListOfAnEmptyFolderIsEmpty) {
  EXPECT_THAT(entriesIn(world().folder()), IsEmpty());
}

TEST_F(FilesContract, ListByEndingGivesWhatEndsSoInAnyCase) {
  putFiles({"a.zip", "B.ZIP", "pack. zip", "zip", "a.zip.txt", "c.zi", "è.zip"});
  world().putFolder(path("folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), "zip"),
              UnorderedElementsAre("a.zip", "B.ZIP", "pack. zip", "zip", "è.zip", "folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), ".zip"),
              UnorderedElementsAre("a.zip", "B.ZIP", "è.zip", "folder.zip"));
  EXPECT_THAT(namesIn(world().folder(), "gz"), IsEmpty());
}

TEST_F(FilesContract, ListGivesTheSameOrderEachTimeByEndingToo) {
  putFiles({"10.zip", "9.zip", "x.ini", "B.zip", "a.zip", "y.ini", "_x.zip"});
  std::vector<std::string> all = namesIn(world().folder());
  EXPECT_EQ(namesIn(world().folder()), all);
  std::erase_if(all, [](const std::string& name) { return name.ends_with(".ini"); });
  EXPECT_EQ(namesIn(world().folder(), "zip"), all);
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

TEST_F(FilesContract, CopyFileCarriesTheReadOnlyAttribute) {
  ASSERT_EQ(files().copyFile(putReadOnly("a.txt", "x"), path("b.txt")), system_code::kSuccess);
  EXPECT_TRUE(factsOf(path("b.txt")).readOnly);
}

TEST_F(FilesContract, CopyFileOntoItselfAnswers32AndLeavesIt) {
  const std::string file = putFile("a.txt", "text");
  EXPECT_EQ(files().copyFile(file, path("A.TXT")), 32U);
  EXPECT_EQ(world().fileBytes(file), "text");
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

TEST_F(FilesContract, ARunningProgramCanBePutAsideAndANewOneTakesItsName) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  const std::string other = putFile("new.txt", "new");
  const auto running = world().keepRunning(program);
  EXPECT_EQ(contentOf(program, 2), "MZ");
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

TEST_F(FilesContract, ReplaceFileMovesToANewNameOrTakesTheTargetsPlace) {
  for (const char* const text : {"one", "two"}) {
    EXPECT_EQ(files().replaceFile(putFile("a.txt", text), path("b.txt")), system_code::kSuccess);
    EXPECT_FALSE(world().exists(path("a.txt")));
    EXPECT_EQ(world().fileBytes(path("b.txt")), text);
  }
}

TEST_F(FilesContract, ReplaceFileOntoAReadOnlyTargetIsDoneAsAWholeOrRefusedWith5) {
  const std::string source = putFile("a.txt", "new");
  const std::string target = putReadOnly("b.txt", "old");
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

// --- Parts

TEST_F(FilesContract, APartOfAFileIsRead) {
  const std::string file = putFile("a.txt", "0123456789");
  std::string part;
  ASSERT_EQ(files().readPart(file, 3, 4, part), system_code::kSuccess);
  EXPECT_EQ(part, "3456");
  ASSERT_EQ(files().readPart(file, 8, 40, part), system_code::kSuccess);
  EXPECT_EQ(part, "89");
  ASSERT_EQ(files().readPart(file, 10, 4, part), system_code::kSuccess);
  EXPECT_EQ(part, "");
  ASSERT_EQ(files().readPart(file, 0x1'0000'0000U, 4, part), system_code::kSuccess);
  EXPECT_EQ(part, "");
}

// --- moveFile

TEST_F(FilesContract, MoveFileMovesToANewName) {
  world().putFolder(path("sub"));
  EXPECT_EQ(files().moveFile(putFile("a.txt", "new"), path("sub\\b.txt")), system_code::kSuccess);
  EXPECT_FALSE(world().exists(path("a.txt")));
  EXPECT_EQ(world().fileBytes(path("sub\\b.txt")), "new");
}

TEST_F(FilesContract, MoveFilePutsARunningProgramAside) {
  const std::string program = path("running.exe");
  world().putProgram(program);
  const auto running = world().keepRunning(program);
  EXPECT_EQ(files().moveFile(program, path("old.exe")), system_code::kSuccess);
  EXPECT_EQ(files().moveFile(putFile("new.txt", "new"), program), system_code::kSuccess);
  EXPECT_EQ(world().fileBytes(program), "new");
}

// --- Rights

TEST_F(FilesContract, ARenameTakesTheRightsAlong) {
  const std::string source = putFile("a.txt", "new");
  const std::string target = putFile("b.txt", "old");
  const std::string before = world().rights(source);
  world().putRights(target);
  ASSERT_NE(world().rights(target), before);
  ASSERT_EQ(files().replaceFile(source, target), system_code::kSuccess);
  EXPECT_EQ(world().rights(target), before);
}

TEST_F(FilesContract, RightsAreCopied) {
  const std::string source = putFile("a.txt", "1");
  const std::string target = putFile("b.txt", "2");
  world().putRights(source);
  const std::string wanted = world().rights(source);
  ASSERT_NE(world().rights(target), wanted);
  ASSERT_EQ(files().copyRights(source, target), system_code::kSuccess);
  EXPECT_EQ(world().rights(target), wanted);
  EXPECT_EQ(world().rights(source), wanted);
  EXPECT_EQ(world().fileBytes(target), "2");
  ASSERT_EQ(files().copyRights(source, target), system_code::kSuccess) << "equal ones";
  ASSERT_EQ(files().replaceFile(target, source), system_code::kSuccess);
  EXPECT_EQ(world().rights(source), wanted);
}

TEST_F(FilesContract, AFolderIsAskedWhetherFilesMayBeMadeInIt) {
  EXPECT_EQ(files().mayAddFile(world().folder()), system_code::kSuccess);
  EXPECT_THAT(namesIn(world().folder()), IsEmpty());
  EXPECT_EQ(files().mayAddFile(path("none")), 2U);
  EXPECT_EQ(files().mayAddFile(path("none\\sub")), 3U);
}

// --- Streams

TEST_F(FilesContract, AStreamThatIsNotThereCannotBeRemoved) {
  const std::string file = putFile("a.txt", "x");
  // Wine takes the name for one that no file can have.
  EXPECT_THAT(files().removeStream(file, "Zone.Identifier"),
              testing::AnyOf(2U, system_code::kInvalidName));
  EXPECT_EQ(world().fileBytes(file), "x");
}

}  // namespace
}  // namespace trelv::contract
