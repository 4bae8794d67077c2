#pragma once

#include "base/ErrorReporter.h"
#include "base/ProgramState.h"
#include "base/RunLog.h"
#include "machine/Machine.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"
#include "platform/Program.h"

namespace trelv::kit {

/// What the manager's own procedures ask for, over a machine, with neither log nor reports: verbs
/// call those that read.
class QuietProgram {
 public:
  explicit QuietProgram(machine::Machine& machine)
      : fileSystem_(machine.files),
        configurationFiles_(machine),
        program_{machine, state_, silence_, silence_, fileSystem_, configurationFiles_} {}
  QuietProgram(const QuietProgram&) = delete;
  QuietProgram& operator=(const QuietProgram&) = delete;

  Program& program() { return program_; }

 private:
  class Silence : public RunLog, public ErrorReporter {
   public:
    void WriteLog(const std::string& /*text*/) override {}
    void WriteLog(const std::string& /*text*/, const std::string& /*logFile*/) override {}
    std::int16_t VisualizzaErrore(const std::string& /*module*/, const std::string& /*procedure*/,
                                  const std::string& /*message*/, ReportKind /*kind*/,
                                  const RuntimeError& /*failure*/) override {
      return 0;
    }
  };

  ProgramState state_;
  Silence silence_;
  FileSystemObject fileSystem_;
  ConfigurationFiles configurationFiles_;
  Program program_;
};

}  // namespace trelv::kit
