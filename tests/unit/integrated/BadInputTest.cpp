// Whole starts of the real program with damaged or hostile files: the requested program starts, the
// log tells what happened, nothing else is touched.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/XmlStore.h"
#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char* kClosing =
    "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari";
constexpr const char* kNotConfigured =
    "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: NERIO";

class BadInput : public testing::Test {
 protected:
  BadInput() {
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"}, {"ZB", "Bilancio", "zb.ini"}});
    configure("nerio.ini", "S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe");
    configure("zb.ini", "S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe");
    for (const char* const name : {"a", "b", "c", "d", "nerio"}) {
      installation_.share().putProgram("S:\\Lumo\\" + std::string(name) + ".exe");
    }
  }

  void configure(const std::string& conf, const std::string& server, const std::string& client,
                 const std::string& version = "01.00") {
    installation_.putConfiguration(conf,
                                   configurationText({{"Setup01", version, {server}, {client}}},
                                                     {"NERIO=%PATHSETUP%\\nerio.exe"}));
  }

  /// One start; gives its log lines.
  std::vector<std::string> start() {
    RealProgram program(station_.machine());
    program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
    return program.logLines();
  }

  std::vector<std::string> started() { return station_.commandLines(); }
  sim::SimMachine& machine() { return station_.machine(); }

  Installation installation_;
  Station station_{installation_};
};

// --- Catalogue

TEST_F(BadInput, MissingCatalogue) {
  installation_.share().removeTree(Installation::kCatalogue);
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(kClosing));
  EXPECT_EQ(lines.back(), kNotConfigured);
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(BadInput, EmptyCatalogue) {
  installation_.share().put(Installation::kCatalogue, "");
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(BadInput, BinaryCatalogue) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) {
    bytes += static_cast<char>((i * 7 + i / 256) & 0xFF);
  }
  installation_.share().put(Installation::kCatalogue, bytes);
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(BadInput, CatalogueInUtf16IsReadAsThePlatformDoes) {
  std::string bytes = "\xFF\xFE";
  for (const char c : std::string("[prod01]\r\nid=NERIO\r\nname=Nerio\r\nconf=nerio.ini\r\n")) {
    bytes += c;
    bytes += '\0';
  }
  installation_.share().put(Installation::kCatalogue, bytes);
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", "S:\\Lumo\\nerio.exe "));
}

TEST_F(BadInput, CatalogueOfTenMegabytes) {
  std::string bytes = installation_.share().text(Installation::kCatalogue);
  while (bytes.size() < 10U * 1024U * 1024U) {
    bytes += "; " + std::string(1000, 'x') + "\r\n";
  }
  installation_.share().put(Installation::kCatalogue, bytes);
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(started(), SizeIs(5));
}

TEST_F(BadInput, ConfigurationPathThatLeavesTheServerIsReadAsItIsJoined) {
  installation_.putCatalogue({{"NERIO", "Nerio", "..\\altro\\nerio.ini"}});
  installation_.share().put("S:\\altro\\nerio.ini",
                            configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {}}}));
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
}

TEST_F(BadInput, ConfigurationPathThatIsAFolder) {
  installation_.putCatalogue({{"NERIO", "Nerio", "prg"}, {"ZB", "Bilancio", "zb.ini"}});
  EXPECT_THAT(start(), Contains("Gestione ProdTrelv - Prodotto non rilevato, file di config non "
                                "presente S:\\Lumo\\prg"));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe"));
}

TEST_F(BadInput, ConfigurationPathThatLeadsNowhere) {
  installation_.putCatalogue({{"NERIO", "Nerio", "manca\\n.ini"}, {"ZB", "Bilancio", "zb.ini"}});
  EXPECT_THAT(start(), Contains("Gestione ProdTrelv - Prodotto non rilevato, file di config non "
                                "presente S:\\Lumo\\manca\\n.ini"));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe"));
}

// --- Versions

TEST_F(BadInput, SectionVersionThatIsNoNumberNeverRuns) {
  configure("nerio.ini", "S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", "ultima");
  EXPECT_THAT(start(), Contains("Gestione ProdTrelv - Lato Server la versione: ultima è minore o "
                                "uguale a quella corrente: "));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe", "S:\\Lumo\\nerio.exe "));
}

TEST_F(BadInput, SectionVersionOfFortyDigitsRunsOnce) {
  configure("nerio.ini", "S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", std::string(40, '9'));
  start();
  EXPECT_EQ(station_.serverVersion("NERIO"), std::string(40, '9'));
  const std::size_t before = started().size();
  start();
  EXPECT_EQ(started().size(), before + 1);
}

TEST_F(BadInput, RecordedVersionThatIsNoNumberIsUpdated) {
  installation_.putConfiguration("nerio.ini",
                                 configurationText({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}},
                                                   {"NERIO=%PATHSETUP%\\nerio.exe"}));
  installation_.putServerRecord("[NERIO]\r\nversion=???\r\n");
  start();
  EXPECT_THAT(started(), Contains("S:\\Lumo\\a.exe"));
  EXPECT_EQ(station_.serverVersion("NERIO"), "01.00");
}

// --- Commands

TEST_F(BadInput, CommandThatDoesNotExistIsReportedAndTheRestGoesOn) {
  configure("nerio.ini", "S:\\Lumo\\manca.exe", "S:\\Lumo\\b.exe");
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines,
              Contains("Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\manca.exe"));
  EXPECT_THAT(machine().desktop().shownForms(), ElementsAre("frmError"));
  EXPECT_EQ(station_.serverVersion("NERIO"), "");
  EXPECT_EQ(station_.clientVersion("NERIO"), "01.00");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\b.exe", "S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe",
                                     "S:\\Lumo\\nerio.exe "));
}

TEST_F(BadInput, CommandThatIsAFolder) {
  configure("nerio.ini", "S:\\Lumo\\prg", "S:\\Lumo\\b.exe");
  EXPECT_THAT(start(),
              Contains("Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\prg"));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe ");
}

TEST_F(BadInput, CommandThatLacksItsQuotesStartsWhatThePlatformFinds) {
  installation_.share().putProgram("S:\\Lumo\\nuovi file\\a.exe");
  configure("nerio.ini", "S:\\Lumo\\nuovi file\\a.exe -S", "S:\\Lumo\\b.exe");
  start();
  EXPECT_EQ(machine().started()[0].program, "S:\\Lumo\\nuovi file\\a.exe");
}

// --- Version record

TEST_F(BadInput, ReadOnlyVersionRecordMakesEveryStartRepeat) {
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  installation_.share().setReadOnly(Installation::kServerRecord);
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(kClosing));
  EXPECT_THAT(lines, Contains("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                              "(Impossibile registrare la versione 01.00 di NERIO nel file: "
                              "S:\\Lumo\\prg\\etc\\agdvver.ini)"));
  EXPECT_EQ(installation_.serverRecord(), "[KXK]\r\nversion=01.00\r\n");
  EXPECT_EQ(station_.clientVersion("NERIO"), "01.00");
  start();
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe", "S:\\Lumo\\c.exe",
                                     "S:\\Lumo\\d.exe", "S:\\Lumo\\nerio.exe ", "S:\\Lumo\\a.exe",
                                     "S:\\Lumo\\c.exe", "S:\\Lumo\\nerio.exe "));
}

TEST_F(BadInput, LockedVersionRecordIsLeftAsItIs) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00\r\n");
  installation_.share().holdOpen(Installation::kServerRecord, sim::Sharing::None);
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(kClosing));
  EXPECT_THAT(lines, Contains("Gestione ProdTrelv - Errore in GestioneProdottiComplementari "
                              "(Impossibile registrare la versione 01.00 di NERIO nel file: "
                              "S:\\Lumo\\prg\\etc\\agdvver.ini)"));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe ");
  installation_.share().release(Installation::kServerRecord);
  EXPECT_EQ(installation_.serverRecord(), "[NERIO]\r\nversion=01.00\r\n");
}

// --- Share, lock, disk, rights

TEST_F(BadInput, ShareThatVanishesDuringACommandEndsQuietly) {
  installation_.share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    installation_.share().disconnect();
    return 0U;
  });
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(HasSubstr("Tipo=Setup - Oggetto=Server - Comando=S:\\Lumo\\a.exe")));
  EXPECT_EQ(lines.back(), kNotConfigured);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
  installation_.share().reconnect();
  EXPECT_EQ(station_.clientVersion("NERIO"), "");
}

TEST_F(BadInput, LockThatIsAFolderStopsTheUpdatesAndStartsTheProgram) {
  installation_.share().makeFolders(Installation::kServerLock);
  EXPECT_THAT(start(), Contains(HasSubstr("Gestione ProdTrelv - Comando non eseguito: "
                                          "S:\\Lumo\\a.exe (Autorizzazione negata: ")));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\nerio.exe "));
}

TEST_F(BadInput, FullDiskOfTheLogLosesLinesAndNothingElse) {
  station_.disk().setCapacity(station_.disk().usedBytes() + 200);
  installation_.putConfiguration("nerio.ini",
                                 configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {}}},
                                                   {"NERIO=%PATHSETUP%\\nerio.exe"}));
  installation_.putConfiguration("zb.ini", configurationText({}));
  EXPECT_THAT(start(), Not(Contains(kClosing)));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\nerio.exe "));
  EXPECT_EQ(station_.serverVersion("NERIO"), "01.00");
}

TEST_F(BadInput, UserWithoutRightsGetsBoxesAndTheProgram) {
  machine().system().setAdministrator(false);
  const std::vector<std::string> lines = start();
  EXPECT_THAT(machine().boxes(), SizeIs(4));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\nerio.exe "));
  EXPECT_THAT(lines, Contains(kClosing));
  EXPECT_EQ(station_.serverVersion("NERIO"), "");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(machine().fileExists(Station::kClientLock));
}

// --- Configuration store: ours, in the place of the host's

constexpr const char* kStoreFile = "C:\\Lumo\\Client\\lumoconf.xml";
constexpr const char* kStorePointers = "SOFTWARE\\LUMO\\Configurazione";

std::string storeText(const std::string& server) {
  return "<configuration><product name=\"SYSTEM\"><section name=\"Complementary_Products\"><key "
         "name=\"Integration\"><attribute name=\"Path\" type=\"1\">" +
         server + "</attribute></key></section></product></configuration>";
}

class BadStore : public BadInput {
 protected:
  BadStore() {
    setPointer("Schema", "C:\\Lumo\\Client\\lumoconf.xsd");
    setPointer("Config", kStoreFile);
    machine().putFile("C:\\Lumo\\Client\\lumoconf.xsd", "<schema/>");
    machine().useConfigurationLibrary(store_);
  }

  void setPointer(const std::string& name, const std::string& path) {
    machine().registry().setText(machine::Hive::LocalMachine, kStorePointers, name, path);
  }

  /// A store of these bytes is reported, refused like another server's and left as it is.
  void expectRefused(const std::string& bytes) {
    machine().putFile(kStoreFile, bytes);
    const std::vector<std::string> lines = start();
    EXPECT_THAT(machine().desktop().shownForms(), ElementsAre("frmError"));
    EXPECT_THAT(machine().boxes(), SizeIs(1));
    EXPECT_THAT(lines, Contains("Gestione ProdTrelv - Integrazione disponibile ma su altro server "
                                "- Impossibile proseguire"));
    EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\nerio.exe "));
    EXPECT_EQ(machine().fileText(kStoreFile), bytes);
  }

  XmlStore store_{machine().machine().files, machine().machine().registry,
                  machine().machine().locale};
};

TEST_F(BadStore, ThatIsWholeIsUsed) {
  machine().putFile(kStoreFile, storeText("S:\\Lumo"));
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(machine().desktop().shownForms(), IsEmpty());
  EXPECT_THAT(started(), SizeIs(5));
}

TEST_F(BadStore, WithoutPointersIsReportedAndEverythingElseIsDone) {
  setPointer("Schema", "");
  setPointer("Config", "");
  machine().putFile(kStoreFile, storeText("S:\\Altro"));
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains("Suite Lumo non trovata in registro: Errore riscontrato -4001"));
  EXPECT_THAT(lines, Contains(kClosing));
  EXPECT_THAT(machine().desktop().shownForms(), Contains("frmError"));
  EXPECT_THAT(started(), SizeIs(5));
  EXPECT_EQ(machine().fileText(kStoreFile), storeText("S:\\Altro"));
}

TEST_F(BadStore, Empty) { expectRefused(""); }

TEST_F(BadStore, Truncated) {
  const std::string whole = storeText("S:\\Lumo");
  expectRefused(whole.substr(0, whole.size() / 2));
}

TEST_F(BadStore, IllFormed) { expectRefused("<configuration></product></configuration>"); }

TEST_F(BadStore, Huge) {
  expectRefused(storeText("S:\\Lumo") + std::string(5U * 1024U * 1024U, ' '));
}

TEST_F(BadStore, WithEntitiesThatMultiply) {
  std::string entities = "<!ENTITY a \"S:\\Lumo\">";
  for (char name = 'b'; name <= 'j'; ++name) {
    const char inner = static_cast<char>(name - 1);
    entities += std::string("<!ENTITY ") + name + " \"";
    for (int i = 0; i < 10; ++i) {
      entities += std::string("&") + inner + ";";
    }
    entities += "\">";
  }
  expectRefused("<!DOCTYPE configuration [" + entities + "]>" + storeText("&j;"));
}

// --- Command line

TEST_F(BadInput, CommandLineWithALoneQuoteTakesTheRestAsOneArgument) {
  RealProgram program(station_.machine());
  program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO \"archivio 2026 resto");
  EXPECT_THAT(program.logLines(), Contains(kClosing));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe archivio 2026 resto");
}

TEST_F(BadInput, CommandLineOfThirtyTwoThousandCharactersReachesTheProgram) {
  const std::string rest(32000, 'x');
  RealProgram program(station_.machine());
  program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO " + rest);
  EXPECT_THAT(program.logLines(), Contains(kClosing));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe " + rest);
}

}  // namespace
}  // namespace trelv::tests
