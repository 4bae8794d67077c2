#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "startup/IntegrationRecord.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class IntegrationRecord : public testing::Test {
 protected:
  sim::SimConfigurationLibrary& store() { return station_.machine().configuration(); }
  void record(const std::string& value) {
    store().put("SYSTEM", "Complementary_Products", "Integration", "Path", value);
  }

  Installation installation_;
  Station station_{installation_};
  FakeProgram& program_ = station_.program();
};

TEST_F(IntegrationRecord, IsReadAsItIsStored) {
  record("s:\\Lumo\\");
  std::string path = "before";
  EXPECT_TRUE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "s:\\Lumo\\");
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Verifica integrazione con Dovra SP",
                          "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: s:\\Lumo\\"));
}

TEST_F(IntegrationRecord, OfTheLongestPathIsReadWhole) {
  const std::string longest = "\\\\server\\" + std::string(250, 'x');
  record(longest);
  std::string path;
  EXPECT_TRUE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, longest);
}

TEST_F(IntegrationRecord, WhenMissingAnswersNoAndClearsThePath) {
  station_.forgetIntegration();
  std::string path = "before";
  EXPECT_FALSE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "");
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Verifica integrazione con Dovra SP",
                          "Gestione ProdTrelv - Integrazione Dovra SP non rilevata"));
}

TEST_F(IntegrationRecord, HoldingTheMarkerCountsAsMissing) {
  record("_DEFAULT_VALUE_");
  std::string path;
  EXPECT_FALSE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "");
}

TEST_F(IntegrationRecord, HoldingTheMarkerInOtherCaseCountsAsRecorded) {
  record("_default_value_");
  std::string path;
  EXPECT_TRUE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "_default_value_");
}

TEST_F(IntegrationRecord, ThatIsEmptyCountsAsRecorded) {
  record("");
  std::string path = "before";
  EXPECT_TRUE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "");
  EXPECT_EQ(program_.lines().back(), "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: ");
}

TEST_F(IntegrationRecord, WithoutHostSuiteIsNotLookedFor) {
  store().answerAlways(-4002);
  std::string path = "before";
  EXPECT_FALSE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "");
  EXPECT_EQ(store().gets(), 0U);
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Verifica integrazione con Dovra SP",
                          "Suite Lumo non trovata in registro: Errore riscontrato -4002"));
}

TEST_F(IntegrationRecord, StorePathOfBlanksCountsAsNoHostSuite) {
  store().setConfigPath("   ");
  std::string path;
  EXPECT_FALSE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(program_.lines().back(), "Suite Lumo non trovata in registro: Errore riscontrato 0");
}

TEST_F(IntegrationRecord, ThatCannotBeReadCountsAsRecordedWithoutPath) {
  store().answerNext({0, -3000});
  std::string path;
  EXPECT_TRUE(modMain::VerifyConfig(program_, path));
  EXPECT_EQ(path, "");
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].procedure, "GetParameterXML");
}

TEST_F(IntegrationRecord, RunTimeFailureIsReportedAndLoggedAndAnswersNo) {
  program_.log.linesWithoutMemory = 1;
  std::string path;
  EXPECT_FALSE(modMain::VerifyConfig(program_, path));
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].module, "modMain");
  EXPECT_EQ(program_.reports()[0].procedure, "VerifyConfig");
  EXPECT_EQ(program_.reports()[0].message, "Errore in Determinazione configurazione");
  EXPECT_EQ(program_.reports()[0].kind, ReportKind::ProgramError);
  EXPECT_THAT(program_.lines(), ElementsAre("Gestione ProdTrelv - Errore in Determinazione "
                                            "configurazione: Memoria insufficiente"));
}

TEST_F(IntegrationRecord, IsWrittenWhenMissing) {
  station_.forgetIntegration();
  EXPECT_TRUE(modMain::WriteIntegrationConfig(program_, "S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_EQ(store().typeOf("SYSTEM", "Complementary_Products", "Integration", "Path"), 1);
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Verifica integrazione con Dovra SP",
                          "Gestione ProdTrelv - Integrazione Dovra SP non rilevata",
                          "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo"));
}

TEST_F(IntegrationRecord, IsNeverOverwritten) {
  station_.forgetIntegration();
  EXPECT_TRUE(modMain::WriteIntegrationConfig(program_, "S:\\Lumo"));
  program_.log.lines.clear();
  EXPECT_FALSE(modMain::WriteIntegrationConfig(program_, "T:\\Altro"));
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_EQ(store().sets(), 1U);
  EXPECT_THAT(program_.lines(), Not(Contains(HasSubstr("scrittura integrazione"))));
}

TEST_F(IntegrationRecord, ThatTheStoreRefusesStillAnswersYes) {
  station_.forgetIntegration();
  // Path, value, then the write.
  store().answerNext({0, 0, -2000});
  EXPECT_TRUE(modMain::WriteIntegrationConfig(program_, "S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "");
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].procedure, "SetParameterXML");
}

TEST_F(IntegrationRecord, WritingEndsWithNoOnARunTimeFailure) {
  station_.forgetIntegration();
  // The line that finds no memory and the one that would tell it.
  program_.log.linesWithoutMemory = 2;
  EXPECT_FALSE(modMain::WriteIntegrationConfig(program_, "S:\\Lumo"));
  EXPECT_EQ(station_.recordedIntegration(), "");
}

}  // namespace
}  // namespace trelv::tests
