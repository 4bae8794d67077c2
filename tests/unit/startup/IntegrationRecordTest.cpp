#include "startup/IntegrationRecord.h"
#include "support/Matchers.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kAsked = "Gestione ProdTrelv - Verifica integrazione con Dovra SP";
constexpr const char* kNotFound = "Gestione ProdTrelv - Integrazione Dovra SP non rilevata";

class IntegrationRecord : public StationTest {
 public:
  sim::SimConfigurationLibrary& store() { return machine().configuration(); }
  void record(const std::string& value) {
    store().put("SYSTEM", "Complementary_Products", "Integration", "Path", value);
  }
  /// The recorded path in quotes; "no" when there is none, which clears the path.
  std::string verified() {
    std::string path = "before";
    const bool recorded = modMain::VerifyConfig(program(), path);
    return recorded ? "'" + path + "'" : path.empty() ? "no" : "no, but " + path;
  }
  bool write(const std::string& path) { return modMain::WriteIntegrationConfig(program(), path); }
};

TEST_F(IntegrationRecord, IsReadAsItIsStored) {
  record("s:\\Lumo\\");
  EXPECT_EQ(verified(), "'s:\\Lumo\\'");
  EXPECT_THAT(lines(), ElementsAre(kAsked,
                                   "Gestione ProdTrelv - Integrazione Dovra SP rilevata "
                                   "con: s:\\Lumo\\"));
  const std::string longest = "\\\\server\\" + std::string(250, 'x');
  record(longest);
  EXPECT_EQ(verified(), "'" + longest + "'");
}

TEST_F(IntegrationRecord, WhenMissingAnswersNoAndClearsThePath) {
  station_.forgetIntegration();
  EXPECT_EQ(verified(), "no");
  EXPECT_THAT(lines(), ElementsAre(kAsked, kNotFound));
}

TEST_F(IntegrationRecord, HoldingTheMarkerInItsExactCaseCountsAsMissing) {
  record("_DEFAULT_VALUE_");
  EXPECT_EQ(verified(), "no");
  record("_default_value_");
  EXPECT_EQ(verified(), "'_default_value_'");
}

TEST_F(IntegrationRecord, ThatIsEmptyCountsAsRecorded) {
  record("");
  EXPECT_EQ(verified(), "''");
  EXPECT_EQ(lines().back(), "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: ");
}

TEST_F(IntegrationRecord, WithoutHostSuiteIsNotLookedFor) {
  store().answerAlways(-4002);
  EXPECT_EQ(verified(), "no");
  EXPECT_EQ(store().gets(), 0U);
  EXPECT_THAT(lines(), ElementsAre(kAsked,
                                   "Suite Lumo non trovata in registro: Errore riscontrato "
                                   "-4002"));
}

TEST_F(IntegrationRecord, StorePathOfBlanksCountsAsNoHostSuite) {
  store().setConfigPath("   ");
  EXPECT_EQ(verified(), "no");
  EXPECT_EQ(lines().back(), "Suite Lumo non trovata in registro: Errore riscontrato 0");
}

TEST_F(IntegrationRecord, ThatCannotBeReadCountsAsRecordedWithoutPath) {
  store().answerNext({0, -3000});
  EXPECT_EQ(verified(), "''");
  EXPECT_THAT(reports(), ElementsAre(testing::Field(&FakeReport::procedure, "GetParameterXML")));
}

TEST_F(IntegrationRecord, RunTimeFailureIsReportedAndLoggedAndAnswersNo) {
  program().log.linesWithoutMemory = 1;
  std::string path;
  EXPECT_FALSE(modMain::VerifyConfig(program(), path));
  EXPECT_THAT(reports(),
              ElementsAre(isReport("VerifyConfig", "Errore in Determinazione configurazione",
                                   runtime_number::kOutOfMemory, "modMain")));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Errore in Determinazione configurazione: "
                                   "Memoria insufficiente"));
}

TEST_F(IntegrationRecord, IsWrittenWhenMissing) {
  station_.forgetIntegration();
  EXPECT_TRUE(write("S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_EQ(store().typeOf("SYSTEM", "Complementary_Products", "Integration", "Path"), 1);
  EXPECT_THAT(lines(),
              ElementsAre(kAsked, kNotFound,
                          "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo"));
}

TEST_F(IntegrationRecord, IsNeverOverwritten) {
  record("S:\\Lumo");
  EXPECT_FALSE(write("T:\\Altro"));
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_EQ(store().sets(), 0U);
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("scrittura integrazione"))));
}

TEST_F(IntegrationRecord, ThatTheStoreRefusesStillAnswersYes) {
  station_.forgetIntegration();
  // Path, value, then the write.
  store().answerNext({0, 0, -2000});
  EXPECT_TRUE(write("S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "");
  EXPECT_THAT(reports(), ElementsAre(testing::Field(&FakeReport::procedure, "SetParameterXML")));
}

TEST_F(IntegrationRecord, WritingEndsWithNoOnARunTimeFailure) {
  station_.forgetIntegration();
  // The line that finds no memory and the one that would tell it.
  program().log.linesWithoutMemory = 2;
  EXPECT_FALSE(write("S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "");
}

}  // namespace
}  // namespace trelv::tests
