#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

constexpr std::size_t kWhole = 1'000'000;

std::string readText(SimMachine& machine, const std::string& path) {
  std::string content = "unread";
  EXPECT_EQ(machine.files().read(path, kWhole, content), kSuccess) << path;
  return content;
}

TEST(SimDisk, NamesAreFoundInAnyCaseAndKeepTheirSpelling) {
  SimMachine machine;
  machine.putFile("C:\\Lumo\\Àncora.TXT", "testo");

  EXPECT_EQ(readText(machine, "c:\\LUMO\\àNCORA.txt"), "testo");
  EXPECT_EQ(machine.diskOf("C:\\").names("C:\\Lumo\\"),
            (std::vector<std::string>{"Programmi", "Àncora.TXT"}));
}

TEST(SimDisk, IsListedInTheOrderOfCreationOrAsTold) {
  SimMachine machine;
  machine.putFile("C:\\packs\\b.zip", "");
  machine.putFile("C:\\packs\\a.zip", "");
  machine.makeFolders("C:\\packs\\0");
  std::vector<machine::FolderEntry> entries;

  ASSERT_EQ(machine.files().list("C:\\packs", "", entries), kSuccess);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].name, "b.zip");
  EXPECT_EQ(entries[1].name, "a.zip");
  EXPECT_TRUE(entries[2].facts.folder);

  machine.diskOf("C:\\").setListingOrder("C:\\packs", {"0", "A.ZIP"});
  ASSERT_EQ(machine.files().list("C:\\packs", "", entries), kSuccess);
  EXPECT_EQ(entries[0].name, "0");
  EXPECT_EQ(entries[1].name, "a.zip");
  EXPECT_EQ(entries[2].name, "b.zip");
}

TEST(SimDisk, TreeShowsEveryEntry) {
  SimDisk disk;
  disk.put("S:\\prg\\com\\a.ini", "12345");
  disk.putLink("\\\\server\\share\\link", "C:\\altrove");

  EXPECT_EQ(disk.tree(), "prg\\\nprg\\com\\\nprg\\com\\a.ini 5\nlink -> C:\\altrove\n");
  EXPECT_EQ(disk.tree("prg\\com"), "prg\\com\\a.ini 5\n");
}

TEST(SharedDisk, IsTheSameForEveryWorkstationUnderItsOwnName) {
  SimMachine first;
  SimMachine second;
  const auto share = first.mount("S:");
  second.mount("\\\\SERVER\\Lumo", share);

  ASSERT_EQ(first.files().append("S:\\agdv.lck", "uno"), kSuccess);
  ASSERT_EQ(second.files().append("\\\\server\\lumo\\AGDV.LCK", " due"), kSuccess);

  EXPECT_EQ(readText(first, "S:\\agdv.lck"), "uno due");
  EXPECT_EQ(share->text("agdv.lck"), "uno due");
  EXPECT_EQ(first.callCount(), 2U);
  EXPECT_EQ(second.callCount(), 1U);
}

TEST(SharedDisk, AnswersItsCodeWhileItIsGone) {
  SimMachine machine;
  const auto share = machine.mount("S:");
  share->put("a.ini", "[S]\r\nk=v\r\n");
  std::string content = "before";
  machine::FileFacts facts;
  std::vector<machine::FolderEntry> entries;

  share->disconnect(kNetNameDeleted);
  EXPECT_EQ(machine.files().read("S:\\a.ini", kWhole, content), kNetNameDeleted);
  EXPECT_EQ(content, "before");
  EXPECT_EQ(machine.files().look("S:\\a.ini", facts), kNetNameDeleted);
  EXPECT_EQ(machine.files().list("S:\\", "", entries), kNetNameDeleted);
  EXPECT_EQ(machine.files().append("S:\\a.ini", "x"), kNetNameDeleted);
  EXPECT_EQ(machine.profiles().readValue("S", "k", "default", 100, "S:\\a.ini"), "default");
  EXPECT_EQ(machine.profiles().writeValue("S", "k", "w", "S:\\a.ini"), 0U);

  share->reconnect();
  EXPECT_EQ(readText(machine, "S:\\a.ini"), "[S]\r\nk=v\r\n");
}

TEST(SharedDisk, VanishesBetweenTwoCallsWhenAHookSaysSo) {
  SimMachine machine;
  const auto share = machine.mount("S:");
  share->put("a.txt", "a");
  machine.onCall(2, [&] { share->disconnect(); });
  std::string content;

  EXPECT_EQ(machine.files().read("S:\\a.txt", kWhole, content), kSuccess);
  EXPECT_EQ(machine.files().read("S:\\a.txt", kWhole, content), kBadNetPath);
}

TEST(SimFiles, PlacesThatAreNotMountedAnswerByTheirKind) {
  SimMachine machine;
  std::string content;

  EXPECT_EQ(machine.files().read("Q:\\a.txt", kWhole, content), kPathNotFound);
  EXPECT_EQ(machine.files().read("\\\\server\\share\\a.txt", kWhole, content), kBadNetPath);
}

TEST(SimFiles, ReadOnlyFilesRefuseToBeChanged) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "a");
  machine.putFile("C:\\b.txt", "b");
  machine.diskOf("C:\\").setReadOnly("C:\\a.txt");

  EXPECT_EQ(machine.files().write("C:\\a.txt", "x"), kAccessDenied);
  EXPECT_EQ(machine.files().append("C:\\a.txt", "x"), kAccessDenied);
  EXPECT_EQ(machine.files().removeFile("C:\\a.txt"), kAccessDenied);
  EXPECT_EQ(machine.files().copyFile("C:\\b.txt", "C:\\a.txt"), kAccessDenied);
  EXPECT_EQ(machine.profiles().writeValue("S", "k", "v", "C:\\a.txt"), 0U);
  EXPECT_EQ(machine.fileText("C:\\a.txt"), "a");

  EXPECT_EQ(machine.files().setReadOnly("C:\\a.txt", false), kSuccess);
  EXPECT_EQ(machine.files().write("C:\\a.txt", "x"), kSuccess);
}

TEST(SimFiles, HeldFilesLetPassWhatTheirHolderShares) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "a");
  SimDisk& disk = machine.diskOf("C:\\");
  std::string content;

  disk.holdOpen("C:\\a.txt", Sharing::Read);
  EXPECT_EQ(machine.files().read("C:\\a.txt", kWhole, content), kSuccess);
  EXPECT_EQ(machine.files().append("C:\\a.txt", "b"), kSharingViolation);
  EXPECT_EQ(machine.files().removeFile("C:\\a.txt"), kSharingViolation);

  disk.holdOpen("C:\\a.txt", Sharing::Write);
  EXPECT_EQ(machine.files().read("C:\\a.txt", kWhole, content), kSharingViolation);
  EXPECT_EQ(machine.files().append("C:\\a.txt", "b"), kSuccess);

  disk.holdOpen("C:\\a.txt", Sharing::All);
  EXPECT_EQ(machine.files().removeFile("C:\\a.txt"), kSuccess);
  EXPECT_FALSE(machine.fileExists("C:\\a.txt"));
}

TEST(SimFiles, ARunningProgramCanOnlyBeReadAndRenamed) {
  SimMachine machine;
  const std::string running = "C:\\Lumo\\Programmi\\TrelvManager.exe";
  machine.putFile("C:\\Lumo\\Programmi\\new.exe", "MZ new");
  std::string content;

  EXPECT_EQ(machine.files().read(running, kWhole, content), kSuccess);
  EXPECT_EQ(machine.files().removeFile(running), kAccessDenied);
  EXPECT_EQ(machine.files().copyFile("C:\\Lumo\\Programmi\\new.exe", running), kSharingViolation);
  EXPECT_EQ(machine.files().replaceFile("C:\\Lumo\\Programmi\\new.exe", running), kAccessDenied);

  EXPECT_EQ(machine.files().replaceFile(running, "C:\\Lumo\\Programmi\\old.exe"), kSuccess);
  EXPECT_EQ(machine.files().copyFile("C:\\Lumo\\Programmi\\new.exe", running), kSuccess);
  EXPECT_EQ(machine.files().removeFile("C:\\Lumo\\Programmi\\old.exe"), kAccessDenied);
  EXPECT_EQ(machine.files().removeFile(running), kSuccess);
}

TEST(SimFiles, AFullDiskLeavesAWrittenFileEmptyAndACopyUnmade) {
  SimMachine machine;
  const auto disk = machine.mount("D:");
  disk->put("a.txt", "12345");
  disk->put("b.txt", "12345");
  disk->setCapacity(12);

  EXPECT_EQ(machine.files().copyFile("D:\\a.txt", "D:\\c.txt"), kDiskFull);
  EXPECT_FALSE(disk->exists("c.txt"));
  EXPECT_EQ(machine.files().append("D:\\a.txt", "678"), kDiskFull);
  EXPECT_EQ(disk->text("a.txt"), "12345");
  EXPECT_EQ(machine.files().write("D:\\a.txt", "12345678"), kDiskFull);
  EXPECT_EQ(disk->text("a.txt"), "");
  EXPECT_EQ(machine.files().write("D:\\a.txt", "1234567"), kSuccess);
}

TEST(SimFiles, WhatIsDeniedAnswersItsCodeAndNothingBesideIt) {
  SimMachine machine;
  machine.putFile("C:\\Program Files\\P\\a.txt", "a");
  SimDisk& disk = machine.diskOf("C:\\");
  std::string content;

  disk.denyWriting("C:\\Program Files");
  EXPECT_EQ(machine.files().read("C:\\Program Files\\P\\a.txt", kWhole, content), kSuccess);
  EXPECT_EQ(machine.files().write("C:\\Program Files\\P\\a.txt", "b"), kAccessDenied);
  EXPECT_EQ(machine.files().makeFolder("C:\\Program Files\\Q"), kAccessDenied);
  EXPECT_EQ(machine.files().makeFolder("C:\\Program Files 2"), kSuccess);

  disk.deny("C:\\Program Files\\P");
  EXPECT_EQ(machine.files().read("C:\\Program Files\\P\\a.txt", kWhole, content), kAccessDenied);

  disk.allow("C:\\Program Files\\P");
  disk.allow("C:\\Program Files");
  EXPECT_EQ(machine.files().write("C:\\Program Files\\P\\a.txt", "b"), kSuccess);
}

TEST(SimFiles, LinksAreFollowedOnTheWayAndShownAtTheEnd) {
  SimMachine machine;
  machine.putFile("C:\\vero\\sub\\a.txt", "a");
  const auto disk = machine.mount("D:");
  disk->putLink("D:\\link", "C:\\vero");
  machine::FileFacts facts;

  EXPECT_EQ(readText(machine, "D:\\link\\sub\\a.txt"), "a");
  ASSERT_EQ(machine.files().look("D:\\link", facts), kSuccess);
  EXPECT_TRUE(facts.folder);
  EXPECT_TRUE(facts.reparsePoint);

  EXPECT_EQ(machine.files().removeFolder("D:\\link"), kSuccess);
  EXPECT_FALSE(disk->exists("link"));
  EXPECT_TRUE(machine.fileExists("C:\\vero\\sub\\a.txt"));
}

TEST(SimFiles, ALinkToItselfEndsInsteadOfTurningInCircles) {
  SimMachine machine;
  machine.diskOf("C:\\").putLink("C:\\a", "C:\\a");
  std::vector<machine::FolderEntry> entries;

  EXPECT_NE(machine.files().list("C:\\a", "", entries), kSuccess);
}

TEST(SimFiles, ACopyKeepsTimeVersionAndWhatItRuns) {
  SimMachine machine;
  machine.programs().define("C:\\a.exe", [](SimProcess&) { return 7U; });
  machine.setFileVersion("C:\\a.exe", {1, 2, 3, 4});
  machine.diskOf("C:\\").setModified("C:\\a.exe", {2008, 2, 29, 1, 2, 3});
  ASSERT_EQ(machine.files().copyFile("C:\\a.exe", "C:\\b.exe"), kSuccess);

  machine::FileVersion version{};
  std::unique_ptr<machine::RunningProcess> process;
  std::uint32_t code = 0;
  EXPECT_EQ(machine.diskOf("C:\\").modifiedTicks("C:\\b.exe"), ticksOf({2008, 2, 29, 1, 2, 3}));
  EXPECT_EQ(machine.machine().versions.read("C:\\b.exe", version), kSuccess);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
  ASSERT_EQ(machine.programs().start("C:\\b.exe", true, process), kSuccess);
  ASSERT_EQ(process->exitCode(code), kSuccess);
  EXPECT_EQ(code, 7U);
}

TEST(SimFiles, WritingCarriesTheTimeOfTheClock) {
  SimMachine machine;
  machine.clock().set({2026, 12, 31, 23, 59, 59});
  machine.clock().advance(1);
  ASSERT_EQ(machine.files().write("C:\\a.txt", "a"), kSuccess);

  EXPECT_EQ(machine.clock().now(), (machine::LocalTime{2027, 1, 1, 0, 0, 0}));
  EXPECT_EQ(machine.diskOf("C:\\").modifiedTicks("C:\\a.txt"), ticksOf({2027, 1, 1, 0, 0, 0}));
}

TEST(SimFiles, TimesAreToldByALookAndByAListing) {
  SimMachine machine;
  machine.clock().set({1601, 1, 1, 0, 0, 2});
  ASSERT_EQ(machine.files().write("C:\\d\\a.txt", "x"), kPathNotFound);
  machine.makeFolders("C:\\d");
  ASSERT_EQ(machine.files().write("C:\\d\\a.txt", "x"), kSuccess);
  machine::FileFacts facts;
  std::vector<machine::FolderEntry> entries;

  ASSERT_EQ(machine.files().look("C:\\d\\a.txt", facts), kSuccess);
  ASSERT_EQ(machine.files().list("C:\\d", "", entries), kSuccess);
  EXPECT_EQ(facts.modified, 20'000'000U);
  EXPECT_EQ(entries.at(0).facts.modified, 20'000'000U);

  machine.clock().advance(1);
  ASSERT_EQ(machine.files().append("C:\\d\\a.txt", "y"), kSuccess);
  ASSERT_EQ(machine.files().copyFile("C:\\d\\a.txt", "C:\\d\\b.txt"), kSuccess);
  ASSERT_EQ(machine.files().look("C:\\d\\b.txt", facts), kSuccess);
  EXPECT_EQ(facts.modified, 30'000'000U);
}

TEST(FileTicks, CountFrom1601) {
  EXPECT_EQ(ticksOf({1601, 1, 1, 0, 0, 0}), 0);
  EXPECT_EQ(ticksOf({1970, 1, 1, 0, 0, 0}), 116'444'736'000'000'000);
  EXPECT_EQ(ticksOf({2000, 3, 1, 0, 0, 1}) - ticksOf({2000, 2, 28, 0, 0, 0}),
            (2 * 86'400 + 1) * std::int64_t{10'000'000});
}

}  // namespace
}  // namespace trelv::sim
