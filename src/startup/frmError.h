#pragma once

#include <string>

#include "machine/Form.h"
#include "platform/Program.h"

namespace trelv {

/// What the error form shows, one text box each.
struct ErrorRecord {
  /// Headline.
  std::string label;
  /// Executable name of the program.
  std::string project;
  std::string module;
  std::string procedure;
  /// Source, number and description of what was caught.
  std::string source;
  std::string code;
  std::string description;
  /// What the procedure that failed has to say.
  std::string internalDescription;
  /// Last log line.
  std::string trace;
};

/// The form of an unexpected failure. Its buttons close it and open the run log.
class frmError : public machine::Form {
 public:
  frmError(Program& program, ErrorRecord record);

  std::string name() const override { return "frmError"; }
  /// Fills the boxes and adds date and time to the title.
  void loaded(machine::FormWindow& window) override;
  void clicked(machine::FormWindow& window, const std::string& control) override;
  void closeRequested(machine::FormWindow& window) override;

 private:
  void openLog();

  Program& program_;
  ErrorRecord record_;
};

}  // namespace trelv
