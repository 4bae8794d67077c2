#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "integrated/SingleRun.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::RunSingleProdottoComplementare;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Pair;

class SingleRun : public testing::Test {
 protected:
  SingleRun() {
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"},
                                {"ZB", "Bilancio Pi\xF9", "zb.ini"},
                                {"Q2", "Tarsena2", "q2.ini"},
                                {"LUDA", "Luda", "luda.ini"}});
  }

  /// Configures one program of a product and puts it on the share.
  void install(const std::string& conf, const std::string& programName, const std::string& path) {
    installation_.putConfiguration(conf, configurationText({}, {programName + "=" + path}));
    installation_.share().putProgram("S:\\Lumo\\programma.exe");
  }

  void run(std::int32_t programNumber, const std::optional<std::string>& arguments) {
    RunSingleProdottoComplementare(program_, {"S:\\Lumo", "S:\\Lumo\\Work", "S:\\Lumo\\Programs"},
                                   programNumber, arguments);
  }

  sim::SimMachine& machine() { return station_.machine(); }
  const std::vector<std::string>& lines() { return program_.lines(); }

  Installation installation_;
  Station station_{installation_};
  FakeProgram& program_ = station_.program();
};

TEST_F(SingleRun, StartsTheProgramWithItsArgumentsAndDoesNotWait) {
  install("nerio.ini", "NERIO", "%PATHSETUP%/programma.exe");
  run(12, "archivio 2026");
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\programma.exe archivio 2026"));
  EXPECT_FALSE(machine().started()[0].waited);
  EXPECT_TRUE(machine().started()[0].visible);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe "
                                   "archivio 2026"));
}

TEST_F(SingleRun, WithoutArgumentsTheCommandLineEndsWithOneBlank) {
  install("nerio.ini", "VIRADO", "S:\\Lumo\\programma.exe");
  run(11, std::nullopt);
  run(11, "");
  EXPECT_THAT(station_.commandLines(),
              ElementsAre("S:\\Lumo\\programma.exe ", "S:\\Lumo\\programma.exe "));
}

TEST_F(SingleRun, ResolvesWorkAndClientPath) {
  installation_.putConfiguration(
      "nerio.ini",
      configurationText({}, {"NERIO=%PATHWORK%\\n.exe", "VIRADO=%PATHCLIENT%\\v.exe"}));
  installation_.share().putProgram("S:\\Lumo\\Work\\n.exe");
  installation_.share().putProgram("S:\\Lumo\\Programs\\v.exe");
  run(12, std::nullopt);
  run(11, std::nullopt);
  EXPECT_THAT(station_.commandLines(),
              ElementsAre("S:\\Lumo\\Work\\n.exe ", "S:\\Lumo\\Programs\\v.exe "));
}

TEST_F(SingleRun, ProgramThatIsNotConfiguredIsToldAndNotStarted) {
  install("zb.ini", "MVBIL", "S:\\Lumo\\programma.exe");
  run(32, "x");
  ASSERT_EQ(machine().boxes().size(), 1U);
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.icon, machine::BoxIcon::Exclamation);
  EXPECT_EQ(box.buttons, machine::BoxButtons::Ok);
  EXPECT_EQ(box.text,
            "Il prodotto selezionato Bilancio Pi\xC3\xB9 non risulta installato\r\n\r\nPremere Ok "
            "per interrompere");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Non è stato rilevato alcun programma per "
                                   "il prodotto: ZB"));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

TEST_F(SingleRun, ProductThatTheCatalogueLacksHasNoName) {
  run(51, std::nullopt);
  ASSERT_EQ(machine().boxes().size(), 1U);
  EXPECT_EQ(machine().boxes()[0].text,
            "Il prodotto selezionato  non risulta installato\r\n\r\nPremere Ok per interrompere");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Non è stato rilevato alcun programma per "
                                   "il prodotto: ZM"));
}

TEST_F(SingleRun, UndefinedProgramIsNotInstalled) {
  run(0, std::nullopt);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Non è stato rilevato alcun programma per "
                                   "il prodotto: UNDEFINED"));
}

TEST_F(SingleRun, ProgramThatIsNotOnDiskIsTold) {
  installation_.putConfiguration("nerio.ini",
                                 configurationText({}, {"NERIO=%PATHSETUP%\\manca.exe"}));
  run(12, "x");
  ASSERT_EQ(machine().boxes().size(), 1U);
  EXPECT_EQ(machine().boxes()[0].title, "TrelvManager");
  EXPECT_EQ(machine().boxes()[0].icon, machine::BoxIcon::Exclamation);
  EXPECT_EQ(machine().boxes()[0].text,
            "Il programma selezionato non risulta installato\r\n\r\nPremere Ok per interrompere");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Il programma: S:\\Lumo\\manca.exe non è "
                                   "stato trovato su disco"));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

TEST_F(SingleRun, CommandThatCarriesArgumentsCountsAsNotInstalled) {
  install("nerio.ini", "NERIO", "S:\\Lumo\\programma.exe -v");
  run(12, std::nullopt);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Il programma: S:\\Lumo\\programma.exe -v "
                                   "non è stato trovato su disco"));
}

TEST_F(SingleRun, FolderInThePlaceOfTheProgramCountsAsNotInstalled) {
  installation_.putConfiguration("nerio.ini", configurationText({}, {"NERIO=%PATHSETUP%\\prg"}));
  run(12, std::nullopt);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Il programma: S:\\Lumo\\prg non è stato "
                                   "trovato su disco"));
}

TEST_F(SingleRun, ProgramThatCannotBeStartedIsReportedOnce) {
  install("nerio.ini", "NERIO", "S:\\Lumo\\programma.exe");
  machine().programs().failStart("S:\\Lumo\\programma.exe", system_code::kBadExeFormat);
  run(12, "x");
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: S:\\Lumo\\programma.exe x"));
}

TEST_F(SingleRun, RunTimeFailureIsLoggedAndReported) {
  run(99, std::nullopt);
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].module, "ModProdTrelvManager");
  EXPECT_EQ(program_.reports()[0].procedure, "RunSingleProdottoComplementare");
  EXPECT_EQ(program_.reports()[0].message, "Esecuzione comando fallita: ");
  EXPECT_EQ(program_.reports()[0].failure.source(), "Programma  99 non riconosciuto");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando fallita: "));
  EXPECT_THAT(station_.commandLines(), IsEmpty());
}

// --- Environment variables

TEST_F(SingleRun, Tarsena2GetsItsVariables) {
  install("q2.ini", "Q2", "S:\\Lumo\\programma.exe");
  run(41, std::nullopt);
  ASSERT_EQ(machine().started().size(), 1U);
  EXPECT_THAT(machine().started()[0].environment,
              IsSupersetOf({Pair("MVQ2_HostedByLumo", "Yes"), Pair("MVQ2_Valutazione", "Yes"),
                            Pair("MVQ2_Rating", "Yes"), Pair("MVQ2_Analisi", "Yes")}));
  std::vector<std::string> order;
  for (const std::string& call : machine().calls()) {
    if (call.rfind("environment.set ", 0) == 0) {
      order.push_back(call.substr(16, call.find('=') - 16));
    }
  }
  EXPECT_THAT(order,
              ElementsAre("MVQ2_HostedByLumo", "MVQ2_Valutazione", "MVQ2_Rating", "MVQ2_Analisi"));
}

TEST_F(SingleRun, BilancioGetsItsVariables) {
  install("zb.ini", "MVPERS", "S:\\Lumo\\programma.exe");
  run(34, std::nullopt);
  ASSERT_EQ(machine().started().size(), 1U);
  EXPECT_THAT(machine().started()[0].environment,
              IsSupersetOf({Pair("MVBil_HostedByLumo", "Yes"), Pair("MVBil_Bilancio", "Yes"),
                            Pair("MVBil_Consolidato", "Yes"), Pair("MVBil_ICAD", "Yes"),
                            Pair("MVBil_BIL-COOSOC", "Yes"), Pair("MVBil_BIL-ENTFIN", "Yes"),
                            Pair("MVBil_BIL-IASCON", "Yes"), Pair("MVBil_BIL-IASIFR", "Yes")}));
  EXPECT_EQ(machine().callLog().countOf("environment.set "), 8U);
}

TEST_F(SingleRun, LudaGetsItsVariables) {
  install("luda.ini", "LUDA", "S:\\Lumo\\programma.exe");
  run(21, std::nullopt);
  ASSERT_EQ(machine().started().size(), 1U);
  EXPECT_THAT(machine().started()[0].environment,
              IsSupersetOf({Pair("LUDAIntermed", "1"), Pair("LUDAProf", "1"),
                            Pair("LUDAIndFin", "1"), Pair("LUDAComRap", "1")}));
  EXPECT_EQ(machine().callLog().countOf("environment.set "), 4U);
}

TEST_F(SingleRun, NerioGetsNone) {
  install("nerio.ini", "NERIO", "S:\\Lumo\\programma.exe");
  run(12, std::nullopt);
  EXPECT_EQ(machine().callLog().countOf("environment.set "), 0U);
}

TEST_F(SingleRun, RefusedVariableIsLoggedOnceAfterAllWereTried) {
  install("q2.ini", "Q2", "S:\\Lumo\\programma.exe");
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool refused = call.text.find("MVQ2_Valutazione") != std::string::npos ||
                         call.text.find("MVQ2_Rating") != std::string::npos;
    return refused ? std::optional<SystemCode>(system_code::kAccessDenied) : std::nullopt;
  });
  run(41, std::nullopt);
  EXPECT_EQ(machine().callLog().countOf("environment.set "), 4U);
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Errore in settaggio variabili di ambiente Tarsena2",
                          "Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe "));
  ASSERT_EQ(machine().started().size(), 1U);
  EXPECT_THAT(machine().started()[0].environment, testing::Contains(Pair("MVQ2_Analisi", "Yes")));
}

TEST_F(SingleRun, FailureLineNamesTheProduct) {
  install("zb.ini", "MVBIL", "S:\\Lumo\\programma.exe");
  install("luda.ini", "LUDA", "S:\\Lumo\\programma.exe");
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::EnvironmentSet
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  run(31, std::nullopt);
  run(21, std::nullopt);
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Errore in settaggio variabili di ambiente Bilancio",
                          "Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe ",
                          "Gestione ProdTrelv - Errore in settaggio variabili di ambiente LUDA",
                          "Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe "));
}

}  // namespace
}  // namespace trelv::tests
