#include <gtest/gtest.h>
#include <windows.h>

#include "win32/SystemCall.h"

namespace trelv::win32 {
namespace {

/// A path whose end overwrites the code, as that of a converted text or a handle may.
class ForgetfulPath {
 public:
  explicit ForgetfulPath(const wchar_t* path) : path_(path) {}
  ForgetfulPath(const ForgetfulPath&) = delete;
  ForgetfulPath& operator=(const ForgetfulPath&) = delete;
  ~ForgetfulPath() { SetLastError(ERROR_SUCCESS); }

  const wchar_t* text() const { return path_; }

 private:
  const wchar_t* path_;
};

constexpr const wchar_t* kMissing = L"C:\\there is no such file";

BOOL WINAPI failWithoutCode() { return FALSE; }

TEST(SystemCall, TheCodeIsTakenBeforeTheArgumentsAreDestroyed) {
  EXPECT_EQ(system_code::kFileNotFound, codeOf(DeleteFileW, ForgetfulPath(kMissing).text()));
  const Called<DWORD> attributes = called(GetFileAttributesW, ForgetfulPath(kMissing).text());
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, attributes.answer);
  EXPECT_EQ(system_code::kFileNotFound, attributes.failure());
}

TEST(SystemCall, AHandleThatCannotBeHadLeavesNoneAndItsCode) {
  OwnedSearch search;
  WIN32_FIND_DATAW data{};
  ASSERT_EQ(system_code::kSuccess, obtain(search, FindFirstFileW, std::wstring(L"C:\\*"), &data));
  EXPECT_TRUE(search);
  EXPECT_EQ(system_code::kFileNotFound,
            obtain(search, FindFirstFileW, ForgetfulPath(kMissing).text(), &data));
  EXPECT_FALSE(search);
}

TEST(SystemCall, AFailureWithoutACodeIsNoSuccess) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_NE(system_code::kSuccess, codeOf(failWithoutCode));
}

TEST(SystemCall, ACodeThatAnEarlierCallLeftIsNotAnswered) {
  SetLastError(ERROR_DISK_FULL);
  EXPECT_NE(system_code::kDiskFull, codeOf(failWithoutCode));
}

}  // namespace
}  // namespace trelv::win32
