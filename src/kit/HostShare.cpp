#include "kit/HostShare.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/HostProducts.h"
#include "kit/QuietProgram.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

constexpr const char* kMarkFile = "pubblicazione.lck";
constexpr std::uint32_t kPatience = 30000;
constexpr std::uint32_t kLongestName = 256;
constexpr int kMostTries = 10;
constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

/// Products that may be recorded without being listed.
constexpr std::array kProducts{"NERIO", "LUDA", "ZB", "Q2", "ZM"};

std::vector<std::string> productsOf(Program& program, const std::string& serverPath) {
  std::vector<std::string> products(kProducts.begin(), kProducts.end());
  for (const CatalogueEntry& entry : walkedEntries(program, serverPath)) {
    if (!entry.id.empty() &&
        std::find(products.begin(), products.end(), entry.id) == products.end()) {
      products.push_back(entry.id);
    }
  }
  return products;
}

}  // namespace

HostShare::HostShare(machine::Machine& machine, const std::string& serverPath)
    : machine_(machine),
      server_(serverPath),
      setup_(hostPaths::setupFolder(serverPath)),
      shelf_(machine, serverPath) {
  machine::FileFacts facts;
  const SystemCode code = machine.files.look(setup_, facts);
  if (code != system_code::kSuccess) {
    throw Failure(setup_, code);
  }
  if (!facts.folder) {
    throw Failure(setup_, "non è una cartella");
  }
}

std::string HostShare::setup(const std::string& path) const { return setup_ + "\\" + path; }

std::unique_ptr<machine::Mark> HostShare::claim() {
  const std::string path = shelf_.path(kMarkFile);
  std::unique_ptr<machine::Mark> mark;
  SystemCode code = system_code::kPathNotFound;
  // Another one that found nothing to do may remove the folder in between.
  for (int tries = 0; code == system_code::kPathNotFound && tries < kMostTries; ++tries) {
    shelf_.prepare();
    code = machine_.exclusion.take(path, author() + "\r\n", kPatience, mark);
  }
  if (code == system_code::kSharingViolation) {
    throw Failure(path, "un'altra pubblicazione è in corso" + holder());
  }
  if (code != system_code::kSuccess) {
    throw Failure(path, code);
  }
  recover();
  return mark;
}

std::string HostShare::holder() {
  std::string text;
  if (machine_.files.read(shelf_.path(kMarkFile), kAll, text) != system_code::kSuccess) {
    return "";
  }
  const std::string name = text.substr(0, text.find('\r'));
  return name.empty() ? "" : " (" + name + ")";
}

std::vector<std::string> HostShare::waitingPacks() {
  std::vector<machine::FolderEntry> entries;
  requireDone(machine_.files.list(setup_, "zip", entries), setup_);
  std::vector<std::string> packs;
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder && modLibrary::Extension(entry.name) == "zip") {
      packs.push_back(entry.name);
    }
  }
  return packs;
}

std::map<std::string, std::string> HostShare::recordedVersions() {
  QuietProgram quiet(machine_);
  Program& program = quiet.program();
  const std::string record = hostPaths::serverVersionRecord(server_);
  std::map<std::string, std::string> versions;
  for (const std::string& product : productsOf(program, server_)) {
    const std::string version = modLibrary::ReadSetting(program, {record, product, "version"});
    if (!version.empty()) {
      versions[product] = version;
    }
  }
  return versions;
}

std::string HostShare::author() {
  std::string user;
  std::string computer;
  if (machine_.system.userName(kLongestName, user) != system_code::kSuccess) {
    user.clear();
  }
  if (machine_.system.computerName(computer) != system_code::kSuccess) {
    computer.clear();
  }
  return modLibrary::CutAtNul(user) + "@" + computer;
}

std::string HostShare::timeText() {
  const machine::LocalTime now = machine_.clock.now();
  return machine_.locale.shortDate(now) + " " + machine_.locale.longTime(now);
}

void HostShare::place(const std::string& journal, const JournalPack& pack) {
  const std::string staged = setup(JournalShelf::stagedName(journal, pack.name));
  const std::string target = setup(pack.name);
  if (pack.kept.empty()) {
    // Never replaces what nobody kept.
    requireDone(machine_.files.moveFile(staged, target), target);
    return;
  }
  machine::FileFacts facts;
  const SystemCode found = machine_.files.look(target, facts);
  if (found == system_code::kSuccess && facts.readOnly) {
    const SystemCode code = machine_.files.setReadOnly(target, false);
    if (!meansMissing(code)) {
      requireDone(code, target);
    }
  }
  requireDone(machine_.files.replaceFile(staged, target), target);
}

bool HostShare::isWaiting(const JournalPack& pack) {
  return fingerprintOfFile(machine_.files, setup(pack.name)) == pack.print;
}

bool HostShare::withdraw(const Journal& journal, const JournalPack& pack) {
  if (!isWaiting(pack)) {
    return false;
  }
  if (pack.kept.empty()) {
    removeFile(setup(pack.name));
  } else {
    const std::string staged = setup(pack.name + JournalShelf::kUnderWay);
    const std::string kept = shelf_.keptPath(journal, pack.kept);
    if (!copyAnew(kept, staged)) {
      throw Failure(kept, system_code::kFileNotFound);
    }
    requireDone(machine_.files.replaceFile(staged, setup(pack.name)), setup(pack.name));
  }
  return true;
}

bool HostShare::putBackReplaced(const Journal& journal, const JournalPack& pack) {
  if (pack.kept.empty() || fingerprintOfFile(machine_.files, setup(pack.name))) {
    return false;
  }
  const std::string staged = setup(pack.name + JournalShelf::kUnderWay);
  const std::string kept = shelf_.keptPath(journal, pack.kept);
  if (!copyAnew(kept, staged)) {
    throw Failure(kept, system_code::kFileNotFound);
  }
  requireDone(machine_.files.moveFile(staged, setup(pack.name)), setup(pack.name));
  return true;
}

void HostShare::removeFile(const std::string& path) {
  machine::FileFacts facts;
  SystemCode code = machine_.files.look(path, facts);
  if (code == system_code::kSuccess && facts.readOnly) {
    code = machine_.files.setReadOnly(path, false);
  }
  if (code == system_code::kSuccess) {
    code = machine_.files.removeFile(path);
  }
  if (!meansMissing(code)) {
    requireDone(code, path);
  }
}

/// Frees both names of what is to be made at `target`; the one that it has until it is whole.
std::string HostShare::beginAnew(const std::string& target) {
  std::string made = target + JournalShelf::kUnderWay;
  removeFile(target);
  removeFile(made);
  return made;
}

bool HostShare::copyAnew(const std::string& source, const std::string& target) {
  const std::string made = beginAnew(target);
  const SystemCode code = machine_.files.copyFile(source, made);
  machine::FileFacts facts;
  if (meansMissing(code) && meansMissing(machine_.files.look(source, facts))) {
    return false;
  }
  requireDone(code, target);
  requireDone(machine_.files.moveFile(made, target), target);
  return true;
}

void HostShare::writeAnew(const std::string& target, const std::string& bytes) {
  const std::string made = beginAnew(target);
  requireDone(machine_.files.write(made, bytes), made);
  requireDone(machine_.files.moveFile(made, target), target);
}

void HostShare::recover() {
  for (const std::string& name : shelf_.names()) {
    if (!shelf_.isUndone(name) && !shelf_.isDamaged(name)) {
      recover(name);
    }
  }
  removeUnderWay();
}

void HostShare::recover(const std::string& name) {
  if (const std::optional<Journal> journal = shelf_.read(name)) {
    recover(*journal);
  } else {
    takeBack({name, "", "", {}, {}, {}, {}});
  }
}

void HostShare::takeBack(const Journal& journal) {
  shelf_.remove(journal.name);
  takenBack_.push_back(journal);
}

void HostShare::recover(const Journal& journal) {
  std::vector<JournalPack> staged;
  for (const JournalPack& pack : journal.packs) {
    machine::FileFacts facts;
    const std::string path = setup(JournalShelf::stagedName(journal.name, pack.name));
    const SystemCode code = machine_.files.look(path, facts);
    if (!meansMissing(code)) {
      requireDone(code, path);
      staged.push_back(pack);
    }
  }
  if (!staged.empty() && staged.size() == journal.packs.size()) {
    takeBack(journal);
    return;
  }
  for (const JournalPack& pack : staged) {
    place(journal.name, pack);
  }
}

/// What lies in the set-up folder under such a name is nobody's: this process alone publishes.
void HostShare::removeUnderWay() {
  std::vector<machine::FolderEntry> entries;
  requireDone(machine_.files.list(setup_, JournalShelf::kUnderWay, entries), setup_);
  for (const machine::FolderEntry& entry : entries) {
    if (!entry.facts.folder && lowerCase(entry.name).ends_with(JournalShelf::kUnderWay)) {
      removeFile(setup(entry.name));
    }
  }
}

}  // namespace trelv::kit
