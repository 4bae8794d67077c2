#pragma once

#include <cstddef>
#include <string>

namespace trelv::sim {

/// The UTF-8 character at `at`, which moves behind it; U+FFFD for broken bytes, one at a time.
char32_t nextCharacter(const std::string& text, std::size_t& at);
/// Appends a character as UTF-8.
void addCharacter(std::string& text, char32_t character);

/// Number of its characters, not bytes; each broken byte counts.
std::size_t characterCount(const std::string& text);

/// UTF-8 to code page 1252 ("?" for what it lacks, one for each UTF-16 unit), and back.
std::string ansiOf(const std::string& text);
std::string textOfAnsi(const std::string& bytes);

/// Upper case of the letters of Latin and its first extension, Greek and Cyrillic.
std::string upperCaseOf(const std::string& text);

/// UTF-8 to UTF-16 bytes, low byte first unless `bigEndian`, and back; an odd last byte is dropped.
std::string wideOf(const std::string& text, bool bigEndian = false);
std::string textOfWide(const std::string& bytes, bool bigEndian = false);

}  // namespace trelv::sim
