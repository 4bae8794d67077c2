#include "records/IniDocument.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace trelv {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf16ReverseMark = "\xFE\xFF";

/// What the platform drops round names and values.
bool isBlank(char character) {
  switch (character) {
    case ' ':
    case '\t':
    case '\n':
    case '\v':
    case '\f':
    case '\r':
    case '\x1A':
      return true;
    default:
      return false;
  }
}

std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view withoutQuotes(std::string_view text) {
  const bool quoted = text.size() >= 2 && text.front() == text.back() &&
                      (text.front() == '"' || text.front() == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

char lowerAscii(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                              : character;
}

bool equalNames(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lowerAscii(a) == lowerAscii(b); });
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

/// Removes the next line from the text and gives it without its line end.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

}  // namespace

/// Sections and keys in one table that is searched by owner and name. A section's owner is kFile, a
/// key's is the entry of its section.
struct IniDocument::Content {
  static constexpr std::uint32_t kFile = 0xFFFFFFFFU;
  static constexpr std::uint32_t kNoEntry = 0xFFFFFFFFU;

  struct Entry {
    std::uint32_t owner = kFile;
    std::string_view name;
    std::optional<std::string_view> value;
  };

  explicit Content(std::string text) : bytes(std::move(text)) {
    // Enough for most files: shorter lines are rare.
    constexpr std::size_t kBytesForAPlace = 16;
    makePlaces(std::bit_ceil(bytes.size() / kBytesForAPlace));
    std::uint32_t section = addSection("");
    std::string_view rest = bytes;
    while (!rest.empty()) takeIn(withoutBlanks(takeLine(rest)), section);
  }

  /// Takes in one line; `section` is the one that keys belong to, kNoEntry for one that is dropped.
  void takeIn(std::string_view line, std::uint32_t& section) {
    if (line.empty()) return;
    const std::size_t bracket = line.front() == '[' ? line.rfind(']') : std::string_view::npos;
    if (bracket != std::string_view::npos) {
      section = addSection(withoutBlanks(line.substr(1, bracket - 1)));
    } else if (section != kNoEntry) {
      addKey(section, line);
    }
  }

  /// The new section's entry, or kNoEntry when the file had one of this name.
  std::uint32_t addSection(std::string_view name) { return add({kFile, name, std::nullopt}); }

  void addKey(std::uint32_t section, std::string_view line) {
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos) {
      add({section, line, std::nullopt});
    } else {
      add({section, withoutBlanks(line.substr(0, sign)),
           withoutQuotes(withoutBlanks(line.substr(sign + 1)))});
    }
  }

  /// Number of the new entry, or kNoEntry when there is one of the same owner and name.
  std::uint32_t add(const Entry& entry) {
    if (entries.size() * 2 >= slots.size()) makePlaces(slots.size() * 2);
    std::uint32_t& slot = slotOf(entry.owner, entry.name);
    if (slot != kNoEntry) return kNoEntry;
    slot = static_cast<std::uint32_t>(entries.size());
    entries.push_back(entry);
    return slot;
  }

  /// `count` is a power of two.
  void makePlaces(std::size_t count) {
    slots.assign(std::max<std::size_t>(64, count), kNoEntry);
    for (std::uint32_t number = 0; number < entries.size(); ++number) {
      slotOf(entries[number].owner, entries[number].name) = number;
    }
  }

  std::uint32_t find(std::uint32_t owner, std::string_view name) const {
    return slots[slotNumber(owner, name)];
  }

  std::uint32_t& slotOf(std::uint32_t owner, std::string_view name) {
    return slots[slotNumber(owner, name)];
  }

  /// Where the entry stands or would stand: the first place from its hash on that holds it or is
  /// free. Half of the places are always free, and their number is a power of two.
  std::size_t slotNumber(std::uint32_t owner, std::string_view name) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t place = hash(owner, name) & mask;
    while (slots[place] != kNoEntry && !is(entries[slots[place]], owner, name)) {
      place = (place + 1) & mask;
    }
    return place;
  }

  static bool is(const Entry& entry, std::uint32_t owner, std::string_view name) {
    return entry.owner == owner && equalNames(entry.name, name);
  }

  static std::size_t hash(std::uint32_t owner, std::string_view name) {
    std::uint32_t sum = 2166136261U ^ (owner * 2654435761U);
    for (const char character : name) {
      sum = (sum ^ static_cast<unsigned char>(lowerAscii(character))) * 16777619U;
    }
    return sum ^ (sum >> 15);
  }

  std::string bytes;
  std::vector<Entry> entries;
  std::vector<std::uint32_t> slots;
};

bool IniDocument::understands(std::string_view bytes) {
  for (const std::string_view mark : {kUtf8Mark, kUtf16Mark, kUtf16ReverseMark}) {
    if (bytes.substr(0, mark.size()) == mark) return false;
  }
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char character = bytes[i];
    if (static_cast<unsigned char>(character) >= ' ' || character == '\t' || character == '\n') {
      continue;
    }
    if (character != '\r' || i + 1 == bytes.size() || bytes[i + 1] != '\n') return false;
  }
  return true;
}

bool IniDocument::canFind(std::string_view section, std::string_view key) {
  return isAscii(section) && isAscii(key);
}

IniDocument::IniDocument(std::string bytes)
    : content_(std::make_unique<Content>(std::move(bytes))) {}
IniDocument::~IniDocument() = default;
IniDocument::IniDocument(IniDocument&&) noexcept = default;
IniDocument& IniDocument::operator=(IniDocument&&) noexcept = default;

std::optional<std::string_view> IniDocument::value(std::string_view section,
                                                   std::string_view key) const {
  const std::uint32_t owner = content_->find(Content::kFile, withoutBlanks(section));
  if (owner == Content::kNoEntry) return std::nullopt;
  const std::uint32_t entry = content_->find(owner, withoutBlanks(key));
  return entry == Content::kNoEntry ? std::nullopt : content_->entries[entry].value;
}

}  // namespace trelv
