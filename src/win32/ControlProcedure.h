#pragma once

#include <windows.h>

namespace trelv::win32 {

/// Stands before a control's own procedure as long as it lives; one at a time for a window.
class ControlProcedure {
 public:
  explicit ControlProcedure(HWND window);
  virtual ~ControlProcedure();
  ControlProcedure(const ControlProcedure&) = delete;
  ControlProcedure& operator=(const ControlProcedure&) = delete;

 protected:
  /// Null once the window has ended.
  HWND window() const { return window_; }

  /// A message for the control; passes on what it leaves to the control itself.
  virtual LRESULT receive(UINT message, WPARAM first, LPARAM second) = 0;
  LRESULT passOn(UINT message, WPARAM first, LPARAM second) const;

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second);

  HWND window_;
  WNDPROC before_;
};

}  // namespace trelv::win32
