#include "win32/TextBox.h"

#include "win32/TextSize.h"
#include "win32/WindowClass.h"

namespace trelv::win32 {
namespace {

bool hasSeveralLines(HWND window) {
  return isOfClass(window, L"Edit") && (GetWindowLongW(window, GWL_STYLE) & ES_MULTILINE) != 0;
}

/// Lines count as they are broken at the box's present width.
bool hasRoomForItsLines(HWND box) {
  RECT room{};
  SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
  const auto lines = static_cast<LONG>(SendMessageW(box, EM_GETLINECOUNT, 0, 0));
  return lines * textSize(box, L"X").cy <= room.bottom - room.top;
}

BOOL CALLBACK hideScrollBar(HWND control, LPARAM) {
  if (hasSeveralLines(control)) {
    ShowScrollBar(control, SB_VERT, FALSE);
  }
  return TRUE;
}

}  // namespace

// The box itself would show its bar always, also where nothing can be scrolled.
void setWindowText(HWND window, const wchar_t* text) {
  SetWindowTextW(window, text);
  if (!hasSeveralLines(window)) {
    return;
  }
  ShowScrollBar(window, SB_VERT, FALSE);
  if (!hasRoomForItsLines(window)) {
    ShowScrollBar(window, SB_VERT, TRUE);
    // Beside the bar there are more lines: it learns how many with the text.
    SetWindowTextW(window, text);
  }
}

void hideScrollBars(HWND dialog) { EnumChildWindows(dialog, hideScrollBar, 0); }

}  // namespace trelv::win32
