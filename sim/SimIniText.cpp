#include "sim/SimIniText.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "sim/SimText.h"

namespace trelv::sim {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";

enum class Encoding { Ansi, Utf8, Utf16Little, Utf16Big };

struct Line {
  /// Key, or the whole line where `hasValue` is false.
  std::string key;
  std::string value;
  bool hasValue = false;
};

struct Section {
  std::string name;
  std::vector<Line> lines;
};

/// An ini file as the system's functions see it. The first section is what stands above all names.
struct Layout {
  Encoding encoding = Encoding::Ansi;
  std::vector<Section> sections{Section{}};
};

bool isBlank(char c) {
  return std::string_view(" \t\r\n\v\f\x1A").find(c) != std::string_view::npos;
}

std::string stripped(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isBlank(text.back())) {
    text.remove_suffix(1);
  }
  return std::string(text);
}

std::string withoutLeadingBlanks(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
  return std::string(first, text.end());
}

// Lines are kept as texts that end at a NUL.
std::string untilNul(const std::string& text) { return text.substr(0, text.find('\0')); }

// Names are compared by their ASCII letters only.
bool sameName(const std::string& left, const std::string& right) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

// A value as it arrives in a buffer of `size` characters. Of a quoted one that just fits, the
// system cuts the last character instead of the closing quote, which the buffer already cut.
std::string inBuffer(const std::string& value, std::uint32_t size) {
  if (size == 0) {
    return "";
  }
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  if (!quoted) {
    return value.substr(0, size - 1);
  }
  const std::string rest = value.substr(1);
  std::string copied = rest.substr(0, size - 1);
  if (size >= rest.size() && !copied.empty()) {
    copied.pop_back();
  }
  return copied;
}

std::string throughAnsi(const std::string& text) { return textOfAnsi(ansiOf(text)); }

std::string decoded(const std::string& bytes, Encoding& encoding) {
  const std::string_view view(bytes);
  if (view.substr(0, kUtf8Mark.size()) == kUtf8Mark) {
    encoding = Encoding::Utf8;
    return bytes.substr(kUtf8Mark.size());
  }
  if (view.substr(0, kUtf16LittleMark.size()) == kUtf16LittleMark) {
    encoding = Encoding::Utf16Little;
    return textOfWide(bytes.substr(kUtf16LittleMark.size()), false);
  }
  if (view.substr(0, kUtf16BigMark.size()) == kUtf16BigMark) {
    encoding = Encoding::Utf16Big;
    return textOfWide(bytes.substr(kUtf16BigMark.size()), true);
  }
  encoding = Encoding::Ansi;
  return textOfAnsi(bytes);
}

std::string encoded(const std::string& text, Encoding encoding) {
  switch (encoding) {
    case Encoding::Utf8:
      return std::string(kUtf8Mark) + text;
    case Encoding::Utf16Little:
      return std::string(kUtf16LittleMark) + wideOf(text, false);
    case Encoding::Utf16Big:
      return std::string(kUtf16BigMark) + wideOf(text, true);
    case Encoding::Ansi:
      break;
  }
  return ansiOf(text);
}

void addLine(Layout& layout, const std::string& line) {
  if (line.empty()) {
    return;
  }
  const std::string_view view(line);
  const std::size_t end = line.rfind(']');
  if (line.front() == '[' && end != std::string::npos) {
    layout.sections.push_back({untilNul(stripped(view.substr(1, end - 1))), {}});
    return;
  }
  // A comment is a key like any other, one that nobody asks for.
  const std::size_t equals = line.find('=');
  const std::string key = stripped(view.substr(0, equals));
  Line entry;
  entry.hasValue = equals != std::string::npos;
  entry.key = untilNul(key);
  entry.value = entry.hasValue ? untilNul(stripped(view.substr(equals + 1))) : "";
  // Of nameless keys that follow each other only the first is kept.
  std::vector<Line>& lines = layout.sections.back().lines;
  if (!key.empty() || lines.empty() || !lines.back().key.empty()) {
    lines.push_back(entry);
  }
}

Layout parsed(const std::string& bytes) {
  Layout layout;
  const std::string text = decoded(bytes, layout.encoding);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    addLine(layout, stripped(std::string_view(text).substr(at, end - at)));
    at = end + 1;
  }
  return layout;
}

/// The same, kept until other bytes are asked for: many values of one file are read one after the
/// other.
const Layout& layoutOf(const std::string& bytes) {
  struct Kept {
    std::string bytes;
    Layout layout = parsed("");
  };
  static thread_local Kept kept;
  if (bytes != kept.bytes) {
    kept = {bytes, parsed(bytes)};
  }
  return kept.layout;
}

std::string written(const Layout& layout) {
  std::string text;
  for (const Section& section : layout.sections) {
    text += section.name.empty() ? "" : "[" + section.name + "]\r\n";
    for (const Line& line : section.lines) {
      text += line.key + (line.hasValue ? "=" + line.value : "") + "\r\n";
    }
  }
  return encoded(text, layout.encoding);
}

// Only the first section of a name exists.
template <class AnyLayout>
auto findSection(AnyLayout& layout, const std::string& name) -> decltype(&layout.sections.front()) {
  if (name.empty()) {
    return &layout.sections.front();
  }
  const auto found =
      std::find_if(layout.sections.begin() + 1, layout.sections.end(),
                   [&](const Section& section) -> bool { return sameName(section.name, name); });
  return found == layout.sections.end() ? nullptr : &*found;
}

template <class AnySection>
auto findKey(AnySection& section, const std::string& key) -> decltype(&section.lines.front()) {
  const auto found =
      std::find_if(section.lines.begin(), section.lines.end(),
                   [&](const Line& line) -> bool { return sameName(line.key, key); });
  return found == section.lines.end() ? nullptr : &*found;
}

std::optional<std::string> valueIn(const Layout& layout, const std::string& section,
                                   const std::string& key) {
  const Section* found = findSection(layout, section);
  const Line* line = found == nullptr ? nullptr : findKey(*found, key);
  if (line == nullptr || !line->hasValue) {
    return std::nullopt;
  }
  return line->value;
}

// False when the value stands there already. New names keep the blanks behind them.
bool change(Layout& layout, const std::string& sectionName, const std::string& key,
            const std::string& value) {
  Section* section = findSection(layout, stripped(sectionName));
  if (section == nullptr) {
    layout.sections.push_back({withoutLeadingBlanks(sectionName), {}});
    section = &layout.sections.back();
  }
  Line* line = findKey(*section, stripped(key));
  if (line == nullptr) {
    section->lines.push_back({withoutLeadingBlanks(key), value, true});
    return true;
  }
  if (line->hasValue && line->value == value) {
    return false;
  }
  line->value = value;
  line->hasValue = true;
  return true;
}

// Trailing blanks go, but never the first character.
std::string defaultText(const std::string& text) {
  std::string trimmed = text;
  while (trimmed.size() > 1 && trimmed.back() == ' ') {
    trimmed.pop_back();
  }
  return trimmed;
}

std::string answer(const std::optional<std::string>& value, const std::string& defaultValue,
                   std::uint32_t size) {
  return textOfAnsi(inBuffer(ansiOf(value ? *value : defaultText(defaultValue)), size));
}

}  // namespace

std::string iniValue(const std::string* bytes, const std::string& section, const std::string& key,
                     const std::string& defaultValue, std::uint32_t size) {
  std::optional<std::string> value;
  if (bytes != nullptr) {
    value = valueIn(layoutOf(*bytes), throughAnsi(stripped(section)), throughAnsi(stripped(key)));
  }
  return answer(value, defaultValue, size);
}

std::optional<std::string> withIniValue(const std::string& bytes, const std::string& section,
                                        const std::string& key, const std::string& value) {
  Layout layout = parsed(bytes);
  const bool changed = change(layout, throughAnsi(section), throughAnsi(key),
                              throughAnsi(withoutLeadingBlanks(value)));
  return changed ? std::optional(written(layout)) : std::nullopt;
}

}  // namespace trelv::sim
