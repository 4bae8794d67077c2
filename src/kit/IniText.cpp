#include "kit/IniText.h"

#include <algorithm>

#include "base/Text.h"
#include "kit/FileText.h"

namespace trelv::kit {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\v\f\r\x1A";
/// Longer values are cut when they are read.
constexpr std::size_t kLongestValue = 510;

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Plain text of the code page: what only the platform's functions understand stands for itself as
/// far as a line can show it. A mark of UTF-8 is three characters to them, so that its line begins
/// no section.
std::string plainText(machine::Locale& locale, const std::string& bytes) {
  std::string text = isWide(bytes) ? locale.toAnsi(utf8OfWide(bytes)) : bytes;
  if (text.starts_with(kUtf8Mark)) {
    text.replace(0, kUtf8Mark.size(), "???");
  }
  for (std::size_t at = 0; at < text.size(); ++at) {
    char& character = text[at];
    if (character == '\r') {
      character = at + 1 < text.size() && text[at + 1] == '\n' ? '\r' : '\n';
    } else if (static_cast<unsigned char>(character) < 0x20 && character != '\n' &&
               character != '\t') {
      character = '?';
    }
  }
  return text;
}

bool changesWhatIsRead(std::string_view line, bool firstLine) {
  const bool comment = withoutBlanks(line).starts_with(";");
  return (firstLine && line.starts_with(kUtf8Mark)) || line.find('\0') != std::string_view::npos ||
         (!comment && holdsUtf8(line));
}

/// Names are compared by their ASCII letters only, as the program's reader does.
bool sameName(std::string_view left, std::string_view right) {
  const auto lower = [](char letter) -> char {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [&](char a, char b) -> bool { return lower(a) == lower(b); });
}

std::string smallName(std::string_view name) {
  std::string small(name);
  for (char& letter : small) {
    letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
  }
  return small;
}

/// Calls `take(line, number)` for each line.
template <class Take>
void forEachLine(std::string_view text, Take&& take) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    take(text.substr(0, end), number);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace

IniText::IniText(machine::Locale& locale, const std::string& bytes) : locale_(locale) {
  // What is meant for characters of four bytes is full of NULs as one of two.
  const std::string wide = isWide(bytes) ? utf8OfWide(bytes) : std::string();
  forEachLine(isWide(bytes) ? wide : bytes, [&](std::string_view line, std::size_t number) {
    const bool nul = line.find('\0') != std::string_view::npos;
    const bool changes = isWide(bytes) ? nul : changesWhatIsRead(line, number == 1);
    if (!wrongEncoding_ && changes) {
      wrongEncoding_ = number;
    }
  });
  std::string text = plainText(locale, bytes);
  readLines(text);
  document_.emplace(std::move(text));
}

void IniText::readLines(const std::string& bytes) {
  sections_.push_back({"", 0, {}});
  forEachLine(bytes, [&](std::string_view whole, std::size_t number) {
    const std::string_view line = withoutBlanks(whole);
    const std::size_t bracket = line.starts_with("[") ? line.rfind(']') : std::string_view::npos;
    const std::size_t sign = line.find('=');
    if (bracket != std::string_view::npos) {
      const std::string name(withoutBlanks(line.substr(1, bracket - 1)));
      byName_.emplace(smallName(locale_.fromAnsi(name)), sections_.size());
      sections_.push_back({locale_.fromAnsi(name), number, {}});
    } else if (!line.empty() && !line.starts_with(";") && sign != std::string_view::npos) {
      sections_.back().keys.push_back({std::string(withoutBlanks(line.substr(0, sign))),
                                       std::string(withoutBlanks(line.substr(sign + 1))), number});
    }
  });
}

std::string IniText::value(std::string_view section, std::string_view key) const {
  if (!IniDocument::canFind(section, key)) {
    return {};
  }
  const std::optional<std::string_view> found = document_->value(section, key);
  return found ? locale_.fromAnsi(std::string(found->substr(0, kLongestValue))) : std::string();
}

const IniText::Section* IniText::section(std::string_view name) const {
  const auto found = byName_.find(smallName(name));
  return found == byName_.end() ? nullptr : &sections_[found->second];
}

std::string IniText::written(std::string_view section, std::string_view key) const {
  const Section* const found = this->section(section);
  if (found == nullptr) {
    return {};
  }
  const auto one = std::find_if(found->keys.begin(), found->keys.end(),
                                [&](const Key& each) -> bool { return sameName(each.name, key); });
  return one == found->keys.end() ? std::string() : locale_.fromAnsi(one->written);
}

std::optional<std::size_t> IniText::line(std::string_view section) const {
  const Section* const found = this->section(section);
  return found == nullptr ? std::nullopt : std::optional<std::size_t>(found->line);
}

std::optional<std::size_t> IniText::line(std::string_view section, std::string_view key) const {
  const Section* const found = this->section(section);
  if (found == nullptr) {
    return std::nullopt;
  }
  const auto one = std::find_if(found->keys.begin(), found->keys.end(),
                                [&](const Key& each) -> bool { return sameName(each.name, key); });
  return one == found->keys.end() ? found->line : one->line;
}

}  // namespace trelv::kit
