#pragma once

#include <string>

#include "machine/Form.h"
#include "platform/Program.h"

namespace trelv {

/// The information dialog: which program runs, its version and the day of its last change.
class FrmInfo : public machine::Form {
 public:
  explicit FrmInfo(Program& program) : program_(program) {}

  std::string name() const override { return "FrmInfo"; }
  void loaded(machine::FormWindow& window) override;
  void clicked(machine::FormWindow& window, const std::string& control) override;
  void closeRequested(machine::FormWindow& window) override;

 private:
  void fill(machine::FormWindow& window);

  Program& program_;
};

}  // namespace trelv
