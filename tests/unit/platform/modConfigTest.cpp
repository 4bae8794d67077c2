#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "platform/modConfig.h"
#include "support/FakeProgram.h"

namespace trelv::modConfig {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

// --- Tables

TEST(ProductTable, HasTheNamesThatTheSuiteGives) {
  EXPECT_EQ(ProductName(1), "PELAN");
  EXPECT_EQ(ProductName(11), "LUMO770");
  EXPECT_EQ(ProductName(14), "DOVRA");
  EXPECT_EQ(ProductName(17), "TRAVOLIN");
  EXPECT_EQ(ProductName(18), "DVSTUDIO");
  EXPECT_EQ(ProductName(999), "SYSTEM");
}

TEST(ProductTable, HasNineteenDifferentShortUpperCaseNames) {
  std::set<std::string> names;
  for (std::int32_t code = -1; code <= 1000; ++code) {
    const std::string name = ProductName(code);
    if (name.empty()) {
      continue;
    }
    EXPECT_TRUE((code >= 1 && code <= 18) || code == 999) << code;
    EXPECT_GE(name.size(), 2U) << name;
    EXPECT_LE(name.size(), 8U) << name;
    EXPECT_EQ(name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"), std::string::npos);
    EXPECT_EQ(ProductCode(name), code);
    names.insert(name);
  }
  EXPECT_EQ(names.size(), 19U);
}

TEST(ProductTable, GivesNothingForUnknownCodes) {
  for (const std::int32_t code : {0, 19, -14, 998, 1000}) {
    EXPECT_EQ(ProductName(code), "");
  }
}

TEST(ProductCode, IsFoundInAnyCase) {
  EXPECT_EQ(ProductCode("dovra"), 14);
  EXPECT_EQ(ProductCode("Dovra"), 14);
  EXPECT_EQ(ProductCode("SYSTEM"), 999);
  EXPECT_EQ(ProductCode("unknown"), 0);
  EXPECT_EQ(ProductCode(""), 0);
  EXPECT_EQ(ProductCode(" dovra"), 0);
}

struct TextRow {
  std::int32_t code;
  const char* text;
};

class ErrorTextTest : public testing::TestWithParam<TextRow> {};

TEST_P(ErrorTextTest, IsThatOfTheTable) { EXPECT_EQ(ErrorText(GetParam().code), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(
    Codes, ErrorTextTest,
    testing::Values(
        TextRow{0, "No Errors"}, TextRow{-1000, "Document Empty"}, TextRow{-1010, "Node Not Found"},
        TextRow{-1020, "End Of Node Reached"}, TextRow{-1030, "Child Node Not Found"},
        TextRow{-1040, "Node Attribute Not Found"}, TextRow{-2000, "Insert Node Failed"},
        TextRow{-3000, "Navigate Generic Error"}, TextRow{-3001, "Product Not Found"},
        TextRow{-3002, "Section Not Found"}, TextRow{-3003, "Key Not Found"},
        TextRow{-3004, "Attribute Not Found"}, TextRow{-3005, "Attribute Value Not Found"},
        TextRow{-4001, "Registry Key Schema Not Found"},
        TextRow{-4002, "Registry Key Config Not Found"}, TextRow{-4011, "Schema File Not Found"},
        TextRow{-4012, "Config File Not Found"}, TextRow{-4013, "Config File Client Not Found"},
        TextRow{-5000, "Schema Validation Failed"}, TextRow{-5001, "Product Param Invalid"},
        TextRow{-5002, "Section Param Invalid"}, TextRow{-5003, "Key Param Invalid"},
        TextRow{-5004, "Attribute Param Invalid"}, TextRow{-5005, "Attribute Value Invalid"},
        TextRow{-6000, "Attribute Type Invalid"}, TextRow{-9999, ""}, TextRow{-1, "Unknown Error"},
        TextRow{1, "Unknown Error"}, TextRow{-3006, "Unknown Error"}));

// --- GetParameterXML

struct Reading {
  bool done = false;
  std::string value;
};

Reading read(FakeProgram& program, std::int32_t size = 1000) {
  Reading reading{false, "before"};
  reading.done = GetParameterXML(program, {14, "Server", "Path", "default"}, "_DEFAULT_VALUE_",
                                 size, reading.value);
  return reading;
}

TEST(GetParameterXML, GivesAStoredValue) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", "S:\\Lumo è qui");
  const Reading reading = read(program);
  EXPECT_TRUE(reading.done);
  EXPECT_EQ(reading.value, "S:\\Lumo è qui");
  EXPECT_EQ(program.sim.configuration().gets(), 1U);
}

TEST(GetParameterXML, GivesTheDefaultOfAMissingKeyWithoutAReport) {
  FakeProgram program;
  const Reading reading = read(program);
  EXPECT_TRUE(reading.done);
  EXPECT_EQ(reading.value, "_DEFAULT_VALUE_");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(GetParameterXML, GivesAnEmptyStoredValueAsEmpty) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", "");
  const Reading reading = read(program);
  EXPECT_TRUE(reading.done);
  EXPECT_EQ(reading.value, "");
}

TEST(GetParameterXML, TriesAnEmptyDocumentThreeTimes) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", "S:\\Lumo");
  program.sim.configuration().answerNext({-1000, -1000});
  const Reading reading = read(program);
  EXPECT_TRUE(reading.done);
  EXPECT_EQ(reading.value, "S:\\Lumo");
  EXPECT_EQ(program.sim.configuration().gets(), 3U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(GetParameterXML, ReportsADocumentThatIsEmptyAtTheThirdCall) {
  FakeProgram program;
  program.sim.configuration().answerAlways(-1000);
  EXPECT_FALSE(read(program).done);
  EXPECT_EQ(program.sim.configuration().gets(), 3U);
  EXPECT_THAT(program.reportTexts(),
              ElementsAre("Errore in lettura chiave da file di configurazione: Document "
                          "Empty\r\nSezione: Server\r\nChiave: Path\r\nProdotto: DOVRA"));
}

TEST(GetParameterXML, RepeatsNothingAfterAnyOtherCode) {
  for (const std::int32_t code : {-3000, -3001, -4001, -1010}) {
    FakeProgram program;
    program.sim.configuration().answerAlways(code);
    read(program);
    EXPECT_EQ(program.sim.configuration().gets(), 1U) << code;
  }
}

class SilentCodeTest : public testing::TestWithParam<std::int32_t> {};

TEST_P(SilentCodeTest, IsNoFailure) {
  FakeProgram program;
  program.sim.configuration().answerAlways(GetParam());
  EXPECT_TRUE(read(program).done);
  EXPECT_TRUE(SetParameterXML(program, {14, "s", "k", "a"}, 1, "v"));
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_THAT(program.lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Codes, SilentCodeTest,
                         testing::Values(0, -4013, -3001, -3002, -3003, -3004, -3005, -3500,
                                         -3999));

class ReportedCodeTest : public testing::TestWithParam<TextRow> {};

TEST_P(ReportedCodeTest, IsReportedWhenReading) {
  FakeProgram program;
  program.sim.configuration().answerAlways(GetParam().code);
  const Reading reading = read(program);
  EXPECT_FALSE(reading.done);
  EXPECT_EQ(reading.value, "");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modConfig");
  EXPECT_EQ(program.reports()[0].procedure, "GetParameterXML");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ConfigurationFile);
  EXPECT_EQ(program.reports()[0].message,
            std::string("Errore in lettura chiave da file di configurazione: ") + GetParam().text +
                "\r\nSezione: Server\r\nChiave: Path\r\nProdotto: DOVRA");
}

TEST_P(ReportedCodeTest, IsReportedWhenWriting) {
  FakeProgram program;
  program.sim.configuration().answerAlways(GetParam().code);
  EXPECT_FALSE(SetParameterXML(program, {999, "Sez", "Chi", "Path"}, 1, "v"));
  EXPECT_EQ(program.sim.configuration().sets(), 1U);
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modConfig");
  EXPECT_EQ(program.reports()[0].procedure, "SetParameterXML");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ProgramError);
  EXPECT_EQ(program.reports()[0].message,
            std::string("Errore in scrittura chiave da file di configurazione: ") +
                GetParam().text + "\r\nSezione: Sez\r\nChiave: Chi\r\nProdotto: SYSTEM");
}

INSTANTIATE_TEST_SUITE_P(Codes, ReportedCodeTest,
                         testing::Values(TextRow{-3000, "Navigate Generic Error"},
                                         TextRow{-4000, "Unknown Error"},
                                         TextRow{-4001, "Registry Key Schema Not Found"},
                                         TextRow{-4002, "Registry Key Config Not Found"},
                                         TextRow{-4011, "Schema File Not Found"},
                                         TextRow{-4012, "Config File Not Found"},
                                         TextRow{-4014, "Unknown Error"},
                                         TextRow{-5005, "Attribute Value Invalid"},
                                         TextRow{-9999, ""}, TextRow{7, "Unknown Error"}));

TEST(GetParameterXML, PassesItsArgumentsUnchanged) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", "0123456789");
  EXPECT_EQ(read(program, 4).value, "0123");
}

TEST(GetParameterXML, GivesAValueOf999Characters) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", std::string(999, 'x'));
  EXPECT_EQ(read(program).value, std::string(999, 'x'));
}

TEST(GetParameterXML, FailsOnAValueThatFillsTheBuffer) {
  FakeProgram program;
  program.sim.configuration().put("DOVRA", "Server", "Path", "default", std::string(1000, 'x'));
  const Reading reading = read(program);
  EXPECT_FALSE(reading.done);
  EXPECT_EQ(reading.value, "");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modConfig");
  EXPECT_EQ(program.reports()[0].procedure, "GetParameterXML");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ProgramError);
  EXPECT_NE(program.reports()[0].failure.number(), 0);
}

TEST(ConfigurationStore, ThatCannotBeCalledIsReportedByEveryWrapper) {
  FakeProgram program;
  program.sim.configuration().setCallable(false);
  std::string path = "before";
  EXPECT_FALSE(read(program).done);
  EXPECT_FALSE(SetParameterXML(program, {14, "s", "k", "a"}, 1, "v"));
  EXPECT_NE(GetConfigPath(program, path), 0);
  EXPECT_EQ(path, "");
  EXPECT_EQ(DeterminaPathClient(program), "");
  std::vector<std::string> procedures;
  for (const tests::FakeReport& report : program.reports()) {
    EXPECT_EQ(report.module, "modConfig");
    procedures.push_back(report.procedure);
  }
  EXPECT_THAT(procedures, ElementsAre("GetParameterXML", "SetParameterXML", "GetConfigPath",
                                      "DeterminaPathClient"));
}

TEST(SetParameterXML, WritesUnderTheProductsName) {
  FakeProgram program;
  EXPECT_TRUE(SetParameterXML(program, {999, "Complementary_Products", "Integration", "Path"}, 1,
                              "S:\\Lumo"));
  EXPECT_EQ(
      program.sim.configuration().value("SYSTEM", "Complementary_Products", "Integration", "Path"),
      "S:\\Lumo");
  EXPECT_EQ(
      program.sim.configuration().typeOf("SYSTEM", "Complementary_Products", "Integration", "Path"),
      1);
}

// --- Configuration path

TEST(GetConfigPath, GivesThePathAndZero) {
  FakeProgram program;
  std::string path;
  EXPECT_EQ(GetConfigPath(program, path), 0);
  EXPECT_EQ(path, "C:\\Lumo\\Client");
}

TEST(GetConfigPath, GivesTheFourCodesOfAMissingStoreWithAnEmptyPath) {
  for (const std::int32_t code : {-4001, -4002, -4011, -4012}) {
    FakeProgram program;
    program.sim.configuration().answerAlways(code);
    std::string path = "before";
    EXPECT_EQ(GetConfigPath(program, path), code);
    EXPECT_EQ(path, "");
    EXPECT_THAT(program.reports(), IsEmpty());
  }
}

TEST(GetConfigPath, CountsEveryOtherCodeAsSuccess) {
  for (const std::int32_t code : {-4013, -1000, -3000, -9999, 5}) {
    FakeProgram program;
    program.sim.configuration().answerAlways(code);
    std::string path = "before";
    EXPECT_EQ(GetConfigPath(program, path), 0) << code;
    EXPECT_NE(path, "before");
  }
}

TEST(GetConfigPath, ReportsAPathThatFillsTheBuffer) {
  FakeProgram program;
  program.sim.configuration().setConfigPath("C:\\" + std::string(997, 'x'));
  std::string path = "before";
  EXPECT_NE(GetConfigPath(program, path), 0);
  EXPECT_EQ(path, "");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].procedure, "GetConfigPath");
}

TEST(DeterminaPathClient, IsTheConfigurationPath) {
  FakeProgram program;
  EXPECT_EQ(DeterminaPathClient(program), "C:\\Lumo\\Client");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(DeterminaPathClient, ReportsAMissingStoreAndIsEmpty) {
  FakeProgram program;
  program.sim.configuration().answerAlways(-4002);
  EXPECT_EQ(DeterminaPathClient(program), "");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modConfig");
  EXPECT_EQ(program.reports()[0].procedure, "DeterminaPathClient");
  EXPECT_EQ(program.reports()[0].message, "Verificare i seguenti parametri: \r\nsPathProgrammi: ");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ProgramError);
}

// --- Ferax

TEST(EsisteSuiteFerax, NeedsExactlyAZero) {
  constexpr auto kHive = machine::Hive::LocalMachine;
  FakeProgram program;
  EXPECT_FALSE(EsisteSuiteFerax(program));
  sim::SimRegistry& registry = program.sim.registry();
  for (const char* const other : {"", "1", "00", " 0", "0 "}) {
    registry.setText(kHive, "Software\\FerPrg", "sistema", other);
    EXPECT_FALSE(EsisteSuiteFerax(program)) << other;
  }
  registry.setText(kHive, "Software\\FerPrg", "sistema", "0");
  EXPECT_TRUE(EsisteSuiteFerax(program));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(EsisteSuiteFerax, TakesNoNumberForTheText) {
  FakeProgram program;
  program.sim.registry().setStored(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema",
                                   machine::value_type::kNumber, std::string(4, '\0'));
  EXPECT_FALSE(EsisteSuiteFerax(program));
}

// --- Travolin

constexpr const char* kFirstLine = "Gestione ProdTrelv - Verifica Esistenza Travolin";

TEST(EsisteSuiteTravolin, IsFoundInTheClientsPath) {
  FakeProgram program;
  program.sim.configuration().put(ProductName(10), "Client", "PathPelan", "default", "C:\\Trav");
  program.sim.configuration().put(ProductName(10), "Server", "Path", "default", "S:\\Trav");
  EXPECT_TRUE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(),
              ElementsAre(kFirstLine, "Suite travolin trovata cartella : C:\\Trav"));
}

TEST(EsisteSuiteTravolin, IsFoundInTheServersPath) {
  FakeProgram program;
  program.sim.configuration().put(ProductName(10), "Server", "Path", "default", "S:\\Trav");
  EXPECT_TRUE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(),
              ElementsAre(kFirstLine, "Suite travolin trovata cartella : S:\\Trav"));
}

TEST(EsisteSuiteTravolin, IsFoundInItsIniFileOfTheWindowsFolder) {
  FakeProgram program;
  program.sim.putFile("C:\\WINDOWS\\travolin.ini", "[Parametri]\r\nPathPelan=T:\\Trav\r\n");
  EXPECT_TRUE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(),
              ElementsAre(kFirstLine, "Suite travolin trovata cartella : T:\\Trav"));
}

TEST(EsisteSuiteTravolin, IsNotFoundWithoutAny) {
  FakeProgram program;
  EXPECT_FALSE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(), ElementsAre(kFirstLine, "Suite travolin non trovata "));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(EsisteSuiteTravolin, LooksNoFurtherThanAnEmptyStoredPath) {
  FakeProgram program;
  program.sim.configuration().put(ProductName(10), "Client", "PathPelan", "default", "");
  program.sim.configuration().put(ProductName(10), "Server", "Path", "default", "S:\\Trav");
  program.sim.putFile("C:\\WINDOWS\\travolin.ini", "[Parametri]\r\nPathPelan=T:\\Trav\r\n");
  EXPECT_FALSE(EsisteSuiteTravolin(program));
  EXPECT_THAT(program.lines(), ElementsAre(kFirstLine, "Suite travolin non trovata "));
}

TEST(EsisteSuiteTravolin, AnswersFalseWithoutTheSuite) {
  FakeProgram program;
  program.sim.configuration().answerAlways(-4011);
  EXPECT_FALSE(EsisteSuiteTravolin(program));
  EXPECT_THAT(
      program.lines(),
      ElementsAre(kFirstLine, "Suite Lumo non trovata in registro: Errore riscontrato -4011"));
}

}  // namespace
}  // namespace trelv::modConfig
