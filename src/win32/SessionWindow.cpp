#include "win32/SessionWindow.h"

#include <bit>

#include "base/ProductName.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

constexpr const wchar_t* kClass = L"TrelvManagerSession";

using CreateReason = BOOL WINAPI(HWND window, LPCWSTR reason);

/// A function of the window library that Windows XP lacks; null there.
template <class Function>
Function* laterFunction(const char* name) {
  return std::bit_cast<Function*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name));
}

void registerReason(HWND window, const std::string& reason) {
  if (auto* const create = laterFunction<CreateReason>("ShutdownBlockReasonCreate")) {
    create(window, wide(reason).c_str());
  }
}

}  // namespace

SessionWindow::SessionWindow(const std::string& reason, std::function<void()> action)
    : action_(std::move(action)) {
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &SessionWindow::receive;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.lpszClassName = kClass;
  // Fails from the second window on: it is there then.
  RegisterClassW(&windowClass);
  window_ = CreateWindowExW(WS_EX_TOOLWINDOW, kClass, wide(TRELV_PRODUCT_NAME).c_str(), WS_POPUP, 0,
                            0, 0, 0, nullptr, nullptr, windowClass.hInstance, nullptr);
  if (window_ != nullptr) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    registerReason(window_, reason);
  }
}

SessionWindow::~SessionWindow() {
  if (window_ != nullptr) {
    DestroyWindow(window_);
  }
}

/// The question whether the session may end is answered with yes, as every window does by default:
/// a set-up that restarts Windows itself must not be held, and whether a running one may be broken
/// off is its own to say. That it ends comes as a second message. The process may not go on behind
/// it: it would take the set-up that Windows ends for one that has done its work.
LRESULT CALLBACK SessionWindow::receive(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_ENDSESSION && first != FALSE) {
    auto* const self = reinterpret_cast<SessionWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self != nullptr && self->action_) {
      self->action_();
      ExitProcess(0);
    }
  }
  return DefWindowProcW(window, message, first, second);
}

}  // namespace trelv::win32
