#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace trelv {

/// The text of an ini file, read once and asked often. Gives what the platform's private-profile
/// functions give for the same bytes, value for value. Works on bytes of the ANSI code page: names
/// and values are not converted.
class IniDocument {
 public:
  /// True when the bytes are plain ANSI text that this reader understands: printable characters,
  /// tabs and lines that end with CR LF or LF. False for files with a byte-order mark, NUL bytes,
  /// other control characters or a CR on its own, which must be left to the platform's functions.
  static bool understands(std::string_view bytes);

  /// True when this reader can look for the names. The platform compares ASCII letters without
  /// regard to case everywhere, accented ones on some systems only: names with other than ASCII
  /// characters must be left to it.
  static bool canFind(std::string_view section, std::string_view key);

  /// `bytes` is a text that understands() accepts.
  explicit IniDocument(std::string bytes);
  ~IniDocument();
  IniDocument(IniDocument&&) noexcept;
  IniDocument& operator=(IniDocument&&) noexcept;
  IniDocument(const IniDocument&) = delete;
  IniDocument& operator=(const IniDocument&) = delete;

  /// Value of a key: without outer blanks and without one pair of equal outer quotes, not cut.
  /// Nothing when section or key is missing, or where the key's first line has no "="; empty when
  /// the key has no value. Of equal sections only the first exists, of equal keys the first wins.
  /// The lines before the first section are section "". The view lives as long as the document.
  std::optional<std::string_view> value(std::string_view section, std::string_view key) const;

 private:
  struct Content;
  std::unique_ptr<Content> content_;
};

}  // namespace trelv
