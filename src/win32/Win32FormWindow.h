#pragma once

#include <windows.h>

#include <exception>
#include <map>

#include "machine/Form.h"
#include "win32/Win32Pictures.h"

namespace trelv::win32 {

/// The system's wait pointer; its own name for it depends on the default character set.
inline const LPCWSTR kHourglassPointer = MAKEINTRESOURCEW(32514);

/// Shows one form from the dialog resource of its name and translates the dialog's messages into
/// the form's events. It decides nothing. A handler of the form may be running when another message
/// arrives, because long steps pump messages: the form hears of it and decides.
class Win32FormWindow : public machine::FormWindow {
 public:
  /// `hourglass` tells, as long as this lives, whether the pointer is the hourglass.
  Win32FormWindow(machine::Form& form, const bool& hourglass)
      : form_(form), hourglass_(hourglass) {}
  /// Ends a modeless dialog.
  ~Win32FormWindow() override;
  Win32FormWindow(const Win32FormWindow&) = delete;
  Win32FormWindow& operator=(const Win32FormWindow&) = delete;

  /// Shows the dialog over `owner` (may be null) and returns when it is closed; false when it could
  /// not be made. A failure that escapes one of the form's handlers closes the dialog and goes on
  /// to the caller: it must not travel through the system's message code.
  bool show(HWND owner);

  /// Shows the dialog modeless over `owner` (may be null) and paints it; it stays until this is
  /// destroyed. False when it could not be made. A failure in the form's loading goes on to the
  /// caller.
  bool showModeless(HWND owner);
  bool modeless() const { return modeless_; }
  bool failed() const { return failure_ != nullptr; }
  /// Goes on with a failure that closed the dialog, once.
  void rethrowFailure();

  /// The dialog's window; null before it is made.
  HWND handle() const { return dialog_; }
  /// Is it made and not closed?
  bool open() const { return dialog_ != nullptr && !closed_; }

  bool hasControl(const std::string& control) const override;
  std::string title() const override;
  void setTitle(const std::string& title) override;
  std::string text(const std::string& control) const override;
  void setText(const std::string& control, const std::string& text) override;
  void setEnabled(const std::string& control, bool enabled) override;
  void setFocus(const std::string& control) override;
  bool progress(const std::string& control, machine::ProgressNumbers& numbers) const override;
  bool setProgress(const std::string& control, const machine::ProgressNumbers& numbers) override;
  void clearItems(const std::string& control) override;
  void addItem(const std::string& control, const std::string& text, int data) override;
  int itemCount(const std::string& control) const override;
  std::string itemText(const std::string& control, int index) const override;
  int itemData(const std::string& control, int index) const override;
  int selected(const std::string& control) const override;
  void select(const std::string& control, int index) override;
  bool itemSelected(const std::string& control, int index) const override;
  void setItemSelected(const std::string& control, int index, bool selected) override;
  void setItemEnabled(const std::string& control, int index, bool enabled) override;
  bool checked(const std::string& control) const override;
  void setChecked(const std::string& control, bool checked) override;
  bool setPicture(const std::string& control, const std::string& path) override;
  void close() override;

 private:
  static INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM first, LPARAM second);

  INT_PTR receive(UINT message, WPARAM first, LPARAM second);
  bool loadForm();
  bool command(WORD id, WORD notification, HWND sender);
  bool notified(const std::string& control, WORD notification, HWND sender);
  void choiceMayHaveChanged(const std::string& control, HWND sender);
  bool showHourglass() const;
  void uncheckOthersOfGroup(HWND option);
  void remember(HWND control);
  template <class Handler>
  void guarded(Handler&& handler);

  /// Window of a control, or null.
  HWND windowOf(const std::string& control) const;
  HWND progressBar(const std::string& control) const;

  machine::Form& form_;
  const bool& hourglass_;
  HWND dialog_ = nullptr;
  bool modeless_ = false;
  bool closed_ = false;
  bool focusSet_ = false;
  std::exception_ptr failure_;
  /// The bars' numbers by control identifier: the visible bar cuts a value to its limits, the
  /// program's numbers must stay as they were set.
  std::map<int, machine::ProgressNumbers> progress_;
  /// What the form knows to be chosen or checked, by control identifier: controls also notify of
  /// choices that change nothing.
  std::map<int, int> choices_;
  /// The pictures shown, by control identifier: a control only borrows its bitmap.
  std::map<int, OwnedBitmap> pictures_;
};

}  // namespace trelv::win32
