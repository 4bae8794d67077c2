#pragma once

#include <windows.h>

#include <string>

namespace trelv::win32 {

/// A list box of single choice or a combo box by its window: the same questions, put with the
/// messages of its class. A window that is neither, or null, has no items. Nothing here notifies.
class ListControl {
 public:
  explicit ListControl(HWND window);

  explicit operator bool() const { return messages_ != nullptr; }

  void clear() const;
  /// Adds an item at the end, also where the control sorts.
  void add(const std::string& text, int data) const;
  int count() const;
  /// Empty and 0 for an index that there is not.
  std::string text(int index) const;
  int data(int index) const;
  /// -1: none.
  int selected() const;
  /// Leaves the selection where there is no such index.
  void select(int index) const;

 private:
  struct Messages;
  static const Messages kListBox;
  static const Messages kComboBox;

  bool has(int index) const { return index >= 0 && index < count(); }
  LRESULT send(UINT message, WPARAM first = 0, LPARAM second = 0) const;

  HWND window_;
  const Messages* messages_ = nullptr;
};

}  // namespace trelv::win32
