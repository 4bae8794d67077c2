#include <algorithm>

#include "integrated/Preparation.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvManager::PreparaInstClientAll;
using modProdTrelvManager::PreparaInstSrvAll;

constexpr const char* kKey = "SOFTWARE\\LUMO\\Programmi";
constexpr const char* kLumow = "C:\\WINDOWS\\Lumow.ini";
constexpr const char* kAll = "ZB Q2 NERIO LUDA ZM";

/// Products that are recorded on neither side; Nerio's program stands on the server.
class Preparation : public StationTest {
 public:
  Preparation() {
    installation_.putPrograms({"mv\\nerio\\nerio"});
    record("", "");
  }

  /// Puts records of both sides that have versions of these products (blanks between).
  void record(const std::string& server, const std::string& client) {
    const auto text = [](const std::string& products) {
      std::string record = "[KXK]\r\nversion=01.00.00.00\r\n";
      for (const std::string& id : wordsOf(products)) {
        record += "[" + id + "]\r\nversion=01.02.03.00\r\n";
      }
      return record;
    };
    installation_.putServerRecord(text(server));
    station_.putClientRecord(text(client));
  }

  void prepareServer() { PreparaInstSrvAll(program(), Installation::kServer); }
  void prepareClient(const std::string& programsPath = "C:\\Lumo\\Client") {
    PreparaInstClientAll(program(), {Installation::kServer, "", programsPath});
  }
  /// What the start lines of the preparations say: "server Tarsena2".
  std::vector<std::string> prepared() {
    std::vector<std::string> starts =
        endsOf(lines(), "Gestione ProdTrelv - Preparazione installazione ");
    std::erase_if(starts, [](const std::string& text) { return text.rfind("Nerio", 0) == 0; });
    return starts;
  }

  std::string windowsIni(const std::string& file, const std::string& section,
                         const std::string& key) {
    return machine().iniValue("C:\\WINDOWS\\" + file, section, key);
  }
  std::optional<std::string> localPath() {
    return machine().registry().text(Hive::LocalMachine, kKey, "PathLocale");
  }
  /// What is written, in order: file and value of each ini write.
  std::vector<std::string> iniWrites() { return endsOf(machine().calls(), "profiles.writeValue "); }
  void registerNerioAt(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine,
                                 "Software\\Classes\\ClsID\\{0A1B}\\InprocServer32", "", path);
  }
};

// --- Server

TEST_F(Preparation, ServerIsPreparedForTarsena2ZeltobilancioAndNerioInThisOrder) {
  const std::string registry = machine().registry().dump();
  prepareServer();
  EXPECT_EQ(program().logText(),
            R"(Gestione ProdTrelv - Preparazione installazione server Tarsena2
Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione server Zeltobilancio
Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione server/client Nerio
)");
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
  EXPECT_EQ(machine().registry().dump(), registry);
  EXPECT_THAT(iniWrites(),
              ElementsAre(HasSubstr("windows\\Lumow.ini"), HasSubstr("windows\\Lumow.ini")));
}

/// What is recorded on both sides, and what is prepared on each.
struct Recorded : Row {
  const char* server;
  const char* client;
  const char* preparedServer;
  const char* preparedClient;
};

const std::vector<Recorded> kRecorded{
    {"NothingOnEitherSide", "", "", "server Tarsena2, server Zeltobilancio, server/client Nerio",
     "client Tarsena2, client Zeltobilancio, server/client Nerio"},
    {"AllOnTheServer", kAll, "", "", "client Tarsena2, client Zeltobilancio, server/client Nerio"},
    {"AllOnTheClient", "", kAll, "server Tarsena2, server Zeltobilancio, server/client Nerio", ""},
    {"ZeltobilancioAlone", "ZB", "ZB", "server Tarsena2, server/client Nerio",
     "server/client Nerio"},
    {"Tarsena2Alone", "Q2", "Q2", "server Zeltobilancio, server/client Nerio",
     "client Tarsena2, client Zeltobilancio, server/client Nerio"},
    {"NerioAlone", "NERIO", "NERIO", "server Tarsena2, server Zeltobilancio",
     "client Tarsena2, client Zeltobilancio"}};

class PreparationOf : public Preparation, public testing::WithParamInterface<Recorded> {};

TEST_P(PreparationOf, EachSideGoesByItsOwnRecord) {
  record(GetParam().server, GetParam().client);
  prepareServer();
  EXPECT_EQ(joined(prepared(), ", "), GetParam().preparedServer);
  program().log.lines.clear();
  prepareClient();
  EXPECT_EQ(joined(prepared(), ", "), GetParam().preparedClient);
}

INSTANTIATE_TEST_SUITE_P(Where, PreparationOf, testing::ValuesIn(kRecorded), NameOfRow());

TEST_F(Preparation, WhereAllIsRecordedReadsTheTwoRecordsAndNothingElse) {
  record(kAll, kAll);
  program();
  machine().callLog().clear();
  const std::string before = disk().tree() + machine().registry().dump();
  prepareServer();
  prepareClient();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_EQ(disk().tree() + machine().registry().dump(), before);
  EXPECT_EQ(machine().openings("S:\\").files(), 1U);
  EXPECT_EQ(machine().openings("S:\\").lists, 0U);
  EXPECT_EQ(machine().openings("C:\\").files(), 1U);
}

TEST_F(Preparation, EmptyVersionCountsAsNone) {
  record("Q2 NERIO", "");
  machine().setIniValue(Installation::kServerRecord, "ZB", "version", "");
  prepareServer();
  EXPECT_THAT(prepared(), ElementsAre("server Zeltobilancio"));
}

TEST_F(Preparation, FailedWriteEndsItsLineWithZeroAndTheNextStepsFollow) {
  disk().denyWriting("C:\\WINDOWS");
  prepareServer();
  EXPECT_EQ(lines()[1],
            "Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = "
            "0");
  EXPECT_EQ(lines()[3],
            "Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = "
            "0");
  EXPECT_EQ(lines().size(), 5U);
}

TEST_F(Preparation, WithoutTheWindowsFolderNothingIsWrittenIntoTheRoot) {
  record("ZB NERIO", "");
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
  EXPECT_EQ(program().logText(),
            R"(Gestione ProdTrelv - Preparazione installazione client Tarsena2
Gestione ProdTrelv - PreparaInstClientTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Aggiornamento ini della windir caso installazione Tarsena Client
Gestione ProdTrelv - Preparazione installazione client Zeltobilancio
Gestione ProdTrelv - PreparaInstClientBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientBilancio CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Aggiornamento ini della windir caso installazione Bilancio Client
Gestione ProdTrelv - Preparazione installazione server/client Nerio
)");
}

TEST_F(Preparation, ClientPointsTheSuiteAtTheServerAndRegistersTheLocalPath) {
  prepareClient();
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
  EXPECT_EQ(localPath(), "C:\\Lumo\\Client\\dovra\\bilancio");
  EXPECT_EQ(machine().registry().value(Hive::LocalMachine, kKey, "PathLocale")->type, 1U);
  prepareClient("");
  EXPECT_EQ(localPath(), "\\dovra\\bilancio");
}

TEST_F(Preparation, ClientFillsTheIniFilesOfBothProductsInTheirOrderTheTypeFirst) {
  prepareClient();
  const std::vector<std::string> files{
      "rating.ini",        "valutazione.ini",         "RatingValutazione.ini",
      "zeltobilancio.ini", "bilancioconsolidato.ini", "calcoloimposte.ini",
      "BilancioIas.ini",   "ConsolidatoIas.ini",      "Cooperative.ini",
      "EntiFinanziari.ini"};
  std::vector<std::string> written;
  for (const std::string& write : iniWrites()) {
    const auto named = std::find_if(files.begin(), files.end(), [&write](const std::string& file) {
      return write.find("\\" + file) != std::string::npos;
    });
    if (named != files.end() && (written.empty() || written.back() != *named)) {
      written.push_back(*named);
    }
  }
  EXPECT_EQ(written, files);
  for (const std::string& file : files) {
    EXPECT_EQ(machine().fileText("C:\\WINDOWS\\" + file),
              "[TipoInstallazione]\r\nTipo=Client\r\n[Parametri]\r\nPathCheck=c:\\windows\r\n")
        << file;
  }
}

TEST_F(Preparation, OnADovraHostTheWindowsIniFilesAreLeftOut) {
  program().state.startup.pluginProduct = PluginProduct::Dovra;
  prepareClient();
  EXPECT_THAT(lines(), Each(Not(HasSubstr("Aggiornamento ini della windir"))));
  EXPECT_THAT(iniWrites(),
              ElementsAre(HasSubstr("windows\\Lumow.ini"), HasSubstr("windows\\Lumow.ini")));
  EXPECT_EQ(localPath(), "C:\\Lumo\\Client\\dovra\\bilancio");
  for (const PluginProduct other : {PluginProduct{0}, PluginProduct{13}, PluginProduct::None}) {
    program().state.startup.pluginProduct = other;
    prepareClient();
    EXPECT_EQ(windowsIni("rating.ini", "TipoInstallazione", "Tipo"), "Client");
    machine().removeTree("C:\\WINDOWS\\rating.ini");
  }
}

TEST_F(Preparation, ClientOfTarsena2AsksForTheVersionOfZeltobilancio) {
  record("", "ZB");
  prepareClient();
  EXPECT_THAT(prepared(), ElementsAre("server/client Nerio"));
  EXPECT_THAT(iniWrites(), IsEmpty());
}

TEST_F(Preparation, RefusedRegistryIsToldWithFalseInEnglish) {
  machine().registry().denyWriting(Hive::LocalMachine, "SOFTWARE");
  prepareClient();
  for (const std::string step : {"PreparaInstClientTarsena2", "PreparaInstClientBilancio"}) {
    const std::string line = "Gestione ProdTrelv - " + step;
    EXPECT_THAT(lines(),
                IsSupersetOf({line + " CreateKey SOFTWARE\\LUMO\\Programmi  False",
                              line + " SetKeyValue SOFTWARE\\LUMO\\Programmi PathLocale   False"}));
  }
  EXPECT_EQ(windowsIni("EntiFinanziari.ini", "TipoInstallazione", "Tipo"), "Client");
}

TEST_F(Preparation, EachIniValueThatCannotBeWrittenIsOneLineAndTheOthersFollow) {
  record("", "NERIO");
  machine().putFile("C:\\WINDOWS\\valutazione.ini", "");
  disk().denyWriting("C:\\WINDOWS\\valutazione.ini");
  prepareClient();
  EXPECT_THAT(endsOf(lines(), "Gestione ProdTrelv - Errore in GestioneProdottiComplementari "),
              ElementsAre("(Impossibile scrivere TipoInstallazione/Tipo nel file: valutazione.ini)",
                          "(Impossibile scrivere Parametri/PathCheck nel file: valutazione.ini)"));
  EXPECT_EQ(lines().size(), 12U);
  EXPECT_EQ(windowsIni("RatingValutazione.ini", "Parametri", "PathCheck"), "c:\\windows");
}

// Bare names are the user's own on a Terminal Server; Lumow.ini and the path are the system's.
TEST_F(Preparation, WindowsIniFilesGoWhereThePlatformPutsBareNames) {
  machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
  program().state.startup.terminalServer = true;
  prepareClient();
  EXPECT_EQ(machine().fileText("C:\\Users\\mario\\windows\\rating.ini"),
            "[TipoInstallazione]\r\nTipo=Client\r\n[Parametri]\r\nPathCheck=c:\\windows\r\n");
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Path"), "S:\\Lumo");
}

TEST_F(Preparation, OtherValuesOfTheIniFilesStay) {
  machine().setIniValue(kLumow, "Archivi", "Altro", "x");
  machine().setIniValue("C:\\WINDOWS\\rating.ini", "Parametri", "Lingua", "it");
  prepareClient();
  EXPECT_EQ(machine().iniValue(kLumow, "Archivi", "Altro"), "x");
  EXPECT_EQ(windowsIni("rating.ini", "Parametri", "Lingua"), "it");
}

// --- Nerio

constexpr const char* kNerioBegun =
    "Gestione ProdTrelv - Preparazione installazione server/client Nerio";

/// Nerio is the only product without a version, and its program is not on the server.
class NerioPreparation : public Preparation {
 public:
  NerioPreparation() {
    share().removeTree("S:\\Lumo\\mv");
    record("ZB Q2", "ZB Q2");
    machine().mount("D:");
    machine().putFile("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx", "MZ");
    machine().programs().define("C:\\WINDOWS\\system32\\regsrv32.exe");
    registerNerioAt("D:\\Vecchio\\setup\\KorvatGestionePratiche.ocx");
  }
};

TEST_F(NerioPreparation, WithoutRegisteredComponentsOnlyLooks) {
  registerNerioAt("");
  prepareServer();
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun,
                                   "Gestione ProdTrelv - Preparazione installazione Nerio. "
                                   "Verifica se esistono componenti registrate preesistenti"));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(NerioPreparation, DeregistersTheControlsOfTheRegisteredFolder) {
  prepareServer();
  EXPECT_EQ(program().logText(),
            R"(Gestione ProdTrelv - Preparazione installazione server/client Nerio
Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono componenti registrate preesistenti
Gestione ProdTrelv - Preparazione installazione Nerio.Deregistrazione componenti esistenti su altro path d:\vecchio
Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "d:\vecchio\setup"
)");
  EXPECT_THAT(started(),
              ElementsAre(R"(regsrv32 /u /s "d:\vecchio\setup\KorvatGestionePratiche.ocx")"));
}

TEST_F(NerioPreparation, TheClientDoesTheSameByItsOwnRecord) {
  record("ZB Q2 NERIO", "ZB");
  prepareServer();
  EXPECT_THAT(started(), IsEmpty());
  prepareClient();
  EXPECT_EQ(started().size(), 1U);
}

TEST_F(NerioPreparation, ProgramOnTheServerKeepsTheComponentsRegistered) {
  installation_.putPrograms({"mv\\nerio\\nerio"});
  prepareServer();
  EXPECT_THAT(lines(), ElementsAre(kNerioBegun));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(NerioPreparation, RegisteredFolderThatIsGoneIsTold) {
  registerNerioAt("D:\\Sparita\\setup\\KorvatGestionePratiche.ocx");
  prepareServer();
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in deregistrazione ocx (76 Impossibile trovare il "
            "percorso: d:\\sparita\\setup)");
}

}  // namespace
}  // namespace trelv::tests
