#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kit/PackContent.h"
#include "machine/Machine.h"

/// What a publication keeps on the share, so that it can be taken back.
namespace trelv::kit {

/// A pack that was put on the share.
struct JournalPack {
  std::string name;
  Fingerprint print;
  /// Name of the kept file among the journal's: the waiting pack of the same name that this one
  /// replaced; empty where there was none.
  std::string kept;
};

/// A file of the set-up folder that the packs bring.
struct JournalFile {
  /// Below the set-up folder.
  std::string path;
  /// Name of the kept file among the journal's; empty where the packs add a file.
  std::string kept;
  Fingerprint keptPrint;
  /// What the opened packs may leave there.
  std::vector<Fingerprint> brought;
};

struct Journal {
  /// Name of its folder: "0007-20261122-103000".
  std::string name;
  /// Local date and time, and user and computer, for the reader.
  std::string written;
  std::string author;
  std::vector<JournalPack> packs;
  std::vector<JournalFile> files;
  /// Folders below the set-up folder that the packs add, each behind the one that holds it.
  std::vector<std::string> folders;
  /// Versions that the server side had then, by product identifier.
  std::map<std::string, std::string> recorded;
};

/// The journals of one share. Paths are full, without trailing backslash. Every method raises
/// RuntimeError where the share does not let it.
class JournalShelf {
 public:
  JournalShelf(machine::Machine& machine, const std::string& serverPath);

  const std::string& folder() const { return folder_; }
  std::string path(const std::string& name) const { return folder_ + "\\" + name; }
  std::string keptPath(const Journal& journal, const std::string& kept) const;
  /// Under which name a pack of this journal lies in the set-up folder until it gets its own.
  static std::string stagedName(const std::string& journal, const std::string& pack);
  /// How the names of all files end that a publication has under way in the set-up folder.
  static constexpr const char* kUnderWay = ".trelv";

  /// Makes the folder of the journals and those above it up to the server path.
  void prepare();
  /// Removes the folder of the journals where nothing lies in it.
  void removeEmpty();
  /// The names of all journals, oldest first, those that were never finished included.
  std::vector<std::string> names() const;
  /// Nothing for one that was never finished. Raises RuntimeError with the number kInvalidFormat
  /// for one that this program has not written so.
  std::optional<Journal> read(const std::string& name) const;
  /// Makes the folder of a new journal; its name.
  std::string begin();
  /// With this the journal is finished: in one step.
  void finish(const Journal& journal);

  /// Cannot be read for what it holds: it says nothing of any publication.
  bool isDamaged(const std::string& name) const;
  bool isUndone(const std::string& name) const;
  /// Notes that the journal was taken back.
  void setUndone(const std::string& name);
  /// Removes the files that a journal keeps.
  void freeKept(const std::string& name);
  /// Removes a journal; one that is interrupted here is as one that was never finished.
  void remove(const std::string& name);

 private:
  void makeFolder(const std::string& path);

  machine::Machine& machine_;
  std::string server_;
  std::string folder_;
};

/// Raises RuntimeError unless the code says that all is well.
void requireDone(SystemCode code, const std::string& path);

}  // namespace trelv::kit
