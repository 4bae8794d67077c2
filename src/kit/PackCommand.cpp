#include "kit/PackCommand.h"

#include <optional>
#include <vector>

#include "base/Text.h"

namespace trelv::kit {
namespace {

using overlay::Unpacking;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// The texts in quotes, in order, and what stands before, between and behind them.
struct Parts {
  std::vector<std::string> inQuotes;
  std::vector<std::string> outside;
};

Parts partsOf(const std::string& commandLine) {
  Parts parts;
  std::string part;
  bool inside = false;
  for (const char c : commandLine + "\"") {
    if (c == '"') {
      (inside ? parts.inQuotes : parts.outside).push_back(part);
      part.clear();
      inside = !inside;
    } else {
      part += c;
    }
  }
  return parts;
}

bool isProgram(const Parts& parts, const std::string& path) {
  return parts.inQuotes.size() == 3 && equalNoCase(parts.inQuotes[0], path);
}

const std::vector<std::string> kSevenZip{"", " x -y -o", " ", ""};
const std::vector<std::string> kDecoder{"", " ", " ", ""};

}  // namespace

overlay::FindUnpacking packCommands(const std::string& managerFolder) {
  return [managerFolder](const std::string& commandLine) -> std::optional<Unpacking> {
    const Parts parts = partsOf(commandLine);
    if (isProgram(parts, managerFolder + "\\7z.exe") && parts.outside == kSevenZip) {
      return Unpacking{parts.inQuotes[0], parts.inQuotes[2], parts.inQuotes[1],
                       [](const std::string& program, const std::string& pack,
                          const std::string& output) -> std::string {
                         return quoted(program) + " x -y -o" + quoted(output) + " " + quoted(pack);
                       }};
    }
    if (isProgram(parts, managerFolder + "\\qalbunex.exe") && parts.outside == kDecoder) {
      return Unpacking{parts.inQuotes[0], parts.inQuotes[1], parts.inQuotes[2],
                       [](const std::string& program, const std::string& pack,
                          const std::string& output) -> std::string {
                         return quoted(program) + " " + quoted(pack) + " " + quoted(output);
                       }};
    }
    return std::nullopt;
  };
}

}  // namespace trelv::kit
