#pragma once

#include <windows.h>

#include "win32/Owned.h"

namespace trelv::win32 {

/// Takes, as long as it lives, some keys from the dialogs of this thread that ask for it, whatever
/// control has the focus: F10, which the system keeps from dialogs, and those that turn pages,
/// which the dialog manager keeps for itself. They come to the dialog as messages.
class KeyFilter {
 public:
  /// The message: its first parameter is VK_F10, VK_NEXT (one page forwards: Ctrl+Tab or Ctrl+Page
  /// down) or VK_PRIOR (backwards: Ctrl+Shift+Tab or Ctrl+Page up), its second the window that had
  /// the focus.
  static constexpr UINT kMessage = WM_APP + 1;

  KeyFilter();

  /// The dialog gets its keys until it is let go of, before its end.
  static void watch(HWND dialog);
  static void letGo(HWND dialog);

 private:
  struct HookKind {
    using Handle = HHOOK;
    static Handle none() { return nullptr; }
    static void close(Handle hook) { UnhookWindowsHookEx(hook); }
  };

  Owned<HookKind> hook_;
};

}  // namespace trelv::win32
