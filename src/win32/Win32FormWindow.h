#pragma once

#include <windows.h>

#include <exception>
#include <string>

#include "machine/Form.h"
#include "win32/DialogControls.h"

namespace trelv::win32 {

/// The system's wait pointer; its own name for it depends on the default character set.
inline const LPCWSTR kHourglassPointer = MAKEINTRESOURCEW(32514);

/// Shows one form from the dialog resource of its name and translates the dialog's messages into
/// the form's events. It decides nothing. A handler of the form may be running when another message
/// arrives, because long steps pump messages: the form hears of it and decides.
class Win32FormWindow : public DialogControls {
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
  HWND handle() const { return dialog(); }
  /// Is it made and not closed?
  bool open() const { return dialog() != nullptr && !closed_; }

  void close() override;

 private:
  static INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM first, LPARAM second);

  INT_PTR receive(UINT message, WPARAM first, LPARAM second);
  bool loadForm();
  bool command(WORD id, WORD notification, HWND sender);
  bool notified(const std::string& control, WORD notification, HWND sender);
  bool notified(const NMHDR& notification);
  void choiceMayHaveChanged(const std::string& control, HWND sender);
  void keyPressed(WPARAM key, HWND focused);
  void turnPages(bool forwards);
  bool showHourglass() const;
  bool refusesMenu(WPARAM command) const;
  template <class Handler>
  void guarded(Handler&& handler);

  machine::Form& form_;
  const bool& hourglass_;
  bool modeless_ = false;
  bool closed_ = false;
  /// How many of the form's events go on, each in a step of the one before.
  int inEvents_ = 0;
  std::exception_ptr failure_;
};

}  // namespace trelv::win32
