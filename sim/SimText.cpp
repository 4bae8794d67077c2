#include "sim/SimText.h"

#include <algorithm>
#include <array>

namespace trelv::sim {
namespace {

// The characters that code page 1252 has between 80 and 9F; 0 where it has none of its own.
constexpr std::array<char32_t, 32> kUpperControls{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr char32_t kBroken = 0xFFFD;
constexpr char32_t kFirstBeyondUnit = 0x10000;
constexpr char32_t kHighSurrogates = 0xD800;
constexpr char32_t kLowSurrogates = 0xDC00;
constexpr char32_t kEndOfSurrogates = 0xE000;

std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80U) {
    return 1;
  }
  if (lead < 0xC2U || lead > 0xF4U) {
    return 0;
  }
  return lead < 0xE0U ? 2 : (lead < 0xF0U ? 3 : 4);
}

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80U; }

/// Plain letters, which most texts consist of, are the same in each encoding: copies them up to the
/// next other character.
std::size_t copyAscii(const std::string& from, std::size_t at, std::string& to) {
  const auto begin = from.begin() + static_cast<std::ptrdiff_t>(at);
  const auto end = std::find_if_not(begin, from.end(), isAscii);
  to.append(begin, end);
  return static_cast<std::size_t>(end - from.begin());
}

std::string ansiOfCharacter(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
    return std::string(1, static_cast<char>(character));
  }
  for (std::size_t i = 0; i < kUpperControls.size(); ++i) {
    if (kUpperControls[i] == character || (kUpperControls[i] == 0 && character == 0x80 + i)) {
      return std::string(1, static_cast<char>(0x80 + i));
    }
  }
  return character >= kFirstBeyondUnit ? "??" : "?";
}

void addUnit(std::string& bytes, char32_t unit, bool bigEndian) {
  const char low = static_cast<char>(unit & 0xFFU);
  const char high = static_cast<char>(unit >> 8U);
  bytes += bigEndian ? high : low;
  bytes += bigEndian ? low : high;
}

char32_t unitAt(const std::string& bytes, std::size_t at, bool bigEndian) {
  const char32_t first = static_cast<unsigned char>(bytes[at]);
  const char32_t second = static_cast<unsigned char>(bytes[at + 1]);
  return bigEndian ? (first << 8U) | second : (second << 8U) | first;
}

struct CaseRange {
  char32_t first;
  char32_t last;
  char32_t distance;
};

/// Small letters that stand in one block below which their capitals do.
constexpr std::array kCaseRanges{CaseRange{'a', 'z', 0x20},     CaseRange{0xE0, 0xF6, 0x20},
                                 CaseRange{0xF8, 0xFE, 0x20},   CaseRange{0x3B1, 0x3C1, 0x20},
                                 CaseRange{0x3C3, 0x3C9, 0x20}, CaseRange{0x430, 0x44F, 0x20},
                                 CaseRange{0x450, 0x45F, 0x50}};

char32_t capitalOf(char32_t letter) {
  for (const CaseRange& range : kCaseRanges) {
    if (letter >= range.first && letter <= range.last) {
      return letter - range.distance;
    }
  }
  if (letter == 0xFF) {
    return 0x178;
  }
  // Pairs of capital and small letter; in these two parts the capitals are odd.
  const bool oddCapitals =
      (letter >= 0x139 && letter <= 0x148) || (letter >= 0x179 && letter <= 0x17E);
  const bool paired = (letter >= 0x100 && letter <= 0x137 && letter != 0x131) ||
                      (letter >= 0x14A && letter <= 0x177);
  const bool odd = letter % 2 == 1;
  return (oddCapitals && !odd) || (paired && odd) ? letter - 1 : letter;
}

}  // namespace

std::string upperCaseOf(const std::string& text) {
  std::string upper;
  for (std::size_t at = 0; at < text.size();) {
    addCharacter(upper, capitalOf(nextCharacter(text, at)));
  }
  return upper;
}

char32_t nextCharacter(const std::string& text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = sequenceLength(lead);
  if (length == 0 || at + length > text.size()) {
    ++at;
    return kBroken;
  }
  char32_t character = length == 1 ? lead : lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[at + i]);
    if ((byte & 0xC0U) != 0x80U) {
      ++at;
      return kBroken;
    }
    character = (character << 6U) | (byte & 0x3FU);
  }
  at += length;
  return character;
}

void addCharacter(std::string& text, char32_t character) {
  const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    add(character);
    return;
  }
  if (character < 0x800) {
    add(0xC0U | (character >> 6U));
  } else if (character < kFirstBeyondUnit) {
    add(0xE0U | (character >> 12U));
    add(0x80U | ((character >> 6U) & 0x3FU));
  } else {
    add(0xF0U | (character >> 18U));
    add(0x80U | ((character >> 12U) & 0x3FU));
    add(0x80U | ((character >> 6U) & 0x3FU));
  }
  add(0x80U | (character & 0x3FU));
}

std::size_t characterCount(const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) {
    nextCharacter(text, at);
  }
  return count;
}

std::string ansiOf(const std::string& text) {
  std::string bytes;
  for (std::size_t at = copyAscii(text, 0, bytes); at < text.size();
       at = copyAscii(text, at, bytes)) {
    bytes += ansiOfCharacter(nextCharacter(text, at));
  }
  return bytes;
}

std::string textOfAnsi(const std::string& bytes) {
  std::string text;
  for (std::size_t at = copyAscii(bytes, 0, text); at < bytes.size();
       at = copyAscii(bytes, at + 1, text)) {
    const char32_t byte = static_cast<unsigned char>(bytes[at]);
    const bool special = byte >= 0x80 && byte < 0xA0 && kUpperControls[byte - 0x80] != 0;
    addCharacter(text, special ? kUpperControls[byte - 0x80] : byte);
  }
  return text;
}

std::string wideOf(const std::string& text, bool bigEndian) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = nextCharacter(text, at);
    if (character < kFirstBeyondUnit) {
      addUnit(bytes, character, bigEndian);
    } else {
      const char32_t rest = character - kFirstBeyondUnit;
      addUnit(bytes, kHighSurrogates + (rest >> 10U), bigEndian);
      addUnit(bytes, kLowSurrogates + (rest & 0x3FFU), bigEndian);
    }
  }
  return bytes;
}

std::string textOfWide(const std::string& bytes, bool bigEndian) {
  std::string text;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const char32_t unit = unitAt(bytes, at, bigEndian);
    if (unit < kHighSurrogates || unit >= kEndOfSurrogates) {
      addCharacter(text, unit);
      continue;
    }
    const char32_t next = at + 3 < bytes.size() ? unitAt(bytes, at + 2, bigEndian) : 0;
    const bool pair = unit < kLowSurrogates && next >= kLowSurrogates && next < kEndOfSurrogates;
    addCharacter(
        text, pair ? kFirstBeyondUnit + ((unit - kHighSurrogates) << 10U) + (next - kLowSurrogates)
                   : kBroken);
    at += pair ? 2 : 0;
  }
  return text;
}

}  // namespace trelv::sim
