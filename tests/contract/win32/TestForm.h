#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "machine/Form.h"
#include "win32/ControlNames.h"
#include "win32/TextSize.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32FormWindow.h"

/// What tests of the form host on Win32 have in common.
namespace trelv::win32 {

inline HWND handleOf(machine::FormWindow& window) {
  return static_cast<Win32FormWindow&>(window).handle();
}

inline HWND controlOf(machine::FormWindow& window, const std::string& name) {
  return GetDlgItem(handleOf(window), controlId(name));
}

inline RECT roomOf(HWND window) {
  RECT room{};
  GetClientRect(window, &room);
  return room;
}

/// The text of any window or control, as far as it has 2,000 characters.
inline std::wstring textOf(HWND window) {
  std::wstring text(2000, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), 2000)));
  return text;
}

/// Does a text box have lines that it shows neither at once nor by scrolling?
inline bool hidesLines(HWND box) {
  RECT room{};
  SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
  const auto lines = static_cast<LONG>(SendMessageW(box, EM_GETLINECOUNT, 0, 0));
  const bool scrolls = (GetWindowLongW(box, GWL_STYLE) & WS_VSCROLL) != 0;
  return !scrolls && lines * win32::textSize(box, L"X").cy > room.bottom - room.top;
}

/// Controls of a dialog, from above.
inline std::vector<HWND> childrenOf(HWND dialog) {
  std::vector<HWND> found;
  for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    found.push_back(child);
  }
  return found;
}

/// Names of this program's dialogs, in capitals.
std::vector<std::string> dialogs();

/// The click of a button, as it waits for the form to be shown.
inline void clickLater(machine::FormWindow& window, const std::string& button) {
  PostMessageW(controlOf(window, button), BM_CLICK, 0, 0);
}

/// A form of the given resource that does what the test says and notes what happens to it. What a
/// test posts from "loaded" arrives while the form is shown.
class TestForm : public machine::Form {
 public:
  explicit TestForm(std::string resource) : resource_(std::move(resource)) {}

  std::string name() const override { return resource_; }
  void loaded(machine::FormWindow& window) override { onLoaded(window); }
  void clicked(machine::FormWindow& window, const std::string& control) override {
    events.push_back("clicked " + control);
    onClicked(window, control);
  }
  void selectionChanged(machine::FormWindow& /*window*/, const std::string& control) override {
    events.push_back("changed " + control);
  }
  void doubleClicked(machine::FormWindow& /*window*/, const std::string& control) override {
    events.push_back("double-clicked " + control);
  }
  bool keyPressed(machine::FormWindow& /*window*/, const std::string& control,
                  machine::Key /*key*/) override {
    events.push_back("F10 in " + control);
    return dealsWithF10;
  }
  void closeRequested(machine::FormWindow& window) override {
    events.push_back("close requested");
    window.close();
  }

  std::function<void(machine::FormWindow&)> onLoaded = [](machine::FormWindow&) {};
  std::function<void(machine::FormWindow&, const std::string&)> onClicked =
      [](machine::FormWindow& window, const std::string&) { window.close(); };
  bool dealsWithF10 = true;
  std::vector<std::string> events;

 private:
  std::string resource_;
};

/// Shows the form of a resource, lets the test look at it while it is loaded, and closes it. Gives
/// what the form was told meanwhile.
inline std::vector<std::string> lookAt(Win32Desktop& desktop, const std::string& resource,
                                       const std::function<void(machine::FormWindow&)>& look) {
  TestForm form(resource);
  form.onLoaded = [&look](machine::FormWindow& window) {
    look(window);
    window.close();
  };
  EXPECT_TRUE(desktop.showModal(form)) << resource;
  return form.events;
}

}  // namespace trelv::win32
