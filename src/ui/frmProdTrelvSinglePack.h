#pragma once

#include <string>
#include <vector>

#include "base/ProgramState.h"
#include "machine/Form.h"
#include "platform/Program.h"

namespace trelv {

/// The versions of one product of a medium: the user picks those to install. A confirmed choice
/// stands in SessionState::chosenVersions, in the order of the list.
class frmProdTrelvSinglePack : public machine::Form {
 public:
  /// `product` is what the heading calls it, `folder` the folder of its packs without trailing
  /// backslash.
  frmProdTrelvSinglePack(Program& program, std::string product, std::string folder);

  std::string name() const override { return "frmProdTrelvSinglePack"; }
  void loaded(machine::FormWindow& window) override;
  void clicked(machine::FormWindow& window, const std::string& control) override;
  void closeRequested(machine::FormWindow& window) override;

  /// False when the form was left without a choice.
  bool confirmed() const { return confirmed_; }

 private:
  void readVersions();
  void confirm(machine::FormWindow& window);

  Program& program_;
  std::string product_;
  std::string folder_;
  /// One for each row: full path of the pack, "|", its file name.
  std::vector<std::string> catalogue_;
  bool confirmed_ = false;
};

}  // namespace trelv
