#include "win32/Win32FormWindow.h"

// The common controls' header needs the one of our own above it.
#include <commctrl.h>

#include <array>

#include "win32/ControlNames.h"
#include "win32/Win32Text.h"
#include "win32/resource.h"

namespace trelv::win32 {
namespace {

std::string windowText(HWND window) {
  std::wstring buffer(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
  buffer.resize(static_cast<std::size_t>(length));
  return utf8(buffer);
}

bool isProgressBar(HWND window) {
  std::array<wchar_t, 64> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return lstrcmpiW(name.data(), PROGRESS_CLASSW) == 0;
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
  if (failure_) {
    std::rethrow_exception(failure_);
  }
  return outcome > 0;
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
  if (name.empty() || sender == nullptr || notification != BN_CLICKED) {
    return false;
  }
  guarded([this, &name] { form_.clicked(*this, name); });
  return true;
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
  return bar != nullptr && isProgressBar(bar) ? bar : nullptr;
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

void Win32FormWindow::close() {
  if (open()) {
    closed_ = true;
    EndDialog(dialog_, 1);
  }
}

}  // namespace trelv::win32
