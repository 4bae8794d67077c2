#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "base/ProgramState.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"
#include "platform/Program.h"
#include "sim/SimMachine.h"
#include "startup/modError.h"
#include "startup/modMain.h"
#include "support/PatientMachine.h"

namespace trelv::tests {

/// One process of the manager on a simulated machine, put together like the shipped program: real
/// run log, error reporter, patient files, file-system object and ini reader. Several may live on
/// one machine, one after the other or at once, and several machines may share disks.
class RealProgram {
 public:
  explicit RealProgram(sim::SimMachine& machine)
      : machine_(machine),
        patient_(machine.machine()),
        fileSystem_(patient_.machine().files),
        configurationFiles_(patient_.machine()),
        program_{patient_.machine(), state_, log_, log_, fileSystem_, configurationFiles_} {
    log_.attach(program_);
  }
  RealProgram(const RealProgram&) = delete;
  RealProgram& operator=(const RealProgram&) = delete;

  operator Program&() { return program_; }
  Program& program() { return program_; }
  ProgramState& state() { return state_; }
  modError::LogAndReporter& log() { return log_; }
  sim::SimMachine& machine() { return machine_; }

  /// Starts the manager with these raw arguments and returns when it has ended.
  void run(const std::string& arguments) {
    machine_.setArguments(arguments);
    modMain::Main(program_);
  }

  /// The whole run log as its bytes; empty when there is none.
  std::string logBytes() const {
    const std::string& file = state_.runLog.logFile;
    return !file.empty() && machine_.fileExists(file) ? machine_.fileText(file) : std::string();
  }

  /// The lines of the run log in UTF-8 without their dates.
  std::vector<std::string> logLines() const {
    const std::string separator = " -- ";
    std::istringstream text(machine_.locale().fromAnsi(logBytes()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
      if (!line.empty() && line.back() == '\r') {
        line.pop_back();
      }
      const std::size_t at = line.find(separator);
      lines.push_back(at == std::string::npos ? line : line.substr(at + separator.size()));
    }
    return lines;
  }

 private:
  sim::SimMachine& machine_;
  PatientMachine patient_;
  ProgramState state_;
  modError::LogAndReporter log_;
  FileSystemObject fileSystem_;
  ConfigurationFiles configurationFiles_;
  Program program_;
};

}  // namespace trelv::tests
