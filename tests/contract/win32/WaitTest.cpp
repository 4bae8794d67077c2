#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "contract/ContractMachine.h"
#include "contract/win32/TestProgram.h"
#include "win32/Owned.h"
#include "win32/Win32Processes.h"

namespace trelv::win32 {
namespace {

constexpr UINT kSent = WM_APP + 1;
constexpr UINT kPosted = WM_APP + 2;

/// A window that notes the messages it gets, as any form of the program has.
class NotingWindow {
 public:
  NotingWindow() {
    WNDCLASSW kind{};
    kind.lpfnWndProc = &NotingWindow::receive;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"TrelvNotingWindow";
    RegisterClassW(&kind);
    handle_ = CreateWindowExW(0, kind.lpszClassName, L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                              kind.hInstance, this);
  }
  ~NotingWindow() { DestroyWindow(handle_); }
  NotingWindow(const NotingWindow&) = delete;
  NotingWindow& operator=(const NotingWindow&) = delete;

  HWND handle() const { return handle_; }
  std::vector<UINT> got;

 private:
  static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_NCCREATE) {
      SetWindowLongPtrW(window, GWLP_USERDATA,
                        reinterpret_cast<LONG_PTR>(
                            reinterpret_cast<const CREATESTRUCTW*>(second)->lpCreateParams));
    }
    auto* const self = reinterpret_cast<NotingWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self != nullptr && (message == kSent || message == kPosted)) {
      self->got.push_back(message);
      return 7;
    }
    return DefWindowProcW(window, message, first, second);
  }

  HWND handle_ = nullptr;
};

/// What another program does while ours waits: posts one message, sends one and waits for its
/// answer, then lets the awaited program end.
struct Visitor {
  HWND window = nullptr;
  HANDLE event = nullptr;
  bool answered = false;
  DWORD_PTR answer = 0;

  static DWORD WINAPI run(void* given) {
    auto* const self = static_cast<Visitor*>(given);
    PostMessageW(self->window, kPosted, 0, 0);
    self->answered =
        SendMessageTimeoutW(self->window, kSent, 0, 0, SMTO_NORMAL, 5000, &self->answer) != 0;
    SetEvent(self->event);
    return 0;
  }
};

TEST(Wait, ServesSentMessagesAndLeavesPostedOnesInTheQueue) {
  const auto side = contract::makeContractMachine();
  const std::string program = side->folder() + "\\slow.exe";
  side->putProgram(program);
  const std::wstring eventName = L"TrelvTestWait" + std::to_wstring(GetCurrentProcessId());
  const OwnedProcess event(CreateEventW(nullptr, TRUE, FALSE, eventName.c_str()));
  NotingWindow window;
  ASSERT_NE(nullptr, window.handle());

  SetEnvironmentVariableW(contract::kWaitForEvent, eventName.c_str());
  std::unique_ptr<machine::RunningProcess> process;
  Win32Processes processes;
  ASSERT_EQ(system_code::kSuccess, processes.start(program + " 9", true, process));
  SetEnvironmentVariableW(contract::kWaitForEvent, nullptr);

  Visitor visitor{window.handle(), event.get()};
  const OwnedProcess thread(CreateThread(nullptr, 0, &Visitor::run, &visitor, 0, nullptr));
  EXPECT_EQ(system_code::kSuccess, process->wait());

  std::uint32_t code = 0;
  EXPECT_EQ(system_code::kSuccess, process->exitCode(code));
  EXPECT_EQ(9U, code);
  WaitForSingleObject(thread.get(), INFINITE);
  EXPECT_TRUE(visitor.answered) << "a program that sends us a message while we wait would hang";
  EXPECT_EQ(7U, visitor.answer);
  EXPECT_EQ(std::vector<UINT>{kSent}, window.got);
  MSG message;
  EXPECT_NE(FALSE, PeekMessageW(&message, window.handle(), kPosted, kPosted, PM_REMOVE))
      << "input waits until the program has ended";
}

}  // namespace
}  // namespace trelv::win32
