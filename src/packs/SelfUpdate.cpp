#include "packs/SelfUpdate.h"

#include <limits>
#include <string_view>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

/// So much of the environment file's line is the host's; we hand it on without reading it.
constexpr std::size_t kHeadLength = 7;

/// One self-update.
class SelfUpdate {
 public:
  SelfUpdate(Program& program, const std::string& serverPath);

  void run();
  /// Takes away what an update that ended early has left on the share.
  void removeOwnTemporaries();

 private:
  void restoreClientCopy();
  void refreshClientCopy();
  void copyProgram();
  void putProgramInPlace();
  void swapWithProgramInUse(SystemCode refusal);
  void stampEnvironmentFile();
  void writeScratchCopy(const std::string& scratch, const std::string& head);
  void putEnvironmentFileInPlace(const std::string& scratch);

  void copyToShare(const std::string& source, const std::string& temporary);
  void removeTemporary(const std::string& path);

  Program& program_;
  FileSystemObject& files_;
  const std::string clientCopyFolder_;
  const std::string environmentFolder_;
  const std::string temporaryFolder_;
  std::string ownProgram_;
  std::string clientCopy_;
  /// Copies on their way. Two workstations may be here at once: each has its own.
  std::string newProgram_;
  std::string newEnvironmentFile_;
  /// A program in use, put aside; not in the folder of the client copy, which the host hands out.
  std::string oldProgram_;
};

/// Empty when it cannot be had: the copies then have a name that all such workstations share.
std::string computerName(Program& program) {
  std::string name;
  const SystemCode code = program.machine.system.computerName(name);
  return code == system_code::kSuccess ? name : std::string();
}

SelfUpdate::SelfUpdate(Program& program, const std::string& serverPath)
    : program_(program),
      files_(program.fileSystem),
      clientCopyFolder_(hostPaths::clientCopyFolder(serverPath)),
      environmentFolder_(hostPaths::recordFolder(serverPath)),
      temporaryFolder_(hostPaths::temporaryFolder(serverPath)) {
  const std::string running = program.machine.system.executablePath();
  const std::string file = running.substr(running.rfind('\\') + 1);
  const std::string name = file.substr(0, file.rfind('.'));
  const std::string computer = computerName(program);
  ownProgram_ = modLibrary::ParentPath(running) + "\\" + name + ".exe";
  clientCopy_ = clientCopyFolder_ + "\\" + name + ".exe";
  newProgram_ = temporaryFolder_ + "\\" + name + "-" + computer + ".tmp";
  newEnvironmentFile_ =
      temporaryFolder_ + "\\" + hostPaths::kEnvironmentFile + "-" + computer + ".tmp";
  oldProgram_ = temporaryFolder_ + "\\" + name + ".old";
}

void SelfUpdate::run() {
  program_.log.WriteLog("Gestione ProdTrelv - Copia Trelvmanager.Exe su " + clientCopyFolder_);
  // An update that was ended by force may have left some, a program that was put aside may have
  // ended since.
  removeOwnTemporaries();
  restoreClientCopy();
  removeTemporary(oldProgram_);
  refreshClientCopy();
  program_.log.WriteLog("Gestione ProdTrelv - Modifica file ambver su " + environmentFolder_);
  stampEnvironmentFile();
}

void SelfUpdate::removeOwnTemporaries() {
  removeTemporary(newProgram_);
  removeTemporary(newEnvironmentFile_);
}

void SelfUpdate::removeTemporary(const std::string& path) {
  resumeNext(
      [&]() -> void {
        if (files_.fileExists(path)) {
          files_.deleteFile(path, true);
        }
      },
      [&](const RuntimeError& failure) -> void {
        program_.log.WriteLog("Gestione ProdTrelv - File temporaneo non rimosso: " + path + " (" +
                              failure.description() + ")");
      });
}

/// An update that was ended between its two renames left no client copy but the one put aside. The
/// copy that follows may fail too; the workstations would be without a manager then.
void SelfUpdate::restoreClientCopy() {
  machine::FileFacts facts;
  machine::Files& files = program_.machine.files;
  if (files_.fileExists(oldProgram_) && meansMissing(files.look(clientCopy_, facts)) &&
      files.replaceFile(oldProgram_, clientCopy_) == system_code::kSuccess) {
    program_.log.WriteLog("Gestione ProdTrelv - Copia precedente ripristinata: " + clientCopy_);
  }
}

void SelfUpdate::refreshClientCopy() {
  if (!IsFileNewer(program_, ownProgram_, clientCopy_)) {
    // Kept: the line says so of equal dates too, and does not tell the two cases apart. Support
    // knows it so.
    program_.log.WriteLog(
        "Gestione ProdTrelv - Copia Trelvmanager.Exe non eseguita: Il file destinazione è più "
        "recente");
    return;
  }
  copyProgram();
  program_.log.WriteLog("Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita");
}

void SelfUpdate::copyProgram() {
  copyToShare(ownProgram_, newProgram_);
  putProgramInPlace();
}

/// A program on a medium is read-only, and so would be its copy: nobody could replace it any more.
void SelfUpdate::copyToShare(const std::string& source, const std::string& temporary) {
  modLibrary::CreaCartella(program_, temporaryFolder_);
  files_.copyFile(source, temporary);
  const SystemCode code = program_.machine.files.setReadOnly(temporary, false);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, temporary);
  }
}

void SelfUpdate::putProgramInPlace() {
  files_.requireReplaceable(clientCopy_);
  const SystemCode code = program_.machine.files.replaceFile(newProgram_, clientCopy_);
  if (code == system_code::kAccessDenied || code == system_code::kSharingViolation) {
    swapWithProgramInUse(code);
  } else if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, clientCopy_);
  }
}

// A program that runs cannot be replaced but renamed. Between the two renames there is no client
// copy; where the manager is ended there by force, the next self-update brings it back.
void SelfUpdate::swapWithProgramInUse(SystemCode refusal) {
  machine::Files& files = program_.machine.files;
  if (files.replaceFile(clientCopy_, oldProgram_) != system_code::kSuccess) {
    throw failureFromSystemCode(refusal, clientCopy_);
  }
  const SystemCode code = files.replaceFile(newProgram_, clientCopy_);
  if (code == system_code::kSuccess) {
    removeTemporary(oldProgram_);
    return;
  }
  if (files.replaceFile(oldProgram_, clientCopy_) != system_code::kSuccess) {
    program_.log.WriteLog("Gestione ProdTrelv - Copia precedente non ripristinata: " + oldProgram_);
  }
  throw failureFromSystemCode(code, clientCopy_);
}

/// The last line as a text stream reads it: CR LF or LF ends a line, a lone CR does not, and there
/// is no line behind the last end. Bytes. Empty also for an empty file.
std::string lastLineOf(const std::string& text) {
  std::string_view lines(text);
  if (!lines.empty() && lines.back() == '\n') {
    lines.remove_suffix(1);
    if (!lines.empty() && lines.back() == '\r') {
      lines.remove_suffix(1);
    }
  }
  return std::string(lines.substr(lines.rfind('\n') + 1));
}

/// "dd/mm/yy hh:mm", whatever separators the user's system writes.
std::string dateStamp(const machine::LocalTime& now) {
  return twoDigits(now.day) + "/" + twoDigits(now.month) + "/" + twoDigits(now.year % 100) + " " +
         twoDigits(now.hour) + ":" + twoDigits(now.minute);
}

void SelfUpdate::stampEnvironmentFile() {
  const std::string path = environmentFolder_ + "\\" + hostPaths::kEnvironmentFile;
  std::string text;
  const SystemCode code =
      program_.machine.files.read(path, std::numeric_limits<std::size_t>::max(), text);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
  const std::string line = lastLineOf(text);
  if (line.empty()) {
    return;
  }
  const std::string folder = modLibrary::GetTempDirectory(program_);
  if (folder.empty()) {
    throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager",
                       "Cartella temporanea non disponibile");
  }
  // Kept: nothing between folder and name, so a folder without trailing backslash gives a file
  // beside it. The folder is reported with one.
  const std::string scratch = folder + hostPaths::kEnvironmentFile;
  writeScratchCopy(scratch, line.substr(0, kHeadLength));
  putEnvironmentFileInPlace(scratch);
}

// Kept: the file has one line from now on, whatever stood above it. The host reads its end only.
// The scratch copy stays in the temporary folder, until the next self-update makes it anew.
void SelfUpdate::writeScratchCopy(const std::string& scratch, const std::string& head) {
  modLibrary::DeleteFile(program_, scratch);
  files_.writeText(scratch, head + dateStamp(program_.machine.clock.now()) + kCrLf);
}

// Never renamed aside: between two renames the file would be missing, and nobody makes it anew.
void SelfUpdate::putEnvironmentFileInPlace(const std::string& scratch) {
  const std::string target = environmentFolder_ + "\\" + hostPaths::kEnvironmentFile;
  copyToShare(scratch, newEnvironmentFile_);
  files_.requireReplaceable(target);
  const SystemCode code = program_.machine.files.replaceFile(newEnvironmentFile_, target);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, target);
  }
}

}  // namespace

void UpdateTrelvManager(Program& program, const std::string& serverPath) {
  trap(
      [&]() -> void {
        if (serverPath.empty()) {
          // What follows would work in \prg of whatever drive is current.
          throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager",
                             "Cartella del server non disponibile");
        }
        SelfUpdate update(program, serverPath);
        trap([&]() -> void { update.run(); },
             [&](const RuntimeError& failure) -> void {
               update.removeOwnTemporaries();
               throw failure;
             });
      },
      [&](const RuntimeError& failure) -> void {
        const std::string text =
            "Gestione ProdTrelv - Errore in aggiornamento TrelvManager " + failure.description();
        program.errors.VisualizzaErrore("ModProdTrelvManager", "UpdateTrelvManager", text,
                                        ReportKind::ProgramError, failure);
        program.log.WriteLog(text);
      });
}

bool IsFileNewer(Program& program, const std::string& sourcePath, const std::string& targetPath) {
  FileSystemObject& files = program.fileSystem;
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(targetPath, facts);
  if (meansMissing(code) || (code == system_code::kSuccess && facts.folder)) {
    return true;
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, targetPath);
  }
  return files.dateLastModified(sourcePath) > files.dateLastModified(targetPath);
}

}  // namespace trelv::modProdTrelvManager
