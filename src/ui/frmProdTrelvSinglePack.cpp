#include "ui/frmProdTrelvSinglePack.h"

#include <cstddef>
#include <utility>

#include "base/ProductName.h"
#include "base/Trap.h"
#include "integrated/SessionForm.h"
#include "machine/Desktop.h"
#include "packs/PackOrder.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

constexpr const char* kModule = "frmProdTrelvSinglePack";
constexpr const char* kList = "ListProd";
constexpr char kSeparator = '|';

ChosenVersion versionOf(const std::string& entry) {
  const std::size_t end = entry.find(kSeparator);
  return {entry.substr(0, end), entry.substr(end + 1)};
}

}  // namespace

frmProdTrelvSinglePack::frmProdTrelvSinglePack(Program& program, std::string product,
                                               std::string folder)
    : program_(program), product_(std::move(product)), folder_(std::move(folder)) {}

void frmProdTrelvSinglePack::loaded(machine::FormWindow& window) {
  showPicture(program_, window, {"picProduct", "product.jpg"});
  window.setText("lblHeading", product_ + ". Selezionare le versioni da installare");
  loggedTrap(program_.log, program_.errors, kModule, "ReadVersions",
             "Errore in lettura versioni: ", false, [&]() -> bool {
               readVersions();
               return true;
             });
  for (std::size_t i = 0; i < catalogue_.size(); ++i) {
    window.addItem(kList, versionOf(catalogue_[i]).fileName, static_cast<int>(i));
  }
  // Of several the user has to say which.
  window.setItemSelected(kList, 0, catalogue_.size() == 1);
  window.setFocus(kList);
}

void frmProdTrelvSinglePack::readVersions() {
  program_.log.WriteLog("Gestione ProdTrelv - Lettura versioni della cartella: \"" + folder_ +
                        "\"");
  std::vector<std::string> names;
  for (const std::string& name : program_.fileSystem.files(folder_)) {
    if (modLibrary::Extension(name) == "zip") {
      names.push_back(name);
    }
  }
  modProdTrelvInteractive::SortStrings(names);
  for (const std::string& name : names) {
    catalogue_.push_back(folder_ + "\\" + name + kSeparator + name);
  }
}

void frmProdTrelvSinglePack::clicked(machine::FormWindow& window, const std::string& control) {
  if (control == "cmdExec") {
    confirm(window);
  } else if (control == "cmdExit") {
    window.close();
  }
}

void frmProdTrelvSinglePack::closeRequested(machine::FormWindow& window) { window.close(); }

void frmProdTrelvSinglePack::confirm(machine::FormWindow& window) {
  std::vector<ChosenVersion>& chosen = program_.state.session.chosenVersions;
  chosen.clear();
  for (int i = 0; i < window.itemCount(kList); ++i) {
    if (window.itemSelected(kList, i)) {
      chosen.push_back(
          versionOf(catalogue_.at(static_cast<std::size_t>(window.itemData(kList, i)))));
    }
  }
  if (chosen.empty()) {
    program_.machine.desktop.messageBox(TRELV_PRODUCT_NAME, "Selezionare almeno una voce",
                                        machine::BoxIcon::Critical, machine::BoxButtons::Ok);
    window.setFocus(kList);
    return;
  }
  confirmed_ = true;
  window.close();
}

}  // namespace trelv
