#include "packs/WorkFolder.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/GeneralDate.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr const char* kMarkName = "TrelvManager.lck";
constexpr std::uint32_t kLongestWait = 120'000;
/// Longer than any text of a mark.
constexpr std::size_t kMostMarkBytes = 1024;

/// Who works there: "mario, STAZIONE, sessione 1, processo 4711, 16/11/2026 09:30:00". No two
/// processes of all computers have the same.
std::string ownName(Program& program) {
  constexpr std::uint32_t kLongestName = 257;
  machine::SystemFacts& system = program.machine.system;
  std::string user;
  std::string computer;
  if (system.userName(kLongestName, user) != system_code::kSuccess) {
    user = "?";
  }
  if (system.computerName(computer) != system_code::kSuccess) {
    computer = "?";
  }
  return user + ", " + computer + ", sessione " + std::to_string(system.sessionId()) +
         ", processo " + std::to_string(system.processId()) + ", " +
         generalDate(program.machine.locale, program.machine.clock.now());
}

/// Why nothing is done at this level of a path; empty where it is a plain folder or file, or
/// missing. A trailing backslash would let the system follow a link.
std::string linkAt(Program& program, std::string path) {
  path.erase(path.find_last_not_of('\\') + 1);
  machine::FileFacts facts;
  const SystemCode code = FileSystemObject::isRoot(path) ? system_code::kSuccess
                                                         : program.machine.files.look(path, facts);
  if (code != system_code::kSuccess && !meansMissing(code)) {
    return failureFromSystemCode(code, path).description();
  }
  return facts.reparsePoint ? "collegamento non seguito: " + path : std::string();
}

/// Raises where nobody can tell.
bool isThere(Program& program, const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(path, facts);
  if (code != system_code::kSuccess && !meansMissing(code)) {
    throw failureFromSystemCode(code, path);
  }
  return code == system_code::kSuccess;
}

}  // namespace

std::string WorkFolderPath(Program& program) {
  std::string folder = modLibrary::GetTempDirectory(program);
  if (!folder.empty() && folder.back() == '\\') {
    folder.pop_back();
  }
  return folder;
}

WorkFolder::WorkFolder(Program& program, std::string path)
    : program_(program), path_(std::move(path)), markPath_(path_ + "\\" + kMarkName) {
  if (!program_.state.packs.workFolderOwner.empty()) {
    return;
  }
  const std::string link = linkAt(program_, path_);
  if (link.empty()) {
    refuse(take());
  } else {
    refuse(link);
  }
}

WorkFolder::~WorkFolder() {
  if (mark_ != nullptr) {
    program_.state.packs.workFolderOwner.clear();
  }
}

SystemCode WorkFolder::take() {
  const std::uint32_t longest = program_.state.packs.workFolderRefused ? 0 : kLongestWait;
  const std::string name = program_.machine.locale.toAnsi(ownName(program_));
  const auto attempt = [&]() -> SystemCode {
    return program_.machine.exclusion.take(markPath_, name, longest, mark_);
  };
  SystemCode code = attempt();
  if (meansMissing(code)) {
    modLibrary::CreaCartella(program_, path_);
    code = attempt();
  }
  if (code == system_code::kSuccess) {
    program_.state.packs.workFolderOwner = name;
  }
  return code;
}

void WorkFolder::refuse(SystemCode code) {
  if (code == system_code::kSuccess) {
    return;
  }
  refuse(code == system_code::kSharingViolation ? "in uso da un'altra sessione: " + holder()
                                                : failureFromSystemCode(code, path_).description());
}

void WorkFolder::refuse(const std::string& why) {
  refusal_ = why;
  bool& told = program_.state.packs.workFolderRefused;
  if (!std::exchange(told, true)) {
    program_.log.WriteLog("Gestione ProdTrelv - Cartella di lavoro " + path_ +
                          " non disponibile, nessun pacco viene aperto (" + refusal_ + ")");
  }
}

bool WorkFolder::isFreeOfLinks() {
  const std::string link = LinkOnTheWay(program_, path_);
  if (!link.empty()) {
    refuse(link);
  }
  return link.empty();
}

std::string WorkFolder::holder() {
  std::string bytes;
  program_.machine.files.read(markPath_, kMostMarkBytes, bytes);
  return bytes.empty() ? "non identificata" : program_.machine.locale.fromAnsi(bytes);
}

// The mark stands in the folder by every name that it has, and says whose it is.
bool WorkFolder::isAlso(const std::string& folder) {
  if (modLibrary::IsSamePath(program_, folder, path_)) {
    return true;
  }
  const std::string path = folder + "\\" + kMarkName;
  std::string bytes;
  const SystemCode code = program_.machine.files.read(path, kMostMarkBytes, bytes);
  if (meansMissing(code)) {
    return false;
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, folder);
  }
  // A full disk has left it without its text.
  return bytes.empty() || bytes == program_.state.packs.workFolderOwner;
}

std::string LinkOnTheWay(Program& program, const std::string& folder) {
  const std::string tree = hostPaths::setupFolder(folder);
  std::string link;
  for (std::size_t end = folder.size(); link.empty() && end != std::string::npos;
       end = end < tree.size() ? std::min(tree.find('\\', end + 1), tree.size())
                               : std::string::npos) {
    link = linkAt(program, tree.substr(0, end));
  }
  return link;
}

bool IsUnpacked(Program& program, const std::string& workFolder) {
  machine::FileFacts facts;
  return program.machine.files.look(hostPaths::topFolder(workFolder), facts) ==
         system_code::kSuccess;
}

// No pack brings these. On a machine that is integrated with another host, or with none, or that
// cannot read with which, nothing else says that somebody made this one's server folder the
// temporary one. A host into which nothing was installed yet has no records.
bool IsInstallation(Program& program, const std::string& folder) {
  return isThere(program, hostPaths::serverVersionRecord(folder)) ||
         isThere(program, hostPaths::recordFolder(folder) + "\\" + hostPaths::kEnvironmentFile) ||
         isThere(program, hostPaths::dovraRelease(folder)) ||
         isThere(program, hostPaths::copiesFolder(folder));
}

void TellUnpackedStays(Program& program, const std::string& path, const RuntimeError& failure) {
  program.log.WriteLog(
      "Gestione ProdTrelv - Contenuto di un pacco non rimosso, nessun altro pacco "
      "viene aperto: " +
      path + " (" + failure.description() + ")");
}

void DeleteUnpacked(Program& program, const std::string& workFolder) {
  const std::string unpacked = hostPaths::topFolder(workFolder);
  machine::FileFacts facts;
  const SystemCode code = program.machine.files.look(unpacked, facts);
  if (meansMissing(code)) {
    return;
  }
  if (IsInstallation(program, workFolder)) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "la cartella temporanea è quella di un'installazione: " + workFolder);
  }
  program.configurationFiles.forget();
  if (code == system_code::kSuccess && !facts.folder) {
    program.fileSystem.deleteFile(unpacked, true);
  } else {
    program.fileSystem.deleteFolder(unpacked, true);
  }
}

bool RemoveUnpacked(Program& program, const std::string& workFolder) {
  return trap(
      [&]() -> bool {
        DeleteUnpacked(program, workFolder);
        return true;
      },
      [&](const RuntimeError& failure) -> bool {
        TellUnpackedStays(program, hostPaths::topFolder(workFolder), failure);
        return false;
      });
}

}  // namespace trelv::modProdTrelvManager
