#include "integrated/DovraCorrection.h"
#include "integrated/UpdateAll.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

constexpr const char* kCorrected =
    "[Q2]\r\nversion=02.92.00.00\r\n[LUDA]\r\nversion=07.10.00.00\r\n[ZB]\r\n"
    "version=09.93.00.00\r\n[NERIO]\r\nversion=03.20.30.00\r\n[ZM]\r\nversion=06.50.30.00\r\n";

class DovraCorrection : public StationTest {
 protected:
  void release(const std::string& text) { share().put("S:\\Lumo\\prg\\etc\\dvrel", text); }
  void correct() { modProdTrelvManager::CorrectDovraBefore11(program(), "S:\\Lumo"); }
  void updateAll() {
    modProdTrelvManager::UpdateAllProdottiComplementari(program(), {"S:\\Lumo", "", ""});
  }
  std::string clientRecord() { return machine().fileText(Station::kClientRecord); }
};

TEST_F(DovraCorrection, WritesBothRecordsInOrder) {
  release("10.70.00\r\naltro\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), kCorrected);
  EXPECT_EQ(clientRecord(), kCorrected);
  EXPECT_EQ(program().logText(),
            R"(Gestione ProdTrelv - Prodotto Dovra riconosciuto
Gestione ProdTrelv - Verifica del valore del file: S:\Lumo\prg\etc\dvrel
Gestione ProdTrelv - Release rilevata: 10.70.00
Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00
Gestione ProdTrelv - Inizio correzione file di versione server per Dovra
Gestione ProdTrelv - Inizio correzione file di versione client per Dovra
)");
  machine().callLog().clear();
  correct();
  EXPECT_EQ(machine().openings(Installation::kServerRecord).profileWrites, 0U);
  EXPECT_EQ(machine().openings(Station::kClientRecord).profileWrites, 0U);
}

TEST_F(DovraCorrection, LooksAtTheFirstEightCharactersOfTheFirstLine) {
  for (const char* const text :
       {"10.70.01", "10.70.0", "11.00.00", "05.70.00", " 10.70.00", "10.70\r\n.00"}) {
    release(text);
    correct();
    EXPECT_FALSE(share().exists(Installation::kServerRecord)) << text;
  }
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Release rilevata: 10.70");
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00")));
  release("10.70.00 build 5");
  correct();
  EXPECT_EQ(installation_.serverRecord(), kCorrected);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Release rilevata: 10.70.00"));
}

TEST_F(DovraCorrection, RecordAlreadyCorrectedIsLeftAlone) {
  release("10.70.00");
  installation_.putServerRecord("[ZB]\r\nversion=09.93.00\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), "[ZB]\r\nversion=09.93.00\r\n");
  EXPECT_EQ(clientRecord(), kCorrected);
  EXPECT_THAT(
      lines(),
      Not(Contains("Gestione ProdTrelv - Inizio correzione file di versione server per Dovra")));
}

TEST_F(DovraCorrection, OtherProductsOfTheRecordSurvive) {
  release("10.70.00");
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  correct();
  EXPECT_EQ(installation_.serverRecord(), std::string("[KXK]\r\nversion=01.00\r\n") + kCorrected);
}

TEST_F(DovraCorrection, MissingOrEmptyReleaseFileIsOneLineAndTheStepsGoOn) {
  correct();
  release("");
  correct();
  EXPECT_EQ(
      program().logText(),
      R"(Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Impossibile trovare il file: S:\Lumo\prg\etc\dvrel)
Gestione ProdTrelv - Prodotto Dovra riconosciuto
Gestione ProdTrelv - Verifica del valore del file: S:\Lumo\prg\etc\dvrel
Gestione ProdTrelv - Release rilevata: 
Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Lettura oltre la fine del file: S:\Lumo\prg\etc\dvrel)
Gestione ProdTrelv - Prodotto Dovra riconosciuto
Gestione ProdTrelv - Verifica del valore del file: S:\Lumo\prg\etc\dvrel
Gestione ProdTrelv - Release rilevata: 
)");
}

TEST_F(DovraCorrection, RecordThatCannotBeWrittenIsOneLineAndTheOtherIsCorrected) {
  release("10.70.00");
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  share().setReadOnly(Installation::kServerRecord);
  correct();
  EXPECT_EQ(installation_.serverRecord(), "[KXK]\r\nversion=01.00\r\n");
  EXPECT_EQ(clientRecord(), kCorrected);
  ASSERT_EQ(lines().size(), 7U);
  EXPECT_EQ(lines()[5],
            "Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Impossibile correggere "
            "le versioni nel file: S:\\Lumo\\prg\\etc\\agdvver.ini)");
}

TEST_F(DovraCorrection, OnlyHappensWhereTheHostIsDovra) {
  release("10.70.00");
  updateAll();
  EXPECT_FALSE(share().exists(Installation::kServerRecord));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Prodotto Dovra riconosciuto")));
  program().state.startup.pluginProduct = PluginProduct::Dovra;
  updateAll();
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
  program().state.startup.pluginProduct = PluginProduct::Dovra;
  updateAll();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lato Server la versione: 09.93.00.00 è "
                                "minore o uguale a quella corrente: 09.93.00.00"));
}

}  // namespace
}  // namespace trelv::tests
