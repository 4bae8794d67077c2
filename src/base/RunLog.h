#pragma once

#include <string>

namespace trelv {

/// Where every step is told. One line per call; never raises: a line that cannot be written is
/// lost and the caller goes on.
class RunLog {
 public:
  virtual ~RunLog() = default;
  /// Appends one line (UTF-8, without date and line end) to the run log and shows it in the
  /// progress display of the active form.
  virtual void WriteLog(const std::string& text) = 0;
  /// The same, and makes `logFile` (full path) the log file for this and all later lines.
  virtual void WriteLog(const std::string& text, const std::string& logFile) = 0;
};

}  // namespace trelv
