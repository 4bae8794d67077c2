#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "integrated/UpdateAll.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::UpdateAllProdottiComplementari;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kClosing =
    "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari";

void updateAll(Station& station, const std::string& serverPath = Installation::kServer) {
  UpdateAllProdottiComplementari(station.program(), {serverPath, "S:\\Work", "C:\\Lumo\\Client"});
}

class UpdateAll : public testing::Test {
 protected:
  UpdateAll() {
    for (const char* const name : {"a", "b", "c", "d"}) {
      installation_.share().putProgram("S:\\Lumo\\" + std::string(name) + ".exe");
    }
  }

  /// One product "ZB" with one set-up section and one update section.
  void putOneProduct() {
    installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
    installation_.putConfiguration(
        "zb.ini",
        configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\b.exe"}},
                           {"Update01", "02.00", {"S:\\Lumo\\c.exe"}, {"S:\\Lumo\\d.exe"}}}));
  }

  sim::SimMachine& machine() { return station_.machine(); }
  const std::vector<std::string>& lines() { return station_.program().lines(); }
  std::vector<std::string> started() { return station_.commandLines(); }

  Installation installation_;
  Station station_{installation_};
};

TEST_F(UpdateAll, WantOfMemoryIsOneLineAndRaisesNothing) {
  station_.program().log.linesWithoutMemory = 1;
  updateAll(station_);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                                   "(Memoria insufficiente)"));
}

// --- The integration record

TEST_F(UpdateAll, OnAMachineWithoutIntegrationWritesItAndGoesOn) {
  station_.forgetIntegration();
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  updateAll(station_);
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_THAT(
      lines(),
      ElementsAre(
          "Gestione ProdTrelv - Inizio procedura",
          "Gestione ProdTrelv - Verifica integrazione con Dovra SP",
          "Gestione ProdTrelv - Integrazione Dovra SP non rilevata",
          "Gestione ProdTrelv - Verifica integrazione con Dovra SP",
          "Gestione ProdTrelv - Integrazione Dovra SP non rilevata",
          "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo",
          "Gestione ProdTrelv - Verifica Esistenza Travolin", "Suite travolin non trovata ",
          "Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone",
          "Gestione ProdTrelv - Verifica integrazione con Dovra SP",
          "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo",
          "Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone "
          "rilevato",
          "Gestione ProdTrelv - Inizio gestione anomalia Corvel",
          "Gestione ProdTrelv - Ambiente Terminal Server non rilevato, nessuna gestione anomalia "
          "TS Corvel",
          "Gestione ProdTrelv - Inizio Gestione Anomalia Nerio",
          "Gestione ProdTrelv - copia file ini mancante da: S:\\Work\\mv\\nerio\\nerio.ini a: "
          "c:\\windows\\nerio.ini",
          "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio",
          "Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli",
          "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia ZM",
          "Gestione ProdTrelv - Inizio Gestione anomalia Luda",
          "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda",
          "Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)", kClosing));
}

/// A store into which another session writes the record after the first look at it.
class OvertakenStore : public sim::SimConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override {
    const std::int32_t code = SimConfigurationLibrary::getParameter(
        product, section, key, attribute, defaultValue, size, buffer);
    put("SYSTEM", "Complementary_Products", "Integration", "Path", "T:\\Altro");
    return code;
  }
};

TEST_F(UpdateAll, RecordThatCannotBeWrittenEndsIt) {
  OvertakenStore store;
  machine().useConfigurationLibrary(store);
  putOneProduct();
  updateAll(station_);
  ASSERT_EQ(machine().boxes().size(), 1U);
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.icon, machine::BoxIcon::Critical);
  EXPECT_EQ(
      box.text,
      "Non è stato possibile aggiornare il file di configurazione della macchina nel percorso "
      "\"C:\\Lumo\\Client\"\r\nLa procedura di integrazione pertanto non può essere "
      "completata\r\n\r\nPremere Ok per interrompere");
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Impossibile aggiornare IntegrazioneSuMacchina");
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(UpdateAll, OtherServerIsRefused) {
  putOneProduct();
  updateAll(station_, "S:\\Lumo\\");
  ASSERT_EQ(machine().boxes().size(), 1U);
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.icon, machine::BoxIcon::Critical);
  EXPECT_EQ(box.text,
            "Sull'installazione corrente è stata rilevata l'integrazione con i prodotti "
            "complementari su \"S:\\Lumo\" diverso dal percorso richiesto \"S:\\Lumo\\\"\r\n\r\nLa "
            "procedura pertanto non può essere completata\r\n\r\nPremere Ok per interrompere");
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile "
            "proseguire");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
}

TEST_F(UpdateAll, SameServerInOtherCaseIsAccepted) {
  updateAll(station_, "s:\\LUMO");
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_EQ(lines().back(), kClosing);
}

// --- Suites

TEST_F(UpdateAll, FeraxSuiteEndsItWithoutABox) {
  putOneProduct();
  machine().registry().setText(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema", "0");
  updateAll(station_);
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - SuiteFerax rilevata, nessun prodotto complementare viene "
            "installato/aggiornato");
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Verifica Esistenza Travolin")));
}

TEST_F(UpdateAll, TravolinSuiteEndsItWithoutABox) {
  putOneProduct();
  // Whatever product of the store the suite is: every address answers.
  class EveryFolder : public sim::SimConfigurationLibrary {
   public:
    std::int32_t getParameter(const std::string& product, const std::string& section,
                              const std::string& key, const std::string& attribute,
                              const std::string& defaultValue, std::int32_t size,
                              std::string& buffer) override {
      put(product, "Client", "PathPelan", "default", "C:\\Travolin");
      put("SYSTEM", "Complementary_Products", "Integration", "Path", "S:\\Lumo");
      return SimConfigurationLibrary::getParameter(product, section, key, attribute, defaultValue,
                                                   size, buffer);
    }
  };
  EveryFolder store;
  machine().useConfigurationLibrary(store);
  updateAll(station_);
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - SuiteTravolin rilevata, nessun prodotto complementare viene "
            "installato/aggiornato");
}

TEST_F(UpdateAll, ProductOnItsOwnEndsItWithABox) {
  putOneProduct();
  // Without a store nobody knows of an integration.
  machine().configuration().setConfigPath("");
  machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio");
  updateAll(station_);
  ASSERT_EQ(machine().boxes().size(), 1U);
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "Gestione prodotti complementari");
  EXPECT_EQ(box.icon, machine::BoxIcon::Exclamation);
  EXPECT_EQ(box.text, modProdTrelvManager::standaloneRefusal("Nerio Standalone\r\n"));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
}

TEST(StandaloneRefusal, NamesTheProducts) {
  EXPECT_EQ(modProdTrelvManager::standaloneRefusal("Nerio Standalone\r\nLuda Standalone\r\n"),
            "Sulla macchina corrente è stata rilevata la presenza dei seguenti prodotti "
            "complementari:\r\n\r\nNerio Standalone\r\nLuda Standalone\r\n\r\nL'installazione/"
            "aggiornamento non avverra' finche' questi ultimi non verrano rimossi manualmente dal "
            "sistema\r\n\r\nPremere Ok per proseguire");
}

// --- The walk over the catalogue

TEST_F(UpdateAll, WithoutCatalogueTouchesNothing) {
  updateAll(station_);
  EXPECT_EQ(lines().back(), kClosing);
  EXPECT_FALSE(installation_.share().exists(Installation::kServerRecord));
}

TEST_F(UpdateAll, EntryWithoutConfigurationEndsTheCatalogue) {
  putOneProduct();
  installation_.putCatalogue({{"NERIO", "Nerio", ""}, {"ZB", "Bilancio", "zb.ini"}});
  updateAll(station_);
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, WalksHundredEntriesAndNoMore) {
  std::vector<ProductEntry> entries(99, {"NERIO", "Nerio", "nothing.ini"});
  entries.push_back({"ZB", "Bilancio", "zb.ini"});
  entries.push_back({"ZM", "Zeltomodelli", "zm.ini"});
  putOneProduct();
  installation_.putCatalogue(entries);
  installation_.putConfiguration(
      "zm.ini", configurationText({{"Setup01", "01.00", {"S:\\Lumo\\d.exe"}, {}}}));
  updateAll(station_);
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_EQ(station_.serverVersion("ZM"), "");
}

TEST_F(UpdateAll, FirstInstallationRunsTheSetUpOfServerThenClient) {
  putOneProduct();
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(machine().fileExists(Station::kClientLock));
}

TEST_F(UpdateAll, EachSideGoesByItsOwnRecord) {
  putOneProduct();
  installation_.putServerRecord("[ZB]\r\nversion=01.00\r\n");
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "02.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, BothVersionsAreReadBeforeTheServersRun) {
  putOneProduct();
  installation_.share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    station_.putClientRecord("[ZB]\r\nversion=02.00\r\n");
    return 0U;
  });
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, PassesTheIntegrationPathToTheCommands) {
  putOneProduct();
  installation_.putConfiguration(
      "zb.ini",
      configurationText(
          {{"Setup01", "01.00", {"%PATHSETUP%\\a.exe \"%PATHWORK%\" [%PATHCLIENT%]"}, {}}}));
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe \"S:\\Work\" []"));
}

TEST_F(UpdateAll, UnchangedVersionsLeaveTheRecordsUntouched) {
  putOneProduct();
  installation_.putServerRecord("[ZB]\n  version = 02.00\n");
  station_.putClientRecord("[ZB]\n\nversion=02.00\n");
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\n  version = 02.00\n");
  EXPECT_EQ(machine().fileText(Station::kClientRecord), "[ZB]\n\nversion=02.00\n");
}

TEST_F(UpdateAll, VersionThatAnotherWorkstationRaisedMeanwhileIsNotLowered) {
  putOneProduct();
  installation_.putServerRecord("[ZB]\r\nversion=02.00\r\n");
  station_.putClientRecord("[ZB]\r\nversion=02.00\r\n");
  machine().onCall("files.look S:\\Lumo\\zb.ini",
                   [this] { installation_.putServerRecord("[ZB]\r\nversion=05.00\r\n"); });
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=05.00\r\n");
}

TEST_F(UpdateAll, VersionThatAnotherWorkstationRemovedMeanwhileIsWrittenBack) {
  putOneProduct();
  installation_.putServerRecord("[ZB]\r\nversion=02.00\r\n");
  machine().onCall("files.look S:\\Lumo\\zb.ini",
                   [this] { installation_.putServerRecord("[Q2]\r\nversion=05.00\r\n"); });
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[Q2]\r\nversion=05.00\r\n[ZB]\r\nversion=02.00\r\n");
}

TEST_F(UpdateAll, EmptyVersionIsNotPutOverOneThatAnotherWorkstationRecordedMeanwhile) {
  putOneProduct();
  station_.program().state.startup.administrator = false;
  machine().onCall("files.look S:\\Lumo\\zb.ini",
                   [this] { installation_.putServerRecord("[ZB]\r\nversion=01.00\r\n"); });
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=01.00\r\n");
}

TEST_F(UpdateAll, ProductThatIsNoPartOfTheInstallationGetsAnEmptyVersion) {
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=\r\n");
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, EmptyVersionThatCannotBeWrittenIsNotTold) {
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  installation_.share().setReadOnly(Installation::kServerRecord);
  updateAll(station_);
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("Errore"))));
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, HigherVersionThatTheSetUpItselfRecordedIsOverwritten) {
  putOneProduct();
  installation_.share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    installation_.putServerRecord("[ZB]\r\nversion=05.00\r\n");
    return 0U;
  });
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=01.00\r\n");
}

TEST_F(UpdateAll, ValuesThatOthersRecordMeanwhileSurvive) {
  putOneProduct();
  installation_.putServerRecord("[ZB]\r\nversion=01.00\r\n[NERIO]\r\nversion=01.00\r\n");
  station_.putClientRecord("[ZB]\r\nversion=02.00\r\n");
  machine().onCall("profiles.writeValue " + std::string(Installation::kServerRecord), [this] {
    installation_.putServerRecord(
        "[ZB]\r\nversion=01.00\r\n[NERIO]\r\nversion=03.00\r\nsite=Roma\r\n[Q2]\r\nversion=04.00"
        "\r\n");
  });
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(),
            "[ZB]\r\nversion=02.00\r\n[NERIO]\r\nversion=03.00\r\nsite=Roma\r\n[Q2]\r\n"
            "version=04.00\r\n");
}

TEST_F(UpdateAll, ProductWithoutIdentifierRecordsNothingAndRunsAgain) {
  putOneProduct();
  installation_.putCatalogue({{"", "Bilancio", "zb.ini"}});
  updateAll(station_);
  station_.endProgram();
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", "S:\\Lumo\\a.exe",
                                     "S:\\Lumo\\b.exe"));
  EXPECT_FALSE(installation_.share().exists(Installation::kServerRecord));
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("Impossibile registrare"))));
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, SecondEntryOfAProductSeesWhatTheFirstRecorded) {
  putOneProduct();
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}, {"ZB", "Bilancio", "zb.ini"}});
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", "S:\\Lumo\\c.exe",
                                     "S:\\Lumo\\d.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "02.00");
}

TEST_F(UpdateAll, LockOfAnotherSessionStopsEverythingAtOnce) {
  putOneProduct();
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}, {"Q2", "Tarsena2", "zb.ini"}});
  installation_.share().put(Installation::kServerLock, "other");
  updateAll(station_);
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(installation_.serverLockExists());
  EXPECT_EQ(machine().boxes().size(), 1U);
  EXPECT_THAT(lines().back(),
              HasSubstr("per presenza altre sessioni: Tipo=Setup - Oggetto=Server"));
  EXPECT_FALSE(installation_.share().exists(Installation::kServerRecord));
}

TEST_F(UpdateAll, LockOfTheClientStopsAfterTheServersVersionWasRecorded) {
  putOneProduct();
  machine().putFile(Station::kClientLock, "other");
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "");
  EXPECT_TRUE(machine().fileExists(Station::kClientLock));
  EXPECT_THAT(lines(), Not(Contains(kClosing)));
}

TEST_F(UpdateAll, RefusedCommandsAreTriedAgainAtTheNextStart) {
  putOneProduct();
  station_.program().state.startup.administrator = false;
  updateAll(station_);
  EXPECT_EQ(machine().boxes().size(), 2U);
  EXPECT_EQ(lines().back(), kClosing);
  station_.endProgram();
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
}

TEST_F(UpdateAll, StoreThatIsGoneHalfWayChangesNothing) {
  putOneProduct();
  machine().onCall("files.read " + std::string(Installation::kCatalogue),
                   [this] { machine().configuration().setCallable(false); });
  updateAll(station_);
  EXPECT_TRUE(station_.program().reports().empty());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
  EXPECT_FALSE(machine().fileExists(Station::kClientLock));
  EXPECT_EQ(lines().back(), kClosing);
}

// --- Several workstations on one share

TEST_F(UpdateAll, SecondWorkstationGoesByTheSharedRecord) {
  putOneProduct();
  updateAll(station_);
  Station other(installation_);
  updateAll(other);
  EXPECT_THAT(other.commandLines(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(other.clientVersion("ZB"), "01.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, WorkstationThatMeetsARunningUpdateIsTurnedAway) {
  putOneProduct();
  Station other(installation_);
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    updateAll(other);
    return 0U;
  });
  updateAll(station_);
  EXPECT_EQ(other.machine().boxes().size(), 1U);
  EXPECT_THAT(other.commandLines(), IsEmpty());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, WorkstationsThatMeetBetweenTestAndCreationOfTheLockBothRun) {
  putOneProduct();
  Station other(installation_);
  machine().onCall("files.write " + std::string(Installation::kServerLock),
                   [&other] { updateAll(other); });
  updateAll(station_);
  EXPECT_THAT(other.commandLines(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_FALSE(installation_.serverLockExists());
}

TEST_F(UpdateAll, WorkstationWithoutServerWorkFreesTheLockOfARunningUpdate) {
  putOneProduct();
  installation_.putServerRecord("[NERIO]\r\nversion=01.00\r\n");
  installation_.putConfiguration(
      "nerio.ini", configurationText({{"Update01", "01.00", {"S:\\Lumo\\d.exe"}, {}}}));
  Station idle(installation_);
  bool lockSurvived = true;
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    // The idle workstation still has a catalogue with one product that is up to date.
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}});
    updateAll(idle);
    lockSurvived = installation_.serverLockExists();
    installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
    return 0U;
  });
  updateAll(station_);
  EXPECT_FALSE(lockSurvived);
  EXPECT_THAT(idle.machine().boxes(), IsEmpty());
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, VersionThatAnotherWorkstationRecordedDuringACommandIsSeen) {
  putOneProduct();
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}, {"Q2", "Tarsena2", "q2.ini"}});
  installation_.putConfiguration(
      "q2.ini", configurationText({{"Setup01", "05.00", {"S:\\Lumo\\d.exe"}, {}}}));
  installation_.share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    installation_.putServerRecord("[Q2]\r\nversion=05.00\r\n");
    return 0U;
  });
  updateAll(station_);
  EXPECT_THAT(started(), Not(Contains("S:\\Lumo\\d.exe")));
  EXPECT_EQ(station_.serverVersion("Q2"), "05.00");
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

}  // namespace
}  // namespace trelv::tests
