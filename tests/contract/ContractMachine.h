#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "machine/Machine.h"

/// One suite over the interfaces of machine/, played on the simulated machine and on Windows.
namespace trelv::contract {

/// What one side cannot play. Everything not named here both sides play.
enum class Ability {
  /// A read-only file refuses writing (not so for a Unix superuser's files).
  ReadOnlyRefusesWriting,
  /// Links to folders can be made.
  FolderLinks,
  /// The folder's file system and the process allow a file to be held against others.
  HoldFiles,
};

/// Which accesses of others a held file lets pass.
struct Sharing {
  bool read = false;
  bool write = false;
  bool remove = false;
};

/// A file that is held open as another program would; let go when destroyed.
class HeldFile {
 public:
  virtual ~HeldFile() = default;
};

/// One side of the suite: a machine and the means to arrange and inspect its world without the
/// interfaces under test. Made anew for each test. A means that fails throws std::runtime_error.
/// Paths are UTF-8, full, with backslashes, without trailing one.
class ContractMachine {
 public:
  virtual ~ContractMachine() = default;

  virtual machine::Machine& machine() = 0;
  virtual bool can(Ability ability) const = 0;

  /// An empty folder of this test alone; the same one for the whole test, removed with its
  /// contents at the end. No blanks in its path.
  virtual std::string folder() = 0;

  /// Makes or replaces a file with these bytes (its folder exists).
  virtual void putFile(const std::string& path, std::string_view bytes) = 0;
  /// The bytes of a file.
  virtual std::string fileBytes(const std::string& path) = 0;
  virtual bool exists(const std::string& path) = 0;
  /// Makes one folder; its parent exists.
  virtual void putFolder(const std::string& path) = 0;
  /// Puts a link to an existing folder at `link` (Ability::FolderLinks).
  virtual void putFolderLink(const std::string& link, const std::string& target) = 0;
  /// Last-modified time in whole seconds from any fixed start; to compare only. And setting it to
  /// some day in the past.
  virtual std::int64_t modifiedSeconds(const std::string& path) = 0;
  virtual void makeOld(const std::string& path) = 0;
  /// Opens a file for reading as another program would, sharing only what is said
  /// (Ability::HoldFiles).
  virtual std::unique_ptr<HeldFile> hold(const std::string& path, Sharing sharing) = 0;

  /// Path of a key of this test alone below HKEY_CURRENT_USER, existing and empty; without leading
  /// or trailing backslash. Removed with its sub-keys at the end.
  virtual std::string registryKey() = 0;
  /// Stores a value as it would be on disk: `data` are the raw bytes, UTF-16LE for texts, `name`
  /// UTF-8. `path` below HKEY_CURRENT_USER, made when missing.
  virtual void storeValue(const std::string& path, const std::string& name, std::uint32_t type,
                          std::string_view data) = 0;

  /// Puts a program at `path` (any name). Its first argument is its exit code ("7"; none is 0).
  /// Where there is a second one, it writes its whole command line to that path; with a third, a
  /// line feed and the value of the environment variable of that name follow.
  virtual void putProgram(const std::string& path) = 0;

  /// Puts a program file with this fixed file version at `path`; and one without version resource.
  virtual void putVersionedFile(const std::string& path, const machine::FileVersion& version) = 0;
  virtual void putUnversionedFile(const std::string& path) = 0;
};

/// Made by the side that the suite is linked with.
std::unique_ptr<ContractMachine> makeContractMachine();

}  // namespace trelv::contract
