#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/HostShare.h"
#include "kit/Progress.h"

namespace trelv::kit {

/// A version that stays recorded although what it names was taken back.
struct RaisedVersion {
  std::string product;
  std::string recorded;
  /// What was recorded when the packs were published; empty for nothing.
  std::string before;
};

struct WithdrawalResult {
  /// Name of the journal that was taken back; empty where there was none.
  std::string journal;
  /// That publication was ended by force before any pack came to its place.
  bool interrupted = false;
  /// Packs that were taken away unopened.
  std::vector<std::string> withdrawn;
  /// Files below the set-up folder that were put back, and removed.
  std::vector<std::string> restored;
  std::vector<std::string> removed;
  /// Those that somebody has changed since: they stay as they are.
  std::vector<std::string> left;
  std::vector<RaisedVersion> raised;
};

/// Takes back a publication: the named one, else the latest that was not taken back, also one that
/// was ended by force before it had published anything. Packs that
/// wait go; of what an opened one brought, files that were replaced are put back, others removed.
/// One that is interrupted can be begun again. Raises Failure, also where a later publication has
/// brought the same files, or RuntimeError, also where its
/// journal or that of a later one is damaged.
WithdrawalResult withdraw(HostShare& share, const std::optional<std::string>& name,
                          Progress& progress);

/// A publication for the reader of a list.
struct ListedJournal {
  Journal journal;
  /// It cannot be read: only its name is known.
  bool damaged = false;
  bool undone = false;
  /// Packs that still wait.
  std::vector<std::string> waiting;
};

/// All finished publications, oldest first. Changes nothing.
std::vector<ListedJournal> listJournals(HostShare& share);

}  // namespace trelv::kit
