#pragma once

#include <string>

namespace trelv::machine {

/// Numbers of a progress bar as the program keeps them; the visible bar may show less (a value
/// below its minimum is kept here).
struct ProgressNumbers {
  int min = 0;
  int max = 1;
  int value = 0;
};

/// The keys that a form can hear of itself; all others belong to the controls.
enum class Key { F10 };

/// The window of a form that is open, seen through its controls by name. Owned by the desktop,
/// valid from load to unload. A control that the form does not have: texts are dropped or empty,
/// the Boolean methods answer false.
class FormWindow {
 public:
  virtual ~FormWindow() = default;

  virtual bool hasControl(const std::string& control) const = 0;

  /// Title of the window.
  virtual std::string title() const = 0;
  virtual void setTitle(const std::string& title) = 0;

  /// Text of a text box, caption of a label or button (UTF-8).
  virtual std::string text(const std::string& control) const = 0;
  virtual void setText(const std::string& control, const std::string& text) = 0;

  virtual void setEnabled(const std::string& control, bool enabled) = 0;
  virtual void setFocus(const std::string& control) = 0;

  /// Numbers of a progress bar; false when there is no such bar. Setting shows them; false also
  /// when the bar refuses.
  virtual bool progress(const std::string& control, ProgressNumbers& numbers) const = 0;
  virtual bool setProgress(const std::string& control, const ProgressNumbers& numbers) = 0;

  /// Items of a list, items of a combo, pages of a tab control, index from 0; each carries a number
  /// of the program's own. New items come last. Changing items or the selection by these methods
  /// calls no handler. -1: nothing is selected. An index that there is not: empty text, number 0,
  /// the selection stays. In a list of several choices `selected` is the first selected item, and
  /// `select` takes the selection from all others. A tab control that has pages always has one of
  /// them selected: from its first page on that one, and -1 changes nothing.
  virtual void clearItems(const std::string& control) = 0;
  virtual void addItem(const std::string& control, const std::string& text, int data = 0) = 0;
  virtual int itemCount(const std::string& control) const = 0;
  virtual std::string itemText(const std::string& control, int index) const = 0;
  virtual int itemData(const std::string& control, int index) const = 0;
  virtual int selected(const std::string& control) const = 0;
  virtual void select(const std::string& control, int index) = 0;

  /// One item of a list of several choices; setting leaves the others as they are. In all other
  /// controls with items: is it the selected one? Setting selects it; taking its selection leaves
  /// none (a tab control keeps it). False for an index that there is not.
  virtual bool itemSelected(const std::string& control, int index) const = 0;
  virtual void setItemSelected(const std::string& control, int index, bool selected) = 0;

  /// A page of a tab control; enabled from the start. One that is disabled the user cannot choose,
  /// by mouse or keyboard; `select` can. Nothing happens to other controls.
  virtual void setItemEnabled(const std::string& control, int index, bool enabled) = 0;

  /// Option buttons and check boxes. Checking an option takes the check from the others of its
  /// group; no handler is called.
  virtual bool checked(const std::string& control) const = 0;
  virtual void setChecked(const std::string& control, bool checked) = 0;

  /// Shows the picture file (full path, JPEG or bitmap) in a picture control, as large as fits with
  /// its proportions kept; false when it cannot be shown, the control then stays as it was.
  virtual bool setPicture(const std::string& control, const std::string& path) = 0;

  /// Unloads the form: it hears nothing more, and the modal show returns once its handlers have.
  virtual void close() = 0;
};

/// A form of the program: what happens when. The class decides, the window only shows.
class Form {
 public:
  virtual ~Form() = default;

  /// Name of the form and of its resource, for example "frmError".
  virtual std::string name() const = 0;
  /// The window is made and not yet shown: fill it.
  virtual void loaded(FormWindow& window) = 0;
  /// A push button was pressed (mouse, accelerator, Enter on it, or as the default button).
  virtual void clicked(FormWindow& window, const std::string& control) = 0;
  /// The user chose another item of a list or combo or another page, selected or deselected an item
  /// of a list of several choices, or changed an option or a check box.
  virtual void selectionChanged(FormWindow& /*window*/, const std::string& /*control*/) {}
  /// The user double-clicked in a list. Where an item stands there it is selected, also in a list
  /// of several choices, and the form heard of that before if it was not; the free room below the
  /// items changes nothing.
  virtual void doubleClicked(FormWindow& /*window*/, const std::string& /*control*/) {}
  /// The user pressed a key while the control had the focus. True when the form dealt with it; else
  /// the key does what it does without a form.
  virtual bool keyPressed(FormWindow& /*window*/, const std::string& /*control*/, Key /*key*/) {
    return false;
  }
  /// The user asked to close the window (close box, Esc). The form decides; the usual answer is
  /// window.close().
  virtual void closeRequested(FormWindow& window) = 0;
};

}  // namespace trelv::machine
