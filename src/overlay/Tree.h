#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/Clock.h"
#include "machine/Files.h"
#include "machine/Locale.h"
#include "overlay/FolderPath.h"
#include "overlay/PrivateFolder.h"

namespace trelv::overlay {

/// How the file systems below hand out the entries of a folder.
enum class ListingOrder { ByName, ByMaking };

struct Folder;

/// What stands on top at one name of a folder, in the place of what stands below.
struct Entry {
  enum class Kind { Gone, File, Folder };

  Kind kind = Kind::Gone;
  std::string name = {};
  machine::FileFacts facts = {};
  /// Full path, on the machine below, of the file whose bytes it has; empty: they are `bytes`.
  std::string source = {};
  std::string bytes = {};
  /// Of a folder.
  std::shared_ptr<Folder> folder = nullptr;
  /// Written over a file below, and so in its place in a listing.
  bool inPlace = false;
  /// Open for this process alone.
  bool held = false;
  /// What changing it answers: it has the rights list of a file that this user may not change.
  SystemCode refusal = system_code::kSuccess;
  /// Tells entries apart; later ones have higher numbers.
  std::uint64_t number = 0;
};

/// A folder by whatever name: what was changed in it, over what stands below.
struct Folder {
  /// A full path on the machine below; empty where the folder is on top only.
  std::string below;
  /// Tells volumes apart; nothing where that is not known.
  std::optional<std::uint32_t> volume;
  /// May this user make files in it? Asked once.
  std::optional<SystemCode> mayAdd;
  /// By upper-case name.
  std::map<std::string, Entry> entries;
};

/// Where a path leads.
struct Place {
  /// 0: something stands there. 2: only the last level is missing. Else why it cannot be reached.
  SystemCode code = system_code::kPathNotFound;
  /// The folder of the last level; null for a root and where the way there is missing.
  std::shared_ptr<Folder> folder;
  std::string name;
  /// What stands on top there; null: what stands below counts.
  Entry* entry = nullptr;
  machine::FileFacts facts;
  /// Full path on the machine below; empty where no folder below is on the way.
  std::string below;

  bool isThere() const { return code == system_code::kSuccess; }
};

/// Files and folders, copied on write: what was changed stays on top, by whatever name the folder
/// is reached (drive and share, short names, links, another case), and nothing below is ever
/// changed or opened for writing.
///
/// Whether a change below would be refused is told from what can be known without making it: the
/// attributes, the right to make files in the folder (which stands for all rights in it), and
/// whether the file can be opened for reading. Not known: rights of single files that differ from
/// those of their folder, a file that others read without letting it be written, a full disk.
class Tree {
 public:
  Tree(machine::Files& below, machine::Clock& clock, machine::Locale& locale,
       PrivateFolder& privateFolder, ListingOrder order);

  // --- Looking

  Place find(const std::string& path);
  /// The folder that a path leads to, links followed; null, with the reason, when there is none. A
  /// file in its place answers 267.
  std::shared_ptr<Folder> findFolder(const std::string& path, SystemCode& code);
  SystemCode list(const std::string& folder, const std::string& ending,
                  std::vector<machine::FolderEntry>& entries);
  SystemCode identify(const std::string& path, machine::FileIdentity& identity);
  /// A part of a file's bytes.
  SystemCode read(const std::string& path, std::uint64_t offset, std::size_t size,
                  std::string& content);
  /// Full path on the machine below of a file with the bytes of that one. Bytes that are on top
  /// only are written to the private folder. Of what is missing a path where nothing stands.
  std::string realPath(const std::string& path);

  // --- Changing

  /// Why what stands at the place cannot be written, or nothing be made there; 0 where it can.
  SystemCode refusalToWrite(const Place& place);
  /// Why what stands there cannot be deleted or renamed.
  SystemCode refusalToRemove(const Place& place);
  /// Why its attributes cannot be changed: its rights alone.
  SystemCode refusalToChange(const Place& place);
  /// May this user make files in the folder?
  SystemCode mayAdd(Folder& folder);

  /// Puts a file there, whatever stood there; the entry's bytes or source are the caller's to fill.
  Entry& putFile(const Place& place, const machine::FileFacts& facts);
  Entry& putFolder(const Place& place, const machine::FileFacts& facts,
                   std::shared_ptr<Folder> folder);
  void remove(const Place& place);
  /// The file of the first place stands at the second one from now on.
  void rename(const Place& source, const Place& target);
  /// The entry of a file or folder that is there, made to be changed.
  Entry& entryOf(const Place& place);
  /// The bytes of an entry, as they can be changed.
  std::string& bytesOf(Entry& entry);
  /// Puts all that a real folder holds over the folder at a path, which is made when missing. What
  /// stands there under the same names is replaced.
  void mount(const std::string& realFolder, const std::string& path);
  /// Facts of a file of so many bytes that is written now.
  machine::FileFacts writtenNow(std::size_t size);

 private:
  std::shared_ptr<Folder> rootFolder(const std::string& root, SystemCode& code);
  std::shared_ptr<Folder> folderBelow(const std::string& path, SystemCode& code);
  std::shared_ptr<Folder> descend(const FolderPath& path, std::size_t levels, SystemCode& code);
  std::shared_ptr<Folder> child(Folder& folder, const std::string& name, SystemCode& code);
  Entry* entryIn(Folder& folder, const std::string& name);
  Entry& newEntry(Folder& folder, const std::string& name);
  void mountInto(const std::string& realFolder, const std::string& path);
  void listByMaking(Folder& folder, std::vector<machine::FolderEntry>& entries);
  SystemCode heldBelow(const Place& place);

  machine::Files& below_;
  machine::Clock& clock_;
  machine::Locale& locale_;
  PrivateFolder& privateFolder_;
  ListingOrder order_;
  /// By upper-case path below, and by what the system tells folders apart with.
  std::map<std::string, std::shared_ptr<Folder>> byPath_;
  std::map<std::pair<std::uint32_t, std::uint64_t>, std::shared_ptr<Folder>> byIdentity_;
  std::uint64_t made_ = 0;
};

}  // namespace trelv::overlay
