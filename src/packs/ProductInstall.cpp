#include "packs/ProductInstall.h"

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "packs/DirectSetup.h"
#include "packs/PackExtraction.h"
#include "packs/SelfUpdate.h"
#include "packs/WorkFolder.h"
#include "platform/modLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kModule = "ModProdTrelvManager";

void dropTrailingBackslash(std::string& folder) {
  if (!folder.empty() && folder.back() == '\\') {
    folder.pop_back();
  }
}

/// Without a folder, what follows would work in, and delete, \prg of whatever drive is current.
void requireFolder(const std::string& folder, const char* description) {
  if (folder.empty()) {
    throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager", description);
  }
}

/// An installation begins only where nobody else is at work with a pack: its own tree would mix
/// with the other one.
void refuse(Program& program, const std::string& workFolderPath, const WorkFolder& workFolder) {
  program.machine.desktop.messageBox(
      TRELV_PRODUCT_NAME,
      "Installazione non eseguita: la cartella di lavoro \"" + workFolderPath +
          "\" non è disponibile.\r\n\r\n(" + workFolder.refusal() +
          ")\r\n\r\nChiudere l'altra sessione o attendere che termini, poi ripetere "
          "l'installazione.\r\n\r\nPremere Ok per interrompere",
      machine::BoxIcon::Critical, machine::BoxButtons::Ok);
}

/// Opens a pack of the manager's own folder.
void openPack(Program& program, const std::string& packName, const std::string& target) {
  const std::string managerFolder = modLibrary::ParentPath(program.machine.system.executablePath());
  OpenSinglePacks(program, managerFolder + "\\" + packName, target);
}

/// False, after a box, when another session has the work folder. Where there is none the opening
/// tells it.
bool openPackAlone(Program& program, const std::string& packName, const std::string& target) {
  const std::string path = WorkFolderPath(program);
  if (path.empty()) {
    openPack(program, packName, target);
    return true;
  }
  WorkFolder workFolder(program, path);
  const bool ours = workFolder.isOurs() && workFolder.isFreeOfLinks();
  if (ours) {
    openPack(program, packName, target);
  } else {
    refuse(program, path, workFolder);
  }
  return ours;
}

void installIntegrated(Program& program, const std::string& productName, std::string& targetFolder,
                       const std::string& packName) {
  dropTrailingBackslash(targetFolder);
  program.log.WriteLog("Apertura pacco in: " + targetFolder);
  // An integration record that cannot be read counts as recorded and gives no folder.
  requireFolder(targetFolder, "Cartella del server non disponibile");
  if (!openPackAlone(program, packName, targetFolder)) {
    return;
  }
  UpdateTrelvManager(program, targetFolder);
  // Kept: shown also when the pack could not be opened or the client copy not refreshed, so the box
  // alone is no proof. Those who do that have told their failures before.
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME,
                                     "Installazione completata correttamente del prodotto " +
                                         productName +
                                         " in: " + program.machine.locale.upperCase(targetFolder),
                                     machine::BoxIcon::Information, machine::BoxButtons::Ok);
}

void installStandAlone(Program& program, const std::string& productId,
                       const std::string& packName) {
  const std::string path = WorkFolderPath(program);
  program.log.WriteLog("Apertura pacchi in: " + path);
  requireFolder(path, "Cartella temporanea non disponibile");
  WorkFolder workFolder(program, path);
  if (!workFolder.isOurs() || !workFolder.isFreeOfLinks()) {
    refuse(program, path, workFolder);
    return;
  }
  openPack(program, packName, path);
  program.state.selectedProducts = {{productId}};
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione diretta Setup del prodotto " + productId +
                       ". Sono caso Standard");
  ExecuteDirectSetup(program, path);
  program.configurationFiles.forget();
  DeleteUnpacked(program, path);
}

}  // namespace

void InstallSingleProdottoComplementareIntegrato(Program& program, const std::string& productName,
                                                 std::string& targetFolder,
                                                 const std::string& packName) {
  loggedTrap(program.log, program.errors, kModule, "InstallSingleProdottoComplementareIntegrato",
             "Errore in installazione singolo prodotto integrato: ", false, [&]() -> bool {
               installIntegrated(program, productName, targetFolder, packName);
               return true;
             });
}

void InstallSingleProdottoComplementareStandAlone(Program& program, const std::string& productId,
                                                  const std::string& packName) {
  loggedTrap(program.log, program.errors, kModule, "InstallSingleProdottoComplementareStandAlone",
             "Errore in installazione prodotto", false, [&]() -> bool {
               installStandAlone(program, productId, packName);
               return true;
             });
}

}  // namespace trelv::modProdTrelvManager
