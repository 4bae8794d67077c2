#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace trelv::fuzz {

/// A rule that does not hold of an input.
class Broken : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Printable characters as they are, others by their number.
inline std::string shown(std::string_view bytes) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto number = static_cast<unsigned char>(c);
    if (number >= 0x20 && number < 0x7F && c != '\\') {
      text += c;
    } else {
      text += std::string("\\x") + kDigits[number >> 4U] + kDigits[number & 0xFU];
    }
  }
  return text;
}

/// Raises Broken unless the rule holds; `seen` are the texts that tell why it does not.
inline void require(bool holds, const char* rule,
                    std::initializer_list<std::string_view> seen = {}) {
  if (!holds) {
    std::string text = rule;
    for (const std::string_view part : seen) {
      text += "\n  " + shown(part);
    }
    throw Broken(text);
  }
}

/// The parts of an input that line feeds separate; at most `most`, the last with all that is left.
inline std::vector<std::string_view> partsOf(std::string_view bytes, std::size_t most) {
  std::vector<std::string_view> parts;
  while (parts.size() + 1 < most) {
    const std::size_t end = bytes.find('\n');
    if (end == std::string_view::npos) {
      break;
    }
    parts.push_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
  }
  parts.push_back(bytes);
  return parts;
}

/// Takes the first byte away as a number; 0 where there is none.
inline unsigned takeNumber(std::string_view& bytes) {
  if (bytes.empty()) {
    return 0;
  }
  const auto number = static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  return number;
}

}  // namespace trelv::fuzz
