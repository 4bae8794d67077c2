#include "kit/Withdrawal.h"

#include <algorithm>
#include <memory>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/Failure.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"

namespace trelv::kit {
namespace {

/// A start that was opening the packs may bring a file again behind our back.
constexpr int kMostRounds = 3;

/// When a file has its turn: those that name versions before those that bring them, as the opening
/// of a pack has it the other way round.
int turnOf(const std::string& path) {
  if (equalNoCase(path, hostPaths::kCatalogueFile)) {
    return 0;
  }
  const bool ini = equalNoCase(modLibrary::Extension(path), "ini");
  const bool below = path.find('\\') != std::string::npos;
  return ini ? (below ? 2 : 1) : 3;
}

bool sharesFiles(const Journal& left, const Journal& right) {
  const auto hasPack = [&](const JournalPack& pack) {
    return std::any_of(right.packs.begin(), right.packs.end(), [&](const JournalPack& other) {
      return equalNoCase(pack.name, other.name);
    });
  };
  const auto hasFile = [&](const JournalFile& file) {
    return std::any_of(right.files.begin(), right.files.end(), [&](const JournalFile& other) {
      return equalNoCase(file.path, other.path);
    });
  };
  return std::any_of(left.packs.begin(), left.packs.end(), hasPack) ||
         std::any_of(left.files.begin(), left.files.end(), hasFile);
}

/// The journals that were not taken back, latest first, down to the wanted one, else to the first;
/// empty where the wanted one is none of them. One that is damaged may have brought anything.
std::vector<Journal> journalsDownTo(JournalShelf& shelf, const std::optional<std::string>& wanted) {
  std::vector<Journal> journals;
  std::vector<std::string> names = shelf.names();
  std::reverse(names.begin(), names.end());
  for (const std::string& name : names) {
    std::optional<Journal> journal = shelf.isUndone(name) ? std::nullopt : shelf.read(name);
    if (!journal) {
      continue;
    }
    journals.push_back(std::move(*journal));
    if (!wanted || equalNoCase(name, *wanted)) {
      return journals;
    }
  }
  return {};
}

/// The publication that was ended by force and is gone with the claiming; null where it was none,
/// or not the wanted one.
const Journal* takenBackOf(const HostShare& share, const std::optional<std::string>& wanted) {
  const auto found = std::find_if(share.takenBack().rbegin(), share.takenBack().rend(),
                                  [&wanted](const Journal& journal) -> bool {
                                    return !wanted || equalNoCase(journal.name, *wanted);
                                  });
  return found == share.takenBack().rend() ? nullptr : &*found;
}

/// None of its packs had come to its place.
WithdrawalResult ofInterrupted(const Journal& journal) {
  WithdrawalResult result;
  result.journal = journal.name;
  result.interrupted = true;
  return result;
}

/// One journal on its way back.
class Withdrawal {
 public:
  Withdrawal(HostShare& share, Journal journal)
      : share_(share), files_(share.files()), journal_(std::move(journal)) {}

  WithdrawalResult run();

 private:
  void takePacks();
  void putBackReplaced();
  bool takeFiles();
  bool takeFile(const JournalFile& file);
  void restore(const JournalFile& file);
  void removeFolders();
  void findLeft();
  void findRaised();

  HostShare& share_;
  machine::Files& files_;
  Journal journal_;
  WithdrawalResult result_;
};

WithdrawalResult Withdrawal::run() {
  result_.journal = journal_.name;
  std::stable_sort(journal_.files.begin(), journal_.files.end(),
                   [](const JournalFile& left, const JournalFile& right) -> bool {
                     return turnOf(left.path) < turnOf(right.path);
                   });
  takePacks();
  for (int round = 0; round < kMostRounds && takeFiles(); ++round) {
  }
  removeFolders();
  putBackReplaced();
  findLeft();
  findRaised();
  share_.shelf().setUndone(journal_.name);
  // Of a file that somebody has changed since, what it was before stands nowhere else.
  if (result_.left.empty()) {
    share_.shelf().freeKept(journal_.name);
  }
  return result_;
}

void Withdrawal::takePacks() {
  for (const JournalPack& pack : journal_.packs) {
    if (share_.withdraw(journal_, pack)) {
      result_.withdrawn.push_back(pack.name);
    }
  }
}

/// A pack that waited is opened again: behind the files that it found.
void Withdrawal::putBackReplaced() {
  for (const JournalPack& pack : journal_.packs) {
    if (share_.putBackReplaced(journal_, pack)) {
      result_.restored.push_back(pack.name);
    }
  }
}

/// False where nothing was left to do.
bool Withdrawal::takeFiles() {
  bool any = false;
  for (const JournalFile& file : journal_.files) {
    any = takeFile(file) || any;
  }
  return any;
}

/// Only what stands there as the packs brought it is ours to change.
bool Withdrawal::takeFile(const JournalFile& file) {
  const std::optional<Fingerprint> found = fingerprintOfFile(files_, share_.setup(file.path));
  const bool ours =
      found && std::find(file.brought.begin(), file.brought.end(), *found) != file.brought.end();
  if (!ours || (!file.kept.empty() && *found == file.keptPrint)) {
    return false;
  }
  std::vector<std::string>& told = file.kept.empty() ? result_.removed : result_.restored;
  if (file.kept.empty()) {
    share_.removeFile(share_.setup(file.path));
  } else {
    restore(file);
  }
  if (std::find(told.begin(), told.end(), file.path) == told.end()) {
    told.push_back(file.path);
  }
  return true;
}

void Withdrawal::restore(const JournalFile& file) {
  const std::string target = share_.setup(file.path);
  const std::string made = target + JournalShelf::kUnderWay;
  const std::string kept = share_.shelf().keptPath(journal_, file.kept);
  if (!share_.copyAnew(kept, made)) {
    throw Failure(kept, system_code::kFileNotFound);
  }
  machine::FileFacts facts;
  requireDone(files_.look(target, facts), target);
  if (facts.readOnly) {
    requireDone(files_.setReadOnly(target, false), target);
  }
  requireDone(files_.replaceFile(made, target), target);
}

/// One in which somebody else has put something stays.
void Withdrawal::removeFolders() {
  const auto remove = [&](const std::string& folder) -> void {
    const std::string path = share_.setup(folder);
    const SystemCode code = files_.removeFolder(path);
    if (code != system_code::kDirectoryNotEmpty && !meansMissing(code)) {
      requireDone(code, path);
    }
  };
  // Inner ones first.
  std::for_each(journal_.folders.rbegin(), journal_.folders.rend(), remove);
}

void Withdrawal::findLeft() {
  for (const JournalFile& file : journal_.files) {
    const std::optional<Fingerprint> found = fingerprintOfFile(files_, share_.setup(file.path));
    const bool asBefore = file.kept.empty() ? !found : found == file.keptPrint;
    if (!asBefore) {
      result_.left.push_back(file.path);
    }
  }
}

void Withdrawal::findRaised() {
  for (const auto& [product, recorded] : share_.recordedVersions()) {
    const auto then = journal_.recorded.find(product);
    const std::string before = then == journal_.recorded.end() ? "" : then->second;
    if (modProdTrelvManager::VersionNumber(recorded) > modProdTrelvManager::VersionNumber(before)) {
      result_.raised.push_back({product, recorded, before});
    }
  }
}

}  // namespace

WithdrawalResult withdraw(HostShare& share, const std::optional<std::string>& name,
                          Progress& progress) {
  JournalShelf& shelf = share.shelf();
  if (name && !shelf.read(*name)) {
    throw Failure(shelf.path(*name), "nessuna pubblicazione con questo nome");
  }
  const std::unique_ptr<machine::Mark> mark = share.claim();
  if (const Journal* const interrupted = takenBackOf(share, name)) {
    return ofInterrupted(*interrupted);
  }
  const std::vector<Journal> journals = journalsDownTo(shelf, name);
  if (journals.empty()) {
    return {};
  }
  const Journal& wanted = journals.back();
  for (auto later = journals.begin(); later + 1 != journals.end(); ++later) {
    if (sharesFiles(wanted, *later)) {
      throw Failure(shelf.path(wanted.name), "prima va annullata la pubblicazione " + later->name +
                                                 ", che porta gli stessi file");
    }
  }
  progress.tell("Annullamento di " + wanted.name);
  return Withdrawal(share, wanted).run();
}

std::vector<ListedJournal> listJournals(HostShare& share) {
  std::vector<ListedJournal> listed;
  for (const std::string& name : share.shelf().names()) {
    if (share.shelf().isDamaged(name)) {
      listed.push_back({{name, "", "", {}, {}, {}, {}}, true, share.shelf().isUndone(name), {}});
      continue;
    }
    std::optional<Journal> journal = share.shelf().read(name);
    if (!journal) {
      continue;
    }
    ListedJournal each{std::move(*journal), false, share.shelf().isUndone(name), {}};
    for (const JournalPack& pack : each.journal.packs) {
      if (!each.undone && share.isWaiting(pack)) {
        each.waiting.push_back(pack.name);
      }
    }
    listed.push_back(std::move(each));
  }
  return listed;
}

}  // namespace trelv::kit
