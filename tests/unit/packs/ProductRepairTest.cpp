#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/ProductRepair.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::CatalogueProducts;
using modProdTrelvManager::ProductVersions;
using modProdTrelvManager::RepairProduct;
using modProdTrelvManager::RepairVersion;
using testing::ElementsAre;
using testing::IsEmpty;

class Repair : public testing::Test {
 protected:
  Repair() {
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}, {"ZB", "Bilancio", "zb.ini"}});
    for (const char* const name : {"a", "b", "c"}) {
      installation_.share().putProgram("S:\\Lumo\\" + std::string(name) + ".exe");
    }
  }

  void putZb(const std::string& text) { installation_.putConfiguration("zb.ini", text); }
  bool repair(const std::string& section, Side side) {
    return RepairProduct(station_.program(), Installation::kServer, "S:\\Work", "C:\\Prog", "ZB",
                         section, side);
  }
  std::vector<std::string> versions() {
    std::vector<std::string> texts;
    for (const RepairVersion& version :
         ProductVersions(station_.program(), Installation::kServer, "ZB")) {
      texts.push_back(version.section + " " + std::to_string(static_cast<int>(version.kind)) + " " +
                      std::to_string(version.index) + " " + version.version);
    }
    return texts;
  }
  const std::vector<std::string>& lines() { return station_.program().lines(); }

  Installation installation_;
  Station station_{installation_};
};

// --- The lists

TEST_F(Repair, ProductsAreTheCatalogues) {
  EXPECT_THAT(CatalogueProducts(station_.program(), Installation::kServer),
              ElementsAre("NERIO", "ZB"));
}

TEST_F(Repair, EntryWithoutIdentifierIsLeftOutAndTheWalkGoesOn) {
  installation_.putCatalogue(
      {{"NERIO", "Nerio", "nerio.ini"}, {"", "x", "x.ini"}, {"ZB", "b", ""}});
  EXPECT_THAT(CatalogueProducts(station_.program(), Installation::kServer),
              ElementsAre("NERIO", "ZB"));
}

TEST_F(Repair, CatalogueIsReadToItsHundredthEntry) {
  installation_.share().put(Installation::kCatalogue,
                            "[prod100]\r\nid=ZM\r\n[prod101]\r\nid=KXK\r\n[prod1]\r\nid=RR\r\n");
  EXPECT_THAT(CatalogueProducts(station_.program(), Installation::kServer), ElementsAre("ZM"));
}

TEST_F(Repair, WithoutCatalogueThereIsNoProduct) {
  installation_.share().removeTree(Installation::kCatalogue);
  EXPECT_THAT(CatalogueProducts(station_.program(), Installation::kServer), IsEmpty());
  EXPECT_THAT(versions(), IsEmpty());
}

TEST_F(Repair, VersionsAreThoseOfEverySectionOfAKindAndAnIndex) {
  putZb(
      "[Update100]\r\nversion=09\r\n[Update02]\r\nversion=03\r\n[Setup02]\r\nversion=02\r\n"
      "[Setup01]\r\nversion=01\r\n[Update01]\r\nversion=02\r\n[Exec01]\r\nversion=05\r\n");
  EXPECT_THAT(versions(), ElementsAre("Setup01 1 1 01", "Setup02 1 2 02", "Update01 2 1 02",
                                      "Update02 2 2 03", "Update100 2 100 09", "Exec01 4 1 05"));
}

TEST_F(Repair, SectionsWithoutVersionIndexOrKindAreNoVersions) {
  putZb(
      "[Setup]\r\nversion=01\r\n[Setup1]\r\nversion=01\r\n[Setup101]\r\nversion=01\r\n"
      "[Altro01]\r\nversion=01\r\n[Setup01]\r\nServer01=a\r\n[Update01]\r\nversion=\r\n");
  EXPECT_THAT(versions(), IsEmpty());
}

TEST_F(Repair, RemovalsAreNoVersions) {
  putZb("[Remove]\r\nversion=01\r\n[Remove01]\r\nversion=01\r\n");
  EXPECT_THAT(versions(), IsEmpty());
}

// --- The run

TEST_F(Repair, RunsTheSectionsCommandsOfTheSideInOrderAndWaits) {
  putZb(
      "[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\a.exe 1\r\nServer02=S:\\Lumo\\b.exe\r\n"
      "Client01=S:\\Lumo\\c.exe\r\n[Update01]\r\nversion=02\r\nServer01=S:\\Lumo\\c.exe\r\n");
  station_.machine().programs().setDeferred(true);
  EXPECT_TRUE(repair("Setup01", Side::Server));
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\a.exe 1", "S:\\Lumo\\b.exe"));
  for (const sim::StartedProgram& started : station_.machine().started()) {
    EXPECT_TRUE(started.waited);
  }
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\a.exe 1",
                                   "Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\b.exe"));
}

TEST_F(Repair, SidesNameChoosesTheKeys) {
  putZb(
      "[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\a.exe\r\nClient01=S:\\Lumo\\c.exe\r\n"
      "ClientServer01=S:\\Lumo\\b.exe\r\n");
  EXPECT_TRUE(repair("Setup01", Side::Client));
  EXPECT_TRUE(repair("Setup01", Side::ClientServer));
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\b.exe"));
}

TEST_F(Repair, FirstEmptyKeyEndsIt) {
  putZb(
      "[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\a.exe\r\nServer02=\r\n"
      "Server03=S:\\Lumo\\b.exe\r\n");
  repair("Setup01", Side::Server);
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\a.exe"));
}

TEST_F(Repair, HundredthCommandIsTheLast) {
  std::string text = "[Setup01]\r\nversion=01\r\n";
  for (int i = 1; i <= 101; ++i) {
    text += "Server" + std::string(i < 10 ? "0" : "") + std::to_string(i) + "=S:\\Lumo\\a.exe " +
            std::to_string(i) + "\r\n";
  }
  putZb(text);
  repair("Setup01", Side::Server);
  EXPECT_EQ(station_.commandLines().size(), 100U);
  EXPECT_EQ(station_.commandLines().back(), "S:\\Lumo\\a.exe 100");
}

TEST_F(Repair, PlaceholdersAreServerPathAndTheTwoRunParameters) {
  putZb(
      "[Setup01]\r\nversion=01\r\n"
      "Server01=%PATHSETUP%\\a.exe %PATHWORK%/x %PATHCLIENT% /s\r\n");
  repair("Setup01", Side::Server);
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\a.exe S:\\Work\\x C:\\Prog \\s"));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\a.exe "
                                   "S:\\Work\\x C:\\Prog \\s"));
}

TEST_F(Repair, CommandThatCannotBeStartedIsToldAndTheNextFollows) {
  putZb(
      "[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\nessuno.exe\r\nServer02=S:\\Lumo\\b.exe\r\n");
  EXPECT_TRUE(repair("Setup01", Side::Server));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\nessuno.exe",
                          "Gestione ProdTrelv - Esecuzione comando: S:\\Lumo\\b.exe"));
}

TEST_F(Repair, OneStartedCommandIsEnoughForYes) {
  putZb(
      "[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\b.exe\r\nServer02=S:\\Lumo\\nessuno.exe\r\n");
  EXPECT_TRUE(repair("Setup01", Side::Server));
}

TEST_F(Repair, WhereNothingCouldBeStartedAnswersNo) {
  putZb("[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\nessuno.exe\r\n");
  EXPECT_FALSE(repair("Setup01", Side::Server));
  EXPECT_FALSE(repair("Setup02", Side::Server));
  EXPECT_FALSE(repair("Setup01", Side::Client));
}

TEST_F(Repair, OutcomeOfACommandDoesNotMatter) {
  installation_.share().putProgram("S:\\Lumo\\fails.exe",
                                   [](sim::SimProcess&) -> std::uint32_t { return 7; });
  putZb("[Setup01]\r\nversion=01\r\nServer01=S:\\Lumo\\fails.exe\r\nServer02=S:\\Lumo\\b.exe\r\n");
  EXPECT_TRUE(repair("Setup01", Side::Server));
  EXPECT_EQ(station_.commandLines().size(), 2U);
}

TEST_F(Repair, RecordsNothing) {
  putZb("[Setup01]\r\nversion=09\r\nServer01=S:\\Lumo\\a.exe\r\n");
  installation_.putServerRecord("[ZB]\r\nversion=01\r\n");
  repair("Setup01", Side::Server);
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=01\r\n");
}

TEST_F(Repair, UnknownSideIsOneLineAndStartsNothing) {
  putZb("[Setup01]\r\nversion=09\r\nServer01=S:\\Lumo\\a.exe\r\n");
  EXPECT_FALSE(repair("Setup01", static_cast<Side>(9)));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in ripristino prodotto (-1 )"));
}

}  // namespace
}  // namespace trelv::tests
