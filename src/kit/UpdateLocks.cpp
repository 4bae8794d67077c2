#include "kit/UpdateLocks.h"

#include <algorithm>

#include "base/Text.h"
#include "kit/GeneralDateText.h"
#include "kit/HostProducts.h"
#include "platform/modConfig.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

/// Longer than any date.
constexpr std::size_t kMostLockBytes = 256;

/// A start that walks the catalogue while one lock stands.
class LockedStart {
 public:
  LockedStart(Program& program, const UpdateLock& lock, const std::string& serverPath)
      : program_(program),
        lock_(lock),
        serverRecord_(versionRecord(program, Side::Server, serverPath)),
        clientRecord_(versionRecord(program, Side::Client, serverPath)),
        serverPath_(serverPath) {}

  std::vector<std::string> productsLeft();

 private:
  bool hasWork(const CatalogueEntry& entry, Side side);
  bool canBeRemoved();

  Program& program_;
  const UpdateLock& lock_;
  const std::string serverRecord_;
  const std::string clientRecord_;
  const std::string& serverPath_;
};

bool LockedStart::hasWork(const CatalogueEntry& entry, Side side) {
  return isWorkWaiting(
      program_, entry.configuration, side,
      recordedVersion(program_, side == Side::Server ? serverRecord_ : clientRecord_, entry.id));
}

/// A run that finds no work removes a lock of its side, whoever took it; whose run that is, and
/// what he may do, is not known here.
bool LockedStart::canBeRemoved() {
  machine::FileFacts facts;
  return !lock_.open.value_or(false) &&
         program_.machine.files.look(lock_.path, facts) == system_code::kSuccess && !facts.readOnly;
}

std::vector<std::string> LockedStart::productsLeft() {
  const std::vector<CatalogueEntry> entries = walkedEntries(program_, serverPath_);
  auto next = entries.begin();
  for (; next != entries.end() && !hasWork(*next, lock_.side); ++next) {
    // A missing configuration file asks nothing of the lock.
    if (modLibrary::FileExists(program_, next->configuration) && canBeRemoved()) {
      return {};
    }
  }
  std::vector<std::string> left;
  for (; next != entries.end(); ++next) {
    if (hasWork(*next, Side::Server) || hasWork(*next, Side::Client)) {
      left.push_back(next->id);
    }
  }
  return left;
}

std::string firstLine(Program& program, const std::string& path) {
  std::string bytes;
  program.machine.files.read(path, kMostLockBytes, bytes);
  return trim(program.machine.locale.fromAnsi(bytes.substr(0, bytes.find_first_of("\r\n"))));
}

std::int64_t ageOf(Program& program, const UpdateLock& lock) {
  const machine::LocalTime taken =
      readGeneralDate(program.machine.locale, lock.written)
          .value_or(program.machine.clock.localTime(lock.seen.modified));
  return secondsBetween(taken, program.machine.clock.now());
}

/// Whoever has the file in hand so that nobody may read it has it open.
std::optional<bool> isOpen(Program& program, machine::FileUse& fileUse, const std::string& path) {
  const std::optional<bool> told = fileUse.isOpen(path);
  std::string byte;
  const bool refused =
      !told && program.machine.files.read(path, 1, byte) == system_code::kSharingViolation;
  return refused ? true : told;
}

void addLock(Program& program, machine::FileUse& fileUse, const std::string& serverPath,
             UpdateLock lock, std::vector<UpdateLock>& locks) {
  if (program.machine.files.look(lock.path, lock.seen) != system_code::kSuccess ||
      lock.seen.folder) {
    return;
  }
  lock.written = firstLine(program, lock.path);
  lock.age = ageOf(program, lock);
  std::string owner;
  if (fileUse.owner(lock.path, owner) == system_code::kSuccess) {
    lock.owner = owner;
  }
  lock.open = isOpen(program, fileUse, lock.path);
  lock.waiting = LockedStart(program, lock, serverPath).productsLeft();
  locks.push_back(std::move(lock));
}

}  // namespace

std::vector<UpdateLock> updateLocks(Program& program, machine::FileUse& fileUse,
                                    const std::string& serverPath) {
  std::vector<UpdateLock> locks;
  UpdateLock lock;
  lock.path = hostPaths::serverLock(serverPath);
  addLock(program, fileUse, serverPath, lock, locks);
  std::string clientFolder;
  if (modConfig::GetConfigPath(program, clientFolder) == 0 && !clientFolder.empty()) {
    lock.path = hostPaths::clientLock(program);
    lock.side = Side::Client;
    addLock(program, fileUse, serverPath, lock, locks);
  }
  return locks;
}

}  // namespace trelv::kit
