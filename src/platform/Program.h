#pragma once

#include "base/ErrorReporter.h"
#include "base/ProgramState.h"
#include "base/RunLog.h"
#include "machine/Machine.h"
#include "platform/ConfigurationFiles.h"
#include "platform/FileSystemObject.h"

namespace trelv {

/// What a procedure of the program works with; passed explicitly to each. References only: the
/// composition root owns the parts. One per process.
struct Program {
  machine::Machine& machine;
  ProgramState& state;
  RunLog& log;
  ErrorReporter& errors;
  FileSystemObject& fileSystem;
  ConfigurationFiles& configurationFiles;
};

}  // namespace trelv
