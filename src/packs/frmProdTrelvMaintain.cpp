#include "packs/frmProdTrelvMaintain.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "base/Marked.h"
#include "base/ProductName.h"
#include "packs/ProductRemoval.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;
using machine::FormWindow;
using machine::ProgressNumbers;
using modProdTrelvManager::RepairVersion;

constexpr const char* kBar = "prgProgress";
constexpr const char* kNothingRemoved = "Nessun comando di rimozione eseguito";
constexpr const char* kNothingRepaired = "Nessun comando di ripristino eseguito";
constexpr const char* kNoCommand = ": nessun comando eseguito.";

/// What must not change while an operation runs.
constexpr std::array kControls{"cmbProduct", "optClient",  "optServer", "btnRemove", "optSetup",
                               "optUpdate",  "lstVersion", "btnRepair", "btnExit"};

/// The form's bar as the removal moves it, beside the steps that the log lines add.
class BarProgress : public modProdTrelvManager::RemovalProgress {
 public:
  explicit BarProgress(FormWindow& window) : window_(window) {}

  void begin(int max) override {
    maximum_ = max;
    ProgressNumbers numbers = read();
    numbers.value = numbers.min;
    numbers.max = max;
    window_.setProgress(kBar, numbers);
  }
  void advance() override {
    ProgressNumbers numbers = read();
    ++numbers.value;
    window_.setProgress(kBar, numbers);
  }
  void finish() override {
    ProgressNumbers numbers = read();
    numbers.value = maximum_;
    window_.setProgress(kBar, numbers);
  }

 private:
  ProgressNumbers read() const {
    ProgressNumbers numbers;
    window_.progress(kBar, numbers);
    return numbers;
  }

  FormWindow& window_;
  int maximum_ = 0;
};

void showProgress(FormWindow& window, const ProgressNumbers& numbers, const std::string& percent) {
  window.setProgress(kBar, numbers);
  window.setText("lblProgress", percent);
}

/// The bar counts as fresh: the next log line starts it.
void restartProgress(FormWindow& window) {
  showProgress(window, ProgressNumbers(), "000%");
  window.setText("txtProgress", "");
}

/// Each log line leaves the bar a little before its end, wherever that is.
void completeProgress(FormWindow& window) {
  ProgressNumbers numbers;
  window.progress(kBar, numbers);
  numbers.value = numbers.max;
  showProgress(window, numbers, "100%");
}

void warn(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, BoxIcon::Exclamation,
                                     BoxButtons::Ok);
}

void inform(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, BoxIcon::Information,
                                     BoxButtons::Ok);
}

bool confirmed(Program& program, const std::string& question) {
  return program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, question, BoxIcon::Question,
                                            BoxButtons::OkCancel) == BoxAnswer::Ok;
}

std::string recordedServer(Program& program) {
  std::string path;
  return modMain::VerifyConfig(program, path) ? path : std::string();
}

std::vector<std::string> productsOf(Program& program, const std::string& serverPath) {
  return serverPath.empty() ? std::vector<std::string>()
                            : modProdTrelvManager::CatalogueProducts(program, serverPath);
}

std::string productText(Program& program, const std::string& serverPath,
                        const std::string& product) {
  const std::string name = modProdTrelvLibrary::GetCatalogueProductName(
      program, hostPaths::catalogue(serverPath), product);
  return name.empty() ? product : product + " - " + name;
}

std::string versionText(const RepairVersion& version) {
  return version.version + "   (" + version.section + ")";
}

Side sideOf(const FormWindow& window) {
  return window.checked("optServer") ? Side::Server : Side::Client;
}

std::string sideName(Side side) { return modProdTrelvLibrary::ConvertClientServerToString(side); }

/// Set-ups that need an administrator are refused then, and what the removal clears is cleared all
/// the same.
std::string refusedRemovalText(const std::string& product, Side side) {
  const std::string text = "ATTENZIONE: utente non amministratore. I comandi di rimozione " +
                           sideName(side) + " di " + product + " possono essere rifiutati; ";
  return text + (side == Side::Server
                     ? "cartelle di setup, configurazione e versione vengono eliminate comunque."
                     : "la versione registrata viene azzerata comunque.");
}

/// Is the version of the chosen type? What is no set-up counts as an update.
bool isOfChosenType(const FormWindow& window, const RepairVersion& version) {
  return (version.kind == Operation::Setup) != window.checked("optUpdate");
}

/// Does the record stand there and refuse to be read? The platform's functions answer an empty
/// value then.
bool isUnreadable(Program& program, const std::string& record) {
  std::string ignored;
  const SystemCode code = program.machine.files.read(record, 1, ignored);
  return code != system_code::kSuccess && !meansMissing(code);
}

std::string recordedText(Program& program, const std::string& product, const std::string& record) {
  if (isUnreadable(program, record)) {
    return "versione registrata non leggibile";
  }
  const std::string version = modLibrary::ReadSetting(program, {record, product, "version"});
  return version.empty() ? "nessuna versione registrata" : "versione registrata: " + version;
}

void setAllEnabled(FormWindow& window, bool enabled) {
  for (const char* const control : kControls) {
    window.setEnabled(control, enabled);
  }
}

}  // namespace

void frmProdTrelvMaintain::showModal(Program& program) {
  frmProdTrelvMaintain form(program);
  if (!program.machine.desktop.showModal(form)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Impossibile visualizzare la finestra di manutenzione");
  }
}

frmProdTrelvMaintain::frmProdTrelvMaintain(Program& program)
    : program_(program),
      serverPath_(recordedServer(program)),
      clientRecord_(hostPaths::clientVersionRecord(program)),
      products_(productsOf(program, serverPath_)) {}

void frmProdTrelvMaintain::loaded(FormWindow& window) {
  window.setText("lblServerPath", serverPath_);
  // The side that touches least.
  window.setChecked("optClient", true);
  window.setChecked("optSetup", true);
  fillProducts(window, "");
  showProduct(window, "");
  restartProgress(window);
  window.setText("lblOutcome", openingText());
  window.setFocus("cmbProduct");
}

void frmProdTrelvMaintain::clicked(FormWindow& window, const std::string& control) {
  if (busy_) {
    return;
  }
  const Marked busy(busy_);
  if (control == "btnRemove") {
    remove(window);
  } else if (control == "btnRepair") {
    repair(window);
  } else if (control == "btnExit") {
    window.close();
  }
  catchUp(window);
}

void frmProdTrelvMaintain::selectionChanged(FormWindow& window, const std::string& control) {
  if (busy_) {
    missed_ = true;
    return;
  }
  const Marked busy(busy_);
  if (control == "cmbProduct") {
    restartProgress(window);
    window.setText("lblOutcome", "Pronto.");
    showProduct(window, "");
  } else if (control == "optSetup" || control == "optUpdate") {
    fillVersions(window, "");
  }
  showWhatWillHappen(window);
  catchUp(window);
}

void frmProdTrelvMaintain::closeRequested(FormWindow& window) {
  if (!busy_) {
    window.close();
  }
}

// --- What is shown

/// A choice that came while the form was busy: the controls have it already, the rest follows.
void frmProdTrelvMaintain::catchUp(FormWindow& window) {
  while (std::exchange(missed_, false)) {
    showProduct(window, "");
  }
}

const std::string* frmProdTrelvMaintain::selectedProduct(const FormWindow& window) const {
  const int at = window.selected("cmbProduct");
  return at < 0 ? nullptr
                : &products_.at(static_cast<std::size_t>(window.itemData("cmbProduct", at)));
}

const RepairVersion* frmProdTrelvMaintain::selectedVersion(const FormWindow& window) const {
  const int at = window.selected("lstVersion");
  return at < 0 ? nullptr
                : &versions_.at(static_cast<std::size_t>(window.itemData("lstVersion", at)));
}

std::string frmProdTrelvMaintain::openingText() const {
  if (serverPath_.empty()) {
    return "Nessuna integrazione con Dovra registrata su questa stazione.";
  }
  return products_.empty() ? "Nessun prodotto nel catalogo dell'installazione."
                           : "Selezionare il prodotto e il lato.";
}

void frmProdTrelvMaintain::fillProducts(FormWindow& window, const std::string& wanted) {
  window.clearItems("cmbProduct");
  for (std::size_t i = 0; i < products_.size(); ++i) {
    const int at = window.itemCount("cmbProduct");
    window.addItem("cmbProduct", productText(program_, serverPath_, products_[i]),
                   static_cast<int>(i));
    if (products_[i] == wanted && window.selected("cmbProduct") < 0) {
      window.select("cmbProduct", at);
    }
  }
}

void frmProdTrelvMaintain::showProduct(FormWindow& window, const std::string& section) {
  // Other workstations and the commands themselves write these files.
  program_.configurationFiles.forget();
  const std::string* const product = selectedProduct(window);
  versions_ = product == nullptr
                  ? std::vector<RepairVersion>()
                  : modProdTrelvManager::ProductVersions(program_, serverPath_, *product);
  fillVersions(window, section);
  showRecordedVersions(window);
  showWhatWillHappen(window);
}

void frmProdTrelvMaintain::fillVersions(FormWindow& window, const std::string& section) {
  window.clearItems("lstVersion");
  for (std::size_t i = 0; i < versions_.size(); ++i) {
    if (!isOfChosenType(window, versions_[i])) {
      continue;
    }
    const int at = window.itemCount("lstVersion");
    window.addItem("lstVersion", versionText(versions_[i]), static_cast<int>(i));
    if (versions_[i].section == section) {
      window.select("lstVersion", at);
    }
  }
}

void frmProdTrelvMaintain::showRecordedVersions(FormWindow& window) {
  const std::string* const product = selectedProduct(window);
  const auto text = [&](const std::string& record) -> std::string {
    return product == nullptr ? std::string() : recordedText(program_, *product, record);
  };
  window.setText("lblClientVersion", text(clientRecord_));
  window.setText("lblServerVersion", text(hostPaths::serverVersionRecord(serverPath_)));
}

void frmProdTrelvMaintain::showWhatWillHappen(FormWindow& window) {
  window.setText("lblRemove", removalText(window));
  window.setText("lblRepair", repairText(window));
}

std::string frmProdTrelvMaintain::removalText(const FormWindow& window) const {
  const std::string* const product = selectedProduct(window);
  if (product == nullptr) {
    return "Nessun prodotto selezionato.";
  }
  if (!program_.state.startup.administrator) {
    return refusedRemovalText(*product, sideOf(window));
  }
  if (sideOf(window) == Side::Server) {
    return "Esegue i comandi di rimozione Server di " + *product +
           ", elimina le cartelle di setup e il file di configurazione, azzera la versione "
           "registrata sul server.";
  }
  return "Esegue i comandi di rimozione Client di " + *product +
         " e azzera la versione registrata su questa stazione.";
}

std::string frmProdTrelvMaintain::repairText(const FormWindow& window) const {
  const std::string* const product = selectedProduct(window);
  const RepairVersion* const version = selectedVersion(window);
  if (product == nullptr || version == nullptr) {
    return "Nessuna versione selezionata.";
  }
  return "Riesegue i comandi " + sideName(sideOf(window)) + " della sezione " + version->section +
         " di " + *product + ". Le versioni registrate non cambiano.";
}

// --- What is done

InstallationPaths frmProdTrelvMaintain::paths() const {
  const InstallationPaths& passed = program_.state.startup.paths;
  return {serverPath_, passed.integration, passed.programs};
}

void frmProdTrelvMaintain::remove(FormWindow& window) {
  const std::string* const selected = selectedProduct(window);
  if (selected == nullptr) {
    warn(program_, "Selezionare un prodotto");
    window.setFocus("cmbProduct");
    return;
  }
  const ProductOnSide product{*selected, sideOf(window)};
  const std::string what = product.id + " - " + sideName(product.side);
  if (!mayBegin(window, "Procedere con la rimozione di: " + what + "?")) {
    warn(program_, kNothingRemoved);
    return;
  }
  beginOperation(window, "Rimozione di " + what + " in corso...");
  BarProgress progress(window);
  const bool removed = modProdTrelvManager::RemoveProduct(program_, paths(), product, progress);
  endOperation(window, "Rimozione di " + what + (removed ? " terminata." : kNoCommand),
               "btnRemove");
  if (removed) {
    inform(program_, "Procedura di rimozione terminata correttamente");
  } else {
    warn(program_, kNothingRemoved);
  }
}

void frmProdTrelvMaintain::repair(FormWindow& window) {
  const std::string* const selected = selectedProduct(window);
  const RepairVersion* const version = selectedVersion(window);
  if (selected == nullptr || version == nullptr) {
    warn(program_, "Selezionare una versione");
    window.setFocus(selected == nullptr ? "cmbProduct" : "lstVersion");
    return;
  }
  const ProductOnSide product{*selected, sideOf(window)};
  const std::string section = version->section;
  const std::string what = product.id + " - " + version->version + " - " + sideName(product.side);
  if (!mayBegin(window, "Procedere con il ripristino di: " + what + "?")) {
    warn(program_, kNothingRepaired);
    return;
  }
  beginOperation(window, "Ripristino di " + what + " in corso...");
  const bool repaired = modProdTrelvManager::RepairProduct(program_, paths(), product, section);
  endOperation(window, "Ripristino di " + what + (repaired ? " terminato." : kNoCommand),
               "btnRepair");
  if (!repaired) {
    warn(program_, kNothingRepaired);
  }
}

/// Asks for the server's path anew, then the user. Without an integration nothing begins: paths
/// that start with an empty server path lead into the root of some drive.
bool frmProdTrelvMaintain::mayBegin(FormWindow& window, const std::string& question) {
  restartProgress(window);
  serverPath_ = recordedServer(program_);
  window.setText("lblServerPath", serverPath_);
  if (serverPath_.empty()) {
    refresh(window);
    window.setText("lblOutcome", openingText());
    return false;
  }
  window.setText("lblOutcome", "In attesa di conferma.");
  const bool may = confirmed(program_, question);
  window.setText("lblOutcome", may ? "" : "Operazione annullata.");
  return may;
}

void frmProdTrelvMaintain::beginOperation(FormWindow& window, const std::string& outcome) {
  // The lines before the question were its own; what was told last stays until the next one.
  showProgress(window, ProgressNumbers(), "000%");
  window.setText("lblOutcome", outcome);
  setAllEnabled(window, false);
  // The first command may run for minutes without a log line before it.
  program_.machine.desktop.processEvents();
}

void frmProdTrelvMaintain::endOperation(FormWindow& window, const std::string& outcome,
                                        const std::string& button) {
  completeProgress(window);
  window.setText("lblOutcome", outcome);
  refresh(window);
  setAllEnabled(window, true);
  window.setFocus(button);
}

/// Reads everything that is shown anew and keeps what is selected, as far as it is still there.
void frmProdTrelvMaintain::refresh(FormWindow& window) {
  const std::string* const product = selectedProduct(window);
  const RepairVersion* const version = missed_ ? nullptr : selectedVersion(window);
  const std::string id = product != nullptr ? *product : std::string();
  const std::string section = version != nullptr ? version->section : std::string();
  program_.configurationFiles.forget();
  products_ = productsOf(program_, serverPath_);
  fillProducts(window, id);
  showProduct(window, section);
  missed_ = false;
}

}  // namespace trelv
