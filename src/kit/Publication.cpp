#include "kit/Publication.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "kit/Failure.h"
#include "platform/modLibrary.h"

namespace trelv::kit {
namespace {

struct GivenPack {
  std::string path;
  std::string name;
  Fingerprint print;
};

std::string nameOf(const std::string& path) { return path.substr(path.find_last_of('\\') + 1); }

/// Passes a failure on that is not the pack's own.
void requireDamage(const RuntimeError& failure) {
  if (failure.number() != runtime_number::kInvalidFormat) {
    throw RuntimeError(failure);
  }
}

/// One publication, from claiming the share to giving it free.
class Publication {
 public:
  Publication(HostShare& share, const PackJudge& judge, Progress& progress)
      : share_(share), files_(share.files()), judge_(judge), progress_(progress) {}
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;
  ~Publication() { takeBack(); }

  PublicationResult run(const std::vector<std::string>& packs);

 private:
  std::vector<GivenPack> given(const std::vector<std::string>& packs);
  Failure missing(const std::string& path);
  bool isPresent(const GivenPack& pack);
  bool isOpened(const GivenPack& pack);
  bool isRefused(const std::vector<GivenPack>& packs);
  void stage(const GivenPack& pack);
  void gatherContent();
  void keepFiles();
  void keep(JournalFile& file);
  std::optional<std::string> bytesOfWaiting(const std::string& path);
  void noteFolders(const std::string& path);
  std::string nextKept() { return std::to_string(++kept_); }
  void placeAll();
  bool isPlaced(const JournalPack& pack) const;
  void takeBack() noexcept;

  HostShare& share_;
  machine::Files& files_;
  const PackJudge& judge_;
  Progress& progress_;
  /// The last to go.
  std::unique_ptr<machine::Mark> mark_;
  PublicationResult result_;
  Journal journal_;
  std::vector<std::string> staged_;
  /// The packs that waited before, with what they hold, in the order in which they are opened.
  std::vector<std::pair<std::string, std::vector<PackedFile>>> waiting_;
  std::vector<JournalPack> placed_;
  std::size_t kept_ = 0;
  bool begun_ = false;
};

PublicationResult Publication::run(const std::vector<std::string>& packs) {
  mark_ = share_.claim();
  std::vector<GivenPack> outstanding;
  for (const GivenPack& pack : given(packs)) {
    progress_.tell("Confronto di " + pack.name + " con il server");
    if (isPresent(pack)) {
      result_.present.push_back(pack.name);
    } else {
      outstanding.push_back(pack);
    }
  }
  if (outstanding.empty() || isRefused(outstanding)) {
    mark_.reset();
    share_.shelf().removeEmpty();
    return std::move(result_);
  }
  journal_.name = share_.shelf().begin();
  begun_ = true;
  for (const GivenPack& pack : outstanding) {
    stage(pack);
  }
  gatherContent();
  keepFiles();
  journal_.written = share_.timeText();
  journal_.author = share_.author();
  journal_.recorded = share_.recordedVersions();
  share_.shelf().finish(journal_);
  placeAll();
  begun_ = false;
  result_.journal = journal_.name;
  return std::move(result_);
}

std::vector<GivenPack> Publication::given(const std::vector<std::string>& packs) {
  std::vector<GivenPack> all;
  for (const std::string& path : packs) {
    const std::optional<Fingerprint> print = fingerprintOfFile(files_, path);
    if (!print) {
      throw missing(path);
    }
    const std::string name = nameOf(path);
    for (const GivenPack& other : all) {
      if (equalNoCase(other.name, name)) {
        throw Failure(path, "due pacchi con lo stesso nome");
      }
    }
    all.push_back({path, name, *print});
  }
  return all;
}

Failure Publication::missing(const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = files_.look(path, facts);
  return code == system_code::kSuccess && facts.folder
             ? Failure(path, "è una cartella")
             : Failure(path, code == system_code::kSuccess ? system_code::kFileNotFound : code);
}

bool Publication::isPresent(const GivenPack& pack) {
  return share_.isWaiting({pack.name, pack.print, ""}) || isOpened(pack);
}

/// A pack that was opened is gone; what it holds stands on the share.
bool Publication::isOpened(const GivenPack& pack) {
  machine::FileFacts facts;
  if (!meansMissing(files_.look(share_.setup(pack.name), facts))) {
    return false;
  }
  std::map<std::string, PackedFile> last;
  try {
    for (const PackedFile& file : packContent(files_, pack.path)) {
      last[upperCase(file.path)] = file;
    }
  } catch (const RuntimeError& failure) {
    requireDamage(failure);
    // The judge tells it.
    return false;
  }
  return !last.empty() && std::all_of(last.begin(), last.end(), [&](const auto& each) -> bool {
    return fingerprintOfFile(files_, share_.setup(each.second.path)) == each.second.print;
  });
}

bool Publication::isRefused(const std::vector<GivenPack>& packs) {
  std::vector<std::string> paths;
  paths.reserve(packs.size());
  for (const GivenPack& pack : packs) {
    paths.push_back(pack.path);
  }
  result_.findings = judge_(paths);
  result_.refused =
      std::any_of(result_.findings.begin(), result_.findings.end(),
                  [](const Finding& finding) { return finding.severity == Severity::Error; });
  if (!result_.refused) {
    for (const GivenPack& pack : packs) {
      if (modLibrary::Extension(pack.name) != "zip") {
        throw Failure(pack.path, "il server apre solo pacchi \".zip\" (in minuscolo)");
      }
    }
  }
  return result_.refused;
}

/// Under another name, which no start opens, but in its own folder: from there its own name is one
/// step away.
void Publication::stage(const GivenPack& pack) {
  progress_.tell("Copia di " + pack.name);
  const std::string staged = share_.setup(JournalShelf::stagedName(journal_.name, pack.name));
  staged_.push_back(staged);
  if (!share_.copyAnew(pack.path, staged)) {
    throw Failure(pack.path, system_code::kFileNotFound);
  }
  requireDone(files_.setReadOnly(staged, false), staged);
  if (fingerprintOfFile(files_, staged) != pack.print) {
    throw Failure(pack.path, "il pacco è cambiato durante la copia");
  }
  journal_.packs.push_back({pack.name, pack.print, ""});
}

void Publication::gatherContent() {
  std::map<std::string, std::size_t> places;
  for (const std::string& staged : staged_) {
    for (const PackedFile& packed : packContent(files_, staged)) {
      const auto [place, isNew] = places.try_emplace(upperCase(packed.path), journal_.files.size());
      if (isNew) {
        journal_.files.push_back({packed.path, "", {}, {}});
      }
      journal_.files[place->second].brought.push_back(packed.print);
    }
  }
}

void Publication::keepFiles() {
  progress_.tell("Copia dei file che verranno sostituiti");
  for (const std::string& name : share_.waitingPacks()) {
    const auto isOurs = [&](const JournalPack& pack) { return equalNoCase(pack.name, name); };
    if (std::any_of(journal_.packs.begin(), journal_.packs.end(), isOurs)) {
      continue;
    }
    try {
      waiting_.emplace_back(name, packContent(files_, share_.setup(name)));
    } catch (const RuntimeError& failure) {
      requireDamage(failure);
      // No start opens it either.
      waiting_.emplace_back(name, std::vector<PackedFile>());
    }
  }
  for (JournalPack& pack : journal_.packs) {
    const std::string name = nextKept();
    if (share_.copyAnew(share_.setup(pack.name), share_.shelf().keptPath(journal_, name))) {
      pack.kept = name;
    }
  }
  for (JournalFile& file : journal_.files) {
    keep(file);
    noteFolders(file.path);
    (file.kept.empty() ? result_.adds : result_.replaces).push_back(file.path);
  }
}

/// What stands there before our packs are opened: what another pack that waits brings, else what
/// lies there.
void Publication::keep(JournalFile& file) {
  const std::string name = nextKept();
  const std::string kept = share_.shelf().keptPath(journal_, name);
  if (const std::optional<std::string> bytes = bytesOfWaiting(file.path)) {
    share_.writeAnew(kept, *bytes);
    file.keptPrint = fingerprintOf(*bytes);
  } else if (share_.copyAnew(share_.setup(file.path), kept)) {
    file.keptPrint = fingerprintOfFile(files_, kept).value_or(Fingerprint());
  } else {
    return;
  }
  file.kept = name;
}

std::optional<std::string> Publication::bytesOfWaiting(const std::string& path) {
  const auto last = std::find_if(waiting_.rbegin(), waiting_.rend(), [&](const auto& each) -> bool {
    return std::any_of(each.second.begin(), each.second.end(), [&](const PackedFile& file) -> bool {
      return equalNoCase(file.path, path);
    });
  });
  return last == waiting_.rend() ? std::nullopt
                                 : packedBytes(files_, share_.setup(last->first), path);
}

void Publication::noteFolders(const std::string& path) {
  for (std::size_t at = path.find('\\'); at != std::string::npos; at = path.find('\\', at + 1)) {
    const std::string folder = path.substr(0, at);
    const auto isNoted = [&](const std::string& other) { return equalNoCase(other, folder); };
    machine::FileFacts facts;
    const SystemCode code = files_.look(share_.setup(folder), facts);
    if (!meansMissing(code)) {
      requireDone(code, share_.setup(folder));
    } else if (std::none_of(journal_.folders.begin(), journal_.folders.end(), isNoted)) {
      journal_.folders.push_back(folder);
    }
  }
}

void Publication::placeAll() {
  for (const JournalPack& pack : journal_.packs) {
    share_.place(journal_.name, pack);
    placed_.push_back(pack);
    result_.published.push_back(pack.name);
  }
}

bool Publication::isPlaced(const JournalPack& pack) const {
  return std::any_of(placed_.begin(), placed_.end(),
                     [&](const JournalPack& placed) { return placed.name == pack.name; });
}

/// Behind a failure. Where a start has opened a pack by now the journal stays.
void Publication::takeBack() noexcept {
  if (!std::exchange(begun_, false)) {
    return;
  }
  try {
    bool opened = false;
    for (const JournalPack& pack : journal_.packs) {
      // Somebody whom the mark does not keep out may have put in its place what we did not.
      opened = (!share_.withdraw(journal_, pack) && isPlaced(pack)) || opened;
    }
    if (!opened) {
      share_.shelf().remove(journal_.name);
    }
    for (const std::string& staged : staged_) {
      share_.removeFile(staged);
    }
  } catch (const std::exception&) {
    // The next publication finds it.
  }
}

}  // namespace

PublicationResult publish(HostShare& share, const std::vector<std::string>& packs,
                          const PackJudge& judge, Progress& progress) {
  return Publication(share, judge, progress).run(packs);
}

}  // namespace trelv::kit
