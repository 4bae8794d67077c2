#include "packs/ProductRemoval.h"

#include <optional>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "packs/NumberedFailure.h"
#include "packs/ProductConfiguration.h"
#include "packs/SetupFolderGuard.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr int kProgressMaximum = 200;

/// One removal: one product, one side.
class Removal {
 public:
  Removal(Program& program, const InstallationPaths& paths, const ProductOnSide& product,
          RemovalProgress& progress)
      : program_(program), paths_(paths), product_(product), progress_(progress) {}

  void run();
  bool anyExecuted() const { return anyExecuted_; }

 private:
  void runCommands(const std::string& sideName);
  void runCommand(std::string command);
  void removeSetupFolder(const std::string& folder);
  void zeroVersion();
  void removeConfiguration();

  Program& program_;
  const InstallationPaths& paths_;
  const ProductOnSide& product_;
  RemovalProgress& progress_;
  std::string configuration_;
  bool anyExecuted_ = false;
};

void Removal::run() {
  // The form may have stood open for hours while other workstations wrote these files.
  program_.configurationFiles.forget();
  const std::string sideName = modProdTrelvLibrary::ConvertClientServerToString(product_.side);
  configuration_ = hostPaths::productConfiguration(
      paths_.server, modProdTrelvLibrary::GetCatalogueProductConf(
                         program_, hostPaths::catalogue(paths_.server), product_.id));
  progress_.begin(kProgressMaximum);
  runCommands(sideName);
  zeroVersion();
  if (product_.side == Side::Server) {
    removeConfiguration();
  }
}

void Removal::runCommands(const std::string& sideName) {
  const std::string section = modProdTrelvLibrary::ConvertSetupUpdateToString(Operation::Remove);
  for (int index = 1; index <= kMostCommands; ++index) {
    const std::string command =
        modLibrary::ReadSetting(program_, {configuration_, section, sideName + twoDigits(index)});
    progress_.advance();
    if (command.empty()) {
      progress_.finish();
      return;
    }
    runCommand(command);
  }
}

void Removal::runCommand(std::string command) {
  modProdTrelvLibrary::ReplacePlaceholders(program_, command, paths_);
  // Looked up before it runs: a removal program may delete itself.
  std::optional<std::string> folder;
  if (product_.side == Side::Server) {
    folder = FolderOfCommand(program_, command);
  }
  program_.log.WriteLog("Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: " +
                        command);
  anyExecuted_ = true;
  modLibrary::Execute(program_, command, true);
  if (folder) {
    // Kept: deleted behind each command, so a further command from the same folder finds no
    // program. Configuration files have one command for each folder.
    removeSetupFolder(*folder);
  }
}

void Removal::removeSetupFolder(const std::string& folder) {
  program_.log.WriteLog("Gestione ProdTrelv - Rimozione cartella server di setup: " + folder);
  if (!IsRemovableSetupFolder(program_, paths_, folder)) {
    program_.log.WriteLog(
        "Gestione ProdTrelv - Cartella non rimossa, non è una cartella di setup: " + folder);
    return;
  }
  modLibrary::DeleteFolder(program_, folder);
  if (program_.fileSystem.mayExist(folder)) {
    program_.log.WriteLog("Gestione ProdTrelv - Cartella server di setup non rimossa: " + folder);
  }
}

void Removal::zeroVersion() {
  const bool server = product_.side == Side::Server;
  program_.log.WriteLog((server ? "Gestione ProdTrelv - Azzeramento versione server prodotto: "
                                : "Gestione ProdTrelv - Azzeramento versione client prodotto: ") +
                        product_.id);
  const std::string record = server ? hostPaths::serverVersionRecord(paths_.server)
                                    : hostPaths::clientVersionRecord(program_);
  if (modLibrary::WriteSetting(program_, {record, product_.id, "version"}, "") == 0) {
    throw RuntimeError(
        runtime_number::kPathAccess, "TrelvManager",
        "Impossibile azzerare la versione di " + product_.id + " nel file: " + record);
  }
}

void Removal::removeConfiguration() {
  program_.log.WriteLog("Gestione ProdTrelv - Rimozione file di configurazione: " + configuration_);
  modLibrary::DeleteFile(program_, configuration_);
  // Without an entry in the catalogue this is the server path itself, with a backslash behind it.
  if (configuration_.back() != '\\' && program_.fileSystem.mayExist(configuration_)) {
    program_.log.WriteLog("Gestione ProdTrelv - File di configurazione non rimosso: " +
                          configuration_);
  }
  program_.configurationFiles.forget(configuration_);
}

}  // namespace

bool RemoveProduct(Program& program, const InstallationPaths& paths, const ProductOnSide& product,
                   RemovalProgress& progress) {
  Removal removal(program, paths, product, progress);
  trap([&]() -> void { removal.run(); },
       [&](const RuntimeError& failure) -> void {
         // Kept: "definzione" and "integrazione" are the line that support knows.
         logNumbered(program, "Gestione ProdTrelv - Errore in definzione integrazione (", failure);
       });
  return removal.anyExecuted();
}

}  // namespace trelv::modProdTrelvManager
