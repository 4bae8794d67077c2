#include "packs/WorkFolder.h"

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
  if (program_.state.packs.workFolderOwner.empty()) {
    refuse(take());
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
  refusal_ = code == system_code::kSharingViolation
                 ? "in uso da un'altra sessione: " + holder()
                 : failureFromSystemCode(code, path_).description();
  bool& told = program_.state.packs.workFolderRefused;
  if (!std::exchange(told, true)) {
    program_.log.WriteLog("Gestione ProdTrelv - Cartella di lavoro " + path_ +
                          " non disponibile, nessun pacco viene aperto (" + refusal_ + ")");
  }
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

bool IsUnpacked(Program& program, const std::string& workFolder) {
  machine::FileFacts facts;
  return program.machine.files.look(hostPaths::topFolder(workFolder), facts) ==
         system_code::kSuccess;
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
