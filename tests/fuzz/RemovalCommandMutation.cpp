// Changes commands level by level: where a path leads is decided by its levels, not by its letters.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed);

namespace {

constexpr std::array<std::string_view, 32> kLevels{"..",          "..",
                                                   "..",          ".",
                                                   "zb",          "zb",
                                                   "zb.",         "zb ",
                                                   "a.exe",       "b c.exe",
                                                   "C:",          "S:",
                                                   "D:",          "Lumo",
                                                   "prg",         "com",
                                                   "setup",       "aggdovra",
                                                   "mv",          "etc",
                                                   "WINDOWS",     "Program Files",
                                                   "PROGRA~1",    "Users",
                                                   "mario",       "anna",
                                                   "utenti",      "server",
                                                   "%PATHSETUP%", "Temp",
                                                   "\\\\?\\S:",   "\\\\srv\\dati"};

std::vector<std::string> levelsOf(std::string_view command) {
  std::vector<std::string> levels{""};
  for (const char c : command) {
    if (c == '\\') {
      levels.emplace_back();
    } else {
      levels.back() += c;
    }
  }
  return levels;
}

void change(std::vector<std::string>& levels, unsigned seed) {
  const std::size_t at = seed / 8 % levels.size();
  const auto place = levels.begin() + static_cast<std::ptrdiff_t>(at);
  const std::string_view level = kLevels[seed / 512 % kLevels.size()];
  switch (seed % 4) {
    case 0:
      levels.erase(place);
      break;
    case 1:
      levels[at] = level;
      break;
    default:
      levels.insert(place + 1, std::string(level));
      break;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  if (seed % 8 < 4 || size < 2) {
    return LLVMFuzzerMutate(data, size, most);
  }
  // The first byte is no part of the command.
  std::vector<std::string> levels = levelsOf({reinterpret_cast<const char*>(data) + 1, size - 1});
  change(levels, seed);
  std::string command;
  for (const std::string& level : levels) {
    command += level + "\\";
  }
  command.resize(command.empty() ? 0 : command.size() - 1);
  size = std::min(command.size() + 1, most);
  std::copy_n(command.begin(), size - 1, data + 1);
  return size;
}
