#pragma once

#include <string>

namespace trelv {

/// The trail of a start. No call raises: where the line cannot be written it is lost, and whoever
/// wrote it does not learn of it.
class RunLog {
 public:
  virtual ~RunLog() = default;
  /// Adds `text` (UTF-8) as one line, to which date and line end are put here, and tells it to the
  /// form in front, if that has a progress display.
  virtual void WriteLog(const std::string& text) = 0;
  /// Changes over to the file `logFile` (full path) first, for good.
  virtual void WriteLog(const std::string& text, const std::string& logFile) = 0;
};

}  // namespace trelv
