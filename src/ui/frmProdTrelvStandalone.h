#pragma once

#include <array>
#include <set>
#include <string>
#include <vector>

#include "base/ProgramState.h"
#include "integrated/SessionForm.h"

namespace trelv {

/// The products of a standalone installation, on the pages of the medium's menu. A confirmed choice
/// stands in ProgramState::selectedProducts, in the order of the pages.
class frmProdTrelvStandalone : public SessionForm {
 public:
  frmProdTrelvStandalone(Program& program, modProdTrelvInteractive::Help& help);

  std::string name() const override { return "frmProdTrelvStandalone"; }

  /// The page that is shown, from 0. Takes effect when the form is shown; where that page has no
  /// entries the next one that has some is shown.
  int CurrentTab() const { return currentTab_; }
  void setCurrentTab(int page) { currentTab_ = page; }

 private:
  void fill(machine::FormWindow& window) override;
  void confirm(machine::FormWindow& window) override;
  void confirmByDoubleClick(machine::FormWindow& window) override;
  void follow(machine::FormWindow& window) override;

  const std::vector<OfferedProduct>& entriesOf(int page);
  int firstPageToShow();
  void fillTabs(machine::FormWindow& window);
  void fillList(machine::FormWindow& window);
  void goOn(machine::FormWindow& window, const char* nothingSelected);
  void keepSelection(const machine::FormWindow& window);
  std::vector<OfferedProduct> chosenProducts();
  bool chooseVersions(OfferedProduct& product);
  bool hasSeveralVersions(const std::string& folder);
  bool is64Bit();

  int currentTab_ = 0;
  /// Of each page: indexes of the selected entries.
  std::array<std::set<int>, kMenuPages> chosen_;
};

}  // namespace trelv
