#pragma once

#include <map>
#include <string>
#include <vector>

#include "machine/Form.h"

namespace trelv::overlay {

/// The window of a form that nobody sees: it has every control that is asked for and remembers what
/// the form put there.
class QuietWindow : public machine::FormWindow {
 public:
  bool hasControl(const std::string& /*control*/) const override { return true; }
  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override { title_ = title; }
  std::string text(const std::string& name) const override;
  void setText(const std::string& name, const std::string& text) override;
  void setEnabled(const std::string& name, bool enabled) override;
  void setFocus(const std::string& /*control*/) override {}
  bool progress(const std::string& name, machine::ProgressNumbers& numbers) const override;
  bool setProgress(const std::string& name, const machine::ProgressNumbers& numbers) override;
  void clearItems(const std::string& name) override;
  void addItem(const std::string& name, const std::string& text, int data) override;
  int itemCount(const std::string& name) const override;
  std::string itemText(const std::string& name, int index) const override;
  int itemData(const std::string& name, int index) const override;
  int selected(const std::string& name) const override;
  void select(const std::string& name, int index) override;
  bool itemSelected(const std::string& name, int index) const override;
  void setItemSelected(const std::string& name, int index, bool selected) override;
  void setItemEnabled(const std::string& /*control*/, int /*index*/, bool /*enabled*/) override {}
  bool checked(const std::string& name) const override;
  void setChecked(const std::string& name, bool checked) override;
  bool setPicture(const std::string& /*control*/, const std::string& /*path*/) override {
    return true;
  }
  void close() override { open_ = false; }

  bool isOpen() const { return open_; }
  bool isEnabled(const std::string& name) const;

 private:
  struct Item {
    std::string text;
    int data = 0;
    bool selected = false;
  };
  struct Control {
    std::string text;
    bool disabled = false;
    bool checked = false;
    std::vector<Item> items;
    machine::ProgressNumbers numbers;
  };

  const Control& control(const std::string& name) const;
  const Item* item(const std::string& name, int index) const;

  std::string title_;
  /// By upper-case name.
  std::map<std::string, Control> controls_;
  bool open_ = true;
};

}  // namespace trelv::overlay
