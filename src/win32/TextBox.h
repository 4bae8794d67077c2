#pragma once

#include <windows.h>

namespace trelv::win32 {

/// Puts a text into any window. A text box of several lines shows a scroll bar where it has more
/// lines than it has room for, and none otherwise.
void setWindowText(HWND window, const wchar_t* text);

/// Hides the scroll bars of a new dialog's text boxes, which are empty as yet.
void hideScrollBars(HWND dialog);

}  // namespace trelv::win32
