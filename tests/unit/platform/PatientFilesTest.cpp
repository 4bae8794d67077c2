#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/PatientFiles.h"
#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

// A simulated clock moves while the program pauses: nobody waits here.
namespace trelv {
namespace {

using sim::Sharing;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace system_code;

constexpr std::uint64_t kAll = 3000;

class PatientFilesTest : public testing::Test {
 protected:
  PatientFilesTest() {
    machine_.putFile(kFile, "old");
    machine_.putFile(kOther, "new");
  }

  /// Somebody holds the file for so long.
  void holdFor(const std::string& path, std::uint32_t milliseconds,
               Sharing sharing = Sharing::None) {
    disk_.holdOpen(path, sharing);
    machine_.clock().after(milliseconds, [this, path] { disk_.release(path); });
  }
  /// All that would change what stands there is refused with 5 for so long.
  void denyFor(const std::string& path, std::uint32_t milliseconds) {
    disk_.denyWriting(path);
    machine_.clock().after(milliseconds, [this, path] { disk_.allow(path); });
  }
  std::uint64_t paused() { return machine_.clock().paused(); }
  std::size_t callsOf(const std::string& method) { return machine_.callLog().countOf(method); }

  static constexpr const char* kFile = "C:\\d\\a.txt";
  static constexpr const char* kOther = "C:\\d\\b.txt";

  sim::SimMachine machine_;
  sim::SimDisk& disk_ = machine_.diskOf("C:\\");
  PatientFiles files_{machine_.files(), machine_.clock()};
};

struct Change {
  const char* name;
  const char* method;
  std::function<SystemCode(machine::Files&)> make;
};

const std::vector<Change>& changes() {
  static const std::vector<Change> all{
      {"Deleting", "files.removeFile",
       [](machine::Files& files) { return files.removeFile("C:\\d\\a.txt"); }},
      {"CopyingOnto", "files.copyFile",
       [](machine::Files& files) { return files.copyFile("C:\\d\\b.txt", "C:\\d\\a.txt"); }},
      {"CopyingFrom", "files.copyFile",
       [](machine::Files& files) { return files.copyFile("C:\\d\\a.txt", "C:\\d\\c.txt"); }},
      {"Renaming", "files.replaceFile",
       [](machine::Files& files) { return files.replaceFile("C:\\d\\a.txt", "C:\\d\\c.txt"); }},
      {"PuttingInPlace", "files.replaceFile",
       [](machine::Files& files) { return files.replaceFile("C:\\d\\b.txt", "C:\\d\\a.txt"); }}};
  return all;
}

TEST_F(PatientFilesTest, AFileThatIsHeldForAMomentIsWaitedForWhateverIsDone) {
  for (const Change& change : changes()) {
    sim::SimMachine machine;
    machine.putFile(kFile, "old");
    machine.putFile(kOther, "new");
    sim::SimDisk& disk = machine.diskOf("C:\\");
    disk.holdOpen(kFile, Sharing::None);
    machine.clock().after(1500, [&] { disk.release(kFile); });
    PatientFiles files(machine.files(), machine.clock());
    EXPECT_EQ(change.make(files), kSuccess) << change.name;
    EXPECT_GE(machine.clock().paused(), 1500U) << change.name;
  }
}

TEST_F(PatientFilesTest, AnythingIsDoneOnceWhereNothingStandsInTheWay) {
  for (const Change& change : changes()) {
    sim::SimMachine machine;
    machine.putFile(kFile, "old");
    machine.putFile(kOther, "new");
    PatientFiles files(machine.files(), machine.clock());
    EXPECT_EQ(change.make(files), kSuccess) << change.name;
    EXPECT_EQ(machine.clock().paused(), 0U) << change.name;
    EXPECT_EQ(machine.callCount(), 1U) << change.name << ": no look, no second try";
  }
}

TEST_F(PatientFilesTest, WhatIsRefusedForAMomentIsWaitedFor) {
  denyFor("C:\\d", 1500);
  EXPECT_EQ(files_.removeFile(kFile), kSuccess);
  EXPECT_GE(paused(), 1500U);
  denyFor("C:\\d", 1500);
  EXPECT_EQ(files_.makeFolder("C:\\d\\e"), kSuccess);
  denyFor("C:\\d", 1500);
  EXPECT_EQ(files_.removeFolder("C:\\d\\e"), kSuccess);
}

TEST_F(PatientFilesTest, WhatIsHeldForLongerIsRefusedAfterThreeSeconds) {
  holdFor(kFile, 60'000);
  EXPECT_EQ(files_.removeFile(kFile), kSharingViolation);
  EXPECT_EQ(paused(), kAll);
  EXPECT_TRUE(machine_.fileExists(kFile));
}

TEST_F(PatientFilesTest, AFolderWhoseLastFileIsStillBeingDeletedIsWaitedFor) {
  holdFor(kFile, 1500, Sharing::All);
  ASSERT_EQ(files_.removeFile(kFile), kSuccess);
  ASSERT_EQ(files_.removeFile(kOther), kSuccess);
  EXPECT_EQ(machine_.files().removeFolder("C:\\d"), kDirectoryNotEmpty);
  EXPECT_EQ(files_.removeFolder("C:\\d"), kSuccess);
  EXPECT_FALSE(machine_.folderExists("C:\\d"));
}

TEST_F(PatientFilesTest, AFileThatIsBeingDeletedIsWaitedForBeforeAnotherTakesItsName) {
  holdFor(kFile, 1500, Sharing::All);
  ASSERT_EQ(files_.removeFile(kFile), kSuccess);
  EXPECT_EQ(files_.replaceFile(kOther, kFile), kSuccess);
  EXPECT_EQ(machine_.fileText(kFile), "new");
}

TEST_F(PatientFilesTest, AFileThatIsBeingDeletedIsWaitedForBeforeOneIsMadeAnew) {
  for (const std::string& path : {std::string(kFile), std::string("C:\\a.txt")}) {
    for (const bool append : {false, true}) {
      machine_.putFile(path, "old");
      holdFor(path, 1500, Sharing::All);
      ASSERT_EQ(files_.removeFile(path), kSuccess);
      EXPECT_EQ(append ? files_.append(path, "new") : files_.write(path, "new"), kSuccess) << path;
      EXPECT_EQ(machine_.fileText(path), "new");
    }
  }
}

TEST_F(PatientFilesTest, AFileThatIsHeldForAMomentIsReadAndWritten) {
  std::string content;
  holdFor(kFile, 1500);
  EXPECT_EQ(files_.read(kFile, 10, content), kSuccess);
  EXPECT_EQ(content, "old");
  holdFor(kFile, 1500);
  EXPECT_EQ(files_.readPart(kFile, 1, 10, content), kSuccess);
  EXPECT_EQ(content, "ld");
  holdFor(kFile, 1500);
  EXPECT_EQ(files_.write(kFile, "new"), kSuccess);
  holdFor(kFile, 1500);
  EXPECT_EQ(files_.append(kFile, "er"), kSuccess);
  EXPECT_EQ(machine_.fileText(kFile), "newer");
}

TEST_F(PatientFilesTest, ReadingAFileThatStaysHeldWaitsOnce) {
  holdFor(kFile, 60'000);
  std::string content = "as it was";
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(files_.read(kFile, 10, content), kSharingViolation);
    EXPECT_EQ(files_.readPart(kFile, 0, 10, content), kSharingViolation);
    EXPECT_EQ(files_.append(kFile, "x"), kSharingViolation);
  }
  EXPECT_EQ(content, "as it was");
  EXPECT_EQ(paused(), kAll);
}

TEST_F(PatientFilesTest, AConnectionThatWasDroppedIsWaitedForByWhatCanBeDoneTwice) {
  std::string content;
  machine::FileFacts facts;
  std::vector<machine::FolderEntry> entries;
  const std::vector<std::function<SystemCode()>> calls{
      [&]() -> SystemCode { return files_.look(kFile, facts); },
      [&]() -> SystemCode { return files_.list("C:\\d", "", entries); },
      [&]() -> SystemCode { return files_.read(kFile, 10, content); },
      [&]() -> SystemCode { return files_.readPart(kFile, 0, 10, content); },
      [&]() -> SystemCode { return files_.write(kFile, "new"); }};
  for (const SystemCode code : {SystemCode{59}, kNetNameDeleted}) {
    for (const std::function<SystemCode()>& call : calls) {
      disk_.disconnect(code);
      machine_.clock().after(1500, [this] { disk_.reconnect(); });
      EXPECT_EQ(call(), kSuccess);
    }
  }
  EXPECT_EQ(machine_.fileText(kFile), "new");
  disk_.disconnect(kNetNameDeleted);
  const std::uint64_t before = paused();
  EXPECT_EQ(files_.append(kFile, "x"), kNetNameDeleted);
  EXPECT_EQ(files_.removeFile(kFile), kNetNameDeleted);
  EXPECT_EQ(files_.makeFolder("C:\\d\\e"), kNetNameDeleted);
  EXPECT_EQ(files_.replaceFile(kOther, kFile), kNetNameDeleted);
  EXPECT_EQ(paused(), before) << "it may have been done when the answer was lost";
}

TEST_F(PatientFilesTest, AServerThatStaysAwayIsWaitedForOnceOnEachOfItsShares) {
  disk_.disconnect(kNetNameDeleted);
  machine::FileFacts facts;
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(files_.look("C:\\d\\" + std::to_string(i), facts), kNetNameDeleted);
  }
  EXPECT_EQ(paused(), kAll);
  EXPECT_LT(callsOf("files.look"), 120U);
}

TEST_F(PatientFilesTest, EachShareOfAServerHasTimeToComeBack) {
  machine_.mount("\\\\SRV\\Uno")->disconnect(kNetNameDeleted);
  machine_.mount("\\\\SRV\\Due")->disconnect(kNetNameDeleted);
  machine::FileFacts facts;
  for (const char* const path : {"\\\\SRV\\Uno\\a", "\\\\srv\\uno\\b", "\\\\SRV\\Due\\a"}) {
    EXPECT_EQ(files_.look(path, facts), kNetNameDeleted);
  }
  EXPECT_EQ(paused(), 2 * kAll);
}

TEST_F(PatientFilesTest, WritingWaitsForNoRight) {
  disk_.denyWriting("C:\\d");
  EXPECT_EQ(files_.write("C:\\d\\none.txt", "x"), kAccessDenied);
  EXPECT_EQ(files_.append(kOther, "x"), kAccessDenied);
  EXPECT_EQ(paused(), 0U);
}

TEST_F(PatientFilesTest, AProgramThatRunsIsWaitedForOnceUnderBothItsNames) {
  const auto running = disk_.run(kFile);
  EXPECT_EQ(files_.replaceFile(kOther, kFile), kAccessDenied);
  EXPECT_EQ(files_.moveFile(kFile, "C:\\e.txt"), kSuccess);
  EXPECT_EQ(files_.removeFile("C:\\e.txt"), kAccessDenied);
  EXPECT_EQ(paused(), kAll);
}

TEST_F(PatientFilesTest, AFileThatWasMovedIsWaitedForUnderItsNewName) {
  ASSERT_EQ(files_.moveFile(kFile, "C:\\e.txt"), kSuccess);
  holdFor("C:\\e.txt", 1500);
  EXPECT_EQ(files_.removeFile("C:\\e.txt"), kSuccess);
}

TEST_F(PatientFilesTest, WhatALookShowsToBeRefusedForGoodIsNotWaitedFor) {
  disk_.setReadOnly(kFile);
  machine_.makeFolders("C:\\d\\folder");
  machine_.putFile("C:\\d\\hidden.txt", "old");
  disk_.setConcealed("C:\\d\\hidden.txt");
  EXPECT_EQ(files_.removeFile(kFile), kAccessDenied);
  EXPECT_EQ(files_.removeFile("C:\\d\\folder"), kAccessDenied);
  EXPECT_EQ(files_.copyFile(kOther, kFile), kAccessDenied);
  EXPECT_EQ(files_.copyFile(kOther, "C:\\d\\folder"), kAccessDenied);
  EXPECT_EQ(files_.copyFile(kOther, "C:\\d\\hidden.txt"), kAccessDenied);
  EXPECT_EQ(files_.copyFile("C:\\d\\folder", "C:\\d\\c.txt"), kAccessDenied);
  EXPECT_EQ(files_.replaceFile(kOther, kFile), kAccessDenied);
  EXPECT_EQ(files_.replaceFile(kOther, "C:\\d\\folder"), kAccessDenied);
  disk_.setReadOnly("C:\\d\\folder");
  EXPECT_EQ(files_.removeFolder("C:\\d\\folder"), kAccessDenied);
  EXPECT_EQ(paused(), 0U);
}

TEST_F(PatientFilesTest, AUserWithoutRightsWaitsOnceInAFolder) {
  disk_.denyWriting("C:\\d");
  EXPECT_EQ(files_.removeFile(kFile), kAccessDenied);
  EXPECT_EQ(files_.removeFile(kOther), kAccessDenied);
  EXPECT_EQ(files_.makeFolder("C:\\d\\e"), kAccessDenied);
  EXPECT_EQ(files_.copyFile("C:\\d\\a.txt", "C:\\d\\c.txt"), kAccessDenied);
  EXPECT_EQ(paused(), kAll);
}

TEST_F(PatientFilesTest, ReadingLookingListingAndWritingAreAskedOnce) {
  disk_.deny("C:\\d");
  std::string content;
  machine::FileFacts facts;
  std::vector<machine::FolderEntry> entries;
  EXPECT_EQ(files_.read(kFile, 10, content), kAccessDenied);
  EXPECT_EQ(files_.look(kFile, facts), kAccessDenied);
  EXPECT_EQ(files_.list("C:\\d", "", entries), kAccessDenied);
  EXPECT_EQ(files_.write(kFile, "x"), kAccessDenied);
  EXPECT_EQ(files_.append(kFile, "x"), kAccessDenied);
  EXPECT_EQ(files_.setReadOnly(kFile, true), kAccessDenied);
  EXPECT_EQ(paused(), 0U);
}

// --- What the program does with them

TEST_F(PatientFilesTest, DeletingAFileThatAScannerReadsSucceedsWithoutAReport) {
  tests::FakeProgram program(machine_);
  holdFor(kFile, 1500);
  EXPECT_TRUE(modLibrary::DeleteFile(program, kFile));
  EXPECT_THAT(program.lines(),
              ElementsAre("Cancellazione file: C:\\d\\a.txt effettuata con successo"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(PatientFilesTest, DeletingAFolderWhoseFilesAScannerReadsSucceedsWithoutAReport) {
  tests::FakeProgram program(machine_);
  machine_.putFile("C:\\d\\e\\c.txt", "x");
  holdFor("C:\\d\\e\\c.txt", 1500, Sharing::All);
  holdFor(kFile, 1500);
  EXPECT_TRUE(modLibrary::DeleteFolder(program, "C:\\d"));
  EXPECT_FALSE(machine_.folderExists("C:\\d"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv
