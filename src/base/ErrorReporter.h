#pragma once

#include <cstdint>
#include <string>

#include "base/RuntimeError.h"

namespace trelv {

/// What kind of report an unexpected failure gets. Values as stored and passed by callers.
namespace report_kind {
constexpr std::int32_t kProgramError = 0;
constexpr std::int32_t kComponentsTool = 1;
constexpr std::int32_t kUpdateTool = 2;
constexpr std::int32_t kConfigurationFile = 3;
}  // namespace report_kind

/// The one entry for reporting an unexpected failure to the user. Never raises to its caller.
class ErrorReporter {
 public:
  virtual ~ErrorReporter() = default;
  /// Shows the report. `module` and `procedure` name who failed, `message` is the caller's own
  /// text, `kind` a value of report_kind (others count as custom), `failure` the failure being
  /// handled (a default-made one where a call only answered "no"). Gives the reporter choice.
  virtual std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                        const std::string& message, std::int32_t kind,
                                        const RuntimeError& failure) = 0;
};

}  // namespace trelv
