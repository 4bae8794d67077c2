#include "interactive/PackInstallation.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "base/InstallationPaths.h"
#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "interactive/EntryFolder.h"
#include "packs/DirectSetup.h"
#include "packs/PackExtraction.h"
#include "packs/PackOrder.h"
#include "packs/SelfUpdate.h"
#include "packs/WorkFolder.h"
#include "platform/modLibrary.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"
#include "ui/NameList.h"
#include "ui/frmSelectInstall.h"

namespace trelv::modProdTrelvInteractive {
namespace {

using machine::BoxButtons;
using machine::BoxIcon;

std::string withoutTrailingBackslash(std::string folder) {
  if (!folder.empty() && folder.back() == '\\') {
    folder.pop_back();
  }
  return folder;
}

/// One installation of the selected products.
class Installation {
 public:
  explicit Installation(Program& program);

  void run();

 private:
  std::unique_ptr<modProdTrelvManager::WorkFolder> takeUnpackFolder();
  void install(const OfferedProduct& entry);
  void openPacks(const OfferedProduct& entry);
  std::vector<std::string> orderedPacks(const OfferedProduct& entry);
  void openThrough(const std::string& workFolder, const OfferedProduct& entry,
                   const std::vector<std::string>& zips);
  bool holdsPacks(const std::string& folder);
  void runCommands(const OfferedProduct& entry);
  void collectUnopened(const OfferedProduct& entry);
  void setUpDirectly();
  void tellOutcome();

  void log(const std::string& text) { program_.log.WriteLog(text); }
  std::vector<std::string>& unopened() { return program_.state.packs.unopened; }

  Program& program_;
  const bool standard_;
  /// Without trailing backslash; empty where there is no temporary folder.
  std::string unpackFolder_;
  /// What could not be opened, as the closing message names it.
  std::vector<std::string> failed_;
};

bool isStandard(const Program& program) {
  return program.state.session.installationType == frmSelectInstall::kStandard;
}

std::string unpackFolder(Program& program) {
  return withoutTrailingBackslash(isStandard(program) ? modLibrary::GetTempDirectory(program)
                                                      : program.state.session.serverPath);
}

Installation::Installation(Program& program) : program_(program), standard_(isStandard(program)) {}

void Installation::run() {
  log("Avvio apertura pacco.");
  log("Gestione ProdTrelv - Tipologia Installazione: " + program_.state.session.installationType);
  unpackFolder_ = unpackFolder(program_);
  log("Gestione ProdTrelv - Path di scarico pacchi: " + unpackFolder_);
  const std::vector<OfferedProduct> selection = program_.state.selectedProducts;
  const std::unique_ptr<modProdTrelvManager::WorkFolder> alone = takeUnpackFolder();
  if (alone != nullptr && !(alone->isOurs() && alone->isFreeOfLinks())) {
    for (const OfferedProduct& entry : selection) {
      failed_.push_back(entry.caption + ": cartella di lavoro non disponibile (" +
                        alone->refusal() + ")");
    }
    tellOutcome();
    return;
  }
  if (!selection.empty()) {
    log("Avvio ciclo di copia....o esecuzione diretta applicazione ");
  }
  for (const OfferedProduct& entry : selection) {
    install(entry);
  }
  if (standard_) {
    setUpDirectly();
  } else {
    modMain::WriteIntegrationConfig(program_, unpackFolder_);
  }
  tellOutcome();
}

/// The set-ups of a standard installation run from what was unpacked: until they have ended nobody
/// else may work there. Null where packs go to a server, and where there is no such folder.
std::unique_ptr<modProdTrelvManager::WorkFolder> Installation::takeUnpackFolder() {
  return standard_ && !unpackFolder_.empty()
             ? std::make_unique<modProdTrelvManager::WorkFolder>(program_, unpackFolder_)
             : nullptr;
}

void Installation::install(const OfferedProduct& entry) {
  unopened().clear();
  openPacks(entry);
  if (!standard_) {
    modProdTrelvManager::UpdateTrelvManager(program_, unpackFolder_);
  }
  runCommands(entry);
  collectUnopened(entry);
}

// --- Packs

void Installation::openPacks(const OfferedProduct& entry) {
  const std::vector<std::string> zips = orderedPacks(entry);
  std::unique_ptr<EntryFolder> work;
  resumeNext(
      [&]() -> void { work = std::make_unique<EntryFolder>(program_); },
      [&](const RuntimeError& failure) -> void {
        log("Gestione ProdTrelv - Cartella temporanea non creata (" + failure.description() + ")");
        unopened().insert(unopened().end(), zips.begin(), zips.end());
      });
  if (work == nullptr) {
    log("Apro il/i pacchi in " + unpackFolder_);
  } else {
    openThrough(work->path(), entry, zips);
    work->remove();
  }
}

/// The packs to open, in their order. A folder that has none counts as a pack that cannot be
/// opened, an entry without a folder as one that has commands only.
std::vector<std::string> Installation::orderedPacks(const OfferedProduct& entry) {
  const std::string folder = PackFolder(program_, entry);
  log("Ordino gli zip in  " + (folder.empty() ? entry.packFolder : folder));
  if (entry.packFolder.empty()) {
    return {};
  }
  if (folder.empty()) {
    log("Gestione ProdTrelv - Errore in ordinamento cartella " + entry.packFolder +
        " (Cartella fuori dal supporto)");
    unopened().push_back(entry.packFolder);
    return {};
  }
  std::vector<std::string> zips = OrderZipPacks(program_, folder);
  if (!entry.chosenPacks.empty()) {
    zips = entry.chosenPacks;
  }
  if (zips.empty()) {
    unopened().push_back(folder);
  }
  return zips;
}

void Installation::openThrough(const std::string& workFolder, const OfferedProduct& entry,
                               const std::vector<std::string>& zips) {
  for (const std::string& zip : zips) {
    log("Apro lo zip " + zip + " in  " + workFolder);
    modProdTrelvManager::OpenZipPack(program_, zip, workFolder, false);
  }
  if (unopened().empty() && !zips.empty() && !holdsPacks(workFolder)) {
    unopened().push_back(PackFolder(program_, entry));
  }
  log("Apro il/i pacchi in " + unpackFolder_);
  modProdTrelvManager::OpenFolderPacks(program_, workFolder, unpackFolder_);
}

/// One that cannot be listed is told by whoever opens its packs.
bool Installation::holdsPacks(const std::string& folder) {
  std::vector<std::string> names;
  resumeNext([&]() -> void { names = program_.fileSystem.files(folder); },
             [](const RuntimeError&) -> void {});
  return std::any_of(names.begin(), names.end(), [](const std::string& name) -> bool {
    return modLibrary::Extension(name) == "gz";
  });
}

// --- What follows the packs

void Installation::runCommands(const OfferedProduct& entry) {
  const std::string medium = withoutTrailingBackslash(program_.state.session.mediaRoot);
  const InstallationPaths paths{unpackFolder_, unpackFolder_,
                                program_.state.startup.paths.programs};
  int number = 0;
  for (const std::string& text : entry.commands) {
    std::string command = replaceAll(text, "%MEDIUM%", medium);
    modProdTrelvLibrary::ReplacePlaceholders(program_, command, paths);
    log("Esecuzione " + std::to_string(++number) + ": " + command);
    modLibrary::Execute(program_, command, true);
  }
}

void Installation::setUpDirectly() {
  log("Gestione ProdTrelv - Esecuzione diretta Setup. Sono caso Standalone");
  // Without a folder the set-ups of whatever lies on the current drive would run.
  if (!unpackFolder_.empty()) {
    modProdTrelvManager::ExecuteDirectSetup(program_, unpackFolder_);
  }
}

// --- The outcome

/// What lies on the medium is named from its root, all else by its own name.
void Installation::collectUnopened(const OfferedProduct& entry) {
  const std::string& root = program_.state.session.mediaRoot;
  for (const std::string& path : unopened()) {
    const bool onMedium = path.rfind(root, 0) == 0;
    failed_.push_back(entry.caption + ": " +
                      path.substr(onMedium ? root.size() : path.rfind('\\') + 1));
  }
}

void Installation::tellOutcome() {
  const std::string next =
      standard_ ? std::string()
                : std::string(kCrLf) + kCrLf +
                      "I prodotti verranno installati al prossimo avvio di uno di essi.";
  if (!failed_.empty()) {
    program_.machine.desktop.messageBox(
        TRELV_PRODUCT_NAME,
        std::string("Installazione non completata.") + kCrLf + kCrLf +
            "Non è stato possibile aprire i seguenti pacchi:" + namesByLine(failed_, kCrLf) + next,
        BoxIcon::Exclamation, BoxButtons::Ok);
  } else if (!standard_) {
    program_.machine.desktop.messageBox(TRELV_PRODUCT_NAME, "Installazione completata." + next,
                                        BoxIcon::Information, BoxButtons::Ok);
  }
}

}  // namespace

void InstallPacks(Program& program) {
  loggedTrap(program.log, program.errors, "ModProdTrelvInteractive", "InstallPacks",
             "Errore in installazione pacchi: ", false, [&]() -> bool {
               Installation(program).run();
               return true;
             });
}

}  // namespace trelv::modProdTrelvInteractive
