#include "packs/SelfUpdate.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

/// So much of the environment file's line is the host's; we hand it on without reading it.
constexpr std::size_t kHeadLength = 7;

/// Stream in which browsers and mail programs note that a file came from elsewhere: Windows asks at
/// each start of a program that has it.
constexpr const char* kDownloadMark = "Zone.Identifier";

/// Another workstation may put its own program there, or put one aside, between any two steps.
constexpr int kMostRounds = 3;

/// So long an update waits for another one, in milliseconds: a copy over a slow line.
constexpr std::uint32_t kLongestWait = 10'000;

/// A program that was put aside: where it lies, and what its name says of it.
constexpr const char* kAsideEnding = ".old";
constexpr const char* kTemporaryEnding = ".tmp";

/// One self-update.
class SelfUpdate {
 public:
  SelfUpdate(Program& program, const std::string& serverPath);

  void run();
  /// Takes away what this update has left on the share.
  void removeOwnTemporaries();

 private:
  std::unique_ptr<machine::Mark> takeTurn();
  void removeLeftovers();
  void removeLeftoversIn(const std::string& folder);
  bool isLeftover(const std::string& file) const;
  void settleProgramsPutAside();
  void settleProgramPutAside(const std::string& aside);
  void refreshClientCopy();
  void copyProgram();
  bool addClientCopy();
  bool replaceClientCopy();
  bool swapWithProgramInUse(SystemCode refusal);
  void putAsideBack(const std::string& aside);
  void stampEnvironmentFile();
  void writeScratchCopy(const std::string& scratch, const std::string& stamped);
  void putEnvironmentFileInPlace(const std::string& scratch, const std::string& stamped);
  void requireContent(const std::string& path, const std::string& bytes, const std::string& source);

  void copyToShare(const std::string& source, const std::string& temporary);
  void takeDownloadMarkOff(const std::string& path);
  void removeTemporary(const std::string& path);
  std::string asideName(const machine::FileFacts& facts) const;

  Program& program_;
  machine::Files& calls_;
  FileSystemObject& files_;
  const std::string copiesFolder_;
  const std::string clientCopyFolder_;
  const std::string environmentFolder_;
  const std::string temporaryFolder_;
  /// Of the running program, without extension.
  std::string name_;
  /// Computer, session and process: no two updates meet in a temporary file.
  std::string computer_;
  std::string whose_;
  std::string ownProgram_;
  std::string clientCopy_;
  /// Copies on their way. The one that is to stand where no client copy is has to be made in its
  /// folder: a file that is moved there keeps the rights of the place it was made in.
  std::string newProgram_;
  std::string addedProgram_;
  std::string newEnvironmentFile_;
};

/// Empty when it cannot be had: the temporaries' names lack it then.
std::string computerName(Program& program) {
  std::string name;
  const SystemCode code = program.machine.system.computerName(name);
  return code == system_code::kSuccess ? name : std::string();
}

SelfUpdate::SelfUpdate(Program& program, const std::string& serverPath)
    : program_(program),
      calls_(program.machine.files),
      files_(program.fileSystem),
      copiesFolder_(hostPaths::copiesFolder(serverPath)),
      clientCopyFolder_(hostPaths::clientCopyFolder(serverPath)),
      environmentFolder_(hostPaths::recordFolder(serverPath)),
      temporaryFolder_(hostPaths::temporaryFolder(serverPath)) {
  machine::SystemFacts& system = program.machine.system;
  const std::string running = system.executablePath();
  const std::string file = running.substr(running.rfind('\\') + 1);
  name_ = file.substr(0, file.rfind('.'));
  computer_ = computerName(program);
  whose_ = computer_ + "-" + std::to_string(system.sessionId()) + "-" +
           std::to_string(system.processId());
  ownProgram_ = modLibrary::ParentPath(running) + "\\" + name_ + ".exe";
  clientCopy_ = clientCopyFolder_ + "\\" + name_ + ".exe";
  const std::string newName = "\\" + name_ + "-" + whose_ + kTemporaryEnding;
  newProgram_ = temporaryFolder_ + newName;
  addedProgram_ = clientCopyFolder_ + newName;
  newEnvironmentFile_ =
      temporaryFolder_ + "\\" + hostPaths::kEnvironmentFile + "-" + whose_ + kTemporaryEnding;
}

void SelfUpdate::run() {
  program_.log.WriteLog("Gestione ProdTrelv - Copia Trelvmanager.Exe su " + clientCopyFolder_);
  const std::unique_ptr<machine::Mark> turn = takeTurn();
  // An update that was ended by force may have left some, a program that was put aside may have
  // ended since.
  removeLeftovers();
  settleProgramsPutAside();
  refreshClientCopy();
  program_.log.WriteLog("Gestione ProdTrelv - Modifica file ambver su " + environmentFolder_);
  stampEnvironmentFile();
}

/// Two updates that compare and copy at once could leave the older program. Who cannot have his
/// turn goes on all the same: programs of before know of none.
std::unique_ptr<machine::Mark> SelfUpdate::takeTurn() {
  std::unique_ptr<machine::Mark> turn;
  if (calls_.mayAddFile(temporaryFolder_) == system_code::kSuccess) {
    program_.machine.exclusion.take(temporaryFolder_ + "\\" + name_ + ".lck", whose_, kLongestWait,
                                    turn);
  }
  return turn;
}

void SelfUpdate::removeOwnTemporaries() {
  removeTemporary(newProgram_);
  removeTemporary(addedProgram_);
  removeTemporary(newEnvironmentFile_);
}

void SelfUpdate::removeTemporary(const std::string& path) {
  resumeNext([&]() -> void { files_.deleteFileIfThere(path, true); },
             [&](const RuntimeError& failure) -> void {
               program_.log.WriteLog("Gestione ProdTrelv - File temporaneo non rimosso: " + path +
                                     " (" + failure.description() + ")");
             });
}

void SelfUpdate::removeLeftovers() {
  removeLeftoversIn(temporaryFolder_);
  removeLeftoversIn(clientCopyFolder_);
}

void SelfUpdate::removeLeftoversIn(const std::string& folder) {
  std::vector<machine::FolderEntry> entries;
  if (calls_.list(folder, kTemporaryEnding, entries) != system_code::kSuccess) {
    return;
  }
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder && isLeftover(entry.name)) {
      removeTemporary(folder + "\\" + entry.name);
    }
  }
}

/// The number at the end of a text, behind its last hyphen; nothing where none stands there.
std::optional<std::uint32_t> numberAtEnd(std::string_view text) {
  const std::string_view digits = text.substr(std::min(text.rfind('-'), text.size() - 1) + 1);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool whole = error == std::errc() && end == digits.data() + digits.size();
  return whole ? std::optional<std::uint32_t>(number) : std::nullopt;
}

/// Is this the name of a temporary of this computer whose process has ended, or its own? Those of
/// other computers cannot be judged from here.
bool SelfUpdate::isLeftover(const std::string& file) const {
  const std::string_view ending(kTemporaryEnding);
  if (file.size() <= ending.size() || !equalNoCase(file.substr(file.size() - 4), ending)) {
    return false;
  }
  const std::string whose = file.substr(0, file.size() - ending.size());
  const auto beginsWith = [&whose](const std::string& beginning) -> bool {
    return equalNoCase(whose.substr(0, beginning.size()), beginning);
  };
  if (!beginsWith(name_ + "-" + computer_ + "-") &&
      !beginsWith(std::string(hostPaths::kEnvironmentFile) + "-" + computer_ + "-")) {
    return false;
  }
  const std::optional<std::uint32_t> process = numberAtEnd(whose);
  return process && (*process == program_.machine.system.processId() ||
                     !program_.machine.processes.isRunning(*process));
}

/// Name of a program that is put aside, with the size and the date of what it stands for.
std::string SelfUpdate::asideName(const machine::FileFacts& facts) const {
  return name_ + "-" + whose_ + "-" + std::to_string(facts.size) + "-" +
         std::to_string(facts.modified) + kAsideEnding;
}

/// Is this a program that an update put aside? Its name then tells what it is; a file that somebody
/// else has put there has another one.
bool wasPutAside(const machine::FolderEntry& entry, const std::string& name) {
  const std::string ending = "-" + std::to_string(entry.facts.size) + "-" +
                             std::to_string(entry.facts.modified) + kAsideEnding;
  return !entry.facts.folder && !entry.facts.reparsePoint && entry.name.size() > ending.size() &&
         equalNoCase(entry.name.substr(0, name.size() + 1), name + "-") &&
         equalNoCase(entry.name.substr(entry.name.size() - ending.size()), ending);
}

/// An update that was ended between its two renames left no client copy but the one put aside. The
/// copy that follows may fail too; the workstations would be without a manager then. Where there is
/// a client copy, what was put aside is not needed any more.
void SelfUpdate::settleProgramsPutAside() {
  std::vector<machine::FolderEntry> entries;
  if (calls_.list(copiesFolder_, kAsideEnding, entries) != system_code::kSuccess) {
    return;
  }
  std::erase_if(entries, [this](const machine::FolderEntry& entry) -> bool {
    return !wasPutAside(entry, name_);
  });
  std::sort(entries.begin(), entries.end(),
            [](const machine::FolderEntry& left, const machine::FolderEntry& right) -> bool {
              return left.facts.modified > right.facts.modified;
            });
  for (const machine::FolderEntry& entry : entries) {
    settleProgramPutAside(copiesFolder_ + "\\" + entry.name);
  }
}

void SelfUpdate::settleProgramPutAside(const std::string& aside) {
  machine::FileFacts facts;
  const SystemCode code = calls_.look(clientCopy_, facts);
  if (meansMissing(code)) {
    if (calls_.moveFile(aside, clientCopy_) == system_code::kSuccess) {
      program_.log.WriteLog("Gestione ProdTrelv - Copia precedente ripristinata: " + clientCopy_);
    }
  } else if (code == system_code::kSuccess) {
    removeTemporary(aside);
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
  for (int round = 0; round < kMostRounds; ++round) {
    machine::FileFacts facts;
    const SystemCode code = calls_.look(clientCopy_, facts);
    if (code != system_code::kSuccess && !meansMissing(code)) {
      throw failureFromSystemCode(code, clientCopy_);
    }
    if (code == system_code::kSuccess ? replaceClientCopy() : addClientCopy()) {
      return;
    }
    removeOwnTemporaries();
  }
  throw failureFromSystemCode(system_code::kSharingViolation, clientCopy_);
}

/// A program on a medium is read-only, and so would be its copy: nobody could replace it any more.
void SelfUpdate::copyToShare(const std::string& source, const std::string& temporary) {
  files_.copyFile(source, temporary);
  const SystemCode code = calls_.setReadOnly(temporary, false);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, temporary);
  }
}

void SelfUpdate::takeDownloadMarkOff(const std::string& path) {
  const SystemCode code = calls_.removeStream(path, kDownloadMark);
  // Only rights say that there is a mark; file systems differ in what they call a missing one, and
  // many have none.
  if (code == system_code::kAccessDenied || code == system_code::kSharingViolation) {
    throw failureFromSystemCode(code, path);
  }
}

/// Puts a client copy where there is none; false where there is one by now.
bool SelfUpdate::addClientCopy() {
  copyToShare(ownProgram_, addedProgram_);
  takeDownloadMarkOff(addedProgram_);
  const SystemCode code = calls_.moveFile(addedProgram_, clientCopy_);
  if (code != system_code::kSuccess && code != system_code::kAlreadyExists) {
    throw failureFromSystemCode(code, clientCopy_);
  }
  return code == system_code::kSuccess;
}

/// Replaces the client copy, whose rights list the new one gets; false where there is none by now.
bool SelfUpdate::replaceClientCopy() {
  modLibrary::CreaCartella(program_, temporaryFolder_);
  copyToShare(ownProgram_, newProgram_);
  takeDownloadMarkOff(newProgram_);
  files_.requireReplaceable(clientCopy_);
  SystemCode code = calls_.copyRights(clientCopy_, newProgram_);
  if (meansMissing(code)) {
    return false;
  }
  if (code == system_code::kSuccess) {
    code = calls_.replaceFile(newProgram_, clientCopy_);
    if (code == system_code::kAccessDenied || code == system_code::kSharingViolation) {
      return swapWithProgramInUse(code);
    }
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, clientCopy_);
  }
  return true;
}

// A program that runs cannot be replaced but renamed. Between the two renames there is no client
// copy; where the manager is ended there by force, the next self-update brings it back. Nothing is
// begun where the second one would be refused. False where another workstation came between them.
bool SelfUpdate::swapWithProgramInUse(SystemCode refusal) {
  machine::FileFacts facts;
  const SystemCode looked = calls_.look(clientCopy_, facts);
  if (meansMissing(looked)) {
    return false;
  }
  const std::string aside = copiesFolder_ + "\\" + asideName(facts);
  if (looked != system_code::kSuccess ||
      calls_.mayAddFile(clientCopyFolder_) != system_code::kSuccess ||
      calls_.moveFile(clientCopy_, aside) != system_code::kSuccess) {
    throw failureFromSystemCode(refusal, clientCopy_);
  }
  const SystemCode code = calls_.moveFile(newProgram_, clientCopy_);
  if (code == system_code::kSuccess) {
    removeTemporary(aside);
    return true;
  }
  putAsideBack(aside);
  if (code == system_code::kAlreadyExists) {
    return false;
  }
  throw failureFromSystemCode(code, clientCopy_);
}

/// Never over another one: where a workstation has put its own there meanwhile, that stays.
void SelfUpdate::putAsideBack(const std::string& aside) {
  const SystemCode code = calls_.moveFile(aside, clientCopy_);
  if (code == system_code::kAlreadyExists) {
    removeTemporary(aside);
  } else if (code != system_code::kSuccess && !meansMissing(code)) {
    program_.log.WriteLog("Gestione ProdTrelv - Copia precedente non ripristinata: " + aside);
  }
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
  const SystemCode code = calls_.read(path, std::numeric_limits<std::size_t>::max(), text);
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
  const std::string stamped =
      line.substr(0, kHeadLength) + dateStamp(program_.machine.clock.now()) + kCrLf;
  writeScratchCopy(scratch, stamped);
  putEnvironmentFileInPlace(scratch, stamped);
}

// Kept: the file has one line from now on, whatever stood above it. The host reads its end only.
// The scratch copy stays in the temporary folder, until the next self-update makes it anew.
void SelfUpdate::writeScratchCopy(const std::string& scratch, const std::string& stamped) {
  modLibrary::DeleteFile(program_, scratch);
  files_.writeText(scratch, stamped);
}

// Another self-update of the same user, for this server or another one, makes the scratch copy
// anew.
void SelfUpdate::requireContent(const std::string& path, const std::string& bytes,
                                const std::string& source) {
  std::string found;
  const SystemCode code = calls_.read(path, bytes.size() + 1, found);
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
  if (found != bytes) {
    throw failureFromSystemCode(system_code::kSharingViolation, source);
  }
}

// Never renamed aside: between two renames the file would be missing, and nobody makes it anew.
void SelfUpdate::putEnvironmentFileInPlace(const std::string& scratch, const std::string& stamped) {
  const std::string target = environmentFolder_ + "\\" + hostPaths::kEnvironmentFile;
  modLibrary::CreaCartella(program_, temporaryFolder_);
  copyToShare(scratch, newEnvironmentFile_);
  requireContent(newEnvironmentFile_, stamped, scratch);
  files_.requireReplaceable(target);
  SystemCode code = calls_.copyRights(target, newEnvironmentFile_);
  if (code == system_code::kSuccess) {
    code = calls_.replaceFile(newEnvironmentFile_, target);
  }
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
