#include "win32/ButtonControl.h"

#include "win32/WindowClass.h"

namespace trelv::win32 {

ButtonKind buttonKind(HWND window) {
  if (!isOfClass(window, L"Button")) {
    return ButtonKind::None;
  }
  switch (GetWindowLongW(window, GWL_STYLE) & BS_TYPEMASK) {
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
      return ButtonKind::Option;
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
      return ButtonKind::Check;
    case BS_GROUPBOX:
      return ButtonKind::None;
    default:
      return ButtonKind::Push;
  }
}

bool isChoice(HWND window) {
  const ButtonKind kind = buttonKind(window);
  return kind == ButtonKind::Option || kind == ButtonKind::Check;
}

bool isChecked(HWND window) { return SendMessageW(window, BM_GETCHECK, 0, 0) == BST_CHECKED; }

void setChecked(HWND window, bool checked) {
  SendMessageW(window, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

}  // namespace trelv::win32
