// Whole starts of the real program on a simulated workstation, their run log compared line by line.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Golden.h"
#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WholeStart : public testing::Test {
 protected:
  WholeStart() { putFiveProducts(installation_); }

  /// The run log of one start, dates taken off.
  std::string logOf(const std::string& arguments) {
    RealProgram program(station_.machine());
    program.run(arguments);
    std::string text;
    for (const std::string& line : program.logLines()) {
      text += line + "\n";
    }
    return text;
  }

  void putPrograms() {
    for (const char* const path : {"nerio\\nerio.exe", "zb\\mvbil.exe", "q2\\q2.exe"}) {
      installation_.share().putProgram("S:\\Lumo\\mv\\" + std::string(path));
    }
  }

  Installation installation_;
  Station station_{installation_};
};

TEST_F(WholeStart, ThatFindsNothingToDo) {
  putPrograms();
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL azienda 12"),
            golden("start-that-finds-nothing-to-do.log"));
  EXPECT_THAT(station_.commandLines(), ElementsAre("S:\\Lumo\\mv\\zb\\mvbil.exe azienda 12"));
  EXPECT_THAT(station_.machine().boxes(), IsEmpty());
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), deliveredVersions());
}

TEST_F(WholeStart, ThatInstallsFiveProductsForTheFirstTime) {
  station_.forgetIntegration();
  station_.machine().removeTree("C:\\Users\\mario\\Temp\\log");
  installation_.share().removeTree("S:\\Lumo\\prg\\tempterm");
  installation_.share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  installation_.share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo Q2"),
            golden("start-that-installs-five-products.log"));
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), deliveredVersions());
  EXPECT_EQ(station_.commandLines().back(), "S:\\Lumo\\mv\\q2\\q2.exe ");
  EXPECT_EQ(station_.commandLines().size(), 11U);
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(station_.machine().fileExists(Station::kClientLock));
}

TEST_F(WholeStart, ThatUpdatesOneProductOnBothSides) {
  putPrograms();
  installation_.putCatalogue({{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"}});
  installation_.putServerRecord("[NERIO]\r\nversion=03.00.00.00\r\n");
  station_.putClientRecord("[NERIO]\r\nversion=03.20.30.00\r\n");
  EXPECT_EQ(logOf("integratedrun \"s:\\lumo\" S:\\Lumo NERIO"),
            golden("start-that-updates-one-product.log"));
  EXPECT_EQ(installation_.serverRecord(), "[NERIO]\r\nversion=03.20.30.00\r\n");
}

TEST_F(WholeStart, ThatIsRefusedStillStartsTheProgram) {
  putPrograms();
  station_.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                         "T:\\Altro");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO"), golden("start-that-is-refused.log"));
  EXPECT_EQ(station_.machine().boxes().size(), 1U);
}

TEST_F(WholeStart, RepeatedStartChangesNothing) {
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  const std::string server = installation_.share().tree();
  const std::string record = station_.machine().fileText(Station::kClientRecord);
  const std::size_t before = station_.commandLines().size();
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  EXPECT_EQ(installation_.share().tree(), server);
  EXPECT_EQ(station_.machine().fileText(Station::kClientRecord), record);
  EXPECT_EQ(station_.commandLines().size(), before + 1);
}

}  // namespace
}  // namespace trelv::tests
