#include <algorithm>

#include "packs/ProductRemoval.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::RemovalProgress;

/// A bar that keeps what it was told: "begin 200", "advance", "finish".
class KeptProgress : public RemovalProgress {
 public:
  void begin(int max) override { steps.push_back("begin " + std::to_string(max)); }
  void advance() override { steps.push_back("advance"); }
  void finish() override { steps.push_back("finish"); }

  std::vector<std::string> steps;
};

constexpr const char* kZb = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb";
constexpr const char* kZb2 = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2";
constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kUninstaller = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\unins.exe";
constexpr const char* kUninstaller2 = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\unins.exe";
/// An uninstaller on the workstation, for the client's side.
constexpr const char* kClients = "C:\\Prog\\zb\\u.exe";

/// All five products at the delivered versions; ZB has two set-up folders with an uninstaller each
/// and one on the workstation.
class Removal : public StationTest {
 protected:
  Removal() {
    installation_.putCatalogue(
        {{"NERIO", "Nerio", "nerio.ini"}, {"ZB", "Bilancio", kConf}, {"Q2", "Tarsena2", "q2.ini"}});
    installation_.putServerRecord(deliveredVersions());
    station_.putClientRecord(deliveredVersions());
    for (const std::string folder : {kZb, kZb2}) {
      share().putProgram(folder + "\\unins.exe");
      share().put(folder + "\\data\\a.dat", "x");
    }
    disk().putProgram(kClients);
  }

  void putRemovals(const std::vector<std::string>& server, const std::vector<std::string>& client) {
    installation_.putConfiguration(kConf, configurationText({{"Remove", "", server, client}}));
  }
  bool remove(Side side, const std::string& id = "ZB") {
    return modProdTrelvManager::RemoveProduct(
        program(), {Installation::kServer, "S:\\Work", "C:\\Prog"}, {id, side}, progress_);
  }
  bool removeFromServer(const std::vector<std::string>& commands) {
    putRemovals(commands, {});
    return remove(Side::Server);
  }
  bool removeFromClient(const std::vector<std::string>& commands) {
    putRemovals({}, commands);
    return remove(Side::Client);
  }

  static constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\zb.ini";
  KeptProgress progress_;
};

// --- The server side

TEST_F(Removal, OfTheServerRunsCommandsDeletesFoldersZeroesTheVersionAndDropsTheConfiguration) {
  putRemovals({"\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\unins.exe\" -s",
               "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb2\\unins.exe -s"},
              {"C:\\Prog\\client.exe"});
  EXPECT_TRUE(remove(Side::Server));
  EXPECT_EQ(
      program().logText(),
      R"(Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "S:\Lumo\prg\com\setup\aggdovra\zb\unins.exe" -s
Gestione ProdTrelv - Rimozione cartella server di setup: S:\Lumo\prg\com\setup\aggdovra\zb
Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: S:\Lumo\prg\com\setup\aggdovra\zb2\unins.exe -s
Gestione ProdTrelv - Rimozione cartella server di setup: S:\Lumo\prg\com\setup\aggdovra\zb2
Gestione ProdTrelv - Azzeramento versione server prodotto: ZB
Gestione ProdTrelv - Rimozione file di configurazione: S:\Lumo\prg\com\setup\aggdovra\zb.ini
Cancellazione file: S:\Lumo\prg\com\setup\aggdovra\zb.ini effettuata con successo
)");
  EXPECT_FALSE(share().exists(kZb) || share().exists(kZb2) || share().exists(kConfiguration));
  EXPECT_THAT(installation_.serverRecord(), HasSubstr("[ZB]\r\nversion=\r\n"));
  EXPECT_EQ(station_.serverVersion("Q2"), "02.92.00.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "09.93.00.00");
  EXPECT_TRUE(share().exists(Installation::kCatalogue));
}

TEST_F(Removal, RunsOneCommandAfterTheOtherAndWaits) {
  machine().programs().setDeferred(true);
  removeFromServer({kUninstaller, kUninstaller2});
  ASSERT_EQ(machine().started().size(), 2U);
  EXPECT_TRUE(machine().started()[0].waited && machine().started()[1].waited);
}

TEST_F(Removal, CommandIsToldBeforeItRuns) {
  disk().putProgram(kClients, [this](sim::SimProcess&) {
    EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando di rimozione "
                                     "prodotto: C:\\Prog\\zb\\u.exe"));
    return 0U;
  });
  removeFromClient({kClients});
  EXPECT_EQ(started().size(), 1U);
}

TEST_F(Removal, PlaceholdersAreServerPathAndTheTwoRunParameters) {
  share().putProgram("S:\\Lumo\\x.exe");
  removeFromClient({"%PATHSETUP%\\x.exe %PATHWORK%/y %PATHCLIENT% /s"});
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\x.exe S:\\Work\\y C:\\Prog \\s"));
  EXPECT_EQ(lines()[0],
            "Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: S:\\Lumo\\x.exe "
            "S:\\Work\\y C:\\Prog \\s");
}

TEST_F(Removal, CommandThatFailsOrCannotBeStartedDoesNotMatter) {
  share().putProgram(kUninstaller, [](sim::SimProcess&) { return 3U; });
  EXPECT_TRUE(removeFromServer({kUninstaller, std::string(kZb2) + "\\nessuno.exe"}));
  EXPECT_FALSE(share().exists(kZb) || share().exists(kZb2));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_THAT(program().reportTexts(),
              ElementsAre("Errore in esecuzione programma: "
                          "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb2\\nessuno.exe"));
}

TEST_F(Removal, OnlyCommandThatCannotBeStartedStillCountsAsExecuted) {
  EXPECT_TRUE(removeFromClient({"C:\\Prog\\nessuno.exe"}));
}

TEST_F(Removal, FolderIsDeletedBehindEachCommandSoASecondOneFromItFindsNoProgram) {
  const std::string uninstaller = kUninstaller;
  removeFromServer({uninstaller + " 1", uninstaller + " 2"});
  EXPECT_THAT(started(), ElementsAre(uninstaller + " 1"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: " +
                                uninstaller + " 2"));
}

TEST_F(Removal, ProgramThatDeletesItselfStillHasItsFolderDeleted) {
  share().put("S:\\Lumo\\mv\\zb con blank\\a.dat", "x");
  share().putProgram("S:\\Lumo\\mv\\zb con blank\\unins.exe");
  // Gone as soon as it has ended, so that nobody can find it afterwards.
  machine().onCall("processes.wait", [this] {
    machine().onCall("files.look",
                     [this] { machine().removeTree("S:\\Lumo\\mv\\zb con blank\\unins.exe"); });
  });
  removeFromServer({"S:\\Lumo\\mv\\zb con blank\\unins.exe -s"});
  EXPECT_FALSE(share().exists("S:\\Lumo\\mv\\zb con blank"));
  EXPECT_TRUE(share().exists("S:\\Lumo\\mv"));
}

TEST_F(Removal, SharedFolderIsToldAndLeftAlone) {
  share().putProgram("S:\\Lumo\\prg\\com\\setup\\aggdovra\\unins.exe");
  EXPECT_TRUE(removeFromServer({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\unins.exe"}));
  EXPECT_EQ(
      lines()[1],
      R"(Gestione ProdTrelv - Rimozione cartella server di setup: S:\Lumo\prg\com\setup\aggdovra)");
  EXPECT_EQ(
      lines()[2],
      R"(Gestione ProdTrelv - Cartella non rimossa, non è una cartella di setup: S:\Lumo\prg\com\setup\aggdovra)");
  EXPECT_TRUE(share().exists(kUninstaller));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
}

TEST_F(Removal, ProgramOfWindowsIsRunAndItsFolderLeftAlone) {
  machine().programs().define("C:\\WINDOWS\\system32\\msiexec.exe");
  removeFromServer({"msiexec.exe -x {0A}", "C:\\WINDOWS\\system32\\msiexec.exe -x {0B}"});
  EXPECT_EQ(started().size(), 2U);
  EXPECT_THAT(
      endsOf(lines(), "Gestione ProdTrelv - Cartella non rimossa, non è una cartella di setup: "),
      ElementsAre("", "C:\\WINDOWS\\system32"));
  EXPECT_TRUE(machine().fileExists("C:\\WINDOWS\\system32\\msiexec.exe"));
}

// --- The client side

TEST_F(Removal, OfTheClientDeletesNeitherFoldersNorTheConfiguration) {
  putRemovals({kUninstaller}, {kClients});
  EXPECT_TRUE(remove(Side::Client));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: "
                          "C:\\Prog\\zb\\u.exe",
                          "Gestione ProdTrelv - Azzeramento versione client prodotto: ZB"));
  EXPECT_TRUE(machine().fileExists(kClients) && share().exists(kConfiguration));
  EXPECT_EQ(station_.clientVersion("ZB"), "");
  EXPECT_EQ(station_.clientVersion("NERIO"), "03.20.30.00");
  EXPECT_EQ(station_.serverVersion("ZB"), "09.93.00.00");
}

TEST_F(Removal, AnyOtherSideIsTreatedAsTheClientWithItsOwnKeys) {
  installation_.putConfiguration(
      kConf, "[Remove]\r\nClientServer01=" + std::string(kUninstaller) + "\r\n");
  EXPECT_TRUE(remove(Side::ClientServer));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Azzeramento versione client prodotto: ZB"));
  EXPECT_TRUE(share().exists(kZb) && share().exists(kConfiguration));
}

// --- Lists and bar

TEST_F(Removal, WithoutCommandsAnswersNoAndStillZeroesTheVersion) {
  EXPECT_FALSE(removeFromServer({}));
  EXPECT_THAT(progress_.steps, ElementsAre("begin 200", "advance", "finish"));
  EXPECT_EQ(station_.serverVersion("ZB"), "");
  EXPECT_FALSE(share().exists(kConfiguration));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(Removal, BarAdvancesOnceForEachKeyAndJumpsAtTheFirstEmptyOne) {
  removeFromClient({kClients, kClients});
  EXPECT_THAT(progress_.steps, ElementsAre("begin 200", "advance", "advance", "advance", "finish"));
}

TEST_F(Removal, HundredthCommandIsTheLastAndTheBarStaysThere) {
  std::vector<std::string> commands;
  for (int i = 1; i <= 101; ++i) {
    commands.push_back(kClients + (" " + std::to_string(i)));
  }
  EXPECT_TRUE(removeFromClient(commands));
  EXPECT_EQ(started().size(), 100U);
  EXPECT_EQ(started().back(), "C:\\Prog\\zb\\u.exe 100");
  EXPECT_EQ(std::count(progress_.steps.begin(), progress_.steps.end(), "advance"), 100);
  EXPECT_EQ(progress_.steps.back(), "advance");
}

TEST_F(Removal, FirstEmptyKeyEndsTheList) {
  removeFromClient({"C:\\Prog\\zb\\u.exe 1", "", "C:\\Prog\\zb\\u.exe 3"});
  EXPECT_THAT(started(), ElementsAre("C:\\Prog\\zb\\u.exe 1"));
}

TEST_F(Removal, SectionIsRemoveWithoutIndex) {
  installation_.putConfiguration(kConf, configurationText({{"Remove01", "", {}, {kClients}}}));
  EXPECT_FALSE(remove(Side::Client));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(Removal, ProductThatTheCatalogueDoesNotHaveOnlyLosesItsVersion) {
  installation_.putServerRecord("[ALTRO]\r\nversion=01\r\n");
  EXPECT_FALSE(remove(Side::Server, "ALTRO"));
  EXPECT_EQ(program().logText(),
            R"(Gestione ProdTrelv - Azzeramento versione server prodotto: ALTRO
Gestione ProdTrelv - Rimozione file di configurazione: S:\Lumo\
)");
  EXPECT_EQ(installation_.serverRecord(), "[ALTRO]\r\nversion=\r\n");
  EXPECT_TRUE(share().exists(Installation::kCatalogue));
}

TEST_F(Removal, IdentifierIsComparedExactly) {
  putRemovals({}, {kClients});
  EXPECT_FALSE(remove(Side::Client, "zb"));
  EXPECT_THAT(started(), IsEmpty());
}

// --- Failures

TEST_F(Removal, VersionThatCannotBeRecordedIsToldAndKeepsTheConfiguration) {
  share().denyWriting(Installation::kServerRecord);
  EXPECT_TRUE(removeFromServer({kUninstaller}));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in definzione integrazione (75 Impossibile azzerare la "
            "versione di ZB nel file: S:\\Lumo\\prg\\etc\\agdvver.ini)");
  EXPECT_TRUE(share().exists(kConfiguration));
}

TEST_F(Removal, FolderThatCannotBeDeletedIsReportedAndTheRemovalGoesOn) {
  share().holdOpen(std::string(kZb) + "\\data\\a.dat", sim::Sharing::Read);
  EXPECT_TRUE(removeFromServer({kUninstaller}));
  EXPECT_THAT(program().reportTexts(), ElementsAre("Errore in cancellazione cartella: "));
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
  EXPECT_THAT(program().reportTexts(), ElementsAre("Errore in cancellazione file: "));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - File di configurazione non rimosso: "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini");
  EXPECT_TRUE(share().exists(kConfiguration));
}

TEST_F(Removal, UnknownSideIsOneLineAndChangesNothing) {
  putRemovals({kUninstaller}, {});
  const std::string before = share().tree();
  EXPECT_FALSE(remove(static_cast<Side>(7)));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in definzione integrazione (-1 )"));
  EXPECT_EQ(share().tree(), before);
}

TEST_F(Removal, RemovedConfigurationIsNotRememberedAfterwards) {
  removeFromServer({kUninstaller});
  EXPECT_FALSE(remove(Side::Server));
  EXPECT_EQ(started().size(), 1U);
}

TEST_F(Removal, WritesNothingButTheRecordOfItsSide) {
  const std::string client = disk().tree();
  removeFromServer({kUninstaller});
  EXPECT_EQ(disk().tree(), client);
  std::vector<std::string> writes = machine().calls();
  std::erase_if(writes, [](const std::string& call) {
    return call.find("write") == std::string::npos && call.find("append") == std::string::npos;
  });
  EXPECT_THAT(writes,
              ElementsAre(StartsWith("profiles.writeValue S:\\Lumo\\prg\\etc\\agdvver.ini")));
}

}  // namespace
}  // namespace trelv::tests
