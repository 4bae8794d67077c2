#include "win32/KeyFilter.h"

namespace trelv::win32 {
namespace {

constexpr const wchar_t* kWatched = L"TrelvManager.KeyFilter";

bool isDown(int key) { return GetKeyState(key) < 0; }

/// The key of the message that the dialog gets; 0 for all that stay where they are.
WPARAM takenKey(const MSG& message) {
  if (message.message == WM_SYSKEYDOWN && message.wParam == VK_F10 && !isDown(VK_SHIFT) &&
      !isDown(VK_CONTROL) && !isDown(VK_MENU)) {
    return VK_F10;
  }
  if (message.message != WM_KEYDOWN || !isDown(VK_CONTROL)) {
    return 0;
  }
  switch (message.wParam) {
    case VK_TAB:
      return isDown(VK_SHIFT) ? VK_PRIOR : VK_NEXT;
    case VK_NEXT:
    case VK_PRIOR:
      return message.wParam;
    default:
      return 0;
  }
}

LRESULT CALLBACK filter(int code, WPARAM first, LPARAM second) {
  if (code == MSGF_DIALOGBOX) {
    const MSG& message = *reinterpret_cast<const MSG*>(second);
    const WPARAM key = takenKey(message);
    HWND const dialog = key != 0 ? GetAncestor(message.hwnd, GA_ROOT) : nullptr;
    if (dialog != nullptr && GetPropW(dialog, kWatched) != nullptr) {
      // Posted: what the form does may show other dialogs, which are filtered here as well.
      PostMessageW(dialog, KeyFilter::kMessage, key, reinterpret_cast<LPARAM>(message.hwnd));
      return TRUE;
    }
  }
  return CallNextHookEx(nullptr, code, first, second);
}

}  // namespace

KeyFilter::KeyFilter()
    : hook_(SetWindowsHookExW(WH_MSGFILTER, &filter, nullptr, GetCurrentThreadId())) {}

void KeyFilter::watch(HWND dialog) { SetPropW(dialog, kWatched, dialog); }

void KeyFilter::letGo(HWND dialog) { RemovePropW(dialog, kWatched); }

}  // namespace trelv::win32
