#include "app/WindowsProgram.h"

namespace trelv::app {

WindowsProgram::WindowsProgram(machine::Machine machine)
    : machine_(machine),
      fileSystem_(machine_.files),
      configurationFiles_(machine_),
      program_{machine_,        state_,      logAndReporter_,
               logAndReporter_, fileSystem_, configurationFiles_} {
  logAndReporter_.attach(program_);
}

}  // namespace trelv::app
