#include "overlay/QuietWindow.h"

#include "base/Text.h"

namespace trelv::overlay {

const QuietWindow::Control& QuietWindow::control(const std::string& name) const {
  static const Control kUntouched;
  const auto found = controls_.find(upperCase(name));
  return found == controls_.end() ? kUntouched : found->second;
}

const QuietWindow::Item* QuietWindow::item(const std::string& name, int index) const {
  const std::vector<Item>& items = control(name).items;
  const auto at = static_cast<std::size_t>(index);
  return index < 0 || at >= items.size() ? nullptr : &items[at];
}

std::string QuietWindow::text(const std::string& name) const { return control(name).text; }

void QuietWindow::setText(const std::string& name, const std::string& text) {
  controls_[upperCase(name)].text = text;
}

void QuietWindow::setEnabled(const std::string& name, bool enabled) {
  controls_[upperCase(name)].disabled = !enabled;
}

bool QuietWindow::isEnabled(const std::string& name) const { return !control(name).disabled; }

bool QuietWindow::progress(const std::string& name, machine::ProgressNumbers& numbers) const {
  numbers = control(name).numbers;
  return true;
}

bool QuietWindow::setProgress(const std::string& name, const machine::ProgressNumbers& numbers) {
  controls_[upperCase(name)].numbers = numbers;
  return true;
}

void QuietWindow::clearItems(const std::string& name) { controls_[upperCase(name)].items.clear(); }

void QuietWindow::addItem(const std::string& name, const std::string& text, int data) {
  controls_[upperCase(name)].items.push_back({text, data, false});
}

int QuietWindow::itemCount(const std::string& name) const {
  return static_cast<int>(control(name).items.size());
}

std::string QuietWindow::itemText(const std::string& name, int index) const {
  const Item* const found = item(name, index);
  return found == nullptr ? "" : found->text;
}

int QuietWindow::itemData(const std::string& name, int index) const {
  const Item* const found = item(name, index);
  return found == nullptr ? 0 : found->data;
}

int QuietWindow::selected(const std::string& name) const {
  for (int i = 0; i < itemCount(name); ++i) {
    if (itemSelected(name, i)) {
      return i;
    }
  }
  return -1;
}

void QuietWindow::select(const std::string& name, int index) {
  if (index != -1 && item(name, index) == nullptr) {
    return;
  }
  for (int i = 0; i < itemCount(name); ++i) {
    setItemSelected(name, i, i == index);
  }
}

bool QuietWindow::itemSelected(const std::string& name, int index) const {
  const Item* const found = item(name, index);
  return found != nullptr && found->selected;
}

void QuietWindow::setItemSelected(const std::string& name, int index, bool selected) {
  if (item(name, index) != nullptr) {
    controls_[upperCase(name)].items[static_cast<std::size_t>(index)].selected = selected;
  }
}

bool QuietWindow::checked(const std::string& name) const { return control(name).checked; }

void QuietWindow::setChecked(const std::string& name, bool checked) {
  controls_[upperCase(name)].checked = checked;
}

}  // namespace trelv::overlay
