#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/SystemCode.h"
#include "machine/Clock.h"
#include "machine/VersionResources.h"

namespace trelv::sim {

class SimProcess;

/// What a program does when it is started; gives its exit code.
using ProgramScript = std::function<std::uint32_t(SimProcess&)>;

/// What others may do with a file while someone holds it open.
enum class Sharing : unsigned { None = 0, Read = 1, Write = 2, ReadWrite = 3, Delete = 4, All = 7 };
constexpr Sharing operator|(Sharing left, Sharing right) {
  return static_cast<Sharing>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}

/// What a user may do with a file; with a folder, Add means making entries in it.
enum class Right : unsigned { None = 0, Read = 1, Add = 2, Change = 4, Remove = 8, All = 15 };
constexpr Right operator|(Right left, Right right) {
  return static_cast<Right>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}

/// Who may do what: users by their names, "*" for all others. An empty list lets everyone do
/// everything.
using RightsList = std::map<std::string, Right>;

/// Ticks of 100 nanoseconds since 1601, as file times are.
using FileTicks = std::int64_t;
FileTicks ticksOf(const machine::LocalTime& time);

/// One entry of a disk. Tests use SimDisk's methods instead.
struct SimNode {
  std::string name;
  /// Tells it apart on its disk, whatever it is called.
  std::uint64_t number = 0;
  bool folder = false;
  bool readOnly = false;
  bool hidden = false;
  bool system = false;
  /// Deleted while somebody has it open: goes when he closes it, and cannot be used until then.
  bool leaving = false;
  /// Not empty: a link or junction to this full path.
  std::string linkTarget;
  FileTicks modified = 0;
  std::string bytes;
  /// What runs when the file is started, and its version resource; both travel with copies.
  ProgramScript program;
  std::optional<machine::FileVersion> version;
  /// Not empty: only this user can read or write the file, or what others make in the folder only
  /// those who make it. Travels with a rename; a new entry has that of its folder.
  std::string encryptedFor;
  /// Travels with a rename; a new entry has that of its folder.
  RightsList rights;
  /// Who made it: may always change its rights list. Empty: nobody in particular.
  std::string owner;
  /// Alternate streams by their names; they travel with copies and renames.
  std::map<std::string, std::string> streams;
  /// Held open by some other process.
  std::optional<Sharing> held;
  /// One for each process that runs from this file, expired when it ended.
  std::vector<std::weak_ptr<void>> runners;
  SimNode* parent = nullptr;
  /// In order of creation: what a listing gives.
  std::vector<std::unique_ptr<SimNode>> children;

  SimNode* child(std::string_view childName) const;
  bool allows(const std::string& user, Right right) const;
  /// False for the file of another user, encrypted.
  bool opensFor(const std::string& user) const;
  bool running() const;
  /// A process runs from the file as long as the answer lives.
  [[nodiscard]] std::shared_ptr<void> run();
};

/// A disk or a share with its files. Mounted in one or several machines; in several it is a share
/// that workstations use together. Paths of its methods are those of any mount ("S:\prg\a.txt",
/// "\\server\share\prg\a.txt") or start at its root ("prg\a.txt"): the volume part is ignored, case
/// does not matter, names keep their spelling. What tests do here is not counted as a call.
class SimDisk {
 public:
  SimDisk();
  ~SimDisk();
  SimDisk(const SimDisk&) = delete;
  SimDisk& operator=(const SimDisk&) = delete;

  // --- Putting and looking

  /// Makes or replaces a file and the folders on the way. Attributes of an existing file stay,
  /// program and version are dropped.
  void put(const std::string& path, std::string_view bytes);
  /// A file that can be started; `script` runs then (none: it ends at once with 0).
  void putProgram(const std::string& path, ProgramScript script = nullptr);
  void makeFolders(const std::string& path);
  /// A link or junction; `target` is a full path on the machine that follows it.
  void putLink(const std::string& path, const std::string& target, bool folder = true);
  /// Removes a file or a folder with all it holds; nothing when missing.
  void removeTree(const std::string& path);

  bool exists(const std::string& path) const;
  bool fileExists(const std::string& path) const;
  bool folderExists(const std::string& path) const;
  /// Bytes of a file; raises std::out_of_range when there is none.
  std::string text(const std::string& path) const;
  /// All entries, one a line, depth first in listing order: "prg\", "prg\a.txt 12".
  std::string tree(const std::string& path = "") const;
  /// Names in a folder in listing order.
  std::vector<std::string> names(const std::string& path) const;

  // --- Properties

  void setReadOnly(const std::string& path, bool readOnly = true);
  bool isReadOnly(const std::string& path) const;
  /// Makes a file hidden and one of the system's, or an ordinary one.
  void setConcealed(const std::string& path, bool concealed = true);
  bool isConcealed(const std::string& path) const;
  void setModified(const std::string& path, const machine::LocalTime& time);
  void setModifiedTicks(const std::string& path, FileTicks ticks);
  FileTicks modifiedTicks(const std::string& path) const;
  void setVersion(const std::string& path, const machine::FileVersion& version);
  /// Who may do what with this file or folder and with everything below it; later entries take it
  /// over from their folder.
  void setRights(const std::string& path, const RightsList& rights);
  const RightsList& rights(const std::string& path) const;
  /// Encrypts this file or folder and everything below it for a user.
  void encrypt(const std::string& path, const std::string& user);
  bool isEncrypted(const std::string& path) const;
  void putStream(const std::string& path, const std::string& stream, std::string_view bytes);
  bool hasStream(const std::string& path, const std::string& stream) const;
  /// Puts the named entries of a folder first, in this order; the others keep theirs behind.
  void setListingOrder(const std::string& folder, const std::vector<std::string>& names);

  // --- Trouble

  /// Some other process holds the file open. A file that is deleted meanwhile, where the holder
  /// shares that, goes with its release.
  void holdOpen(const std::string& path, Sharing sharing);
  void release(const std::string& path);
  /// A program runs from the file as long as the answer lives: the file can be read and renamed,
  /// not replaced, written or deleted.
  [[nodiscard]] std::shared_ptr<void> run(const std::string& path);
  /// Everything that would change what stands at or below the path answers `code`.
  void denyWriting(const std::string& path, SystemCode code = system_code::kAccessDenied);
  /// Every use of what stands at or below the path answers `code`.
  void deny(const std::string& path, SystemCode code = system_code::kAccessDenied);
  /// Lifts what denyWriting and deny did to exactly this path.
  void allow(const std::string& path);
  /// Bytes that all files together may have; nothing = without limit.
  void setCapacity(std::optional<std::uint64_t> bytes) { capacity_ = bytes; }
  std::uint64_t usedBytes() const;
  /// The share vanishes: every use answers `code` (53 or 64) until it is connected again.
  void disconnect(SystemCode code = system_code::kBadNetPath) { disconnected_ = code; }
  void reconnect() { disconnected_ = system_code::kSuccess; }

  // --- For the machine

  /// Path from the root, "\" between the levels, without volume, empty for the root.
  static std::string pathOnDisk(const std::string& path);
  SimNode& root() { return *root_; }
  /// Tells disks apart.
  std::uint32_t serial() const { return serial_; }
  SimNode* find(const std::string& path) const;
  SystemCode disconnected() const { return disconnected_; }
  /// 0, or the code that a test set for this use of the path.
  SystemCode denied(const std::string& path, bool writing) const;
  /// Is there room when `added` bytes come and `freed` bytes go?
  bool hasRoom(std::uint64_t added, std::uint64_t freed) const;
  SimNode& addChild(SimNode& folder, const std::string& name, bool isFolder);

 private:
  struct Denial {
    std::string path;
    bool onlyWriting = false;
    SystemCode code = system_code::kSuccess;
  };

  SimNode& get(const std::string& path) const;
  SimNode& fileFor(const std::string& path);
  SimNode& folderFor(const std::string& path);

  std::unique_ptr<SimNode> root_;
  std::uint32_t serial_;
  std::uint64_t lastNumber_ = 0;
  std::optional<std::uint64_t> capacity_;
  SystemCode disconnected_ = system_code::kSuccess;
  std::vector<Denial> denials_;
};

}  // namespace trelv::sim
