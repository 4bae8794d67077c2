#include "ui/frmSelectInstall.h"

#include <array>
#include <cstddef>
#include <optional>

#include "base/Codes.h"
#include "base/Text.h"
#include "inventory/InstallationMode.h"
#include "inventory/ProductReport.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

using machine::BoxIcon;
using machine::FormWindow;

constexpr const char* kList = "ListAmb";
constexpr const char* kSeparator = " - ";

struct Named {
  Product code;
  const char* name;
};

/// In the order in which they are asked for and listed.
constexpr std::array kProducts{Named{Product::Nerio, "Nerio"}, Named{Product::Tarsena2, "Tarsena2"},
                               Named{Product::Zeltobilancio, "Bilancio"},
                               Named{Product::Luda, "Luda"},
                               Named{Product::Zeltomodelli, "Zeltomodelli"}};

/// Names of the products that stand on their own on this machine, as the warning lists them.
std::string standaloneProducts(Program& program) {
  std::string names;
  for (const Named& product : kProducts) {
    if (modProdTrelvInfo::VerifyInstallationMode(program, product.code)) {
      names += std::string(names.empty() ? "" : kSeparator) + product.name;
    }
  }
  return names;
}

/// A path that does not depend on the current folder or drive.
bool isAbsolute(const std::string& path) {
  const bool drive = path.size() > 1 && path[1] == ':' && (path.size() == 2 || path[2] == '\\');
  return drive || path.rfind("\\\\", 0) == 0;
}

bool exists(Program& program, const std::string& path) {
  return modLibrary::FileExists(program, path) || modLibrary::FolderExists(program, path);
}

}  // namespace

frmSelectInstall::frmSelectInstall(Program& program, modProdTrelvInteractive::Help& help)
    : SessionForm(program, help, {"picSetup", "setup_fase1.jpg"}) {}

void frmSelectInstall::fill(FormWindow& window) {
  if (!session().formHeader.empty()) {
    window.setTitle(session().formHeader);
  }
  const int count = static_cast<int>(session().hostInstallations.size()) + 1;
  for (int i = 0; i < count; ++i) {
    const HostInstallation installation = installationOf(i);
    window.addItem(kList, itemText(installation), i);
    if (installation.name == session().installationType) {
      window.select(kList, i);
    }
  }
  window.setFocus(kList);
}

HostInstallation frmSelectInstall::installationOf(int item) {
  if (item == 0) {
    return {kStandard, ""};
  }
  const HostInstallation& host = session().hostInstallations.at(static_cast<std::size_t>(item) - 1);
  return {trim(host.name), host.path};
}

std::string frmSelectInstall::itemText(const HostInstallation& installation) {
  return session().showIntegrationPath && !installation.path.empty()
             ? installation.name + " ( " + installation.path + " ) "
             : installation.name;
}

bool frmSelectInstall::keyPressed(FormWindow& window, const std::string& control,
                                  machine::Key key) {
  if (key != machine::Key::F10 || (control != kList && control != "cmdExec")) {
    return false;
  }
  handle(window, control + "_KeyDown", [&]() -> void {
    if (info_ == nullptr) {
      info_ = std::make_unique<FrmInfo>(program());
    }
    program().machine.desktop.showModal(*info_);
  });
  return true;
}

void frmSelectInstall::confirm(FormWindow& window) {
  const int item = window.selected(kList);
  if (item < 0) {
    show(BoxIcon::Information, "Selezionare preliminarmente una voce");
    window.setFocus(kList);
    return;
  }
  if (!ask(BoxIcon::Question,
           "Confermi l'avvio della procedura \r" + window.itemText(kList, item))) {
    return;
  }
  clearResult();
  HostInstallation installation = installationOf(window.itemData(kList, item));
  if (installation.name != kStandard && !allow(window, installation)) {
    return;
  }
  session().installationType = installation.name;
  session().serverPath = installation.path;
  session().confirmed = true;
  window.close();
}

void frmSelectInstall::clearResult() {
  session().installationType.clear();
  session().serverPath.clear();
  session().confirmed = false;
  session().userAction = UserAction::None;
}

bool frmSelectInstall::allow(FormWindow& window, HostInstallation& installation) {
  if (installation.path.empty()) {
    installation.path = askServerPath();
  }
  if (installation.path.empty()) {
    program().log.WriteLog(
        "Il Prodotto non ha path definito e non è stato indicato il path di localizzazione del "
        "server");
    show(BoxIcon::Exclamation,
         "Scelta non ammessa senza indicazione del path di localizzazione del server");
    return false;
  }
  if (session().suppressStandaloneCheck) {
    return true;
  }
  // The check takes its time, and its lines let clicks run.
  window.setEnabled(kList, false);
  const bool blocked = blockedByStandaloneProducts();
  window.setEnabled(kList, true);
  return !blocked;
}

// --- Server path

std::string frmSelectInstall::askServerPath() {
  for (;;) {
    const std::optional<std::string> answer =
        program().machine.desktop.inputBox("Setup Prodotti Complementari " + session().mediaVersion,
                                           "Indicare il path di localizzazione del server");
    std::string path = trim(answer.value_or(""));
    if (path.empty()) {
      return {};
    }
    if (path.back() == '\\') {
      path.pop_back();
    }
    if (isServerPath(path)) {
      return path;
    }
  }
}

/// Tells what is wrong with one that is none.
bool frmSelectInstall::isServerPath(const std::string& path) {
  const std::string mark = path + "\\prg\\applidir";
  if (isAbsolute(path) && exists(program(), mark)) {
    return true;
  }
  // With a backslash behind it a bare drive is its root, not its current folder.
  if (!isAbsolute(path) || !modLibrary::FolderExists(program(), path + "\\")) {
    program().log.WriteLog("Gestione ProdTrelv - Path immesso inesistente: " + path);
    show(BoxIcon::Exclamation, "Path inesistente o errato");
  } else {
    program().log.WriteLog("Gestione ProdTrelv - Path integrazione inesistente: " + mark);
    show(BoxIcon::Exclamation, "Path integrazione errato");
  }
  return false;
}

// --- Products on their own

bool frmSelectInstall::blockedByStandaloneProducts() {
  modProdTrelvInfo::CreateProductReport(program());
  const std::string products = standaloneProducts(program());
  if (!products.empty()) {
    offerReport(products);
  }
  modLibrary::DeleteFile(program(), program().state.inventory.reportFile);
  return !products.empty();
}

void frmSelectInstall::offerReport(const std::string& products) {
  const std::string question =
      "Attenzione! E' stata rilevata la presenza di prodotti complementari installati in modalità "
      "Standard ( " +
      products + " )" + kCrLf + kCrLf +
      "Per installare in modalità integrata eseguire la migrazione dei dati e la successiva "
      "disinstallazione di ognuno di essi." +
      kCrLf + kCrLf + "Si desidera verificare i controlli eseguiti ?";
  if (ask(BoxIcon::Exclamation, question)) {
    showReport();
  }
}

void frmSelectInstall::showReport() {
  const std::string& report = program().state.inventory.reportFile;
  if (modLibrary::FileExists(program(), report)) {
    modLibrary::ExecuteUntilReady(program(), "notepad.exe " + report);
  } else {
    show(BoxIcon::Exclamation, "File info: '" + report + "' non disponibile");
  }
}

}  // namespace trelv
