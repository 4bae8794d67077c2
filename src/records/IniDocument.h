#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace trelv {

/// The text of an ini file, read once and asked often. Gives what the platform's private-profile
/// functions give for the same bytes, value for value. Works on bytes of the ANSI code page: names
/// and values are not converted; ASCII and Latin-1 letters compare without regard to case.
class IniDocument {
 public:
  /// True when the bytes are plain ANSI text that this reader understands; false for files with a
  /// byte-order mark, NUL bytes and whatever else must be left to the platform's functions.
  static bool understands(std::string_view bytes);

  explicit IniDocument(std::string bytes);
  ~IniDocument();
  IniDocument(IniDocument&&) noexcept;
  IniDocument& operator=(IniDocument&&) noexcept;
  IniDocument(const IniDocument&) = delete;
  IniDocument& operator=(const IniDocument&) = delete;

  /// Value of a key: without outer blanks and without one pair of equal outer quotes, not cut.
  /// Nothing when section or key is missing; empty when the key has no value. Of equal sections
  /// only the first exists, of equal keys the first wins.
  std::optional<std::string_view> value(std::string_view section, std::string_view key) const;

 private:
  struct Content;
  std::unique_ptr<Content> content_;
};

}  // namespace trelv
