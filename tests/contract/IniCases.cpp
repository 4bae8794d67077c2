#include "contract/IniCases.h"

#include <array>

namespace trelv::contract {
namespace {

using Choices = std::vector<std::string>;

/// Most names are one of two, so that sections and keys meet and questions find them.
std::string sectionName(Dice& dice) {
  static const Choices common = {"s", "S", "s", "Setup01"};
  static const Choices choices = {"Sec", "prod01", "a b", "",          "Sec.2", "s]", "s[",
                                  "s=",  ";s",     "x",   "\xE8t\xE0", "\"s\"", "1"};
  return dice.of(dice.oneIn(4) ? choices : common);
}

std::string keyName(Dice& dice) {
  static const Choices common = {"k", "K", "k", "version"};
  static const Choices choices = {"key", "Server01", "a b",  "",   ";k",  "[k",
                                  "x",   "\"k\"",    "\xE8", "#k", "[k]", "k.1"};
  return dice.of(dice.oneIn(4) ? choices : common);
}

const Choices& values() {
  static const Choices choices = {"",
                                  "1",
                                  "v",
                                  "03.20.30.00",
                                  "a=b=c",
                                  "a;b",
                                  "C:\\A B\\x.exe /s",
                                  "\"C:\\A B\\x.exe\" /s",
                                  "\"C:\\A B\\x.exe\" /s \"y z\"",
                                  "\"C:\\A B\\x.exe\"",
                                  "\"\"v\"\"",
                                  "\"",
                                  "'",
                                  "\"\"",
                                  "''",
                                  "\"'\"",
                                  "'v\"",
                                  "\" v \"",
                                  "'  '",
                                  "\"v",
                                  "v\"",
                                  "perch\xE9 no \x80",
                                  "\xA0v\xA0",
                                  "[s]"};
  return choices;
}

const Choices& usualBlanks() {
  static const Choices choices = {"", "", "", "", " ", "  ", "\t", " \t "};
  return choices;
}

const Choices& oddBlanks() {
  static const Choices choices = {"",   " ",    "\t",   "\v",   "\f",    "\x1A", "\xA0",
                                  "\r", "\x85", "\x1F", "\x7F", "\x1A ", "\b"};
  return choices;
}

std::string blanks(Dice& dice, IniManner manner) {
  return dice.of(manner == IniManner::Odd && dice.oneIn(3) ? oddBlanks() : usualBlanks());
}

char anyByte(Dice& dice) { return static_cast<char>(1 + dice.below(255)); }

/// Round the size of the program's buffer, where values are cut.
std::string longValue(Dice& dice) {
  std::string text(505 + dice.below(10), 'x');
  text.front() = 'a';
  text.back() = 'z';
  return dice.oneIn(2) ? text : "\"" + text + "\"";
}

std::string value(Dice& dice, IniManner manner) {
  if (dice.oneIn(60)) return longValue(dice);
  if (manner != IniManner::Odd || !dice.oneIn(4)) return dice.of(values());
  std::string bytes;
  for (std::size_t left = dice.below(6); left > 0; --left) bytes += anyByte(dice);
  return bytes;
}

std::string withSomeBlanks(Dice& dice, IniManner manner, const std::string& text) {
  return blanks(dice, manner) + text + blanks(dice, manner);
}

std::string sectionLine(Dice& dice, IniManner manner) {
  static const Choices tails = {"]", "]", "]", "]", "]", "] junk", "]=v", "] ; c", "][x]", ""};
  return "[" + withSomeBlanks(dice, manner, sectionName(dice)) + dice.of(tails);
}

std::string keyLine(Dice& dice, IniManner manner) {
  if (dice.oneIn(25)) return withSomeBlanks(dice, manner, keyName(dice));
  return withSomeBlanks(dice, manner, keyName(dice)) + "=" +
         withSomeBlanks(dice, manner, value(dice, manner));
}

std::string line(Dice& dice, IniManner manner) {
  switch (dice.below(12)) {
    case 0:
    case 1:
      return withSomeBlanks(dice, manner, sectionLine(dice, manner));
    case 2:
      return "; " + keyName(dice) + (dice.oneIn(2) ? "=" : "") + dice.of(values());
    case 3:
      return blanks(dice, manner);
    default:
      return withSomeBlanks(dice, manner, keyLine(dice, manner));
  }
}

std::string lineEnd(Dice& dice, IniManner manner, const std::string& usual) {
  static const Choices odd = {"\r", "\n\r", "\r\r\n", "\n\n", "\n", "\r\n"};
  return manner == IniManner::Odd && dice.oneIn(8) ? dice.of(odd) : usual;
}

std::string lines(Dice& dice, IniManner manner) {
  const std::string usual = dice.oneIn(4) ? "\n" : "\r\n";
  std::string text;
  for (std::size_t left = dice.below(14); left > 0; --left) {
    text += line(dice, manner);
    if (left > 1 || !dice.oneIn(4)) text += lineEnd(dice, manner, usual);
  }
  return text;
}

/// UTF-16 of Latin-1 bytes; `first` is the place of the low byte.
std::string inUtf16(const std::string& bytes, std::size_t first) {
  std::string wide;
  for (const char byte : bytes) {
    std::array<char, 2> unit{'\0', '\0'};
    unit[first] = byte;
    wide.append(unit.data(), unit.size());
  }
  return wide;
}

std::string withNul(Dice& dice, std::string bytes) {
  bytes.insert(dice.below(bytes.size() + 1), 1, '\0');
  return bytes;
}

/// UTF-8 of Latin-1 bytes.
std::string inUtf8(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0U | (code >> 6U));
      text += static_cast<char>(0x80U | (code & 0x3FU));
    }
  }
  return text;
}

/// Bytes 80 to 9F mean other characters in UTF-16 and UTF-8 than in the code page.
std::string latin1Only(std::string bytes) {
  for (char& byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x80 && code < 0xA0) byte = 'e';
  }
  return bytes;
}

std::string encoded(Dice& dice, const std::string& bytes) {
  const std::string text = latin1Only(bytes);
  switch (dice.below(7)) {
    case 0:
      return "\xFF\xFE" + inUtf16(text, 0);
    case 1:
      return "\xFE\xFF" + inUtf16(text, 1);
    case 2:
      return inUtf16(text, 0);
    case 3:
      return "\xEF\xBB\xBF" + inUtf8(text);
    case 4:
      return inUtf8(text);
    case 5:
      return "\xEF\xBB" + text;
    default:
      return withNul(dice, bytes);
  }
}

}  // namespace

std::uint64_t Dice::next() {
  state_ ^= state_ >> 12U;
  state_ ^= state_ << 25U;
  state_ ^= state_ >> 27U;
  return (state_ * 0x2545F4914F6CDD1DU) >> 16U;
}

std::string iniFile(Dice& dice, IniManner manner) {
  std::string text = lines(dice, manner);
  if (manner != IniManner::Encoded) return text;
  // Into an empty file Wine writes in the encoding that the file had before.
  if (text.empty()) text = "[s]\r\n";
  return encoded(dice, text);
}

IniQuestion iniQuestion(Dice& dice) {
  static const Choices defaults = {"", "", "d", " d ", "'d'", "\"d\" ", " ", "'", "d\t"};
  static const std::vector<std::uint32_t> sizes = {511, 511, 511, 511, 511, 0, 1, 2, 3, 5, 8};
  IniQuestion question;
  question.section = sectionName(dice);
  question.key = keyName(dice);
  if (dice.oneIn(8)) question.section = " " + question.section + "\t";
  if (dice.oneIn(8)) question.key = "\t" + question.key + " ";
  question.defaultValue = dice.of(defaults);
  question.size = sizes[dice.below(sizes.size())];
  return question;
}

IniWrite iniWrite(Dice& dice) {
  static const Choices wild = {"a\r\nb=2", " v ", "\tv\t", "a\nb", "\x1A", "v\x1A", "[x]"};
  IniWrite write;
  write.section = sectionName(dice);
  write.key = keyName(dice);
  if (dice.oneIn(12)) write.section = " " + write.section + " ";
  if (dice.oneIn(12)) write.key = " " + write.key + "\t";
  write.value = dice.oneIn(6) ? dice.of(wild) : dice.of(values());
  return write;
}

std::string visible(const std::string& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20 && code < 0x7F) {
      text += byte;
    } else {
      text += "\\x";
      text += kDigits[code >> 4U];
      text += kDigits[code & 0xFU];
    }
  }
  return text;
}

}  // namespace trelv::contract
