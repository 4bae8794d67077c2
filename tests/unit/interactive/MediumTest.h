#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Matchers.h"
#include "support/MediumStation.h"

namespace trelv::tests {

using sim::SimFormWindow;

// The forms of a session by their names.
inline constexpr const char* kSelect = "frmSelectInstall";
inline constexpr const char* kStandalone = "frmProdTrelvStandalone";
inline constexpr const char* kIntegratedForm = "frmProdTrelvIntegrated";

/// What tests of whole sessions stand on: a workstation with a medium.
class MediumTest : public testing::Test {
 protected:
  std::vector<std::string> forms() { return station_.desktop().shownForms(); }
  std::vector<std::string> boxTexts() { return station_.desktop().boxTexts(); }
  std::vector<std::string> lines() { return station_.program().logLines(); }
  sim::SimMachine& machine() { return station_.machine(); }
  /// One session, which must end and leave no form behind.
  void run() {
    station_.run();
    EXPECT_EQ(station_.desktop().forcedCloses(), 0U);
    EXPECT_EQ(station_.desktop().activeForm(), nullptr);
  }

  MediumStation station_;
};

}  // namespace trelv::tests
