#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using testing::ElementsAre;
using namespace system_code;

class SimCallsTest : public testing::Test {
 protected:
  SystemCode write(const std::string& path) { return machine_.files().write(path, "x"); }
  std::string read(const std::string& path) {
    std::string content;
    machine_.files().read(path, 10, content);
    return content;
  }

  SimMachine machine_;
};

TEST_F(SimCallsTest, EveryCallIsToldInOrder) {
  write("C:\\a.txt");
  machine_.files().copyFile("C:\\a.txt", "C:\\b.txt");
  machine_.profiles().writeValue("S", "k", "v", "p.ini");
  machine_.desktop().messageBox("Titolo", "Testo", machine::BoxIcon::None, machine::BoxButtons::Ok);
  EXPECT_THAT(
      machine_.calls(),
      ElementsAre("files.write C:\\a.txt", "files.copyFile C:\\a.txt -> C:\\b.txt",
                  "profiles.writeValue C:\\WINDOWS\\p.ini [S] k=v", "desktop.messageBox Testo"));
}

TEST_F(SimCallsTest, WhatATestDoesItselfIsNoCall) {
  machine_.putFile("C:\\a.txt", "a");
  machine_.setIniValue("C:\\b\\b.ini", "S", "k", "v");
  machine_.environment().put("X", "1");
  machine_.registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", "a", "b");
  EXPECT_EQ(machine_.iniValue("C:\\b\\b.ini", "S", "k"), "v");
  EXPECT_EQ(machine_.callCount(), 0U);
}

TEST_F(SimCallsTest, OpeningsAreCountedByPlaceAndKind) {
  machine_.mount("S:");
  std::vector<machine::FolderEntry> entries;
  machine::FileFacts facts;
  write("S:\\prg\\a.txt");
  read("s:\\prg\\a.txt");
  machine_.files().append("S:\\prg2\\a.txt", "a");
  machine_.files().copyFile("C:\\a.txt", "S:\\prg\\a.txt");
  machine_.files().list("S:\\prg", "", entries);
  machine_.files().look("S:\\prg", facts);
  machine_.profiles().readValue("S", "k", "", 10, "S:\\prg\\a.ini");
  machine_.profiles().readValue("S", "k", "", 10, "p.ini");

  const Openings prg = machine_.openings("S:\\prg");
  EXPECT_THAT((std::vector<std::size_t>{prg.writes, prg.reads, prg.copies, prg.lists, prg.looks,
                                        prg.profileReads}),
              testing::Each(1U));
  EXPECT_EQ(prg.appends, 0U);
  EXPECT_EQ(prg.files(), 4U);
  EXPECT_EQ(machine_.openings("S:\\").files(), 5U);
  EXPECT_EQ(machine_.openings("C:\\windows").profileReads, 1U);
}

// --- Hooks

TEST_F(SimCallsTest, AHookRunsOnceJustBeforeItsCall) {
  machine_.putFile("C:\\a.txt", "old");
  machine_.onCall(2, [&] { machine_.putFile("C:\\a.txt", "new"); });
  EXPECT_EQ(read("C:\\a.txt"), "old");
  EXPECT_EQ(read("C:\\a.txt"), "new");
}

TEST_F(SimCallsTest, AHookByTextWaitsForTheNextCallThatBeginsSo) {
  int runs = 0;
  machine_.onCall("files.write c:\\LOCK", [&] { ++runs; });
  write("C:\\other.txt");
  EXPECT_EQ(runs, 0);
  write("C:\\lock.txt");
  write("C:\\lock.txt");
  EXPECT_EQ(runs, 1);
}

TEST_F(SimCallsTest, AnotherWorkstationWorksBetweenTwoCalls) {
  SimMachine second;
  second.mount("S:", machine_.mount("S:"));
  machine_.onCall("files.write", [&] { second.files().append("S:\\lock", "second"); });
  machine::FileFacts facts;
  EXPECT_EQ(machine_.files().look("S:\\lock", facts), kFileNotFound);
  EXPECT_EQ(write("S:\\lock"), kSuccess);
  EXPECT_EQ(machine_.fileText("S:\\lock"), "x");
  EXPECT_THAT(second.calls(), ElementsAre("files.append S:\\lock"));
}

TEST_F(SimCallsTest, AHookMayCallTheSameMachine) {
  machine_.onCall(1, [&] { write("C:\\inner.txt"); });
  write("C:\\outer.txt");
  EXPECT_THAT(machine_.calls(),
              ElementsAre("files.write C:\\outer.txt", "files.write C:\\inner.txt"));
}

TEST_F(SimCallsTest, OthersHaveTheirTurnBeforeACallIsCarriedOut) {
  std::vector<std::string> seen;
  machine_.callLog().setTurns([&](const SimCall& call) {
    seen.push_back(call.text);
    machine_.putFile("C:\\a.txt", "theirs");
  });
  EXPECT_EQ(read("C:\\a.txt"), "theirs");
  machine_.callLog().setTurns(nullptr);
  read("C:\\a.txt");
  EXPECT_THAT(seen, ElementsAre("files.read C:\\a.txt"));
}

TEST_F(SimCallsTest, AMarkThatIsFreedWhileSomebodyWaitsForItIsHis) {
  std::unique_ptr<machine::Mark> theirs = machine_.exclusion().takeForAnother("C:\\a.lck", "x");
  machine_.clock().after(700, [&] { theirs.reset(); });
  std::unique_ptr<machine::Mark> ours;
  EXPECT_EQ(machine_.exclusion().take("C:\\a.lck", "y", 3000, ours), kSuccess);
  EXPECT_NE(ours, nullptr);
}

}  // namespace
}  // namespace trelv::sim
