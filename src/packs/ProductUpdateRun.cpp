#include "packs/ProductUpdateRun.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <set>
#include <system_error>

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "packs/PackExtraction.h"
#include "packs/ProductConfiguration.h"
#include "platform/GeneralDate.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

/// One run: one product, one side.
class ProductUpdate {
 public:
  ProductUpdate(Program& program, RunKind runKind, const InstallationPaths& paths,
                const std::string& configuration, std::string& currentVersion,
                const std::function<void()>& recordSoFar)
      : program_(program),
        runKind_(runKind),
        paths_(paths),
        configuration_{configuration, "", ""},
        currentVersion_(currentVersion),
        recordSoFar_(recordSoFar) {}
  ProductUpdate(const ProductUpdate&) = delete;
  ProductUpdate& operator=(const ProductUpdate&) = delete;
  ~ProductUpdate() { program_.machine.processes.whenSessionEnds("", nullptr); }

  Procedure run(Operation operation, Side side);
  /// The run's trap: tells the failure and gives the run's answer.
  Procedure ended(const RuntimeError& failure);

 private:
  std::string lockPath(Side side);
  Procedure runSection(const std::string& section);
  std::string setting(const std::string& section, const std::string& key);
  Procedure update(const std::string& sectionVersion);
  bool takeLock();
  void writeLock();
  void releaseLock();
  void freeLock(const std::string& failureText);
  void sessionEnds();
  void leaveToOtherSession();
  std::string kindSideAndCommand() const;

  Program& program_;
  const RunKind runKind_;
  const InstallationPaths& paths_;
  /// Section and key are those of the value that was read last.
  IniAddress configuration_;
  std::string& currentVersion_;
  const std::function<void()>& recordSoFar_;
  std::string kindName_;
  std::string sideName_;
  std::string lockPath_;
  /// The command in work, for the log.
  std::string command_;
  bool lockTaken_ = false;
};

Procedure ProductUpdate::run(Operation operation, Side side) {
  kindName_ = modProdTrelvLibrary::ConvertSetupUpdateToString(operation);
  sideName_ = modProdTrelvLibrary::ConvertClientServerToString(side);
  lockPath_ = lockPath(side);
  OpenZipPacksInFolder(program_, hostPaths::setupFolder(paths_.server), paths_.integration, true);
  if (!modLibrary::FileExists(program_, configuration_.file)) {
    program_.log.WriteLog(
        "Gestione ProdTrelv - Prodotto non rilevato, file di config non presente " +
        configuration_.file);
    return Procedure::GoesOn;
  }
  for (int section = 1; section <= kMostSections; ++section) {
    if (runSection(kindName_ + twoDigits(section)) == Procedure::Stops) {
      return Procedure::Stops;
    }
  }
  releaseLock();
  return Procedure::GoesOn;
}

/// A direct set-up on a machine without the host suite has no client folder to ask for; asking
/// would report that, and a bare name would mean the current folder, a medium for example.
std::string ProductUpdate::lockPath(Side side) {
  const bool direct = runKind_ == RunKind::ProgramOnly;
  return direct && side == Side::Client && program_.state.startup.paths.programs.empty()
             ? hostPaths::directClientLock(paths_.server)
             : LockPath(program_, side, paths_.server);
}

Procedure ProductUpdate::runSection(const std::string& section) {
  for (int index = 1; index <= kMostCommands; ++index) {
    command_ = setting(section, sideName_ + twoDigits(index));
    if (command_.empty()) {
      return Procedure::GoesOn;
    }
    if (runKind_ == RunKind::ProgramOnly) {
      command_.resize(std::min(command_.find(' '), command_.size()));
    }
    const std::string version = setting(section, "version");
    // Kept: the first command that ran brings the version up to the section's, and the others of
    // the side are passed over here. Configuration files have one for a side.
    if (VersionNumber(currentVersion_) >= VersionNumber(version)) {
      program_.log.WriteLog("Gestione ProdTrelv - Lato " + sideName_ + " la versione: " + version +
                            " è minore o uguale a quella corrente: " + currentVersion_);
    } else if (update(version) == Procedure::Stops) {
      return Procedure::Stops;
    }
  }
  return Procedure::GoesOn;
}

std::string ProductUpdate::setting(const std::string& section, const std::string& key) {
  configuration_.section = section;
  configuration_.key = key;
  return modLibrary::ReadSetting(program_, configuration_);
}

Procedure ProductUpdate::update(const std::string& sectionVersion) {
  if (!lockTaken_ && !takeLock()) {
    return Procedure::Stops;
  }
  if (RunCommand(program_, command_, paths_)) {
    currentVersion_ = sectionVersion;
    program_.log.WriteLog("Gestione ProdTrelv - esecuzione effettuata: " + kindSideAndCommand());
  } else {
    program_.log.WriteLog("Gestione ProdTrelv - Esecuzione non effettuata di: " + command_);
  }
  return Procedure::GoesOn;
}

// Kept: test and creation are two steps, so two sessions that meet between them both run. The locks
// of all programs in use work so.
bool ProductUpdate::takeLock() {
  if (modLibrary::FileExists(program_, lockPath_)) {
    leaveToOtherSession();
    return false;
  }
  // The root-aware parent: the client's lock may lie in the root of a drive.
  const std::string folder = FileSystemObject::parentFolderName(lockPath_);
  if (!folder.empty()) {
    modLibrary::CreaCartella(program_, folder);
  }
  writeLock();
  return true;
}

void ProductUpdate::writeLock() {
  const std::string date = generalDate(program_.machine.locale, program_.machine.clock.now());
  const SystemCode code =
      program_.machine.files.write(lockPath_, program_.machine.locale.toAnsi(date) + kCrLf);
  // A full disk refuses the text, not the file: the empty lock is this run's own.
  lockTaken_ = code == system_code::kSuccess || code == system_code::kDiskFull ||
               code == system_code::kWriteFault;
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, lockPath_);
  }
  program_.machine.processes.whenSessionEnds(
      "Aggiornamento dei prodotti complementari in corso: attendere la fine.",
      [this]() -> void { sessionEnds(); });
}

// Kept: the lock goes also when another session took it, since a run without work ends here too.
// That session goes on unguarded until its own end; starts that find no work free a lock that a
// crash left behind.
void ProductUpdate::releaseLock() {
  if (lockTaken_) {
    modLibrary::DeleteFile(program_, lockPath_);
  } else {
    freeLock("Blocco di un'altra sessione non rimosso: ");
  }
}

// Users who may only read come by here at each start, for each product: no form for them, and one
// line for all products.
void ProductUpdate::freeLock(const std::string& failureText) {
  std::set<std::string>& told = program_.state.packs.locksLeftAlone;
  resumeNext(
      [&]() -> void {
        if (told.count(lockPath_) == 0 && modLibrary::FileExists(program_, lockPath_) &&
            program_.fileSystem.deleteFileIfThere(lockPath_, false)) {
          program_.log.WriteLog("Cancellazione file: " + lockPath_ + " effettuata con successo");
        }
      },
      [&](const RuntimeError& failure) -> void {
        told.insert(lockPath_);
        program_.log.WriteLog("Gestione ProdTrelv - " + failureText + lockPath_ + " (" +
                              failure.description() + ")");
      });
}

// What is not done here is not done at all, and no form may wait for an answer. The command that
// runs is ended with the session: its version is not recorded, the next start runs it again.
void ProductUpdate::sessionEnds() {
  if (recordSoFar_) {
    recordSoFar_();
  }
  freeLock("Blocco non rimosso: ");
  program_.log.WriteLog("Gestione ProdTrelv - Sessione di Windows terminata durante il comando: " +
                        command_);
}

void ProductUpdate::leaveToOtherSession() {
  program_.machine.desktop.messageBox(
      TRELV_PRODUCT_NAME,
      "Il sistema ha rilevato la necessità di effettuare un aggiornamento del seguente prodotto "
      "complementare installato lato: \r\n\r\n" +
          sideName_ +
          "\r\n\r\noperazione che però non può essere avviata per la presenza di una o più "
          "precedenti sessioni in corso. L'operazione di aggiornamento verrà ritentata alla "
          "prossima esecuzione del prodotto\r\n\r\nPremere Ok per proseguire",
      machine::BoxIcon::Exclamation, machine::BoxButtons::Ok);
  program_.log.WriteLog(
      "Gestione ProdTrelv - esecuzione non effettuata per presenza altre sessioni: " +
      kindSideAndCommand());
}

std::string ProductUpdate::kindSideAndCommand() const {
  return "Tipo=" + kindName_ + " - Oggetto=" + sideName_ + " - Comando=" + command_;
}

Procedure ProductUpdate::ended(const RuntimeError& failure) {
  program_.log.WriteLog("Gestione ProdTrelv - Comando non eseguito: " + command_ + " (" +
                        failure.description() + ")");
  if (lockTaken_) {
    releaseLock();
  }
  return Procedure::Stops;
}

bool refuseForLackOfRights(Program& program) {
  program.log.WriteLog(
      "Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente non amministratore");
  program.machine.desktop.messageBox(
      "Errore",
      "Per il corretto funzionamento il sistema richiede l'aggiornamento di alcuni "
      "componenti.\r\nL'utente corrente non dispone dei privilegi necessari per effettuare tale "
      "operazione, impossibile proseguire.",
      machine::BoxIcon::Critical, machine::BoxButtons::Ok);
  return false;
}

}  // namespace

Procedure ProductUpdateRun(Program& program, RunKind runKind, const InstallationPaths& paths,
                           const std::string& configurationPath, Operation operation, Side side,
                           std::string& currentVersion, const std::function<void()>& recordSoFar) {
  ProductUpdate update(program, runKind, paths, configurationPath, currentVersion, recordSoFar);
  return trap([&]() -> Procedure { return update.run(operation, side); },
              [&](const RuntimeError& failure) -> Procedure { return update.ended(failure); });
}

bool RunCommand(Program& program, std::string& command, const InstallationPaths& paths) {
  // Kept: without the programs path, so that "%PATHCLIENT%" vanishes from update commands. Only the
  // start of a program and the maintenance put it there.
  modProdTrelvLibrary::ReplacePlaceholders(program, command, {paths.server, paths.integration, ""});
  if (!program.state.startup.administrator) {
    return refuseForLackOfRights(program);
  }
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione comando: \"" + command + "\"");
  // Kept: the command goes to Windows as it stands, which looks for a program at each blank of a
  // path without quotes; and a set-up that ran has done its work, whatever exit code it ends with.
  return modLibrary::Execute(program, command, true);
}

std::uint64_t VersionNumber(const std::string& version) {
  std::string digits = version;
  std::erase(digits, '.');
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max()
                                                 : number;
}

std::string LockPath(Program& program, Side side, const std::string& serverPath) {
  return side == Side::Client ? hostPaths::clientLock(program) : hostPaths::serverLock(serverPath);
}

}  // namespace trelv::modProdTrelvManager
