#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What one look at a path tells.
struct FileFacts {
  bool folder = false;
  bool readOnly = false;
  bool hidden = false;
  bool system = false;
  /// A link or junction: never followed when deleting.
  bool reparsePoint = false;
  /// Length in bytes; 0 for a folder.
  std::uint64_t size = 0;
  /// Last change, in units of 100 ns since 1601-01-01 UTC.
  std::uint64_t modified = 0;
};

/// Tells files and folders apart, whatever they are called.
struct FileIdentity {
  std::uint32_t volume = 0;
  std::uint64_t number = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// One entry of a folder, without "." and "..".
struct FolderEntry {
  std::string name;
  FileFacts facts;
};

/// Files and folders as the system's calls see them. Paths are UTF-8, full, of any length, with "\"
/// between the levels, compared without regard to case, without trailing backslash unless it is a
/// root; a literal form ("\\?\C:\a", "\\?\UNC\server\share\a") names the same. Each method is one
/// operation of the system and answers its code (0 = done). Nothing here raises, and no handle
/// outlives a call. A missing file answers 2, a missing folder on the way 3.
class Files {
 public:
  virtual ~Files() = default;

  /// Looks at a path without opening it. An empty path answers 3.
  virtual SystemCode look(const std::string& path, FileFacts& facts) = 0;

  /// Which file or folder a path leads to, links followed: the same for all its names (short ones,
  /// a drive and its share, a link, a literal path). Missing answers 2 or 3.
  virtual SystemCode identify(const std::string& path, FileIdentity& identity) = 0;

  /// Reads a whole file as bytes in one opening. `content` is replaced on success only. A folder
  /// answers 5, a file held by another without read sharing 32. A file longer than `limit` bytes
  /// is read up to the limit.
  virtual SystemCode read(const std::string& path, std::size_t limit, std::string& content) = 0;

  /// Reads a part of a file in one opening: `size` bytes from `offset` on, fewer where the file
  /// ends before, none behind its end. Answers as reading a whole file does.
  virtual SystemCode readPart(const std::string& path, std::uint64_t offset, std::size_t size,
                              std::string& content) = 0;

  /// Makes a new file or empties an existing one and writes the bytes: open, write, close.
  virtual SystemCode write(const std::string& path, std::string_view bytes) = 0;

  /// Appends the bytes, making the file when missing: one open, one write, one close. A missing
  /// folder answers 3.
  virtual SystemCode append(const std::string& path, std::string_view bytes) = 0;

  /// Removes one file. Missing answers 2, a read-only one or a folder 5, an open one 32. A file
  /// that others have open in a way that allows this goes when the last of them closes it; until
  /// then every use of it answers 5, and its folder is not empty.
  virtual SystemCode removeFile(const std::string& path) = 0;

  /// Clears or sets the read-only attribute of a file.
  virtual SystemCode setReadOnly(const std::string& path, bool readOnly) = 0;

  /// Makes one folder; its parent must exist (else 3); existing answers 183.
  virtual SystemCode makeFolder(const std::string& path) = 0;

  /// Removes one empty folder (not empty: 145) or the link that stands in its place.
  virtual SystemCode removeFolder(const std::string& path) = 0;

  /// Lists a folder, unsorted, as the file system hands its entries out: those whose names end with
  /// `ending` (plain text, in any case; empty: all). A server then sends no others; entries whose
  /// short names end so may come too. Missing answers 3, a file 267; `entries` is replaced on
  /// success only.
  virtual SystemCode list(const std::string& folder, const std::string& ending,
                          std::vector<FolderEntry>& entries) = 0;

  /// Copies one file with its last-modified time and its attributes onto `target` (full path of a
  /// file), overwriting. A target that is read-only, or hidden or system where the source is not,
  /// and a folder on either side answer 5, a target that is open without write sharing, runs, or is
  /// the source itself 32. The copy of an encrypted file, which only its user can read, is
  /// encrypted where its folder is, and nowhere else.
  virtual SystemCode copyFile(const std::string& source, const std::string& target) = 0;

  /// Puts `source` in the place of `target` on the same volume in one step, replacing it. A target
  /// that is a folder, open or runs answers 5. A program that runs can be the source: that is how
  /// it is put aside.
  virtual SystemCode replaceFile(const std::string& source, const std::string& target) = 0;

  /// Renames a file on the same volume. Never replaces: where something stands at `target` it
  /// answers 183. A program that runs can be renamed so, one that is open without delete sharing
  /// answers 32.
  virtual SystemCode moveFile(const std::string& source, const std::string& target) = 0;

  /// Gives `target` the rights list of `source`: who may do what with it. A rename takes a file's
  /// list along, a file that is made anew has that of its folder. Equal lists, and a file system
  /// that keeps none, are done without a call. Missing answers 2 or 3.
  virtual SystemCode copyRights(const std::string& source, const std::string& target) = 0;

  /// 0 where this user may make files in the folder, 5 where not; nothing is made. Missing answers
  /// 2 or 3.
  virtual SystemCode mayAddFile(const std::string& folder) = 0;

  /// Removes an alternate stream of a file by its name ("Zone.Identifier", the mark of a download);
  /// copies and renames take streams along. One that is not there answers 2, a file system without
  /// streams 123 or another code.
  virtual SystemCode removeStream(const std::string& path, const std::string& stream) = 0;
};

}  // namespace trelv::machine
