#pragma once

#include <windows.h>

#include <string>

#include "win32/ControlProcedure.h"
#include "win32/ItemControl.h"

namespace trelv::win32 {

/// Is the list box one in which each item is selected by itself?
bool takesSeveralChoices(HWND listBox);

/// A list box or a combo box by its window: the same questions, put with the messages of its class.
/// A list box that can scroll sideways does so as far as its longest item wants.
class ListControl : public ItemControl {
 public:
  /// A list box of single choice, or a combo box.
  explicit ListControl(HWND window);

  void clear() override;
  /// Adds at the end also where the control sorts.
  void add(const std::string& text, int data) override;
  int count() const override;
  std::string text(int index) const override;
  int data(int index) const override;
  bool isSelected(int index) const override { return has(index) && selected() == index; }
  void setSelected(int index, bool selected) override;
  int selected() const override;
  void select(int index) override;

 protected:
  LRESULT send(UINT message, WPARAM first = 0, LPARAM second = 0) const;

 private:
  struct Messages;
  static const Messages kListBox;
  static const Messages kComboBox;

  void makeRoomFor(const std::wstring& text);

  HWND window_;
  const Messages* messages_;
  /// Of the longest item, in pixels.
  LONG width_ = 0;
};

/// A list box of several choices. Its dialog hears also of what the space bar selects or deselects,
/// which not every system's list box tells; and a double click leaves its item selected.
class MultiListControl : public ListControl, private ControlProcedure {
 public:
  explicit MultiListControl(HWND window) : ListControl(window), ControlProcedure(window) {}

  bool isSelected(int index) const override;
  void setSelected(int index, bool selected) override;
  int selected() const override;
  void select(int index) override;

 private:
  LRESULT receive(UINT message, WPARAM first, LPARAM second) override;
  void doubleClicked(POINT point);
  void tellDialog(WORD notification) const;
};

}  // namespace trelv::win32
