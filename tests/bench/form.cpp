// What a first form costs: a program that shows the dialog of the session's first form, as it
// stands in the resources, and does nothing. The session cannot be seen earlier.
#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>

namespace {

INT_PTR CALLBACK receive(HWND dialog, UINT message, WPARAM first, LPARAM) {
  if (message == WM_COMMAND && LOWORD(first) == IDCANCEL) {
    EndDialog(dialog, 1);
  }
  return message == WM_INITDIALOG ? TRUE : FALSE;
}

}  // namespace

int WINAPI WinMain(HINSTANCE program, HINSTANCE, LPSTR, int) {
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX),
                                     ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS | ICC_TAB_CLASSES};
  InitCommonControlsEx(&classes);
  return DialogBoxParamW(program, L"frmSelectInstall", nullptr, &receive, 0) > 0 ? 0 : 1;
}
