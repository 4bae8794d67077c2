#include <gtest/gtest.h>
#include <windows.h>

#include <bit>
#include <string>

#include "base/RuntimeError.h"
#include "contract/ContractMachine.h"
#include "contract/win32/TestProgram.h"
#include "win32/Win32ConfigurationLibrary.h"
#include "win32/Win32SupportLibrary.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using machine::SupportAnswer;

/// Empty folders in the places of the program's own, the system's and Windows' own, and the
/// libraries that are built beside this test program ("libraries").
class HostLibraries : public testing::Test {
 protected:
  HostLibraries() {
    side_->putFolder(own_);
    side_->putFolder(system_);
    side_->putFolder(windows_);
  }

  LibraryFolders folders() const {
    return {wide(own_) + L"\\", wide(system_) + L"\\", wide(windows_) + L"\\"};
  }

  /// Puts a built library at `target`.
  void install(const std::string& library, const std::string& target) {
    const std::wstring program = contract::testProgramPath();
    const std::wstring source =
        program.substr(0, program.rfind(L'\\')) + L"\\libraries\\" + wide(library);
    ASSERT_NE(FALSE, CopyFileW(source.c_str(), wide(target).c_str(), TRUE))
        << utf8(source) << " is not built: " << GetLastError();
  }

  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  std::string own_ = side_->folder() + "\\own";
  std::string system_ = side_->folder() + "\\system";
  std::string windows_ = side_->folder() + "\\windows";
};

TEST_F(HostLibraries, ThatStandNowhereAreAbsent) {
  std::string buffer(100, ' ');
  EXPECT_EQ(SupportAnswer::Absent, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_EQ(SupportAnswer::Absent, Win32SupportLibrary(folders()).temporaryPath(buffer));
  EXPECT_EQ(std::string(100, ' '), buffer);
  EXPECT_FALSE(Win32ConfigurationLibrary(folders()).stands());
}

TEST_F(HostLibraries, OfTheCurrentFolderAreNotLookedAt) {
  install("tovrautil.dll", side_->folder() + "\\tovrautil.dll");
  SetCurrentDirectoryW(wide(side_->folder()).c_str());
  EXPECT_EQ(SupportAnswer::Absent, Win32SupportLibrary(folders()).isAdministrator());
  SetCurrentDirectoryW(L"C:\\");
}

TEST_F(HostLibraries, ThatAreNoLibraryFail) {
  side_->putFile(own_ + "\\tovrautil.dll", "text");
  side_->putFile(own_ + "\\mviconf.dll", "text");
  std::string buffer(100, ' ');
  EXPECT_EQ(SupportAnswer::Failed, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_EQ(SupportAnswer::Failed, Win32SupportLibrary(folders()).temporaryPath(buffer));
  Win32ConfigurationLibrary configuration(folders());
  EXPECT_TRUE(configuration.stands());
  EXPECT_THROW(configuration.getConfigPath(1, buffer), RuntimeError);
}

UINT errorMode() {
  const UINT mode = SetErrorMode(0);
  SetErrorMode(mode);
  return mode;
}

TEST_F(HostLibraries, AreLoadedWithoutTheSystemsBoxesAndProgramsDoNotInheritThat) {
  install("tovrautil.dll", own_ + "\\tovrautil.dll");
  SetErrorMode(SEM_NOOPENFILEERRORBOX);
  Win32SupportLibrary library(folders());
  EXPECT_EQ(SupportAnswer::Yes, library.isAdministrator());
  EXPECT_EQ(SEM_NOOPENFILEERRORBOX, static_cast<int>(errorMode()));
  SetErrorMode(0);
  using ErrorModeAtLoad = UINT WINAPI();
  auto* const atLoad = std::bit_cast<ErrorModeAtLoad*>(
      GetProcAddress(GetModuleHandleW(L"tovrautil.dll"), "ErrorModeAtLoad"));
  ASSERT_NE(nullptr, atLoad);
  EXPECT_EQ(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, static_cast<int>(atLoad()));
}

TEST_F(HostLibraries, ThatLackTheEntryFail) {
  install("broken.dll", own_ + "\\tovrautil.dll");
  install("broken.dll", own_ + "\\mviconf.dll");
  std::string buffer(100, ' ');
  EXPECT_EQ(SupportAnswer::Failed, Win32SupportLibrary(folders()).isAdministrator());
  Win32ConfigurationLibrary configuration(folders());
  try {
    configuration.getConfigPath(1, buffer);
    FAIL() << "nothing was raised";
  } catch (const RuntimeError& failure) {
    EXPECT_NE(std::string::npos, failure.description().find("\\own\\mviconf.dll (GetConfigPath)"))
        << failure.description();
  }
}

TEST_F(HostLibraries, SupportLibraryAnswersBothQuestions) {
  install("tovrautil.dll", own_ + "\\tovrautil.dll");
  side_->putFile(own_ + "\\tovrautil.ini",
                 "[tovrautil]\r\nadministrator=0\r\ntemporary=C:\\Modalit\xE0\\\r\n");
  Win32SupportLibrary support(folders());
  EXPECT_EQ(SupportAnswer::No, support.isAdministrator());
  std::string buffer(100, ' ');
  EXPECT_EQ(SupportAnswer::Yes, support.temporaryPath(buffer));
  EXPECT_EQ("C:\\Modalità\\", std::string(buffer.c_str()));
  EXPECT_EQ("IsAdministrator\r\nGetPelanTempPath ''\r\n",
            side_->fileBytes(own_ + "\\tovrautil.txt"));

  side_->putFile(own_ + "\\tovrautil.ini", "[tovrautil]\r\nadministrator=2\r\n");
  EXPECT_EQ(SupportAnswer::Yes, support.isAdministrator());
}

TEST_F(HostLibraries, OfTheOwnFolderComeBeforeThoseOfTheSystem) {
  install("tovrautil.dll", own_ + "\\tovrautil.dll");
  install("tovrautil.dll", system_ + "\\tovrautil.dll");
  EXPECT_EQ(SupportAnswer::Yes, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_TRUE(side_->exists(own_ + "\\tovrautil.txt"));
  EXPECT_FALSE(side_->exists(system_ + "\\tovrautil.txt"));
}

TEST_F(HostLibraries, OfTheSystemFolderAreUsedWhereTheOwnFolderHasNone) {
  install("tovrautil.dll", system_ + "\\tovrautil.dll");
  EXPECT_EQ(SupportAnswer::Yes, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_TRUE(side_->exists(system_ + "\\tovrautil.txt"));
}

TEST_F(HostLibraries, OfTheWindowsFolderAreUsedWhereTheOthersHaveNone) {
  install("tovrautil.dll", windows_ + "\\tovrautil.dll");
  EXPECT_EQ(SupportAnswer::Yes, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_TRUE(side_->exists(windows_ + "\\tovrautil.txt"));
  install("tovrautil.dll", system_ + "\\tovrautil.dll");
  EXPECT_EQ(SupportAnswer::Yes, Win32SupportLibrary(folders()).isAdministrator());
  EXPECT_TRUE(side_->exists(system_ + "\\tovrautil.txt"));
}

TEST_F(HostLibraries, ThatWriteMoreThanTheyWereToldDestroyNothing) {
  install("tovrautil.dll", own_ + "\\tovrautil.dll");
  const std::string folder = "C:\\" + std::string(200, 'd') + "\\";
  side_->putFile(own_ + "\\tovrautil.ini", "[tovrautil]\r\ntemporary=" + folder + "\r\n");
  Win32SupportLibrary support(folders());
  std::string buffer(100, ' ');
  EXPECT_EQ(SupportAnswer::Yes, support.temporaryPath(buffer));
  EXPECT_EQ(folder, std::string(buffer.c_str()));
}

TEST_F(HostLibraries, ConfigurationLibraryGetsAndGivesAnsiTexts) {
  install("mviconf.dll", own_ + "\\mviconf.dll");
  side_->putFile(own_ + "\\mviconf.ini",
                 "[GetConfigPath]\r\npath=S:\\Societ\xE0\r\n[Values]\r\nDOVRA.S.K.A=\xE8 qui\r\n"
                 "[Codes]\r\nDOVRA.S.Altro.A=-3003\r\n");
  Win32ConfigurationLibrary configuration(folders());

  std::string buffer(1000, '\0');
  EXPECT_EQ(0, configuration.getConfigPath(1, buffer));
  EXPECT_EQ("S:\\Società", std::string(buffer.c_str()));

  buffer.assign(1000, '\0');
  EXPECT_EQ(0, configuration.getParameter("DOVRA", "S", "K", "A", "niente", 1000, buffer));
  EXPECT_EQ("è qui", std::string(buffer.c_str()));

  buffer.assign(1000, '\0');
  EXPECT_EQ(-3003, configuration.getParameter("DOVRA", "S", "Altro", "A", "però", 1000, buffer));
  EXPECT_EQ("però", std::string(buffer.c_str()));

  EXPECT_EQ(0, configuration.setParameter("DOVRA", "S", "K", "A", 1, "più"));
  buffer.assign(1000, '\0');
  EXPECT_EQ(0, configuration.getParameter("DOVRA", "S", "K", "A", "", 1000, buffer));
  EXPECT_EQ("più", std::string(buffer.c_str()));
}

}  // namespace
}  // namespace trelv::win32
