#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "win32/ProgramPath.h"

namespace trelv::win32 {
namespace {

std::wstring temporaryFolder() {
  std::array<wchar_t, MAX_PATH> folder{};
  GetTempPathW(MAX_PATH, folder.data());
  return folder.data();
}

TEST(ProgramPath, OfADriveOrAShareStays) {
  for (const wchar_t* const path :
       {L"C:\\Lumo\\a.exe", L"\\\\server\\dvd\\a.exe", L"\\\\server\\UNC\\a.exe", L""}) {
    EXPECT_EQ(programPath(path), path);
  }
}

TEST(ProgramPath, LosesThePrefixUnderWhichPointsMeanNothing) {
  EXPECT_EQ(programPath(L"\\\\?\\C:\\Lumo\\a.exe"), L"C:\\Lumo\\a.exe");
  EXPECT_EQ(programPath(L"\\\\?\\UNC\\server\\dvd\\a.exe"), L"\\\\server\\dvd\\a.exe");
  EXPECT_EQ(programPath(L"UNC\\server\\dvd\\a.exe"), L"\\\\server\\dvd\\a.exe");
}

TEST(ProgramPath, OfAVolumeWithoutALetterStays) {
  const wchar_t* const path = L"\\\\?\\Volume{4c1b02c1-d990-11dc-99ae-806e6f6e6963}\\a.exe";
  EXPECT_EQ(programPath(path), path);
}

TEST(ProgramPath, HasLongNames) {
  const std::wstring path = temporaryFolder() + L"un programma di prova.exe";
  CloseHandle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  std::array<wchar_t, MAX_PATH> shortPath{};
  ASSERT_NE(GetShortPathNameW(path.c_str(), shortPath.data(), MAX_PATH), 0U);
  const std::wstring given = shortPath.data();
  EXPECT_NE(given.find(L'~'), std::wstring::npos) << "the disk has short names";
  const std::wstring found = programPath(given);
  EXPECT_EQ(found.substr(found.rfind(L'\\') + 1), L"un programma di prova.exe");
  DeleteFileW(path.c_str());
  EXPECT_EQ(programPath(given), given) << "nothing to look up";
}

}  // namespace
}  // namespace trelv::win32
