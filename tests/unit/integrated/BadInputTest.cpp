// Whole starts of the real program with damaged or hostile files: the requested program starts, the
// log tells what happened, nothing else is touched.

#include <algorithm>

#include "platform/XmlStore.h"
#include "support/RealProgram.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

constexpr const char* kClosing =
    "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari";
constexpr const char* kNotConfigured =
    "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: NERIO";

/// Two products whose set-ups wait: NERIO's are a (server) and b (client), ZB's c and d. A start
/// asks for NERIO's program.
class BadInput : public StationTest {
 public:
  BadInput() {
    installation_.putCatalogue({kNerio, kBilancio});
    configureNerio("S:\\Lumo\\a.exe");
    configure("zb.ini", "01.00", "S:\\Lumo\\c.exe", "S:\\Lumo\\d.exe");
    installation_.putPrograms({"a", "b", "c", "d", "nerio", "nuovi file\\a"});
  }

  void configure(const std::string& conf, const std::string& version, const std::string& server,
                 const std::string& client) {
    installation_.putConfiguration(conf,
                                   configurationText({{"Setup01", version, {server}, {client}}},
                                                     {"NERIO=%PATHSETUP%\\nerio.exe"}));
  }
  void configureNerio(const std::string& server, const std::string& version = "01.00") {
    configure("nerio.ini", version, server, "S:\\Lumo\\b.exe");
  }
  void putCatalogueBytes(const std::string& bytes) { share().put(Installation::kCatalogue, bytes); }
  void putNerioAt(const std::string& conf) {
    installation_.putCatalogue({{"NERIO", "Nerio", conf}, kBilancio});
  }

  /// One start; gives its log lines.
  std::vector<std::string> start(const std::string& arguments = "") {
    RealProgram program(machine());
    program.run("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO" + arguments);
    return program.logLines();
  }
  /// Names of the programs that ran, with blanks between.
  std::string programs() {
    std::vector<std::string> names = without("S:\\Lumo\\", started());
    for (std::string& name : names) {
      name = name.substr(0, name.rfind(".exe"));
    }
    return joined(names);
  }

  const ProductEntry kNerio{"NERIO", "Nerio", "nerio.ini"};
  const ProductEntry kBilancio{"ZB", "Bilancio", "zb.ini"};
};

// --- Catalogue, configuration, commands

/// What is damaged; the programs that ran, a line that tells it (every start tells its end too).
struct Damage : Row {
  void (*arrange)(BadInput&);
  const char* programs;
  std::string line = kClosing;
  bool ended = true;
};

std::string binary() {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) {
    bytes += static_cast<char>((i * 7 + i / 256) & 0xFF);
  }
  return bytes;
}

std::string inUtf16(const std::string& text) {
  std::string bytes = "\xFF\xFE";
  for (const char c : text) {
    bytes += c;
    bytes += '\0';
  }
  return bytes;
}

std::string tenMegabytes(std::string bytes) {
  while (bytes.size() < 10U * 1024U * 1024U) {
    bytes += "; " + std::string(1000, 'x') + "\r\n";
  }
  return bytes;
}

const std::string kMissing =
    "Gestione ProdTrelv - Prodotto non rilevato, file di config non presente S:\\Lumo\\";
const std::string kNotRun = "Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\";

const std::vector<Damage> kDamages{
    {"MissingCatalogue", [](BadInput& t) { t.share().removeTree(Installation::kCatalogue); }, "",
     kNotConfigured},
    {"EmptyCatalogue", [](BadInput& t) { t.putCatalogueBytes(""); }, "", kNotConfigured},
    {"BinaryCatalogue", [](BadInput& t) { t.putCatalogueBytes(binary()); }, "", kNotConfigured},
    // Read as the platform does.
    {"CatalogueInUtf16",
     [](BadInput& t) { t.putCatalogueBytes(inUtf16(catalogueText({t.kNerio}))); }, "a b nerio"},
    {"CatalogueOfTenMegabytes",
     [](BadInput& t) {
       t.putCatalogueBytes(tenMegabytes(catalogueText({t.kNerio, t.kBilancio})));
     },
     "a b c d nerio"},
    // It is read as it is joined.
    {"ConfigurationPathThatLeavesTheServer",
     [](BadInput& t) {
       t.putNerioAt("..\\altro\\nerio.ini");
       t.share().put("S:\\altro\\nerio.ini",
                     configurationText({{"Setup01", "01.00", {"S:\\Lumo\\a.exe"}, {}}}));
     },
     "a c d", kNotConfigured},
    {"ConfigurationPathThatIsAFolder", [](BadInput& t) { t.putNerioAt("prg"); }, "c d",
     kMissing + "prg"},
    {"ConfigurationPathThatLeadsNowhere", [](BadInput& t) { t.putNerioAt("manca\\n.ini"); }, "c d",
     kMissing + "manca\\n.ini"},
    {"SectionVersionThatIsNoNumber",
     [](BadInput& t) { t.configureNerio("S:\\Lumo\\a.exe", "ultima"); }, "c d nerio",
     "Gestione ProdTrelv - Lato Server la versione: ultima è minore o uguale a quella corrente: "},
    {"CommandThatDoesNotExist", [](BadInput& t) { t.configureNerio("S:\\Lumo\\manca.exe"); },
     "b c d nerio", kNotRun + "manca.exe"},
    {"CommandThatIsAFolder", [](BadInput& t) { t.configureNerio("S:\\Lumo\\prg"); }, "b c d nerio",
     kNotRun + "prg"},
    // What the platform finds is started.
    {"CommandThatLacksItsQuotes",
     [](BadInput& t) { t.configureNerio("S:\\Lumo\\nuovi file\\a.exe"); },
     "nuovi file\\a b c d nerio"},
    {"LockThatIsAFolder", [](BadInput& t) { t.share().makeFolders(Installation::kServerLock); },
     "nerio",
     "Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\a.exe (Autorizzazione negata: "
     "S:\\Lumo\\prg\\tempterm\\agdv.lck)",
     false}};

class DamagedStart : public BadInput, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedStart, RunsWhatItCanAndTellsTheRest) {
  GetParam().arrange(*this);
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(GetParam().line));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), kClosing), GetParam().ended ? 1 : 0);
  EXPECT_EQ(programs(), GetParam().programs);
}

INSTANTIATE_TEST_SUITE_P(By, DamagedStart, testing::ValuesIn(kDamages), NameOfRow());

TEST_F(BadInput, CommandThatDoesNotExistIsReportedAndNotRecorded) {
  configureNerio("S:\\Lumo\\manca.exe");
  start();
  EXPECT_THAT(machine().desktop().shownForms(), ElementsAre("frmError"));
  EXPECT_EQ(station_.serverVersion("NERIO"), "");
  EXPECT_EQ(station_.clientVersion("NERIO"), "01.00");
}

TEST_F(BadInput, SectionVersionOfFortyDigitsRunsOnce) {
  configureNerio("S:\\Lumo\\a.exe", std::string(40, '9'));
  start();
  EXPECT_EQ(station_.serverVersion("NERIO"), std::string(40, '9'));
  const std::size_t before = started().size();
  start();
  EXPECT_EQ(started().size(), before + 1);
}

TEST_F(BadInput, RecordedVersionThatIsNoNumberIsUpdated) {
  installation_.putConfiguration(
      "nerio.ini", configurationText({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}}));
  installation_.putServerRecord("[NERIO]\r\nversion=???\r\n");
  start();
  EXPECT_THAT(started(), Contains("S:\\Lumo\\a.exe"));
  EXPECT_EQ(station_.serverVersion("NERIO"), "01.00");
}

// --- Version record

constexpr const char* kNotRecorded =
    "Gestione ProdTrelv - Errore in GestioneProdottiComplementari (Impossibile registrare la "
    "versione 01.00 di NERIO nel file: S:\\Lumo\\prg\\etc\\agdvver.ini)";

TEST_F(BadInput, ReadOnlyVersionRecordMakesEveryStartRepeat) {
  installation_.putServerRecord("[KXK]\r\nversion=01.00\r\n");
  share().setReadOnly(Installation::kServerRecord);
  EXPECT_THAT(start(), IsSupersetOf({kClosing, kNotRecorded}));
  EXPECT_EQ(installation_.serverRecord(), "[KXK]\r\nversion=01.00\r\n");
  EXPECT_EQ(station_.clientVersion("NERIO"), "01.00");
  start();
  EXPECT_EQ(programs(), "a b c d nerio a c nerio");
}

TEST_F(BadInput, LockedVersionRecordIsLeftAsItIs) {
  installation_.putServerRecord("[NERIO]\r\nversion=01.00\r\n");
  share().holdOpen(Installation::kServerRecord, sim::Sharing::None);
  EXPECT_THAT(start(), IsSupersetOf({kClosing, kNotRecorded}));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe ");
  share().release(Installation::kServerRecord);
  EXPECT_EQ(installation_.serverRecord(), "[NERIO]\r\nversion=01.00\r\n");
}

// --- Share, disk, rights

TEST_F(BadInput, ShareThatVanishesDuringACommandEndsQuietly) {
  share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    share().disconnect();
    return 0U;
  });
  const std::vector<std::string> lines = start();
  EXPECT_THAT(lines, Contains(HasSubstr("Tipo=Setup - Oggetto=Server - Comando=S:\\Lumo\\a.exe")));
  EXPECT_EQ(lines.back(), kNotConfigured);
  EXPECT_EQ(programs(), "a");
  share().reconnect();
  EXPECT_EQ(station_.clientVersion("NERIO"), "");
}

TEST_F(BadInput, FullDiskOfTheLogLosesLinesAndNothingElse) {
  disk().setCapacity(disk().usedBytes() + 200);
  configure("nerio.ini", "01.00", "S:\\Lumo\\a.exe", "");
  installation_.putConfiguration("zb.ini", configurationText({}));
  EXPECT_THAT(start(), Not(Contains(kClosing)));
  EXPECT_EQ(programs(), "a nerio");
  EXPECT_EQ(station_.serverVersion("NERIO"), "01.00");
}

TEST_F(BadInput, UserWithoutRightsGetsBoxesAndTheProgram) {
  machine().system().setAdministrator(false);
  EXPECT_THAT(start(), Contains(kClosing));
  EXPECT_THAT(boxes(), SizeIs(4));
  EXPECT_EQ(programs(), "nerio");
  EXPECT_EQ(station_.serverVersion("NERIO"), "");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(machine().fileExists(Station::kClientLock));
}

// --- Command line

TEST_F(BadInput, CommandLineWithALoneQuoteTakesTheRestAsOneArgument) {
  EXPECT_THAT(start(" \"archivio 2026 resto"), Contains(kClosing));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe archivio 2026 resto");
}

TEST_F(BadInput, CommandLineOfThirtyTwoThousandCharactersReachesTheProgram) {
  const std::string rest(32000, 'x');
  EXPECT_THAT(start(" " + rest), Contains(kClosing));
  EXPECT_EQ(started().back(), "S:\\Lumo\\nerio.exe " + rest);
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
 public:
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
    EXPECT_THAT(start(), Contains("Gestione ProdTrelv - Integrazione disponibile ma su altro "
                                  "server - Impossibile proseguire"));
    EXPECT_THAT(machine().desktop().shownForms(), ElementsAre("frmError"));
    EXPECT_THAT(boxes(), SizeIs(1));
    EXPECT_EQ(programs(), "nerio");
    EXPECT_EQ(machine().fileText(kStoreFile), bytes);
  }

  XmlStore store_{machine().machine().files, machine().machine().registry,
                  machine().machine().locale, machine().machine().system,
                  machine().machine().exclusion};
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

std::string entitiesThatMultiply() {
  std::string entities = "<!ENTITY a \"S:\\Lumo\">";
  for (char name = 'b'; name <= 'j'; ++name) {
    const char inner = static_cast<char>(name - 1);
    entities += std::string("<!ENTITY ") + name + " \"";
    for (int i = 0; i < 10; ++i) {
      entities += std::string("&") + inner + ";";
    }
    entities += "\">";
  }
  return "<!DOCTYPE configuration [" + entities + "]>" + storeText("&j;");
}

TEST_F(BadStore, Empty) { expectRefused(""); }
TEST_F(BadStore, Truncated) { expectRefused(storeText("S:\\Lumo").substr(0, 100)); }
TEST_F(BadStore, IllFormed) { expectRefused("<configuration></product></configuration>"); }
TEST_F(BadStore, Huge) { expectRefused(storeText("S:\\Lumo") + std::string(5U << 20U, ' ')); }
TEST_F(BadStore, WithEntitiesThatMultiply) { expectRefused(entitiesThatMultiply()); }

}  // namespace
}  // namespace trelv::tests
