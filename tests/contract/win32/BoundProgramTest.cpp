#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>

#include "contract/ContractMachine.h"
#include "contract/win32/TestProgram.h"
#include "win32/Owned.h"
#include "win32/Win32Processes.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

/// A program that waits to be let on and then writes a report.
class BoundProgram : public testing::Test {
 protected:
  BoundProgram() { side_->putProgram(program_); }

  std::unique_ptr<machine::RunningProcess> start(bool bound) {
    SetEnvironmentVariableW(contract::kWaitForEvent, eventName_.c_str());
    std::unique_ptr<machine::RunningProcess> process;
    const std::string line = program_ + " 9 " + report_;
    EXPECT_EQ(
        bound ? processes_.startBound(line, true, process) : processes_.start(line, true, process),
        system_code::kSuccess);
    SetEnvironmentVariableW(contract::kWaitForEvent, nullptr);
    return process;
  }
  void letOn() { SetEvent(event_.get()); }
  /// Is the report written within two seconds?
  bool reports() {
    for (int i = 0; i < 40 && !side_->exists(report_); ++i) {
      Sleep(50);
    }
    return side_->exists(report_);
  }

  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  Win32Processes processes_;
  const std::string program_ = side_->folder() + "\\slow.exe";
  const std::string report_ = side_->folder() + "\\report.txt";
  const std::wstring eventName_ = L"TrelvTestBound" + std::to_wstring(GetCurrentProcessId());
  const OwnedProcess event_{CreateEventW(nullptr, TRUE, FALSE, eventName_.c_str())};
};

TEST_F(BoundProgram, RunsLikeAnyOther) {
  const std::unique_ptr<machine::RunningProcess> process = start(true);
  ASSERT_NE(process, nullptr);
  letOn();
  EXPECT_EQ(process->wait(), system_code::kSuccess);
  std::uint32_t code = 0;
  EXPECT_EQ(process->exitCode(code), system_code::kSuccess);
  EXPECT_EQ(code, 9U);
  EXPECT_TRUE(side_->exists(report_));
}

// The system closes the handles of a process that is ended by force as this does.
TEST_F(BoundProgram, EndsWithTheLastHandleOfWhoStartedIt) {
  start(true).reset();
  letOn();
  EXPECT_FALSE(reports());
}

TEST_F(BoundProgram, ThatIsNotBoundGoesOn) {
  start(false).reset();
  letOn();
  EXPECT_TRUE(reports());
}

TEST_F(BoundProgram, ThatIsMissingAnswers2) {
  std::unique_ptr<machine::RunningProcess> process;
  EXPECT_EQ(processes_.startBound(side_->folder() + "\\none.exe", true, process), 2U);
  EXPECT_EQ(process, nullptr);
}

}  // namespace
}  // namespace trelv::win32
