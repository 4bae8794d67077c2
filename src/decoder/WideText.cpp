#include "decoder/WideText.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace trelv::decoder {
namespace {

void append(std::string& text, std::uint32_t character) {
  const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0U | (character >> 6U));
    put(0x80U | (character & 0x3FU));
  } else if (character < 0x10000) {
    put(0xE0U | (character >> 12U));
    put(0x80U | ((character >> 6U) & 0x3FU));
    put(0x80U | (character & 0x3FU));
  } else {
    put(0xF0U | (character >> 18U));
    put(0x80U | ((character >> 12U) & 0x3FU));
    put(0x80U | ((character >> 6U) & 0x3FU));
    put(0x80U | (character & 0x3FU));
  }
}

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Its sign, where wide characters have one, tells nothing.
std::uint32_t codeOf(wchar_t unit) {
  return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(unit));
}

/// How many bytes follow this first byte of a character; nothing when it begins none.
std::optional<std::size_t> following(unsigned char first) {
  if (first < 0x80) {
    return 0;
  }
  if (first >= 0xC2 && first <= 0xDF) {
    return 1;
  }
  if (first >= 0xE0 && first <= 0xEF) {
    return 2;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    return 3;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::uint32_t> takeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::optional<std::size_t> more = following(first);
  if (!more || text.size() <= *more) {
    return std::nullopt;
  }
  std::uint32_t character = *more == 0 ? first : first & (0x3FU >> *more);
  for (std::size_t index = 1; index <= *more; ++index) {
    const auto next = static_cast<unsigned char>(text[index]);
    if ((next & 0xC0U) != 0x80U) {
      return std::nullopt;
    }
    character = (character << 6U) | (next & 0x3FU);
  }
  const bool overlong = (*more == 2 && character < 0x800) || (*more == 3 && character < 0x10000);
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (overlong || surrogate || character > 0x10FFFF) {
    return std::nullopt;
  }
  text.remove_prefix(*more + 1);
  return character;
}

std::string utf8Of(const wchar_t* text) {
  std::string result;
  for (; *text != L'\0'; ++text) {
    std::uint32_t character = codeOf(*text);
    const std::uint32_t next = codeOf(text[1]);
    if (isHighSurrogate(character) && isLowSurrogate(next)) {
      character = 0x10000 + ((character - 0xD800) << 10U) + (next - 0xDC00);
      ++text;
    }
    append(result, character);
  }
  return result;
}

std::wstring wideOf(std::string_view text) {
  constexpr std::uint32_t kReplacement = 0xFFFD;
  std::wstring result;
  while (!text.empty()) {
    const std::optional<std::uint32_t> character = takeCharacter(text);
    const std::uint32_t known = character.value_or(kReplacement);
    if (!character) {
      text.remove_prefix(1);
    }
    if (known > 0xFFFF && sizeof(wchar_t) == 2) {
      result += static_cast<wchar_t>(0xD800 + ((known - 0x10000) >> 10U));
      result += static_cast<wchar_t>(0xDC00 + ((known - 0x10000) & 0x3FFU));
    } else {
      result += static_cast<wchar_t>(known);
    }
  }
  return result;
}

}  // namespace trelv::decoder
