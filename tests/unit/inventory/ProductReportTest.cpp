#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inventory/ProductReport.h"
#include "sim/FailingMachine.h"
#include "support/RealProgram.h"
#include "unit/inventory/Report.h"

namespace trelv::tests {
namespace {

using modProdTrelvInfo::CreateProductReport;
using modProdTrelvInfo::WriteProductReport;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

TEST(ProductReport, IsMadeEmptyInTheLogFolder) {
  FakeProgram program;
  CreateProductReport(program);
  EXPECT_EQ(program.state.inventory.reportFile, kReport);
  EXPECT_EQ(program.state.runLog.logFolder, "C:\\Users\\mario\\Temp\\log");
  EXPECT_EQ(program.sim.fileText(kReport), "");
  EXPECT_THAT(program.lines(),
              ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log"));
}

TEST(ProductReport, MakesTheTemporaryFolderToo) {
  FakeProgram program;
  program.sim.removeTree("C:\\Users\\mario\\Temp");
  CreateProductReport(program);
  EXPECT_TRUE(program.sim.fileExists(kReport));
  EXPECT_THAT(program.lines(),
              ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp",
                          "Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log"));
}

TEST(ProductReport, LiesInTheLogFolderThatTheRunLogChose) {
  FakeProgram program;
  program.sim.makeFolders("C:\\Users\\mario\\Temp\\log");
  program.sim.makeFolders("C:\\Registri");
  program.state.runLog.logFolder = "C:\\Registri";
  CreateProductReport(program);
  EXPECT_EQ(program.state.inventory.reportFile, "C:\\Registri\\ProdInfo.txt");
  EXPECT_TRUE(program.sim.fileExists("C:\\Registri\\ProdInfo.txt"));
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST(ProductReport, MakesTheTemporaryFolderAlsoWhereTheLogFolderLiesElsewhere) {
  FakeProgram program;
  program.sim.removeTree("C:\\Users\\mario\\Temp");
  program.state.runLog.logFolder = "C:\\Registri\\Trelv";
  CreateProductReport(program);
  EXPECT_EQ(program.state.inventory.reportFile, "C:\\Registri\\Trelv\\ProdInfo.txt");
  EXPECT_TRUE(program.sim.fileExists("C:\\Registri\\Trelv\\ProdInfo.txt"));
  EXPECT_TRUE(program.sim.folderExists("C:\\Users\\mario\\Temp"));
  EXPECT_THAT(program.lines(),
              ElementsAre("Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp",
                          "Creazione path avvenuta correttamente:C:\\Registri",
                          "Creazione path avvenuta correttamente:C:\\Registri\\Trelv"));
}

TEST(ProductReport, OfTheHostsSupportLibraryLiesInItsTemporaryFolder) {
  FakeProgram program;
  program.sim.support().setTemporaryPath("C:\\Lumo\\Temp\\");
  CreateProductReport(program);
  EXPECT_TRUE(program.sim.fileExists("C:\\Lumo\\Temp\\log\\ProdInfo.txt"));
}

TEST(ProductReport, BegunAgainIsEmptied) {
  FakeProgram program;
  CreateProductReport(program);
  WriteProductReport(program, "prima");
  EXPECT_NE(program.sim.fileText(kReport), "");
  CreateProductReport(program);
  EXPECT_EQ(program.sim.fileText(kReport), "");
}

TEST(ProductReport, LineCarriesDateAndTextInTheAnsiCodePage) {
  FakeProgram program;
  CreateProductReport(program);
  WriteProductReport(program, "modalità");
  program.sim.clock().advance(61);
  WriteProductReport(program, "due");
  EXPECT_EQ(program.sim.fileText(kReport),
            "[16/11/2026 09:30:00] - modalit\xE0\r\n[16/11/2026 09:31:01] - due\r\n");
}

TEST(ProductReport, LineAtMidnightHasNoTime) {
  FakeProgram program;
  CreateProductReport(program);
  program.sim.clock().set({2026, 11, 17, 0, 0, 0});
  WriteProductReport(program, "notte");
  EXPECT_EQ(program.sim.fileText(kReport), "[17/11/2026] - notte\r\n");
}

TEST(ProductReport, LineHasTheUsersFormatOfDates) {
  FakeProgram program;
  program.sim.locale().setLanguage(sim::Language::English);
  CreateProductReport(program);
  WriteProductReport(program, "x");
  EXPECT_EQ(program.sim.fileText(kReport), "[11/16/2026 9:30:00 AM] - x\r\n");
}

TEST(ProductReport, LineWithoutReportIsDroppedAndMakesNoFile) {
  FakeProgram program;
  WriteProductReport(program, "persa");
  EXPECT_EQ(program.sim.callCount(), 0U);
  CreateProductReport(program);
  program.sim.removeTree(kReport);
  WriteProductReport(program, "persa");
  EXPECT_FALSE(program.sim.fileExists(kReport));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(ProductReport, LineIsAppendedInOneOpening) {
  FakeProgram program;
  CreateProductReport(program);
  program.sim.callLog().clear();
  WriteProductReport(program, "x");
  EXPECT_EQ(program.sim.openings("C:\\").files(), 1U);
  EXPECT_EQ(program.sim.openings("C:\\").appends, 1U);
}

TEST(ProductReport, ThatCannotBeMadeIsToldAndItsPathStays) {
  FakeProgram program;
  program.sim.makeFolders("C:\\Users\\mario\\Temp\\log");
  program.sim.diskOf("C:\\").denyWriting("C:\\Users\\mario\\Temp\\log");
  CreateProductReport(program);
  EXPECT_EQ(program.state.inventory.reportFile, kReport);
  WriteProductReport(program, "persa");
  EXPECT_FALSE(program.sim.fileExists(kReport));
  EXPECT_THAT(
      program.lines(),
      ElementsAre(StartsWith("Gestione ProdTrelv - Errore in scrittura file informazioni: ")));
  EXPECT_THAT(program.lines()[0], testing::HasSubstr(kReport));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(ProductReport, WithoutTemporaryFolderIsNotMadeInTheCurrentFolder) {
  FakeProgram program;
  sim::FailingMachine failing(program.sim, 1);
  CreateProductReport(program);
  ASSERT_EQ(failing.failedCall(), "system.temporaryFolder");
  EXPECT_EQ(program.state.inventory.reportFile, "");
  EXPECT_EQ(program.lines().back(),
            "Gestione ProdTrelv - Errore in scrittura file informazioni: Cartella temporanea non "
            "disponibile");
  EXPECT_EQ(program.sim.openings("C:\\").files(), 0U);
}

TEST(ProductReport, LineThatCannotBeWrittenIsToldAndTheCallerGoesOn) {
  FakeProgram program;
  CreateProductReport(program);
  program.sim.diskOf("C:\\").setReadOnly(kReport);
  WriteProductReport(program, "x");
  EXPECT_THAT(program.lines().back(),
              StartsWith("Gestione ProdTrelv - Errore in scrittura file informazioni: "));
}

TEST(ProductReport, LiesBesideTheRunLog) {
  sim::SimMachine machine;
  RealProgram program(machine);
  program.log().WriteLog("prima riga");
  CreateProductReport(program);
  WriteProductReport(program, "x");
  EXPECT_THAT(machine.diskOf("C:\\").names("C:\\Users\\mario\\Temp\\log"),
              ElementsAre("TrelvManager.log", "ProdInfo.txt"));
}

}  // namespace
}  // namespace trelv::tests
