#include "win32/Win32FormWindow.h"

// The common controls' header needs the one of our own above it.
#include <commctrl.h>

#include "win32/ButtonControl.h"
#include "win32/ControlNames.h"
#include "win32/KeyFilter.h"
#include "win32/ListControl.h"
#include "win32/TabControl.h"
#include "win32/TextBox.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"
#include "win32/resource.h"

namespace trelv::win32 {
namespace {

void setWindowIcons(HWND dialog) {
  for (const bool large : {false, true}) {
    HANDLE icon = LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(TRELV_ICON_PROGRAM),
                             IMAGE_ICON, GetSystemMetrics(large ? SM_CXICON : SM_CXSMICON),
                             GetSystemMetrics(large ? SM_CYICON : SM_CYSMICON), LR_SHARED);
    SendMessageW(dialog, WM_SETICON, large ? ICON_BIG : ICON_SMALL, reinterpret_cast<LPARAM>(icon));
  }
}

}  // namespace

bool Win32FormWindow::show(HWND owner) {
  const INT_PTR outcome =
      DialogBoxParamW(GetModuleHandleW(nullptr), wide(form_.name()).c_str(), owner,
                      &Win32FormWindow::dialogProcedure, reinterpret_cast<LPARAM>(this));
  setDialog(nullptr);
  rethrowFailure();
  return outcome > 0;
}

bool Win32FormWindow::showModeless(HWND owner) {
  modeless_ = true;
  CreateDialogParamW(GetModuleHandleW(nullptr), wide(form_.name()).c_str(), owner,
                     &Win32FormWindow::dialogProcedure, reinterpret_cast<LPARAM>(this));
  rethrowFailure();
  if (open()) {
    ShowWindow(dialog(), SW_SHOW);
    RedrawWindow(dialog(), nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
  }
  return dialog() != nullptr;
}

Win32FormWindow::~Win32FormWindow() {
  closed_ = true;
  if (modeless_ && dialog() != nullptr) {
    DestroyWindow(dialog());
  }
}

void Win32FormWindow::rethrowFailure() {
  if (failure_) {
    std::rethrow_exception(std::exchange(failure_, nullptr));
  }
}

INT_PTR CALLBACK Win32FormWindow::dialogProcedure(HWND dialog, UINT message, WPARAM first,
                                                  LPARAM second) {
  if (message == WM_INITDIALOG) {
    reinterpret_cast<Win32FormWindow*>(second)->setDialog(dialog);
    SetWindowLongPtrW(dialog, DWLP_USER, second);
  }
  auto* const self = reinterpret_cast<Win32FormWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
  return self != nullptr ? self->receive(message, first, second) : FALSE;
}

INT_PTR Win32FormWindow::receive(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_INITDIALOG:
      return loadForm() ? TRUE : FALSE;
    case WM_COMMAND:
      return command(LOWORD(first), HIWORD(first), reinterpret_cast<HWND>(second)) ? TRUE : FALSE;
    case WM_NOTIFY:
      return notified(*reinterpret_cast<const NMHDR*>(second)) ? TRUE : FALSE;
    case KeyFilter::kMessage:
      keyPressed(first, reinterpret_cast<HWND>(second));
      return TRUE;
    case WM_NCDESTROY:
      // A dialog ends with its owner, whoever holds it.
      KeyFilter::letGo(dialog());
      setDialog(nullptr);
      return FALSE;
    case WM_SETCURSOR:
      return showHourglass() ? TRUE : FALSE;
    case WM_SYSCOMMAND:
      return refusesMenu(first) ? TRUE : FALSE;
    default:
      return FALSE;
  }
}

/// Answers whether the dialog manager shall choose the first focus itself.
bool Win32FormWindow::loadForm() {
  setWindowIcons(dialog());
  hideScrollBars(dialog());
  KeyFilter::watch(dialog());
  guarded([this] { form_.loaded(*this); });
  return !focusSet();
}

bool Win32FormWindow::command(WORD id, WORD notification, HWND sender) {
  if (closed_) {
    return false;
  }
  if (id == IDCANCEL) {
    guarded([this] { form_.closeRequested(*this); });
    return true;
  }
  const std::string name = controlName(id);
  return !name.empty() && sender != nullptr && notified(name, notification, sender);
}

/// Numbers of notifications mean something for one class of controls only.
bool Win32FormWindow::notified(const std::string& control, WORD notification, HWND sender) {
  if (buttonKind(sender) == ButtonKind::Push && notification == BN_CLICKED) {
    guarded([this, &control] { form_.clicked(*this, control); });
    return true;
  }
  const bool ofListBox = isOfClass(sender, L"ListBox");
  if (ofListBox && notification == LBN_DBLCLK) {
    guarded([this, &control] { form_.doubleClicked(*this, control); });
    return true;
  }
  const bool ofChoice =
      (isChoice(sender) && notification == BN_CLICKED) ||
      (ofListBox && notification == LBN_SELCHANGE) ||
      // Where the list is closed without a choice, the system may have put back the earlier one.
      (isOfClass(sender, L"ComboBox") &&
       (notification == CBN_SELCHANGE || notification == CBN_CLOSEUP));
  if (ofChoice) {
    choiceMayHaveChanged(control, sender);
  }
  return ofChoice;
}

bool Win32FormWindow::notified(const NMHDR& notification) {
  const std::string name = controlName(static_cast<int>(notification.idFrom));
  if (closed_ || name.empty() || notification.code != static_cast<UINT>(TCN_SELCHANGE)) {
    return false;
  }
  choiceMayHaveChanged(name, notification.hwndFrom);
  return true;
}

void Win32FormWindow::choiceMayHaveChanged(const std::string& control, HWND sender) {
  if (choiceChanged(sender)) {
    guarded([this, &control] { form_.selectionChanged(*this, control); });
  }
}

void Win32FormWindow::keyPressed(WPARAM key, HWND focused) {
  if (closed_) {
    return;
  }
  if (key != VK_F10) {
    turnPages(key == VK_NEXT);
    return;
  }
  bool dealtWith = false;
  const std::string name = controlName(GetDlgCtrlID(focused));
  guarded([&] { dealtWith = form_.keyPressed(*this, name, machine::Key::F10); });
  if (!dealtWith && !closed_) {
    SendMessageW(dialog(), WM_SYSCOMMAND, SC_KEYMENU, 0);
  }
}

void Win32FormWindow::turnPages(bool forwards) {
  HWND const tabs = FindWindowExW(dialog(), nullptr, WC_TABCONTROLW, nullptr);
  auto* const pages = dynamic_cast<TabControl*>(&items(tabs));
  if (pages != nullptr && IsWindowEnabled(tabs) != FALSE) {
    pages->turn(forwards);
  }
}

/// Every window of this dialog and its controls ask here before they show their own pointer.
bool Win32FormWindow::showHourglass() const {
  if (hourglass_) {
    SetCursor(LoadCursorW(nullptr, kHourglassPointer));
    SetWindowLongPtrW(dialog(), DWLP_MSGRESULT, TRUE);
  }
  return hourglass_;
}

/// A menu that opens while the form works (Alt, F10, a click on the window's icon) would hold that
/// work up until it is left.
bool Win32FormWindow::refusesMenu(WPARAM command) const {
  // The system uses the last four bits itself.
  const WPARAM kind = command & 0xFFF0U;
  return inEvents_ > 0 && (kind == SC_KEYMENU || kind == SC_MOUSEMENU);
}

template <class Handler>
void Win32FormWindow::guarded(Handler&& handler) {
  ++inEvents_;
  try {
    handler();
  } catch (...) {
    failure_ = std::current_exception();
    close();
  }
  --inEvents_;
}

void Win32FormWindow::close() {
  if (!open()) {
    return;
  }
  closed_ = true;
  if (modeless_) {
    ShowWindow(dialog(), SW_HIDE);
  } else {
    EndDialog(dialog(), 1);
  }
}

}  // namespace trelv::win32
