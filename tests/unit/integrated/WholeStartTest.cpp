// Whole starts of the real program on a simulated workstation, their run log compared line by line.

#include "support/Golden.h"
#include "support/RealProgram.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

/// The five products as they are delivered, and the run logs of whole starts.
class WholeStart : public StationTest {
 protected:
  WholeStart() { putFiveProducts(installation_); }

  /// The run log of one start, dates taken off.
  std::string logOf(const std::string& arguments) {
    RealProgram program(machine());
    program.run(arguments);
    std::string text;
    for (const std::string& line : program.logLines()) {
      text += line + "\n";
    }
    return text;
  }

  void putPrograms() {
    installation_.putPrograms({"mv\\nerio\\nerio", "mv\\zb\\mvbil", "mv\\q2\\q2"});
  }
};

TEST_F(WholeStart, ThatFindsNothingToDo) {
  putPrograms();
  installation_.putServerRecord(deliveredVersions());
  station_.putClientRecord(deliveredVersions());
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo MVBIL azienda 12"),
            golden("start-that-finds-nothing-to-do.log"));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\mv\\zb\\mvbil.exe azienda 12"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(machine().fileText(Station::kClientRecord), deliveredVersions());
}

TEST_F(WholeStart, ThatInstallsFiveProductsForTheFirstTime) {
  station_.forgetIntegration();
  machine().removeTree("C:\\Users\\mario\\Temp\\log");
  share().removeTree("S:\\Lumo\\prg\\tempterm");
  share().makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  share().put("S:\\Lumo\\prg\\etc\\dvrel", "11.20.00\r\n");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo Q2"),
            golden("start-that-installs-five-products.log"));
  EXPECT_EQ(installation_.serverRecord(), deliveredVersions());
  EXPECT_EQ(machine().fileText(Station::kClientRecord), deliveredVersions());
  EXPECT_EQ(started().back(), "S:\\Lumo\\mv\\q2\\q2.exe ");
  EXPECT_EQ(started().size(), 11U);
  EXPECT_EQ(station_.recordedIntegration(), "S:\\Lumo");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_FALSE(machine().fileExists(Station::kClientLock));
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
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                "T:\\Altro");
  EXPECT_EQ(logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO"), golden("start-that-is-refused.log"));
  EXPECT_EQ(boxes().size(), 1U);
}

TEST_F(WholeStart, RepeatedStartChangesNothing) {
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  const std::string server = share().tree();
  const std::string record = machine().fileText(Station::kClientRecord);
  const std::size_t before = started().size();
  logOf("INTEGRATEDRUN S:\\Lumo S:\\Lumo NERIO");
  EXPECT_EQ(share().tree(), server);
  EXPECT_EQ(machine().fileText(Station::kClientRecord), record);
  EXPECT_EQ(started().size(), before + 1);
}

}  // namespace
}  // namespace trelv::tests
