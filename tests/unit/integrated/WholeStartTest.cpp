// Whole starts of the real program on a simulated workstation, their run log compared line by line.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WholeStart : public testing::Test {
 protected:
  WholeStart() { putFiveProducts(installation_); }

  /// The run log of one start, dates taken off.
  std::string logOf(const std::string& arguments) {
    RealProgram program(station_.machine());
    program.run(arguments);
    std::string text;
    for (const std::string& line : program.logLines()) {
      text += line + "\n";
    }
    return text;
  }

  void putPrograms() {
    for (const char* const path : {"nerio\\nerio.exe", "zb\\mvbil.exe", "q2\\q2.exe"}) {
      installation_.share().putProgram("S:\\Lumo\\mv\\" + std::string(path));
    }
  }

  Installation installation_;
  Station station_{installation_};
};

TEST_F(WholeStart, ThatFindsNothingToDo) {
  putPrograms();
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL azienda 12"),
            R"(IsWin2008Server = Falso
IsWin2008TS = Falso
Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\Lumo S:\Lumo MVBIL azienda 12	 Numero parametri = 6
Gestione prodTrelv - Analisi linea di comando effettuata
Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  6 (INTEGRATEDRUN S:\Lumo S:\Lumo MVBIL azienda 12)
Gestione ProdTrelv - Inizio procedura
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\Lumo
Gestione ProdTrelv - Verifica Esistenza Travolin
Suite travolin non trovata 
Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\Lumo
Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone rilevato
Gestione ProdTrelv - Inizio gestione anomalia Corvel
Gestione ProdTrelv - Ambiente Terminal Server non rilevato, nessuna gestione anomalia TS Corvel
Gestione ProdTrelv - Inizio Gestione Anomalia Nerio
Gestione ProdTrelv - copia file ini mancante da: S:\Lumo\mv\nerio\nerio.ini a: c:\windows\nerio.ini
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio
Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia ZM
Gestione ProdTrelv - Inizio Gestione anomalia Luda
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda
Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Server la versione: 03.20.30.00 è minore o uguale a quella corrente: 03.20.30.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 03.20.30.00 è minore o uguale a quella corrente: 03.20.30.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Server la versione: 07.10.00.00 è minore o uguale a quella corrente: 07.10.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 07.10.00.00 è minore o uguale a quella corrente: 07.10.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Server la versione: 09.93.00.00 è minore o uguale a quella corrente: 09.93.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 09.93.00.00 è minore o uguale a quella corrente: 09.93.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Server la versione: 02.92.00.00 è minore o uguale a quella corrente: 02.92.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 02.92.00.00 è minore o uguale a quella corrente: 02.92.00.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Server la versione: 06.50.30.00 è minore o uguale a quella corrente: 06.50.30.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 06.50.30.00 è minore o uguale a quella corrente: 06.50.30.00
Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari
Gestione ProdTrelv - Esecuzione di: S:\Lumo\mv\zb\mvbil.exe azienda 12
)");
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\mv\\zb\\mvbil.exe azienda 12"));
  EXPECT_THAT(station_.machine().boxes(), IsEmpty());
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), deliveredVersions());
}

TEST_F(WholeStart, ThatInstallsFiveProductsForTheFirstTime) {
  station_.forgetIntegration();
  station_.machine().removeTree("C:\\Users\\mario\\Temp\\log");
  installation_.share().removeTree("S:\\Lumo\\prg\\tempterm");
  installation_.share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  installation_.share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo Q2"),
            R"(Creazione path avvenuta correttamente:C:\Users\mario\Temp\log
IsWin2008Server = Falso
IsWin2008TS = Falso
Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\Lumo S:\Lumo Q2	 Numero parametri = 4
Gestione prodTrelv - Analisi linea di comando effettuata
Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  4 (INTEGRATEDRUN S:\Lumo S:\Lumo Q2)
Gestione ProdTrelv - Inizio procedura
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP non rilevata
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP non rilevata
Gestione ProdTrelv - scrittura integrazione su macchina: S:\Lumo
Gestione ProdTrelv - Verifica Esistenza Travolin
Suite travolin non trovata 
Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\Lumo
Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone rilevato
Gestione ProdTrelv - Preparazione installazione server Tarsena2
Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione server Zeltobilancio
Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione server/client Nerio
Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono componenti registrate preesistenti
Gestione ProdTrelv - Preparazione installazione client Tarsena2
Gestione ProdTrelv - PreparaInstClientTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Gestione ProdTrelv - Preparazione installazione client Zeltobilancio
Gestione ProdTrelv - PreparaInstClientBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientBilancio CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Gestione ProdTrelv - Preparazione installazione server/client Nerio
Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono componenti registrate preesistenti
Gestione ProdTrelv - Inizio gestione anomalia Corvel
Gestione ProdTrelv - Ambiente Terminal Server non rilevato, nessuna gestione anomalia TS Corvel
Gestione ProdTrelv - Inizio Gestione Anomalia Nerio
Gestione ProdTrelv - copia file ini mancante da: S:\Lumo\mv\nerio\nerio.ini a: c:\windows\nerio.ini
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio
Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia ZM
Gestione ProdTrelv - Inizio Gestione anomalia Luda
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda
Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)
Gestione ProdTrelv - Prodotto Dovra riconosciuto
Gestione ProdTrelv - Verifica del valore del file: S:\Lumo\prg\etc\dvrel
Gestione ProdTrelv - Release rilevata: 11.20.00
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Creazione path avvenuta correttamente:S:\Lumo\prg\tempterm
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\nerio\server.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=S:\Lumo\prg\com\setup\aggdovra\nerio\server.exe -S
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\nerio\client.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Client - Comando=S:\Lumo\prg\com\setup\aggdovra\nerio\client.exe -S
Cancellazione file: C:\Lumo\Clientagdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\luda\server.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=S:\Lumo\prg\com\setup\aggdovra\luda\server.exe -S
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\luda\client.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Client - Comando=S:\Lumo\prg\com\setup\aggdovra\luda\client.exe -S
Cancellazione file: C:\Lumo\Clientagdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\zb\server.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=S:\Lumo\prg\com\setup\aggdovra\zb\server.exe -S
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\zb\client.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Client - Comando=S:\Lumo\prg\com\setup\aggdovra\zb\client.exe -S
Cancellazione file: C:\Lumo\Clientagdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\q2\server.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=S:\Lumo\prg\com\setup\aggdovra\q2\server.exe -S
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\q2\client.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Client - Comando=S:\Lumo\prg\com\setup\aggdovra\q2\client.exe -S
Cancellazione file: C:\Lumo\Clientagdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\zm\server.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=S:\Lumo\prg\com\setup\aggdovra\zm\server.exe -S
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\prg\com\setup\aggdovra\zm\client.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Client - Comando=S:\Lumo\prg\com\setup\aggdovra\zm\client.exe -S
Cancellazione file: C:\Lumo\Clientagdv.lck effettuata con successo
Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari
Gestione ProdTrelv - Esecuzione di: S:\Lumo\mv\q2\q2.exe 
)");
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), deliveredVersions());
  EXPECT_EQ(station_.commandLines().back(), "S:\\Lumo\\mv\\q2\\q2.exe ");
  EXPECT_EQ(station_.commandLines().size(), 11U);
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(station_.machine().fileExists(Station::kClientLock));
}

TEST_F(WholeStart, ThatUpdatesOneProductOnBothSides) {
  putPrograms();
  installation_.putCatalogue({{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"}});
  installation_.putServerRecord("[NERIO]\r\nversion=03.00.00.00\r\n");
  station_.putClientRecord("[NERIO]\r\nversion=03.20.30.00\r\n");
  EXPECT_EQ(logOf("integratedrun \"s:\\lumo\" S:\\Lumo NERIO"),
            R"(IsWin2008Server = Falso
IsWin2008TS = Falso
Gestione ProdTrelv - Linea di comando ArgV = integratedrun "s:\lumo" S:\Lumo NERIO	 Numero parametri = 4
Gestione prodTrelv - Analisi linea di comando effettuata
Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  4 (integratedrun "s:\lumo" S:\Lumo NERIO)
Gestione ProdTrelv - Inizio procedura
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\Lumo
Gestione ProdTrelv - Verifica Esistenza Travolin
Suite travolin non trovata 
Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\Lumo
Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone rilevato
Gestione ProdTrelv - Preparazione installazione server Tarsena2
Gestione ProdTrelv - PreparaInstSrvTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione server Zeltobilancio
Gestione ProdTrelv - PreparaInstSrvBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - Preparazione installazione client Tarsena2
Gestione ProdTrelv - PreparaInstClientTarsena2 WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientTarsena2 CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientTarsena2 SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Aggiornamento ini della windir caso installazione Tarsena Client
Gestione ProdTrelv - Preparazione installazione client Zeltobilancio
Gestione ProdTrelv - PreparaInstClientBilancio WritePrivateProfileString Byte scritti = 1
Gestione ProdTrelv - PreparaInstClientBilancio CreateKey SOFTWARE\LUMO\Programmi  True
Gestione ProdTrelv - PreparaInstClientBilancio SetKeyValue SOFTWARE\LUMO\Programmi PathLocale   True
Aggiornamento ini della windir caso installazione Bilancio Client
Gestione ProdTrelv - Inizio gestione anomalia Corvel
Gestione ProdTrelv - Ambiente Terminal Server non rilevato, nessuna gestione anomalia TS Corvel
Gestione ProdTrelv - Inizio Gestione Anomalia Nerio
Gestione ProdTrelv - copia file ini mancante da: S:\Lumo\mv\nerio\nerio.ini a: c:\windows\nerio.ini
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Nerio
Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia ZM
Gestione ProdTrelv - Inizio Gestione anomalia Luda
Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda
Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "s:\lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "s:\lumo\prg\com\setup\aggdovra\nerio\update.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - Oggetto=Server - Comando=s:\lumo\prg\com\setup\aggdovra\nerio\update.exe -S
Cancellazione file: s:\lumo\prg\tempterm\agdv.lck effettuata con successo
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "s:\lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Lato Client la versione: 03.20.30.00 è minore o uguale a quella corrente: 03.20.30.00
Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari
Gestione ProdTrelv - Esecuzione di: S:\Lumo\mv\nerio\nerio.exe 
)");
  EXPECT_EQ(installation_.serverRecord(), "[NERIO]\r\nversion=03.20.30.00\r\n");
}

TEST_F(WholeStart, ThatIsRefusedStillStartsTheProgram) {
  putPrograms();
  station_.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                         "T:\\Altro");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO"),
            R"(IsWin2008Server = Falso
IsWin2008TS = Falso
Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\Lumo S:\Lumo NERIO	 Numero parametri = 4
Gestione prodTrelv - Analisi linea di comando effettuata
Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  4 (INTEGRATEDRUN S:\Lumo S:\Lumo NERIO)
Gestione ProdTrelv - Inizio procedura
Gestione ProdTrelv - Verifica integrazione con Dovra SP
Gestione ProdTrelv - Integrazione Dovra SP rilevata con: T:\Altro
Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile proseguire
Gestione ProdTrelv - Esecuzione di: S:\Lumo\mv\nerio\nerio.exe 
)");
  EXPECT_EQ(station_.machine().boxes().size(), 1U);
}

TEST_F(WholeStart, RepeatedStartChangesNothing) {
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  const std::string server = installation_.share().tree();
  const std::string record = station_.machine().fileText(Station::kClientRecord);
  const std::size_t before = station_.commandLines().size();
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  EXPECT_EQ(installation_.share().tree(), server);
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), record);
  EXPECT_EQ(station_.commandLines().size(), before + 1);
}

}  // namespace
}  // namespace trelv::tests
