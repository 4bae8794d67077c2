#pragma once

#include <cstdint>
#include <string>

namespace trelv::machine {

/// The platform's private-profile (ini) functions in their ANSI form. A bare file name means a file
/// of the (per-user) Windows folder; every call opens the file anew. Texts are UTF-8 here and the
/// system's ANSI code page in the file; a character outside the code page is written as "?".
class ProfileFiles {
 public:
  virtual ~ProfileFiles() = default;

  /// Value of a key. `defaultValue` when file, section or key is missing (without its trailing
  /// blanks and outer quotes, as the system gives it). `size` is the buffer's size in ANSI
  /// characters with the closing NUL: at most size - 1 characters are returned.
  virtual std::string readValue(const std::string& section, const std::string& key,
                                const std::string& defaultValue, std::uint32_t size,
                                const std::string& file) = 0;

  /// Writes a value, making the file when missing (not its folder). Non-zero = written.
  virtual std::uint32_t writeValue(const std::string& section, const std::string& key,
                                   const std::string& value, const std::string& file) = 0;
};

}  // namespace trelv::machine
