#pragma once

#include <windows.h>

#include <string>

namespace trelv::win32 {

/// Width and height of a line of text in a control's own font, in pixels.
SIZE textSize(HWND control, const std::wstring& text);

}  // namespace trelv::win32
