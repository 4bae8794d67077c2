#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/PublicationJournal.h"
#include "machine/Machine.h"

namespace trelv::kit {

/// The share of a host as those see it who publish packs there, one at a time. Paths below the
/// set-up folder have "\" between the levels.
class HostShare {
 public:
  /// Raises Failure where the folder (full path) is no host folder.
  HostShare(machine::Machine& machine, const std::string& serverPath);

  machine::Files& files() { return machine_.files; }
  JournalShelf& shelf() { return shelf_; }
  const std::string& serverPath() const { return server_; }
  /// Full path of a file in the set-up folder.
  std::string setup(const std::string& path) const;

  /// Keeps everybody else from publishing and taking back until the answer is destroyed; waits half
  /// a minute for another. Makes the folder of the journals. Behind this what an earlier
  /// publication left when it was ended by force is put right: one that had not put any pack in its
  /// place is taken back, another finished. Raises Failure or RuntimeError.
  std::unique_ptr<machine::Mark> claim();

  /// What claiming has taken back, without packs where their list was not yet written.
  const std::vector<Journal>& takenBack() const { return takenBack_; }

  /// The zip packs that wait in the set-up folder, in the order of the folder.
  std::vector<std::string> waitingPacks();
  /// Versions that the server side has recorded, by the identifiers of the products.
  std::map<std::string, std::string> recordedVersions();
  /// User and computer, for those who read a journal.
  std::string author();
  /// Local date and time.
  std::string timeText();

  /// Gives a pack that lies under its staged name its own, in one step; replaces only what the
  /// journal keeps.
  void place(const std::string& journal, const JournalPack& pack);
  /// Does the pack wait, as it was published?
  bool isWaiting(const JournalPack& pack);
  /// Takes a pack that waits away, or puts the one that it replaced in its place; false where it
  /// does not wait any more.
  bool withdraw(const Journal& journal, const JournalPack& pack);
  /// Puts the pack that another one replaced back where none of its name waits; false where there
  /// is nothing to put back.
  bool putBackReplaced(const Journal& journal, const JournalPack& pack);
  /// Removes a file (full path), read-only ones too. One that is missing counts as removed.
  void removeFile(const std::string& path);
  /// Copies onto a path where one that was interrupted may have left a file; false where the source
  /// is missing. The copy is on the disk before it has its name, so that a journal may count on it.
  bool copyAnew(const std::string& source, const std::string& target);
  /// The same for a content that no file has.
  void writeAnew(const std::string& target, const std::string& bytes);

 private:
  void recover();
  void recover(const std::string& name);
  void recover(const Journal& journal);
  void takeBack(const Journal& journal);
  void removeUnderWay();
  std::string beginAnew(const std::string& target);
  std::string holder();

  machine::Machine& machine_;
  std::string server_;
  std::string setup_;
  JournalShelf shelf_;
  std::vector<Journal> takenBack_;
};

}  // namespace trelv::kit
