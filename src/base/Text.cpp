#include "base/Text.h"

namespace trelv {
namespace {

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// In UTF-8 the capitals of Latin-1 are C3 80..C3 9E and their small letters C3 A0..C3 BE; C3 97
// and C3 B7 are the multiplication and division signs.
constexpr char kLatinLead = '\xC3';

bool isLatinCapital(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80U && byte <= 0x9EU && byte != 0x97U;
}

bool isLatinSmall(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0xA0U && byte <= 0xBEU && byte != 0xB7U;
}

constexpr char kCaseBit = 0x20;

/// The byte at `at` as it stands in the text's upper case, which is as long.
char upperAt(std::string_view text, std::size_t at) {
  const char c = text[at];
  const bool isSmall =
      (c >= 'a' && c <= 'z') || (at > 0 && text[at - 1] == kLatinLead && isLatinSmall(c));
  return isSmall ? static_cast<char>(c - kCaseBit) : c;
}

}  // namespace

std::string upperCase(std::string_view text) {
  std::string result(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    result[i] = upperAt(text, i);
  }
  return result;
}

std::string lowerCase(std::string_view text) {
  std::string result(text);
  for (std::size_t i = 0; i < result.size(); ++i) {
    char& c = result[i];
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c + kCaseBit);
    } else if (i > 0 && result[i - 1] == kLatinLead && isLatinCapital(c)) {
      c = static_cast<char>(c + kCaseBit);
    }
  }
  return result;
}

bool equalNoCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) {
    return false;
  }
  std::size_t at = 0;
  while (at < left.size() && upperAt(left, at) == upperAt(right, at)) {
    ++at;
  }
  return at == left.size();
}

std::string trimLeft(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string() : std::string(text.substr(first));
}

std::string trim(std::string_view text) {
  const std::size_t last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string() : trimLeft(text.substr(0, last + 1));
}

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
  std::size_t at = text.find(from);
  if (at == std::string::npos) {
    return text;
  }
  // Into a new text: in place each occurrence would move all that is behind it.
  std::string replaced;
  std::size_t done = 0;
  for (; at != std::string::npos; at = text.find(from, done)) {
    replaced.append(text, done, at - done).append(to);
    done = at + from.size();
  }
  return replaced.append(text, done);
}

std::string firstCharacters(std::string_view text, std::size_t count) {
  std::size_t end = 0;
  while (end < text.size() && count > 0) {
    ++end;
    while (end < text.size() && isContinuation(text[end])) {
      ++end;
    }
    --count;
  }
  return std::string(text.substr(0, end));
}

std::string signedText(std::int64_t number) {
  return (number < 0 ? "" : " ") + std::to_string(number);
}

std::string twoDigits(int number) {
  return (number >= 0 && number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace trelv
