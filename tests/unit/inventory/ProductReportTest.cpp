#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/ProductReport.h"
#include "sim/FailingMachine.h"
#include "support/Matchers.h"
#include "support/RealProgram.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

class ProductReport : public testing::Test {
 protected:
  void create() { modProdTrelvInfo::CreateProductReport(program_); }
  void write(const std::string& text) { modProdTrelvInfo::WriteProductReport(program_, text); }
  sim::SimMachine& machine() { return program_.sim; }
  const std::vector<std::string>& lines() { return program_.lines(); }
  const std::string& file() { return program_.state.inventory.reportFile; }
  std::string text() { return machine().fileText(kReport); }
  std::string& logFolder() { return program_.state.runLog.logFolder; }

  FakeProgram program_;
};

constexpr const char* kTemp = "C:\\Users\\mario\\Temp";

// --- Where it is made

TEST_F(ProductReport, IsMadeEmptyInTheLogFolder) {
  create();
  EXPECT_EQ(file(), kReport);
  EXPECT_EQ(logFolder(), "C:\\Users\\mario\\Temp\\log");
  EXPECT_EQ(text(), "");
  EXPECT_THAT(lines(),
              ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log"));
  write("prima");
  EXPECT_NE(text(), "");
  create();
  EXPECT_EQ(text(), "") << "begun again";
}

TEST_F(ProductReport, MakesTheTemporaryFolderToo) {
  machine().removeTree(kTemp);
  create();
  EXPECT_TRUE(machine().fileExists(kReport));
  EXPECT_THAT(lines(),
              ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp",
                          "Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log"));
}

TEST_F(ProductReport, LiesInTheLogFolderThatTheRunLogChose) {
  machine().makeFolders("C:\\Users\\mario\\Temp\\log");
  machine().makeFolders("C:\\Registri");
  logFolder() = "C:\\Registri";
  create();
  EXPECT_EQ(file(), "C:\\Registri\\ProdInfo.txt");
  EXPECT_TRUE(machine().fileExists(file()));
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(ProductReport, MakesTheTemporaryFolderAlsoWhereTheLogFolderLiesElsewhere) {
  machine().removeTree(kTemp);
  logFolder() = "C:\\Registri\\Trelv";
  create();
  EXPECT_EQ(file(), "C:\\Registri\\Trelv\\ProdInfo.txt");
  EXPECT_TRUE(machine().fileExists(file()));
  EXPECT_TRUE(machine().folderExists(kTemp));
  EXPECT_THAT(lines(), ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp",
                                   "Creazione path avvenuta correttamente:C:\\Registri",
                                   "Creazione path avvenuta correttamente:C:\\Registri\\Trelv"));
}

TEST_F(ProductReport, OfTheHostsSupportLibraryLiesInItsTemporaryFolder) {
  machine().support().setTemporaryPath("C:\\Lumo\\Temp\\");
  create();
  EXPECT_TRUE(machine().fileExists("C:\\Lumo\\Temp\\log\\ProdInfo.txt"));
}

TEST_F(ProductReport, LiesBesideTheRunLog) {
  RealProgram program(machine());
  program.log().WriteLog("prima riga");
  modProdTrelvInfo::CreateProductReport(program);
  EXPECT_THAT(machine().diskOf("C:\\").names("C:\\Users\\mario\\Temp\\log"),
              ElementsAre("TrelvManager.log", "ProdInfo.txt"));
}

// --- Its lines

TEST_F(ProductReport, LineCarriesDateAndTextInTheAnsiCodePage) {
  create();
  write("modalità");
  machine().clock().advance(61);
  write("due");
  // At midnight there is no time.
  machine().clock().set({2026, 11, 17, 0, 0, 0});
  write("notte");
  machine().clock().set({2026, 11, 16, 9, 30, 0});
  machine().locale().setLanguage(sim::Language::English);
  write("x");
  EXPECT_EQ(text(),
            "[16/11/2026 09:30:00] - modalit\xE0\r\n[16/11/2026 09:31:01] - due\r\n"
            "[17/11/2026] - notte\r\n[11/16/2026 9:30:00 AM] - x\r\n");
}

TEST_F(ProductReport, LineWithoutReportIsDroppedAndMakesNoFile) {
  write("persa");
  EXPECT_EQ(machine().callCount(), 0U);
  create();
  machine().removeTree(kReport);
  write("persa");
  EXPECT_FALSE(machine().fileExists(kReport));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(ProductReport, LineIsAppendedInOneOpening) {
  create();
  machine().callLog().clear();
  write("x");
  EXPECT_EQ(machine().openings("C:\\").files(), 1U);
  EXPECT_EQ(machine().openings("C:\\").appends, 1U);
}

// --- Failures

TEST_F(ProductReport, ThatCannotBeMadeIsToldAndItsPathStays) {
  machine().makeFolders("C:\\Users\\mario\\Temp\\log");
  machine().diskOf("C:\\").denyWriting("C:\\Users\\mario\\Temp\\log");
  create();
  EXPECT_EQ(file(), kReport);
  write("persa");
  EXPECT_FALSE(machine().fileExists(kReport));
  EXPECT_THAT(
      lines(),
      ElementsAre(AllOf(StartsWith("Gestione ProdTrelv - Errore in scrittura file informazioni: "),
                        HasSubstr(kReport))));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(ProductReport, WithoutTemporaryFolderIsNotMadeInTheCurrentFolder) {
  sim::FailingMachine failing(machine(), 1);
  create();
  ASSERT_EQ(failing.failedCall(), "system.temporaryFolder");
  EXPECT_EQ(file(), "");
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Errore in scrittura file informazioni: Cartella temporanea non "
            "disponibile");
  EXPECT_EQ(machine().openings("C:\\").files(), 0U);
}

TEST_F(ProductReport, LineThatCannotBeWrittenIsToldAndTheCallerGoesOn) {
  create();
  machine().diskOf("C:\\").setReadOnly(kReport);
  write("x");
  EXPECT_THAT(lines().back(),
              StartsWith("Gestione ProdTrelv - Errore in scrittura file informazioni: "));
}

}  // namespace
}  // namespace trelv::tests
