#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "win32/ControlProcedure.h"
#include "win32/ItemControl.h"

namespace trelv::win32 {

/// A tab control by its window, whose pages can be disabled: such a page is drawn grey, and no
/// click, key or other program chooses it. As long as this lives it stands before the control's own
/// procedure; one at a time for a window.
class TabControl : public ItemControl, private ControlProcedure {
 public:
  explicit TabControl(HWND window) : ControlProcedure(window) {}

  void clear() override;
  void add(const std::string& text, int data) override;
  int count() const override { return static_cast<int>(pages_.size()); }
  std::string text(int index) const override;
  int data(int index) const override;
  bool isSelected(int index) const override { return has(index) && selected() == index; }
  void setSelected(int index, bool selected) override;
  int selected() const override;
  void select(int index) override;
  void setEnabled(int index, bool enabled) override;

  /// The user turns to the next enabled page (or, backwards, the one before), round the end; the
  /// form hears of it.
  void turn(bool forwards);

 private:
  struct Page {
    std::string text;
    int data = 0;
    bool enabled = true;
  };

  LRESULT receive(UINT message, WPARAM first, LPARAM second) override;
  bool enabled(int index) const;
  bool arrow(WPARAM key);
  int nextEnabled(int from, int step) const;
  void choose(int index);
  int pageAt(LPARAM place) const;
  void drawDisabledPages() const;
  void drawGrey(HDC context, int index) const;

  std::vector<Page> pages_;
};

}  // namespace trelv::win32
