#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "platform/modLibrary.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Refusals.h"

namespace trelv::modLibrary {
namespace {

using machine::SupportAnswer;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::isReport;

class Execution : public testing::Test {
 protected:
  /// Puts the program C:\p.exe there, which does this and ends with 2.
  void define(const std::function<void(sim::SimProcess&)>& act = [](sim::SimProcess&) {}) {
    sim.programs().define("C:\\p.exe", [act](sim::SimProcess& process) -> std::uint32_t {
      act(process);
      return 2;
    });
  }
  bool execute(const std::string& commandLine = "C:\\p.exe", bool wait = true) {
    return Execute(program, commandLine, wait);
  }
  void expectReported(const std::string& commandLine, std::int32_t number) {
    EXPECT_THAT(program.reports(),
                ElementsAre(isReport("Execute", "Errore in esecuzione programma: " + commandLine,
                                     number, "modLibrary")));
    program.errors.reports.clear();
  }

  tests::FakeProgram program;
  sim::SimMachine& sim = program.sim;
};

TEST_F(Execution, ThatCannotBeginIsReportedOnceWithTheCommandLine) {
  EXPECT_FALSE(execute("C:\\no.exe /a"));
  EXPECT_EQ(program.reports().at(0).failure.description(), "");
  expectReported("C:\\no.exe /a", 0);
  EXPECT_FALSE(ExecuteUntilReady(program, "C:\\no.exe"));
  expectReported("C:\\no.exe", 0);
  define();
  sim.programs().failStart("C:\\p.exe", system_code::kElevationRequired);
  EXPECT_FALSE(execute());
  expectReported("C:\\p.exe", 0);
}

TEST_F(Execution, ThatFailsUnexpectedlyIsReportedAndNoSuccess) {
  define([](sim::SimProcess&) { throw RuntimeError(7, "prova", "guasto"); });
  EXPECT_FALSE(execute());
  expectReported("C:\\p.exe", 7);
  define([](sim::SimProcess&) { throw std::bad_alloc(); });
  EXPECT_FALSE(execute());
  expectReported("C:\\p.exe", runtime_number::kOutOfMemory);
}

TEST_F(Execution, PassesTheCommandLineAsItIs) {
  define();
  EXPECT_TRUE(execute("\"C:\\p.exe\" /s \"a b\" "));
  EXPECT_THAT(sim.programs().startedCommandLines(), ElementsAre("\"C:\\p.exe\" /s \"a b\" "));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Execution, WaitsForTheEndOnDemandOnly) {
  bool ran = false;
  sim.programs().setDeferred(true);
  define([&](sim::SimProcess&) { ran = true; });
  EXPECT_TRUE(execute("C:\\p.exe", false));
  EXPECT_FALSE(ran);
  EXPECT_TRUE(execute());
  EXPECT_TRUE(ran);
}

TEST_F(Execution, IsASuccessWhateverTheExitCodeAlsoWhenTheWaitFails) {
  define();
  std::uint32_t exitCode = 0;
  EXPECT_TRUE(Execute(program, "C:\\p.exe", true, std::nullopt, &exitCode));
  EXPECT_EQ(exitCode, 2U);
  sim.programs().failWaits(system_code::kAccessDenied);
  EXPECT_TRUE(execute());
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Execution, HidesTheWindowOnlyWhenToldSo) {
  define();
  for (const std::optional<bool>& shown :
       {std::optional<bool>(), std::optional(true), std::optional(false)}) {
    Execute(program, "C:\\p.exe", true, shown);
    EXPECT_EQ(sim.started().back().visible, shown.value_or(true));
  }
}

TEST_F(Execution, LetsIniFilesBeReadAnewAfterwards) {
  const IniAddress value{"C:\\a.ini", "S", "k"};
  sim.putFile("C:\\a.ini", "[S]\r\nk=old\r\n");
  define(
      [](sim::SimProcess& process) { process.machine().putFile("C:\\a.ini", "[S]\r\nk=new\r\n"); });
  EXPECT_EQ(ReadSetting(program, value), "old");
  EXPECT_TRUE(execute());
  EXPECT_EQ(ReadSetting(program, value), "new");
}

TEST_F(Execution, UntilReadyEndsOnceTheProgramHasReadWhatItWasGiven) {
  sim.putFile("C:\\a.txt", "x");
  sim.programs().setDeferred(true);
  bool read = false;
  define([&](sim::SimProcess& process) { read = process.machine().fileExists("C:\\a.txt"); });
  EXPECT_TRUE(ExecuteUntilReady(program, "C:\\p.exe C:\\a.txt"));
  EXPECT_TRUE(read);
  EXPECT_FALSE(sim.started()[0].waited) << "not for its end";
  EXPECT_TRUE(sim.started()[0].visible);
  EXPECT_EQ(sim.calls().back(), "processes.waitUntilReady C:\\p.exe C:\\a.txt 5000");
}

TEST_F(Execution, OfAProgramThatIsNotReadyInTimeIsASuccessAllTheSame) {
  define();
  sim.callLog().setInjector(tests::refuse({sim::CallKind::ProcessReady}, 258));
  EXPECT_TRUE(ExecuteUntilReady(program, "C:\\p.exe"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

// --- Rights

using Rights = Execution;

TEST_F(Rights, AreToldByTheSupportLibraryWhereItStandsElseByTheGroupOfAdministrators) {
  for (const bool member : {true, false}) {
    sim.system().setAdministrator(member);
    sim.support().setAdministratorAnswer(SupportAnswer::Absent);
    EXPECT_EQ(IsAdmin(program), member);
    sim.support().setAdministratorAnswer(member ? SupportAnswer::No : SupportAnswer::Yes);
    EXPECT_EQ(IsAdmin(program), !member);
  }
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST_F(Rights, ThatNobodyCanTellCountAsThereWithALogLine) {
  constexpr const char* kUnknown =
      "Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE";
  sim.system().setAdministrator(false);
  sim.support().setAdministratorAnswer(SupportAnswer::Failed);
  EXPECT_TRUE(IsAdmin(program));
  sim.support().setAdministratorAnswer(SupportAnswer::Absent);
  sim.system().failAdministratorQuery(system_code::kAccessDenied);
  EXPECT_TRUE(IsAdmin(program));
  EXPECT_THAT(program.lines(), ElementsAre(kUnknown, kUnknown));
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modLibrary
