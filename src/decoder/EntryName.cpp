#include "decoder/EntryName.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "base/Text.h"
#include "decoder/WideText.h"

namespace trelv::decoder {
namespace {

constexpr std::size_t kLongestComponent = 255;

constexpr const char* kNotUtf8 = "nome che non è in UTF-8";
constexpr const char* kAbsolute = "percorso assoluto";
constexpr const char* kUpwards = "percorso che risale";
constexpr const char* kBadCharacter = "carattere che Windows non ammette";
constexpr const char* kBadEnd = "nome che termina con uno spazio o un punto";
constexpr const char* kDevice = "nome di un dispositivo";
constexpr const char* kShortName = "nome che può valere come nome breve di un altro";
constexpr const char* kTooLong = "nome troppo lungo";
constexpr const char* kReserved = "nome riservato ai file temporanei";

/// Length in UTF-16 units; nothing for what is not UTF-8.
std::optional<std::size_t> utf16Length(std::string_view text) {
  std::size_t length = 0;
  while (!text.empty()) {
    const std::optional<std::uint32_t> character = takeCharacter(text);
    if (!character) {
      return std::nullopt;
    }
    length += *character > 0xFFFF ? 2 : 1;
  }
  return length;
}

bool isLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool hasBadCharacter(std::string_view component) {
  return std::any_of(component.begin(), component.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x20 ||
           std::string_view("<>:\"|?*\\").find(character) != std::string_view::npos;
  });
}

/// True for the names of devices, whatever extension follows them. The digits of the serial and
/// printer ports may also be written raised.
bool isDevice(std::string_view component) {
  const std::string base = upperCase(trim(component.substr(0, component.find('.'))));
  static constexpr std::array<std::string_view, 7> kDevices = {"CON",    "PRN",     "AUX",   "NUL",
                                                               "CONIN$", "CONOUT$", "CLOCK$"};
  if (std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end()) {
    return true;
  }
  if (base.rfind("COM", 0) != 0 && base.rfind("LPT", 0) != 0) {
    return false;
  }
  const std::string_view number = std::string_view(base).substr(3);
  return (number.size() == 1 && isDigit(number[0])) || number == "¹" || number == "²" ||
         number == "³";
}

/// True for what Windows may have made up as the short name of a long one: "PROGRA~1.EXE".
bool isShortName(std::string_view component) {
  const std::size_t point = component.find('.');
  const std::string_view base = component.substr(0, point);
  const std::size_t tilde = base.rfind('~');
  if (tilde == std::string_view::npos || tilde + 1 == base.size()) {
    return false;
  }
  // Short names may have any letter of the code page: bytes do not count.
  const std::string_view extension =
      point == std::string_view::npos ? std::string_view() : component.substr(point + 1);
  if (utf16Length(base).value_or(0) > 8 || utf16Length(extension).value_or(0) > 3) {
    return false;
  }
  const std::string_view number = base.substr(tilde + 1);
  return std::all_of(number.begin(), number.end(), isDigit);
}

/// Why one name of a path is refused; null when it is good. `length` in UTF-16 units.
const char* refusalOf(std::string_view component, std::size_t length) {
  if (component == "..") {
    return kUpwards;
  }
  if (hasBadCharacter(component)) {
    return kBadCharacter;
  }
  if (component.back() == ' ' || component.back() == '.') {
    return kBadEnd;
  }
  if (isDevice(component)) {
    return kDevice;
  }
  if (isShortName(component)) {
    return kShortName;
  }
  return length > kLongestComponent ? kTooLong : nullptr;
}

bool isAbsolute(std::string_view stored) {
  const bool drive = stored.size() > 1 && isLetter(stored[0]) && stored[1] == ':';
  return drive || (!stored.empty() && (stored[0] == '/' || stored[0] == '\\'));
}

bool isReserved(std::string_view path) {
  const std::string_view prefix = kTemporaryPrefix;
  return equalNoCase(path.substr(0, prefix.size()), prefix);
}

EntryName refused(const char* reason) { return {"", 0, reason}; }

/// Adds one name to the path, unless it counts for nothing.
void add(EntryName& name, std::string_view component) {
  if (component.empty() || component == ".") {
    return;
  }
  const std::size_t length = utf16Length(component).value_or(0);
  name.refusal = refusalOf(component, length);
  name.length += length + (name.path.empty() ? 0 : 1);
  name.path += name.path.empty() ? "" : "/";
  name.path += component;
}

}  // namespace

EntryName readEntryName(std::string_view stored) {
  if (!utf16Length(stored)) {
    return refused(kNotUtf8);
  }
  if (isAbsolute(stored)) {
    return refused(kAbsolute);
  }
  EntryName name;
  while (!stored.empty() && name.refusal == nullptr) {
    const std::size_t end = stored.find('/');
    add(name, stored.substr(0, end));
    stored.remove_prefix(end == std::string_view::npos ? stored.size() : end + 1);
  }
  if (name.refusal == nullptr && isReserved(name.path)) {
    return refused(kReserved);
  }
  return name.refusal == nullptr ? name : refused(name.refusal);
}

}  // namespace trelv::decoder
