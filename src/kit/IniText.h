#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "machine/Locale.h"
#include "records/IniDocument.h"

namespace trelv::kit {

/// An ini file with the lines on which everything stands. Values are those that the program reads
/// (IniDocument); the lines are for whoever has to mend the file.
class IniText {
 public:
  struct Key {
    std::string name;
    /// With its quotes, as it stands.
    std::string written;
    /// From 1.
    std::size_t line;
  };
  struct Section {
    std::string name;
    /// Of its header; 0 for what stands before the first one.
    std::size_t line;
    /// Without comments, in the order of the file.
    std::vector<Key> keys;
  };

  /// `bytes` as they stand in the file, in whatever encoding.
  IniText(machine::Locale& locale, const std::string& bytes);

  /// All sections in the order of the file, those of a name that was there before too.
  const std::vector<Section>& sections() const { return sections_; }

  /// The value as the program reads it, UTF-8; empty where there is none.
  std::string value(std::string_view section, std::string_view key) const;
  /// The same with the quotes round it, not cut.
  std::string written(std::string_view section, std::string_view key) const;

  /// Where a section that the program finds begins; nothing where there is none.
  std::optional<std::size_t> line(std::string_view section) const;
  /// The key's line, else the section's.
  std::optional<std::size_t> line(std::string_view section, std::string_view key) const;
  /// The section that the program finds by this name; null where there is none.
  const Section* section(std::string_view name) const;

  /// The first line whose encoding makes the program read something else than what was meant;
  /// nothing where all is as it should be.
  std::optional<std::size_t> wrongEncoding() const { return wrongEncoding_; }

 private:
  void readLines(const std::string& bytes);

  machine::Locale& locale_;
  std::optional<IniDocument> document_;
  std::vector<Section> sections_;
  /// The first section of each name, in small ASCII letters.
  std::unordered_map<std::string, std::size_t> byName_;
  std::optional<std::size_t> wrongEncoding_;
};

}  // namespace trelv::kit
