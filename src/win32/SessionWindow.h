#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace trelv::win32 {

/// A window of the program that is never shown. Windows tells top-level windows only that the
/// session ends; this one hears it while the program waits for another one (whoever waits serves
/// the messages that are sent to him).
class SessionWindow {
 public:
  /// `action` is run when the session ends, then the process ends. `reason` is registered as the
  /// one for which this program keeps a user waiting who ends the session, from Windows Vista on.
  SessionWindow(const std::string& reason, std::function<void()> action);
  SessionWindow(const SessionWindow&) = delete;
  SessionWindow& operator=(const SessionWindow&) = delete;
  ~SessionWindow();

 private:
  static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM first, LPARAM second);

  std::function<void()> action_;
  HWND window_ = nullptr;
};

}  // namespace trelv::win32
