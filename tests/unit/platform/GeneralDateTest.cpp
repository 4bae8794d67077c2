#include <gtest/gtest.h>

#include "platform/GeneralDate.h"
#include "sim/SimMachine.h"

namespace trelv::tests {
namespace {

TEST(GeneralDate, IsShortDateBlankLongTime) {
  sim::SimLocale locale;
  EXPECT_EQ(generalDate(locale, {2026, 11, 16, 1, 2, 3}), "16/11/2026 01:02:03");
  locale.setLanguage(sim::Language::English);
  EXPECT_EQ(generalDate(locale, {2026, 11, 16, 13, 2, 3}), "11/16/2026 1:02:03 PM");
}

TEST(GeneralDate, OfExactlyMidnightHasNoTime) {
  sim::SimLocale locale;
  EXPECT_EQ(generalDate(locale, {2026, 11, 16, 0, 0, 0}), "16/11/2026");
  EXPECT_EQ(generalDate(locale, {2026, 11, 16, 0, 0, 1}), "16/11/2026 00:00:01");
}

}  // namespace
}  // namespace trelv::tests
