#include "ui/frmProdTrelvStandalone.h"

#include <cstddef>
#include <utility>

#include "base/Text.h"
#include "packs/PackOrder.h"
#include "platform/modLibrary.h"
#include "ui/NameList.h"
#include "ui/frmProdTrelvSinglePack.h"

namespace trelv {
namespace {

using machine::BoxIcon;
using machine::FormWindow;

constexpr const char* kTabs = "labTab";
constexpr const char* kList = "ListProd";
constexpr int kPages = static_cast<int>(kMenuPages);

/// The entry that stands for leaving.
bool isExit(const OfferedProduct& product) { return equalNoCase(product.identifier, "Exit"); }

std::string pageCaption(const MenuPage& page, int index) {
  return page.caption.empty() ? "Pagina " + std::to_string(index + 1) : page.caption;
}

std::string questionFor(const std::vector<OfferedProduct>& products) {
  std::vector<std::string> captions;
  captions.reserve(products.size());
  for (const OfferedProduct& product : products) {
    captions.push_back(product.caption);
  }
  return "Confermi l'avvio della procedura " + namesByLine(captions, "\r");
}

}  // namespace

frmProdTrelvStandalone::frmProdTrelvStandalone(Program& program,
                                               modProdTrelvInteractive::Help& help)
    : SessionForm(program, help, {"picProduct", "product.jpg"}) {}

// --- What is shown

void frmProdTrelvStandalone::fill(FormWindow& window) {
  if (!installing()) {
    chosen_ = {};
    currentTab_ = firstPageToShow();
  }
  fillTabs(window);
  fillList(window);
  window.setFocus(kList);
}

const std::vector<OfferedProduct>& frmProdTrelvStandalone::entriesOf(int page) {
  return session().menu.at(static_cast<std::size_t>(page)).entries;
}

int frmProdTrelvStandalone::firstPageToShow() {
  for (int i = 0; i < kPages; ++i) {
    const int page = (currentTab_ + i) % kPages;
    if (!entriesOf(page).empty()) {
      return page;
    }
  }
  return currentTab_;
}

void frmProdTrelvStandalone::fillTabs(FormWindow& window) {
  for (int page = 0; page < kPages; ++page) {
    window.addItem(kTabs, pageCaption(session().menu.at(static_cast<std::size_t>(page)), page));
    window.setItemEnabled(kTabs, page, !entriesOf(page).empty());
  }
  window.select(kTabs, currentTab_);
}

void frmProdTrelvStandalone::fillList(FormWindow& window) {
  window.clearItems(kList);
  const std::set<int>& chosen = chosen_.at(static_cast<std::size_t>(currentTab_));
  int item = 0;
  for (const OfferedProduct& product : entriesOf(currentTab_)) {
    window.addItem(kList, product.caption, item);
    window.setItemSelected(kList, item, chosen.count(item) > 0);
    ++item;
  }
}

/// The list still shows the page that was turned from.
void frmProdTrelvStandalone::follow(FormWindow& window) {
  keepSelection(window);
  const int page = window.selected(kTabs);
  if (page != currentTab_) {
    currentTab_ = page;
    fillList(window);
  }
}

void frmProdTrelvStandalone::keepSelection(const FormWindow& window) {
  std::set<int>& chosen = chosen_.at(static_cast<std::size_t>(currentTab_));
  chosen.clear();
  for (int i = 0; i < window.itemCount(kList); ++i) {
    if (window.itemSelected(kList, i)) {
      chosen.insert(i);
    }
  }
}

// --- Confirmation

void frmProdTrelvStandalone::confirm(FormWindow& window) {
  goOn(window, "Selezionare almeno una voce");
}

void frmProdTrelvStandalone::confirmByDoubleClick(FormWindow& window) {
  goOn(window, "Selezionare preliminarmente una voce");
}

void frmProdTrelvStandalone::goOn(FormWindow& window, const char* nothingSelected) {
  keepSelection(window);
  std::vector<OfferedProduct> products = chosenProducts();
  if (products.empty()) {
    show(BoxIcon::Critical, nothingSelected);
    window.setFocus(kList);
    return;
  }
  if (is64Bit()) {
    show(BoxIcon::Critical, std::string("La procedura non può essere avviata su sistemi a 64 Bit") +
                                kCrLf + "Premere Ok per interrompere l'esecuzione");
    return;
  }
  if (!ask(BoxIcon::Question, questionFor(products))) {
    return;
  }
  // Kept: leaving by an entry of the menu counts as going on, with nothing to install; the form
  // comes back.
  std::erase_if(products, isExit);
  for (OfferedProduct& product : products) {
    if (!chooseVersions(product)) {
      return;
    }
  }
  program().state.selectedProducts = std::move(products);
  leave(window, UserAction::Execute);
}

std::vector<OfferedProduct> frmProdTrelvStandalone::chosenProducts() {
  std::vector<OfferedProduct> products;
  for (int page = 0; page < kPages; ++page) {
    for (const int entry : chosen_.at(static_cast<std::size_t>(page))) {
      products.push_back(entriesOf(page).at(static_cast<std::size_t>(entry)));
    }
  }
  return products;
}

bool frmProdTrelvStandalone::is64Bit() {
  program().log.WriteLog("Gestione ProdTrelv - Verifico se sono su un sistema a 64Bit");
  machine::SystemFacts& system = program().machine.system;
  const bool answer = system.hasKernelFunction("Wow64EnableWow64FsRedirection") &&
                      system.hasKernelFunction("IsWow64Process") && system.isWow64();
  program().log.WriteLog(answer ? "Gestione ProdTrelv - Sono su un sistema a 64bit"
                                : "Gestione ProdTrelv - NON Sono su un sistema a 64bit");
  return answer;
}

/// False when the user left the version form.
bool frmProdTrelvStandalone::chooseVersions(OfferedProduct& product) {
  const std::string folder = modProdTrelvInteractive::PackFolder(program(), product);
  if (!hasSeveralVersions(folder)) {
    return true;
  }
  frmProdTrelvSinglePack form(program(), product.caption, folder);
  if (!program().machine.desktop.showModal(form)) {
    program().log.WriteLog("Gestione ProdTrelv - Impossibile visualizzare la finestra " +
                           form.name());
  }
  if (form.confirmed()) {
    for (const ChosenVersion& version : session().chosenVersions) {
      product.chosenPacks.push_back(version.pack);
    }
  }
  return form.confirmed();
}

bool frmProdTrelvStandalone::hasSeveralVersions(const std::string& folder) {
  program().log.WriteLog("Gestione ProdTrelv - Verifica presenza di più versioni da installare");
  return modLibrary::FolderExists(program(), folder) &&
         program().fileSystem.files(folder).size() > 1;
}

}  // namespace trelv
