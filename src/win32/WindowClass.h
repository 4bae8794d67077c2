#pragma once

#include <windows.h>

#include <array>

namespace trelv::win32 {

/// Is the window (may be null) of the system's class of this name?
inline bool isOfClass(HWND window, const wchar_t* name) {
  std::array<wchar_t, 64> found{};
  return window != nullptr &&
         GetClassNameW(window, found.data(), static_cast<int>(found.size())) != 0 &&
         lstrcmpiW(found.data(), name) == 0;
}

}  // namespace trelv::win32
