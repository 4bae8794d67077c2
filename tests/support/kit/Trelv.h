#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "kit/CommandLine.h"
#include "machine/Console.h"
#include "machine/FinishedFiles.h"
#include "machine/GivenPaths.h"
#include "sim/SimFileUse.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// Keeps what is written; a person sits in front of it where a test says so.
class FakeConsole : public machine::Console {
 public:
  SystemCode print(std::string_view text) override {
    output += printCode == system_code::kSuccess ? text : "";
    return printCode;
  }
  void complain(std::string_view text) override { errors += text; }
  bool errorIsTerminal() override { return terminal; }
  bool inputIsTerminal() override { return terminal; }
  std::optional<std::string> readLine() override {
    if (input.empty()) {
      return std::nullopt;
    }
    const std::string line = input.front();
    input.erase(input.begin());
    return line;
  }

  std::string output;
  std::string errors;
  std::vector<std::string> input;
  bool terminal = false;
  SystemCode printCode = system_code::kSuccess;
};

/// Full paths stand as they are; others begin in `currentFolder`.
class FakeGivenPaths : public machine::GivenPaths {
 public:
  SystemCode fullPath(const std::string& given, std::string& full) override {
    if (given.empty()) {
      return system_code::kBadPathname;
    }
    full = replaceAll(given, "/", "\\");
    if (full.find(':') == std::string::npos && !full.starts_with("\\\\")) {
      full = currentFolder + "\\" + full;
    }
    while (full.size() > 3 && full.back() == '\\') {
      full.pop_back();
    }
    return system_code::kSuccess;
  }
  SystemCode room(const std::string& /*full*/, std::uint64_t& bytes) override {
    bytes = freeBytes;
    return roomCode;
  }
  char separator() const override { return '\\'; }

  std::uint64_t freeBytes = 1U << 30U;
  SystemCode roomCode = system_code::kSuccess;
  std::string currentFolder = "C:\\Lavoro";
};

/// On the disks of a simulated machine; not among its calls.
class FakeFinishedFiles : public machine::FinishedFiles {
 public:
  explicit FakeFinishedFiles(sim::SimMachine& simMachine) : machine_(simMachine) {}

  SystemCode finish(const std::string& path, std::uint64_t modified) override {
    if (refusal == system_code::kSuccess) {
      machine_.diskOf(path).setModifiedTicks(path, static_cast<sim::FileTicks>(modified));
    }
    return refusal;
  }
  SystemCode moveFolder(const std::string& source, const std::string& target) override {
    sim::SimDisk& disk = machine_.diskOf(source);
    if (refusal != system_code::kSuccess) {
      return refusal;
    }
    if (disk.exists(target)) {
      return system_code::kAlreadyExists;
    }
    copy(disk, source, target);
    disk.removeTree(source);
    return system_code::kSuccess;
  }
  /// In two steps, as Windows does it; `betweenSteps` may end the program in the middle.
  SystemCode replaceFolder(const machine::FolderReplacement& replacement) override {
    const SystemCode code = moveFolder(replacement.target, replacement.aside);
    if (code != system_code::kSuccess) {
      return code;
    }
    if (betweenSteps) {
      betweenSteps();
    }
    return moveFolder(replacement.source, replacement.target);
  }

  std::function<void()> betweenSteps;
  /// What every call answers instead of doing anything.
  SystemCode refusal = system_code::kSuccess;

 private:
  static void copy(sim::SimDisk& disk, const std::string& source, const std::string& target) {
    disk.makeFolders(target);
    for (const std::string& name : disk.names(source)) {
      const std::string from = source + "\\" + name;
      const std::string to = target + "\\" + name;
      if (disk.folderExists(from)) {
        copy(disk, from, to);
        continue;
      }
      disk.put(to, disk.text(from));
      disk.setModifiedTicks(to, disk.modifiedTicks(from));
    }
    disk.setModifiedTicks(target, disk.modifiedTicks(source));
  }

  sim::SimMachine& machine_;
};

/// The second program on a simulated machine.
class Trelv {
 public:
  explicit Trelv(sim::SimMachine& machine)
      : fileUse(machine.volumes(), machine.files(), machine.callLog()),
        finished(machine),
        machine_(machine) {}

  /// Runs it with these arguments; answers its exit code.
  int run(const std::vector<std::string>& arguments) { return run(arguments, kit::verbs()); }
  int run(const std::vector<std::string>& arguments, const std::vector<kit::VerbRow>& table) {
    console.output.clear();
    console.errors.clear();
    kit::Workplace workplace{machine_.machine(), console, paths, fileUse, finished};
    return kit::run(arguments, workplace, table);
  }

  FakeConsole console;
  FakeGivenPaths paths;
  sim::SimFileUse fileUse;
  FakeFinishedFiles finished;

 private:
  sim::SimMachine& machine_;
};

}  // namespace trelv::tests
