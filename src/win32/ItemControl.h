#pragma once

#include <string>

namespace trelv::win32 {

/// The items of one control: a list box of single or several choices, a combo box or a tab control.
/// What the calls mean stands at machine::FormWindow. Nothing here notifies.
class ItemControl {
 public:
  virtual ~ItemControl() = default;

  virtual void clear() = 0;
  virtual void add(const std::string& text, int data) = 0;
  virtual int count() const = 0;
  virtual std::string text(int index) const = 0;
  virtual int data(int index) const = 0;
  virtual bool isSelected(int index) const = 0;
  virtual void setSelected(int index, bool selected) = 0;
  virtual int selected() const = 0;
  virtual void select(int index) = 0;
  virtual void setEnabled(int /*index*/, bool /*enabled*/) {}

 protected:
  bool has(int index) const { return index >= 0 && index < count(); }
};

/// The items of what has none.
class NoItems : public ItemControl {
 public:
  void clear() override {}
  void add(const std::string& /*text*/, int /*data*/) override {}
  int count() const override { return 0; }
  std::string text(int /*index*/) const override { return {}; }
  int data(int /*index*/) const override { return 0; }
  bool isSelected(int /*index*/) const override { return false; }
  void setSelected(int /*index*/, bool /*selected*/) override {}
  int selected() const override { return -1; }
  void select(int /*index*/) override {}
};

}  // namespace trelv::win32
