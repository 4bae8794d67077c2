#include <gtest/gtest.h>
#include <windows.h>
// The shell's header needs the one above first.
#include <shellapi.h>

#include <array>
#include <cwchar>
#include <string>
#include <vector>

#include "contract/win32/Gallery.h"
#include "contract/win32/TestProgram.h"
#include "win32/Owned.h"
#include "win32/Win32Text.h"

namespace trelv::contract {

std::wstring testProgramPath() {
  std::array<wchar_t, 1024> path{};
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return path.data();
}

namespace {

bool isTestProgram() {
  const std::wstring path = testProgramPath();
  return path.substr(path.rfind(L'\\') + 1) == L"contract_win32.exe";
}

std::vector<std::wstring> arguments() {
  int count = 0;
  wchar_t** const found = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> result(found, found + count);
  LocalFree(found);
  return result;
}

std::string environmentValue(const std::wstring& name) {
  std::array<wchar_t, 1024> value{};
  GetEnvironmentVariableW(name.c_str(), value.data(), static_cast<DWORD>(value.size()));
  return win32::utf8(value.data());
}

void writeFile(const std::wstring& path, const std::string& bytes) {
  const win32::OwnedFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD written = 0;
  WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

/// Waits for the named event, where a test names one: a program that takes its time.
void waitAsTold() {
  const std::string name = environmentValue(kWaitForEvent);
  if (!name.empty()) {
    const win32::OwnedProcess event(OpenEventW(SYNCHRONIZE, FALSE, win32::wide(name).c_str()));
    WaitForSingleObject(event.get(), 10000);
  }
}

/// What the small program does.
int play(const std::vector<std::wstring>& given) {
  waitAsTold();
  if (given.size() > 2) {
    std::string told = win32::utf8(GetCommandLineW());
    if (given.size() > 3) {
      told += "\n" + environmentValue(given[3]);
    }
    writeFile(given[2], told);
  }
  // A first argument that is no number counts as 0.
  return given.size() > 1 ? static_cast<int>(std::wcstoul(given[1].c_str(), nullptr, 10)) : 0;
}

}  // namespace
}  // namespace trelv::contract

int main(int count, char** values) {
  if (!trelv::contract::isTestProgram()) {
    return trelv::contract::play(trelv::contract::arguments());
  }
  // "--show FORM PICTURE" and "--show-long …": shows a form and tests nothing.
  const std::string first = count == 4 ? values[1] : "";
  if (first == "--show" || first == "--show-long") {
    const auto contents =
        first == "--show" ? trelv::win32::Contents::Daily : trelv::win32::Contents::Long;
    return trelv::win32::showGallery(values[2], values[3], contents) ? 0 : 1;
  }
  testing::InitGoogleTest(&count, values);
  return RUN_ALL_TESTS();
}
