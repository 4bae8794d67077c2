#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "machine/Desktop.h"
#include "sim/SimCalls.h"
#include "sim/SimFiles.h"

namespace trelv::sim {

/// A message box that was shown, with the answer it got.
struct SimBox {
  std::string title;
  std::string text;
  machine::BoxIcon icon = machine::BoxIcon::None;
  machine::BoxButtons buttons = machine::BoxButtons::Ok;
  machine::BoxAnswer answer = machine::BoxAnswer::None;
};

/// An input box that was shown, with what the user did: the text at OK, or nothing.
struct SimInput {
  std::string title;
  std::string prompt;
  std::optional<std::string> answer;
};

/// The controls of a form, where a test declares them; without a declaration a window has every
/// control that is asked for, but no list of several choices and no tab control.
struct SimFormControls {
  std::vector<std::string> controls;
  std::vector<std::string> progressBars;
  /// Option buttons that exclude each other.
  std::vector<std::vector<std::string>> optionGroups = {};
  /// Lists of several choices, and tab controls; neither need stand among `controls`.
  std::vector<std::string> multiLists = {};
  std::vector<std::string> tabs = {};
};

/// The window of a form on the simulated desktop: controls by name (no regard to case), and the
/// user's hands.
class SimFormWindow : public machine::FormWindow {
 public:
  using PictureTest = std::function<bool(const std::string& path)>;

  /// A window without a form (for a test that only needs an active one) when `form` is null.
  explicit SimFormWindow(std::string formName, machine::Form* form = nullptr,
                         const SimFormControls* controls = nullptr);

  bool hasControl(const std::string& control) const override;
  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override { title_ = title; }
  std::string text(const std::string& control) const override;
  void setText(const std::string& control, const std::string& text) override;
  void setEnabled(const std::string& control, bool enabled) override;
  void setFocus(const std::string& control) override;
  bool progress(const std::string& control, machine::ProgressNumbers& numbers) const override;
  bool setProgress(const std::string& control, const machine::ProgressNumbers& numbers) override;
  void clearItems(const std::string& control) override;
  void addItem(const std::string& control, const std::string& text, int data = 0) override;
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
  void close() override { open_ = false; }

  // --- What the user does. Raises std::logic_error for a control that the form does not have.

  /// Presses a button; nothing (and false) when it is disabled or the window is closed.
  bool click(const std::string& control);
  /// Picks an item of a list of single choice or a combo, or a page of a tab control (index from
  /// 0); false when it or the page is disabled or the window is closed. The form hears of another
  /// item only. Raises std::out_of_range where there is no such item.
  bool choose(const std::string& control, int index);
  /// Selects or deselects an item of a list of several choices; false and std::out_of_range as
  /// above.
  bool toggle(const std::string& control, int index);
  /// Double-clicks an item of a list, or the free room below the items (-1); false and
  /// std::out_of_range as above.
  bool doubleClick(const std::string& control, int index);
  /// Goes to a control and presses a key there; what the form answered, false as above.
  bool press(const std::string& control, machine::Key key);
  /// Picks an option, or gives a check box its check or takes it; false as above. The form hears of
  /// a change only.
  bool check(const std::string& control, bool on = true);
  /// Types a new text into a control.
  void type(const std::string& control, const std::string& text);
  /// Close box or Esc.
  void closeBox();

  // --- What the user sees

  const std::string& formName() const { return formName_; }
  bool isOpen() const { return open_; }
  bool isEnabled(const std::string& control) const;
  const std::string& focus() const { return focus_; }
  /// Texts of a list's items.
  std::vector<std::string> items(const std::string& control) const;
  /// Indexes of a list's selected items, in order.
  std::vector<int> selectedItems(const std::string& control) const;
  bool isItemEnabled(const std::string& control, int index) const;
  /// Path of the picture that a control shows; empty when none.
  std::string picture(const std::string& control) const;
  /// Every text that a control was given, in order.
  std::vector<std::string> textsOf(const std::string& control) const;
  /// Every state that a progress bar was given, in order.
  std::vector<machine::ProgressNumbers> progressOf(const std::string& control) const;
  /// What decides whether a picture file can be shown; without it every one can.
  void setPictureTest(PictureTest test) { pictureTest_ = std::move(test); }
  /// The bar refuses every setting from now on.
  void refuseProgress(bool refuse = true) { refuseProgress_ = refuse; }

 private:
  struct Item {
    std::string text;
    int data = 0;
    bool selected = false;
    bool enabled = true;
  };

  struct Control {
    std::string text;
    bool enabled = true;
    std::vector<Item> items;
    bool checked = false;
    std::string picture;
    machine::ProgressNumbers numbers;
    std::vector<std::string> texts;
    std::vector<machine::ProgressNumbers> states;
  };

  bool isBar(const std::string& control) const;
  const Control* find(const std::string& control) const;
  bool isMultiList(const std::string& control) const;
  bool isTab(const std::string& control) const;
  const Item* findItem(const std::string& control, int index) const;
  Item* findItem(const std::string& control, int index);
  void demandItem(const std::string& control, int index) const;
  void demandSingleChoice(const std::string& control) const;
  bool usable(const std::string& control) const;
  void tellOfSelection(const std::string& control);
  Control& make(const std::string& control);
  void demand(const std::string& control) const;

  std::string formName_;
  machine::Form* form_;
  std::optional<SimFormControls> declared_;
  std::string title_;
  std::string focus_;
  bool open_ = true;
  bool refuseProgress_ = false;
  PictureTest pictureTest_;
  std::map<std::string, Control> controls_;
};

/// The desktop with a scripted user.
class SimDesktop : public machine::Desktop {
 public:
  using UserAction = std::function<void(SimFormWindow&)>;
  using BoxAction = std::function<void(const SimBox&)>;

  /// Pictures are read from `files`.
  SimDesktop(SimCalls& calls, SimFiles& files) : calls_(calls), files_(files) {}

  machine::BoxAnswer messageBox(const std::string& title, const std::string& text,
                                machine::BoxIcon icon, machine::BoxButtons buttons) override;
  std::optional<std::string> inputBox(const std::string& title, const std::string& prompt) override;
  bool showModal(machine::Form& form) override;
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) override;
  machine::FormWindow* activeForm() override;
  void processEvents() override;
  void setHourglass(bool on) override;

  // --- Boxes

  const std::vector<SimBox>& boxes() const { return boxes_; }
  /// Texts of all boxes in order.
  std::vector<std::string> boxTexts() const;
  /// Answers of the next boxes, in order. Without one: Ok where the box has it, else No.
  void answer(std::initializer_list<machine::BoxAnswer> answers);
  void setDefaultAnswer(machine::BoxButtons buttons, machine::BoxAnswer answer);
  /// What happens while a box is shown; called for every box.
  void onBox(BoxAction action) { boxAction_ = std::move(action); }

  // --- Input boxes

  const std::vector<SimInput>& inputs() const { return inputs_; }
  /// What the user does in the next input boxes, in order: a text and OK, or nothing for Cancel.
  /// Without one: Cancel.
  void answerInput(std::initializer_list<std::optional<std::string>> answers);
  /// What happens while an input box is shown; called for every one.
  void onInput(std::function<void(const SimInput&)> action) { inputAction_ = std::move(action); }

  // --- Forms

  /// What the user does in the next window of this form; several calls script several windows in
  /// order. A modal window that is still open after its script, or has none, is closed by its close
  /// box. In a modeless one the script runs as soon as it is shown.
  void onForm(const std::string& formName, UserAction action);
  /// What the user does in every window of this form for which no single script is left.
  void onEveryForm(const std::string& formName, UserAction action);
  /// The controls of a form by name; others are missing from its windows.
  void declareForm(const std::string& formName, SimFormControls controls);
  /// Names of the forms shown, in order, modeless ones too.
  const std::vector<std::string>& shownForms() const { return shownForms_; }
  /// Names of the modeless forms that were unloaded, in order.
  const std::vector<std::string>& unloadedForms() const { return unloadedForms_; }
  /// How often a form did not close on its close box and was ended by force.
  std::size_t forcedCloses() const { return forcedCloses_; }
  /// Makes a test's window the active form; it outlives deactivate().
  void activate(SimFormWindow& window) { windows_.push_back(&window); }
  /// Takes the topmost window that activate() put away.
  void deactivate();

  // --- The pointer

  bool hourglass() const { return hourglass_; }
  /// Every change of the pointer, in order; true is the hourglass.
  const std::vector<bool>& hourglassChanges() const { return hourglassChanges_; }

  // --- Messages

  /// How often pending messages were let run.
  std::size_t eventRounds() const { return eventRounds_; }
  /// Runs once when messages are let run the next time.
  void onEvents(std::function<void()> action);
  /// Runs once at the given round, counted from 1 over the whole life.
  void onEvents(std::size_t round, std::function<void()> action);

  /// Without a desktop a box answers None and no form can be shown.
  void setPresent(bool present) { present_ = present; }
  /// What the system does when the program ends however it ends: nothing of it is left on the
  /// screen. What tests scripted for later stays.
  void endProgram();

 private:
  friend class SimShownForm;

  machine::BoxAnswer nextAnswer(machine::BoxButtons buttons);
  UserAction scriptFor(const std::string& formName);
  void live(machine::Form& form, SimFormWindow& window);
  void closeAbove(const SimFormWindow& window);
  void takeAway(const SimFormWindow& window);
  SimFormWindow windowFor(machine::Form& form);
  bool showsPicture(const std::string& path);

  SimCalls& calls_;
  SimFiles& files_;
  bool present_ = true;
  std::vector<SimBox> boxes_;
  std::deque<machine::BoxAnswer> answers_;
  std::map<machine::BoxButtons, machine::BoxAnswer> defaultAnswers_;
  BoxAction boxAction_;
  std::vector<SimInput> inputs_;
  std::deque<std::optional<std::string>> inputAnswers_;
  std::function<void(const SimInput&)> inputAction_;
  std::map<std::string, std::deque<UserAction>> scripts_;
  std::map<std::string, UserAction> standingScripts_;
  std::map<std::string, SimFormControls> declared_;
  std::vector<std::string> shownForms_;
  std::vector<SimFormWindow*> windows_;
  std::vector<std::string> unloadedForms_;
  bool hourglass_ = false;
  std::vector<bool> hourglassChanges_;
  std::size_t forcedCloses_ = 0;
  std::size_t eventRounds_ = 0;
  std::vector<std::function<void()>> pendingEvents_;
  std::multimap<std::size_t, std::function<void()>> eventsByRound_;
};

}  // namespace trelv::sim
