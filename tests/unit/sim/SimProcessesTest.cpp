// Which program a command line means on Windows is held by the contract, but for what no test can
// lay out there.

#include <gtest/gtest.h>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using namespace system_code;

class SimProcessesTest : public testing::Test {
 protected:
  SystemCode start(const std::string& commandLine) {
    return machine_.programs().start(commandLine, true, process_);
  }
  // The program that a command line starts, or the code of its refusal in brackets.
  std::string programOf(const std::string& commandLine) {
    SimProcesses::Found found;
    const SystemCode code = machine_.programs().resolve(commandLine, found);
    return code == kSuccess ? found.program : "(" + std::to_string(code) + ")";
  }

  SimMachine machine_;
  std::unique_ptr<machine::RunningProcess> process_;
};

TEST_F(SimProcessesTest, BareNamesAreSearchedInOrder) {
  machine_.environment().put("PATH", "C:\\WINDOWS;C:\\tools");
  machine_.volumes().setCurrentFolder("C:\\qui");
  // Each is found before those above it.
  for (const char* const folder :
       {"C:\\tools", "C:\\WINDOWS", "C:\\WINDOWS\\system32", "C:\\qui", "C:\\Lumo\\Programmi"}) {
    const std::string program = std::string(folder) + "\\prova.exe";
    machine_.programs().define(program);
    EXPECT_EQ(programOf("prova /s"), program);
  }
}

TEST_F(SimProcessesTest, BatchFilesAreProgramsAndWhatIsOnADeadShareIsMissing) {
  machine_.putFile("C:\\con spazi\\a.bat", "exit /b 3");
  EXPECT_EQ(programOf("\"C:\\con spazi\\a.bat\" 1"), "C:\\con spazi\\a.bat");
  EXPECT_EQ(start("\\\\dead\\share\\a.exe"), kFileNotFound);
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(SimProcessesTest, AProgramSeesItsCommandLineAndChangesTheMachine) {
  machine_.environment().put("Kx-Dir", "C:\\kx");
  std::string seen;
  machine_.programs().define("C:\\con spazi\\setup.exe", [&](SimProcess& process) {
    seen = process.commandLine() + "|" + process.variable("KX-DIR");
    process.machine().putFile("C:\\out.txt", process.arguments().at(1));
    return 4U;
  });

  ASSERT_EQ(machine_.programs().start("C:\\con spazi\\setup.exe /s \"a b\" ", false, process_),
            kSuccess);
  EXPECT_EQ(seen, "\"C:\\con spazi\\setup.exe\" /s \"a b\" |C:\\kx");
  EXPECT_EQ(machine_.fileText("C:\\out.txt"), "a b");

  ASSERT_EQ(machine_.started().size(), 1U);
  const StartedProgram& record = machine_.started().front();
  EXPECT_EQ(record.commandLine, "C:\\con spazi\\setup.exe /s \"a b\" ");
  EXPECT_EQ(record.program, "C:\\con spazi\\setup.exe");
  EXPECT_EQ(record.arguments, (std::vector<std::string>{"/s", "a b"}));
  EXPECT_FALSE(record.visible);
  EXPECT_FALSE(record.waited);
  EXPECT_EQ(record.environment.at("Kx-Dir"), "C:\\kx");

  std::uint32_t code = 0;
  EXPECT_EQ(process_->wait(), kSuccess);
  EXPECT_EQ(process_->exitCode(code), kSuccess);
  EXPECT_EQ(code, 4U);
  EXPECT_TRUE(record.waited);
}

TEST_F(SimProcessesTest, DeferredProgramsRunWhenWaitedForOrWhenTold) {
  int runs = 0;
  machine_.programs().define("C:\\a.exe", [&](SimProcess&) {
    ++runs;
    return 0U;
  });
  machine_.programs().setDeferred(true);
  std::unique_ptr<machine::RunningProcess> other;
  ASSERT_EQ(start("C:\\a.exe"), kSuccess);
  ASSERT_EQ(machine_.programs().start("C:\\a.exe", true, other), kSuccess);
  std::uint32_t code = 0;

  EXPECT_EQ(runs, 0);
  EXPECT_EQ(process_->exitCode(code), kSuccess);
  EXPECT_EQ(code, 259U);
  EXPECT_EQ(machine_.files().removeFile("C:\\a.exe"), kAccessDenied);
  EXPECT_EQ(process_->wait(), kSuccess);
  EXPECT_EQ(runs, 1);
  machine_.programs().runDeferred();
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(machine_.files().removeFile("C:\\a.exe"), kSuccess);
}

TEST_F(SimProcessesTest, StartsAndWaitsFailWhenTold) {
  machine_.programs().define("C:\\setup.exe");
  machine_.programs().requireElevation("C:\\SETUP.exe");
  machine_.system().setAdministrator(false);
  EXPECT_EQ(start("C:\\setup.exe"), kElevationRequired);
  machine_.system().setAdministrator(true);
  EXPECT_EQ(start("C:\\setup.exe"), kSuccess);

  machine_.programs().failWaits(kAccessDenied);
  EXPECT_EQ(process_->wait(), kAccessDenied);
  machine_.programs().failStart("C:\\setup.exe", kSharingViolation);
  EXPECT_EQ(start("C:\\setup.exe"), kSharingViolation);
  EXPECT_EQ(machine_.started().size(), 1U);
}

TEST_F(SimProcessesTest, AProgramOnAShareRunsOnTheWorkstationThatStartsIt) {
  const auto share = machine_.mount("S:");
  machine_.programs().define("S:\\setup.exe", [](SimProcess& process) {
    process.machine().putFile("C:\\done.txt", "");
    return 0U;
  });
  SimMachine other;
  other.mount("\\\\server\\lumo", share);

  ASSERT_EQ(other.programs().start("\\\\server\\lumo\\setup.exe", true, process_), kSuccess);
  EXPECT_TRUE(other.fileExists("C:\\done.txt"));
  EXPECT_FALSE(machine_.fileExists("C:\\done.txt"));
}

TEST(SplitArguments, QuotesGroupAndAreRemoved) {
  EXPECT_EQ(splitArguments(" a  \"b c\"\t\"\" d\"e f\"g"),
            (std::vector<std::string>{"a", "b c", "", "de fg"}));
  EXPECT_EQ(splitArguments("\"never closed"), (std::vector<std::string>{"never closed"}));
  EXPECT_TRUE(splitArguments("  ").empty());
}

}  // namespace
}  // namespace trelv::sim
