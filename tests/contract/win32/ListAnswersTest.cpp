#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "contract/win32/ReplacedFunction.h"
#include "win32/Win32Files.h"

namespace trelv::win32 {
namespace {

using machine::FolderEntry;
using testing::IsEmpty;
using testing::SizeIs;

SystemCode answered = 0;

HANDLE WINAPI answerNothing(LPCWSTR /*pattern*/, WIN32_FIND_DATAW* /*data*/) {
  SetLastError(answered);
  return INVALID_HANDLE_VALUE;
}

/// The first answer of a listing is that there is none; servers say so in several ways.
class ListAnswers : public testing::Test {
 protected:
  SystemCode list(const std::string& ending) {
    const ReplacedFunction replaced(L"kernel32.dll", "FindFirstFileW", &answerNothing);
    return files_.list("C:\\windows", ending, entries_);
  }

  Win32Files files_;
  std::vector<FolderEntry> entries_{{"old", {}}};
};

TEST_F(ListAnswers, ThatNothingIsThereGiveAnEmptyList) {
  for (const SystemCode code : {ERROR_FILE_NOT_FOUND, ERROR_NO_MORE_FILES}) {
    answered = code;
    for (const char* const ending : {"", "zip"}) {
      entries_ = {{"old", {}}};
      EXPECT_EQ(system_code::kSuccess, list(ending)) << code;
      EXPECT_THAT(entries_, IsEmpty()) << code;
    }
  }
}

TEST_F(ListAnswers, OfAnyOtherKindAreFailuresAndLeaveTheList) {
  for (const SystemCode code : {ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_BAD_NETPATH}) {
    answered = code;
    EXPECT_EQ(code, list("zip"));
    EXPECT_THAT(entries_, SizeIs(1));
  }
}

}  // namespace
}  // namespace trelv::win32
