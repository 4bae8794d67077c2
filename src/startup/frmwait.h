#pragma once

#include "machine/Form.h"

namespace trelv {

/// The form that stands, modeless, while files are copied: one sentence, nothing to press. It takes
/// no part in the progress display, and the user cannot close it.
class frmwait : public machine::Form {
 public:
  std::string name() const override { return "frmwait"; }
  /// The resource holds the whole text.
  void loaded(machine::FormWindow& /*window*/) override {}
  void clicked(machine::FormWindow& /*window*/, const std::string& /*control*/) override {}
  /// Stays: Esc and Alt+F4 ask too, and the copy would go on without the form.
  void closeRequested(machine::FormWindow& /*window*/) override {}
};

}  // namespace trelv
