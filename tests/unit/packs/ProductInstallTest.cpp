#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/ProductInstall.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::InstallSingleProdottoComplementareIntegrato;
using modProdTrelvManager::InstallSingleProdottoComplementareStandAlone;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char* kWork = "C:\\Users\\mario\\Temp";
constexpr const char* kPack = "C:\\Lumo\\Programmi\\luda.gz";
constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";

class ProductInstall : public testing::Test {
 protected:
  ProductInstall() {
    machine().putFile(kPack, packOfLuda("C:\\Setup\\luda.exe"));
    machine().programs().define("C:\\Setup\\luda.exe");
    share().put("S:\\Lumo\\prg\\etc\\ambver", "AMB0001 01/02/08 10:11\r\n");
    share().makeFolders("S:\\Lumo\\prg\\com\\bin\\cpy\\client");
  }

  /// A gz pack that holds one zip pack with catalogue and configuration file of Luda.
  static std::string packOfLuda(const std::string& command) {
    const std::string tree(kTree);
    return packBytes(
        {{tree + "luda.zip",
          packBytes({{tree + "agdvcomp.ini",
                      "[Prod01]\r\nid=LUDA\r\nname=Luda\r\nconf=" + tree + "luda.ini\r\n"},
                     {tree + "luda.ini",
                      "[Setup01]\r\nversion=01.00\r\nServer01=" + command + " -S\r\n"}})}});
  }

  std::string installIntegrated(std::string targetFolder) {
    InstallSingleProdottoComplementareIntegrato(program_, "Luda", targetFolder, "luda.gz");
    return targetFolder;
  }
  void installStandAlone(const std::string& id = "LUDA") {
    InstallSingleProdottoComplementareStandAlone(program_, id, "luda.gz");
  }
  /// Started set-ups: what runs besides the two programs that open packs.
  std::vector<std::string> setups() {
    std::vector<std::string> setups;
    for (const sim::StartedProgram& started : machine().started()) {
      if (started.program != PackPrograms::kDecoder && started.program != PackPrograms::kSevenZip) {
        setups.push_back(started.commandLine);
      }
    }
    return setups;
  }
  std::size_t lineNumber(const std::string& line) {
    const auto found = std::find(lines().begin(), lines().end(), line);
    EXPECT_NE(found, lines().end()) << line;
    return static_cast<std::size_t>(found - lines().begin());
  }

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }
  const std::vector<std::string>& lines() { return program_.lines(); }

  Installation installation_;
  Station station_{installation_};
  PackPrograms packPrograms_{station_.machine()};
  FakeProgram& program_ = station_.program();
};

// --- Into the host server folder

TEST_F(ProductInstall, IntegratedOpensThePackIntoTheHostServerFolder) {
  installIntegrated("S:\\Lumo");
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\luda.ini"));
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini"));
  EXPECT_EQ(machine().started()[0].commandLine,
            "\"C:\\Lumo\\Programmi\\qalbunex.exe\" \"C:\\Lumo\\Programmi\\luda.gz\" "
            "\"C:\\Users\\mario\\Temp\"");
  EXPECT_FALSE(machine().folderExists("C:\\Users\\mario\\Temp\\prg"));
  EXPECT_THAT(setups(), IsEmpty());
}

TEST_F(ProductInstall, IntegratedRefreshesTheClientCopyBehindThePack) {
  installIntegrated("S:\\Lumo");
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe"));
  EXPECT_THAT(share().text("S:\\Lumo\\prg\\etc\\ambver"), HasSubstr("AMB000116/11/26 09:30"));
  EXPECT_EQ(lines().front(), "Apertura pacco in: S:\\Lumo");
  EXPECT_LT(lineNumber("Gestione ProdTrelv - Rimozione pacco zip: "
                       "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\luda.zip"),
            lineNumber("Gestione ProdTrelv - Copia Trelvmanager.Exe su "
                       "S:\\Lumo\\prg\\com\\bin\\cpy\\client"));
}

TEST_F(ProductInstall, IntegratedTellsTheUserInTheEnd) {
  machine().desktop().onBox([&](const sim::SimBox&) {
    EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe"));
  });
  installIntegrated("S:\\Lumo");
  ASSERT_THAT(machine().boxes(), SizeIs(1));
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.icon, machine::BoxIcon::Information);
  EXPECT_EQ(box.buttons, machine::BoxButtons::Ok);
  EXPECT_EQ(box.text, "Installazione completata correttamente del prodotto Luda in: S:\\LUMO");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(ProductInstall, IntegratedTakesOneTrailingBackslashFromTheCallersFolder) {
  EXPECT_EQ(installIntegrated("S:\\Lumo\\"), "S:\\Lumo");
  EXPECT_EQ(lines().front(), "Apertura pacco in: S:\\Lumo");
  EXPECT_EQ(machine().boxes()[0].text,
            "Installazione completata correttamente del prodotto Luda in: S:\\LUMO");
  EXPECT_EQ(installIntegrated("S:\\Lumo\\\\"), "S:\\Lumo\\");
}

TEST_F(ProductInstall, IntegratedLeavesAFolderWithoutTrailingBackslash) {
  EXPECT_EQ(installIntegrated("S:\\Lumo"), "S:\\Lumo");
}

TEST_F(ProductInstall, IntegratedGoesOnWhenThePackIsMissing) {
  machine().removeTree(kPack);
  installIntegrated("S:\\Lumo");
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita"));
  EXPECT_EQ(machine().boxes().back().text,
            "Installazione completata correttamente del prodotto Luda in: S:\\LUMO");
}

TEST_F(ProductInstall, IntegratedSaysSoAlsoWhenTheClientCopyCouldNotBeRefreshed) {
  share().removeTree("S:\\Lumo\\prg\\etc\\ambver");
  installIntegrated("S:\\Lumo");
  EXPECT_THAT(program_.reports(), SizeIs(1));
  EXPECT_EQ(machine().boxes().back().text,
            "Installazione completata correttamente del prodotto Luda in: S:\\LUMO");
}

TEST_F(ProductInstall, IntegratedShowsWhatThePackBroughtToTheNextReader) {
  const std::string ini = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\luda.ini";
  share().put(ini, "[Setup01]\r\nversion=00.50\r\n");
  EXPECT_EQ(program_.configurationFiles.read({ini, "Setup01", "version"}, 511), "00.50");
  installIntegrated("S:\\Lumo");
  EXPECT_EQ(program_.configurationFiles.read({ini, "Setup01", "version"}, 511), "01.00");
}

TEST_F(ProductInstall, IntegratedWithoutAFolderTouchesNothingAndIsReported) {
  for (const char* const folder : {"", "\\"}) {
    installIntegrated(folder);
    EXPECT_EQ(lines().back(),
              "Gestione ProdTrelv - Errore in installazione singolo prodotto integrato: Cartella "
              "del server non disponibile");
  }
  ASSERT_THAT(program_.reports(), SizeIs(2));
  const FakeReport& report = program_.reports()[0];
  EXPECT_EQ(report.module, "ModProdTrelvManager");
  EXPECT_EQ(report.procedure, "InstallSingleProdottoComplementareIntegrato");
  EXPECT_EQ(report.message, "Errore in installazione singolo prodotto integrato: ");
  EXPECT_EQ(report.kind, ReportKind::ProgramError);
  EXPECT_THAT(machine().started(), IsEmpty());
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_FALSE(machine().folderExists("C:\\prg"));
}

// --- On its own

TEST_F(ProductInstall, StandaloneRunsTheSetupFromTheTemporaryFolder) {
  machine().programs().define("C:\\Setup\\luda.exe", [&](sim::SimProcess&) {
    EXPECT_TRUE(machine().fileExists(std::string(kWork) + "\\" + kTree + "luda.ini"));
    return 0U;
  });
  installStandAlone();
  EXPECT_THAT(setups(), ElementsAre("C:\\Setup\\luda.exe"));
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_THAT(machine().boxes(), IsEmpty());
  EXPECT_EQ(share().text("S:\\Lumo\\prg\\etc\\ambver"), "AMB0001 01/02/08 10:11\r\n");
}

TEST_F(ProductInstall, StandaloneTellsItsStepsInOrder) {
  installStandAlone();
  EXPECT_EQ(lines().front(), "Apertura pacchi in: C:\\Users\\mario\\Temp");
  const std::size_t opened = lineNumber(
      "Gestione ProdTrelv - Rimozione pacco zip: "
      "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\luda.zip");
  const std::size_t direct = lineNumber(
      "Gestione ProdTrelv - Esecuzione diretta Setup del prodotto LUDA. Sono caso Standard");
  EXPECT_LT(opened, direct);
  EXPECT_EQ(lines()[direct + 1],
            "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità "
            "standalone");
}

TEST_F(ProductInstall, StandaloneReplacesTheSelectedProducts) {
  program_.state.selectedProducts = {{"ZB"}, {"NERIO"}};
  installStandAlone("luda");
  ASSERT_THAT(program_.state.selectedProducts, SizeIs(1));
  EXPECT_EQ(program_.state.selectedProducts[0].identifier, "luda");
  EXPECT_THAT(setups(), ElementsAre("C:\\Setup\\luda.exe"));
}

TEST_F(ProductInstall, StandaloneDeletesWhatWasUnpackedReadOnlyFilesIncluded) {
  packPrograms_.onFile = [&](const std::string& path) { machine().diskOf(path).setReadOnly(path); };
  machine().putFile(std::string(kWork) + "\\altro.txt", "resta");
  installStandAlone();
  EXPECT_FALSE(machine().folderExists(std::string(kWork) + "\\prg"));
  EXPECT_TRUE(machine().fileExists(std::string(kWork) + "\\altro.txt"));
}

TEST_F(ProductInstall, StandaloneUsesATemporaryFolderWithoutTrailingBackslashAsItIs) {
  machine().makeFolders("C:\\T");
  machine().support().setTemporaryPath("C:\\T");
  installStandAlone();
  EXPECT_EQ(lines().front(), "Apertura pacchi in: C:\\T");
  EXPECT_THAT(setups(), ElementsAre("C:\\Setup\\luda.exe"));
  EXPECT_FALSE(machine().folderExists("C:\\T\\prg"));
}

TEST_F(ProductInstall, StandaloneGoesOnWithTheSetupsWhenThePackIsMissing) {
  machine().removeTree(kPack);
  installStandAlone();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Avvio lancio setup per prodotti "
                                "complementari in modalità standalone"));
  EXPECT_THAT(setups(), IsEmpty());
}

TEST_F(ProductInstall, StandaloneForgetsWhatItReadBelowTheDeletedTree) {
  installStandAlone();
  const std::string ini = std::string(kWork) + "\\" + kTree + "agdvcomp.ini";
  EXPECT_EQ(program_.configurationFiles.read({ini, "Prod01", "id"}, 511), "");
}

TEST_F(ProductInstall, StandaloneReadsTheCatalogueOfThePackAndNotAnOlderOne) {
  const std::string ini = std::string(kWork) + "\\" + kTree + "agdvcomp.ini";
  machine().putFile(ini, "[Prod01]\r\nid=ZB\r\nconf=zb.ini\r\n");
  EXPECT_EQ(program_.configurationFiles.read({ini, "Prod01", "id"}, 511), "ZB");
  installStandAlone();
  EXPECT_THAT(setups(), ElementsAre("C:\\Setup\\luda.exe"));
}

TEST_F(ProductInstall, StandaloneWithoutATemporaryFolderTouchesNothing) {
  machine().support().setTemporaryPath("");
  machine().putFile("C:\\prg\\com\\setup\\aggdovra\\agdvcomp.ini",
                    "[Prod01]\r\nid=LUDA\r\nconf=luda.ini\r\n");
  machine().putFile("C:\\luda.ini", "[Setup01]\r\nversion=01\r\nServer01=C:\\Setup\\luda.exe\r\n");
  installStandAlone();
  EXPECT_TRUE(machine().fileExists("C:\\prg\\com\\setup\\aggdovra\\agdvcomp.ini"));
  EXPECT_THAT(machine().started(), IsEmpty());
  ASSERT_THAT(program_.reports(), SizeIs(1));
  const FakeReport& report = program_.reports()[0];
  EXPECT_EQ(report.module, "ModProdTrelvManager");
  EXPECT_EQ(report.procedure, "InstallSingleProdottoComplementareStandAlone");
  EXPECT_EQ(report.message, "Errore in installazione prodotto");
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in installazione prodottoCartella temporanea non "
            "disponibile");
}

TEST_F(ProductInstall, StandaloneTreeThatCannotBeDeletedIsReported) {
  machine().programs().define("C:\\Setup\\luda.exe", [&](sim::SimProcess&) {
    machine().diskOf(kWork).holdOpen(std::string(kWork) + "\\" + kTree + "luda.ini",
                                     sim::Sharing::Read);
    return 0U;
  });
  installStandAlone();
  ASSERT_THAT(program_.reports(), SizeIs(1));
  EXPECT_EQ(program_.reports()[0].failure.number(), 70);
  EXPECT_EQ(program_.reports()[0].message, "Errore in installazione prodotto");
}

TEST_F(ProductInstall, StandaloneLeavesAFileInTheTreesPlace) {
  machine().removeTree(kPack);
  machine().putFile(std::string(kWork) + "\\prg", "resta");
  installStandAlone();
  EXPECT_EQ(machine().fileText(std::string(kWork) + "\\prg"), "resta");
  EXPECT_THAT(program_.reportTexts(), ElementsAre("Errore in Apertura Pacco "));
}

TEST_F(ProductInstall, StandaloneWithATemporaryFolderThatIsNotThereHasNothingToDelete) {
  machine().support().setTemporaryPath("C:\\Manca\\Temp\\");
  machine().removeTree(kPack);
  installStandAlone();
  EXPECT_THAT(program_.reportTexts(), ElementsAre("Errore in Apertura Pacco "));
}

TEST_F(ProductInstall, StandaloneDirectSetupThatFailsStillDeletesTheTree) {
  machine().putFile(kPack, packBytes({{std::string(kTree) + "agdvcomp.ini",
                                       "[Prod01]\r\nid=luda\r\nconf=luda.ini\r\n"}}));
  installStandAlone();
  ASSERT_THAT(program_.reports(), SizeIs(1));
  EXPECT_EQ(program_.reports()[0].module, "ModTrelvManager");
  EXPECT_FALSE(machine().folderExists(std::string(kWork) + "\\prg"));
}

// --- From the command line

TEST_F(ProductInstall, SingleInstallWithAnIntegrationGoesToItsServer) {
  RealProgram program(machine());
  program.run("SINGLEINSTALL Luda luda.gz");
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\luda.ini"));
  EXPECT_EQ(program.state().startup.hostFolder, "S:\\Lumo");
  EXPECT_EQ(program.state().startup.hostIntegrationFolder, "S:\\Lumo");
  EXPECT_THAT(program.logLines(), Contains("Apertura pacco in: S:\\Lumo"));
  EXPECT_EQ(machine().boxes().back().text,
            "Installazione completata correttamente del prodotto Luda in: S:\\LUMO");
}

TEST_F(ProductInstall, SingleInstallWithoutAnIntegrationRunsTheSetup) {
  station_.forgetIntegration();
  RealProgram program(machine());
  program.run("SINGLEINSTALL luda luda.gz");
  EXPECT_THAT(setups(), ElementsAre("C:\\Setup\\luda.exe"));
  EXPECT_THAT(program.logLines(), Contains("Apertura pacchi in: C:\\Users\\mario\\Temp"));
  EXPECT_FALSE(share().fileExists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\luda.ini"));
}

}  // namespace
}  // namespace trelv::tests
