#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "inventory/PresenceChecks.h"
#include "sim/FailingMachine.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using machine::Hive;
using modProdTrelvInfo::CheckProduct;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPrograms = "Software\\Lumo\\Programmi";
constexpr const char* kModels =
    "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe";
constexpr const char* kLocalRead =
    "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave 'PathLocale' eseguita ";
constexpr const char* kModelsRead =
    "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\App "
    "Paths\\ZeltoMod.exe della chiave 'Path' eseguita ";

class PresenceChecks : public testing::Test {
 protected:
  PresenceChecks() { beginReport(program_); }

  sim::SimMachine& machine() { return program_.sim; }
  void check(std::int16_t code) { CheckProduct(program_, Product{code}); }
  const ProductInformation& record() const { return program_.state.inventory.product; }
  std::vector<std::string> report() { return reportLines(machine()); }

  void setHostArchives(const std::string& path) {
    machine().setIniValue("lumow.ini", "Archivi", "Path", path);
  }
  void setLocalPath(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine, kPrograms, "PathLocale", path);
  }
  void setRelease(const std::string& ini, const std::string& release) {
    machine().setIniValue(ini, "Ambiente", "VrInst", release);
  }
  void registerModels(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine, kModels, "Path", path);
  }
  void setModelsFolder(const std::string& path) {
    machine().setIniValue("zeltomodelli.ini", "Parametri", "PathModelli", path);
  }
  void integrate() {
    machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                  "S:\\Lumo");
  }
  void registerNerio(const std::string& path) {
    machine().registry().setText(Hive::LocalMachine,
                                 "Software\\Classes\\ClsID\\{5F2A}\\InprocServer32", "",
                                 path + "\\setup\\korvatgestionepratiche.ocx");
  }

  void expectRecord(std::int16_t code, const std::string& name, Operation kind, Side side) {
    EXPECT_EQ(record().productCode, Product{code});
    EXPECT_EQ(record().productName, name);
    EXPECT_EQ(record().kind, kind);
    EXPECT_EQ(record().side, side);
  }
  void expectVersions(const std::string& server, const std::string& client) {
    EXPECT_EQ(record().serverVersion, server);
    EXPECT_EQ(record().clientVersion, client);
  }
  void expectFolders(const std::string& server, const std::string& client) {
    EXPECT_EQ(record().serverFolder, server);
    EXPECT_EQ(record().clientFolder, client);
  }

  FakeProgram program_;
};

std::string banner(const std::string& word) {
  return kHyphens + " VERIFICA PRESENZA " + word + " " + kHyphens;
}

// --- The dispatcher

TEST_F(PresenceChecks, HyphensAre46) { EXPECT_EQ(kHyphens.size(), 46U); }

TEST_F(PresenceChecks, ProductsThatNobodyLooksForAreSetUpNowhere) {
  for (const std::int16_t code : std::initializer_list<std::int16_t>{60, 70}) {
    program_.state.inventory.product = {Product::Nerio,    "NERIO",      "1",     "2",
                                        Operation::Update, Side::Server, "C:\\a", "C:\\b"};
    check(code);
    expectRecord(code, "", Operation::Setup, Side::None);
    expectVersions("", "");
    expectFolders("", "");
  }
  EXPECT_THAT(report(), IsEmpty());
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(PresenceChecks, AnyOtherCodeLeavesTheRecord) {
  for (const std::int16_t code : std::initializer_list<std::int16_t>{0, 5, 11, 80, 100, -10}) {
    program_.state.inventory.product = {Product::Zeltobilancio, "ZB",         "1",     "2",
                                        Operation::Update,      Side::Client, "C:\\a", "C:\\b"};
    machine().callLog().clear();
    check(code);
    expectRecord(30, "ZB", Operation::Update, Side::Client);
    expectVersions("1", "2");
    expectFolders("C:\\a", "C:\\b");
    EXPECT_EQ(machine().callCount(), 0U);
  }
}

TEST_F(PresenceChecks, WithoutReportTheyFindTheSame) {
  machine().removeTree(kReport);
  setHostArchives("S:\\Lumo");
  check(30);
  expectRecord(30, "ZB", Operation::Update, Side::Server);
  EXPECT_FALSE(machine().fileExists(kReport));
}

TEST_F(PresenceChecks, OnATerminalServerTheUsersIniFilesAreRead) {
  machine().setEdition(sim::WindowsEdition::Win2003TerminalServer);
  machine().putFile("C:\\WINDOWS\\nerio.ini", "[NERIO]\r\nVersione=1\r\n");
  machine().putFile("C:\\Users\\mario\\windows\\nerio.ini", "[NERIO]\r\nVersione=2\r\n");
  machine().putFile("C:\\WINDOWS\\luda.ini", "[LUDA]\r\nVersione=1\r\n");
  check(10);
  expectVersions("", "2");
  check(20);
  expectVersions("", "");
}

// --- Nerio

TEST_F(PresenceChecks, NerioThatIsAbsent) {
  check(10);
  expectRecord(10, "NERIO", Operation::Setup, Side::Server);
  expectVersions("", "");
  expectFolders("", "");
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - File Ini Nerio locale non presente",
                          "Gestione ProdTrelv - Determino path Server di Nerio da componenti "
                          "registrate"));
  EXPECT_THAT(report(),
              ElementsAre("---------------------------------------------- VERIFICA "
                          "PRESENZA NERIO ----------------------------------------------",
                          "File Nerio.ini locale ASSENTE", "Verifica componenti registrate",
                          "Nessuna componente registrata"));
}

TEST_F(PresenceChecks, NerioOnBothSides) {
  machine().setIniValue("nerio.ini", "PathNames", "HomeDir", "C:\\Nerio");
  machine().setIniValue("nerio.ini", "Nerio", "versione", "03.20.30.00");
  machine().mount("S:");
  registerNerio("S:\\Lumo\\mv\\Nerio");
  machine().setIniValue("S:\\Lumo\\mv\\nerio\\nerio.ini", "NERIO", "Versione", "03.21.00.00");
  check(10);
  expectRecord(10, "NERIO", Operation::Update, Side::Server);
  expectVersions("03.21.00.00", "03.20.30.00");
  expectFolders("s:\\lumo\\mv\\nerio", "C:\\Nerio");
  EXPECT_THAT(program_.lines(), ElementsAre("Gestione ProdTrelv - Determino path Server di Nerio "
                                            "da componenti registrate"));
  EXPECT_THAT(report(), ElementsAre(banner("NERIO"), "File Nerio.ini locale PRESENTE",
                                    "Verifica componenti registrate",
                                    "Componenti registrate in s:\\lumo\\mv\\nerio",
                                    "File nerio.ini presente in s:\\lumo\\mv\\nerio"));
}

TEST_F(PresenceChecks, NerioWhoseComponentsWereLeftBehind) {
  registerNerio("C:\\Nerio");
  check(10);
  expectRecord(10, "NERIO", Operation::Setup, Side::Server);
  expectFolders("c:\\nerio", "");
  EXPECT_THAT(report(),
              ElementsAre(banner("NERIO"), "File Nerio.ini locale ASSENTE",
                          "Verifica componenti registrate", "Componenti registrate in c:\\nerio",
                          "File nerio.ini assente in c:\\nerio"));
}

TEST_F(PresenceChecks, NerioIsFoundByEitherVersion) {
  machine().setIniValue("nerio.ini", "NERIO", "Versione", "1");
  check(10);
  expectRecord(10, "NERIO", Operation::Update, Side::Server);
  machine().removeTree("C:\\WINDOWS\\nerio.ini");
  registerNerio("C:\\n");
  machine().setIniValue("C:\\n\\nerio.ini", "NERIO", "Versione", "2");
  program_.state.inventory.componentFolder.reset();
  program_.configurationFiles.forget();
  check(10);
  expectRecord(10, "NERIO", Operation::Update, Side::Server);
  expectVersions("2", "");
}

TEST_F(PresenceChecks, NerioReadsInOrder) {
  registerNerio("C:\\n");
  machine().putFile("C:\\n\\nerio.ini", "[NERIO]\r\nVersione=1\r\n");
  machine().callLog().clear();
  check(10);
  std::vector<std::string> asked;
  for (const std::string& call : machine().calls()) {
    if (call.find("ProdInfo") == std::string::npos && call.find("registry.") != 0) {
      asked.push_back(call);
    }
  }
  EXPECT_THAT(asked, ElementsAre("profiles.readValue C:\\WINDOWS\\NERIO.INI [Pathnames] Homedir",
                                 "profiles.readValue C:\\WINDOWS\\NERIO.INI [NERIO] Versione",
                                 "files.look c:\\n\\NERIO.INI", "files.read c:\\n\\NERIO.INI"));
}

// --- Luda

TEST_F(PresenceChecks, LudaThatIsAbsent) {
  check(20);
  expectRecord(20, "LUDA", Operation::Setup, Side::Server);
  expectVersions("", "");
  expectFolders("", "");
  EXPECT_THAT(report(), ElementsAre("---------------------------------------------- VERIFICA "
                                    "PRESENZA LUDA ----------------------------------------------",
                                    "File ini locale ASSENTE"));
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(PresenceChecks, LudaOfAProgramWithVersionDoesNotReadTheInisVersion) {
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  machine().setIniValue("luda.ini", "LUDA", "Versione", "01.00");
  machine().putFile("C:\\Luda\\LUDA2003.EXE", "MZ");
  machine().setFileVersion("C:\\Luda\\luda2003.exe", {7, 10, 0, 12});
  machine().callLog().clear();
  check(20);
  expectRecord(20, "LUDA", Operation::Update, Side::Server);
  expectVersions("7.10.0.12", "7.10.0.12");
  expectFolders("C:\\Luda", "C:\\Luda");
  EXPECT_EQ(machine().openings("").profileReads + machine().callLog().countOf("profiles.read"), 1U);
  EXPECT_THAT(report(), ElementsAre(banner("LUDA"), "File ini locale PRESENTE"));
}

TEST_F(PresenceChecks, LudaOfAProgramWithoutVersionIsReadFromItsIni) {
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  machine().setIniValue("luda.ini", "LUDA", "Versione", "07.10.00.00");
  machine().putFile("C:\\Luda\\luda2003.exe", "MZ");
  check(20);
  expectRecord(20, "LUDA", Operation::Update, Side::Server);
  expectVersions("07.10.00.00", "07.10.00.00");
}

TEST_F(PresenceChecks, LudaOfWhichOnlyTheHomeFolderIsKnownIsNotThere) {
  machine().setIniValue("luda.ini", "PathNames", "HomeDir", "C:\\Luda");
  check(20);
  expectRecord(20, "LUDA", Operation::Setup, Side::Server);
  expectFolders("C:\\Luda", "C:\\Luda");
  EXPECT_THAT(report(), ElementsAre(banner("LUDA"), "File ini locale ASSENTE"));
}

TEST_F(PresenceChecks, LudaWithoutAHomeFolderIsLookedForInTheRootOfTheCurrentDrive) {
  machine().putFile("C:\\luda2003.exe", "MZ");
  machine().setFileVersion("C:\\luda2003.exe", {7, 10, 0, 12});
  machine().volumes().setCurrentFolder("C:\\Lumo");
  check(20);
  expectVersions("7.10.0.12", "7.10.0.12");
  expectFolders("", "");
}

// --- Bilancio and Tarsena2

TEST_F(PresenceChecks, BilancioThatIsNowhereIsToBeSetUpOnBothSides) {
  check(30);
  expectRecord(30, "ZB", Operation::Setup, Side::ClientServer);
  expectVersions("", "");
  expectFolders("", "");
  EXPECT_THAT(report(),
              ElementsAre("---------------------------------------------- VERIFICA PRESENZA "
                          "BILANCIO ----------------------------------------------",
                          "Lettura informazioni installazioni server",
                          "File configurazione lumow.ini ASSENTE",
                          "Lettura informazioni installazioni client",
                          "Lettura in HKEY_LOCAL_MACHINE\\Software\\lumo\\programmi della chiave "
                          "'PathLocale' eseguita senza successo."));
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(PresenceChecks, BilancioOfAHostWithoutItsIniCountsAsInstalledOnTheServer) {
  setHostArchives("S:\\Lumo");
  check(30);
  expectRecord(30, "ZB", Operation::Update, Side::Server);
  expectVersions("", "");
  expectFolders("", "");
  EXPECT_THAT(report(),
              ElementsAre(banner("BILANCIO"), "Lettura informazioni installazioni server",
                          "File configurazione lumow.ini PRESENTE",
                          "Lettura ini Server :S:\\Lumo\\mv\\bilancio\\mvanbil.ini",
                          "Ini server ASSENTE", "Lettura informazioni installazioni client",
                          std::string(kLocalRead) + "senza successo."));
}

TEST_F(PresenceChecks, BilancioOnBothSides) {
  machine().mount("S:");
  setHostArchives("S:\\Lumo");
  setRelease("S:\\Lumo\\mv\\bilancio\\mvanbil.ini", "09.93");
  setLocalPath("C:\\Client");
  setRelease("C:\\Client\\mv\\bilancio\\mvanbil.ini", "09.92");
  check(30);
  expectRecord(30, "ZB", Operation::Update, Side::ClientServer);
  expectVersions("09.93", "09.92");
  expectFolders("S:\\Lumo\\mv\\bilancio", "C:\\Client\\mv\\bilancio");
  EXPECT_THAT(report(),
              ElementsAre(banner("BILANCIO"), "Lettura informazioni installazioni server",
                          "File configurazione lumow.ini PRESENTE",
                          "Lettura ini Server :S:\\Lumo\\mv\\bilancio\\mvanbil.ini",
                          "Ini server PRESENTE", "Lettura informazioni installazioni client",
                          std::string(kLocalRead) + "con successo. Risultato: C:\\Client",
                          "Lettura ini Client: C:\\Client\\mv\\bilancio\\mvanbil.ini",
                          "Ini Client PRESENTE"));
}

TEST_F(PresenceChecks, Tarsena2OnBothSidesDiffersInABlankAndACapital) {
  machine().mount("S:");
  setHostArchives("S:\\Lumo");
  setRelease("S:\\Lumo\\mv\\q2\\mvq2.ini", "02.92");
  setLocalPath("C:\\Client");
  setRelease("C:\\Client\\mv\\q2\\mvq2.ini", "02.91");
  check(40);
  expectRecord(40, "Q2", Operation::Update, Side::ClientServer);
  expectVersions("02.92", "02.91");
  expectFolders("S:\\Lumo\\mv\\q2", "C:\\Client\\mv\\q2");
  EXPECT_THAT(
      report(),
      ElementsAre("---------------------------------------------- VERIFICA PRESENZA Q2 "
                  "----------------------------------------------",
                  "Lettura informazioni installazioni server",
                  "File configurazione lumow.ini PRESENTE",
                  "Lettura ini Server: S:\\Lumo\\mv\\q2\\mvq2.ini", "Ini Server PRESENTE",
                  "Lettura informazioni installazioni client",
                  std::string(kLocalRead) + "con successo. Risultato: C:\\Client",
                  "Lettura ini Client: C:\\Client\\mv\\q2\\mvq2.ini", "Ini Client PRESENTE"));
}

TEST_F(PresenceChecks, Tarsena2OfAHostWithoutItsIni) {
  setHostArchives("S:\\Lumo");
  check(40);
  EXPECT_EQ(report()[4], "Ini Server ASSENTE");
}

TEST_F(PresenceChecks, Tarsena2OnTheWorkstationOnly) {
  setLocalPath("C:\\Client");
  setRelease("C:\\Client\\mv\\q2\\mvq2.ini", "02.91");
  check(40);
  expectRecord(40, "Q2", Operation::Update, Side::Client);
  expectVersions("", "02.91");
  expectFolders("", "C:\\Client\\mv\\q2");
}

TEST_F(PresenceChecks, WorkstationWithoutTheProductsIniIsNotCounted) {
  setLocalPath("C:\\Client");
  check(40);
  expectRecord(40, "Q2", Operation::Setup, Side::ClientServer);
  expectFolders("", "");
  EXPECT_EQ(report().back(), "Ini Client ASSENTE");
}

TEST_F(PresenceChecks, RootsLoseTheirBlanksInPathsOnly) {
  machine().mount("S:");
  setHostArchives("\"  S:\\Lumo  \"");
  setRelease("S:\\Lumo\\mv\\bilancio\\mvanbil.ini", "1");
  setLocalPath("  C:\\Client ");
  setRelease("C:\\Client\\mv\\bilancio\\mvanbil.ini", "2");
  check(30);
  expectVersions("1", "2");
  expectFolders("S:\\Lumo\\mv\\bilancio", "C:\\Client\\mv\\bilancio");
  EXPECT_EQ(report()[6], std::string(kLocalRead) + "con successo. Risultato:   C:\\Client ");
}

TEST_F(PresenceChecks, EmptyLocalPathCountsAsNotRead) {
  setLocalPath("");
  check(30);
  EXPECT_EQ(report().back(), std::string(kLocalRead) + "senza successo.");
}

TEST_F(PresenceChecks, LocalPathOfAnotherTypeIsNoFailure) {
  machine().registry().setStored(Hive::LocalMachine, kPrograms, "PathLocale",
                                 machine::value_type::kNumber, std::string("\x07\0\0\0", 4));
  check(30);
  EXPECT_EQ(report()[4], std::string(kLocalRead) + "con successo. Risultato: 7");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Zeltomodelli

TEST_F(PresenceChecks, ZeltomodelliThatIsNotRegistered) {
  check(50);
  expectRecord(50, "ZM", Operation::Setup, Side::Server);
  expectVersions("", "");
  expectFolders("", "");
  EXPECT_THAT(report(),
              ElementsAre("---------------------------------------------- VERIFICA PRESENZA "
                          "ZELTOMODELLI ----------------------------------------------",
                          "Verifica Chiave registro per individuazione componente installata",
                          "Lettura in HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                          "CurrentVersion\\App Paths\\ZeltoMod.exe della chiave 'Path' eseguita "
                          "senza successo"));
  EXPECT_EQ(program_.lines()[0], "Gestione ProdTrelv - Verifica integrazione con Dovra SP");
}

TEST_F(PresenceChecks, ZeltomodelliThatIsNotRegisteredDoesNotReadItsIni) {
  setModelsFolder("C:\\Modelli");
  check(50);
  expectFolders("", "");
}

TEST_F(PresenceChecks, ZeltomodelliThatIsRegistered) {
  registerModels("C:\\ZM");
  setModelsFolder("C:\\Modelli");
  machine().putFile("C:\\Modelli\\vers.ini", "06.50.30.00\r\naltro\r\n");
  check(50);
  expectRecord(50, "ZM", Operation::Update, Side::Server);
  expectVersions("06.50.30.00", "06.50.30.00");
  expectFolders("C:\\Modelli", "C:\\Modelli");
  EXPECT_THAT(report(),
              ElementsAre(banner("ZELTOMODELLI"),
                          "Verifica Chiave registro per individuazione componente "
                          "installata",
                          std::string(kModelsRead) + "con successo. Risultato C:\\ZM",
                          "Lettura Informazioni da File Ini: Zeltomodelli.INI", "File Ini PRESENTE",
                          "Lettura informazioni da file C:\\Modelli\\vers.ini"));
}

TEST_F(PresenceChecks, ZeltomodelliOfAnIntegratedMachineHasNeitherBannerNorRegistryLines) {
  integrate();
  registerModels("C:\\ZM");
  setModelsFolder("C:\\Modelli");
  machine().putFile("C:\\Modelli\\vers.ini", "06.50\n");
  machine().callLog().clear();
  check(50);
  expectRecord(50, "ZM", Operation::Update, Side::Server);
  expectVersions("06.50", "06.50");
  EXPECT_THAT(report(), ElementsAre("File Ini PRESENTE",
                                    "Lettura informazioni da file C:\\Modelli\\vers.ini"));
  EXPECT_EQ(machine().callLog().countOf("registry."), 0U);
}

TEST_F(PresenceChecks, ZeltomodelliWithoutModelsFolder) {
  registerModels("");
  check(50);
  expectRecord(50, "ZM", Operation::Setup, Side::Server);
  EXPECT_THAT(report(), ElementsAre(banner("ZELTOMODELLI"),
                                    "Verifica Chiave registro per individuazione componente "
                                    "installata",
                                    std::string(kModelsRead) + "con successo. Risultato ",
                                    "Lettura Informazioni da File Ini: Zeltomodelli.INI",
                                    "File Ini Zeltomodelli.INI ASSENTE"));
}

TEST_F(PresenceChecks, ZeltomodelliWithoutVersionFileIsAFolderOnly) {
  registerModels("x");
  setModelsFolder("\" C:\\Modelli \"");
  check(50);
  expectRecord(50, "ZM", Operation::Setup, Side::Server);
  expectVersions("", "");
  expectFolders(" C:\\Modelli ", " C:\\Modelli ");
  EXPECT_EQ(report().back(), "Lettura informazioni da file C:\\Modelli\\vers.ini");
}

TEST_F(PresenceChecks, ZeltomodelliWithAnEmptyVersionFileIsThere) {
  registerModels("x");
  setModelsFolder("C:\\Modelli");
  machine().putFile("C:\\Modelli\\vers.ini", "");
  check(50);
  expectRecord(50, "ZM", Operation::Update, Side::Server);
  expectVersions("", "");
}

TEST_F(PresenceChecks, ZeltomodelliWhoseVersionFileCannotBeReadIsToldAndKeepsItsFolder) {
  registerModels("x");
  setModelsFolder("C:\\Modelli");
  machine().putFile("C:\\Modelli\\vers.ini", "06.50");
  machine().diskOf("C:\\").holdOpen("C:\\Modelli\\vers.ini", sim::Sharing::None);
  check(50);
  expectRecord(50, "ZM", Operation::Setup, Side::Server);
  expectFolders("C:\\Modelli", "C:\\Modelli");
  EXPECT_THAT(program_.lines().back(),
              testing::StartsWith("Gestione ProdTrelv - Errore in lettura file: "));
}

TEST_F(PresenceChecks, VersionsAreReadInTheAnsiCodePage) {
  registerModels("x");
  setModelsFolder("C:\\Modelli");
  machine().putFile("C:\\Modelli\\vers.ini", "6.5 \xE0");
  check(50);
  expectVersions("6.5 à", "6.5 à");
}

}  // namespace
}  // namespace trelv::tests
