#include "integrated/SingleRun.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

constexpr const char* kProgram = "S:\\Lumo\\programma.exe";

class SingleRun : public StationTest {
 public:
  SingleRun() {
    installation_.putCatalogue({{"NERIO", "Nerio", "nerio.ini"},
                                {"ZB", "Bilancio Pi\xF9", "zb.ini"},
                                {"Q2", "Tarsena2", "q2.ini"},
                                {"LUDA", "Luda", "luda.ini"}});
    installation_.putPrograms({"programma", "Work\\n", "Programs\\v"});
  }

  void configure(const std::string& conf, const std::vector<std::string>& programs) {
    installation_.putConfiguration(conf, configurationText({}, programs));
  }
  void run(std::int32_t programNumber, const std::optional<std::string>& arguments = {}) {
    modProdTrelvManager::RunSingleProdottoComplementare(
        program(), {"S:\\Lumo", "S:\\Lumo\\Work", "S:\\Lumo\\Programs"}, programNumber, arguments);
  }
  void expectRefused(const std::string& box, const std::string& line) {
    EXPECT_THAT(boxes(), ElementsAre(isBox(BoxIcon::Exclamation, box)));
    EXPECT_THAT(lines(), ElementsAre(line));
    EXPECT_THAT(started(), IsEmpty());
  }
  /// Names of the variables that were set, in order.
  std::vector<std::string> variablesSet() {
    std::vector<std::string> names = endsOf(machine().calls(), "environment.set ");
    for (std::string& name : names) {
      name = name.substr(0, name.find('='));
    }
    return names;
  }
};

TEST_F(SingleRun, StartsTheProgramWithItsArgumentsAndDoesNotWait) {
  configure("nerio.ini", {"NERIO=%PATHSETUP%/programma.exe"});
  run(12, "archivio 2026");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\programma.exe archivio 2026"));
  EXPECT_FALSE(machine().started()[0].waited);
  EXPECT_TRUE(machine().started()[0].visible);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe "
                                   "archivio 2026"));
}

TEST_F(SingleRun, WithoutArgumentsTheCommandLineEndsWithOneBlank) {
  configure("nerio.ini", {"VIRADO=S:\\Lumo\\programma.exe"});
  run(11);
  run(11, "");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\programma.exe ", "S:\\Lumo\\programma.exe "));
}

TEST_F(SingleRun, ResolvesWorkAndClientPath) {
  configure("nerio.ini", {"NERIO=%PATHWORK%\\n.exe", "VIRADO=%PATHCLIENT%\\v.exe"});
  run(12);
  run(11);
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\Work\\n.exe ", "S:\\Lumo\\Programs\\v.exe "));
}

TEST_F(SingleRun, ProgramThatIsNotConfiguredIsToldAndNotStarted) {
  configure("zb.ini", {"MVBIL=S:\\Lumo\\programma.exe"});
  run(32, "x");
  expectRefused(
      "Il prodotto selezionato Bilancio Pi\xC3\xB9 non risulta installato\r\n\r\nPremere Ok "
      "per interrompere",
      "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: ZB");
}

TEST_F(SingleRun, ProductThatTheCatalogueLacksHasNoName) {
  run(51);
  expectRefused(
      "Il prodotto selezionato  non risulta installato\r\n\r\nPremere Ok per interrompere",
      "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: ZM");
  run(0);
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: UNDEFINED");
}

TEST_F(SingleRun, ProgramThatIsNotOnDiskIsTold) {
  configure("nerio.ini", {"NERIO=%PATHSETUP%\\manca.exe", "VIRADO=%PATHSETUP%\\prg"});
  run(12, "x");
  expectRefused(
      "Il programma selezionato non risulta installato\r\n\r\nPremere Ok per interrompere",
      "Gestione ProdTrelv - Il programma: S:\\Lumo\\manca.exe non è stato trovato su disco");
  // A folder in its place is none.
  run(11);
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Il programma: S:\\Lumo\\prg non è stato trovato su disco");
}

TEST_F(SingleRun, CommandThatCarriesArgumentsCountsAsNotInstalled) {
  configure("nerio.ini", {"NERIO=S:\\Lumo\\programma.exe -v"});
  run(12);
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Il programma: S:\\Lumo\\programma.exe -v "
                                   "non è stato trovato su disco"));
}

TEST_F(SingleRun, ProgramThatCannotBeStartedIsReportedOnce) {
  configure("nerio.ini", {"NERIO=S:\\Lumo\\programma.exe"});
  machine().programs().failStart(kProgram, system_code::kBadExeFormat);
  run(12, "x");
  EXPECT_THAT(program().reportTexts(),
              ElementsAre("Errore in esecuzione programma: S:\\Lumo\\programma.exe x"));
}

TEST_F(SingleRun, RunTimeFailureIsLoggedAndReported) {
  run(99);
  ASSERT_THAT(reports(), ElementsAre(isReport("RunSingleProdottoComplementare",
                                              "Esecuzione comando fallita: ", -1)));
  EXPECT_EQ(reports()[0].failure.source(), "Programma  99 non riconosciuto");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando fallita: "));
  EXPECT_THAT(started(), IsEmpty());
}

// --- Environment variables

/// A program of a product, the variables that are set for it in order, their value, and the name of
/// the product in the line of a failure.
struct Hosted : Row {
  const char* conf;
  const char* program;
  std::int32_t number;
  std::string variables;
  const char* value;
  const char* product;
};

const std::vector<Hosted> kHosted{
    {"Tarsena2", "q2.ini", "Q2", 41, "MVQ2_HostedByLumo MVQ2_Valutazione MVQ2_Rating MVQ2_Analisi",
     "Yes", "Tarsena2"},
    {"Bilancio", "zb.ini", "MVPERS", 34,
     "MVBil_HostedByLumo MVBil_Bilancio MVBil_Consolidato MVBil_ICAD MVBil_BIL-COOSOC "
     "MVBil_BIL-ENTFIN MVBil_BIL-IASCON MVBil_BIL-IASIFR",
     "Yes", "Bilancio"},
    {"Luda", "luda.ini", "LUDA", 21, "LUDAIntermed LUDAProf LUDAIndFin LUDAComRap", "1", "LUDA"},
    {"Nerio", "nerio.ini", "NERIO", 12, "", "", ""}};

class HostedRun : public SingleRun, public testing::WithParamInterface<Hosted> {
 public:
  void runHosted() {
    configure(GetParam().conf, {std::string(GetParam().program) + "=" + kProgram});
    run(GetParam().number);
    EXPECT_EQ(joined(variablesSet()), GetParam().variables);
    ASSERT_EQ(machine().started().size(), 1U);
  }
};

TEST_P(HostedRun, GetsItsVariables) {
  runHosted();
  for (const std::string& name : wordsOf(GetParam().variables)) {
    EXPECT_THAT(machine().started()[0].environment, Contains(Pair(name, GetParam().value)));
  }
  EXPECT_EQ(lines().size(), 1U);
}

TEST_P(HostedRun, WhoseVariablesAreRefusedTellsItOnceAfterAllWereTried) {
  machine().callLog().setInjector(
      refuse(sim::CallKind::EnvironmentSet, 2, 3, system_code::kAccessDenied));
  runHosted();
  const bool told = !GetParam().variables.empty();
  EXPECT_EQ(lines().size(), told ? 2U : 1U);
  EXPECT_EQ(lines().front(),
            told ? "Gestione ProdTrelv - Errore in settaggio variabili di ambiente " +
                       std::string(GetParam().product)
                 : "Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\programma.exe ");
}

INSTANTIATE_TEST_SUITE_P(Of, HostedRun, testing::ValuesIn(kHosted), NameOfRow());

}  // namespace
}  // namespace trelv::tests
