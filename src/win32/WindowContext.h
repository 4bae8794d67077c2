#pragma once

#include <windows.h>

namespace trelv::win32 {

/// A control's drawing context with the control's own font in it, as long as this lives.
class WindowContext {
 public:
  explicit WindowContext(HWND window)
      : window_(window),
        context_(GetDC(window)),
        before_(SelectObject(context_,
                             reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0)))) {}
  ~WindowContext() {
    SelectObject(context_, before_);
    ReleaseDC(window_, context_);
  }
  WindowContext(const WindowContext&) = delete;
  WindowContext& operator=(const WindowContext&) = delete;

  HDC get() const { return context_; }

 private:
  HWND window_;
  HDC context_;
  HGDIOBJ before_;
};

}  // namespace trelv::win32
