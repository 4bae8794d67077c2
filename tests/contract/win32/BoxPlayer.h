#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "contract/win32/TestForm.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {

/// Presses a button of the system's dialog that comes next, as soon as it is shown. Lives where the
/// dialog is called; one at a time.
class BoxPlayer {
 public:
  explicit BoxPlayer(int button) : timer_(SetTimer(nullptr, 0, 50, &BoxPlayer::look)) {
    button_ = button;
    texts_.clear();
  }
  ~BoxPlayer() { KillTimer(nullptr, timer_); }
  BoxPlayer(const BoxPlayer&) = delete;
  BoxPlayer& operator=(const BoxPlayer&) = delete;

  /// Title and text of the dialog; empty as long as none was pressed.
  static const std::vector<std::string>& texts() { return texts_; }

 private:
  static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
    HWND const box = FindWindowW(L"#32770", nullptr);
    if (box != nullptr && texts_.empty() && IsWindowVisible(box) != FALSE &&
        GetDlgItem(box, button_) != nullptr) {
      texts_ = {utf8(textOf(box)), utf8(textOf(GetDlgItem(box, 0xFFFF)))};
      PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button_), 0);
    }
  }

  static inline int button_ = 0;
  static inline std::vector<std::string> texts_;
  UINT_PTR timer_;
};

}  // namespace trelv::win32
