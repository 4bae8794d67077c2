#include <gtest/gtest.h>
#include <windows.h>
// The shell's header needs the one above first.
#include <shellapi.h>

#include <array>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <optional>
#include <string>
#include <utility>
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

/// Ends the program when a test waits for something that does not come, a form that nobody closes
/// for instance: with the line of a failed test, so that the report has its name.
class Deadline {
 public:
  explicit Deadline(std::string test) : test_(std::move(test)) {
    CreateTimerQueueTimer(&timer_, nullptr, passed, this, kLongestTest, 0, WT_EXECUTEONLYONCE);
  }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
  ~Deadline() {
    // The last argument waits for one that is just passing.
    DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE);
  }

 private:
  /// Milliseconds: the longest tests take a few seconds, on a loaded machine ten times that.
  static constexpr DWORD kLongestTest = 180000;

  static void CALLBACK passed(void* deadline, BOOLEAN /*fired*/) {
    std::printf("The test waits for ever.\n[  FAILED  ] %s (%lu ms)\n",
                static_cast<Deadline*>(deadline)->test_.c_str(), kLongestTest);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 1);
  }

  std::string test_;
  HANDLE timer_ = nullptr;
};

class DeadlineOfEachTest : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo& test) override {
    deadline_.emplace(std::string(test.test_suite_name()) + "." + test.name());
  }
  void OnTestEnd(const testing::TestInfo& /*test*/) override { deadline_.reset(); }

 private:
  std::optional<Deadline> deadline_;
};

}  // namespace
}  // namespace trelv::contract

int main(int count, char** values) {
  if (!trelv::contract::isTestProgram()) {
    return trelv::contract::play(trelv::contract::arguments());
  }
  // "--show FORM PICTURE", "--show-long …" and "--show-mirrored …": shows a form and tests nothing.
  const std::string first = count == 4 ? values[1] : "";
  if (first == "--show" || first == "--show-long" || first == "--show-mirrored") {
    const auto contents =
        first == "--show-long" ? trelv::win32::Contents::Long : trelv::win32::Contents::Daily;
    if (first == "--show-mirrored") {
      SetProcessDefaultLayout(LAYOUT_RTL);
    }
    return trelv::win32::showGallery(values[2], values[3], contents) ? 0 : 1;
  }
  testing::InitGoogleTest(&count, values);
  // The list of listeners owns what is appended.
  testing::UnitTest::GetInstance()->listeners().Append(
      std::make_unique<trelv::contract::DeadlineOfEachTest>().release());
  return RUN_ALL_TESTS();
}
