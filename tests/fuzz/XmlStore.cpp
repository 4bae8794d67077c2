// Whatever stands in the configuration file: a reading changes nothing, a writing is read back,
// leaves all other settings, and is whole or has not happened.
#include "platform/XmlStore.h"

#include <array>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "sim/SimMachine.h"

namespace trelv::fuzz {
namespace {

constexpr const char* kFolder = "C:\\Lumo\\Conf";
constexpr const char* kFile = "C:\\Lumo\\Conf\\config.xml";
constexpr const char* kSchema = "C:\\Lumo\\Conf\\schema.xsd";
constexpr const char* kDefault = "_DEFAULT_VALUE_";

using Names = std::array<std::string, 4>;

struct Answer {
  std::int32_t code = 0;
  std::string value;

  friend bool operator==(const Answer&, const Answer&) = default;
};

const Names kOther = {"SYSTEM", "Complementary_Products", "Integration", "Path"};

/// A machine whose registry names a configuration file, and the store over it.
struct World {
  World() {
    for (const auto& [name, file] : {std::pair("Schema", kSchema), std::pair("Config", kFile)}) {
      machine.registry().setText(machine::Hive::LocalMachine, "SOFTWARE\\LUMO\\Configurazione",
                                 name, file);
    }
    machine.putFile(kSchema, "<schema/>");
  }

  Answer get(const Names& names) {
    std::string buffer(1000, '\0');
    const std::int32_t code =
        store.getParameter(names[0], names[1], names[2], names[3], kDefault, 1000, buffer);
    return {code, buffer.substr(0, buffer.find('\0'))};
  }
  std::int32_t set(const Names& names, const std::string& value) {
    return store.setParameter(names[0], names[1], names[2], names[3], 1, value);
  }
  std::string text() { return machine.fileText(kFile); }

  sim::SimMachine machine;
  XmlStore store{machine.files(), machine.registry(), machine.locale(), machine.system(),
                 machine.exclusion()};
};

World& world() {
  static World made;
  return made;
}

bool isKnown(std::int32_t code) {
  constexpr std::array<std::int32_t, 14> kCodes = {0,     -1000, -2000, -3000, -3001, -3002, -3003,
                                                   -3004, -5000, -5001, -5002, -5003, -5004, -5005};
  return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

bool isSame(const Names& left, const Names& right) {
  return std::equal(left.begin(), left.end(), right.begin(),
                    [](const std::string& a, const std::string& b) { return equalNoCase(a, b); });
}

/// As much of a value as a reader's buffer takes, in the code page of its caller.
std::string asRead(const std::string& value) {
  machine::Locale& locale = world().machine.locale();
  return locale.fromAnsi(locale.toAnsi(value).substr(0, 1000));
}

void checkWritten(const Names& names, const std::string& value, const Answer& other) {
  const std::string first = world().text();
  require(world().get(names) == Answer{0, asRead(value)}, "what was written is read back",
          {names[0], names[1], names[2], names[3], value, first});
  if (!isSame(names, kOther)) {
    // Where the other setting is not there, the writing may have made a part of the way to it.
    const Answer still = world().get(kOther);
    require(still == other || (still.code != 0 && other.code != 0), "other settings stay", {first});
  }
  require(world().set(names, value) == 0 && world().text() == first,
          "writing a value again changes nothing", {first, world().text()});
}

void checkRefused(std::int32_t code, const std::string& before) {
  require(isKnown(code), "the answer is one of the library's", {std::to_string(code)});
  require(world().text() == before, "what was refused has not happened", {before});
}

}  // namespace

void checkXmlStore(std::string_view bytes) {
  const std::vector<std::string_view> parts = partsOf(bytes, 6);
  Names names = kOther;
  for (std::size_t i = 0; i + 2 < parts.size(); ++i) {
    names[i] = parts[i];
  }
  const std::string value(parts.size() > 1 ? parts[parts.size() - 2] : "");
  world().machine.putFile(kFile, parts.back());
  const Answer before = world().get(names);
  const Answer other = names == kOther ? before : world().get(kOther);
  require(isKnown(before.code) && isKnown(other.code), "the answer is one of the library's");
  require(world().text() == parts.back(), "a reading changes nothing");
  const std::int32_t code = world().set(names, value);
  if (code == 0) {
    checkWritten(names, value, other);
  } else {
    checkRefused(code, std::string(parts.back()));
  }
  require(world().machine.diskOf(kFile).names(kFolder).size() == 2,
          "nothing is left beside the file");
  world().machine.callLog().clear();
}

}  // namespace trelv::fuzz
