#include "interactive/EntryFolder.h"

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "packs/WorkFolder.h"

namespace trelv::modProdTrelvInteractive {

EntryFolder::EntryFolder(Program& program) : program_(program) {
  constexpr int kMost = 1000;
  const std::string temporary = modProdTrelvManager::WorkFolderPath(program);
  if (temporary.empty()) {
    throw RuntimeError(runtime_number::kPathNotFound, "TrelvManager",
                       "Cartella temporanea non disponibile");
  }
  for (int number = 1; number <= kMost; ++number) {
    if (take(temporary + "\\~pacchi" + std::to_string(number))) {
      clearBehind(temporary, number);
      return;
    }
  }
  throw failureFromSystemCode(system_code::kAlreadyExists, temporary);
}

/// A session that met a number which was left over took the next one. Ended by force too, it left
/// that one behind a number that is free.
void EntryFolder::clearBehind(const std::string& temporary, int number) {
  machine::FileFacts facts;
  std::unique_ptr<machine::Mark> mark;
  for (bool isLeft = true; isLeft; mark.reset()) {
    const std::string name = temporary + "\\~pacchi" + std::to_string(++number);
    isLeft = program_.machine.files.look(name + ".tmp", facts) == system_code::kSuccess &&
             program_.machine.exclusion.take(name + ".lck", {}, 0, mark) == system_code::kSuccess;
    if (isLeft) {
      removeLeft(name + ".tmp");
    }
  }
}

void EntryFolder::removeLeft(const std::string& path) {
  resumeNext([&]() -> void { program_.fileSystem.deleteFolder(path, true); },
             [](const RuntimeError&) -> void {});
}

/// A folder whose mark is free was left over. Its number is not taken all the same: a program that
/// its session started may still write there.
bool EntryFolder::take(const std::string& name) {
  const std::string path = name + ".tmp";
  SystemCode code = program_.machine.exclusion.take(name + ".lck", {}, 0, mark_);
  if (code == system_code::kSharingViolation) {
    return false;
  }
  if (code == system_code::kSuccess) {
    code = program_.machine.files.makeFolder(path);
  }
  if (code == system_code::kAlreadyExists) {
    removeLeft(path);
    mark_.reset();
    return false;
  }
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
  path_ = path;
  return true;
}

void EntryFolder::remove() {
  resumeNext([&]() -> void { program_.fileSystem.deleteFolder(path_, true); },
             [&](const RuntimeError& failure) -> void {
               program_.log.WriteLog("Gestione ProdTrelv - Cartella temporanea non rimossa: " +
                                     path_ + " (" + failure.description() + ")");
             });
}

}  // namespace trelv::modProdTrelvInteractive
