#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "integrated/DovraCorrection.h"
#include "integrated/UpdateAll.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kReleaseFile = "S:\\Lumo\\prg\\etc\\dvrel";
constexpr const char* kCorrected =
    "[Q2]\r\nversion=02.92.00.00\r\n[LUDA]\r\nversion=07.10.00.00\r\n[ZB]\r\n"
    "version=09.93.00.00\r\n[NERIO]\r\nversion=03.20.30.00\r\n[ZM]\r\nversion=06.50.30.00\r\n";

class DovraCorrection : public testing::Test {
 protected:
  void release(const std::string& text) { installation_.share().put(kReleaseFile, text); }
  void correct() { modProdTrelvManager::CorrectDovraBefore11(station_.program(), "S:\\Lumo"); }
  const std::vector<std::string>& lines() { return station_.program().lines(); }

  Installation installation_;
  Station station_{installation_};
};

TEST_F(DovraCorrection, WritesBothRecordsInOrder) {
  release("10.70.00\r\naltro\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), kCorrected);
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), kCorrected);
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Prodotto Dovra riconosciuto",
                  "Gestione ProdTrelv - Verifica del valore del file: S:\\Lumo\\prg\\etc\\dvrel",
                  "Gestione ProdTrelv - Release rilevata: 10.70.00",
                  "Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00",
                  "Gestione ProdTrelv - Inizio correzione file di versione server per Dovra",
                  "Gestione ProdTrelv - Inizio correzione file di versione client per Dovra"));
}

TEST_F(DovraCorrection, LooksAtTheFirstEightCharactersOfTheRelease) {
  release("10.70.00 build 5");
  correct();
  EXPECT_EQ(installation_.serverRecord(), kCorrected);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Release rilevata: 10.70.00"));
}

TEST_F(DovraCorrection, OtherReleaseIsOnlyTold) {
  for (const char* const text : {"10.70.01", "10.70.0", "11.00.00", "05.70.00", " 10.70.00"}) {
    release(text);
    correct();
    EXPECT_FALSE(installation_.share().exists(Installation::kServerRecord)) << text;
  }
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Release rilevata: 05.70.00"));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00")));
}

TEST_F(DovraCorrection, LooksAtTheFirstLineOnly) {
  release("10.70\r\n.00");
  correct();
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Release rilevata: 10.70");
}

TEST_F(DovraCorrection, RecordAlreadyCorrectedIsLeftAlone) {
  release("10.70.00");
  installation_.putServerRecord("[ZB]\r\nversion=09.93.00\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=09.93.00\r\n");
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), kCorrected);
  EXPECT_THAT(
      lines(),
      Not(Contains("Gestione ProdTrelv - Inizio correzione file di versione server per Dovra")));
}

TEST_F(DovraCorrection, RunsOncePerRecord) {
  release("10.70.00");
  correct();
  station_.machine().callLog().clear();
  correct();
  EXPECT_EQ(station_.machine().openings(Installation::kServerRecord).profileWrites, 0U);
  EXPECT_EQ(station_.machine().openings(Station::kClientRecord).profileWrites, 0U);
}

TEST_F(DovraCorrection, OtherProductsOfTheRecordSurvive) {
  release("10.70.00");
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), std::string("[KXK]\r\nversion=01.00\r\n") + kCorrected);
}

TEST_F(DovraCorrection, MissingReleaseFileIsOneLineAndTheStepsGoOn) {
  correct();
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Impossibile "
                  "trovare il file: S:\\Lumo\\prg\\etc\\dvrel)",
                  "Gestione ProdTrelv - Prodotto Dovra riconosciuto",
                  "Gestione ProdTrelv - Verifica del valore del file: S:\\Lumo\\prg\\etc\\dvrel",
                  "Gestione ProdTrelv - Release rilevata: "));
}

TEST_F(DovraCorrection, EmptyReleaseFileIsAFailureToo) {
  release("");
  correct();
  EXPECT_EQ(lines().front(),
            "Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Lettura oltre la fine "
            "del file: S:\\Lumo\\prg\\etc\\dvrel)");
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Release rilevata: ");
}

TEST_F(DovraCorrection, RecordThatCannotBeWrittenIsOneLineAndTheOtherIsCorrected) {
  release("10.70.00");
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  installation_.share().setReadOnly(Installation::kServerRecord);
  correct();
  EXPECT_EQ(installation_.serverRecord(), "[KXK]\r\nversion=01.00\r\n");
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), kCorrected);
  EXPECT_THAT(
      lines(),
      ElementsAre("Gestione ProdTrelv - Prodotto Dovra riconosciuto",
                  "Gestione ProdTrelv - Verifica del valore del file: S:\\Lumo\\prg\\etc\\dvrel",
                  "Gestione ProdTrelv - Release rilevata: 10.70.00",
                  "Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00",
                  "Gestione ProdTrelv - Inizio correzione file di versione server per Dovra",
                  "Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Impossibile "
                  "correggere le versioni nel file: S:\\Lumo\\prg\\etc\\agdvver.ini)",
                  "Gestione ProdTrelv - Inizio correzione file di versione client per Dovra"));
}

TEST_F(DovraCorrection, OnlyHappensWhereTheHostIsDovra) {
  release("10.70.00");
  modProdTrelvManager::UpdateAllProdottiComplementari(station_.program(), {"S:\\Lumo", "", ""});
  EXPECT_FALSE(installation_.share().exists(Installation::kServerRecord));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Prodotto Dovra riconosciuto")));
  station_.program().state.startup.pluginProduct = PluginProduct::Dovra;
  modProdTrelvManager::UpdateAllProdottiComplementari(station_.program(), {"S:\\Lumo", "", ""});
  EXPECT_EQ(installation_.serverRecord(), kCorrected);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 "
                                "(UNDICIZERO)"));
}

TEST_F(DovraCorrection, TheWalkGoesByTheCorrectedVersions) {
  release("10.70.00");
  installation_.putServerRecord("[ZB]\r\nversion=09.90\r\n");
  installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
  installation_.putConfiguration(
      "zb.ini", configurationText({{"Update01", "09.93.00.00", {"S:\\Lumo\\a.exe"}, {}}}));
  station_.program().state.startup.pluginProduct = PluginProduct::Dovra;
  modProdTrelvManager::UpdateAllProdottiComplementari(station_.program(), {"S:\\Lumo", "", ""});
  EXPECT_THAT(station_.commandLines(), IsEmpty());
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lato Server la versione: 09.93.00.00 è "
                                "minore o uguale a quella corrente: 09.93.00.00"));
}

}  // namespace
}  // namespace trelv::tests
