#include "fuzz/IniDifference.h"

#include <gtest/gtest.h>

#include <set>
#include <string_view>

#include "records/IniDocument.h"
#include "sim/SimMachine.h"

namespace trelv::fuzz {
namespace {

constexpr const char* kFile = "C:\\a.ini";
constexpr const char* kMissing = "<missing>";

/// Texts between every two of these characters: sections, keys, values and their parts.
std::set<std::string> namesIn(const std::string& bytes) {
  constexpr std::string_view kEnds = "\r\n[]=;";
  std::set<std::string> names = {"", "s", "none"};
  for (std::size_t at = 0; at < bytes.size() && names.size() < 16;) {
    const std::size_t end = bytes.find_first_of(kEnds, at);
    const std::string name = bytes.substr(at, end - at);
    if (IniDocument::canFind(name, "")) names.insert(name);
    if (end == std::string::npos) break;
    at = end + 1;
  }
  return names;
}

}  // namespace

std::optional<std::string> iniDifference(const std::string& bytes) {
  if (!IniDocument::understands(bytes)) return std::nullopt;
  sim::SimMachine machine;
  machine.putFile(kFile, bytes);
  const IniDocument document(bytes);
  const auto room = static_cast<std::uint32_t>(bytes.size() + 100);
  const std::set<std::string> names = namesIn(bytes);
  for (const std::string& section : names) {
    for (const std::string& key : names) {
      const std::string ours =
          machine.locale().fromAnsi(std::string(document.value(section, key).value_or(kMissing)));
      const std::string platform =
          machine.machine().profiles.readValue(section, key, kMissing, room, kFile);
      if (ours != platform) {
        return "[" + testing::PrintToString(section) + "] " + testing::PrintToString(key) +
               ": ours " + testing::PrintToString(ours) + ", the platform's " +
               testing::PrintToString(platform) + " in " + testing::PrintToString(bytes);
      }
    }
  }
  return std::nullopt;
}

}  // namespace trelv::fuzz

/// For a coverage-guided run: this file, src/ and sim/ built with clang++ -fsanitize=fuzzer.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (trelv::fuzz::iniDifference(std::string(data, data + size))) __builtin_trap();
  return 0;
}
