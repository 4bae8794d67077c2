#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "machine/Machine.h"

namespace trelv {

/// Where an ini value stands.
struct IniAddress {
  /// Full path, or a bare name for the Windows folder.
  std::string file;
  std::string section;
  std::string key;
};

/// Reads the values of ini files with few openings: each file is opened and read once and kept
/// until forget() is called, because a start reads tens of thousands of values over a network
/// share. A file that is missing is remembered as such just as long. Everything that our reader
/// cannot prove to answer as the platform does goes to the platform's functions call by call: bare
/// and relative file names, files that cannot be read at this moment, odd or huge files, names
/// beyond ASCII, values near the cut. Writing always goes to the platform's functions and is not
/// kept.
class ConfigurationFiles {
 public:
  explicit ConfigurationFiles(machine::Machine& machine);
  ~ConfigurationFiles();
  ConfigurationFiles(const ConfigurationFiles&) = delete;
  ConfigurationFiles& operator=(const ConfigurationFiles&) = delete;

  /// A value with empty default, at most `size` - 1 ANSI characters; UTF-8.
  std::string read(const IniAddress& address, std::uint32_t size);

  /// True when the key stands in the file, be its value empty. False also where only the platform
  /// could tell. Reads the file like read().
  bool holds(const IniAddress& address);

  /// Drops what was read: to be called after a command ran or a pack was opened, since either may
  /// have written any of the files.
  void forget();
  /// Drops what was read of one file: to be called after a value was written to it.
  void forget(const std::string& file);
  /// The same, unless the file was read and the key had exactly this value: a write that changes
  /// nothing is no reason to read the file anew over the share.
  void written(const IniAddress& address, const std::string& value);

 private:
  struct Kept;
  machine::Machine& machine_;
  std::unique_ptr<Kept> kept_;
};

}  // namespace trelv
