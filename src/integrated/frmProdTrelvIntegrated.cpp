#include "integrated/frmProdTrelvIntegrated.h"

#include <cstddef>

#include "base/Text.h"

namespace trelv {
namespace {

using machine::BoxIcon;
using machine::FormWindow;

constexpr const char* kList = "ListProd";

/// Products that are built on Nerio.
bool needsNerio(const OfferedProduct& product) {
  return equalNoCase(product.identifier, "Q2") || equalNoCase(product.identifier, "ZB");
}

std::vector<bool> selectionOf(const FormWindow& window) {
  std::vector<bool> selection;
  for (int i = 0; i < window.itemCount(kList); ++i) {
    selection.push_back(window.itemSelected(kList, i));
  }
  return selection;
}

}  // namespace

frmProdTrelvIntegrated::frmProdTrelvIntegrated(Program& program,
                                               modProdTrelvInteractive::Help& help)
    : SessionForm(program, help, {"picProduct", "product.jpg"}) {}

void frmProdTrelvIntegrated::fill(FormWindow& window) {
  const std::vector<OfferedProduct>& offered = session().offeredProducts;
  for (std::size_t i = 0; i < offered.size(); ++i) {
    window.addItem(kList, offered[i].caption, static_cast<int>(i));
    if (installing() && i < selected_.size()) {
      window.setItemSelected(kList, static_cast<int>(i), selected_[i]);
    }
  }
  selected_ = selectionOf(window);
  window.setFocus(kList);
}

// Only an item that was selected just now brings Nerio along: whoever deselects Nerio afterwards
// keeps it so.
void frmProdTrelvIntegrated::follow(FormWindow& window) {
  const std::vector<bool> now = selectionOf(window);
  for (std::size_t i = 0; i < now.size(); ++i) {
    if (now[i] && !selected_.at(i) && needsNerio(productOf(window, static_cast<int>(i)))) {
      selectNerio(window);
    }
  }
  selected_ = selectionOf(window);
}

void frmProdTrelvIntegrated::selectNerio(FormWindow& window) {
  for (int i = 0; i < window.itemCount(kList); ++i) {
    if (equalNoCase(productOf(window, i).identifier, "NERIO")) {
      window.setItemSelected(kList, i, true);
      return;
    }
  }
}

void frmProdTrelvIntegrated::confirm(FormWindow& window) {
  std::vector<OfferedProduct>& selection = program().state.selectedProducts;
  selection.clear();
  for (int i = 0; i < window.itemCount(kList); ++i) {
    if (window.itemSelected(kList, i)) {
      selection.push_back(productOf(window, i));
    }
  }
  // Kept: an entry without caption in the first place counts as nothing selected. A medium names
  // its entries.
  if (selection.empty() || selection.front().caption.empty()) {
    show(BoxIcon::Critical, "Selezionare almeno una voce");
    window.setFocus(kList);
    return;
  }
  leave(window, UserAction::Execute);
}

const OfferedProduct& frmProdTrelvIntegrated::productOf(const FormWindow& window, int item) {
  return session().offeredProducts.at(static_cast<std::size_t>(window.itemData(kList, item)));
}

}  // namespace trelv
