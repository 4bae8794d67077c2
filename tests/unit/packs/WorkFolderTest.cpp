#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "packs/PackExtraction.h"
#include "packs/ProductInstall.h"
#include "packs/WorkFolder.h"
#include "support/Matchers.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using namespace modProdTrelvManager;

constexpr const char* kWork = "C:\\Users\\mario\\Temp";
constexpr const char* kMark = "C:\\Users\\mario\\Temp\\TrelvManager.lck";
constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kUnpacked = "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\";
const std::string kTree = "prg\\com\\setup\\aggdovra\\";

/// Two processes of one user on one computer: two machines with the same disks.
class WorkFolderTest : public testing::Test {
 protected:
  WorkFolderTest() {
    first_.mount("S:");
    first_.makeFolders(kSetup);
    second_.mount("C:", sharedDisk("C:\\"));
    second_.mount("S:", sharedDisk("S:\\"));
    second_.system().setProcessId(815);
    second_.system().setSessionId(3);
  }

  std::shared_ptr<sim::SimDisk> sharedDisk(const std::string& root) {
    return first_.volumes().diskOf(root);
  }
  void putPack(const std::string& name, const PackContent& content) {
    first_.putFile(kSetup + ("\\" + name), packBytes(content));
  }
  static bool search(Program& program, const std::string& target = "S:\\Lumo") {
    return OpenZipPacksInFolder(program, kSetup, target, true);
  }
  std::string brought(const std::string& name) {
    const std::string path = kSetup + ("\\" + name);
    return first_.fileExists(path) ? first_.fileText(path) : "-";
  }
  std::unique_ptr<machine::Mark> takenByAnother(const std::string& text = "anna, ALTRA") {
    return second_.exclusion().takeForAnother(kMark, text);
  }
  int secondsOn(const std::function<void()>& work) {
    const machine::LocalTime before = first_.clock().now();
    work();
    const machine::LocalTime after = first_.clock().now();
    return (after.hour - before.hour) * 3600 + (after.minute - before.minute) * 60 + after.second -
           before.second;
  }

  sim::SimMachine first_;
  sim::SimMachine second_;
  PackPrograms firstPrograms_{first_};
  PackPrograms secondPrograms_{second_};
  FakeProgram program_{first_};
  FakeProgram other_{second_};
};

// --- The mark

TEST_F(WorkFolderTest, BelongsToOneProcessAtATime) {
  {
    const WorkFolder mine(program_, kWork);
    EXPECT_TRUE(mine.isOurs());
    const WorkFolder theirs(other_, kWork);
    EXPECT_FALSE(theirs.isOurs());
    EXPECT_EQ(theirs.refusal(),
              "in uso da un'altra sessione: mario, STAZIONE, sessione 1, processo 4711, "
              "16/11/2026 09:30:00");
  }
  EXPECT_FALSE(first_.fileExists(kMark));
  EXPECT_TRUE(WorkFolder(other_, kWork).isOurs());
}

TEST_F(WorkFolderTest, IsTakenAgainByTheProcessThatHasIt) {
  const WorkFolder outer(program_, kWork);
  {
    const WorkFolder inner(program_, kWork);
    EXPECT_TRUE(inner.isOurs());
  }
  EXPECT_TRUE(first_.fileExists(kMark)) << "the inner one has not freed it";
  EXPECT_FALSE(WorkFolder(other_, kWork).isOurs());
}

TEST_F(WorkFolderTest, IsWaitedForAndTakenWhenItIsFree) {
  std::unique_ptr<machine::Mark> mark = takenByAnother();
  first_.exclusion().onWait([&] { mark.reset(); });
  EXPECT_TRUE(WorkFolder(program_, kWork).isOurs());
  EXPECT_THAT(program_.lines(), IsEmpty());
  EXPECT_THAT(first_.desktop().shownForms(), IsEmpty());
}

TEST_F(WorkFolderTest, IsWaitedFor120SecondsOnceInAProcessAndToldOnce) {
  const std::unique_ptr<machine::Mark> mark = takenByAnother();
  EXPECT_EQ(secondsOn([&] { EXPECT_FALSE(WorkFolder(program_, kWork).isOurs()); }), 120);
  EXPECT_EQ(secondsOn([&] { EXPECT_FALSE(WorkFolder(program_, kWork).isOurs()); }), 0);
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Cartella di lavoro C:\\Users\\mario\\Temp non "
                          "disponibile, nessun pacco viene aperto (in uso da un'altra sessione: "
                          "anna, ALTRA)"));
  EXPECT_THAT(first_.boxes(), IsEmpty());
}

TEST_F(WorkFolderTest, OfAnotherSessionThatDoesNotTellItsName) {
  const std::unique_ptr<machine::Mark> mark = takenByAnother("");
  EXPECT_EQ(WorkFolder(program_, kWork).refusal(), "in uso da un'altra sessione: non identificata");
}

TEST_F(WorkFolderTest, OfAProcessThatWasEndedByForceIsFree) {
  first_.putFile(kMark, "left by a power failure");
  EXPECT_TRUE(WorkFolder(program_, kWork).isOurs());
}

TEST_F(WorkFolderTest, IsMadeWhenMissingAndRefusedWhereItCannotBe) {
  EXPECT_TRUE(WorkFolder(program_, "C:\\Nuova\\Temp").isOurs());
  EXPECT_TRUE(first_.folderExists("C:\\Nuova\\Temp"));
  const WorkFolder nowhere(program_, "Z:\\Temp");
  EXPECT_FALSE(nowhere.isOurs());
  EXPECT_EQ(nowhere.refusal(), "Impossibile trovare il percorso: Z:\\Temp");
}

TEST_F(WorkFolderTest, IsKnownByWhateverName) {
  first_.mount("X:", sharedDisk("C:\\"));
  first_.mount("\\\\stazione\\disco", sharedDisk("C:\\"));
  first_.diskOf("S:\\").putLink("S:\\temp", kWork);
  WorkFolder work(program_, kWork);
  for (const char* const name : {"c:\\USERS\\Mario\\temp", "X:\\Users\\mario\\Temp",
                                 "\\\\STAZIONE\\Disco\\Users\\mario\\Temp", "S:\\temp",
                                 "C:\\Users\\mario\\..\\mario\\Temp\\"}) {
    EXPECT_TRUE(work.isAlso(name)) << name;
  }
  for (const char* const name : {"S:\\Lumo", "C:\\Users\\mario", "C:\\manca"}) {
    EXPECT_FALSE(work.isAlso(name)) << name;
  }
  // Where others are at work is another folder.
  first_.putFile("S:\\Lumo\\TrelvManager.lck", "anna, ALTRA");
  EXPECT_FALSE(work.isAlso("S:\\Lumo"));
  first_.diskOf("S:\\").disconnect();
  EXPECT_THROW(work.isAlso("S:\\Lumo"), RuntimeError);
}

TEST_F(WorkFolderTest, WhatWasUnpackedIsForgottenWithItsRemoval) {
  const std::string file = kUnpacked + std::string("zb.ini");
  first_.putFile(file, "[Setup01]\r\nversion=09.93\r\n");
  const IniAddress version{file, "Setup01", "version"};
  EXPECT_EQ(program_.configurationFiles.read(version, 511), "09.93");
  EXPECT_TRUE(RemoveUnpacked(program_, kWork));
  EXPECT_EQ(program_.configurationFiles.read(version, 511), "");
}

// --- Two starts of one user

TEST_F(WorkFolderTest, ASecondStartWaitsUntilTheFirstHasCopied) {
  putPack("a.zip", {{kTree + "a\\1.exe", "a"}, {kTree + "a.ini", "a"}});
  std::string seen;
  // While the first one copies, the second one begins; it has to wait, so that the first goes on.
  first_.onCall("files.replaceFile", [&] {
    second_.exclusion().onWait([&] { seen = brought("a.ini"); });
    search(other_);
  });
  search(program_);
  EXPECT_EQ(seen, "-") << "it did wait, before the copy had ended";
  EXPECT_EQ(brought("a\\1.exe"), "a");
  EXPECT_EQ(brought("a.ini"), "a");
  EXPECT_FALSE(first_.folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_EQ(other_.lines().size(), 2U);
}

TEST_F(WorkFolderTest, WhatTheFirstHasOpenedMeanwhileIsNotOpenedAgain) {
  putPack("a.zip", {{kTree + "a.ini", "a"}});
  std::unique_ptr<machine::Mark> mark = takenByAnother();
  first_.exclusion().onWait([&] {
    first_.removeTree(kSetup + std::string("\\a.zip"));
    mark.reset();
  });
  EXPECT_TRUE(search(program_));
  EXPECT_THAT(first_.started(), IsEmpty());
  EXPECT_THAT(first_.boxes(), IsEmpty());
}

TEST_F(WorkFolderTest, WhatTheFirstHasBroughtMeanwhileIsReadAnew) {
  const std::string file = kSetup + std::string("\\zb.ini");
  first_.putFile(file, "[Setup01]\r\nversion=09.93\r\n");
  const auto version = [&] {
    return program_.configurationFiles.read({file, "Setup01", "version"}, 511);
  };
  EXPECT_EQ(version(), "09.93");
  putPack("a.zip", {{kTree + "a.ini", "a"}});
  std::unique_ptr<machine::Mark> mark = takenByAnother();
  first_.exclusion().onWait([&] {
    first_.removeTree(kSetup + std::string("\\a.zip"));
    first_.putFile(file, "[Setup01]\r\nversion=09.94\r\n");
    mark.reset();
  });
  search(program_);
  EXPECT_EQ(version(), "09.94");
}

TEST_F(WorkFolderTest, AStartThatWaitedInVainLeavesPacksAndWhatIsUnpackedAlone) {
  putPack("a.zip", {{kTree + "a.ini", "a"}});
  first_.putFile(kUnpacked + std::string("b.ini"), "of the other one");
  const std::unique_ptr<machine::Mark> mark = takenByAnother();
  for (int searches = 0; searches < 10; ++searches) {
    EXPECT_TRUE(search(program_));
  }
  EXPECT_THAT(first_.diskOf("S:\\").names(kSetup), ElementsAre("a.zip"));
  EXPECT_EQ(first_.fileText(kUnpacked + std::string("b.ini")), "of the other one");
  EXPECT_EQ(program_.lines().size(), 11U) << "one line of each search, and one more";
  EXPECT_THAT(first_.boxes(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(WorkFolderTest, ASearchWithNothingToDoDoesNotAskForIt) {
  const std::unique_ptr<machine::Mark> mark = takenByAnother();
  first_.callLog().clear();
  search(program_);
  EXPECT_EQ(first_.callLog().countOf("exclusion.take"), 0U);
  EXPECT_EQ(program_.lines().size(), 1U);
}

TEST_F(WorkFolderTest, IsFreeWhenTheSearchHasEndedHoweverItDid) {
  putPack("a.zip", {{"x.txt", "without a set-up tree"}});
  EXPECT_THROW(search(program_), RuntimeError);
  EXPECT_FALSE(first_.fileExists(kMark));
  EXPECT_TRUE(WorkFolder(program_, kWork).isOurs());
}

// --- Installations of one product

TEST_F(WorkFolderTest, AnInstallationThatCannotHaveItInstallsNothingAndNamesTheOtherSession) {
  first_.putFile("C:\\Lumo\\Programmi\\zb.gz", packBytes({{kTree + "a.zip", packBytes({})}}));
  first_.makeFolders("S:\\Lumo\\prg\\com\\bin\\cpy\\client");
  const std::unique_ptr<machine::Mark> mark = takenByAnother("anna, ALTRA, sessione 2");
  const auto refusal = isBox(
      BoxIcon::Critical,
      "Installazione non eseguita: la cartella di lavoro \"C:\\Users\\mario\\Temp\" non è "
      "disponibile.\r\n\r\n(in uso da un'altra sessione: anna, ALTRA, sessione 2)\r\n\r\nChiudere "
      "l'altra sessione o attendere che termini, poi ripetere l'installazione.\r\n\r\nPremere Ok "
      "per interrompere");
  std::string server = "S:\\Lumo";
  InstallSingleProdottoComplementareIntegrato(program_, "ZB", server, "zb.gz");
  InstallSingleProdottoComplementareStandAlone(program_, "ZB", "zb.gz");
  EXPECT_THAT(first_.boxes(), ElementsAre(refusal, refusal));
  EXPECT_THAT(first_.started(), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_FALSE(first_.fileExists("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe"));
  EXPECT_FALSE(first_.folderExists("C:\\Users\\mario\\Temp\\prg"));
}

TEST_F(WorkFolderTest, AStandaloneInstallationKeepsItUntilItsTreeIsGone) {
  const std::string zip = packBytes(
      {{kTree + "agdvcomp.ini", "[Prod01]\r\nid=LUDA\r\nconf=" + kTree + "luda.ini\r\n"},
       {kTree + "luda.ini", "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\luda.exe\r\n"}});
  first_.putFile("C:\\Lumo\\Programmi\\luda.gz", packBytes({{kTree + "luda.zip", zip}}));
  program_.state.startup.administrator = true;
  bool busy = false;
  first_.programs().define("C:\\Setup\\luda.exe", [&](sim::SimProcess&) {
    busy = !WorkFolder(other_, kWork).isOurs();
    return 0U;
  });
  first_.onCall("files.removeFolder C:\\Users\\mario\\Temp\\prg",
                [&] { EXPECT_FALSE(WorkFolder(other_, kWork).isOurs()); });
  InstallSingleProdottoComplementareStandAlone(program_, "LUDA", "luda.gz");
  EXPECT_TRUE(busy);
  EXPECT_TRUE(WorkFolder(other_, kWork).isOurs());
}

}  // namespace
}  // namespace trelv::tests
