#include <algorithm>
#include <memory>

#include "packs/ProductInstall.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

constexpr const char* kPack = "C:\\Lumo\\Programmi\\luda.gz";
constexpr const char* kSetUp = "C:\\Setup\\luda.exe";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kAmbver = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kInstalled =
    "Installazione completata correttamente del prodotto Luda in: S:\\LUMO";
const std::string kTree = "prg\\com\\setup\\aggdovra\\";
const std::string kWork = "C:\\Users\\mario\\Temp\\";

/// The pack luda.gz beside the manager; it holds a zip pack with the catalogue and the
/// configuration file of Luda, whose set-up is C:\Setup\luda.exe.
class ProductInstall : public StationTest {
 protected:
  ProductInstall() {
    const std::string zip =
        packBytes({{kTree + "agdvcomp.ini",
                    "[Prod01]\r\nid=LUDA\r\nname=Luda\r\nconf=" + kTree + "luda.ini\r\n"},
                   {kTree + "luda.ini",
                    "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\luda.exe -S\r\n"}});
    machine().putFile(kPack, packBytes({{kTree + "luda.zip", zip}}));
    machine().programs().define(kSetUp);
    share().put(kAmbver, "AMB0001 01/02/08 10:11\r\n");
    share().makeFolders("S:\\Lumo\\prg\\com\\bin\\cpy\\client");
  }

  std::string installIntegrated(std::string targetFolder = "S:\\Lumo") {
    modProdTrelvManager::InstallSingleProdottoComplementareIntegrato(program(), "Luda",
                                                                     targetFolder, "luda.gz");
    return targetFolder;
  }
  void installStandAlone(const std::string& id = "LUDA") {
    modProdTrelvManager::InstallSingleProdottoComplementareStandAlone(program(), id, "luda.gz");
  }
  /// Started set-ups: what runs besides the two programs that open packs.
  std::vector<std::string> setups() {
    std::vector<std::string> setups = started();
    std::erase_if(setups, [](const std::string& command) {
      return command.rfind("\"C:\\Lumo\\Programmi\\", 0) == 0;
    });
    return setups;
  }
  bool told(const std::string& line) {
    return std::find(lines().begin(), lines().end(), line) != lines().end();
  }
  /// Runs while the set-up does.
  void duringSetUp(const std::function<void()>& action) {
    machine().programs().define(kSetUp, [action](sim::SimProcess&) {
      action();
      return 0U;
    });
  }
  std::string read(const std::string& section, const std::string& key, const std::string& file) {
    return program().configurationFiles.read({file, section, key}, 511);
  }

  PackPrograms packPrograms_{machine()};
};

// --- Into the server path

TEST_F(ProductInstall, IntegratedOpensThePackRefreshesTheClientCopyAndTellsTheUserInThisOrder) {
  const std::string ini = "S:\\Lumo\\" + kTree + "luda.ini";
  share().put(ini, "[Setup01]\r\nversion=00.50\r\n");
  EXPECT_EQ(read("Setup01", "version", ini), "00.50");
  machine().onCall("files.copyFile " + std::string("C:\\Lumo\\Programmi\\TrelvManager.exe"),
                   [&] { EXPECT_THAT(share().text(ini), HasSubstr("version=01.00")); });
  machine().desktop().onBox(
      [&](const sim::SimBox&) { EXPECT_TRUE(share().fileExists(kClientCopy)); });
  EXPECT_EQ(installIntegrated(), "S:\\Lumo");
  EXPECT_EQ(
      started()[0],
      R"("C:\Lumo\Programmi\qalbunex.exe" "C:\Lumo\Programmi\luda.gz" "C:\Users\mario\Temp")");
  EXPECT_THAT(setups(), IsEmpty());
  EXPECT_EQ(lines().front(), "Apertura pacco in: S:\\Lumo");
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\" + kTree + "agdvcomp.ini"));
  EXPECT_EQ(read("Setup01", "version", ini), "01.00") << "what the pack brought";
  EXPECT_FALSE(machine().folderExists(kWork + "prg"));
  EXPECT_THAT(share().text(kAmbver), HasSubstr("AMB000116/11/26 09:30"));
  EXPECT_THAT(boxes(), ElementsAre(isBox(BoxIcon::Information, kInstalled)));
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(ProductInstall, IntegratedTakesOneTrailingBackslashFromTheCallersFolder) {
  EXPECT_EQ(installIntegrated("S:\\Lumo\\"), "S:\\Lumo");
  EXPECT_EQ(lines().front(), "Apertura pacco in: S:\\Lumo");
  EXPECT_EQ(boxes()[0].text, kInstalled);
  EXPECT_EQ(installIntegrated("S:\\Lumo\\\\"), "S:\\Lumo\\");
}

TEST_F(ProductInstall, IntegratedGoesOnWhenThePackIsMissing) {
  machine().removeTree(kPack);
  installIntegrated();
  EXPECT_TRUE(told("Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita"));
  EXPECT_EQ(boxes().back().text, kInstalled);
}

TEST_F(ProductInstall, IntegratedRefreshesTheClientCopyAlsoWithoutATemporaryFolder) {
  machine().support().setTemporaryPath("");
  installIntegrated();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(told("Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita"));
  EXPECT_EQ(boxes().back().text, kInstalled);
}

TEST_F(ProductInstall, IntegratedSaysSoAlsoWhenTheClientCopyCouldNotBeRefreshed) {
  share().removeTree(kAmbver);
  installIntegrated();
  EXPECT_EQ(reports().size(), 1U);
  EXPECT_EQ(boxes().back().text, kInstalled);
}

TEST_F(ProductInstall, IntegratedWithoutAFolderTouchesNothingAndIsReported) {
  for (const char* const folder : {"", "\\"}) {
    installIntegrated(folder);
    EXPECT_EQ(lines().back(),
              "Gestione ProdTrelv - Errore in installazione singolo prodotto integrato: Cartella "
              "del server non disponibile");
  }
  const auto report = isReport("InstallSingleProdottoComplementareIntegrato",
                               "Errore in installazione singolo prodotto integrato: ", 76);
  EXPECT_THAT(reports(), ElementsAre(report, report));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_FALSE(machine().folderExists("C:\\prg"));
}

// --- On its own

TEST_F(ProductInstall, StandaloneRunsTheSetupFromTheTemporaryFolderAndTellsItsSteps) {
  duringSetUp([&] { EXPECT_TRUE(machine().fileExists(kWork + kTree + "luda.ini")); });
  installStandAlone();
  EXPECT_THAT(setups(), ElementsAre(kSetUp));
  EXPECT_EQ(lines().front(), "Apertura pacchi in: C:\\Users\\mario\\Temp");
  EXPECT_THAT(
      program().logText(),
      ContainsRegex("Gestione ProdTrelv - Rimozione pacco zip: [^\n]*luda.zip\n(.*\n)*"
                    "Gestione ProdTrelv - Esecuzione diretta Setup del prodotto LUDA. Sono caso "
                    "Standard\n"
                    "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in "
                    "modalità standalone\n"));
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(share().text(kAmbver), "AMB0001 01/02/08 10:11\r\n");
}

TEST_F(ProductInstall, StandaloneReplacesTheSelectedProducts) {
  program().state.selectedProducts = {{"ZB"}, {"NERIO"}};
  installStandAlone("luda");
  ASSERT_EQ(program().state.selectedProducts.size(), 1U);
  EXPECT_EQ(program().state.selectedProducts[0].identifier, "luda");
  EXPECT_THAT(setups(), ElementsAre(kSetUp));
}

TEST_F(ProductInstall, StandaloneDeletesAndForgetsWhatWasUnpackedReadOnlyFilesIncluded) {
  packPrograms_.onFile = [&](const std::string& path) { machine().diskOf(path).setReadOnly(path); };
  machine().putFile(kWork + "altro.txt", "resta");
  installStandAlone();
  EXPECT_FALSE(machine().folderExists(kWork + "prg"));
  EXPECT_EQ(read("Prod01", "id", kWork + kTree + "agdvcomp.ini"), "");
  EXPECT_TRUE(machine().fileExists(kWork + "altro.txt"));
}

TEST_F(ProductInstall, StandaloneUsesATemporaryFolderWithoutTrailingBackslashAsItIs) {
  machine().makeFolders("C:\\T");
  machine().support().setTemporaryPath("C:\\T");
  installStandAlone();
  EXPECT_EQ(lines().front(), "Apertura pacchi in: C:\\T");
  EXPECT_THAT(setups(), ElementsAre(kSetUp));
  EXPECT_FALSE(machine().folderExists("C:\\T\\prg"));
}

TEST_F(ProductInstall, StandaloneGoesOnWithTheSetupsWhenThePackIsMissing) {
  machine().removeTree(kPack);
  installStandAlone();
  EXPECT_TRUE(
      told("Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità "
           "standalone"));
  EXPECT_THAT(setups(), IsEmpty());
}

TEST_F(ProductInstall, StandaloneReadsTheCatalogueOfThePackAndNotAnOlderOne) {
  machine().putFile(kWork + kTree + "agdvcomp.ini", "[Prod01]\r\nid=ZB\r\nconf=zb.ini\r\n");
  EXPECT_EQ(read("Prod01", "id", kWork + kTree + "agdvcomp.ini"), "ZB");
  installStandAlone();
  EXPECT_THAT(setups(), ElementsAre(kSetUp));
}

TEST_F(ProductInstall, StandaloneWithoutATemporaryFolderTouchesNothing) {
  machine().support().setTemporaryPath("");
  machine().putFile("C:\\" + kTree + "agdvcomp.ini", "[Prod01]\r\nid=LUDA\r\nconf=luda.ini\r\n");
  machine().putFile("C:\\luda.ini", "[Setup01]\r\nversion=01\r\nServer01=C:\\Setup\\luda.exe\r\n");
  installStandAlone();
  EXPECT_TRUE(machine().fileExists("C:\\" + kTree + "agdvcomp.ini"));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(reports(), ElementsAre(isReport("InstallSingleProdottoComplementareStandAlone",
                                              "Errore in installazione prodotto", 76)));
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in installazione prodottoCartella temporanea non "
            "disponibile");
}

TEST_F(ProductInstall, StandaloneNeverDeletesAnInstallationWhoseFolderIsTheTemporaryOne) {
  machine().environment().put("TEMP", "S:\\Lumo");
  machine().environment().put("TMP", "S:\\Lumo");
  installStandAlone();
  EXPECT_TRUE(share().exists(kAmbver));
  ASSERT_EQ(reports().size(), 1U);
  EXPECT_EQ(reports()[0].failure.description(),
            "la cartella temporanea è quella di un'installazione: S:\\Lumo");
}

/// A host into which nothing was installed yet has no records.
TEST_F(ProductInstall, EachOfWhatOnlyAHostHasKeepsItFromBeingDeleted) {
  machine().environment().put("TEMP", "S:\\Lumo");
  machine().environment().put("TMP", "S:\\Lumo");
  for (const char* const only :
       {"etc\\agdvver.ini", "etc\\ambver", "etc\\dvrel", "com\\bin\\cpy\\suo.txt"}) {
    const std::string path = std::string("S:\\Lumo\\prg\\") + only;
    share().removeTree("S:\\Lumo\\prg\\etc");
    share().removeTree("S:\\Lumo\\prg\\com\\bin");
    share().put(path, "suo");
    installStandAlone();
    EXPECT_TRUE(share().exists(path));
    EXPECT_EQ(reports().back().failure.description(),
              "la cartella temporanea è quella di un'installazione: S:\\Lumo")
        << only;
  }
}

TEST_F(ProductInstall, IntegratedOpensNothingInAnotherInstallationWhoseFolderIsTheTemporaryOne) {
  machine().environment().put("TEMP", "S:\\Lumo");
  machine().environment().put("TMP", "S:\\Lumo");
  const std::string waiting = "S:\\Lumo\\" + kTree + "a.zip";
  for (const char* const bytes : {"no pack", "pack 0\n"}) {
    share().put(waiting, bytes);
    installIntegrated("C:\\Altro");
    EXPECT_EQ(share().text(waiting), bytes);
    EXPECT_TRUE(share().exists(kAmbver));
    EXPECT_TRUE(
        told("Gestione ProdTrelv - Cartella di lavoro S:\\Lumo uguale alla cartella del server: "
             "il suo contenuto non viene rimosso"));
  }
}

TEST_F(ProductInstall, StandaloneTreeThatCannotBeDeletedIsReported) {
  duringSetUp([&] { disk().holdOpen(kWork + kTree + "luda.ini", sim::Sharing::Read); });
  installStandAlone();
  EXPECT_THAT(reports(), ElementsAre(isReport("InstallSingleProdottoComplementareStandAlone",
                                              "Errore in installazione prodotto", 70)));
}

TEST_F(ProductInstall, StandaloneRemovesAFileInTheTreesPlaceAndMayFindNothingToDelete) {
  machine().removeTree(kPack);
  machine().putFile(kWork + "prg", "x");
  installStandAlone();
  EXPECT_FALSE(machine().fileExists(kWork + "prg"));
  machine().support().setTemporaryPath("C:\\Manca\\Temp\\");
  installStandAlone();
  EXPECT_THAT(program().reportTexts(),
              ElementsAre("Errore in Apertura Pacco ", "Errore in Apertura Pacco "));
}

TEST_F(ProductInstall, StandaloneDirectSetupThatFailsStillDeletesTheTree) {
  machine().putFile(
      kPack, packBytes({{kTree + "agdvcomp.ini", "[Prod01]\r\nid=luda\r\nconf=luda.ini\r\n"}}));
  installStandAlone();
  ASSERT_EQ(reports().size(), 1U);
  EXPECT_EQ(reports()[0].module, "ModTrelvManager");
  EXPECT_FALSE(machine().folderExists(kWork + "prg"));
}

// --- From the command line

TEST_F(ProductInstall, SingleInstallWithAnIntegrationGoesToItsServer) {
  RealProgram real(machine());
  real.run("SINGLEINSTALL Luda luda.gz");
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\" + kTree + "luda.ini"));
  EXPECT_EQ(real.state().startup.paths.server, "S:\\Lumo");
  EXPECT_THAT(real.logLines(), Contains("Apertura pacco in: S:\\Lumo"));
  EXPECT_EQ(boxes().back().text, kInstalled);
}

TEST_F(ProductInstall, SingleInstallWithoutAnIntegrationRunsTheSetup) {
  station_.forgetIntegration();
  RealProgram real(machine());
  real.run("SINGLEINSTALL luda luda.gz");
  EXPECT_THAT(setups(), ElementsAre(kSetUp));
  EXPECT_THAT(real.logLines(), Contains("Apertura pacchi in: C:\\Users\\mario\\Temp"));
  EXPECT_FALSE(share().fileExists("S:\\Lumo\\" + kTree + "luda.ini"));
}

/// A machine that no host suite was ever installed on.
class WithoutHostSuite : public ProductInstall {
 protected:
  WithoutHostSuite() {
    station_.forgetIntegration();
    machine().configuration().answerAlways(-4001);
    const std::string zip =
        packBytes({{kTree + "agdvcomp.ini",
                    "[Prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=" + kTree + "zb.ini\r\n"},
                   {kTree + "zb.ini",
                    "[Setup01]\r\nversion=01.00\r\nServer01=C:\\Setup\\server.exe\r\n"
                    "Client01=C:\\Setup\\client.exe\r\n"}});
    machine().mount("E:");
    onMedium_ = std::make_unique<PackPrograms>(machine(), "E:\\prodotti");
    machine().setExecutable("E:\\prodotti\\TrelvManager.exe");
    machine().putFile("E:\\prodotti\\zb.gz", packBytes({{kTree + "zb.zip", zip}}));
    machine().diskOf("E:\\").denyWriting("E:\\");
    machine().programs().define("C:\\Setup\\server.exe");
    machine().programs().define("C:\\Setup\\client.exe", [this](sim::SimProcess&) {
      lockSeen_ = machine().fileExists(kWork + "agdv.lck");
      return 0U;
    });
  }
  std::unique_ptr<PackPrograms> onMedium_;
  bool lockSeen_ = false;
};

TEST_F(WithoutHostSuite, BothSidesAreSetUpFromAReadOnlyMediumWithoutAReport) {
  RealProgram real(machine());
  real.run("SINGLEINSTALL zb zb.gz");
  EXPECT_THAT(started(),
              AllOf(Contains("C:\\Setup\\server.exe"), Contains("C:\\Setup\\client.exe")));
  EXPECT_THAT(machine().desktop().shownForms(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(lockSeen_) << "in the root of the set-up";
  EXPECT_FALSE(machine().fileExists(kWork + "agdv.lck"));
  EXPECT_FALSE(machine().fileExists("E:\\prodotti\\agdv.lck"));
  EXPECT_FALSE(machine().folderExists(kWork + "prg"));
  EXPECT_THAT(real.logLines(), Each(Not(HasSubstr("Errore in "))));
}

}  // namespace
}  // namespace trelv::tests
