#include "win32/ControlProcedure.h"

namespace trelv::win32 {

ControlProcedure::ControlProcedure(HWND window)
    : window_(window), before_(reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC))) {
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetWindowLongPtrW(window_, GWLP_WNDPROC,
                    reinterpret_cast<LONG_PTR>(&ControlProcedure::procedure));
}

ControlProcedure::~ControlProcedure() {
  if (window_ != nullptr) {
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(before_));
  }
}

LRESULT CALLBACK ControlProcedure::procedure(HWND window, UINT message, WPARAM first,
                                             LPARAM second) {
  auto* const self = reinterpret_cast<ControlProcedure*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_NCDESTROY) {
    const LRESULT result = self->passOn(message, first, second);
    self->window_ = nullptr;
    return result;
  }
  return self->receive(message, first, second);
}

LRESULT ControlProcedure::passOn(UINT message, WPARAM first, LPARAM second) const {
  return CallWindowProcW(before_, window_, message, first, second);
}

}  // namespace trelv::win32
