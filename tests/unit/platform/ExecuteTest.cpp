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
  EXPECT_EQ(program.reports().at(0).failure.description(), "Impossibile trovare il programma");
  expectReported("C:\\no.exe /a", 2);
  EXPECT_FALSE(ExecuteUntilReady(program, "C:\\no.exe"));
  expectReported("C:\\no.exe", 2);
  EXPECT_FALSE(ExecuteTool(program, "no.exe /b", true));
  expectReported("no.exe /b", 2);
}

TEST_F(Execution, ThatCannotBeginTellsNumberAndReasonInReportAndLog) {
  define();
  for (const auto& [code, reason] : std::vector<std::pair<SystemCode, std::string>>{
           {system_code::kElevationRequired, "Il programma richiede i diritti di amministratore"},
           {system_code::kBadExeFormat, "Il file non è un programma valido per questo Windows"},
           {1223, "Operazione annullata dall'utente"},
           {system_code::kAccessDenied, "Accesso al programma negato"},
           {9999, "Errore di sistema 9999"}}) {
    sim.programs().failStart("C:\\p.exe", code);
    program.log.lines.clear();
    EXPECT_FALSE(execute("C:\\p.exe /s"));
    ASSERT_EQ(program.reports().size(), 1U);
    EXPECT_EQ(program.reports()[0].failure.description(), reason);
    expectReported("C:\\p.exe /s", static_cast<std::int32_t>(code));
    EXPECT_THAT(program.lines(),
                ElementsAre("Gestione ProdTrelv - Errore in esecuzione programma: C:\\p.exe /s (" +
                            std::to_string(code) + " " + reason + ")"));
  }
}

// --- Tools, which are named without a folder

TEST_F(Execution, OfAToolNeverTakesOneOfTheCurrentFolder) {
  sim.programs().define("C:\\qui\\notepad.exe");
  sim.volumes().setCurrentFolder("C:\\qui");
  EXPECT_FALSE(ExecuteTool(program, "notepad.exe a.txt", true));
  EXPECT_FALSE(ExecuteUntilReady(program, "notepad.exe a.txt"));
  sim.programs().define("C:\\WINDOWS\\notepad.exe");
  EXPECT_TRUE(ExecuteTool(program, "notepad.exe a.txt", true));
  EXPECT_TRUE(ExecuteUntilReady(program, "notepad.exe a.txt"));
  for (const sim::StartedProgram& started : sim.started()) {
    EXPECT_EQ(started.program, "C:\\WINDOWS\\notepad.exe");
    EXPECT_EQ(started.commandLine, "notepad.exe a.txt");
  }
}

TEST_F(Execution, OfAToolLooksBesideTheManagerInTheSystemInWindowsAndOnThePath) {
  sim.environment().put("PATH", ".;strumenti;;C:\\strumenti");
  sim.volumes().setCurrentFolder("C:\\qui");
  const std::vector<std::string> places{"C:\\strumenti", "C:\\WINDOWS", "C:\\WINDOWS\\system32",
                                        "C:\\Lumo\\Programmi"};
  sim.programs().define("C:\\qui\\regsrv32.exe");
  sim.programs().define("C:\\qui\\strumenti\\regsrv32.exe");
  EXPECT_FALSE(ExecuteTool(program, "regsrv32 /u", true));
  for (const std::string& place : places) {
    sim.programs().define(place + "\\regsrv32.exe");
    EXPECT_TRUE(ExecuteTool(program, "regsrv32 /u", true));
    EXPECT_EQ(sim.started().back().program, place + "\\regsrv32.exe");
  }
}

TEST_F(Execution, ThatFailsUnexpectedlyIsReportedAndNoSuccess) {
  define([](sim::SimProcess&) { throw RuntimeError(7, "prova", "guasto"); });
  EXPECT_FALSE(execute());
  expectReported("C:\\p.exe", 7);
  define([](sim::SimProcess&) { throw std::bad_alloc(); });
  EXPECT_FALSE(execute());
  expectReported("C:\\p.exe", runtime_number::kOutOfMemory);
  EXPECT_FALSE(ExecuteTool(program, "C:\\p.exe", true));
  expectReported("C:\\p.exe", runtime_number::kOutOfMemory);
  EXPECT_FALSE(ExecuteUntilReady(program, "C:\\p.exe"));
  expectReported("C:\\p.exe", runtime_number::kOutOfMemory);
  std::uint32_t exitCode = 0;
  EXPECT_FALSE(ExecuteBound(program, "C:\\p.exe", exitCode));
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
  sim.putFile("C:\\a.ini", "[S]\r\nk=old\r\n");
  program.configurationFiles.forget();
  EXPECT_EQ(ReadSetting(program, value), "old");
  EXPECT_TRUE(ExecuteUntilReady(program, "C:\\p.exe"));
  EXPECT_EQ(ReadSetting(program, value), "new") << "also before it has ended";
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
