#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/DirectSetup.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::ExecuteDirectSetup;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

constexpr const char* kSetups = "C:\\Work\\prg\\com\\setup\\aggdovra";
constexpr const char* kStart =
    "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità standalone";

/// Products unpacked below C:\Work on a machine that has none of them: Luda and Nerio are set up on
/// the server side then, Bilancio (ZB) and Tarsena2 (Q2) on both.
class DirectSetup : public testing::Test {
 protected:
  DirectSetup() {
    program_.state.startup.administrator = true;
    program_.state.startup.programsPath = "C:\\Lumo\\Client";
    machine().makeFolders(kSetups);
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
    putConfiguration(id, text);
  }
  void putConfiguration(const std::string& id, const std::string& text) {
    machine().putFile("C:\\Work\\" + id + ".ini", text);
  }
  /// One section of the catalogue; empty values are left out.
  static std::string entry(const std::string& section, const std::string& id,
                           const std::string& name, const std::string& conf) {
    std::string text = "[" + section + "]\r\n";
    for (const auto& [key, value] :
         {std::pair{"Id", id}, std::pair{"name", name}, std::pair{"conf", conf}}) {
      text += value.empty() ? "" : std::string(key) + "=" + value + "\r\n";
    }
    return text;
  }
  void putCatalogue(const std::string& text) {
    machine().putFile(std::string(kSetups) + "\\agdvcomp.ini", text);
  }
  void select(const std::vector<std::string>& identifiers) {
    program_.state.selectedProducts.clear();
    for (const std::string& identifier : identifiers) {
      program_.state.selectedProducts.push_back({identifier});
    }
  }
  void run() { ExecuteDirectSetup(program_, "C:\\Work"); }

  sim::SimMachine& machine() { return program_.sim; }
  std::vector<std::string> started() { return machine().programs().startedCommandLines(); }
  const std::vector<std::string>& lines() { return program_.lines(); }

  FakeProgram program_;
};

TEST_F(DirectSetup, RunsTheSelectedProductOnly) {
  putCatalogue(entry("Prod01", "LUDA", "Luda", "LUDA.ini") +
               entry("Prod02", "NERIO", "Nerio", "NERIO.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDASetupServer.exe"));
  EXPECT_THAT(lines(), IsSupersetOf({std::string(kStart),
                                     std::string("Gestione ProdTrelv - Lancio installazione "
                                                 "LUDA")}));
  EXPECT_EQ(lines().front(), kStart);
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Lancio installazione NERIO")));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(DirectSetup, TellsItsStepsInOrderAndEachOnce) {
  putCatalogue(entry("Prod01", "NERIO", "", "NERIO.ini"));
  select({"NERIO"});
  run();
  EXPECT_THAT(
      lines(),
      ElementsAre(kStart, "Gestione ProdTrelv - File Ini Nerio locale non presente",
                  "Gestione ProdTrelv - Determino path Server di Nerio da componenti registrate",
                  "Gestione ProdTrelv - Lancio installazione NERIO",
                  "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
                  "\"C:\\Work\\prg\\com\\setup\\aggdovra\"",
                  "Creazione path avvenuta correttamente:C:\\Work\\prg\\tempterm",
                  "Gestione ProdTrelv - Esecuzione comando: \"C:\\Work\\NERIOSetupServer.exe\"",
                  "Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - Oggetto=Server - "
                  "Comando=C:\\Work\\NERIOSetupServer.exe",
                  "Cancellazione file: C:\\Work\\prg\\tempterm\\agdv.lck effettuata con successo"));
}

TEST_F(DirectSetup, ReadsKeysAndSectionsInAnyCase) {
  putCatalogue("[PROD01]\r\nID=LUDA\r\nCONF=LUDA.ini\r\n");
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDASetupServer.exe"));
}

TEST_F(DirectSetup, EmptyConfSkipsItsSectionOnly) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") + entry("Prod02", "KXK", "Kappa", "") +
               entry("Prod03", "NERIO", "", "NERIO.ini"));
  select({"LUDA", "KXK", "NERIO"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\NERIOSetupServer.exe"));
  EXPECT_THAT(lines(), Not(Contains("Gestione ProdTrelv - Lancio installazione KXK")));
}

TEST_F(DirectSetup, SectionWithNeitherIdNorNameEndsTheWalk) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") + entry("Prod02", "", "", "KXK.ini") +
               entry("Prod03", "NERIO", "", "NERIO.ini"));
  select({"LUDA", "NERIO"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDASetupServer.exe"));
}

TEST_F(DirectSetup, NameServesWhereIdIsEmpty) {
  putCatalogue(entry("Prod01", "", "LUDA", "LUDA.ini"));
  select({"luda"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDASetupServer.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lancio installazione LUDA"));
}

TEST_F(DirectSetup, NameDoesNotCountWhereIdIsGiven) {
  putCatalogue(entry("Prod01", "NERIO", "LUDA", "NERIO.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(DirectSetup, IdentifierInLowerCaseMatchesOneInUpperCase) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"luda"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDASetupServer.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lancio installazione LUDA"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(DirectSetup, ProductOfBothSidesRunsOnTheServerSideFirst) {
  putCatalogue(entry("Prod01", "ZB", "", "ZB.ini"));
  select({"ZB"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\ZBSetupServer.exe", "C:\\Work\\ZBSetupClient.exe"));
}

TEST_F(DirectSetup, ServerRunThatStopsDoesNotKeepTheClientFromRunning) {
  putCatalogue(entry("Prod01", "ZB", "", "ZB.ini"));
  machine().putFile("C:\\Work\\prg\\tempterm\\agdv.lck", "x");
  select({"ZB"});
  run();
  EXPECT_EQ(machine().boxes().size(), 1U);
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\ZBSetupClient.exe"));
}

TEST_F(DirectSetup, ProductThatIsThereIsUpdatedOnItsSide) {
  machine().putFile("C:\\WINDOWS\\LUDA.INI", "[LUDA]\r\nVersione=07.00\r\n");
  machine().registry().setText(machine::Hive::LocalMachine, "Software\\Lumo\\Programmi",
                               "PathLocale", "C:\\Prg");
  machine().putFile("C:\\Prg\\mv\\q2\\mvq2.ini", "[AMBIENTE]\r\nVRINST=02.00\r\n");
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") + entry("Prod02", "Q2", "", "Q2.ini"));
  select({"LUDA", "Q2"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDAUpdateServer.exe", "C:\\Work\\Q2UpdateClient.exe"));
}

TEST_F(DirectSetup, VersionsOnTheMachineDoNotCountAgainstASection) {
  machine().putFile("C:\\WINDOWS\\LUDA.INI", "[LUDA]\r\nVersione=99.00\r\n");
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\LUDAUpdateServer.exe"));
}

TEST_F(DirectSetup, CommandsLoseTheirArgumentsAndSeeTheRootAsBothPaths) {
  machine().programs().define("C:\\Work\\a.exe");
  machine().programs().define("C:\\Work\\b.exe");
  putConfiguration("LUDA",
                   "[Setup01]\r\nversion=01\r\nServer01=%PATHSETUP%\\a.exe -S /x\r\n"
                   "[Setup02]\r\nversion=02\r\nServer01=%PATHWORK%\\b.exe -S\r\n");
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\a.exe", "C:\\Work\\b.exe"));
}

TEST_F(DirectSetup, ProductSelectedTwiceRunsTwice) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"LUDA", "luda"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\LUDASetupServer.exe"));
}

TEST_F(DirectSetup, SelectionThatChangesMeanwhileCountsFromTheNextSectionOn) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") + entry("Prod02", "NERIO", "", "NERIO.ini"));
  machine().programs().define("C:\\Work\\LUDASetupServer.exe", [&](sim::SimProcess&) {
    // Far more than before, so that what was selected moves to another place.
    program_.state.selectedProducts.assign(40, {"ZM"});
    program_.state.selectedProducts.push_back({"NERIO"});
    return 0U;
  });
  select({"LUDA", "luda"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\LUDASetupServer.exe",
                          "C:\\Work\\NERIOSetupServer.exe"));
}

TEST_F(DirectSetup, ProductListedTwiceRunsTwice) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") + entry("Prod02", "LUDA", "", "LUDA.ini"));
  select({"LUDA"});
  run();
  EXPECT_EQ(started().size(), 2U);
}

TEST_F(DirectSetup, ProductWithoutASideRunsNothing) {
  putCatalogue(entry("Prod01", "KXK", "", "KXK.ini"));
  putConfiguration("KXK", "[Setup01]\r\nversion=01\r\nServer01=C:\\Work\\KXKSetupServer.exe\r\n");
  select({"KXK"});
  run();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lancio installazione KXK"));
}

TEST_F(DirectSetup, ProductWithoutACheckIsNotRunByTheRecordOfAnother) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini") +
               entry("Prod02", "VELTRA", "", "VELTRA.ini") +
               entry("Prod03", "NERIO", "", "NERIO.ini"));
  select({"LUDA", "VELTRA", "NERIO"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\NERIOSetupServer.exe"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Prodotto senza verifica di presenza: VELTRA"));
}

TEST_F(DirectSetup, UndefinedProductIsNotRun) {
  putCatalogue(entry("Prod01", "UNDEFINED", "", "LUDA.ini"));
  select({"UNDEFINED"});
  run();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Prodotto senza verifica di presenza: UNDEFINED"));
}

TEST_F(DirectSetup, IdentifierThatIsNoProductCodeEndsItWithAReport) {
  putCatalogue(entry("Prod01", "luda", "", "LUDA.ini") + entry("Prod02", "NERIO", "", "NERIO.ini"));
  select({"LUDA", "NERIO"});
  run();
  EXPECT_THAT(started(), IsEmpty());
  ASSERT_EQ(program_.reports().size(), 1U);
  const FakeReport& report = program_.reports()[0];
  EXPECT_EQ(report.module, "ModTrelvManager");
  EXPECT_EQ(report.procedure, "ExecuteDirectSetup");
  EXPECT_EQ(report.message, "Errore in esecuzione setup");
  EXPECT_EQ(report.kind, 0);
  EXPECT_EQ(report.failure.number(), -99);
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in esecuzione setup" + report.failure.description());
}

TEST_F(DirectSetup, UnknownProductThatIsNotSelectedDoesNoHarm) {
  putCatalogue(entry("Prod01", "ignoto", "", "LUDA.ini") +
               entry("Prod02", "NERIO", "", "NERIO.ini"));
  select({"NERIO"});
  run();
  EXPECT_THAT(started(), ElementsAre("C:\\Work\\NERIOSetupServer.exe"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(DirectSetup, MissingCatalogueRunsNothingAndEndsQuietly) {
  select({"LUDA"});
  run();
  EXPECT_THAT(lines(), ElementsAre(kStart));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(DirectSetup, SelectedProductThatIsNotListedIsNotTold) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"ZM"});
  run();
  EXPECT_THAT(lines(), ElementsAre(kStart));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(DirectSetup, WalksBeyondAHundredSectionsAndEnds) {
  std::string catalogue;
  for (int i = 1; i <= 150; ++i) {
    const std::string section = (i < 10 ? "Prod0" : "Prod") + std::to_string(i);
    catalogue += i == 150   ? entry(section, "NERIO", "", "NERIO.ini")
                 : i == 100 ? entry(section, "LUDA", "", "LUDA.ini")
                            : entry(section, "altro", "", "KXK.ini");
  }
  putCatalogue(catalogue);
  select({"LUDA", "NERIO"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\NERIOSetupServer.exe"));
}

TEST_F(DirectSetup, SectionWithoutLeadingZeroIsNotRead) {
  putCatalogue(entry("Prod1", "LUDA", "", "LUDA.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(DirectSetup, MissingConfigurationFileIsTold) {
  putCatalogue(entry("Prod01", "LUDA", "", "manca.ini"));
  select({"LUDA"});
  run();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Prodotto non rilevato, file di config non "
                                "presente C:\\Work\\manca.ini"));
}

TEST_F(DirectSetup, SeesWhatASetupChangedInTheCatalogue) {
  const std::string luda = entry("Prod01", "LUDA", "", "LUDA.ini");
  putCatalogue(luda);
  machine().programs().define("C:\\Work\\LUDASetupServer.exe", [&](sim::SimProcess&) {
    putCatalogue(luda + entry("Prod02", "NERIO", "", "NERIO.ini"));
    return 0U;
  });
  select({"LUDA", "NERIO"});
  run();
  EXPECT_THAT(started(),
              ElementsAre("C:\\Work\\LUDASetupServer.exe", "C:\\Work\\NERIOSetupServer.exe"));
}

TEST_F(DirectSetup, LeavesTheRecordOfTheLastProduct) {
  putCatalogue(entry("Prod01", "LUDA", "", "LUDA.ini"));
  select({"LUDA"});
  run();
  EXPECT_EQ(program_.state.inventory.product.productCode, 20);
}

}  // namespace
}  // namespace trelv::tests
