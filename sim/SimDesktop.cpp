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
  return !declared_ || contains(declared_->controls, control) || isBar(control);
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

bool SimFormWindow::click(const std::string& control) {
  demand(control);
  if (!open_ || !isEnabled(control)) {
    return false;
  }
  if (form_ != nullptr) {
    form_->clicked(*this, control);
  }
  return true;
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

// --- Forms

bool SimDesktop::showModal(machine::Form& form) {
  const std::string name = form.name();
  const bool injected = calls_.enter(CallKind::FormShow, "desktop.showModal", name).has_value();
  if (injected || !present_) {
    return false;
  }
  shownForms_.push_back(name);
  const auto declared = declared_.find(name);
  SimFormWindow window(name, &form, declared == declared_.end() ? nullptr : &declared->second);
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

// --- Messages

void SimDesktop::processEvents() {
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
