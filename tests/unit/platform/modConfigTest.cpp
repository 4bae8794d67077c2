#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "platform/modConfig.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"

namespace trelv::modConfig {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;
using tests::FakeReport;
using tests::isReport;

constexpr const char* kModule = "modConfig";

// --- Tables

TEST(ProductTable, HasTheNamesThatTheSuiteGives) {
  FakeProgram program;
  EXPECT_EQ(ProductName(program, 1), "PELAN");
  EXPECT_EQ(ProductName(program, 11), "LUMO770");
  EXPECT_EQ(ProductName(program, 14), "DOVRA");
  EXPECT_EQ(ProductName(program, 17), "TRAVOLIN");
  EXPECT_EQ(ProductName(program, 18), "DVSTUDIO");
  EXPECT_EQ(ProductName(program, 999), "SYSTEM");
}

TEST(ProductTable, HasNineteenDifferentShortUpperCaseNamesAndNoneForOtherCodes) {
  FakeProgram program;
  std::set<std::string> names;
  for (std::int32_t code = -15; code <= 1000; ++code) {
    const std::string name = ProductName(program, code);
    if (name.empty()) {
      continue;
    }
    EXPECT_TRUE((code >= 1 && code <= 18) || code == 999) << code;
    EXPECT_GE(name.size(), 2U) << name;
    EXPECT_LE(name.size(), 8U) << name;
    EXPECT_EQ(name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"), std::string::npos);
    EXPECT_EQ(ProductCode(program, name), code);
    names.insert(name);
  }
  EXPECT_EQ(names.size(), 19U);
}

TEST(ProductTable, GivesTheCodeOfANameInAnyCase) {
  FakeProgram program;
  EXPECT_EQ(ProductCode(program, "dovra"), 14);
  EXPECT_EQ(ProductCode(program, "Dovra"), 14);
  EXPECT_EQ(ProductCode(program, "SYSTEM"), 999);
  for (const char* const other : {"unknown", "", " dovra"})
    EXPECT_EQ(ProductCode(program, other), 0);
}

const std::vector<std::pair<std::int32_t, const char*>> kSilent = {
    {0, "No Errors"},
    {-3001, "Product Not Found"},
    {-3002, "Section Not Found"},
    {-3003, "Key Not Found"},
    {-3004, "Attribute Not Found"},
    {-3005, "Attribute Value Not Found"},
    {-3500, "Unknown Error"},
    {-3999, "Unknown Error"},
    {-4013, "Config File Client Not Found"}};
const std::vector<std::pair<std::int32_t, const char*>> kReported = {
    {-1, "Unknown Error"},
    {1, "Unknown Error"},
    {-1000, "Document Empty"},
    {-1010, "Node Not Found"},
    {-1020, "End Of Node Reached"},
    {-1030, "Child Node Not Found"},
    {-1040, "Node Attribute Not Found"},
    {-2000, "Insert Node Failed"},
    {-3000, "Navigate Generic Error"},
    {-4000, "Unknown Error"},
    {-4001, "Registry Key Schema Not Found"},
    {-4002, "Registry Key Config Not Found"},
    {-4011, "Schema File Not Found"},
    {-4012, "Config File Not Found"},
    {-4014, "Unknown Error"},
    {-5000, "Schema Validation Failed"},
    {-5001, "Product Param Invalid"},
    {-5002, "Section Param Invalid"},
    {-5003, "Key Param Invalid"},
    {-5004, "Attribute Param Invalid"},
    {-5005, "Attribute Value Invalid"},
    {-6000, "Attribute Type Invalid"},
    {-9999, ""}};

TEST(ErrorText, IsThatOfTheTable) {
  for (const auto& rows : {kSilent, kReported}) {
    for (const auto& [code, text] : rows) EXPECT_EQ(ErrorText(code), text) << code;
  }
}

// --- Reading and writing

class Store : public testing::Test {
 protected:
  /// Whether it was done; what was read stands in `value`.
  bool read(std::int32_t size = 1000) {
    value = "before";
    return GetParameterXML(program, {14, "Server", "Path", "default"}, "_DEFAULT_VALUE_", size,
                           value);
  }
  bool write() { return SetParameterXML(program, {999, "Sez", "Chi", "Path"}, 1, "S:\\Lumo"); }
  std::int32_t configPath() {
    value = "before";
    return GetConfigPath(program, value);
  }
  void put(const std::string& text) { library.put("DOVRA", "Server", "Path", "default", text); }
  /// From now on every call answers this code, and nothing is reported yet.
  void answer(std::int32_t code) {
    library.answerAlways(code);
    program.errors.reports.clear();
  }

  FakeProgram program;
  sim::SimConfigurationLibrary& library = program.sim.configuration();
  std::string value;
};

TEST_F(Store, GivesAStoredValueAsItIs) {
  for (const std::string& stored :
       {std::string("S:\\Lumo è qui"), std::string(), std::string(999, 'x')}) {
    put(stored);
    EXPECT_TRUE(read());
    EXPECT_EQ(value, stored);
  }
  EXPECT_EQ(library.gets(), 3U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Store, GivesTheDefaultOfAMissingKeyWithoutAReport) {
  EXPECT_TRUE(read());
  EXPECT_EQ(value, "_DEFAULT_VALUE_");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Store, IsReadThreeTimesWhileTheDocumentIsEmpty) {
  put("S:\\Lumo");
  library.answerNext({-1000, -1000});
  EXPECT_TRUE(read());
  EXPECT_EQ(value, "S:\\Lumo");
  EXPECT_EQ(library.gets(), 3U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Store, HasCodesThatAreNoFailure) {
  for (const auto& [code, text] : kSilent) {
    answer(code);
    EXPECT_TRUE(read()) << code;
    EXPECT_TRUE(write()) << code;
  }
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST_F(Store, ReportsEveryOtherCodeWithItsTextAndRepeatsNoCallButThoseOfAnEmptyDocument) {
  for (const auto& [code, text] : kReported) {
    SCOPED_TRACE(code);
    answer(code);
    const std::size_t gets = library.gets();
    const std::size_t sets = library.sets();
    EXPECT_FALSE(read());
    EXPECT_EQ(value, "");
    EXPECT_EQ(library.gets(), gets + (code == -1000 ? 3 : 1));
    EXPECT_FALSE(write());
    EXPECT_EQ(library.sets(), sets + 1);
    const std::string reading = "Errore in lettura chiave da file di configurazione: ";
    const std::string writing = "Errore in scrittura chiave da file di configurazione: ";
    EXPECT_THAT(
        program.reports(),
        ElementsAre(
            isReport("GetParameterXML",
                     reading + text + "\r\nSezione: Server\r\nChiave: Path\r\nProdotto: DOVRA", _,
                     kModule, ReportKind::ConfigurationFile),
            isReport("SetParameterXML",
                     writing + text + "\r\nSezione: Sez\r\nChiave: Chi\r\nProdotto: SYSTEM", _,
                     kModule)));
  }
}

TEST_F(Store, IsAskedWithTheGivenSize) {
  put("0123456789");
  EXPECT_TRUE(read(4));
  EXPECT_EQ(value, "0123");
}

TEST_F(Store, FailsOnAValueOrAPathThatFillsTheBuffer) {
  put(std::string(1000, 'x'));
  EXPECT_FALSE(read());
  EXPECT_EQ(value, "");
  library.setConfigPath("C:\\" + std::string(997, 'x'));
  EXPECT_EQ(configPath(), -9999);
  EXPECT_EQ(value, "");
  EXPECT_THAT(program.reports(),
              ElementsAre(isReport("GetParameterXML", _, testing::Ne(0), kModule),
                          isReport("GetConfigPath",
                                   "Errore in lettura percorso di configurazione: ", testing::Ne(0),
                                   kModule)));
  for (const FakeReport& report : program.reports()) {
    EXPECT_EQ(report.failure.description(), "Valore troppo lungo");
  }
}

TEST_F(Store, ThatCannotBeCalledIsReportedByEveryWrapper) {
  library.setCallable(false);
  EXPECT_FALSE(read());
  EXPECT_FALSE(write());
  EXPECT_NE(configPath(), 0);
  EXPECT_EQ(value, "");
  EXPECT_EQ(DeterminaPathClient(program), "");
  std::vector<std::string> procedures;
  for (const FakeReport& report : program.reports()) {
    EXPECT_EQ(report.module, kModule);
    procedures.push_back(report.procedure);
  }
  EXPECT_THAT(procedures, ElementsAre("GetParameterXML", "SetParameterXML", "GetConfigPath",
                                      "DeterminaPathClient"));
}

TEST_F(Store, IsWrittenUnderTheProductsName) {
  EXPECT_TRUE(write());
  EXPECT_EQ(library.value("SYSTEM", "Sez", "Chi", "Path"), "S:\\Lumo");
  EXPECT_EQ(library.typeOf("SYSTEM", "Sez", "Chi", "Path"), 1);
}

// --- Configuration path

TEST_F(Store, GivesItsPathAndZero) {
  EXPECT_EQ(configPath(), 0);
  EXPECT_EQ(value, "C:\\Lumo\\Client");
  EXPECT_EQ(DeterminaPathClient(program), "C:\\Lumo\\Client");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Store, ThatIsMissingHasFourCodesAndAnEmptyPathAndEveryOtherCodeIsASuccess) {
  for (const std::int32_t code : {-4001, -4002, -4011, -4012}) {
    answer(code);
    EXPECT_EQ(configPath(), code);
    EXPECT_EQ(value, "");
  }
  for (const std::int32_t code : {-4013, -1000, -3000, -9999, 5}) {
    answer(code);
    EXPECT_EQ(configPath(), 0) << code;
    EXPECT_NE(value, "before");
  }
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Store, ThatIsMissingIsReportedToWhoAsksForTheClientFolder) {
  answer(-4002);
  EXPECT_EQ(DeterminaPathClient(program), "");
  EXPECT_THAT(
      program.reports(),
      ElementsAre(isReport("DeterminaPathClient",
                           "Verificare i seguenti parametri: \r\nsPathProgrammi: ", _, kModule)));
}

// --- Other suites

TEST(EsisteSuiteFerax, NeedsExactlyATextThatIsZero) {
  FakeProgram program;
  EXPECT_FALSE(EsisteSuiteFerax(program));
  sim::SimRegistry& registry = program.sim.registry();
  for (const char* const text : {"", "1", "00", " 0", "0 ", "0"}) {
    registry.setText(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema", text);
    EXPECT_EQ(EsisteSuiteFerax(program), text == std::string("0")) << text;
  }
  registry.setStored(machine::Hive::LocalMachine, "Software\\FerPrg", "sistema",
                     machine::value_type::kNumber, std::string(4, '\0'));
  EXPECT_FALSE(EsisteSuiteFerax(program));
  EXPECT_THAT(program.reports(), IsEmpty());
}

/// The client's and the server's path in the store, the path in the ini file of the Windows folder
/// (null: none), and the line that tells what was found.
struct TravolinRow {
  const char* client;
  const char* server;
  const char* ini;
  bool found;
  const char* line;
};

const std::vector<TravolinRow> kTravolinRows = {
    {"C:\\Trav", "S:\\Trav", nullptr, true, "Suite travolin trovata cartella : C:\\Trav"},
    {nullptr, "S:\\Trav", "T:\\Trav", true, "Suite travolin trovata cartella : S:\\Trav"},
    {nullptr, nullptr, "T:\\Trav", true, "Suite travolin trovata cartella : T:\\Trav"},
    // An empty stored path ends the search.
    {"", "S:\\Trav", "T:\\Trav", false, "Suite travolin non trovata "},
    {nullptr, nullptr, nullptr, false, "Suite travolin non trovata "}};

constexpr const char* kFirstLine = "Gestione ProdTrelv - Verifica Esistenza Travolin";

TEST(EsisteSuiteTravolin, IsTheFirstOfTheThreePathsThatIsRecorded) {
  for (const TravolinRow& row : kTravolinRows) {
    FakeProgram program;
    sim::SimConfigurationLibrary& library = program.sim.configuration();
    if (row.client != nullptr)
      library.put(ProductName(program, 10), "Client", "PathPelan", "default", row.client);
    if (row.server != nullptr)
      library.put(ProductName(program, 10), "Server", "Path", "default", row.server);
    if (row.ini != nullptr)
      program.sim.setIniValue("travolin.ini", "Parametri", "PathPelan", row.ini);
    EXPECT_EQ(EsisteSuiteTravolin(program), row.found);
    EXPECT_THAT(program.lines(), ElementsAre(kFirstLine, row.line));
    EXPECT_THAT(program.reports(), IsEmpty());
  }
}

TEST(EsisteSuiteTravolin, IsNotThereWithoutTheHostsSuite) {
  FakeProgram program;
  program.sim.configuration().answerAlways(-4011);
  EXPECT_FALSE(EsisteSuiteTravolin(program));
  EXPECT_THAT(
      program.lines(),
      ElementsAre(kFirstLine, "Suite Lumo non trovata in registro: Errore riscontrato -4011"));
}

}  // namespace
}  // namespace trelv::modConfig
