// The program's own reader of ini files answers what the platform's functions answer, before and
// after these wrote a value.
#include "records/IniDocument.h"

#include <optional>

#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "sim/SimMachine.h"

namespace trelv::fuzz {
namespace {

constexpr const char* kFile = "C:\\a.ini";
constexpr const char* kMissing = "<missing>";
/// So many of its names are asked for, each as a section and as a key of each section.
constexpr std::size_t kMostNames = 5;
constexpr std::uint32_t kRoom = 70'000;

using Names = std::vector<std::string>;

/// One machine for all inputs: making it costs more than they do.
sim::SimMachine& machine() {
  static sim::SimMachine made;
  return made;
}

/// Texts between every two of these characters: sections, keys, values and their parts.
Names allNamesIn(std::string_view bytes) {
  constexpr std::string_view kEnds = "\r\n[]=;";
  Names names;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find_first_of(kEnds), bytes.size());
    if (end > 0 && IniDocument::canFind(bytes.substr(0, end), "")) {
      names.emplace_back(bytes.substr(0, end));
    }
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return names;
}

/// Some of them, from all of the text, and two that need not be there.
Names namesIn(std::string_view bytes) {
  const Names all = allNamesIn(bytes);
  Names names = {"", "s"};
  const std::size_t step = all.size() / kMostNames + 1;
  for (std::size_t i = bytes.size() % step; i < all.size(); i += step) {
    names.push_back(all[i]);
  }
  return names;
}

void compare(const std::string& bytes, const Names& names) {
  const IniDocument document(bytes);
  for (const std::string& section : names) {
    for (const std::string& key : names) {
      const std::string ours =
          machine().locale().fromAnsi(std::string(document.value(section, key).value_or(kMissing)));
      const std::string platform =
          machine().profiles().quietRead(section, key, kMissing, kRoom, kFile);
      require(ours == platform, "our reader answers as the platform does",
              {"section " + section, "key " + key, "ours " + ours, "the platform's " + platform});
    }
  }
}

/// What a write leaves is read as the platform reads it.
void compareWritten(const Names& names) {
  const std::string& section = names[names.size() / 2];
  const std::string& key = names[names.size() - 1];
  machine().profiles().quietWrite(section, key, names[names.size() - 2], kFile);
  const std::string bytes = machine().fileText(kFile);
  if (IniDocument::understands(bytes)) {
    compare(bytes, {section, key, names[0]});
  }
}

}  // namespace

void checkIniDocument(std::string_view input) {
  const std::string bytes(input);
  if (!IniDocument::understands(bytes)) {
    // What is left to the platform must not lead out of the text all the same.
    const IniDocument document(bytes);
    const std::optional<std::string_view> value = document.value("s", "k");
    require(!value || bytes.find(*value) != std::string::npos, "a value stands in the text");
    return;
  }
  machine().putFile(kFile, bytes);
  const Names names = namesIn(bytes);
  compare(bytes, names);
  compareWritten(names);
}

}  // namespace trelv::fuzz
