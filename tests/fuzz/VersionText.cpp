// A version, which is compared as a number, is the one that its first digits make without the
// points.
#include <cstdint>
#include <limits>

#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "packs/ProductUpdateRun.h"

namespace trelv::fuzz {
namespace {

/// The digits that stand first once the points are gone, without leading zeros.
std::string digitsOf(std::string_view version) {
  std::string digits;
  for (const char c : version) {
    if (c != '.' && (c < '0' || c > '9')) {
      break;
    }
    if (c != '.' && (c != '0' || !digits.empty())) {
      digits += c;
    }
  }
  return digits;
}

/// As a text of so many digits that all numbers have room.
std::string placed(const std::string& digits) {
  static const std::string most = std::to_string(std::numeric_limits<std::uint64_t>::max());
  std::string number = digits;
  if (digits.size() > most.size() || (digits.size() == most.size() && digits > most)) {
    number = most;
  }
  return std::string(most.size() - number.size(), '0') + number;
}

std::uint64_t number(std::string_view version) {
  return modProdTrelvManager::VersionNumber(std::string(version));
}

std::string withoutPoints(std::string_view version) {
  std::string text(version);
  std::erase(text, '.');
  return text;
}

}  // namespace

void checkVersionText(std::string_view bytes) {
  for (const std::string_view version : partsOf(bytes, 3)) {
    const std::uint64_t read = number(version);
    require(number(withoutPoints(version)) == read, "points count for nothing", {version});
    require(placed(std::to_string(read)) == placed(digitsOf(version)),
            "the number is that of the digits", {version});
  }
}

}  // namespace trelv::fuzz
