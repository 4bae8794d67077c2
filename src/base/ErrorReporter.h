#pragma once

#include <cstdint>
#include <string>

#include "base/RuntimeError.h"

namespace trelv {

/// How a failure is shown: in a form of ours, or with the words that an auxiliary tool left behind.
/// Support knows the numbers.
enum class ReportKind : std::int32_t {
  ProgramError = 0,
  ComponentsTool = 1,
  UpdateTool = 2,
  ConfigurationFile = 3
};

/// Tells the user of a failure that nobody reckoned with. Raises nothing: a report that fails ends.
class ErrorReporter {
 public:
  virtual ~ErrorReporter() = default;
  /// Shows the report. `module` and `procedure` name who failed, `message` is the caller's own
  /// text, `failure` what was caught (a default-made one where a call only answered "no"). Answers
  /// what RunLogState keeps as reporterChoice.
  virtual std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                        const std::string& message, ReportKind kind,
                                        const RuntimeError& failure) = 0;
};

}  // namespace trelv
