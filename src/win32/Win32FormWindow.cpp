#include "win32/Win32FormWindow.h"

// The common controls' header needs the one of our own above it.
#include <commctrl.h>

#include "win32/ControlNames.h"
#include "win32/ListControl.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"
#include "win32/resource.h"

namespace trelv::win32 {
namespace {

std::string windowText(HWND window) {
  std::wstring buffer(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
  buffer.resize(static_cast<std::size_t>(length));
  return utf8(buffer);
}

enum class ButtonKind { None, Push, Option, Check };

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

/// What is chosen in a control: the index of a list's item, 1 for a checked button.
int choiceIn(HWND control) {
  if (const ListControl list(control); list) {
    return list.selected();
  }
  return isChecked(control) ? 1 : 0;
}

bool isPictureControl(HWND window) {
  return isOfClass(window, L"Static") &&
         (GetWindowLongW(window, GWL_STYLE) & SS_TYPEMASK) == SS_BITMAP;
}

SIZE clientSize(HWND window) {
  RECT area{};
  GetClientRect(window, &area);
  return {area.right, area.bottom};
}

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
  dialog_ = nullptr;
  rethrowFailure();
  return outcome > 0;
}

bool Win32FormWindow::showModeless(HWND owner) {
  modeless_ = true;
  CreateDialogParamW(GetModuleHandleW(nullptr), wide(form_.name()).c_str(), owner,
                     &Win32FormWindow::dialogProcedure, reinterpret_cast<LPARAM>(this));
  rethrowFailure();
  if (open()) {
    ShowWindow(dialog_, SW_SHOW);
    RedrawWindow(dialog_, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
  }
  return dialog_ != nullptr;
}

Win32FormWindow::~Win32FormWindow() {
  closed_ = true;
  if (modeless_ && dialog_ != nullptr) {
    DestroyWindow(dialog_);
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
    reinterpret_cast<Win32FormWindow*>(second)->dialog_ = dialog;
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
    case WM_NCDESTROY:
      // A dialog ends with its owner, whoever holds it.
      dialog_ = nullptr;
      return FALSE;
    case WM_SETCURSOR:
      return showHourglass() ? TRUE : FALSE;
    default:
      return FALSE;
  }
}

/// Answers whether the dialog manager shall choose the first focus itself.
bool Win32FormWindow::loadForm() {
  setWindowIcons(dialog_);
  guarded([this] { form_.loaded(*this); });
  return !focusSet_;
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
  const bool ofChoice =
      (isChoice(sender) && notification == BN_CLICKED) ||
      (isOfClass(sender, L"ListBox") && notification == LBN_SELCHANGE) ||
      // Where the list is closed without a choice, the system may have put back the earlier one.
      (isOfClass(sender, L"ComboBox") &&
       (notification == CBN_SELCHANGE || notification == CBN_CLOSEUP));
  if (ofChoice) {
    choiceMayHaveChanged(control, sender);
  }
  return ofChoice;
}

void Win32FormWindow::choiceMayHaveChanged(const std::string& control, HWND sender) {
  const int now = choiceIn(sender);
  const auto known = choices_.find(GetDlgCtrlID(sender));
  const int before = known != choices_.end() ? known->second : (isChoice(sender) ? 0 : -1);
  if (now == before) {
    return;
  }
  if (buttonKind(sender) == ButtonKind::Option) {
    uncheckOthersOfGroup(sender);
  }
  remember(sender);
  guarded([this, &control] { form_.selectionChanged(*this, control); });
}

void Win32FormWindow::remember(HWND control) {
  choices_[GetDlgCtrlID(control)] = choiceIn(control);
}

/// Every window of this dialog and its controls ask here before they show their own pointer.
bool Win32FormWindow::showHourglass() const {
  if (hourglass_) {
    SetCursor(LoadCursorW(nullptr, kHourglassPointer));
    SetWindowLongPtrW(dialog_, DWLP_MSGRESULT, TRUE);
  }
  return hourglass_;
}

template <class Handler>
void Win32FormWindow::guarded(Handler&& handler) {
  try {
    handler();
  } catch (...) {
    failure_ = std::current_exception();
    close();
  }
}

HWND Win32FormWindow::windowOf(const std::string& control) const {
  const int id = controlId(control);
  return dialog_ != nullptr && id != 0 ? GetDlgItem(dialog_, id) : nullptr;
}

HWND Win32FormWindow::progressBar(const std::string& control) const {
  HWND const bar = windowOf(control);
  return isOfClass(bar, PROGRESS_CLASSW) ? bar : nullptr;
}

bool Win32FormWindow::hasControl(const std::string& control) const {
  return windowOf(control) != nullptr;
}

std::string Win32FormWindow::title() const { return windowText(dialog_); }

void Win32FormWindow::setTitle(const std::string& title) {
  SetWindowTextW(dialog_, wide(title).c_str());
}

std::string Win32FormWindow::text(const std::string& control) const {
  HWND const window = windowOf(control);
  return window != nullptr ? windowText(window) : std::string();
}

void Win32FormWindow::setText(const std::string& control, const std::string& text) {
  if (HWND const window = windowOf(control)) {
    SetWindowTextW(window, wide(text).c_str());
  }
}

void Win32FormWindow::setEnabled(const std::string& control, bool enabled) {
  HWND const window = windowOf(control);
  if (window == nullptr) {
    return;
  }
  // The keyboard would be lost with a disabled control that has the focus.
  if (!enabled && GetFocus() == window) {
    SendMessageW(dialog_, WM_NEXTDLGCTL, 0, FALSE);
  }
  EnableWindow(window, enabled ? TRUE : FALSE);
}

void Win32FormWindow::setFocus(const std::string& control) {
  if (HWND const window = windowOf(control)) {
    focusSet_ = true;
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window), TRUE);
  }
}

bool Win32FormWindow::progress(const std::string& control,
                               machine::ProgressNumbers& numbers) const {
  if (progressBar(control) == nullptr) {
    return false;
  }
  const auto kept = progress_.find(controlId(control));
  numbers = kept != progress_.end() ? kept->second : machine::ProgressNumbers();
  return true;
}

bool Win32FormWindow::setProgress(const std::string& control,
                                  const machine::ProgressNumbers& numbers) {
  HWND const bar = progressBar(control);
  if (bar == nullptr) {
    return false;
  }
  progress_[controlId(control)] = numbers;
  SendMessageW(bar, PBM_SETRANGE32, static_cast<WPARAM>(numbers.min), numbers.max);
  SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(numbers.value), 0);
  return true;
}

void Win32FormWindow::clearItems(const std::string& control) {
  HWND const window = windowOf(control);
  if (const ListControl list(window); list) {
    list.clear();
    remember(window);
  }
}

void Win32FormWindow::addItem(const std::string& control, const std::string& text, int data) {
  ListControl(windowOf(control)).add(text, data);
}

int Win32FormWindow::itemCount(const std::string& control) const {
  return ListControl(windowOf(control)).count();
}

std::string Win32FormWindow::itemText(const std::string& control, int index) const {
  return ListControl(windowOf(control)).text(index);
}

int Win32FormWindow::itemData(const std::string& control, int index) const {
  return ListControl(windowOf(control)).data(index);
}

int Win32FormWindow::selected(const std::string& control) const {
  return ListControl(windowOf(control)).selected();
}

void Win32FormWindow::select(const std::string& control, int index) {
  HWND const window = windowOf(control);
  if (const ListControl list(window); list) {
    list.select(index);
    remember(window);
  }
}

bool Win32FormWindow::itemSelected(const std::string& control, int index) const {
  return index >= 0 && selected(control) == index;
}

void Win32FormWindow::setItemSelected(const std::string& control, int index, bool selected) {
  if (selected != itemSelected(control, index)) {
    select(control, selected ? index : -1);
  }
}

// No form has a tab control yet.
void Win32FormWindow::setItemEnabled(const std::string&, int, bool) {}

bool Win32FormWindow::checked(const std::string& control) const {
  HWND const window = windowOf(control);
  return isChoice(window) && isChecked(window);
}

void Win32FormWindow::setChecked(const std::string& control, bool checked) {
  HWND const window = windowOf(control);
  if (!isChoice(window)) {
    return;
  }
  if (checked && buttonKind(window) == ButtonKind::Option) {
    uncheckOthersOfGroup(window);
  }
  SendMessageW(window, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
  remember(window);
}

/// The system does so only where the user picks the option. The keyboard reaches the group at the
/// option that is checked.
void Win32FormWindow::uncheckOthersOfGroup(HWND option) {
  HWND other = option;
  while ((other = GetNextDlgGroupItem(dialog_, other, FALSE)) != option && other != nullptr) {
    if (buttonKind(other) == ButtonKind::Option) {
      SendMessageW(other, BM_SETCHECK, BST_UNCHECKED, 0);
      remember(other);
    }
  }
}

bool Win32FormWindow::setPicture(const std::string& control, const std::string& path) {
  HWND const window = windowOf(control);
  if (!isPictureControl(window)) {
    return false;
  }
  OwnedBitmap bitmap = loadPicture(path, clientSize(window));
  if (!bitmap) {
    return false;
  }
  SendMessageW(window, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap.get()));
  pictures_[GetDlgCtrlID(window)] = std::move(bitmap);
  return true;
}

void Win32FormWindow::close() {
  if (!open()) {
    return;
  }
  closed_ = true;
  if (modeless_) {
    ShowWindow(dialog_, SW_HIDE);
  } else {
    EndDialog(dialog_, 1);
  }
}

}  // namespace trelv::win32
