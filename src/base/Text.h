#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trelv {

/// Line end of boxes and files.
constexpr const char* kCrLf = "\r\n";

/// Upper and lower case of UTF-8 text: ASCII and the accented letters of Latin-1, which are those
/// of Italian names; other characters stay as they are.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
/// True when both texts are equal once upper-cased: how paths and names are compared.
bool equalNoCase(std::string_view left, std::string_view right);

/// Without leading and trailing blanks (0x20 only, as the Basic runtime's Trim).
std::string trim(std::string_view text);
std::string trimLeft(std::string_view text);

/// Every occurrence of `from` (not empty) becomes `to`.
std::string replaceAll(std::string text, std::string_view from, std::string_view to);

/// The first `count` characters (UTF-8 code points, not bytes) of the text, or all of it.
std::string firstCharacters(std::string_view text, std::size_t count);

/// As the Basic runtime's Str writes a number, with a blank where a minus would be: " 5", "-5".
std::string signedText(std::int64_t number);
/// The pattern "00": 1 gives "01", 100 gives "100".
std::string twoDigits(int number);

}  // namespace trelv
