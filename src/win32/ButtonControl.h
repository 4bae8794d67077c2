#pragma once

#include <windows.h>

namespace trelv::win32 {

enum class ButtonKind { None, Push, Option, Check };

/// Kind of a window (may be null); None for what is no button.
ButtonKind buttonKind(HWND window);

/// Option buttons and check boxes.
bool isChoice(HWND window);
bool isChecked(HWND window);
void setChecked(HWND window, bool checked);

}  // namespace trelv::win32
