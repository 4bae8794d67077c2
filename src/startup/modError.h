#pragma once

#include <cstdint>
#include <string>

#include "base/ErrorReporter.h"
#include "base/RunLog.h"
#include "machine/Clock.h"
#include "platform/Program.h"

/// The run log and the error reporter.
namespace trelv::modError {

/// A log that is longer than this when a process writes its first line is deleted, in bytes.
constexpr std::uint64_t kMostLogBytes = 102400;

/// Log and reporter of one process; what they remember lives in ProgramState::runLog. Both need the
/// program they serve, and the program refers to them: attach() closes the ring once the
/// composition root has made both. Lines and reports before that are lost.
class LogAndReporter : public RunLog, public ErrorReporter {
 public:
  /// `program` must outlive every later call.
  void attach(Program& program) { program_ = &program; }

  /// One open, one write and one close per line, since a start writes thousands of them: whether
  /// the log's folder exists is asked at the first line only, and again when a line finds it gone.
  void WriteLog(const std::string& text) override;
  void WriteLog(const std::string& text, const std::string& logFile) override;

  /// Shows the error form or the report of an auxiliary tool.
  /// Without a desktop nothing is shown. Gives the reporter choice of the program's state.
  std::int16_t VisualizzaErrore(const std::string& module, const std::string& procedure,
                                const std::string& message, ReportKind kind,
                                const RuntimeError& failure) override;

  /// Shows what an auxiliary tool (kind 1 "componenti.exe", 2 "compupd.exe") left as first line of
  /// its error file in the log folder, unless it is known to be harmless. Never raises.
  void VisualizzaErroreCustom(const std::string& module, const std::string& procedure,
                              const std::string& message, ReportKind kind,
                              const RuntimeError& failure);

 private:
  void writeLine(const std::string& text);
  void prepareLog();
  void startLogFile();
  void askForLogFolder();
  void makeLogFolder();
  void append(const std::string& text);
  const std::string& dateText();
  void showDebugBox(const std::string& text);

  Program* program_ = nullptr;
  /// The log folder was asked for in this process.
  bool folderAsked_ = false;
  /// The log folder is being made: lines that this writes are lost as long as it does not exist.
  bool makingFolder_ = false;
  /// The last line's second and its text; many lines share one second.
  machine::LocalTime datedTime_;
  std::string dateText_;
};

}  // namespace trelv::modError
