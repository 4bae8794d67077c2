#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "integrated/Preparation.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvManager::PreparaInstClientAll;
using modProdTrelvManager::PreparaInstSrvAll;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kPrograms = "C:\\Lumo\\Client";
constexpr const char* kKey = "SOFTWARE\\LUMO\\Programmi";
constexpr const char* kLumow = "C:\\WINDOWS\\Lumow.ini";

class Preparation : public testing::Test {
 protected:
  Preparation() {
    installation_.share().putProgram("S:\\Lumo\\mv\\nerio\\nerio.exe");
    recordAllOn("", "");
  }

  /// Versions by product, as record text; a product that is not named has none.
  static std::string record(const std::set<std::string>& products) {
    std::string text = "[KXK]\r\nversion=01.00.00.00\r\n";
    for (const std::string& id : products) {
      text += "[" + id + "]\r\nversion=01.02.03.00\r\n";
    }
    return text;
  }
  void recorded(const std::set<std::string>& server, const std::set<std::string>& client) {
    installation_.putServerRecord(record(server));
    station_.putClientRecord(record(client));
  }
  void recordAllOn(const std::string& server, const std::string& client) {
    const std::set<std::string> all{"ZB", "Q2", "NERIO", "LUDA", "ZM"};
    recorded(server.empty() ? std::set<std::string>{} : all,
             client.empty() ? std::set<std::string>{} : all);
  }

  void prepareServer() { PreparaInstSrvAll(station_.program(), Installation::kServer); }
  void prepareClient() {
    PreparaInstClientAll(station_.program(), Installation::kServer, kPrograms);
  }

  sim::SimMachine& machine() { return station_.machine(); }
  const std::vector<std::string>& lines() { return station_.program().lines(); }
  std::string windowsIni(const std::string& file, const std::string& section,
                         const std::string& key) {
    return machine().iniValue("C:\\WINDOWS\\" + file, section, key);
  }
  /// What is written, in order: "file" of each ini write.
  std::vector<std::string> iniWrites() {
    std::vector<std::string> writes;
    for (const std::string& call : machine().calls()) {
      if (call.rfind("profiles.writeValue ", 0) == 0) {
        writes.push_back(call.substr(std::string("profiles.writeValue ").size()));
      }
    }
    return writes;
  }
  void registerNerioAt(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine,
                                 "Software\\Classes\\ClsID\\{0A1B}\\InprocServer32", "", path);
  }

  Installation installation_;
  Station station_{installation_};
};

// --- Server

TEST_F(Preparation, ServerIsPreparedForTarsena2ZeltobilancioAndNerioInThisOrder) {
  prepareServer();
  EXPECT_THAT(
      lines(),
      ElementsAre(
          "Gestione ProdTrelv - Preparazione installazione server Tarsena2",
          "Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = 1",
          "Gestione ProdTrelv - Preparazione installazione server Zeltobilancio",
          "Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = 1",
          "Gestione ProdTrelv - Preparazione installazione server/client Nerio"));
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
}

TEST_F(Preparation, ServerTouchesNoRegistryAndNoOtherIniFile) {
  const std::string registry = machine().registry().dump();
  prepareServer();
  EXPECT_EQ(machine().registry().dump(), registry);
  EXPECT_THAT(iniWrites(),
              ElementsAre(HasSubstr("windows\\Lumow.ini"), HasSubstr("windows\\Lumow.ini")));
}

TEST_F(Preparation, ServerWhereAllIsRecordedDoesNothingAtAll) {
  recordAllOn("all", "");
  const std::string before = machine().diskOf("C:\\").tree();
  prepareServer();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_THAT(iniWrites(), IsEmpty());
  EXPECT_EQ(machine().diskOf("C:\\").tree(), before);
}

TEST_F(Preparation, ServerAsksEachProductForItsOwnVersion) {
  recorded({"ZB"}, {});
  prepareServer();
  EXPECT_THAT(lines(), Contains(HasSubstr("server Tarsena2")));
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("Zeltobilancio"))));
}

TEST_F(Preparation, ServerWithTarsena2AloneRecordedPreparesZeltobilancio) {
  recorded({"Q2", "NERIO"}, {});
  prepareServer();
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Preparazione installazione server "
                                   "Zeltobilancio",
                                   "Gestione ProdTrelv - PreparaInstSrvBilancio "
                                   "WritePrivateProfileString Byte scritti = 1"));
}

TEST_F(Preparation, ServerDoesNotAskTheClientsRecord) {
  recordAllOn("", "all");
  prepareServer();
  EXPECT_EQ(lines().size(), 5U);
}

TEST_F(Preparation, EmptyVersionCountsAsNone) {
  recorded({"Q2", "NERIO"}, {});
  machine().setIniValue(Installation::kServerRecord, "ZB", "version", "");
  prepareServer();
  EXPECT_THAT(lines(), Contains(HasSubstr("server Zeltobilancio")));
}

TEST_F(Preparation, FailedWriteEndsItsLineWithZeroAndTheNextStepsFollow) {
  machine().diskOf("C:\\").denyWriting("C:\\WINDOWS");
  prepareServer();
  EXPECT_THAT(
      lines(),
      ElementsAre(
          "Gestione ProdTrelv - Preparazione installazione server Tarsena2",
          "Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = 0",
          "Gestione ProdTrelv - Preparazione installazione server Zeltobilancio",
          "Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = 0",
          "Gestione ProdTrelv - Preparazione installazione server/client Nerio"));
}

TEST_F(Preparation, WithoutTheWindowsFolderNothingIsWrittenIntoTheRoot) {
  recorded({"ZB", "NERIO"}, {});
  machine().system().setWindowsFolder("");
  prepareServer();
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = "
            "0");
  EXPECT_THAT(iniWrites(), IsEmpty());
}

// --- Client

TEST_F(Preparation, ClientIsPreparedForTarsena2ZeltobilancioAndNerioInThisOrder) {
  prepareClient();
  EXPECT_THAT(
      lines(),
      ElementsAre(
          "Gestione ProdTrelv - Preparazione installazione client Tarsena2",
          "Gestione ProdTrelv - PreparaInstClientTarsena2 WritePrivateProfileString Byte scritti = "
          "1",
          "Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey SOFTWARE\\LUMO\\Programmi  "
          "True",
          "Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue SOFTWARE\\LUMO\\Programmi "
          "PathLocale   True",
          "Aggiornamento ini della windir caso installazione Tarsena Client",
          "Gestione ProdTrelv - Preparazione installazione client Zeltobilancio",
          "Gestione ProdTrelv - PreparaInstClientBilancio WritePrivateProfileString Byte scritti = "
          "1",
          "Gestione ProdTrelv - PreparaInstClientBilancio CreateKey SOFTWARE\\LUMO\\Programmi  "
          "True",
          "Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue SOFTWARE\\LUMO\\Programmi "
          "PathLocale   True",
          "Aggiornamento ini della windir caso installazione Bilancio Client",
          "Gestione ProdTrelv - Preparazione installazione server/client Nerio"));
}

TEST_F(Preparation, ClientPointsTheSuiteAtTheServerAndRegistersTheLocalPath) {
  prepareClient();
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
  EXPECT_EQ(machine().registry().text(Hive::LocalMachine, kKey, "PathLocale"),
            "C:\\Lumo\\Client\\dovra\\bilancio");
  const auto value = machine().registry().value(Hive::LocalMachine, kKey, "PathLocale");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->type, 1U);
}

TEST_F(Preparation, ClientFillsTheIniFilesOfBothProductsInTheirOrder) {
  prepareClient();
  const std::vector<std::string> files{
      "rating.ini",        "valutazione.ini",         "RatingValutazione.ini",
      "zeltobilancio.ini", "bilancioconsolidato.ini", "calcoloimposte.ini",
      "BilancioIas.ini",   "ConsolidatoIas.ini",      "Cooperative.ini",
      "EntiFinanziari.ini"};
  std::vector<std::string> written;
  for (const std::string& write : iniWrites()) {
    const auto named =
        std::find_if(files.begin(), files.end(), [&write](const std::string& file) -> bool {
          return write.find("\\" + file) != std::string::npos;
        });
    if (named != files.end() && (written.empty() || written.back() != *named)) {
      written.push_back(*named);
    }
  }
  EXPECT_EQ(written, files);
  for (const std::string& file : files) {
    EXPECT_EQ(windowsIni(file, "TipoInstallazione", "Tipo"), "Client") << file;
    EXPECT_EQ(windowsIni(file, "Parametri", "PathCheck"), "c:\\windows") << file;
  }
}

TEST_F(Preparation, TypeStandsBeforeThePathInAnIniFileThatIsNew) {
  prepareClient();
  for (const char* const file : {"rating.ini", "EntiFinanziari.ini"}) {
    EXPECT_EQ(machine().fileText(std::string("C:\\WINDOWS\\") + file),
              "[TipoInstallazione]\r\nTipo=Client\r\n[Parametri]\r\nPathCheck=c:\\windows\r\n")
        << file;
  }
}

TEST_F(Preparation, OnADovraHostTheWindowsIniFilesAreLeftOut) {
  station_.program().state.startup.pluginProduct = PluginProduct::Dovra;
  prepareClient();
  EXPECT_THAT(lines(), Each(Not(HasSubstr("Aggiornamento ini della windir"))));
  EXPECT_THAT(iniWrites(), Each(HasSubstr("windows\\Lumow.ini")));
  EXPECT_EQ(iniWrites().size(), 2U);
  EXPECT_EQ(machine().registry().text(Hive::LocalMachine, kKey, "PathLocale"),
            "C:\\Lumo\\Client\\dovra\\bilancio");
}

TEST_F(Preparation, OnAnyOtherHostTheyAreWritten) {
  for (const int number : {0, 13, 999}) {
    station_.program().state.startup.pluginProduct = PluginProduct{number};
    prepareClient();
    EXPECT_EQ(windowsIni("rating.ini", "TipoInstallazione", "Tipo"), "Client") << number;
    machine().removeTree("C:\\WINDOWS\\rating.ini");
  }
}

TEST_F(Preparation, ClientOfTarsena2AsksForTheVersionOfZeltobilancio) {
  recorded({}, {"ZB"});
  prepareClient();
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Preparazione installazione server/client "
                                   "Nerio"));
  EXPECT_THAT(iniWrites(), IsEmpty());
}

TEST_F(Preparation, ClientWithTarsena2AloneRecordedIsPreparedForBoth) {
  recorded({}, {"Q2", "NERIO"});
  prepareClient();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Preparazione installazione client Tarsena2"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Preparazione installazione client Zeltobilancio"));
}

TEST_F(Preparation, ClientWhereAllIsRecordedDoesNothingAtAll) {
  recordAllOn("", "all");
  const std::string before = machine().diskOf("C:\\").tree();
  const std::string registry = machine().registry().dump();
  prepareClient();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_EQ(machine().diskOf("C:\\").tree(), before);
  EXPECT_EQ(machine().registry().dump(), registry);
}

TEST_F(Preparation, ClientDoesNotAskTheServersRecord) {
  recordAllOn("all", "");
  prepareClient();
  EXPECT_EQ(lines().size(), 11U);
}

TEST_F(Preparation, RefusedRegistryIsToldWithFalseInEnglish) {
  recorded({}, {"NERIO"});
  machine().registry().denyWriting(Hive::LocalMachine, "SOFTWARE");
  prepareClient();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey "
                                "SOFTWARE\\LUMO\\Programmi  False"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue "
                                "SOFTWARE\\LUMO\\Programmi PathLocale   False"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - PreparaInstClientBilancio CreateKey "
                                "SOFTWARE\\LUMO\\Programmi  False"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue "
                                "SOFTWARE\\LUMO\\Programmi PathLocale   False"));
  EXPECT_EQ(windowsIni("EntiFinanziari.ini", "TipoInstallazione", "Tipo"), "Client");
}

TEST_F(Preparation, EachIniValueThatCannotBeWrittenIsOneLineAndTheOthersFollow) {
  recorded({}, {"NERIO"});
  machine().putFile("C:\\WINDOWS\\valutazione.ini", "");
  machine().diskOf("C:\\").denyWriting("C:\\WINDOWS\\valutazione.ini");
  prepareClient();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                                "(Impossibile scrivere TipoInstallazione/Tipo nel file: "
                                "valutazione.ini)"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                                "(Impossibile scrivere Parametri/PathCheck nel file: "
                                "valutazione.ini)"));
  EXPECT_EQ(lines().size(), 12U);
  EXPECT_EQ(windowsIni("RatingValutazione.ini", "Parametri", "PathCheck"), "c:\\windows");
}

TEST_F(Preparation, WindowsIniFilesGoWhereThePlatformPutsBareNames) {
  machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
  station_.program().state.startup.terminalServer = true;
  prepareClient();
  // Bare names are the user's own on a Terminal Server; Lumow.ini and the path are the system's.
  EXPECT_EQ(
      machine().iniValue("C:\\Users\\mario\\windows\\rating.ini", "TipoInstallazione", "Tipo"),
      "Client");
  EXPECT_EQ(machine().iniValue("C:\\Users\\mario\\windows\\rating.ini", "Parametri", "PathCheck"),
            "c:\\windows");
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
}

TEST_F(Preparation, EmptyProgramsPathGivesWhatTheJoinGives) {
  PreparaInstClientAll(station_.program(), Installation::kServer, "");
  EXPECT_EQ(machine().registry().text(Hive::LocalMachine, kKey, "PathLocale"), "\\dovra\\bilancio");
}

TEST_F(Preparation, OtherValuesOfTheIniFilesStay) {
  machine().setIniValue("C:\\WINDOWS\\Lumow.ini", "Archivi", "Altro", "x");
  machine().setIniValue("C:\\WINDOWS\\rating.ini", "Parametri", "Lingua", "it");
  prepareClient();
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Altro"), "x");
  EXPECT_EQ(windowsIni("rating.ini", "Parametri", "Lingua"), "it");
}

// --- Nerio

class NerioPreparation : public Preparation {
 protected:
  NerioPreparation() {
    installation_.share().removeTree("S:\\Lumo\\mv");
    recorded({"ZB", "Q2"}, {"ZB", "Q2"});
    machine().mount("D:");
    machine().putFile("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx", "MZ");
    machine().programs().define("C:\\WINDOWS\\system32\\regsrv32.exe");
  }
};

TEST_F(NerioPreparation, WithoutRegisteredComponentsOnlyLooks) {
  prepareServer();
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Preparazione installazione server/client Nerio",
                          "Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se "
                          "esistono componenti registrate preesistenti"));
  EXPECT_THAT(machine().started(), IsEmpty());
}

TEST_F(NerioPreparation, DeregistersTheControlsOfTheRegisteredFolder) {
  registerNerioAt("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx");
  prepareServer();
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Preparazione installazione server/client Nerio",
                  "Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono "
                  "componenti registrate preesistenti",
                  "Gestione ProdTrelv - Preparazione installazione Nerio.Deregistrazione "
                  "componenti esistenti su altro path d:\\vecchio",
                  "Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "
                  "\"d:\\vecchio\\setup\""));
  EXPECT_THAT(station_.commandLines(),
              ElementsAre("regsrv32 /u /s \"d:\\vecchio\\setup\\KorvatGestionePratiche.ocx\""));
}

TEST_F(NerioPreparation, TheClientDoesTheSameByItsOwnRecord) {
  registerNerioAt("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx");
  recorded({"NERIO"}, {"ZB"});
  prepareServer();
  EXPECT_THAT(station_.commandLines(), IsEmpty());
  prepareClient();
  EXPECT_EQ(station_.commandLines().size(), 1U);
}

TEST_F(NerioPreparation, RecordedOnTheSideIsLeftAlone) {
  registerNerioAt("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx");
  recorded({"ZB", "Q2"}, {"ZB", "NERIO"});
  prepareClient();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

TEST_F(NerioPreparation, ProgramOnTheServerKeepsTheComponentsRegistered) {
  registerNerioAt("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx");
  installation_.share().putProgram("S:\\Lumo\\mv\\nerio\\nerio.exe");
  prepareServer();
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Preparazione installazione server/client Nerio"));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

TEST_F(NerioPreparation, RegisteredFolderThatIsGoneIsTold) {
  registerNerioAt("D:\\Sparita\\setup\\KorvatGestionePratiche.ocx");
  prepareServer();
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in deregistrazione ocx (76 Impossibile trovare il "
            "percorso: d:\\sparita\\setup)");
}

// --- What a start that has nothing to prepare costs

TEST_F(Preparation, OfRecordedProductsReadsTheTwoRecordsAndNothingElse) {
  recordAllOn("all", "all");
  FakeProgram& program = station_.program();
  machine().callLog().clear();
  PreparaInstSrvAll(program, Installation::kServer);
  PreparaInstClientAll(program, Installation::kServer, kPrograms);
  EXPECT_EQ(machine().openings("S:\\").files(), 1U);
  EXPECT_EQ(machine().openings("S:\\").lists, 0U);
  EXPECT_EQ(machine().openings("C:\\").files(), 1U);
}

}  // namespace
}  // namespace trelv::tests
