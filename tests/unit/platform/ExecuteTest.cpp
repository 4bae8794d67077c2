#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::modLibrary {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

TEST(Execute, ReportsAMissingProgramOnceWithTheCommandLine) {
  FakeProgram program;
  EXPECT_FALSE(Execute(program, "C:\\no.exe /a", true));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modLibrary");
  EXPECT_EQ(program.reports()[0].procedure, "Execute");
  EXPECT_EQ(program.reports()[0].message, "Errore in esecuzione programma: C:\\no.exe /a");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ProgramError);
  EXPECT_EQ(program.reports()[0].failure.number(), 0);
  EXPECT_EQ(program.reports()[0].failure.description(), "");
}

TEST(Execute, ReportsWantOfMemoryAndAnswersFalse) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe",
                                [](sim::SimProcess&) -> std::uint32_t { throw std::bad_alloc(); });
  EXPECT_FALSE(Execute(program, "C:\\p.exe", true));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].procedure, "Execute");
  EXPECT_EQ(program.reports()[0].failure.number(), runtime_number::kOutOfMemory);
}

TEST(Execute, PassesTheCommandLineAsItIs) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe");
  EXPECT_TRUE(Execute(program, "\"C:\\p.exe\" /s \"a b\" ", true));
  EXPECT_THAT(program.sim.programs().startedCommandLines(),
              ElementsAre("\"C:\\p.exe\" /s \"a b\" "));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(Execute, WaitsForTheEndOnDemandOnly) {
  FakeProgram program;
  bool ran = false;
  program.sim.programs().setDeferred(true);
  program.sim.programs().define("C:\\p.exe", [&](sim::SimProcess&) -> std::uint32_t {
    ran = true;
    return 0;
  });
  EXPECT_TRUE(Execute(program, "C:\\p.exe", false));
  EXPECT_FALSE(ran);
  EXPECT_TRUE(Execute(program, "C:\\p.exe", true));
  EXPECT_TRUE(ran);
}

TEST(Execute, AnswersTrueWhateverTheExitCode) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe", [](sim::SimProcess&) -> std::uint32_t { return 2; });
  std::uint32_t exitCode = 0;
  EXPECT_TRUE(Execute(program, "C:\\p.exe", true, std::nullopt, &exitCode));
  EXPECT_EQ(exitCode, 2U);
}

TEST(Execute, AnswersTrueWhenTheWaitFails) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe");
  program.sim.programs().failWaits(system_code::kAccessDenied);
  EXPECT_TRUE(Execute(program, "C:\\p.exe", true));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(Execute, ReportsAnUnexpectedFailureAndAnswersFalse) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe", [](sim::SimProcess&) -> std::uint32_t {
    throw RuntimeError(7, "prova", "guasto");
  });
  EXPECT_FALSE(Execute(program, "C:\\p.exe", true));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modLibrary");
  EXPECT_EQ(program.reports()[0].procedure, "Execute");
  EXPECT_EQ(program.reports()[0].message, "Errore in esecuzione programma: C:\\p.exe");
  EXPECT_EQ(program.reports()[0].failure.number(), 7);
}

TEST(Execute, HidesTheWindowOnlyWhenToldSo) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe");
  Execute(program, "C:\\p.exe", true);
  Execute(program, "C:\\p.exe", true, true);
  Execute(program, "C:\\p.exe", true, false);
  ASSERT_EQ(program.sim.started().size(), 3U);
  EXPECT_TRUE(program.sim.started()[0].visible);
  EXPECT_TRUE(program.sim.started()[1].visible);
  EXPECT_FALSE(program.sim.started()[2].visible);
}

TEST(Execute, ReportsARefusedElevationLikeAnyOther) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe");
  program.sim.programs().failStart("C:\\p.exe", system_code::kElevationRequired);
  EXPECT_FALSE(Execute(program, "C:\\p.exe", true));
  EXPECT_THAT(program.reportTexts(), ElementsAre("Errore in esecuzione programma: C:\\p.exe"));
}

TEST(Execute, LetsIniFilesBeReadAnewAfterwards) {
  FakeProgram program;
  program.sim.putFile("C:\\a.ini", "[S]\r\nk=old\r\n");
  program.sim.programs().define("C:\\p.exe", [](sim::SimProcess& process) -> std::uint32_t {
    process.machine().putFile("C:\\a.ini", "[S]\r\nk=new\r\n");
    return 0;
  });
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "old");
  EXPECT_TRUE(Execute(program, "C:\\p.exe", true));
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "new");
}

TEST(ExecuteUntilReady, ReturnsOnceTheProgramHasReadWhatItWasGiven) {
  FakeProgram program;
  program.sim.putFile("C:\\a.txt", "x");
  program.sim.programs().setDeferred(true);
  bool read = false;
  program.sim.programs().define("C:\\p.exe", [&](sim::SimProcess& process) -> std::uint32_t {
    read = process.machine().fileExists("C:\\a.txt");
    return 0;
  });
  EXPECT_TRUE(ExecuteUntilReady(program, "C:\\p.exe C:\\a.txt"));
  EXPECT_TRUE(read);
  EXPECT_FALSE(program.sim.started()[0].waited) << "not for its end";
  EXPECT_TRUE(program.sim.started()[0].visible);
  EXPECT_EQ(program.sim.calls().back(), "processes.waitUntilReady C:\\p.exe C:\\a.txt 5000");
}

TEST(ExecuteUntilReady, OneThatIsNotReadyInTimeWasStartedAllTheSame) {
  FakeProgram program;
  program.sim.programs().define("C:\\p.exe");
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::ProcessReady ? std::optional<SystemCode>(258) : std::nullopt;
  });
  EXPECT_TRUE(ExecuteUntilReady(program, "C:\\p.exe"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(ExecuteUntilReady, ReportsAMissingProgramAsExecuteDoes) {
  FakeProgram program;
  EXPECT_FALSE(ExecuteUntilReady(program, "C:\\no.exe"));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].procedure, "Execute");
  EXPECT_EQ(program.reports()[0].message, "Errore in esecuzione programma: C:\\no.exe");
}

}  // namespace
}  // namespace trelv::modLibrary
