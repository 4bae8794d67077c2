#include "decoder/Refusal.h"

#include <algorithm>

#include "base/Text.h"

namespace trelv::decoder {
namespace {

constexpr std::size_t kShownCharacters = 200;

/// A name as one short line, whatever is in it.
std::string shown(const std::string& name) {
  std::string text = firstCharacters(name, kShownCharacters);
  if (text.size() < name.size()) {
    text += "...";
  }
  const auto isControl = [](char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
  };
  std::replace_if(text.begin(), text.end(), isControl, '?');
  return text;
}

}  // namespace

void refuseEntry(const std::string& reason, const std::string& name) {
  refuse(reason + ": \"" + shown(name) + "\"");
}

}  // namespace trelv::decoder
