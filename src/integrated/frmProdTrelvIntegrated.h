#pragma once

#include <string>
#include <vector>

#include "integrated/SessionForm.h"

namespace trelv {

/// The products of an integrated installation: the user picks those to install. Fills
/// ProgramState::selectedProducts from SessionState::offeredProducts.
class frmProdTrelvIntegrated : public SessionForm {
 public:
  frmProdTrelvIntegrated(Program& program, modProdTrelvInteractive::Help& help);

  std::string name() const override { return "frmProdTrelvIntegrated"; }

 private:
  void fill(machine::FormWindow& window) override;
  void confirm(machine::FormWindow& window) override;
  void follow(machine::FormWindow& window) override;

  const OfferedProduct& productOf(const machine::FormWindow& window, int item);
  void selectNerio(machine::FormWindow& window);

  /// Of each item: what follow() saw last.
  std::vector<bool> selected_;
};

}  // namespace trelv
