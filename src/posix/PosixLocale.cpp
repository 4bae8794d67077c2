#include "posix/PosixLocale.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "base/Text.h"

namespace trelv::posix {
namespace {

/// What code page 1252 has between 80 and 9F; the five bytes without a character of their own stand
/// for the control characters.
constexpr std::array<char32_t, 32> kMiddle{
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

constexpr std::array kMonths{"gennaio", "febbraio", "marzo",     "aprile",  "maggio",   "giugno",
                             "luglio",  "agosto",   "settembre", "ottobre", "novembre", "dicembre"};

void put(std::string& text, char32_t character) {
  const auto add = [&text](char32_t byte) -> void { text += static_cast<char>(byte); };
  if (character < 0x80) {
    add(character);
  } else if (character < 0x800) {
    add(0xC0U | (character >> 6U));
    add(0x80U | (character & 0x3FU));
  } else if (character < 0x10000) {
    add(0xE0U | (character >> 12U));
    add(0x80U | ((character >> 6U) & 0x3FU));
    add(0x80U | (character & 0x3FU));
  } else {
    add(0xF0U | (character >> 18U));
    add(0x80U | ((character >> 12U) & 0x3FU));
    add(0x80U | ((character >> 6U) & 0x3FU));
    add(0x80U | (character & 0x3FU));
  }
}

/// The character at `at`, which moves behind it; U+FFFD for a byte that begins none.
char32_t take(const std::string& text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) {
    return lead;
  }
  const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || at + more > text.size()) {
    return 0xFFFD;
  }
  char32_t character = lead & (0x3FU >> more);
  for (std::size_t i = 0; i < more; ++i) {
    character = (character << 6U) | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
  }
  at += more;
  return character;
}

std::string ansiByte(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
    return std::string(1, static_cast<char>(character));
  }
  const auto* const found = std::find(kMiddle.begin(), kMiddle.end(), character);
  if (found != kMiddle.end()) {
    return std::string(1, static_cast<char>(0x80 + (found - kMiddle.begin())));
  }
  return character > 0xFFFF ? "??" : "?";
}

}  // namespace

std::string PosixLocale::shortDate(const machine::LocalTime& time) {
  return twoDigits(time.day) + "/" + twoDigits(time.month) + "/" + std::to_string(time.year);
}

std::string PosixLocale::longTime(const machine::LocalTime& time) {
  return twoDigits(time.hour) + ":" + twoDigits(time.minute) + ":" + twoDigits(time.second);
}

std::string PosixLocale::monthName(int month) {
  return month < 1 || month > 12 ? "" : kMonths.at(static_cast<std::size_t>(month - 1));
}

std::string PosixLocale::truthText(bool value) { return value ? "Vero" : "Falso"; }

std::string PosixLocale::upperCase(const std::string& text) { return trelv::upperCase(text); }

std::string PosixLocale::toAnsi(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size();) {
    bytes += ansiByte(take(text, at));
  }
  return bytes;
}

std::string PosixLocale::fromAnsi(const std::string& bytes) {
  std::string text;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    const bool middle = byte >= 0x80 && byte < 0xA0;
    put(text, middle ? kMiddle.at(byte - 0x80U) : byte);
  }
  return text;
}

std::string textOfWide(const std::string& bytes) {
  const auto unit = [&](std::size_t at) -> char32_t {
    const char32_t first = static_cast<unsigned char>(bytes[at]);
    const char32_t second = static_cast<unsigned char>(bytes[at + 1]);
    return (second << 8U) | first;
  };
  std::string text;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t character = unit(at);
    if (character >= 0xD800 && character < 0xDC00 && at + 3 < bytes.size()) {
      at += 2;
      character = 0x10000 + ((character - 0xD800) << 10U) + (unit(at) - 0xDC00);
    }
    put(text, character);
  }
  return text;
}

}  // namespace trelv::posix
