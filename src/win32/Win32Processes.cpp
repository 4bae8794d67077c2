#include "win32/Win32Processes.h"

#include <windows.h>

#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

// With the closing NUL the system takes 32,768 characters; some versions do not refuse more but
// start the program with what is left after counting in 16 bits.
constexpr std::size_t kLongestCommandLine = 32767;

static_assert(sizeof(STARTUPINFOW) == 68, "the start-up record of a 32-bit program");

/// Waits while other programs' sent messages are served: a set-up that broadcasts a change waits
/// for every top-level window, ours included. Input, painting and timers stay in the queue.
Called<DWORD> waitServingSentMessages(HANDLE process) {
  for (;;) {
    const Called<DWORD> outcome =
        called(MsgWaitForMultipleObjects, 1, &process, FALSE, INFINITE, QS_SENDMESSAGE);
    if (outcome.answer != WAIT_OBJECT_0 + 1) {
      return outcome;
    }
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
  }
}

/// A process without the window library has no window that anyone could send to: it waits plainly
/// and leaves the library unloaded.
Called<DWORD> waitForEnd(HANDLE process) {
  return GetModuleHandleW(L"user32.dll") != nullptr
             ? waitServingSentMessages(process)
             : called(WaitForSingleObject, process, INFINITE);
}

class Win32RunningProcess : public machine::RunningProcess {
 public:
  explicit Win32RunningProcess(HANDLE process) : process_(process) {}

  SystemCode wait() override {
    const Called<DWORD> outcome = waitForEnd(process_.get());
    return outcome.answer == WAIT_OBJECT_0 ? system_code::kSuccess : outcome.failure();
  }

  SystemCode waitUntilReady(std::uint32_t milliseconds) override {
    const Called<DWORD> outcome = called(WaitForInputIdle, process_.get(), milliseconds);
    return outcome.answer == WAIT_FAILED ? outcome.failure() : outcome.answer;
  }

  SystemCode exitCode(std::uint32_t& code) override {
    DWORD found = 0;
    const SystemCode answer = codeOf(GetExitCodeProcess, process_.get(), &found);
    if (answer == system_code::kSuccess) {
      code = found;
    }
    return answer;
  }

 private:
  OwnedProcess process_;
};

}  // namespace

SystemCode Win32Processes::start(const std::string& commandLine, bool visible,
                                 std::unique_ptr<machine::RunningProcess>& process) {
  std::wstring writable = wide(commandLine);
  if (writable.size() > kLongestCommandLine) {
    return system_code::kInvalidParameter;
  }
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = visible ? SW_SHOWNORMAL : SW_HIDE;
  PROCESS_INFORMATION started{};
  const SystemCode code = codeOf(CreateProcessW, nullptr, writable.data(), nullptr, nullptr, FALSE,
                                 NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup, &started);
  if (code != system_code::kSuccess) {
    return code;
  }
  const OwnedProcess thread(started.hThread);
  process = std::make_unique<Win32RunningProcess>(started.hProcess);
  return system_code::kSuccess;
}

}  // namespace trelv::win32
