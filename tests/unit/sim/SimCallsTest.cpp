#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

TEST(SimCalls, EveryCallIsToldInOrder) {
  SimMachine machine;
  std::string content;
  machine.files().write("C:\\a.txt", "a");
  machine.files().copyFile("C:\\a.txt", "C:\\b.txt");
  machine.profiles().writeValue("S", "k", "v", "p.ini");
  machine.desktop().messageBox("Titolo", "Testo", machine::BoxIcon::None, machine::BoxButtons::Ok);

  EXPECT_EQ(machine.calls(), (std::vector<std::string>{
                                 "files.write C:\\a.txt",
                                 "files.copyFile C:\\a.txt -> C:\\b.txt",
                                 "profiles.writeValue C:\\WINDOWS\\p.ini [S] k=v",
                                 "desktop.messageBox Testo",
                             }));
}

TEST(SimCalls, WhatATestDoesItselfIsNoCall) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "a");
  machine.setIniValue("C:\\b\\b.ini", "S", "k", "v");
  machine.environment().put("X", "1");
  machine.registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO", "a", "b");

  EXPECT_EQ(machine.iniValue("C:\\b\\b.ini", "S", "k"), "v");
  EXPECT_EQ(machine.callCount(), 0U);
}

TEST(SimCalls, OpeningsAreCountedByPlaceAndKind) {
  SimMachine machine;
  machine.mount("S:");
  std::string content;
  std::vector<machine::FolderEntry> entries;
  machine::FileFacts facts;
  machine.files().write("S:\\prg\\a.txt", "a");
  machine.files().read("s:\\prg\\a.txt", 10, content);
  machine.files().append("S:\\prg2\\a.txt", "a");
  machine.files().copyFile("C:\\a.txt", "S:\\prg\\a.txt");
  machine.files().list("S:\\prg", "", entries);
  machine.files().look("S:\\prg", facts);
  machine.profiles().readValue("S", "k", "", 10, "S:\\prg\\a.ini");
  machine.profiles().readValue("S", "k", "", 10, "p.ini");

  const Openings prg = machine.openings("S:\\prg");
  EXPECT_EQ(prg.writes, 1U);
  EXPECT_EQ(prg.reads, 1U);
  EXPECT_EQ(prg.appends, 0U);
  EXPECT_EQ(prg.copies, 1U);
  EXPECT_EQ(prg.lists, 1U);
  EXPECT_EQ(prg.looks, 1U);
  EXPECT_EQ(prg.profileReads, 1U);
  EXPECT_EQ(prg.files(), 4U);
  EXPECT_EQ(machine.openings("S:\\").files(), 5U);
  EXPECT_EQ(machine.openings("C:\\windows").profileReads, 1U);
}

TEST(SimCalls, AHookRunsOnceJustBeforeItsCall) {
  SimMachine machine;
  machine.putFile("C:\\a.txt", "old");
  machine.onCall(2, [&] { machine.putFile("C:\\a.txt", "new"); });
  std::string first;
  std::string second;

  machine.files().read("C:\\a.txt", 10, first);
  machine.files().read("C:\\a.txt", 10, second);
  EXPECT_EQ(first, "old");
  EXPECT_EQ(second, "new");
}

TEST(SimCalls, AHookByTextWaitsForTheNextCallThatBeginsSo) {
  SimMachine machine;
  int runs = 0;
  machine.onCall("files.write c:\\LOCK", [&] { ++runs; });

  machine.files().write("C:\\other.txt", "");
  EXPECT_EQ(runs, 0);
  machine.files().write("C:\\lock.txt", "");
  machine.files().write("C:\\lock.txt", "");
  EXPECT_EQ(runs, 1);
}

TEST(SimCalls, AnotherWorkstationWorksBetweenTwoCalls) {
  SimMachine first;
  SimMachine second;
  second.mount("S:", first.mount("S:"));
  first.onCall("files.write", [&] { second.files().append("S:\\lock", "second"); });
  machine::FileFacts facts;

  EXPECT_EQ(first.files().look("S:\\lock", facts), kFileNotFound);
  EXPECT_EQ(first.files().write("S:\\lock", "first"), kSuccess);
  EXPECT_EQ(first.fileText("S:\\lock"), "first");
  EXPECT_EQ(second.calls(), (std::vector<std::string>{"files.append S:\\lock"}));
}

TEST(SimCalls, AHookMayCallTheSameMachine) {
  SimMachine machine;
  machine.onCall(1, [&] { machine.files().write("C:\\inner.txt", ""); });
  machine.files().write("C:\\outer.txt", "");

  EXPECT_EQ(machine.calls(),
            (std::vector<std::string>{"files.write C:\\outer.txt", "files.write C:\\inner.txt"}));
}

}  // namespace
}  // namespace trelv::sim
