#include "packs/ProductRepair.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::CatalogueProducts;
using modProdTrelvManager::RepairVersion;

/// The product ZB with a configuration of the test's own; programs a, b and c of the share.
class Repair : public StationTest {
 protected:
  Repair() {
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}, {"ZB", "Bilancio", "zb.ini"}});
    installation_.putPrograms({"a", "b", "c"});
  }

  void putZb(const std::string& text) { installation_.putConfiguration("zb.ini", text); }
  bool repair(const std::string& section, Side side) {
    return modProdTrelvManager::RepairProduct(
        program(), {Installation::kServer, "S:\\Work", "C:\\Prog"}, {"ZB", side}, section);
  }
  /// Repairs the server's side by a set-up section of these keys, version 09.
  bool repairWith(const std::string& keys) {
    putZb("[Setup01]\r\nversion=09\r\n" + keys + "\r\n");
    return repair("Setup01", Side::Server);
  }
  /// Each version that can be repaired: section, kind, index, version.
  std::vector<std::string> versions() {
    std::vector<std::string> texts;
    for (const RepairVersion& version :
         modProdTrelvManager::ProductVersions(program(), Installation::kServer, "ZB")) {
      texts.push_back(version.section + " " + std::to_string(static_cast<int>(version.kind)) + " " +
                      std::to_string(version.index) + " " + version.version);
    }
    return texts;
  }
  std::vector<std::string> products() {
    program().configurationFiles.forget();
    return CatalogueProducts(program(), Installation::kServer);
  }
};

// --- The lists

TEST_F(Repair, ProductsAreTheCataloguesWithAnIdentifierToTheHundredth) {
  EXPECT_THAT(products(), ElementsAre("NERIO", "ZB"));
  installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}, {"", "x", "x.ini"}, {"ZB", "", ""}});
  EXPECT_THAT(products(), ElementsAre("NERIO", "ZB"));
  share().put(Installation::kCatalogue,
              "[prod100]\r\nid=ZM\r\n[prod101]\r\nid=KXK\r\n[prod1]\r\nid=RR\r\n");
  EXPECT_THAT(products(), ElementsAre("ZM"));
  share().removeTree(Installation::kCatalogue);
  EXPECT_THAT(products(), IsEmpty());
  EXPECT_THAT(versions(), IsEmpty());
}

TEST_F(Repair, VersionsAreThoseOfEverySectionOfAKindAndAnIndex) {
  putZb(
      "[Update100]\r\nversion=09\r\n[Update02]\r\nversion=03\r\n[Setup02]\r\nversion=02\r\n"
      "[Setup01]\r\nversion=01\r\n[Update01]\r\nversion=02\r\n[Exec01]\r\nversion=05\r\n");
  EXPECT_THAT(versions(), ElementsAre("Setup01 1 1 01", "Setup02 1 2 02", "Update01 2 1 02",
                                      "Update02 2 2 03", "Update100 2 100 09", "Exec01 4 1 05"));
}

TEST_F(Repair, SectionsWithoutVersionIndexOrKindAndRemovalsAreNoVersions) {
  putZb(
      "[Setup]\r\nversion=01\r\n[Setup1]\r\nversion=01\r\n[Setup101]\r\nversion=01\r\n"
      "[Altro01]\r\nversion=01\r\n[Setup01]\r\nServer01=a\r\n[Update01]\r\nversion=\r\n"
      "[Remove]\r\nversion=01\r\n[Remove01]\r\nversion=01\r\n");
  EXPECT_THAT(versions(), IsEmpty());
}

// --- The run

TEST_F(Repair, RunsTheSectionsCommandsOfTheSideInOrderAndWaits) {
  machine().programs().setDeferred(true);
  EXPECT_TRUE(
      repairWith("Server01=S:\\Lumo\\a.exe 1\r\nServer02=S:\\Lumo\\b.exe\r\n"
                 "Client01=S:\\Lumo\\c.exe\r\n[Update01]\r\nServer01=S:\\Lumo\\c.exe"));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe 1", "S:\\Lumo\\b.exe"));
  EXPECT_TRUE(machine().started()[0].waited && machine().started()[1].waited);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\a.exe 1",
                                   "Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\b.exe"));
}

TEST_F(Repair, SidesNameChoosesTheKeys) {
  EXPECT_TRUE(
      repairWith("Server01=S:\\Lumo\\a.exe\r\nClient01=S:\\Lumo\\c.exe\r\n"
                 "ClientServer01=S:\\Lumo\\b.exe"));
  EXPECT_TRUE(repair("Setup01", Side::Client));
  EXPECT_TRUE(repair("Setup01", Side::ClientServer));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\c.exe", "S:\\Lumo\\b.exe"));
}

TEST_F(Repair, FirstEmptyKeyEndsIt) {
  repairWith("Server01=S:\\Lumo\\a.exe\r\nServer02=\r\nServer03=S:\\Lumo\\b.exe");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
}

TEST_F(Repair, HundredthCommandIsTheLast) {
  std::vector<std::string> commands;
  for (int i = 1; i <= 101; ++i) {
    commands.push_back("S:\\Lumo\\a.exe " + std::to_string(i));
  }
  putZb(configurationText({{"Setup01", "01", commands, {}}}));
  repair("Setup01", Side::Server);
  EXPECT_EQ(started().size(), 100U);
  EXPECT_EQ(started().back(), "S:\\Lumo\\a.exe 100");
}

TEST_F(Repair, PlaceholdersAreServerPathAndTheTwoRunParameters) {
  repairWith("Server01=%PATHSETUP%\\a.exe %PATHWORK%/x %PATHCLIENT% /s");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe S:\\Work\\x C:\\Prog \\s"));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\a.exe "
                                   "S:\\Work\\x C:\\Prog \\s"));
}

TEST_F(Repair, CommandThatCannotBeStartedIsToldAndOneThatCanIsEnoughForYes) {
  EXPECT_TRUE(repairWith("Server01=S:\\Lumo\\nessuno.exe\r\nServer02=S:\\Lumo\\b.exe"));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Errore in esecuzione programma: "
                          "S:\\Lumo\\nessuno.exe (2 Impossibile trovare il programma)",
                          "Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\nessuno.exe",
                          "Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\b.exe"));
  EXPECT_TRUE(repairWith("Server01=S:\\Lumo\\b.exe\r\nServer02=S:\\Lumo\\nessuno.exe"));
}

TEST_F(Repair, WhereNothingCouldBeStartedAnswersNo) {
  EXPECT_FALSE(repairWith("Server01=S:\\Lumo\\nessuno.exe"));
  EXPECT_FALSE(repair("Setup02", Side::Server));
  EXPECT_FALSE(repair("Setup01", Side::Client));
}

TEST_F(Repair, OutcomeOfACommandDoesNotMatterAndNothingIsRecorded) {
  share().putProgram("S:\\Lumo\\a.exe", [](sim::SimProcess&) { return 7U; });
  installation_.putServerRecord("[ZB]\r\nversion=01\r\n");
  EXPECT_TRUE(repairWith("Server01=S:\\Lumo\\a.exe\r\nServer02=S:\\Lumo\\b.exe"));
  EXPECT_EQ(started().size(), 2U);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=01\r\n");
}

TEST_F(Repair, UnknownSideIsOneLineAndStartsNothing) {
  putZb("[Setup01]\r\nversion=09\r\nServer01=S:\\Lumo\\a.exe\r\n");
  EXPECT_FALSE(repair("Setup01", static_cast<Side>(9)));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in ripristino prodotto (-1 )"));
  EXPECT_THAT(started(), IsEmpty());
}

}  // namespace
}  // namespace trelv::tests
