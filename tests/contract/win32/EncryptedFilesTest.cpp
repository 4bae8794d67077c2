#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>

#include "contract/ContractMachine.h"
#include "contract/win32/ReplacedFunction.h"
#include "win32/FilePath.h"
#include "win32/SystemCall.h"
#include "win32/Win32Files.h"

namespace trelv::win32 {
namespace {

/// What the test is told of all files: the attribute that nothing here can have.
DWORD WINAPI tellEncrypted(LPCWSTR path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  return GetFileAttributesExW(path, GetFileExInfoStandard, &data) != FALSE
             ? data.dwFileAttributes | FILE_ATTRIBUTE_ENCRYPTED
             : INVALID_FILE_ATTRIBUTES;
}

bool copiedBySystem = false;

BOOL WINAPI noteCopy(LPCWSTR /*source*/, LPCWSTR /*target*/, BOOL /*refuseExisting*/) {
  copiedBySystem = true;
  SetLastError(ERROR_ENCRYPTION_FAILED);
  return FALSE;
}

/// Setting a file's time takes its attributes away under Wine 10, on Windows never.
bool attributesOutliveATime(const std::string& path) {
  const std::wstring name = filePath(path);
  OwnedFile file(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                             FILE_ATTRIBUTE_READONLY, nullptr));
  const FILETIME time{0, 0x1D00000};
  SetFileTime(file.get(), nullptr, nullptr, &time);
  const bool kept = (GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
  file = OwnedFile();
  SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(name.c_str());
  return kept;
}

/// The system says of all files that they are encrypted, and copies none of them.
class EncryptedFiles : public testing::Test {
 protected:
  EncryptedFiles() { copiedBySystem = false; }

  std::string path(const std::string& name) { return side_->folder() + "\\" + name; }
  SystemCode copy(const std::string& source, const std::string& target) {
    const ReplacedFunction attributes(L"kernel32.dll", "GetFileAttributesW", &tellEncrypted);
    const ReplacedFunction copying(L"kernel32.dll", "CopyFileW", &noteCopy);
    return files_.copyFile(source, target);
  }
  machine::FileFacts factsOf(const std::string& file) {
    machine::FileFacts facts;
    EXPECT_EQ(files_.look(file, facts), system_code::kSuccess);
    return facts;
  }

  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  Win32Files files_;
};

TEST_F(EncryptedFiles, OthersAreCopiedByTheSystem) {
  side_->putFile(path("a"), "text");
  const ReplacedFunction copying(L"kernel32.dll", "CopyFileW", &noteCopy);
  EXPECT_EQ(ERROR_ENCRYPTION_FAILED, files_.copyFile(path("a"), path("b")));
  EXPECT_TRUE(copiedBySystem);
}

TEST_F(EncryptedFiles, AreCopiedWholeWithTheirTimeAndProtection) {
  for (const std::size_t size : {0U, 5U, 0x10000U, 0x10001U, 300'000U}) {
    std::string bytes(size, 'x');
    if (size > 1) bytes.back() = 'z';
    side_->putFile(path("a"), bytes);
    side_->makeOld(path("a"));
    ASSERT_EQ(files_.setReadOnly(path("a"), true), system_code::kSuccess);
    ASSERT_EQ(copy(path("a"), path("b")), system_code::kSuccess) << size;
    EXPECT_FALSE(copiedBySystem);
    EXPECT_TRUE(side_->fileBytes(path("b")) == bytes) << size;
    const machine::FileFacts facts = factsOf(path("b"));
    // Wine gives a new file no other attribute.
    EXPECT_EQ(facts.readOnly, attributesOutliveATime(path("probe")));
    EXPECT_EQ(facts.modified, factsOf(path("a")).modified);
    for (const char* const name : {"a", "b"}) {
      files_.setReadOnly(path(name), false);
      ASSERT_EQ(files_.removeFile(path(name)), system_code::kSuccess);
    }
  }
}

TEST_F(EncryptedFiles, AreCopiedOntoOthersButNotOntoThemselvesOrFolders) {
  side_->putFile(path("a"), "new");
  side_->putFile(path("b"), "a longer text");
  side_->putFolder(path("sub"));
  ASSERT_EQ(copy(path("a"), path("b")), system_code::kSuccess);
  EXPECT_EQ(side_->fileBytes(path("b")), "new");
  EXPECT_EQ(copy(path("a"), path("A")), system_code::kSharingViolation);
  EXPECT_EQ(copy(path("a"), path("sub")), system_code::kAccessDenied);
  EXPECT_EQ(copy(path("sub"), path("b")), system_code::kAccessDenied);
  EXPECT_EQ(side_->fileBytes(path("a")), "new");
  EXPECT_EQ(side_->fileBytes(path("b")), "new");
}

}  // namespace
}  // namespace trelv::win32
