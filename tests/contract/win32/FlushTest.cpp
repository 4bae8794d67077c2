#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "contract/ContractMachine.h"
#include "contract/win32/ReplacedFunction.h"
#include "win32/Win32Files.h"
#include "win32/Win32ProfileFiles.h"

namespace trelv::win32 {
namespace {

/// What was asked of the system, in its order; a flush with the number of bytes of its file.
std::vector<std::string> asked;

BOOL WINAPI noteFlush(HANDLE file) {
  asked.push_back("flush of " + std::to_string(GetFileSize(file, nullptr)));
  return TRUE;
}

BOOL WINAPI noteMove(LPCWSTR /*source*/, LPCWSTR /*target*/, DWORD /*flags*/) {
  asked.emplace_back("move");
  return TRUE;
}

using Steps = std::vector<std::string>;

/// What is put in the place of a file must be on the disk before it gets that name.
class Flush : public testing::Test {
 protected:
  Flush() { asked.clear(); }

  std::string path(const std::string& name) { return side_->folder() + "\\" + name; }
  void replace() {
    const ReplacedFunction flushing(L"kernel32.dll", "FlushFileBuffers", &noteFlush);
    const ReplacedFunction moving(L"kernel32.dll", "MoveFileExW", &noteMove);
    files_.replaceFile(path("new"), path("old"));
  }
  void move() {
    const ReplacedFunction flushing(L"kernel32.dll", "FlushFileBuffers", &noteFlush);
    const ReplacedFunction moving(L"kernel32.dll", "MoveFileExW", &noteMove);
    files_.moveFile(path("new"), path("other"));
  }

  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  Win32Files files_;
};

TEST_F(Flush, StandsBeforeTheRenameThatReplaces) {
  side_->putFile(path("new"), "12345");
  replace();
  EXPECT_EQ(asked, (Steps{"flush of 5", "move"}));
}

TEST_F(Flush, StandsBeforeTheRenameThatNeverReplaces) {
  side_->putFile(path("new"), "1234567");
  move();
  EXPECT_EQ(asked, (Steps{"flush of 7", "move"}));
}

/// They keep nothing back that a flush of the file could miss.
TEST_F(Flush, HasAllThatTheProfileFunctionsWrote) {
  Win32ProfileFiles profiles;
  EXPECT_EQ(profiles.writeValue("Parametri", "Uno", "1", path("new")), 1U);
  EXPECT_EQ(profiles.writeValue("Parametri", "Due", "2", path("new")), 1U);
  replace();
  const std::string text = "[Parametri]\r\nUno=1\r\nDue=2\r\n";
  EXPECT_EQ(asked, (Steps{"flush of " + std::to_string(text.size()), "move"}));
}

TEST_F(Flush, OfAReadOnlyFileLeavesItReadOnly) {
  side_->putFile(path("new"), "123");
  ASSERT_EQ(files_.setReadOnly(path("new"), true), system_code::kSuccess);
  replace();
  EXPECT_EQ(asked, (Steps{"flush of 3", "move"}));
  machine::FileFacts facts;
  ASSERT_EQ(files_.look(path("new"), facts), system_code::kSuccess);
  EXPECT_TRUE(facts.readOnly);
  files_.setReadOnly(path("new"), false);
}

TEST_F(Flush, OfAFileThatOthersReadIsNotInTheirWay) {
  side_->putFile(path("new"), "1");
  const auto reader = side_->hold(path("new"), {true, true, true});
  replace();
  EXPECT_EQ(asked, (Steps{"flush of 1", "move"}));
}

}  // namespace
}  // namespace trelv::win32
