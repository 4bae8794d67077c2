#pragma once

#include <cstdint>
#include <string>

namespace trelv::machine {

/// What became of a call of the support library.
enum class SupportAnswer {
  /// No such library stands in its place: the caller uses its own means.
  Absent,
  /// The library is there but cannot be loaded, lacks the entry or failed.
  Failed,
  No,
  Yes
};

/// The host suite's configuration store, `mviconf.dll` or ours in its place. Texts are UTF-8 here,
/// ANSI in the library. Results are the library's codes (0 = no error, negative = failures).
/// Raises RuntimeError when the library cannot be called at all.
class ConfigurationLibrary {
 public:
  virtual ~ConfigurationLibrary() = default;

  /// Reads one setting. `buffer` has `size` ANSI characters, all NUL, on entry; on return it holds
  /// the whole buffer (the value up to its first NUL; the default value for the codes of the
  /// not-found family). At most `size` characters are written.
  virtual std::int32_t getParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    const std::string& defaultValue, std::int32_t size,
                                    std::string& buffer) = 0;

  /// Writes one setting; `type` is the attribute's type.
  virtual std::int32_t setParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    std::int32_t type, const std::string& value) = 0;

  /// Path of the configuration store (a folder, without trailing backslash); `kind` is always 1.
  /// `buffer` as in getParameter (1,000 characters).
  virtual std::int32_t getConfigPath(std::int32_t kind, std::string& buffer) = 0;
};

/// The host suite's support library `tovrautil.dll`, where it is installed.
class SupportLibrary {
 public:
  virtual ~SupportLibrary() = default;

  /// Has the current user administrator rights?
  virtual SupportAnswer isAdministrator() = 0;

  /// The suite's temporary folder: the entry is called with an empty first argument and a buffer of
  /// `buffer.size()` ANSI characters, which holds what the library wrote on return. Yes when it was
  /// called.
  virtual SupportAnswer temporaryPath(std::string& buffer) = 0;
};

}  // namespace trelv::machine
