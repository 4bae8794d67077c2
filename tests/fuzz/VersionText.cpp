// Versions compare as the numbers that their first digits make without the points.
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
  const std::string most = std::to_string(std::numeric_limits<std::uint64_t>::max());
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

/// Sign of a comparison by the rule, without numbers.
int byRule(std::string_view left, std::string_view right) {
  const int sign = placed(digitsOf(left)).compare(placed(digitsOf(right)));
  return sign < 0 ? -1 : static_cast<int>(sign > 0);
}

int byProgram(std::string_view left, std::string_view right) {
  const std::uint64_t a = number(left);
  const std::uint64_t b = number(right);
  return a < b ? -1 : static_cast<int>(a > b);
}

}  // namespace

void checkVersionText(std::string_view bytes) {
  const std::vector<std::string_view> versions = partsOf(bytes, 3);
  for (const std::string_view left : versions) {
    for (const std::string_view right : versions) {
      require(byProgram(left, right) == byRule(left, right), "versions compare by their digits",
              {left, right});
      require(byProgram(left, right) == -byProgram(right, left), "one order both ways",
              {left, right});
      for (const std::string_view third : versions) {
        require(byProgram(left, right) > 0 || byProgram(right, third) > 0 ||
                    byProgram(left, third) <= 0,
                "the order is transitive", {left, right, third});
      }
    }
    require(number(withoutPoints(left)) == number(left), "points count for nothing", {left});
    require(placed(std::to_string(number(left))) == placed(digitsOf(left)),
            "the number is that of the digits", {left});
  }
}

}  // namespace trelv::fuzz
