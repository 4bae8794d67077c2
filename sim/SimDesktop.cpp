#include "sim/SimDesktop.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "base/Text.h"

namespace trelv::sim {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& other) { return equalNoCase(other, name); });
}

bool isWholeJpeg(const std::string& bytes) {
  return bytes.size() > 4 && bytes.compare(0, 3, "\xFF\xD8\xFF") == 0 &&
         bytes.compare(bytes.size() - 2, 2, "\xFF\xD9") == 0;
}

// A bitmap tells its length behind "BM", low byte first.
bool isWholeBitmap(const std::string& bytes) {
  if (bytes.size() < 14 || bytes.compare(0, 2, "BM") != 0) {
    return false;
  }
  std::size_t length = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    length |= static_cast<std::size_t>(static_cast<unsigned char>(bytes[2 + i])) << (8 * i);
  }
  return bytes.size() >= length;
}

}  // namespace

// --- Windows

SimFormWindow::SimFormWindow(std::string formName, machine::Form* form,
                             const SimFormControls* controls)
    : formName_(std::move(formName)), form_(form) {
  if (controls != nullptr) {
    declared_ = *controls;
  }
}

bool SimFormWindow::hasControl(const std::string& control) const {
  return !declared_ || contains(declared_->controls, control) || isBar(control) ||
         isMultiList(control) || isTab(control);
}

bool SimFormWindow::isMultiList(const std::string& control) const {
  return declared_ && contains(declared_->multiLists, control);
}

bool SimFormWindow::isTab(const std::string& control) const {
  return declared_ && contains(declared_->tabs, control);
}

bool SimFormWindow::isBar(const std::string& control) const {
  return !declared_ || contains(declared_->progressBars, control);
}

const SimFormWindow::Control* SimFormWindow::find(const std::string& control) const {
  const auto found = controls_.find(upperCase(control));
  return found == controls_.end() ? nullptr : &found->second;
}

SimFormWindow::Control& SimFormWindow::make(const std::string& control) {
  return controls_[upperCase(control)];
}

void SimFormWindow::demand(const std::string& control) const {
  if (!hasControl(control)) {
    throw std::logic_error(formName_ + " has no control " + control);
  }
}

std::string SimFormWindow::text(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr ? "" : found->text;
}

void SimFormWindow::setText(const std::string& control, const std::string& text) {
  if (hasControl(control)) {
    make(control).text = text;
    make(control).texts.push_back(text);
  }
}

void SimFormWindow::setEnabled(const std::string& control, bool enabled) {
  if (hasControl(control)) {
    make(control).enabled = enabled;
  }
}

void SimFormWindow::setFocus(const std::string& control) {
  if (hasControl(control)) {
    focus_ = control;
  }
}

bool SimFormWindow::progress(const std::string& control, machine::ProgressNumbers& numbers) const {
  if (!isBar(control)) {
    return false;
  }
  const Control* found = find(control);
  numbers = found == nullptr ? machine::ProgressNumbers{} : found->numbers;
  return true;
}

bool SimFormWindow::setProgress(const std::string& control,
                                const machine::ProgressNumbers& numbers) {
  if (!isBar(control) || refuseProgress_) {
    return false;
  }
  make(control).numbers = numbers;
  make(control).states.push_back(numbers);
  return true;
}

const SimFormWindow::Item* SimFormWindow::findItem(const std::string& control, int index) const {
  const Control* found = find(control);
  const auto at = static_cast<std::size_t>(index);
  return found == nullptr || index < 0 || at >= found->items.size() ? nullptr : &found->items[at];
}

SimFormWindow::Item* SimFormWindow::findItem(const std::string& control, int index) {
  return const_cast<Item*>(std::as_const(*this).findItem(control, index));
}

void SimFormWindow::clearItems(const std::string& control) {
  if (hasControl(control)) {
    make(control).items.clear();
  }
}

void SimFormWindow::addItem(const std::string& control, const std::string& text, int data) {
  if (hasControl(control)) {
    std::vector<Item>& items = make(control).items;
    items.push_back({text, data, isTab(control) && items.empty()});
  }
}

int SimFormWindow::itemCount(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr ? 0 : static_cast<int>(found->items.size());
}

std::string SimFormWindow::itemText(const std::string& control, int index) const {
  const Item* found = findItem(control, index);
  return found == nullptr ? "" : found->text;
}

int SimFormWindow::itemData(const std::string& control, int index) const {
  const Item* found = findItem(control, index);
  return found == nullptr ? 0 : found->data;
}

int SimFormWindow::selected(const std::string& control) const {
  const std::vector<int> all = selectedItems(control);
  return all.empty() ? -1 : all.front();
}

void SimFormWindow::select(const std::string& control, int index) {
  const bool none = index == -1 && hasControl(control) && !isTab(control);
  if (!none && findItem(control, index) == nullptr) {
    return;
  }
  for (Item& item : make(control).items) {
    item.selected = false;
  }
  if (Item* const item = findItem(control, index)) {
    item->selected = true;
  }
}

bool SimFormWindow::itemSelected(const std::string& control, int index) const {
  const Item* found = findItem(control, index);
  return found != nullptr && found->selected;
}

void SimFormWindow::setItemSelected(const std::string& control, int index, bool selected) {
  Item* const found = findItem(control, index);
  if (found == nullptr) {
    return;
  }
  if (isMultiList(control)) {
    found->selected = selected;
  } else if (found->selected != selected) {
    select(control, selected ? index : -1);
  }
}

void SimFormWindow::setItemEnabled(const std::string& control, int index, bool enabled) {
  Item* const found = findItem(control, index);
  if (found != nullptr && isTab(control)) {
    found->enabled = enabled;
  }
}

bool SimFormWindow::checked(const std::string& control) const {
  const Control* found = find(control);
  return found != nullptr && found->checked;
}

void SimFormWindow::setChecked(const std::string& control, bool checked) {
  if (!hasControl(control)) {
    return;
  }
  for (const std::vector<std::string>& group :
       declared_ ? declared_->optionGroups : std::vector<std::vector<std::string>>{}) {
    if (checked && contains(group, control)) {
      for (const std::string& other : group) {
        make(other).checked = false;
      }
    }
  }
  make(control).checked = checked;
}

bool SimFormWindow::setPicture(const std::string& control, const std::string& path) {
  if (!hasControl(control) || (pictureTest_ && !pictureTest_(path))) {
    return false;
  }
  make(control).picture = path;
  return true;
}

bool SimFormWindow::usable(const std::string& control) const {
  demand(control);
  return open_ && isEnabled(control);
}

bool SimFormWindow::click(const std::string& control) {
  if (!usable(control)) {
    return false;
  }
  if (form_ != nullptr) {
    form_->clicked(*this, control);
  }
  return true;
}

bool SimFormWindow::choose(const std::string& control, int index) {
  if (!usable(control)) {
    return false;
  }
  demandSingleChoice(control);
  demandItem(control, index);
  if (!isItemEnabled(control, index)) {
    return false;
  }
  if (selected(control) != index) {
    select(control, index);
    tellOfSelection(control);
  }
  return true;
}

bool SimFormWindow::toggle(const std::string& control, int index) {
  if (!usable(control)) {
    return false;
  }
  if (!isMultiList(control)) {
    throw std::logic_error(control + " is no list of several choices");
  }
  demandItem(control, index);
  setItemSelected(control, index, !itemSelected(control, index));
  tellOfSelection(control);
  return true;
}

bool SimFormWindow::doubleClick(const std::string& control, int index) {
  if (!usable(control)) {
    return false;
  }
  if (isTab(control)) {
    throw std::logic_error(control + " is no list");
  }
  if (index != -1) {
    isMultiList(control) ? toggle(control, index) : choose(control, index);
    // The first click deselected it, the second one selects it again.
    if (isMultiList(control) && !itemSelected(control, index)) {
      toggle(control, index);
    }
  }
  // Its first click may have closed the form or taken the control away.
  if (usable(control) && form_ != nullptr) {
    form_->doubleClicked(*this, control);
  }
  return true;
}

bool SimFormWindow::press(const std::string& control, machine::Key key) {
  if (!usable(control)) {
    return false;
  }
  focus_ = control;
  return form_ != nullptr && form_->keyPressed(*this, control, key);
}

void SimFormWindow::demandItem(const std::string& control, int index) const {
  if (findItem(control, index) == nullptr) {
    throw std::out_of_range(control + " has no item " + std::to_string(index));
  }
}

void SimFormWindow::demandSingleChoice(const std::string& control) const {
  if (isMultiList(control)) {
    throw std::logic_error(control + " is a list of several choices");
  }
}

bool SimFormWindow::check(const std::string& control, bool on) {
  if (!usable(control)) {
    return false;
  }
  if (checked(control) != on) {
    setChecked(control, on);
    tellOfSelection(control);
  }
  return true;
}

void SimFormWindow::tellOfSelection(const std::string& control) {
  if (form_ != nullptr) {
    form_->selectionChanged(*this, control);
  }
}

void SimFormWindow::type(const std::string& control, const std::string& text) {
  demand(control);
  make(control).text = text;
}

void SimFormWindow::closeBox() {
  if (open_ && form_ != nullptr) {
    form_->closeRequested(*this);
  } else {
    close();
  }
}

bool SimFormWindow::isEnabled(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr || found->enabled;
}

std::vector<std::string> SimFormWindow::items(const std::string& control) const {
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(itemCount(control)));
  for (int i = 0; i < itemCount(control); ++i) {
    texts.push_back(itemText(control, i));
  }
  return texts;
}

std::vector<int> SimFormWindow::selectedItems(const std::string& control) const {
  std::vector<int> all;
  for (int i = 0; i < itemCount(control); ++i) {
    if (itemSelected(control, i)) {
      all.push_back(i);
    }
  }
  return all;
}

bool SimFormWindow::isItemEnabled(const std::string& control, int index) const {
  const Item* found = findItem(control, index);
  return found != nullptr && found->enabled;
}

std::string SimFormWindow::picture(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr ? "" : found->picture;
}

std::vector<std::string> SimFormWindow::textsOf(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr ? std::vector<std::string>{} : found->texts;
}

std::vector<machine::ProgressNumbers> SimFormWindow::progressOf(const std::string& control) const {
  const Control* found = find(control);
  return found == nullptr ? std::vector<machine::ProgressNumbers>{} : found->states;
}

// --- Boxes

BoxAnswer SimDesktop::messageBox(const std::string& title, const std::string& text,
                                 machine::BoxIcon icon, BoxButtons buttons) {
  const bool injected = calls_.enter(CallKind::BoxShow, "desktop.messageBox", text).has_value();
  if (injected || !present_) {
    return BoxAnswer::None;
  }
  const SimBox box{title, text, icon, buttons, nextAnswer(buttons)};
  boxes_.push_back(box);
  if (boxAction_) {
    boxAction_(box);
  }
  return box.answer;
}

BoxAnswer SimDesktop::nextAnswer(BoxButtons buttons) {
  if (!answers_.empty()) {
    const BoxAnswer answer = answers_.front();
    answers_.pop_front();
    return answer;
  }
  const auto standing = defaultAnswers_.find(buttons);
  if (standing != defaultAnswers_.end()) {
    return standing->second;
  }
  return buttons == BoxButtons::YesNo ? BoxAnswer::No : BoxAnswer::Ok;
}

std::vector<std::string> SimDesktop::boxTexts() const {
  std::vector<std::string> texts;
  for (const SimBox& box : boxes_) {
    texts.push_back(box.text);
  }
  return texts;
}

void SimDesktop::answer(std::initializer_list<BoxAnswer> answers) {
  answers_.insert(answers_.end(), answers);
}

void SimDesktop::setDefaultAnswer(BoxButtons buttons, BoxAnswer answer) {
  defaultAnswers_[buttons] = answer;
}

// --- Input boxes

std::optional<std::string> SimDesktop::inputBox(const std::string& title,
                                                const std::string& prompt) {
  const bool injected = calls_.enter(CallKind::InputShow, "desktop.inputBox", prompt).has_value();
  if (injected || !present_) {
    return std::nullopt;
  }
  SimInput input{title, prompt, std::nullopt};
  if (!inputAnswers_.empty()) {
    input.answer = std::move(inputAnswers_.front());
    inputAnswers_.pop_front();
  }
  inputs_.push_back(input);
  if (inputAction_) {
    inputAction_(input);
  }
  return input.answer;
}

void SimDesktop::answerInput(std::initializer_list<std::optional<std::string>> answers) {
  inputAnswers_.insert(inputAnswers_.end(), answers);
}

// --- Forms

bool SimDesktop::showModal(machine::Form& form) {
  const std::string name = form.name();
  const bool injected = calls_.enter(CallKind::FormShow, "desktop.showModal", name).has_value();
  if (injected || !present_) {
    return false;
  }
  shownForms_.push_back(name);
  SimFormWindow window = windowFor(form);
  windows_.push_back(&window);
  try {
    live(form, window);
  } catch (...) {
    takeAway(window);
    throw;
  }
  takeAway(window);
  return true;
}

SimFormWindow SimDesktop::windowFor(machine::Form& form) {
  const auto declared = declared_.find(form.name());
  SimFormWindow window(form.name(), &form,
                       declared == declared_.end() ? nullptr : &declared->second);
  window.setPictureTest([this](const std::string& path) { return showsPicture(path); });
  return window;
}

bool SimDesktop::showsPicture(const std::string& path) {
  std::string bytes;
  return !calls_.enter(CallKind::PictureShow, "form.setPicture", path) &&
         files_.quietRead(path, bytes) == system_code::kSuccess &&
         (isWholeJpeg(bytes) || isWholeBitmap(bytes));
}

/// A modeless window; takes itself from the desktop.
class SimShownForm : public machine::ShownForm {
 public:
  SimShownForm(SimDesktop& desktop, SimFormWindow window)
      : desktop_(desktop), window_(std::move(window)) {
    desktop_.windows_.push_back(&window_);
  }
  ~SimShownForm() override {
    desktop_.closeAbove(window_);
    desktop_.takeAway(window_);
    desktop_.unloadedForms_.push_back(window_.formName());
  }
  SimShownForm(const SimShownForm&) = delete;
  SimShownForm& operator=(const SimShownForm&) = delete;

  SimFormWindow& window() { return window_; }

 private:
  SimDesktop& desktop_;
  SimFormWindow window_;
};

std::unique_ptr<machine::ShownForm> SimDesktop::showModeless(machine::Form& form) {
  const std::string name = form.name();
  const bool injected = calls_.enter(CallKind::FormShow, "desktop.showModeless", name).has_value();
  if (injected || !present_) {
    return nullptr;
  }
  shownForms_.push_back(name);
  auto shown = std::make_unique<SimShownForm>(*this, windowFor(form));
  form.loaded(shown->window());
  const UserAction script = shown->window().isOpen() ? scriptFor(name) : nullptr;
  if (script) {
    script(shown->window());
  }
  return shown;
}

// From load to unload: the user's script, then the close box.
void SimDesktop::live(machine::Form& form, SimFormWindow& window) {
  form.loaded(window);
  const UserAction script = window.isOpen() ? scriptFor(window.formName()) : nullptr;
  if (script) {
    script(window);
  }
  if (window.isOpen()) {
    window.closeBox();
  }
  if (window.isOpen()) {
    ++forcedCloses_;
    window.close();
  }
}

// The system ends a window's owned ones with it; one that has ended already owns none.
void SimDesktop::closeAbove(const SimFormWindow& window) {
  if (!window.isOpen()) {
    return;
  }
  const auto at = std::find(windows_.begin(), windows_.end(), &window);
  for (auto above = at; above != windows_.end(); ++above) {
    (*above)->close();
  }
}

void SimDesktop::takeAway(const SimFormWindow& window) {
  const auto at = std::find(windows_.rbegin(), windows_.rend(), &window);
  if (at != windows_.rend()) {
    windows_.erase(std::next(at).base());
  }
}

SimDesktop::UserAction SimDesktop::scriptFor(const std::string& formName) {
  std::deque<UserAction>& queue = scripts_[formName];
  if (queue.empty()) {
    return standingScripts_[formName];
  }
  UserAction action = std::move(queue.front());
  queue.pop_front();
  return action;
}

machine::FormWindow* SimDesktop::activeForm() {
  const auto open = std::find_if(windows_.rbegin(), windows_.rend(),
                                 [](const SimFormWindow* window) { return window->isOpen(); });
  return open == windows_.rend() ? nullptr : *open;
}

void SimDesktop::onForm(const std::string& formName, UserAction action) {
  scripts_[formName].push_back(std::move(action));
}

void SimDesktop::onEveryForm(const std::string& formName, UserAction action) {
  standingScripts_[formName] = std::move(action);
}

void SimDesktop::declareForm(const std::string& formName, SimFormControls controls) {
  declared_[formName] = std::move(controls);
}

void SimDesktop::deactivate() {
  if (!windows_.empty()) {
    windows_.pop_back();
  }
}

void SimDesktop::setHourglass(bool on) {
  if (hourglass_ != on) {
    hourglass_ = on;
    hourglassChanges_.push_back(on);
  }
}

void SimDesktop::endProgram() {
  windows_.clear();
  hourglass_ = false;
}

// --- Messages

void SimDesktop::processEvents() {
  if (calls_.dead()) {
    return;
  }
  ++eventRounds_;
  // Taken out before any runs: what they do may let messages run again.
  std::vector<std::function<void()>> due = std::exchange(pendingEvents_, {});
  const auto [first, last] = eventsByRound_.equal_range(eventRounds_);
  for (auto event = first; event != last; ++event) {
    due.push_back(event->second);
  }
  eventsByRound_.erase(first, last);
  for (const auto& event : due) {
    event();
  }
}

void SimDesktop::onEvents(std::function<void()> action) {
  pendingEvents_.push_back(std::move(action));
}

void SimDesktop::onEvents(std::size_t round, std::function<void()> action) {
  eventsByRound_.emplace(round, std::move(action));
}

}  // namespace trelv::sim
