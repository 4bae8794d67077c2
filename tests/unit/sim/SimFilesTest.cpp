// What files do on Windows is held by the contract; here is what only the simulated machine can
// show.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using testing::ElementsAre;
using namespace system_code;

constexpr std::size_t kWhole = 1'000'000;

class SimFilesTest : public testing::Test {
 protected:
  SystemCode read(const std::string& path) { return machine_.files().read(path, kWhole, content_); }
  std::string textOf(const std::string& path) {
    EXPECT_EQ(read(path), kSuccess) << path;
    return content_;
  }
  SystemCode write(const std::string& path, const std::string& bytes = "x") {
    return machine_.files().write(path, bytes);
  }
  SystemCode append(const std::string& path, const std::string& bytes = "x") {
    return machine_.files().append(path, bytes);
  }
  SystemCode replace(const std::string& from, const std::string& to) {
    return machine_.files().replaceFile(from, to);
  }
  SystemCode copy(const std::string& from, const std::string& to) {
    return machine_.files().copyFile(from, to);
  }
  SystemCode look(const std::string& path) { return machine_.files().look(path, facts_); }
  SystemCode list(const std::string& folder) { return machine_.files().list(folder, "", entries_); }
  /// Names of the entries of a folder in the order of its listing.
  std::vector<std::string> listed(const std::string& folder) {
    EXPECT_EQ(list(folder), kSuccess);
    std::vector<std::string> names;
    for (const machine::FolderEntry& entry : entries_) {
      names.push_back(entry.name + (entry.facts.folder ? "\\" : ""));
    }
    return names;
  }

  SimMachine machine_;
  SimDisk& disk_ = machine_.diskOf("C:\\");
  /// What the last read, look and listing gave.
  std::string content_ = "unread";
  machine::FileFacts facts_;
  std::vector<machine::FolderEntry> entries_;
};

// --- A disk

TEST_F(SimFilesTest, NamesAreFoundInAnyCaseAndKeepTheirSpelling) {
  machine_.putFile("C:\\Lumo\\Àncora.TXT", "testo");
  EXPECT_EQ(textOf("c:\\LUMO\\àNCORA.txt"), "testo");
  EXPECT_THAT(disk_.names("C:\\Lumo\\"), ElementsAre("Programmi", "Àncora.TXT"));
}

TEST_F(SimFilesTest, FoldersAreListedInTheOrderOfCreationOrAsTold) {
  machine_.putFile("C:\\packs\\b.zip", "");
  machine_.putFile("C:\\packs\\a.zip", "");
  machine_.makeFolders("C:\\packs\\0");
  EXPECT_THAT(listed("C:\\packs"), ElementsAre("b.zip", "a.zip", "0\\"));
  disk_.setListingOrder("C:\\packs", {"0", "A.ZIP"});
  EXPECT_THAT(listed("C:\\packs"), ElementsAre("0\\", "a.zip", "b.zip"));
}

TEST(SimDisk, TreeShowsEveryEntry) {
  SimDisk disk;
  disk.put("S:\\prg\\com\\a.ini", "12345");
  disk.putLink("\\\\server\\share\\link", "C:\\altrove");

  EXPECT_EQ(disk.tree(), "prg\\\nprg\\com\\\nprg\\com\\a.ini 5\nlink -> C:\\altrove\n");
  EXPECT_EQ(disk.tree("prg\\com"), "prg\\com\\a.ini 5\n");
}

// --- A share

TEST_F(SimFilesTest, AShareIsTheSameForEveryWorkstationUnderItsOwnName) {
  SimMachine second;
  const auto share = machine_.mount("S:");
  second.mount("\\\\SERVER\\Lumo", share);
  ASSERT_EQ(append("S:\\agdv.lck", "uno"), kSuccess);
  ASSERT_EQ(second.files().append("\\\\server\\lumo\\AGDV.LCK", " due"), kSuccess);

  EXPECT_EQ(textOf("S:\\agdv.lck"), "uno due");
  EXPECT_EQ(share->text("agdv.lck"), "uno due");
  EXPECT_EQ(machine_.callCount(), 2U);
  EXPECT_EQ(second.callCount(), 1U);
}

TEST_F(SimFilesTest, AShareThatVanishesBetweenTwoCallsAnswersItsCodeWhileItIsGone) {
  const auto share = machine_.mount("S:");
  share->put("a.ini", "[S]\r\nk=v\r\n");
  machine_.onCall(2, [&] { share->disconnect(); });
  EXPECT_EQ(read("S:\\a.ini"), kSuccess);
  content_ = "unread";
  EXPECT_EQ(read("S:\\a.ini"), kBadNetPath);
  share->disconnect(kNetNameDeleted);
  for (const SystemCode code :
       {read("S:\\a.ini"), look("S:\\a.ini"), list("S:\\"), append("S:\\a.ini")}) {
    EXPECT_EQ(code, kNetNameDeleted);
  }
  EXPECT_EQ(content_, "unread");
  EXPECT_EQ(machine_.profiles().readValue("S", "k", "default", 100, "S:\\a.ini"), "default");
  EXPECT_EQ(machine_.profiles().writeValue("S", "k", "w", "S:\\a.ini"), 0U);

  share->reconnect();
  EXPECT_EQ(textOf("S:\\a.ini"), "[S]\r\nk=v\r\n");
}

TEST_F(SimFilesTest, PlacesThatAreNotMountedAnswerByTheirKind) {
  EXPECT_EQ(read("Q:\\a.txt"), kPathNotFound);
  EXPECT_EQ(read("\\\\server\\share\\a.txt"), kBadNetPath);
}

// --- Files that refuse

TEST_F(SimFilesTest, AFullDiskLeavesAWrittenFileEmptyAndACopyUnmade) {
  const auto disk = machine_.mount("D:");
  disk->put("a.txt", "12345");
  disk->put("b.txt", "12345");
  disk->setCapacity(12);
  EXPECT_EQ(copy("D:\\a.txt", "D:\\c.txt"), kDiskFull);
  EXPECT_FALSE(disk->exists("c.txt"));
  EXPECT_EQ(append("D:\\a.txt", "678"), kDiskFull);
  EXPECT_EQ(disk->text("a.txt"), "12345");
  EXPECT_EQ(write("D:\\a.txt", "12345678"), kDiskFull);
  EXPECT_EQ(disk->text("a.txt"), "");
  EXPECT_EQ(write("D:\\a.txt", "1234567"), kSuccess);
}

TEST_F(SimFilesTest, WhatIsDeniedAnswersItsCodeAndNothingBesideIt) {
  const std::string file = "C:\\Program Files\\P\\a.txt";
  machine_.putFile(file, "a");
  disk_.denyWriting("C:\\Program Files");
  EXPECT_EQ(read(file), kSuccess);
  EXPECT_EQ(write(file), kAccessDenied);
  EXPECT_EQ(machine_.files().makeFolder("C:\\Program Files\\Q"), kAccessDenied);
  EXPECT_EQ(machine_.files().makeFolder("C:\\Program Files 2"), kSuccess);

  disk_.deny("C:\\Program Files\\P");
  EXPECT_EQ(read(file), kAccessDenied);

  disk_.allow("C:\\Program Files\\P");
  disk_.allow("C:\\Program Files");
  EXPECT_EQ(write(file), kSuccess);
}

TEST_F(SimFilesTest, AFileThatIsBeingDeletedRefusesEveryUseAndIsStillListed) {
  machine_.putFile("C:\\d\\a.txt", "a");
  machine_.putFile("C:\\b.txt", "b");
  disk_.putStream("C:\\d\\a.txt", "Zone.Identifier", "3");
  disk_.holdOpen("C:\\d\\a.txt", Sharing::All);
  machine::Files& files = machine_.files();
  machine::FileIdentity identity;
  ASSERT_EQ(files.removeFile("C:\\d\\a.txt"), kSuccess);
  for (const SystemCode code :
       {look("C:\\d\\a.txt"), read("C:\\d\\a.txt"), files.identify("C:\\d\\a.txt", identity),
        files.readPart("C:\\d\\a.txt", 0, 1, content_), write("C:\\d\\a.txt"),
        append("C:\\d\\a.txt"), files.setReadOnly("C:\\d\\a.txt", true),
        files.removeFile("C:\\d\\a.txt"), copy("C:\\d\\a.txt", "C:\\c.txt"),
        copy("C:\\b.txt", "C:\\d\\a.txt"), replace("C:\\d\\a.txt", "C:\\c.txt"),
        replace("C:\\b.txt", "C:\\d\\a.txt"), files.moveFile("C:\\d\\a.txt", "C:\\c.txt"),
        files.copyRights("C:\\d\\a.txt", "C:\\b.txt"),
        files.copyRights("C:\\b.txt", "C:\\d\\a.txt"),
        files.removeStream("C:\\d\\a.txt", "Zone.Identifier")}) {
    EXPECT_EQ(code, kAccessDenied);
  }
  EXPECT_THAT(listed("C:\\d"), ElementsAre("a.txt"));
  disk_.release("C:\\d\\a.txt");
  EXPECT_EQ(look("C:\\d\\a.txt"), kFileNotFound);
}

// --- Links

TEST_F(SimFilesTest, LinksAreFollowedOnTheWayAndShownAtTheEnd) {
  machine_.putFile("C:\\vero\\sub\\a.txt", "a");
  const auto disk = machine_.mount("D:");
  disk->putLink("D:\\link", "C:\\vero");
  EXPECT_EQ(textOf("D:\\link\\sub\\a.txt"), "a");
  ASSERT_EQ(look("D:\\link"), kSuccess);
  EXPECT_TRUE(facts_.folder);
  EXPECT_TRUE(facts_.reparsePoint);

  EXPECT_EQ(machine_.files().removeFolder("D:\\link"), kSuccess);
  EXPECT_FALSE(disk->exists("link"));
  EXPECT_TRUE(machine_.fileExists("C:\\vero\\sub\\a.txt"));
}

TEST_F(SimFilesTest, ALinkToItselfEndsInsteadOfTurningInCircles) {
  disk_.putLink("C:\\a", "C:\\a");
  EXPECT_NE(list("C:\\a"), kSuccess);
}

// --- Copies and times

TEST_F(SimFilesTest, ACopyKeepsTimeVersionAndWhatItRuns) {
  machine_.programs().define("C:\\a.exe", [](SimProcess&) { return 7U; });
  machine_.setFileVersion("C:\\a.exe", {1, 2, 3, 4});
  disk_.setModified("C:\\a.exe", {2008, 2, 29, 1, 2, 3});
  ASSERT_EQ(copy("C:\\a.exe", "C:\\b.exe"), kSuccess);

  machine::FileVersion version{};
  std::unique_ptr<machine::RunningProcess> process;
  std::uint32_t code = 0;
  EXPECT_EQ(disk_.modifiedTicks("C:\\b.exe"), ticksOf({2008, 2, 29, 1, 2, 3}));
  EXPECT_EQ(machine_.machine().versions.read("C:\\b.exe", version), kSuccess);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
  ASSERT_EQ(machine_.programs().start("C:\\b.exe", true, process), kSuccess);
  ASSERT_EQ(process->exitCode(code), kSuccess);
  EXPECT_EQ(code, 7U);
}

TEST_F(SimFilesTest, WritingCarriesTheTimeOfTheClock) {
  machine_.clock().set({2026, 12, 31, 23, 59, 59});
  machine_.clock().advance(1);
  ASSERT_EQ(write("C:\\a.txt"), kSuccess);
  EXPECT_EQ(machine_.clock().now(), (machine::LocalTime{2027, 1, 1, 0, 0, 0}));
  EXPECT_EQ(disk_.modifiedTicks("C:\\a.txt"), ticksOf({2027, 1, 1, 0, 0, 0}));
  machine_.clock().set({1601, 1, 1, 0, 0, 2});
  ASSERT_EQ(append("C:\\a.txt"), kSuccess);
  ASSERT_EQ(look("C:\\a.txt"), kSuccess);
  EXPECT_EQ(facts_.modified, 20'000'000U);
}

TEST(FileTicks, CountFrom1601) {
  EXPECT_EQ(ticksOf({1601, 1, 1, 0, 0, 0}), 0);
  EXPECT_EQ(ticksOf({1970, 1, 1, 0, 0, 0}), 116'444'736'000'000'000);
  EXPECT_EQ(ticksOf({2000, 3, 1, 0, 0, 1}) - ticksOf({2000, 2, 28, 0, 0, 0}),
            (2 * 86'400 + 1) * std::int64_t{10'000'000});
}

// --- Rights and streams

TEST_F(SimFilesTest, RightsComeFromTheFolderAndTravelWithARename) {
  const RightsList onlyMario{{"mario", Right::All}, {"*", Right::Read}};
  machine_.makeFolders("C:\\a");
  machine_.makeFolders("C:\\b");
  disk_.setRights("C:\\a", onlyMario);
  EXPECT_EQ(write("C:\\a\\new.txt"), kSuccess);
  EXPECT_EQ(disk_.rights("C:\\a\\new.txt"), onlyMario);
  EXPECT_EQ(copy("C:\\a\\new.txt", "C:\\b\\copy.txt"), kSuccess);
  EXPECT_EQ(disk_.rights("C:\\b\\copy.txt"), RightsList());
  EXPECT_EQ(replace("C:\\a\\new.txt", "C:\\b\\copy.txt"), kSuccess);
  EXPECT_EQ(disk_.rights("C:\\b\\copy.txt"), onlyMario);
}

TEST_F(SimFilesTest, AUserDoesWhatTheRightsAllow) {
  machine_.putFile("C:\\a\\f.txt", "x");
  disk_.setRights("C:\\a", {{"*", Right::Read}});
  EXPECT_EQ(read("C:\\a\\f.txt"), kSuccess);
  EXPECT_EQ(list("C:\\a"), kSuccess);
  EXPECT_EQ(write("C:\\a\\f.txt"), kAccessDenied);
  EXPECT_EQ(append("C:\\a\\g.txt"), kAccessDenied);
  EXPECT_EQ(machine_.files().removeFile("C:\\a\\f.txt"), kAccessDenied);
  EXPECT_EQ(replace("C:\\a\\f.txt", "C:\\f.txt"), kAccessDenied);
  EXPECT_EQ(machine_.files().makeFolder("C:\\a\\b"), kAccessDenied);
  EXPECT_EQ(machine_.files().mayAddFile("C:\\a"), kAccessDenied);
  disk_.setRights("C:\\a", {{"anna", Right::All}});
  EXPECT_EQ(read("C:\\a\\f.txt"), kAccessDenied);
  EXPECT_EQ(list("C:\\a"), kAccessDenied);
  machine_.volumes().setUser("anna");
  EXPECT_EQ(write("C:\\a\\f.txt"), kSuccess);
  EXPECT_EQ(machine_.files().mayAddFile("C:\\a"), kSuccess);
}

TEST_F(SimFilesTest, WhoMadeAFileMayAlwaysChangeItsRights) {
  const RightsList readers{{"*", Right::Read}};
  machine_.putFile("C:\\f.txt", "x");
  machine_.putFile("C:\\g.txt", "x");
  disk_.setRights("C:\\f.txt", readers);
  EXPECT_EQ(write("C:\\own.txt"), kSuccess);
  EXPECT_EQ(machine_.files().copyRights("C:\\f.txt", "C:\\own.txt"), kSuccess);
  EXPECT_EQ(disk_.rights("C:\\own.txt"), readers);
  EXPECT_EQ(machine_.files().copyRights("C:\\g.txt", "C:\\own.txt"), kSuccess);
  EXPECT_EQ(machine_.files().copyRights("C:\\g.txt", "C:\\f.txt"), kAccessDenied);
  disk_.setRights("C:\\g.txt", {{"anna", Right::All}});
  EXPECT_EQ(machine_.files().copyRights("C:\\g.txt", "C:\\own.txt"), kAccessDenied)
      << "a list that the user may not look at";
}

TEST_F(SimFilesTest, AnEncryptedFileIsItsUsersAloneAndItsCopyElsewhereEverybodys) {
  machine_.putFile("C:\\a\\f.txt", "text");
  disk_.encrypt("C:\\a", "mario");
  ASSERT_EQ(write("C:\\a\\g.txt"), kSuccess);
  ASSERT_EQ(copy("C:\\a\\f.txt", "C:\\copy.txt"), kSuccess);
  ASSERT_EQ(copy("C:\\copy.txt", "C:\\a\\h.txt"), kSuccess);
  ASSERT_EQ(replace("C:\\a\\g.txt", "C:\\moved.txt"), kSuccess);
  EXPECT_FALSE(disk_.isEncrypted("C:\\copy.txt"));
  machine_.volumes().setUser("anna");
  EXPECT_EQ(textOf("C:\\copy.txt"), "text");
  for (const char* const path : {"C:\\a\\f.txt", "C:\\a\\h.txt", "C:\\moved.txt"}) {
    EXPECT_TRUE(disk_.isEncrypted(path)) << path;
    EXPECT_EQ(read(path), kAccessDenied) << path;
    EXPECT_EQ(append(path), kAccessDenied) << path;
    EXPECT_EQ(look(path), kSuccess) << path;
  }
  EXPECT_EQ(write("C:\\a\\annas.txt", "own"), kSuccess);
  EXPECT_EQ(textOf("C:\\a\\annas.txt"), "own");
}

TEST_F(SimFilesTest, AStreamTravelsWithCopiesAndIsRemovedAlone) {
  machine_.putFile("C:\\a.exe", "x");
  disk_.putStream("C:\\a.exe", "Zone.Identifier", "3");
  EXPECT_EQ(copy("C:\\a.exe", "C:\\b.exe"), kSuccess);
  EXPECT_EQ(replace("C:\\b.exe", "C:\\c.exe"), kSuccess);
  ASSERT_TRUE(disk_.hasStream("C:\\c.exe", "Zone.Identifier"));
  EXPECT_EQ(machine_.files().removeStream("C:\\c.exe", "Zone.Identifier"), kSuccess);
  EXPECT_EQ(machine_.files().removeStream("C:\\c.exe", "Zone.Identifier"), kFileNotFound);
  EXPECT_TRUE(disk_.hasStream("C:\\a.exe", "Zone.Identifier"));
  EXPECT_EQ(textOf("C:\\c.exe"), "x");
}

}  // namespace
}  // namespace trelv::sim
