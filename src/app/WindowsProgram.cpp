#include "app/WindowsProgram.h"

namespace trelv::app {

WindowsProgram::WindowsProgram(machine::Machine machine)
    : machine_(machine),
      fileSystem_([this] { return std::make_unique<FileSystemObject>(machine_.files); },
                  logAndReporter_),
      configurationFiles_(machine_),
      program_{machine_,        state_,      logAndReporter_,
               logAndReporter_, fileSystem_, configurationFiles_} {
  logAndReporter_.attach(program_);
}

}  // namespace trelv::app
