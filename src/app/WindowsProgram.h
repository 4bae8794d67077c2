#pragma once

#include "base/ProgramState.h"
#include "machine/Machine.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"
#include "platform/Program.h"
#include "startup/modError.h"

namespace trelv::app {

/// Puts one program together over a machine: log and reports, file-system object, kept ini files.
class WindowsProgram {
 public:
  explicit WindowsProgram(machine::Machine machine);
  WindowsProgram(const WindowsProgram&) = delete;
  WindowsProgram& operator=(const WindowsProgram&) = delete;

  Program& program() { return program_; }

 private:
  machine::Machine machine_;
  ProgramState state_;
  modError::LogAndReporter logAndReporter_;
  FileSystemObject fileSystem_;
  ConfigurationFiles configurationFiles_;
  Program program_;
};

}  // namespace trelv::app
