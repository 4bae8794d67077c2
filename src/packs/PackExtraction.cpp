#include "packs/PackExtraction.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "packs/SetupTreeCopy.h"
#include "packs/WorkFolder.h"
#include "packs/ZipProtection.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/frmwait.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kModule = "ModProdTrelvManager";
/// 7-Zip ends with 0 (good) or 1 (warning) when it opened the pack.
constexpr std::uint32_t kFirstFailure = 2;
/// Where the exit code cannot be had the pack must not be deleted.
constexpr std::uint32_t kUnknownExitCode = std::numeric_limits<std::uint32_t>::max();

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// Path, in quotes, of a program that lies beside the manager.
std::string besideManager(Program& program, const std::string& name) {
  return quoted(modLibrary::ParentPath(program.machine.system.executablePath()) + "\\" + name);
}

std::string zipCommand(Program& program, const std::string& zipPath, const std::string& output) {
  return besideManager(program, "7z.exe") + " x -y -o" + quoted(output) + " " + quoted(zipPath);
}

std::string decoderCommand(Program& program, const std::string& packPath,
                           const std::string& output) {
  return besideManager(program, "qalbunex.exe") + " " + quoted(packPath) + " " + quoted(output);
}

constexpr const char* kNoTemporaryFolder =
    "Gestione ProdTrelv - Cartella temporanea non disponibile: nessun pacco viene aperto";
constexpr const char* kNoTarget =
    "Gestione ProdTrelv - Cartella di destinazione non disponibile: nessun pacco viene aperto";

/// False, and one log line, for a folder that is empty text: joined with a pack's own path it would
/// mean the root of some drive.
bool isGiven(Program& program, const std::string& folder, const char* missingLine) {
  if (folder.empty()) {
    program.log.WriteLog(missingLine);
  }
  return !folder.empty();
}

/// Empty, after one log line, when there is none.
std::string workFolder(Program& program) {
  const std::string folder = WorkFolderPath(program);
  return isGiven(program, folder, kNoTemporaryFolder) ? folder : std::string();
}

/// No answer tells whether a pack was opened; who has to know looks here.
void tellUnopened(Program& program, const std::string& pack) {
  std::vector<std::string>& unopened = program.state.packs.unopened;
  if (std::find(unopened.begin(), unopened.end(), pack) == unopened.end()) {
    unopened.push_back(pack);
  }
}

/// The box for a pack that could not be opened.
void tellFailed(Program& program, const std::string& zipPath, const std::string& command) {
  tellUnopened(program, zipPath);
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, "Errore in esecuzione comando: " + command,
                                     machine::BoxIcon::Critical, machine::BoxButtons::Ok);
}

/// Would 7-Zip wait for a password, in a console of its own and for ever, or be at work on folders
/// in folders for hours? One log line tells it.
bool isRefused(Program& program, const std::string& zipPath) {
  switch (FindObstacle(program.machine.files, zipPath)) {
    case ZipObstacle::None:
      return false;
    case ZipObstacle::Password:
      program.log.WriteLog("Gestione ProdTrelv - Pacco zip protetto o incompleto, non aperto: " +
                           zipPath);
      break;
    case ZipObstacle::Levels:
      program.log.WriteLog(
          "Gestione ProdTrelv - Pacco zip con troppi livelli di cartelle, non aperto: " + zipPath);
      break;
  }
  return true;
}

/// False, after a box, when 7-Zip could not be started or failed.
bool openWithSevenZip(Program& program, const std::string& zipPath, const std::string& output) {
  const std::string command = zipCommand(program, zipPath, output);
  program.log.WriteLog("Gestione ProdTrelv - Apertura pacco zip con comando: " + command);
  std::uint32_t exitCode = kUnknownExitCode;
  if (!isRefused(program, zipPath) && modLibrary::ExecuteBound(program, command, exitCode) &&
      exitCode < kFirstFailure) {
    return true;
  }
  tellFailed(program, zipPath, command);
  return false;
}

/// False when the pack is still there.
bool removePack(Program& program, const std::string& zipPath) {
  program.log.WriteLog("Gestione ProdTrelv - Rimozione pacco zip: " + zipPath);
  return modLibrary::DeleteFile(program, zipPath);
}

std::vector<machine::FolderEntry> zipPacksOf(Program& program, const std::string& folder) {
  // The server leaves out what else lies there: a start looks twice for each product.
  std::vector<machine::FolderEntry> packs = program.fileSystem.fileEntries(folder, "zip");
  std::erase_if(packs, [](const machine::FolderEntry& entry) {
    return modLibrary::Extension(entry.name) != "zip";
  });
  return packs;
}

/// What a copy needs around it: the hourglass, and the kept ini files forgotten when it ends,
/// however it ends.
class CopyInProgress {
 public:
  explicit CopyInProgress(Program& program) : program_(program) {
    program_.machine.desktop.setHourglass(true);
  }
  CopyInProgress(const CopyInProgress&) = delete;
  CopyInProgress& operator=(const CopyInProgress&) = delete;
  ~CopyInProgress() {
    program_.machine.desktop.setHourglass(false);
    program_.configurationFiles.forget();
  }

 private:
  Program& program_;
};

/// One search for the zip packs of one folder, listed once.
class ZipScan {
 public:
  ZipScan(Program& program, std::string folder, std::string target, std::string work)
      : program_(program),
        folder_(std::move(folder)),
        target_(std::move(target)),
        work_(std::move(work)),
        elsewhere_(!modLibrary::IsSamePath(program, work_, target_)),
        // The decoder has put the packs below the work folder.
        decoded_(FileSystemObject::liesAtOrIn(folder_, work_)) {
    ++program_.state.packs.searches;
  }
  ZipScan(const ZipScan&) = delete;
  ZipScan& operator=(const ZipScan&) = delete;
  ~ZipScan() { --program_.state.packs.searches; }

  void run(bool removePacks);

 private:
  bool isAnythingToDo();
  bool mayWork(WorkFolder& workFolder);
  bool isOfHost(WorkFolder& workFolder);
  bool clearedOfEarlierRuns();
  bool openAll(WorkFolder& workFolder, bool removePacks);
  bool open(WorkFolder& workFolder, const machine::FolderEntry& pack, bool removePacks);
  bool unpack(const std::string& zipPath);
  void copySetupTree();
  bool clearedOfFailedPack();
  void clearLeftovers(const std::string& folder);
  bool isPack(const std::string& path) const;
  SettledPack identityOf(const machine::FolderEntry& pack) const;
  bool isSettled(const machine::FolderEntry& pack) const;
  /// A click while a line is logged has begun this search within another, whose tree stands there.
  bool isWithinAnother() const { return program_.state.packs.searches > 1; }

  Program& program_;
  const std::string folder_;
  const std::string target_;
  const std::string work_;
  std::vector<machine::FolderEntry> packs_;
  /// The work folder is another one than the target.
  bool elsewhere_;
  const bool decoded_;
};

void ZipScan::run(bool removePacks) {
  packs_ = zipPacksOf(program_, folder_);
  program_.log.WriteLog(
      "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: " +
      quoted(folder_));
  if (!isGiven(program_, work_, kNoTemporaryFolder) || !isGiven(program_, target_, kNoTarget) ||
      !isAnythingToDo()) {
    return;
  }
  WorkFolder workFolder(program_, work_);
  if (!workFolder.isOurs() || !mayWork(workFolder)) {
    return;
  }
  // Whoever had the work folder meanwhile has opened what was listed before, and may have brought
  // configuration files that belong to the set-ups which are there now.
  program_.configurationFiles.forget();
  packs_ = zipPacksOf(program_, folder_);
  // Kept: what a pack holds beside this folder stays in the temporary folder. Packs of the products
  // hold nothing there.
  if (clearedOfEarlierRuns() && openAll(workFolder, removePacks) && elsewhere_ &&
      !isWithinAnother()) {
    RemoveUnpacked(program_, work_);
  }
}

bool ZipScan::isAnythingToDo() {
  return std::any_of(packs_.begin(), packs_.end(),
                     [this](const machine::FolderEntry& pack) { return !isSettled(pack); }) ||
         (elsewhere_ && IsUnpacked(program_, work_));
}

/// The folders of the host and the target may be the work folder under another name: nothing of
/// them is deleted then, and nothing is copied onto itself.
bool ZipScan::mayWork(WorkFolder& workFolder) {
  if (!elsewhere_) {
    return true;
  }
  const bool isTarget = workFolder.isAlso(target_);
  const bool isHost = !isTarget && isOfHost(workFolder);
  if ((isTarget || isHost) && !std::exchange(program_.state.packs.otherNameTold, true)) {
    program_.log.WriteLog("Gestione ProdTrelv - Cartella di lavoro " + work_ +
                          " uguale alla cartella " + (isTarget ? target_ : "del server") +
                          ": il suo contenuto non viene rimosso");
  }
  elsewhere_ = !isTarget;
  if (isHost) {
    for (const machine::FolderEntry& pack : packs_) {
      tellUnopened(program_, folder_ + "\\" + pack.name);
    }
  }
  return !isHost;
}

bool ZipScan::isOfHost(WorkFolder& workFolder) {
  const ProgramState& state = program_.state;
  const auto isAlso = [&](const std::string& folder) -> bool {
    return !folder.empty() && !modLibrary::IsSamePath(program_, folder, target_) &&
           workFolder.isAlso(folder);
  };
  return isAlso(state.startup.paths.server) || isAlso(state.session.serverPath) ||
         IsInstallation(program_, work_);
}

/// What an earlier run left would reach the target with the first pack. What the decoder wrote is
/// no leftover.
bool ZipScan::clearedOfEarlierRuns() {
  if (!elsewhere_ || decoded_ || isWithinAnother()) {
    return true;
  }
  if (IsUnpacked(program_, work_) && LinkOnTheWay(program_, work_).empty()) {
    RemoveCopiesUnderWay(program_, hostPaths::setupFolder(work_), hostPaths::setupFolder(target_));
  }
  return RemoveUnpacked(program_, work_);
}

bool ZipScan::openAll(WorkFolder& workFolder, bool removePacks) {
  return std::all_of(packs_.begin(), packs_.end(), [&](const machine::FolderEntry& pack) {
    return isSettled(pack) || open(workFolder, pack, removePacks);
  });
}

// Kept: the pack is removed before its content is copied. A copy that fails, or a process that ends
// between the two, loses it: the next scan removes the unpacked tree. The pack has to be delivered
// again then; whoever delivers packs relies on an opened one being gone.
// False when the search cannot go on: what a failed pack left would be copied with the next one, or
// a link leads elsewhere.
bool ZipScan::open(WorkFolder& workFolder, const machine::FolderEntry& pack, bool removePacks) {
  const std::string zipPath = folder_ + "\\" + pack.name;
  if (!workFolder.isFreeOfLinks()) {
    tellUnopened(program_, zipPath);
    return false;
  }
  if (!unpack(zipPath)) {
    program_.state.packs.settled.push_back(identityOf(pack));
    return !elsewhere_ || clearedOfFailedPack();
  }
  if (!removePacks) {
    return true;
  }
  const bool removed = removePack(program_, zipPath);
  if (elsewhere_) {
    copySetupTree();
  }
  // One that somebody has open is listed until he closes it, deleted as it is.
  if (!removed || program_.fileSystem.mayExist(zipPath)) {
    program_.state.packs.settled.push_back(identityOf(pack));
  }
  return true;
}

/// False, after a box, when the pack could not be opened or has brought a link in the place of a
/// folder that all packs have.
bool ZipScan::unpack(const std::string& zipPath) {
  if (!openWithSevenZip(program_, zipPath, work_)) {
    return false;
  }
  const std::string link = LinkOnTheWay(program_, work_);
  if (!link.empty()) {
    program_.log.WriteLog("Gestione ProdTrelv - Pacco zip con un collegamento, non aperto: " +
                          zipPath + " (" + link + ")");
    tellFailed(program_, zipPath, zipCommand(program_, zipPath, work_));
  }
  return link.empty();
}

// Kept: the whole tree is copied, what earlier packs left there and packs that still wait in it
// included. Packs opened later thus overwrite what earlier ones brought.
void ZipScan::copySetupTree() {
  frmwait form;
  std::unique_ptr<machine::ShownForm> shown;
  // The pointer changes first, both before the form comes and before it goes.
  const CopyInProgress copying(program_);
  shown = program_.machine.desktop.showModeless(form);
  const std::string target = hostPaths::setupFolder(target_);
  modLibrary::CreaCartella(program_, target);
  const std::string link = LinkOnTheWay(program_, work_);
  if (!link.empty()) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "Cartella non copiata, " + link);
  }
  CopySetupTree(program_, hostPaths::setupFolder(work_), target);
}

bool ZipScan::clearedOfFailedPack() {
  const std::string unpacked = hostPaths::topFolder(work_);
  return trap(
      [&]() -> bool {
        clearLeftovers(unpacked);
        return true;
      },
      [&](const RuntimeError& failure) -> bool {
        TellUnpackedStays(program_, unpacked, failure);
        return false;
      });
}

/// Removes what a failed pack left below `folder`: the next copy would take it along. The packs of
/// this scan stay, since the decoder puts them below the work folder too; behind a link there are
/// none of them, and it goes itself. So does a file in the folder's place.
void ZipScan::clearLeftovers(const std::string& folder) {
  machine::FileFacts facts;
  if (program_.machine.files.look(folder, facts) != system_code::kSuccess) {
    return;
  }
  if (!facts.folder) {
    program_.fileSystem.deleteFile(folder, true);
    return;
  }
  if (facts.reparsePoint || !FileSystemObject::liesAtOrIn(folder_, folder)) {
    program_.fileSystem.deleteFolder(folder, true);
    return;
  }
  for (const std::string& name : program_.fileSystem.folders(folder)) {
    clearLeftovers(folder + "\\" + name);
  }
  for (const std::string& name : program_.fileSystem.files(folder)) {
    if (!isPack(folder + "\\" + name)) {
      program_.fileSystem.deleteFile(folder + "\\" + name, true);
    }
  }
}

bool ZipScan::isPack(const std::string& path) const {
  return std::any_of(packs_.begin(), packs_.end(), [&](const machine::FolderEntry& pack) {
    return equalNoCase(folder_ + "\\" + pack.name, path);
  });
}

SettledPack ZipScan::identityOf(const machine::FolderEntry& pack) const {
  return {upperCase(folder_ + "\\" + pack.name), upperCase(target_), pack.facts.size,
          pack.facts.modified};
}

bool ZipScan::isSettled(const machine::FolderEntry& pack) const {
  const std::vector<SettledPack>& settled = program_.state.packs.settled;
  return std::find(settled.begin(), settled.end(), identityOf(pack)) != settled.end();
}

/// What the decoder wrote are other packs, even under the same name.
void forgetSettled(Program& program, const std::string& folder) {
  std::erase_if(program.state.packs.settled, [&](const SettledPack& pack) {
    return FileSystemObject::liesAtOrIn(pack.path, folder);
  });
}

/// The decoder unpacks in a folder of such a name, which stays where it is ended with its manager.
/// Only who has the work folder unpacks there: what stands now is left over.
void removeUnfinished(Program& program, const std::string& work) {
  constexpr const char* kPrefix = "~QALBUNEX";
  std::vector<machine::FolderEntry> entries;
  program.machine.files.list(work, ".tmp", entries);
  for (const machine::FolderEntry& entry : entries) {
    if (entry.facts.folder && upperCase(entry.name).starts_with(kPrefix)) {
      // The decoder takes another name where one stays.
      resumeNext([&]() -> void { program.fileSystem.deleteFolder(work + "\\" + entry.name, true); },
                 [](const RuntimeError&) -> void {});
    }
  }
}

void openSinglePack(Program& program, const std::string& packPath, const std::string& target) {
  const std::string work = workFolder(program);
  if (work.empty()) {
    tellUnopened(program, packPath);
    return;
  }
  WorkFolder workFolder(program, work);
  if (!workFolder.isOurs() || !workFolder.isFreeOfLinks()) {
    tellUnopened(program, packPath);
    return;
  }
  removeUnfinished(program, work);
  // Kept: a decoder that fails is not told, only one that cannot be started. The search then tells
  // a missing folder, or opens what an earlier pack left: what counts is what lies there.
  std::uint32_t exitCode = kUnknownExitCode;
  if (!modLibrary::ExecuteBound(program, decoderCommand(program, packPath, work), exitCode) ||
      exitCode != 0) {
    tellUnopened(program, packPath);
  }
  if (!workFolder.isFreeOfLinks()) {
    tellUnopened(program, packPath);
    return;
  }
  const std::string decoded = hostPaths::setupFolder(work);
  forgetSettled(program, decoded);
  OpenZipPacksInFolder(program, decoded, target, true);
}

void openFolderPacks(Program& program, const std::string& folder, const std::string& target) {
  for (const std::string& name : program.fileSystem.files(folder)) {
    if (modLibrary::Extension(name) == "gz") {
      // Kept: the line names the target, so whoever looks for the pack there finds none. Support
      // knows it so.
      program.log.WriteLog("Gestione ProdTrelv - Apertura pacco :" + target + "\\" + name);
      OpenSinglePacks(program, folder + "\\" + name, target);
    }
  }
}

}  // namespace

bool OpenZipPacksInFolder(Program& program, const std::string& folder, const std::string& target,
                          bool removePacks) {
  ZipScan(program, folder, target, WorkFolderPath(program)).run(removePacks);
  return true;
}

// Kept: true also after a failed command, so callers go on as after a success. The user was told in
// the box and decides.
bool OpenZipPack(Program& program, const std::string& zipPath, const std::string& destination,
                 bool removePackAfterwards) {
  if (isGiven(program, destination, kNoTemporaryFolder) &&
      openWithSevenZip(program, zipPath, destination) && removePackAfterwards) {
    removePack(program, zipPath);
  }
  return true;
}

void OpenFolderPacks(Program& program, const std::string& folder, const std::string& target) {
  if (!loggedTrap(program.log, program.errors, kModule, "OpenFolderPacks",
                  "Errore in Apertura Pacchi", false, [&]() -> bool {
                    openFolderPacks(program, folder, target);
                    return true;
                  })) {
    tellUnopened(program, folder);
  }
}

void OpenSinglePacks(Program& program, const std::string& packPath, const std::string& target) {
  if (!loggedTrap(program.log, program.errors, kModule, "OpenSinglePacks",
                  "Errore in Apertura Pacco ", false, [&]() -> bool {
                    openSinglePack(program, packPath, target);
                    return true;
                  })) {
    tellUnopened(program, packPath);
  }
}

}  // namespace trelv::modProdTrelvManager
