#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/SystemCode.h"

namespace trelv::decoder {

/// What stands under a name.
enum class Standing {
  kNothing,
  kFile,
  kFolder,
  /// A symbolic link, a junction or anything else that leads elsewhere; also a device.
  kLink,
};

/// A new file that is being written. Closed when destroyed.
class OutputFile {
 public:
  virtual ~OutputFile() = default;

  virtual SystemCode write(std::string_view bytes) = 0;
  /// Sets the time of the last change (100 ns since 1601-01-01 UTC; 0 leaves it as it is) and
  /// closes the file: what the system kept back comes to light here.
  virtual SystemCode finish(std::uint64_t modified) = 0;
};

/// The output folder. Names are relative to it, in UTF-8, parted by "/"; the empty name is the
/// folder itself. No call follows a link below it in the last part of a name.
class OutputTree {
 public:
  virtual ~OutputTree() = default;

  /// Full path of a name, for the user.
  virtual std::string path(const std::string& name) const = 0;
  /// How many UTF-16 units a name may have.
  virtual std::size_t longestName() const = 0;

  /// What stands there; a system code other than success when that cannot be told.
  virtual SystemCode look(const std::string& name, Standing& standing) = 0;
  /// Tells of each entry of a folder, in any order, until `visitor` answers false. Entries may go
  /// away meanwhile.
  using Visitor = std::function<bool(const std::string& name, Standing standing)>;
  virtual SystemCode visit(const std::string& folder, const Visitor& visitor) = 0;

  /// Makes one folder; kAlreadyExists when anything stands there, kPathNotFound or kDirectoryName
  /// when the folder that it belongs in is missing or is a file.
  virtual SystemCode makeFolder(const std::string& name) = 0;
  /// Makes a file where nothing stands; kPathNotFound or kDirectoryName as above.
  virtual SystemCode createFile(const std::string& name, std::unique_ptr<OutputFile>& file) = 0;
  /// Moves a file to another name in one step, in place of a file (also a read-only one) there.
  virtual SystemCode replaceFile(const std::string& from, const std::string& to) = 0;
  /// Moves a folder with all that is in it to a name where nothing stands.
  virtual SystemCode moveFolder(const std::string& from, const std::string& to) = 0;
  virtual SystemCode removeFile(const std::string& name) = 0;
  /// Removes an empty folder.
  virtual SystemCode removeFolder(const std::string& name) = 0;
};

}  // namespace trelv::decoder
