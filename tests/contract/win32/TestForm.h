#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "machine/Form.h"
#include "win32/ControlNames.h"
#include "win32/Win32FormWindow.h"

/// What tests of the form host on Win32 have in common.
namespace trelv::win32 {

inline HWND handleOf(machine::FormWindow& window) {
  return static_cast<Win32FormWindow&>(window).handle();
}

inline HWND controlOf(machine::FormWindow& window, const std::string& name) {
  return GetDlgItem(handleOf(window), controlId(name));
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

}  // namespace trelv::win32
