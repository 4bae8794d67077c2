#include "support/PackPrograms.h"

#include <sstream>

namespace trelv::tests {
namespace {

constexpr const char* kMark = "pack ";
constexpr std::uint32_t kNoPack = 2;

}  // namespace

// A line with the exit code, then for each file one with its path and the length of its content,
// and the content.
std::string packBytes(const PackContent& content, std::uint32_t exitCode) {
  std::string bytes = kMark + std::to_string(exitCode) + "\n";
  for (const auto& [path, text] : content) {
    bytes += path + "\n" + std::to_string(text.size()) + "\n" + text;
  }
  return bytes;
}

PackPrograms::PackPrograms(sim::SimMachine& machine, const std::string& managerFolder) {
  // 7z.exe x -y -o"OUT" "ZIP"
  machine.programs().define(
      managerFolder + "\\7z.exe", [this](sim::SimProcess& process) -> std::uint32_t {
        const std::vector<std::string>& arguments = process.arguments();
        const bool understood = arguments.size() == 4 && arguments[0] == "x" &&
                                arguments[1] == "-y" && arguments[2].rfind("-o", 0) == 0;
        constexpr std::uint32_t kCommandLine = 7;
        return understood ? unpack(process, arguments[3], arguments[2].substr(2)) : kCommandLine;
      });
  // qalbunex.exe "PACK" "OUT"
  machine.programs().define(
      managerFolder + "\\qalbunex.exe", [this](sim::SimProcess& process) -> std::uint32_t {
        const std::vector<std::string>& arguments = process.arguments();
        return arguments.size() == 2 ? unpack(process, arguments[0], arguments[1]) : 1;
      });
}

std::uint32_t PackPrograms::unpack(sim::SimProcess& process, const std::string& pack,
                                   const std::string& output) {
  sim::SimMachine& machine = process.machine();
  const std::string source = machine.volumes().fullPath(pack);
  if (!machine.fileExists(source) || machine.fileText(source).rfind(kMark, 0) != 0) {
    return kNoPack;
  }
  std::istringstream text(machine.fileText(source).substr(std::string(kMark).size()));
  std::string line;
  std::getline(text, line);
  const auto exitCode = static_cast<std::uint32_t>(std::stoul(line));
  for (std::string path; std::getline(text, path);) {
    std::getline(text, line);
    std::string content(std::stoul(line), '\0');
    text.read(content.data(), static_cast<std::streamsize>(content.size()));
    const std::string full = output + "\\" + path;
    machine.putFile(full, content);
    if (onFile) {
      onFile(full);
    }
    if (onFileOf) {
      onFileOf(machine, full);
    }
  }
  return exitCode;
}

}  // namespace trelv::tests
