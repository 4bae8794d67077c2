#pragma once

#include <windows.h>

#include <exception>
#include <map>

#include "machine/Form.h"

namespace trelv::win32 {

/// Shows one form from the dialog resource of its name and translates the dialog's messages into
/// the form's events. It decides nothing.
class Win32FormWindow : public machine::FormWindow {
 public:
  explicit Win32FormWindow(machine::Form& form) : form_(form) {}

  /// Shows the dialog over `owner` (may be null) and returns when it is closed; false when it could
  /// not be made. A failure that escapes one of the form's handlers closes the dialog and goes on
  /// to the caller: it must not travel through the system's message code.
  bool show(HWND owner);

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
  void close() override;

 private:
  static INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM first, LPARAM second);

  INT_PTR receive(UINT message, WPARAM first, LPARAM second);
  bool loadForm();
  bool command(WORD id, WORD notification, HWND sender);
  template <class Handler>
  void guarded(Handler&& handler);

  /// Window of a control, or null.
  HWND windowOf(const std::string& control) const;
  HWND progressBar(const std::string& control) const;

  machine::Form& form_;
  HWND dialog_ = nullptr;
  bool closed_ = false;
  bool focusSet_ = false;
  std::exception_ptr failure_;
  /// The bars' numbers by control identifier: the visible bar cuts a value to its limits, the
  /// program's numbers must stay as they were set.
  std::map<int, machine::ProgressNumbers> progress_;
};

}  // namespace trelv::win32
