#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

class ProcessesContract : public Contract {
 protected:
  std::string program(const std::string& name = "p.exe") {
    world().putProgram(path(name));
    return path(name);
  }

  SystemCode start(const std::string& commandLine, bool visible = false) {
    process_.reset();
    return machine().processes.start(commandLine, visible, process_);
  }

  /// Starts, waits, and gives the exit code.
  std::uint32_t run(const std::string& commandLine, bool visible = false) {
    EXPECT_EQ(start(commandLine, visible), system_code::kSuccess) << commandLine;
    if (process_ == nullptr) return 99999;
    EXPECT_EQ(process_->wait(), system_code::kSuccess);
    return exitCode();
  }

  machine::RunningProcess& process() { return *process_; }
  std::uint32_t exitCode() {
    std::uint32_t code = 99999;
    EXPECT_EQ(process_->exitCode(code), system_code::kSuccess);
    return code;
  }

  bool started() const { return process_ != nullptr; }
  std::string report() { return path("report.txt"); }

 private:
  std::unique_ptr<machine::RunningProcess> process_;
};

TEST_F(ProcessesContract, TheExitCodeIsTheProgramsOwn) {
  const std::string file = program();
  EXPECT_EQ(run(file), 0U);
  EXPECT_EQ(run(file + " 7"), 7U);
  EXPECT_EQ(run(file + " 4000000000"), 4000000000U);
}

TEST_F(ProcessesContract, VisibleAndHiddenProgramsRunAlike) {
  const std::string file = program();
  EXPECT_EQ(run(file + " 3", true), 3U);
  EXPECT_EQ(run(file + " 3", false), 3U);
}

TEST_F(ProcessesContract, AQuotedPathMayHoldBlanks) {
  world().putFolder(path("A B"));
  const std::string file = program("A B\\c d.exe");
  EXPECT_EQ(run("\"" + file + "\" 5"), 5U);
}

TEST_F(ProcessesContract, TheProgramSeesItsCommandLineATrailingBlankIncluded) {
  const std::string quoted = "\"" + program() + "\" 0 \"" + report() + "\"";
  for (const std::string& line : {quoted, program() + " 0 " + report() + " "}) {
    ASSERT_EQ(run(line), 0U);
    EXPECT_EQ(world().fileBytes(report()), line);
  }
}

TEST_F(ProcessesContract, APathWithATrailingBlankStarts) { EXPECT_EQ(run(program() + " "), 0U); }

TEST_F(ProcessesContract, AnUnquotedPathWithBlanksIsCompletedFromTheLeft) {
  world().putFolder(path("A B"));
  const std::string file = program("A B\\c d.exe");
  ASSERT_EQ(run(file + " 4 " + report()), 4U);
  EXPECT_EQ(world().fileBytes(report()), "\"" + file + "\" 4 " + report());
}

TEST_F(ProcessesContract, AProgramNamedLikeTheFirstWordOfAPathIsStartedInstead) {
  world().putFolder(path("A B"));
  program("A.exe");
  const std::string file = program("A B\\c.exe");
  // To A.exe the rest of the path is its first argument, so that it finds a second one.
  EXPECT_EQ(run(file + " " + report()), 0U);
  EXPECT_TRUE(world().exists(report()));
}

TEST_F(ProcessesContract, AMissingExtensionIsCompletedAndAnyOtherDoesNotMatter) {
  program("q.exe");
  EXPECT_EQ(run(path("q") + " 6"), 6U);
  EXPECT_EQ(run(program("q.dat") + " 6"), 6U);
  EXPECT_EQ(run(program("noext") + " 6"), 6U);
}

TEST_F(ProcessesContract, ForwardSlashesWork) {
  std::string file = program();
  std::replace(file.begin(), file.end(), '\\', '/');
  EXPECT_EQ(run(file + " 6"), 6U);
}

TEST_F(ProcessesContract, AccentedPathsWork) {
  EXPECT_EQ(run(program("perch\u00E9.exe") + " 6"), 6U);
}

TEST_F(ProcessesContract, AToolIsNeverTakenFromTheCurrentFolder) {
  world().putFolder(path("here"));
  world().putFolder(path("there"));
  program("here\\trelvtool.exe");
  world().enterFolder(path("here"));
  std::string before;
  machine().environment.get("PATH", before);
  std::unique_ptr<machine::RunningProcess> process;
  for (const std::string& search : {std::string("."), std::string("x;;.\\;..\\here"), before}) {
    ASSERT_TRUE(machine().environment.set("PATH", search));
    EXPECT_EQ(machine().processes.startTool("trelvtool 6", true, process), 2U) << search;
  }
  EXPECT_EQ(run("trelvtool 3"), 3U) << "the system itself takes it";
  ASSERT_TRUE(machine().environment.set("PATH", ".;" + path("there") + ";" + before));
  EXPECT_EQ(machine().processes.startTool("trelvtool 6", true, process), 2U);
  program("there\\trelvtool.exe");
  for (const char* const line : {"trelvtool 6", "trelvtool.exe 6"}) {
    std::uint32_t code = 0;
    ASSERT_EQ(machine().processes.startTool(line, true, process), system_code::kSuccess) << line;
    EXPECT_EQ(process->wait(), system_code::kSuccess);
    EXPECT_EQ(process->exitCode(code), system_code::kSuccess);
    EXPECT_EQ(code, 6U);
  }
  EXPECT_EQ(machine().processes.startTool("trelvtool2", true, process), 2U);
  EXPECT_EQ(machine().processes.startTool(path("here\\trelvtool.exe"), true, process),
            system_code::kSuccess);
  process->wait();
  machine().environment.set("PATH", before);
}

TEST_F(ProcessesContract, WhatIsMissingOrAFolderOrHasNoNameAnswers2) {
  world().putFolder(path("sub"));
  for (const std::string& line :
       {path("none.exe"), "\"" + path("none.exe") + "\" x", std::string("trelvnone.exe x"),
        path("none\\a.exe"), std::string("Q:\\a.exe"), std::string("regsrv32 /u /s x.ocx"),
        path("sub"), std::string(), std::string("  "), " " + program()}) {
    EXPECT_EQ(start(line), 2U) << line;
    EXPECT_FALSE(started()) << line;
  }
}

TEST_F(ProcessesContract, EmptyQuotesAnswer87) { EXPECT_EQ(start("\"\""), 87U); }

TEST_F(ProcessesContract, WhatIsNoProgramAnswers193) {
  putFile("text.exe", "this is no program, only text that is long enough to look at\r\n");
  putFile("empty.exe", "");
  putFile("a.txt", "text\r\n");
  putFile("a.msi", "text\r\n");
  for (const char* name : {"text.exe", "empty.exe", "a.txt", "a.msi"}) {
    EXPECT_EQ(start(path(name)), 193U) << name;
  }
}

TEST_F(ProcessesContract, ACommandLineOfMoreThan32767CharactersAnswers87) {
  EXPECT_EQ(start(program() + " 0 " + std::string(33000, 'x')), 87U);
}

TEST_F(ProcessesContract, VariablesReachTheProgram) {
  ASSERT_TRUE(machine().environment.set("TRELV-CONTRACT", "perche' no"));
  ASSERT_EQ(run(program() + " 0 " + report() + " TRELV-CONTRACT"), 0U);
  const std::string text = world().fileBytes(report());
  EXPECT_EQ(text.substr(text.find('\n') + 1), "perche' no");
}

TEST_F(ProcessesContract, AProgramGoesOnWhenItsHandleIsDropped) {
  const std::string file = program();
  ASSERT_EQ(start(file + " 0 " + report()), system_code::kSuccess);
  ASSERT_EQ(run(file + " 2"), 2U);
  EXPECT_EQ(run(file + " 3"), 3U);
}

TEST_F(ProcessesContract, ABoundProgramRunsLikeAnyOther) {
  const std::string file = program();
  std::unique_ptr<machine::RunningProcess> process;
  ASSERT_EQ(machine().processes.startBound(file + " 7 " + report(), true, process),
            system_code::kSuccess);
  EXPECT_EQ(process->wait(), system_code::kSuccess);
  std::uint32_t code = 0;
  EXPECT_EQ(process->exitCode(code), system_code::kSuccess);
  EXPECT_EQ(code, 7U);
  EXPECT_EQ(world().fileBytes(report()), file + " 7 " + report());
  EXPECT_EQ(machine().processes.startBound(path("none.exe"), true, process), 2U);
}

TEST_F(ProcessesContract, WaitingUntilReadyEndsWithTheProgramAtTheLatest) {
  ASSERT_EQ(start(program() + " 6"), system_code::kSuccess);
  process().waitUntilReady(60000);
  EXPECT_EQ(process().wait(), system_code::kSuccess);
  EXPECT_EQ(exitCode(), 6U);
}

TEST_F(ProcessesContract, WaitingTwiceAnswersAtOnce) {
  ASSERT_EQ(start(program() + " 8"), system_code::kSuccess);
  EXPECT_EQ(process().wait(), system_code::kSuccess);
  EXPECT_EQ(process().wait(), system_code::kSuccess);
  EXPECT_EQ(exitCode(), 8U);
}

TEST_F(ProcessesContract, AProgramThatOthersMayNotReadDoesNotStart) {
  CONTRACT_NEEDS(Ability::HoldFiles, "files cannot be held against others here");
  const std::string file = program();
  {
    const auto held = world().hold(file, {});
    EXPECT_EQ(start("\"" + file + "\" 0"), 32U);
  }
  EXPECT_EQ(run("\"" + file + "\" 5"), 5U);
}

TEST_F(ProcessesContract, ThisProcessRunsAndOneThatNeverWasDoesNot) {
  EXPECT_TRUE(machine().processes.isRunning(machine().system.processId()));
  EXPECT_FALSE(machine().processes.isRunning(0x7FFFFFF0));
}

}  // namespace
}  // namespace trelv::contract
