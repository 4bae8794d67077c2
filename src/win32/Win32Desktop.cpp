#include "win32/Win32Desktop.h"

// The common controls' header needs the system's, which ours brings.
#include <commctrl.h>

#include <algorithm>
#include <bit>

#include "win32/FolderChooser.h"
#include "win32/InputForm.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;

UINT styleOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::Critical:
      return MB_ICONERROR;
    case BoxIcon::Question:
      return MB_ICONQUESTION;
    case BoxIcon::Exclamation:
      return MB_ICONWARNING;
    case BoxIcon::Information:
      return MB_ICONINFORMATION;
    case BoxIcon::None:
      break;
  }
  return 0;
}

UINT styleOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::OkCancel:
      return MB_OKCANCEL;
    case BoxButtons::YesNo:
      return MB_YESNO;
    case BoxButtons::Ok:
      break;
  }
  return MB_OK;
}

BoxAnswer answerOf(int button) {
  switch (button) {
    case IDOK:
      return BoxAnswer::Ok;
    case IDCANCEL:
      return BoxAnswer::Cancel;
    case IDYES:
      return BoxAnswer::Yes;
    case IDNO:
      return BoxAnswer::No;
    default:
      return BoxAnswer::None;
  }
}

/// Progress bars and tabs are classes of the common controls' library, and its presence themes the
/// rest.
void registerControlClasses() {
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX),
                                     ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS | ICC_TAB_CLASSES};
  InitCommonControlsEx(&classes);
}

const LPCWSTR kArrowPointer = MAKEINTRESOURCEW(32512);

/// Keeps a form in the list while it is shown.
class Shown {
 public:
  Shown(std::vector<Win32FormWindow*>& forms, Win32FormWindow& form) : forms_(forms), form_(form) {
    forms_.push_back(&form);
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;
  ~Shown() { std::erase(forms_, &form_); }

 private:
  std::vector<Win32FormWindow*>& forms_;
  Win32FormWindow& form_;
};

class ModelessForm : public machine::ShownForm {
 public:
  ModelessForm(std::vector<Win32FormWindow*>& forms, machine::Form& form, const bool& hourglass)
      : window_(form, hourglass), shown_(forms, window_) {}

  Win32FormWindow& window() { return window_; }

 private:
  Win32FormWindow window_;
  Shown shown_;
};

/// Lets the window under the pointer, where it is one of ours, choose the pointer anew: the system
/// asks it only when the pointer is moved.
void askForPointer() {
  POINT at{};
  GetCursorPos(&at);
  HWND const window = WindowFromPoint(at);
  if (window != nullptr && GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) {
    const LRESULT area = SendMessageW(window, WM_NCHITTEST, 0, MAKELPARAM(at.x, at.y));
    SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                 MAKELPARAM(area, WM_MOUSEMOVE));
  }
}

/// Windows XP and later put a copy marked as not responding in the place of a form that does not
/// paint for five seconds, as while a set-up runs; not for this process any more.
void keepFormsFromBeingReplaced() {
  using Disable = void WINAPI();
  auto* const disable = std::bit_cast<Disable*>(
      GetProcAddress(GetModuleHandleW(L"user32.dll"), "DisableProcessWindowsGhosting"));
  if (disable != nullptr) {
    disable();
  }
}

/// Behind a long set-up another program has the foreground, and Windows may refuse it to ours: a
/// box without a form below it then stands above all windows.
UINT foregroundStyle(HWND owner) { return MB_SETFOREGROUND | (owner == nullptr ? MB_TOPMOST : 0U); }

}  // namespace

BoxAnswer Win32Desktop::messageBox(const std::string& title, const std::string& text, BoxIcon icon,
                                   BoxButtons buttons) {
  HWND const over = owner();
  return answerOf(MessageBoxW(over, wide(text).c_str(), wide(title).c_str(),
                              styleOf(icon) | styleOf(buttons) | foregroundStyle(over)));
}

std::optional<std::string> Win32Desktop::inputBox(const std::string& title,
                                                  const std::string& prompt) {
  InputForm form(title, prompt, [this, &prompt](const std::string& first) {
    return chooseFolder(owner(), prompt, first);
  });
  showModal(form);
  return form.answer();
}

bool Win32Desktop::showModal(machine::Form& form) {
  prepare();
  HWND const over = owner();
  Win32FormWindow window(form, hourglass_);
  const Shown shown(forms_, window);
  return window.show(over);
}

std::unique_ptr<machine::ShownForm> Win32Desktop::showModeless(machine::Form& form) {
  prepare();
  HWND const over = owner();
  auto shown = std::make_unique<ModelessForm>(forms_, form, hourglass_);
  return shown->window().showModeless(over) ? std::move(shown) : nullptr;
}

void Win32Desktop::prepare() {
  registerControlClasses();
  if (!keys_) {
    keepFormsFromBeingReplaced();
    keys_.emplace();
  }
}

machine::FormWindow* Win32Desktop::activeForm() { return topmost(); }

void Win32Desktop::processEvents() {
  // Without a form there is no window whose messages could wait.
  if (forms_.empty()) {
    return;
  }
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    if (!takenByDialog(message)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    rethrowModelessFailure();
  }
}

Win32FormWindow* Win32Desktop::topmost() const {
  const auto found = std::find_if(forms_.rbegin(), forms_.rend(),
                                  [](const Win32FormWindow* form) { return form->open(); });
  return found == forms_.rend() ? nullptr : *found;
}

HWND Win32Desktop::owner() const {
  const Win32FormWindow* const form = topmost();
  return form != nullptr ? form->handle() : nullptr;
}

bool Win32Desktop::takenByDialog(MSG& message) const {
  return std::any_of(forms_.begin(), forms_.end(), [&message](const Win32FormWindow* form) {
    return form->open() && IsDialogMessageW(form->handle(), &message) != FALSE;
  });
}

void Win32Desktop::rethrowModelessFailure() const {
  const auto failed = std::find_if(forms_.begin(), forms_.end(), [](const Win32FormWindow* form) {
    return form->modeless() && form->failed();
  });
  if (failed != forms_.end()) {
    (*failed)->rethrowFailure();
  }
}

void Win32Desktop::setHourglass(bool on) {
  hourglass_ = on;
  // Without a form there is no window that the pointer could be over.
  if (!forms_.empty()) {
    SetCursor(LoadCursorW(nullptr, on ? kHourglassPointer : kArrowPointer));
    askForPointer();
  }
}

}  // namespace trelv::win32
