#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "packs/ProductRemoval.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::RemovalProgress;
using modProdTrelvManager::RemoveProduct;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// A bar that keeps what it was told: "begin 200", "advance", "finish".
class KeptProgress : public RemovalProgress {
 public:
  void begin(int max) override { steps.push_back("begin " + std::to_string(max)); }
  void advance() override { steps.push_back("advance"); }
  void finish() override { steps.push_back("finish"); }

  std::vector<std::string> steps;
};

class Removal : public testing::Test {
 protected:
  static constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\zb.ini";
  static constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";

  Removal() {
    installation_.putCatalogue(
        {{"NERIO", "Nerio", "nerio.ini"}, {"ZB", "Bilancio", kConf}, {"Q2", "Tarsena2", "q2.ini"}});
    installation_.putServerRecord(deliveredVersions());
    station_.putClientRecord(deliveredVersions());
    for (const char* const name : {"zb", "zb2"}) {
      const std::string folder = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\" + std::string(name);
      share().putProgram(folder + "\\unins.exe");
      share().put(folder + "\\data\\a.dat", "x");
    }
  }

  void putRemovals(const std::vector<std::string>& server, const std::vector<std::string>& client) {
    installation_.putConfiguration(kConf, configurationText({{"Remove", "", server, client}}));
  }
  bool remove(Side side, const std::string& id = "ZB") {
    return RemoveProduct(station_.program(), Installation::kServer, "S:\\Work", "C:\\Prog", id,
                         side, progress_);
  }

  sim::SimDisk& share() { return installation_.share(); }
  sim::SimMachine& machine() { return station_.machine(); }
  const std::vector<std::string>& lines() { return station_.program().lines(); }

  Installation installation_;
  Station station_{installation_};
  KeptProgress progress_;
};

// --- The server side

TEST_F(Removal, OfTheServerRunsCommandsDeletesFoldersZeroesTheVersionAndDropsTheConfiguration) {
  putRemovals({"\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\unins.exe\" -s",
               "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb2\\unins.exe -s"},
              {"C:\\Prog\\client.exe"});
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "
                  "\"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe\" -s",
                  "Gestione ProdTrelv - Rimozione cartella server di setup: "
                  "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb",
                  "Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "
                  "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\unins.exe -s",
                  "Gestione ProdTrelv - Rimozione cartella server di setup: "
                  "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2",
                  "Gestione ProdTrelv - Azzeramento versione server prodotto: ZB",
                  "Gestione ProdTrelv - Rimozione file di configurazione: "
                  "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini",
                  "Cancellazione file: S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini effettuata con "
                  "successo"));
  EXPECT_FALSE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb"));
  EXPECT_FALSE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2"));
  EXPECT_FALSE(share().exists(kConfiguration));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_EQ(station_.serverVersion("Q2"), "02.92.00.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "09.93.00.00");
  EXPECT_TRUE(share().exists(Installation::kCatalogue));
}

TEST_F(Removal, VersionStaysAsAnEmptyKey) {
  putRemovals({}, {});
  remove(Side::Server);
  EXPECT_THAT(installation_.serverRecord(), HasSubstr("[ZB]\r\nversion=\r\n"));
}

TEST_F(Removal, RunsOneCommandAfterTheOtherAndWaits) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe",
               "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\unins.exe"},
              {});
  machine().programs().setDeferred(true);
  remove(Side::Server);
  ASSERT_EQ(machine().started().size(), 2U);
  for (const sim::StartedProgram& started : machine().started()) {
    EXPECT_TRUE(started.waited);
  }
}

TEST_F(Removal, CommandIsToldBeforeItRuns) {
  std::string told;
  machine().programs().define("C:\\Prog\\u.exe", [&](sim::SimProcess&) -> std::uint32_t {
    told = lines().empty() ? "" : lines().back();
    return 0;
  });
  putRemovals({}, {"C:\\Prog\\u.exe"});
  remove(Side::Client);
  EXPECT_EQ(told, "Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: C:\\Prog\\u.exe");
}

TEST_F(Removal, PlaceholdersAreServerPathAndTheTwoRunParameters) {
  putRemovals({}, {"%PATHSETUP%\\x.exe %PATHWORK%/y %PATHCLIENT% /s"});
  share().putProgram("S:\\Lumo\\x.exe");
  remove(Side::Client);
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\x.exe S:\\Work\\y C:\\Prog \\s"));
  EXPECT_EQ(lines()[0],
            "Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: S:\\Lumo\\x.exe "
            "S:\\Work\\y C:\\Prog \\s");
}

TEST_F(Removal, CommandThatFailsOrCannotBeStartedDoesNotMatter) {
  share().putProgram("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe",
                     [](sim::SimProcess&) -> std::uint32_t { return 3; });
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe",
               "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\nessuno.exe"},
              {});
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_FALSE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb"));
  EXPECT_FALSE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2"));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_THAT(station_.program().reportTexts(),
              ElementsAre("Errore in esecuzione programma: "
                          "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\nessuno.exe"));
}

TEST_F(Removal, OnlyCommandThatCannotBeStartedStillCountsAsExecuted) {
  putRemovals({}, {"C:\\Prog\\nessuno.exe"});
  EXPECT_TRUE(remove(Side::Client));
}

TEST_F(Removal, FolderIsDeletedBehindEachCommandSoASecondOneFromItFindsNoProgram) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe 1",
               "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe 2"},
              {});
  remove(Side::Server);
  EXPECT_THAT(station_.commandLines(),
              ElementsAre("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe 1"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "
                                "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe 2"));
}

TEST_F(Removal, ProgramThatDeletesItselfStillHasItsFolderDeleted) {
  share().put("S:\\Lumo\\mv\\zb con blank\\a.dat", "x");
  share().putProgram("S:\\Lumo\\mv\\zb con blank\\unins.exe");
  // Gone as soon as it has ended, so that nobody can find it afterwards.
  machine().onCall("processes.wait", [this] {
    machine().onCall("files.look",
                     [this] { machine().removeTree("S:\\Lumo\\mv\\zb con blank\\unins.exe"); });
  });
  putRemovals({"S:\\Lumo\\mv\\zb con blank\\unins.exe -s"}, {});
  remove(Side::Server);
  EXPECT_FALSE(share().exists("S:\\Lumo\\mv\\zb con blank"));
  EXPECT_TRUE(share().exists("S:\\Lumo\\mv"));
}

TEST_F(Removal, SharedFolderIsToldAndLeftAlone) {
  share().putProgram("S:\\Lumo\\prg\\com\\setup\\aggdovra\\unins.exe");
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\unins.exe"}, {});
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_EQ(lines()[1],
            "Gestione ProdTrelv - Rimozione cartella server di setup: "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra");
  EXPECT_EQ(lines()[2],
            "Gestione ProdTrelv - Cartella non rimossa, non è una cartella di setup: "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra");
  EXPECT_TRUE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
}

TEST_F(Removal, ProgramOfWindowsIsRunAndItsFolderLeftAlone) {
  machine().programs().define("C:\\WINDOWS\\system32\\msiexec.exe");
  putRemovals({"msiexec.exe -x {0A}", "C:\\WINDOWS\\system32\\msiexec.exe -x {0B}"}, {});
  remove(Side::Server);
  EXPECT_EQ(station_.commandLines().size(), 2U);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Cartella non rimossa, non è una cartella di "
                                "setup: "));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Cartella non rimossa, non è una cartella di "
                                "setup: C:\\WINDOWS\\system32"));
  EXPECT_TRUE(machine().fileExists("C:\\WINDOWS\\system32\\msiexec.exe"));
}

// --- The client side

TEST_F(Removal, OfTheClientDeletesNeitherFoldersNorTheConfiguration) {
  machine().diskOf("C:\\").putProgram("C:\\Prog\\zb\\unins.exe");
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {"C:\\Prog\\zb\\unins.exe"});
  EXPECT_TRUE(remove(Side::Client));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "
                          "C:\\Prog\\zb\\unins.exe",
                          "Gestione ProdTrelv - Azzeramento versione client prodotto: ZB"));
  EXPECT_TRUE(machine().fileExists("C:\\Prog\\zb\\unins.exe"));
  EXPECT_TRUE(share().exists(kConfiguration));
  EXPECT_EQ(station_.clientVersion("ZB"), "");
  EXPECT_EQ(station_.clientVersion("NERIO"), "03.20.30.00");
  EXPECT_EQ(station_.serverVersion("ZB"), "09.93.00.00");
}

TEST_F(Removal, AnyOtherSideIsTreatedAsTheClientWithItsOwnKeys) {
  installation_.putConfiguration(
      kConf, "[Remove]\r\nClientServer01=S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe\r\n");
  EXPECT_TRUE(remove(Side::ClientServer));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Azzeramento versione client prodotto: ZB"));
  EXPECT_TRUE(share().exists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb"));
  EXPECT_TRUE(share().exists(kConfiguration));
}

// --- Lists and bar

TEST_F(Removal, WithoutCommandsAnswersNoAndStillZeroesTheVersion) {
  putRemovals({}, {});
  EXPECT_FALSE(remove(Side::Server));
  EXPECT_THAT(progress_.steps, ElementsAre("begin 200", "advance", "finish"));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_FALSE(share().exists(kConfiguration));
  EXPECT_THAT(machine().started(), IsEmpty());
}

TEST_F(Removal, BarAdvancesOnceForEachKeyAndJumpsAtTheFirstEmptyOne) {
  machine().diskOf("C:\\").putProgram("C:\\Prog\\u.exe");
  putRemovals({}, {"C:\\Prog\\u.exe", "C:\\Prog\\u.exe"});
  remove(Side::Client);
  EXPECT_THAT(progress_.steps, ElementsAre("begin 200", "advance", "advance", "advance", "finish"));
}

TEST_F(Removal, HundredthCommandIsTheLastAndTheBarStaysThere) {
  machine().diskOf("C:\\").putProgram("C:\\Prog\\u.exe");
  std::vector<std::string> commands;
  for (int i = 1; i <= 101; ++i) {
    commands.push_back("C:\\Prog\\u.exe " + std::to_string(i));
  }
  putRemovals({}, commands);
  EXPECT_TRUE(remove(Side::Client));
  EXPECT_EQ(station_.commandLines().size(), 100U);
  EXPECT_EQ(station_.commandLines().back(), "C:\\Prog\\u.exe 100");
  EXPECT_EQ(std::count(progress_.steps.begin(), progress_.steps.end(), "advance"), 100);
  EXPECT_EQ(progress_.steps.back(), "advance");
}

TEST_F(Removal, FirstEmptyKeyEndsTheList) {
  machine().diskOf("C:\\").putProgram("C:\\Prog\\u.exe");
  installation_.putConfiguration(
      kConf, "[Remove]\r\nClient01=C:\\Prog\\u.exe 1\r\nClient03=C:\\Prog\\u.exe 3\r\n");
  remove(Side::Client);
  EXPECT_THAT(station_.commandLines(), ElementsAre("C:\\Prog\\u.exe 1"));
}

TEST_F(Removal, SectionIsRemoveWithoutIndex) {
  machine().diskOf("C:\\").putProgram("C:\\Prog\\u.exe");
  installation_.putConfiguration(kConf, "[Remove01]\r\nClient01=C:\\Prog\\u.exe\r\n");
  EXPECT_FALSE(remove(Side::Client));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

TEST_F(Removal, ProductThatTheCatalogueDoesNotHaveOnlyLosesItsVersion) {
  installation_.putServerRecord("[ALTRO]\r\nversion=01\r\n");
  const std::string before = share().tree();
  EXPECT_FALSE(remove(Side::Server, "ALTRO"));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Azzeramento versione server prodotto: "
                                   "ALTRO",
                                   "Gestione ProdTrelv - Rimozione file di configurazione: "
                                   "S:\\Lumo\\"));
  EXPECT_EQ(installation_.serverRecord(), "[ALTRO]\r\nversion=\r\n");
  EXPECT_TRUE(share().exists(Installation::kCatalogue));
}

TEST_F(Removal, IdentifierIsComparedExactly) {
  putRemovals({}, {"C:\\Prog\\u.exe"});
  EXPECT_FALSE(remove(Side::Client, "zb"));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

// --- Failures

TEST_F(Removal, VersionThatCannotBeRecordedIsToldAndKeepsTheConfiguration) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {});
  share().denyWriting(Installation::kServerRecord);
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in definzione integrazione (75 Impossibile azzerare la "
            "versione di ZB nel file: S:\\Lumo\\prg\\etc\\agdvver.ini)");
  EXPECT_TRUE(share().exists(kConfiguration));
}

TEST_F(Removal, FolderThatCannotBeDeletedIsReportedAndTheRemovalGoesOn) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {});
  share().holdOpen("S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\data\\a.dat", sim::Sharing::Read);
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_THAT(station_.program().reportTexts(), ElementsAre("Errore in cancellazione cartella: "));
  EXPECT_THAT(lines(), Contains(StartsWith("Gestione ProdTrelv - Errore in cancellazione "
                                           "cartella: ")));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Cartella server di setup non rimossa: "
                                "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb"));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_FALSE(share().exists(kConfiguration));
}

TEST_F(Removal, ConfigurationThatCannotBeDeletedIsReported) {
  putRemovals({}, {});
  share().holdOpen(kConfiguration, sim::Sharing::Read);
  EXPECT_FALSE(remove(Side::Server));
  EXPECT_THAT(station_.program().reportTexts(), ElementsAre("Errore in cancellazione file: "));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - File di configurazione non rimosso: "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini");
  EXPECT_TRUE(share().exists(kConfiguration));
}

TEST_F(Removal, UnknownSideIsOneLineAndChangesNothing) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {});
  const std::string before = share().tree();
  EXPECT_FALSE(remove(static_cast<Side>(7)));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in definzione integrazione (-1 )"));
  EXPECT_EQ(share().tree(), before);
}

TEST_F(Removal, RemovedConfigurationIsNotRememberedAfterwards) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {});
  remove(Side::Server);
  const std::size_t before = station_.commandLines().size();
  EXPECT_FALSE(remove(Side::Server));
  EXPECT_EQ(station_.commandLines().size(), before);
}

TEST_F(Removal, WritesNothingButTheRecordOfItsSide) {
  putRemovals({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe"}, {});
  const std::string client = machine().diskOf("C:\\").tree();
  remove(Side::Server);
  EXPECT_EQ(machine().diskOf("C:\\").tree(), client);
  std::vector<std::string> writes;
  for (const std::string& call : machine().calls()) {
    if (call.find("write") != std::string::npos || call.find("append") != std::string::npos) {
      writes.push_back(call);
    }
  }
  EXPECT_THAT(writes,
              ElementsAre(StartsWith("profiles.writeValue S:\\Lumo\\prg\\etc\\agdvver.ini")));
}

}  // namespace
}  // namespace trelv::tests
