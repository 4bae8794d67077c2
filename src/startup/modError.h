#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/ErrorReporter.h"
#include "base/RunLog.h"
#include "platform/Program.h"

/// The run log and the error reporter.
namespace trelv::modError {

/// Log and reporter of one process. Both need the program they serve, and the program refers to
/// them: attach() closes the ring once the composition root has made both. Lines before that are
/// lost.
class LogAndReporter : public RunLog, public ErrorReporter {
 public:
  void attach(Program& program) { program_ = &program; }

  void WriteLog(const std::string& text) override;
  void WriteLog(const std::string& text, const std::string& logFile) override;

  std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                const std::string& message, std::int32_t kind,
                                const RuntimeError& failure) override;

 private:
  Program* program_ = nullptr;
};

}  // namespace trelv::modError
