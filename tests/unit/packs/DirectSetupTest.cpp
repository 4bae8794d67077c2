#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/DirectSetup.h"
#include "support/Installation.h"
#include "support/Matchers.h"
#include "support/Rows.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

constexpr const char* kCatalogue = "C:\\Work\\prg\\com\\setup\\aggdovra\\agdvcomp.ini";
constexpr const char* kStart =
    "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità standalone";

const ProductEntry kLuda{"LUDA", "Luda", "LUDA.ini"};
const ProductEntry kNerio{"NERIO", "Nerio", "NERIO.ini"};
const ProductEntry kBilancio{"ZB", "Bilancio", "ZB.ini"};
const ProductEntry kTarsena2{"Q2", "Tarsena2", "Q2.ini"};

/// Products unpacked below C:\Work on a machine that has none of them: Luda and Nerio are set up on
/// the server side then, Bilancio (ZB) and Tarsena2 (Q2) on both.
class DirectSetup : public testing::Test {
 protected:
  DirectSetup() {
    program_.state.startup.administrator = true;
    program_.state.startup.paths.programs = "C:\\Lumo\\Client";
    for (const char* const id : {"LUDA", "NERIO", "ZB", "Q2", "KXK", "VELTRA"}) {
      putProduct(id);
    }
  }

  /// A product whose set-up and update sections have one command for each side.
  void putProduct(const std::string& id) {
    std::string text;
    for (const char* const kind : {"Setup", "Update"}) {
      text += std::string("[") + kind + "01]\r\nversion=01.00\r\n";
      for (const char* const side : {"Server", "Client", "None"}) {
        const std::string program = "C:\\Work\\" + id + kind + side + ".exe";
        text += std::string(side) + "01=" + program + "\r\n";
        machine().programs().define(program);
      }
    }
    machine().putFile("C:\\Work\\" + id + ".ini", text);
  }
  void putCatalogue(const std::string& text) { machine().putFile(kCatalogue, text); }

  /// A direct set-up of these products (blanks between); gives what was started, C:\Work\ left
  /// out.
  std::vector<std::string> setUp(const std::string& selected) {
    for (const std::string& identifier : wordsOf(selected)) {
      program_.state.selectedProducts.push_back({identifier});
    }
    modProdTrelvManager::ExecuteDirectSetup(program_, "C:\\Work");
    return without("C:\\Work\\", machine().programs().startedCommandLines());
  }

  sim::SimMachine& machine() { return program_.sim; }
  const std::vector<std::string>& lines() { return program_.lines(); }

  FakeProgram program_;
};

// --- Catalogue and selection

/// What a catalogue and a selection (with blanks between) set up: the products that the log tells,
/// the programs that ran.
struct Walk : Row {
  std::string catalogue;
  const char* selected;
  const char* told;
  const char* started;
};

std::string hundredFiftyEntries() {
  std::vector<ProductEntry> entries(150, {"altro", "", "KXK.ini"});
  entries[99] = kLuda;
  entries[149] = kNerio;
  return catalogueText(entries);
}

const std::string kLudaAndNerio = catalogueText({kLuda, kNerio});

const std::vector<Walk> kWalks{
    {"RunsTheSelectedProductOnly", kLudaAndNerio, "LUDA", "LUDA", "LUDASetupServer.exe"},
    {"ReadsKeysAndSectionsInAnyCase", "[PROD01]\r\nID=LUDA\r\nCONF=LUDA.ini\r\n", "LUDA", "LUDA",
     "LUDASetupServer.exe"},
    {"EmptyConfSkipsItsSectionOnly", catalogueText({kLuda, {"KXK", "Kappa", ""}, kNerio}),
     "LUDA KXK NERIO", "LUDA NERIO", "LUDASetupServer.exe NERIOSetupServer.exe"},
    {"SectionWithNeitherIdNorNameEndsTheWalk", catalogueText({kLuda, {"", "", "KXK.ini"}, kNerio}),
     "LUDA NERIO", "LUDA", "LUDASetupServer.exe"},
    {"NameServesWhereIdIsEmpty", catalogueText({{"", "LUDA", "LUDA.ini"}}), "luda", "LUDA",
     "LUDASetupServer.exe"},
    {"NameDoesNotCountWhereIdIsGiven", catalogueText({{"NERIO", "LUDA", "NERIO.ini"}}), "LUDA", "",
     ""},
    {"IdentifierInLowerCaseMatchesOneInUpperCase", kLudaAndNerio, "luda", "LUDA",
     "LUDASetupServer.exe"},
    {"ProductOfBothSidesRunsOnTheServerSideFirst", catalogueText({kBilancio}), "ZB", "ZB",
     "ZBSetupServer.exe ZBSetupClient.exe"},
    {"ProductSelectedTwiceRunsTwice", kLudaAndNerio, "LUDA luda", "LUDA LUDA",
     "LUDASetupServer.exe LUDASetupServer.exe"},
    {"ProductListedTwiceRunsTwice", catalogueText({kLuda, kLuda}), "LUDA", "LUDA LUDA",
     "LUDASetupServer.exe LUDASetupServer.exe"},
    {"UnknownProductThatIsNotSelectedDoesNoHarm",
     catalogueText({{"ignoto", "", "LUDA.ini"}, kNerio}), "NERIO", "NERIO", "NERIOSetupServer.exe"},
    {"WalksBeyondAHundredSectionsAndEnds", hundredFiftyEntries(), "LUDA NERIO", "LUDA NERIO",
     "LUDASetupServer.exe NERIOSetupServer.exe"},
    {"SectionWithoutLeadingZeroIsNotRead", "[Prod1]\r\nId=LUDA\r\nconf=LUDA.ini\r\n", "LUDA", "",
     ""},
    {"MissingCatalogueRunsNothingAndEndsQuietly", "", "LUDA", "", ""},
    {"SelectedProductThatIsNotListedIsNotTold", kLudaAndNerio, "ZM", "", ""}};

class DirectSetupWalk : public DirectSetup, public testing::WithParamInterface<Walk> {};

TEST_P(DirectSetupWalk, SetsUp) {
  if (!GetParam().catalogue.empty()) {
    putCatalogue(GetParam().catalogue);
  }
  EXPECT_EQ(joined(setUp(GetParam().selected)), GetParam().started);
  EXPECT_EQ(lines().front(), kStart);
  EXPECT_EQ(joined(endsOf(lines(), "Gestione ProdTrelv - Lancio installazione ")), GetParam().told);
  EXPECT_EQ(lines().size() == 1, std::string(GetParam().told).empty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, DirectSetupWalk, testing::ValuesIn(kWalks), NameOfRow());

TEST_F(DirectSetup, TellsItsStepsInOrderAndEachOnce) {
  putCatalogue(catalogueText({kNerio}));
  setUp("NERIO");
  EXPECT_EQ(
      program_.logText(),
      R"(Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità standalone
Gestione ProdTrelv - File Ini Nerio locale non presente
Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate
Gestione ProdTrelv - Lancio installazione NERIO
Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "C:\Work\prg\com\setup\aggdovra"
Creazione path avvenuta correttamente:C:\Work\prg\tempterm
Gestione ProdTrelv - Esecuzione comando: "C:\Work\NERIOSetupServer.exe"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - Comando=C:\Work\NERIOSetupServer.exe
Cancellazione file: C:\Work\prg\tempterm\agdv.lck effettuata con successo
)");
}

TEST_F(DirectSetup, SelectionThatChangesMeanwhileCountsFromTheNextSectionOn) {
  putCatalogue(kLudaAndNerio);
  machine().programs().define("C:\\Work\\LUDASetupServer.exe", [&](sim::SimProcess&) {
    // Far more than before, so that what was selected moves to another place.
    program_.state.selectedProducts.assign(40, {"ZM"});
    program_.state.selectedProducts.push_back({"NERIO"});
    return 0U;
  });
  EXPECT_THAT(setUp("LUDA luda"),
              ElementsAre("LUDASetupServer.exe", "LUDASetupServer.exe", "NERIOSetupServer.exe"));
}

TEST_F(DirectSetup, SeesWhatASetupChangedInTheCatalogue) {
  putCatalogue(catalogueText({kLuda}));
  machine().programs().define("C:\\Work\\LUDASetupServer.exe", [&](sim::SimProcess&) {
    putCatalogue(kLudaAndNerio);
    return 0U;
  });
  EXPECT_THAT(setUp("LUDA NERIO"), ElementsAre("LUDASetupServer.exe", "NERIOSetupServer.exe"));
}

// --- Kind and side

TEST_F(DirectSetup, ServerRunThatStopsDoesNotKeepTheClientFromRunning) {
  putCatalogue(catalogueText({kBilancio}));
  machine().putFile("C:\\Work\\prg\\tempterm\\agdv.lck", "x");
  EXPECT_THAT(setUp("ZB"), ElementsAre("ZBSetupClient.exe"));
  EXPECT_EQ(machine().boxes().size(), 1U);
}

TEST_F(DirectSetup, ProductThatIsThereIsUpdatedOnItsSideWhateverItsVersion) {
  machine().putFile("C:\\WINDOWS\\LUDA.INI", "[LUDA]\r\nVersione=99.00\r\n");
  machine().registry().setText(machine::Hive::LocalMachine, "Software\\Lumo\\Programmi",
                               "PathLocale", "C:\\Prg");
  machine().putFile("C:\\Prg\\mv\\q2\\mvq2.ini", "[AMBIENTE]\r\nVRINST=02.00\r\n");
  putCatalogue(catalogueText({kLuda, kTarsena2}));
  EXPECT_THAT(setUp("LUDA Q2"), ElementsAre("LUDAUpdateServer.exe", "Q2UpdateClient.exe"));
}

TEST_F(DirectSetup, ProductWithoutASideRunsNothing) {
  putCatalogue(catalogueText({{"KXK", "", "KXK.ini"}}));
  machine().putFile("C:\\Work\\KXK.ini",
                    "[Setup01]\r\nversion=01\r\nServer01=C:\\Work\\KXKSetupServer.exe\r\n");
  EXPECT_THAT(setUp("KXK"), IsEmpty());
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lancio installazione KXK"));
}

TEST_F(DirectSetup, ProductWithoutACheckIsNotRunByTheRecordOfAnother) {
  putCatalogue(catalogueText({kLuda, {"VELTRA", "", "VELTRA.ini"}, kNerio}));
  EXPECT_THAT(setUp("LUDA VELTRA NERIO"),
              ElementsAre("LUDASetupServer.exe", "NERIOSetupServer.exe"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Prodotto senza verifica di presenza: VELTRA"));
}

TEST_F(DirectSetup, UndefinedProductIsNotRun) {
  putCatalogue(catalogueText({{"UNDEFINED", "", "LUDA.ini"}}));
  EXPECT_THAT(setUp("UNDEFINED"), IsEmpty());
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Prodotto senza verifica di presenza: UNDEFINED"));
}

TEST_F(DirectSetup, LeavesTheRecordOfTheLastProduct) {
  putCatalogue(kLudaAndNerio);
  setUp("LUDA");
  EXPECT_EQ(program_.state.inventory.product.productCode, Product::Luda);
}

// --- Commands and failures

TEST_F(DirectSetup, CommandsLoseTheirArgumentsAndSeeTheRootAsBothPaths) {
  machine().programs().define("C:\\Work\\a.exe");
  machine().programs().define("C:\\Work\\b.exe");
  machine().putFile("C:\\Work\\LUDA.ini",
                    "[Setup01]\r\nversion=01\r\nServer01=%PATHSETUP%\\a.exe -S /x\r\n"
                    "[Setup02]\r\nversion=02\r\nServer01=%PATHWORK%\\b.exe -S\r\n");
  putCatalogue(kLudaAndNerio);
  EXPECT_THAT(setUp("LUDA"), ElementsAre("a.exe", "b.exe"));
}

TEST_F(DirectSetup, IdentifierThatIsNoProductCodeEndsItWithAReport) {
  putCatalogue(catalogueText({{"luda", "", "LUDA.ini"}, kNerio}));
  EXPECT_THAT(setUp("LUDA NERIO"), IsEmpty());
  ASSERT_THAT(program_.reports(),
              ElementsAre(isReport("ExecuteDirectSetup", "Errore in esecuzione setup", -99,
                                   "ModTrelvManager")));
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Errore in esecuzione setup" +
                                program_.reports()[0].failure.description());
}

TEST_F(DirectSetup, MissingConfigurationFileIsTold) {
  putCatalogue(catalogueText({{"LUDA", "", "manca.ini"}}));
  setUp("LUDA");
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Prodotto non rilevato, file di config non "
                                "presente C:\\Work\\manca.ini"));
}

}  // namespace
}  // namespace trelv::tests
