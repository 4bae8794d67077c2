#include "packs/ProductInstall.h"

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "packs/DirectSetup.h"
#include "packs/PackExtraction.h"
#include "packs/SelfUpdate.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

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

/// Opens a pack of the manager's own folder.
void openPack(Program& program, const std::string& packName, const std::string& target) {
  const std::string managerFolder = modLibrary::ParentPath(program.machine.system.executablePath());
  OpenSinglePacks(program, managerFolder + "\\" + packName, target);
}

void installIntegrated(Program& program, const std::string& productName, std::string& targetFolder,
                       const std::string& packName) {
  dropTrailingBackslash(targetFolder);
  program.log.WriteLog("Apertura pacco in: " + targetFolder);
  // An integration record that cannot be read counts as recorded and gives no folder.
  requireFolder(targetFolder, "Cartella del server non disponibile");
  openPack(program, packName, targetFolder);
  UpdateTrelvManager(program, targetFolder);
  // Kept: shown also when the pack could not be opened or the client copy not refreshed, so the box
  // alone is no proof. Those who do that have told their failures before.
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME,
                                     "Installazione completata correttamente del prodotto " +
                                         productName + " in: " + upperCase(targetFolder),
                                     machine::BoxIcon::Information, machine::BoxButtons::Ok);
}

void removeUnpacked(Program& program, const std::string& folder) {
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(folder, facts);
  const bool isFile = code == system_code::kSuccess && !facts.folder;
  if (isFile || meansMissing(code)) {
    return;
  }
  program.fileSystem.deleteFolder(folder, true);
  program.configurationFiles.forget();
}

void installStandAlone(Program& program, const std::string& productId,
                       const std::string& packName) {
  std::string workFolder = modLibrary::GetTempDirectory(program);
  dropTrailingBackslash(workFolder);
  program.log.WriteLog("Apertura pacchi in: " + workFolder);
  requireFolder(workFolder, "Cartella temporanea non disponibile");
  openPack(program, packName, workFolder);
  program.state.selectedProducts = {{productId}};
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione diretta Setup del prodotto " + productId +
                       ". Sono caso Standard");
  ExecuteDirectSetup(program, workFolder);
  removeUnpacked(program, hostPaths::topFolder(workFolder));
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
