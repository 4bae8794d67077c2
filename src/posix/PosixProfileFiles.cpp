#include "posix/PosixProfileFiles.h"

#include <algorithm>
#include <string_view>

#include "posix/PosixLocale.h"

namespace trelv::posix {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kBlanks = " \t\n\v\f\r\x1A";
constexpr std::size_t kLargest = std::size_t{64} << 20U;

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Names are compared by their ASCII letters only.
bool sameName(std::string_view left, std::string_view right) {
  const auto lower = [](char letter) -> char {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [&](char a, char b) -> bool { return lower(a) == lower(b); });
}

/// Takes the next line off the text.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = withoutBlanks(text.substr(0, end));
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

/// The name of a section where the line begins one; of equal names the first section counts.
bool beginsSection(std::string_view line, std::string_view& name) {
  const std::size_t end = line.rfind(']');
  if (line.empty() || line.front() != '[' || end == std::string_view::npos) {
    return false;
  }
  name = withoutBlanks(line.substr(1, end - 1));
  return true;
}

/// The lines of a section, up to the next one; empty where there is none of this name.
std::string_view linesOf(std::string_view text, std::string_view section) {
  std::string_view name;
  bool inside = section.empty();
  while (!inside && !text.empty()) {
    const std::string_view line = takeLine(text);
    inside = beginsSection(line, name) && sameName(name, section);
  }
  std::string_view rest = text;
  std::size_t length = 0;
  while (!rest.empty() && !beginsSection(takeLine(rest), name)) {
    length = text.size() - rest.size();
  }
  return text.substr(0, length);
}

std::string_view withoutQuotes(std::string_view text) {
  const bool quoted = text.size() >= 2 && text.front() == text.back() &&
                      (text.front() == '"' || text.front() == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// The value of the first line of this key; false where it has none.
bool valueOf(std::string_view lines, std::string_view key, std::string_view& value) {
  while (!lines.empty()) {
    const std::string_view line = takeLine(lines);
    const std::size_t sign = line.find('=');
    if (sameName(withoutBlanks(line.substr(0, sign)), key)) {
      value = sign == std::string_view::npos ? "" : withoutBlanks(line.substr(sign + 1));
      return sign != std::string_view::npos;
    }
  }
  return false;
}

}  // namespace

/// The file as UTF-8; each line ends at a NUL, so that everything behind one is gone. Only UTF-16
/// with its mark is told from the code page; the mark of UTF-8 stays as three characters.
std::string PosixProfileFiles::textOf(const std::string& file) {
  std::string bytes;
  if (files_.read(file, kLargest, bytes) != system_code::kSuccess) {
    return {};
  }
  return bytes.starts_with(kUtf16Mark) ? textOfWide(bytes.substr(kUtf16Mark.size()))
                                       : locale_.fromAnsi(bytes);
}

std::string PosixProfileFiles::readValue(const std::string& section, const std::string& key,
                                         const std::string& defaultValue, std::uint32_t size,
                                         const std::string& file) {
  const std::string text = textOf(file);
  std::string_view value;
  const bool found = valueOf(linesOf(text, withoutBlanks(section)), withoutBlanks(key), value);
  const std::string_view whole =
      found ? value.substr(0, value.find('\0')) : withoutBlanks(defaultValue);
  const std::string bytes = locale_.toAnsi(std::string(withoutQuotes(whole)));
  return size == 0 ? "" : locale_.fromAnsi(bytes.substr(0, size - 1));
}

std::uint32_t PosixProfileFiles::writeValue(const std::string& /*section*/,
                                            const std::string& /*key*/,
                                            const std::string& /*value*/,
                                            const std::string& /*file*/) {
  return 0;
}

}  // namespace trelv::posix
