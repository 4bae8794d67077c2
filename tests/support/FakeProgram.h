#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "base/ErrorReporter.h"
#include "base/ProgramState.h"
#include "base/RunLog.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"
#include "platform/Program.h"
#include "sim/SimMachine.h"
#include "support/PatientMachine.h"

namespace trelv::tests {

/// Keeps the log lines instead of writing them.
class FakeRunLog : public RunLog {
 public:
  void WriteLog(const std::string& text) override {
    if (linesWithoutMemory > 0) {
      --linesWithoutMemory;
      throw std::bad_alloc();
    }
    lines.push_back(text);
  }
  void WriteLog(const std::string& text, const std::string& logFile) override {
    files.push_back(logFile);
    WriteLog(text);
  }

  std::vector<std::string> lines;
  /// Log files that callers named.
  std::vector<std::string> files;
  /// So many lines to come find no memory for their text. The log itself swallows that; whoever
  /// puts a line together does not.
  std::size_t linesWithoutMemory = 0;
};

/// One call of the error reporter.
struct FakeReport {
  std::string module;
  std::string procedure;
  std::string message;
  ReportKind kind{};
  RuntimeError failure;
};

/// Keeps the reports instead of showing them.
class FakeErrorReporter : public ErrorReporter {
 public:
  std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                const std::string& message, ReportKind kind,
                                const RuntimeError& failure) override {
    reports.push_back({module, procedure, message, kind, failure});
    return 0;
  }

  std::vector<FakeReport> reports;
};

/// A ready Program over a simulated machine, which it makes unless it is given one. Log lines and
/// reports are kept. Converts to Program&.
class FakeProgram {
 private:
  // Members in order of their making.
  std::unique_ptr<sim::SimMachine> own_;
  std::unique_ptr<PatientMachine> patient_;

 public:
  sim::SimMachine& sim;
  ProgramState state;
  FakeRunLog log;
  FakeErrorReporter errors;
  FileSystemObject fileSystem;
  ConfigurationFiles configurationFiles;
  Program program;

  FakeProgram() : FakeProgram(std::make_unique<sim::SimMachine>()) {}
  explicit FakeProgram(sim::SimMachine& machine) : FakeProgram(machine, machine.machine()) {}
  /// Over a machine of other parts, some of which may be doubles of the test's own.
  FakeProgram(sim::SimMachine& simMachine, machine::Machine& machine)
      : FakeProgram(nullptr, simMachine, std::make_unique<PatientMachine>(machine)) {}
  FakeProgram(const FakeProgram&) = delete;
  FakeProgram& operator=(const FakeProgram&) = delete;

  operator Program&() { return program; }

  const std::vector<std::string>& lines() const { return log.lines; }
  /// All lines as one text, each with a line feed behind it: compares with a text as it is read.
  std::string logText() const {
    std::string text;
    for (const std::string& line : log.lines) {
      text += line + "\n";
    }
    return text;
  }
  const std::vector<FakeReport>& reports() const { return errors.reports; }
  /// The messages of all reports, in order.
  std::vector<std::string> reportTexts() const {
    std::vector<std::string> texts;
    for (const FakeReport& report : errors.reports) {
      texts.push_back(report.message);
    }
    return texts;
  }

 private:
  explicit FakeProgram(std::unique_ptr<sim::SimMachine> machine)
      : FakeProgram(nullptr, *machine, std::make_unique<PatientMachine>(machine->machine())) {
    own_ = std::move(machine);
  }
  FakeProgram(std::nullptr_t, sim::SimMachine& simMachine, std::unique_ptr<PatientMachine> patient)
      : patient_(std::move(patient)),
        sim(simMachine),
        fileSystem(patient_->machine().files),
        configurationFiles(patient_->machine()),
        program{patient_->machine(), state, log, errors, fileSystem, configurationFiles} {}
};

}  // namespace trelv::tests
