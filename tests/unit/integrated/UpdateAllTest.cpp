#include "integrated/UpdateAll.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

constexpr const char* kClosing =
    "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari";
constexpr const char* kServerRecord = Installation::kServerRecord;

void updateAll(Station& station, const std::string& serverPath = Installation::kServer) {
  modProdTrelvManager::UpdateAllProdottiComplementari(station.program(),
                                                      {serverPath, "S:\\Work", "C:\\Lumo\\Client"});
}

/// One product "ZB": its set-up (01.00) runs a on the server and b on the client, its update
/// (02.00) c and d.
class UpdateAll : public StationTest {
 public:
  UpdateAll() {
    installation_.putPrograms({"a", "b", "c", "d"});
    installation_.putCatalogue({kBilancio});
    installation_.putConfiguration(
        "zb.ini",
        configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\b.exe"}},
                           {"Update01", "02.00", {"S:\\Lumo\\c.exe"}, {"S:\\Lumo\\d.exe"}}}));
  }

  /// A product of one server set-up section.
  void putServerSetup(const std::string& conf, const std::string& version,
                      const std::string& command) {
    installation_.putConfiguration(conf, configurationText({{"Setup01", version, {command}, {}}}));
  }
  /// What happens while the set-up of the server runs.
  void whileServerIsSetUp(const std::function<void()>& action) {
    share().putProgram("S:\\Lumo\\a.exe", [action](sim::SimProcess&) {
      action();
      return 0U;
    });
  }
  /// Another workstation records these versions between the test of the records and the first run.
  void whenRecorded(const std::string& record) {
    machine().onCall("files.look S:\\Lumo\\zb.ini",
                     [this, record] { installation_.putServerRecord(record); });
  }
  /// Names of the programs that ran, with blanks between.
  static std::string programsOf(Station& station) {
    std::vector<std::string> names = without("S:\\Lumo\\", station.commandLines());
    for (std::string& name : names) {
      name = name.substr(0, name.rfind(".exe"));
    }
    return joined(names);
  }
  std::string programs() { return programsOf(station_); }

  const ProductEntry kBilancio{"ZB", "Bilancio", "zb.ini"};
};

// --- The integration record

TEST_F(UpdateAll, OnAMachineWithoutIntegrationWritesItAndGoesOn) {
  station_.forgetIntegration();
  updateAll(station_);
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo"));
  EXPECT_EQ(lines().back(), kClosing);
}

/// A store in which something changes at each look: another session's record, or a suite's folder.
class ChangingStore : public sim::SimConfigurationLibrary {
 public:
  std::int32_t getParameter(const std::string& product, const std::string& section,
                            const std::string& key, const std::string& attribute,
                            const std::string& defaultValue, std::int32_t size,
                            std::string& buffer) override {
    if (suite) {
      // Whatever product of the store the suite is: every address answers.
      put(product, "Client", "PathPelan", "default", "C:\\Travolin");
      put("SYSTEM", "Complementary_Products", "Integration", "Path", "S:\\Lumo");
    }
    const std::int32_t code = SimConfigurationLibrary::getParameter(
        product, section, key, attribute, defaultValue, size, buffer);
    put("SYSTEM", "Complementary_Products", "Integration", "Path", "T:\\Altro");
    return code;
  }

  bool suite = false;
};

TEST_F(UpdateAll, RecordThatCannotBeWrittenEndsIt) {
  ChangingStore store;
  machine().useConfigurationLibrary(store);
  updateAll(station_);
  EXPECT_THAT(
      boxes(),
      ElementsAre(isBox(
          BoxIcon::Critical,
          "Non è stato possibile aggiornare il file di configurazione della macchina nel percorso "
          "\"C:\\Lumo\\Client\"\r\nLa procedura di integrazione pertanto non può essere "
          "completata\r\n\r\nPremere Ok per interrompere")));
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Impossibile aggiornare IntegrazioneSuMacchina");
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(UpdateAll, OtherServerIsRefused) {
  updateAll(station_, "S:\\Lumo\\");
  EXPECT_THAT(
      boxes(),
      ElementsAre(isBox(
          BoxIcon::Critical,
          "Sull'installazione corrente è stata rilevata l'integrazione con i prodotti "
          "complementari su \"S:\\Lumo\" diverso dal percorso richiesto \"S:\\Lumo\\\"\r\n\r\nLa "
          "procedura pertanto non può essere completata\r\n\r\nPremere Ok per interrompere")));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile "
            "proseguire");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
}

TEST_F(UpdateAll, SameServerInOtherCaseIsAccepted) {
  updateAll(station_, "s:\\LUMO");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(lines().back(), kClosing);
}

// --- Suites

TEST_F(UpdateAll, FeraxSuiteEndsItWithoutABox) {
  machine().registry().setText(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema", "0");
  updateAll(station_);
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - SuiteFerax rilevata, nessun prodotto complementare viene "
            "installato/aggiornato");
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Verifica Esistenza Travolin")));
}

TEST_F(UpdateAll, TravolinSuiteEndsItWithoutABox) {
  ChangingStore store;
  store.suite = true;
  machine().useConfigurationLibrary(store);
  updateAll(station_);
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - SuiteTravolin rilevata, nessun prodotto complementare viene "
            "installato/aggiornato");
}

TEST_F(UpdateAll, ProductOnItsOwnEndsItWithABox) {
  // Without a store nobody knows of an integration.
  machine().configuration().setConfigPath("");
  machine().setIniValue("nerio.ini", "Pathnames", "Homedir", "C:\\Nerio");
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  updateAll(station_);
  EXPECT_THAT(
      boxes(),
      ElementsAre(isBox(
          BoxIcon::Exclamation,
          "Sulla macchina corrente è stata rilevata la presenza dei seguenti prodotti "
          "complementari:\r\n\r\nNerio Standalone\r\nLuda Standalone\r\n\r\nL'installazione/"
          "aggiornamento non avverra' finche' questi ultimi non verrano rimossi manualmente dal "
          "sistema\r\n\r\nPremere Ok per proseguire",
          BoxButtons::Ok, "Gestione prodotti complementari")));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
}

// --- One product on both sides

/// Versions of ZB in both records before, and what happens meanwhile; what ran, both versions
/// afterwards, and whether the procedure came to its end.
struct Walk : Row {
  const char* server;
  const char* client;
  const char* programs;
  const char* serverAfter;
  const char* clientAfter;
  void (*arrange)(UpdateAll&) = nullptr;
  bool ended = true;
};

const std::vector<Walk> kWalks{
    {"FirstInstallationRunsTheSetUpOfServerThenClient", "", "", "a b", "01.00", "01.00"},
    {"EachSideGoesByItsOwnRecord", "01.00", "", "c b", "02.00", "01.00"},
    {"BothVersionsAreReadBeforeTheServersRun", "", "", "a b", "01.00", "01.00",
     [](UpdateAll& t) {
       t.whileServerIsSetUp([&t] { t.station_.putClientRecord("[ZB]\r\nversion=02.00\r\n"); });
     }},
    {"HigherVersionThatTheSetUpItselfRecordedIsOverwritten", "", "", "a b", "01.00", "01.00",
     [](UpdateAll& t) {
       t.whileServerIsSetUp([&t] { t.installation_.putServerRecord("[ZB]\r\nversion=05.00\r\n"); });
     }},
    {"AnotherVersionThatStandsThereByNowIsOverwritten", "02.00", "02.00", "", "02.00", "02.00",
     [](UpdateAll& t) { t.whenRecorded("[ZB]\r\nversion=05.00\r\n"); }},
    {"VersionThatAnotherWorkstationRemovedMeanwhileIsWrittenBack", "02.00", "02.00", "", "02.00",
     "02.00", [](UpdateAll& t) { t.whenRecorded("[Q2]\r\nversion=05.00\r\n"); }},
    {"EmptyVersionIsPutOverOneRecordedMeanwhile", "", "", "", "", "",
     [](UpdateAll& t) {
       t.program().state.startup.administrator = false;
       t.whenRecorded("[ZB]\r\nversion=01.00\r\n");
     }},
    {"LockOfTheClientStopsAfterTheServersVersionWasRecorded", "", "", "a", "01.00", "",
     [](UpdateAll& t) { t.machine().putFile(Station::kClientLock, "other"); }, false},
    {"StoreThatIsGoneHalfWayChangesNothing", "", "", "a b", "01.00", "01.00",
     [](UpdateAll& t) {
       t.machine().onCall("files.read " + std::string(Installation::kCatalogue),
                          [&t] { t.machine().configuration().setCallable(false); });
     }},
    {"ProductThatIsNoPartOfTheInstallation", "", "", "", "", "",
     [](UpdateAll& t) { t.machine().removeTree("S:\\Lumo\\zb.ini"); }},
    {"WithoutCatalogue", "", "", "", "", "",
     [](UpdateAll& t) { t.machine().removeTree(Installation::kCatalogue); }},
    {"EntryWithoutConfigurationEndsTheCatalogue", "", "", "", "", "", [](UpdateAll& t) {
       t.installation_.putCatalogue({{"NERIO", "Nerio", ""}, t.kBilancio});
     }}};

class UpdateAllOf : public UpdateAll, public testing::WithParamInterface<Walk> {};

TEST_P(UpdateAllOf, RunsAndRecordsBothSides) {
  const auto record = [](const std::string& version) {
    return version.empty() ? "" : "[ZB]\r\nversion=" + version + "\r\n";
  };
  installation_.putServerRecord(record(GetParam().server));
  station_.putClientRecord(record(GetParam().client));
  if (GetParam().arrange != nullptr) {
    GetParam().arrange(*this);
  }
  updateAll(station_);
  EXPECT_EQ(programs(), GetParam().programs);
  EXPECT_EQ(station_.serverVersion("ZB"), GetParam().serverAfter);
  EXPECT_EQ(station_.clientVersion("ZB"), GetParam().clientAfter);
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_EQ(machine().fileExists(Station::kClientLock), !GetParam().ended);
  EXPECT_EQ(lines().back() == kClosing, GetParam().ended);
  EXPECT_THAT(reports(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, UpdateAllOf, testing::ValuesIn(kWalks), NameOfRow());

TEST_F(UpdateAll, WalksHundredEntriesAndNoMore) {
  std::vector<ProductEntry> entries(99, {"NERIO", "Nerio", "nothing.ini"});
  entries.push_back(kBilancio);
  entries.push_back({"ZM", "Zeltomodelli", "zm.ini"});
  installation_.putCatalogue(entries);
  putServerSetup("zm.ini", "01.00", "S:\\Lumo\\d.exe");
  updateAll(station_);
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_EQ(station_.serverVersion("ZM"), "");
}

TEST_F(UpdateAll, PassesTheIntegrationPathToTheCommands) {
  putServerSetup("zb.ini", "01.00", "%PATHSETUP%\\a.exe \"%PATHWORK%\" [%PATHCLIENT%]");
  updateAll(station_);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe \"S:\\Work\" []"));
}

TEST_F(UpdateAll, UnchangedVersionsLeaveTheRecordsUntouched) {
  installation_.putServerRecord("[ZB]\n  version = 02.00\n");
  station_.putClientRecord("[ZB]\n\nversion=02.00\n");
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\n  version = 02.00\n");
  EXPECT_EQ(machine().fileText(Station::kClientRecord), "[ZB]\n\nversion=02.00\n");
  for (const char* const record : {kServerRecord, Station::kClientRecord}) {
    EXPECT_EQ(machine().callLog().countOf(std::string("profiles.writeValue ") + record), 0U);
  }
}

TEST_F(UpdateAll, EmptyVersionIsRecordedAndNotTellingWhereItCannotBe) {
  machine().removeTree("S:\\Lumo\\zb.ini");
  updateAll(station_);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=\r\n");
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  share().setReadOnly(kServerRecord);
  updateAll(station_);
  EXPECT_THAT(lines(), Each(Not(HasSubstr("Errore"))));
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, ValuesThatOthersRecordMeanwhileSurvive) {
  installation_.putServerRecord("[ZB]\r\nversion=01.00\r\n[NERIO]\r\nversion=01.00\r\n");
  machine().onCall("profiles.writeValue " + std::string(kServerRecord), [this] {
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
  installation_.putCatalogue({{"", "Bilancio", "zb.ini"}});
  updateAll(station_);
  station_.endProgram();
  updateAll(station_);
  EXPECT_EQ(programs(), "a b a b");
  EXPECT_FALSE(share().exists(kServerRecord));
  EXPECT_THAT(lines(), Each(Not(HasSubstr("Impossibile registrare"))));
  EXPECT_EQ(lines().back(), kClosing);
}

TEST_F(UpdateAll, SecondEntryOfAProductSeesWhatTheFirstRecorded) {
  installation_.putCatalogue({kBilancio, kBilancio});
  updateAll(station_);
  EXPECT_EQ(programs(), "a b c d");
  EXPECT_EQ(station_.serverVersion("ZB"), "02.00");
}

TEST_F(UpdateAll, LockOfAnotherSessionStopsEverythingAtOnce) {
  installation_.putCatalogue({kBilancio, {"Q2", "Tarsena2", "zb.ini"}});
  share().put(Installation::kServerLock, "other");
  updateAll(station_);
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(installation_.serverLockExists());
  EXPECT_EQ(boxes().size(), 1U);
  EXPECT_THAT(lines().back(),
              HasSubstr("per presenza altre sessioni: Tipo=Setup - Oggetto=Server"));
  EXPECT_FALSE(share().exists(kServerRecord));
}

TEST_F(UpdateAll, RefusedCommandsAreTriedAgainAtTheNextStart) {
  program().state.startup.administrator = false;
  updateAll(station_);
  EXPECT_EQ(boxes().size(), 2U);
  EXPECT_EQ(lines().back(), kClosing);
  station_.endProgram();
  updateAll(station_);
  EXPECT_EQ(programs(), "a b");
}

TEST_F(UpdateAll, WantOfMemoryIsOneLineAndRaisesNothing) {
  program().log.linesWithoutMemory = 1;
  updateAll(station_);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                                   "(Memoria insufficiente)"));
}

// --- Several workstations on one share

TEST_F(UpdateAll, SecondWorkstationGoesByTheSharedRecord) {
  updateAll(station_);
  Station other(installation_);
  updateAll(other);
  EXPECT_EQ(programsOf(other), "c b");
  EXPECT_EQ(other.clientVersion("ZB"), "01.00");
  EXPECT_EQ(station_.clientVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, WorkstationThatMeetsARunningUpdateIsTurnedAway) {
  Station other(installation_);
  whileServerIsSetUp([&] { updateAll(other); });
  updateAll(station_);
  EXPECT_EQ(other.machine().boxes().size(), 1U);
  EXPECT_EQ(programsOf(other), "");
  EXPECT_EQ(programs(), "a b");
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, WorkstationsThatMeetBetweenTestAndCreationOfTheLockBothRun) {
  Station other(installation_);
  machine().onCall("files.write " + std::string(Installation::kServerLock),
                   [&other] { updateAll(other); });
  updateAll(station_);
  EXPECT_EQ(programsOf(other), "a b");
  EXPECT_EQ(programs(), "a b");
  EXPECT_FALSE(installation_.serverLockExists());
}

TEST_F(UpdateAll, WorkstationWithoutServerWorkFreesTheLockOfARunningUpdate) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00\r\n");
  installation_.putConfiguration(
      "nerio.ini", configurationText({{"Update01", "01.00", {"S:\\Lumo\\d.exe"}, {}}}));
  Station idle(installation_);
  bool lockSurvived = true;
  whileServerIsSetUp([&] {
    // The idle workstation still has a catalogue with one product that is up to date.
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}});
    updateAll(idle);
    lockSurvived = installation_.serverLockExists();
    installation_.putCatalogue({kBilancio});
  });
  updateAll(station_);
  EXPECT_FALSE(lockSurvived);
  EXPECT_THAT(idle.machine().boxes(), IsEmpty());
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

TEST_F(UpdateAll, VersionThatAnotherWorkstationRecordedDuringACommandIsSeen) {
  installation_.putCatalogue({kBilancio, {"Q2", "Tarsena2", "q2.ini"}});
  putServerSetup("q2.ini", "05.00", "S:\\Lumo\\d.exe");
  whileServerIsSetUp([&] { installation_.putServerRecord("[Q2]\r\nversion=05.00\r\n"); });
  updateAll(station_);
  EXPECT_EQ(programs(), "a b");
  EXPECT_EQ(station_.serverVersion("Q2"), "05.00");
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
}

// --- The end of the Windows session

TEST_F(UpdateAll, WhatEndedBeforeTheSessionDidIsRecordedAndTheRestRunsAtTheNextStart) {
  installation_.putConfiguration(
      "zb.ini", configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {}},
                                   {"Setup02", "02.00", {"S:\\Lumo\\b.exe"}, {}},
                                   {"Update01", "02.00", {"S:\\Lumo\\c.exe"}, {}}}));
  machine().programs().setDeferred(true);
  share().putProgram("S:\\Lumo\\b.exe", [](sim::SimProcess& process) -> std::uint32_t {
    process.machine().programs().endSession();
  });
  EXPECT_THROW(updateAll(station_), sim::Killed);
  machine().startSession();
  EXPECT_EQ(station_.serverVersion("ZB"), "01.00");
  EXPECT_FALSE(installation_.serverLockExists());
  station_.endProgram();
  updateAll(station_);
  EXPECT_EQ(programs(), "a b c");
  EXPECT_EQ(station_.serverVersion("ZB"), "02.00");
}

}  // namespace
}  // namespace trelv::tests
