#include "win32/DialogControls.h"

// The common controls' header needs the system's, which ours brings.
#include <commctrl.h>

#include <utility>

#include "win32/ButtonControl.h"
#include "win32/ControlNames.h"
#include "win32/TextBox.h"
#include "win32/Win32Text.h"
#include "win32/WindowClass.h"
#include "win32/WindowItems.h"

namespace trelv::win32 {
namespace {

std::string windowText(HWND window) {
  std::wstring buffer(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
  buffer.resize(static_cast<std::size_t>(length));
  return utf8(buffer);
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

}  // namespace

HWND DialogControls::windowOf(const std::string& control) const {
  const int id = controlId(control);
  return dialog_ != nullptr && id != 0 ? GetDlgItem(dialog_, id) : nullptr;
}

HWND DialogControls::progressBar(const std::string& control) const {
  HWND const bar = windowOf(control);
  return isOfClass(bar, PROGRESS_CLASSW) ? bar : nullptr;
}

bool DialogControls::hasControl(const std::string& control) const {
  return windowOf(control) != nullptr;
}

std::string DialogControls::title() const { return windowText(dialog_); }

void DialogControls::setTitle(const std::string& title) {
  SetWindowTextW(dialog_, wide(title).c_str());
}

std::string DialogControls::text(const std::string& control) const {
  HWND const window = windowOf(control);
  return window != nullptr ? windowText(window) : std::string();
}

void DialogControls::setText(const std::string& control, const std::string& text) {
  if (HWND const window = windowOf(control)) {
    setWindowText(window, wide(text).c_str());
  }
}

void DialogControls::setEnabled(const std::string& control, bool enabled) {
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

void DialogControls::setFocus(const std::string& control) {
  if (HWND const window = windowOf(control)) {
    focusSet_ = true;
    SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window), TRUE);
  }
}

bool DialogControls::progress(const std::string& control, machine::ProgressNumbers& numbers) const {
  if (progressBar(control) == nullptr) {
    return false;
  }
  const auto kept = progress_.find(controlId(control));
  numbers = kept != progress_.end() ? kept->second : machine::ProgressNumbers();
  return true;
}

bool DialogControls::setProgress(const std::string& control,
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

// --- Items

ItemControl& DialogControls::items(HWND window) const {
  if (window == nullptr) {
    return none_;
  }
  std::unique_ptr<ItemControl>& kept = items_[GetDlgCtrlID(window)];
  if (!kept) {
    kept = itemsOf(window);
  }
  return *kept;
}

void DialogControls::clearItems(const std::string& control) {
  items(control).clear();
  remember(windowOf(control));
}

void DialogControls::addItem(const std::string& control, const std::string& text, int data) {
  ItemControl& all = items(control);
  all.add(text, data);
  if (all.count() == 1) {
    // A tab control selects its first page by itself.
    remember(windowOf(control));
  }
}

int DialogControls::itemCount(const std::string& control) const { return items(control).count(); }

std::string DialogControls::itemText(const std::string& control, int index) const {
  return items(control).text(index);
}

int DialogControls::itemData(const std::string& control, int index) const {
  return items(control).data(index);
}

int DialogControls::selected(const std::string& control) const { return items(control).selected(); }

void DialogControls::select(const std::string& control, int index) {
  items(control).select(index);
  remember(windowOf(control));
}

bool DialogControls::itemSelected(const std::string& control, int index) const {
  return items(control).isSelected(index);
}

void DialogControls::setItemSelected(const std::string& control, int index, bool selected) {
  items(control).setSelected(index, selected);
  remember(windowOf(control));
}

void DialogControls::setItemEnabled(const std::string& control, int index, bool enabled) {
  items(control).setEnabled(index, enabled);
}

// --- Options and check boxes

bool DialogControls::checked(const std::string& control) const {
  HWND const window = windowOf(control);
  return isChoice(window) && isChecked(window);
}

void DialogControls::setChecked(const std::string& control, bool checked) {
  HWND const window = windowOf(control);
  if (!isChoice(window)) {
    return;
  }
  if (checked && buttonKind(window) == ButtonKind::Option) {
    uncheckOthersOfGroup(window);
  }
  win32::setChecked(window, checked);
  remember(window);
}

/// The system does so only where the user picks the option. The keyboard reaches the group at the
/// option that is checked.
void DialogControls::uncheckOthersOfGroup(HWND option) {
  HWND other = option;
  while ((other = GetNextDlgGroupItem(dialog_, other, FALSE)) != option && other != nullptr) {
    if (buttonKind(other) == ButtonKind::Option) {
      win32::setChecked(other, false);
      remember(other);
    }
  }
}

// --- What is chosen

DialogControls::Choice DialogControls::choiceIn(HWND control) const {
  if (isChoice(control)) {
    return isChecked(control) ? Choice{0} : Choice{};
  }
  Choice chosen;
  const ItemControl& all = items(control);
  for (int i = 0; i < all.count(); ++i) {
    if (all.isSelected(i)) {
      chosen.push_back(i);
    }
  }
  return chosen;
}

void DialogControls::remember(HWND control) {
  if (control != nullptr) {
    choices_[GetDlgCtrlID(control)] = choiceIn(control);
  }
}

bool DialogControls::choiceChanged(HWND control) {
  Choice now = choiceIn(control);
  Choice& known = choices_[GetDlgCtrlID(control)];
  if (now == known) {
    return false;
  }
  if (buttonKind(control) == ButtonKind::Option) {
    uncheckOthersOfGroup(control);
  }
  known = std::move(now);
  return true;
}

// --- Pictures

bool DialogControls::setPicture(const std::string& control, const std::string& path) {
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

}  // namespace trelv::win32
