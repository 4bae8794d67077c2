#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "sim/SimMachine.h"

namespace trelv::tests {

/// The files of a pack: path below the output folder, content.
using PackContent = std::vector<std::pair<std::string, std::string>>;

/// Bytes of a pack that the simulated 7-Zip and decoder open. With an exit code other than 0 they
/// write its files all the same, as 7-Zip does with a damaged pack.
std::string packBytes(const PackContent& content, std::uint32_t exitCode = 0);

/// 7-Zip and the decoder beside the manager of a simulated machine. They understand packBytes();
/// a pack that is missing or no such text ends with 2 and writes nothing.
class PackPrograms {
 public:
  explicit PackPrograms(sim::SimMachine& machine,
                        const std::string& managerFolder = "C:\\Lumo\\Programmi");

  static constexpr const char* kSevenZip = "C:\\Lumo\\Programmi\\7z.exe";
  static constexpr const char* kDecoder = "C:\\Lumo\\Programmi\\qalbunex.exe";

  /// Runs after each file that a program wrote, with its path.
  std::function<void(const std::string&)> onFile;
  /// The same with the machine that the program runs on: processes of one computer share its disk,
  /// and with it the programs.
  std::function<void(sim::SimMachine&, const std::string&)> onFileOf;

 private:
  std::uint32_t unpack(sim::SimProcess& process, const std::string& pack,
                       const std::string& output);
};

}  // namespace trelv::tests
