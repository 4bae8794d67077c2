#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "machine/Form.h"
#include "win32/ItemControl.h"
#include "win32/Win32Pictures.h"

namespace trelv::win32 {

/// The controls of one dialog as a form sees them: what FormWindow promises of them, by name.
class DialogControls : public machine::FormWindow {
 public:
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

 protected:
  /// The dialog; null before it is made and after its end.
  HWND dialog() const { return dialog_; }
  void setDialog(HWND dialog) { dialog_ = dialog; }
  /// Has the form chosen where the keyboard begins?
  bool focusSet() const { return focusSet_; }

  /// Is something else chosen or checked in this control than the form knows? From now on it does.
  bool choiceChanged(HWND control);

  /// The items of a window of this dialog (may be null), kept as long as the dialog.
  ItemControl& items(HWND window) const;

 private:
  /// Indexes of a list's selected items; 0 alone for a checked button.
  using Choice = std::vector<int>;

  /// Window of a control, or null.
  HWND windowOf(const std::string& control) const;
  ItemControl& items(const std::string& control) const { return items(windowOf(control)); }
  HWND progressBar(const std::string& control) const;
  Choice choiceIn(HWND control) const;
  void remember(HWND control);
  void uncheckOthersOfGroup(HWND option);

  HWND dialog_ = nullptr;
  bool focusSet_ = false;
  /// The bars' numbers by control identifier: the visible bar cuts a value to its limits, the
  /// program's numbers must stay as they were set.
  std::map<int, machine::ProgressNumbers> progress_;
  /// What the form knows to be chosen or checked, by control identifier: controls also notify of
  /// choices that change nothing.
  std::map<int, Choice> choices_;
  /// The pictures shown, by control identifier: a control only borrows its bitmap.
  std::map<int, OwnedBitmap> pictures_;
  /// By control identifier.
  mutable std::map<int, std::unique_ptr<ItemControl>> items_;
  mutable NoItems none_;
};

}  // namespace trelv::win32
