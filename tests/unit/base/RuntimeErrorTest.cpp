#include <gtest/gtest.h>

#include "base/RuntimeError.h"

namespace trelv {
namespace {

struct Row {
  SystemCode code;
  std::int32_t number;
};

class SystemCodeTest : public testing::TestWithParam<Row> {};

TEST_P(SystemCodeTest, BecomesTheNumberOfTheBasicRuntime) {
  const RuntimeError failure = failureFromSystemCode(GetParam().code, "C:\\a.txt");
  EXPECT_EQ(failure.number(), GetParam().number);
}

TEST_P(SystemCodeTest, NamesTheFileAtTheEndOfItsDescription) {
  const RuntimeError failure = failureFromSystemCode(GetParam().code, "C:\\a.txt");
  const std::string description = failure.description();
  ASSERT_GE(description.size(), 10U);
  EXPECT_EQ(description.substr(description.size() - 10), ": C:\\a.txt");
}

INSTANTIATE_TEST_SUITE_P(AllKnown, SystemCodeTest,
                         testing::Values(Row{2, 53}, Row{3, 76}, Row{5, 70}, Row{8, 7}, Row{29, 57},
                                         Row{30, 57}, Row{32, 70}, Row{53, 76}, Row{64, 57},
                                         Row{80, 58}, Row{112, 61}, Row{123, 76}, Row{145, 75},
                                         Row{161, 76}, Row{183, 58}, Row{267, 75}));

TEST(FailureFromSystemCode, TellsAnUnknownCode) {
  const RuntimeError failure = failureFromSystemCode(1234, "C:\\a.txt");
  EXPECT_EQ(failure.number(), 440);
  EXPECT_EQ(failure.description(), "Errore di sistema 1234: C:\\a.txt");
}

TEST(RuntimeError, ADefaultMadeOneSaysNothing) {
  const RuntimeError failure;
  EXPECT_EQ(failure.number(), 0);
  EXPECT_EQ(failure.source(), "");
  EXPECT_EQ(failure.description(), "");
}

TEST(RuntimeError, KeepsItsThreeFields) {
  const RuntimeError failure(-1, "Prodotto  7 non riconosciuto", "perché");
  EXPECT_EQ(failure.number(), -1);
  EXPECT_EQ(failure.source(), "Prodotto  7 non riconosciuto");
  EXPECT_EQ(failure.description(), "perché");
  EXPECT_STREQ(failure.what(), "perché");
}

}  // namespace
}  // namespace trelv
