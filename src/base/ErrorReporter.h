#pragma once

#include <cstdint>
#include <string>

#include "base/RuntimeError.h"

namespace trelv {

/// How a failure is shown: in a form of ours, or with the words that an auxiliary tool left behind.
namespace report_kind {
constexpr std::int32_t kProgramError = 0;
constexpr std::int32_t kComponentsTool = 1;
constexpr std::int32_t kUpdateTool = 2;
constexpr std::int32_t kConfigurationFile = 3;
}  // namespace report_kind

/// Tells the user of a failure that nobody reckoned with. Raises nothing: a report that fails ends.
class ErrorReporter {
 public:
  virtual ~ErrorReporter() = default;
  /// Shows the report. `module` and `procedure` name who failed, `message` is the caller's own
  /// text, `kind` a value of report_kind (any other is shown like a tool's), `failure` what was
  /// caught (a default-made one where a call only answered "no"). Answers what RunLogState keeps
  /// as reporterChoice.
  virtual std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                        const std::string& message, std::int32_t kind,
                                        const RuntimeError& failure) = 0;
};

}  // namespace trelv
