#pragma once

#include "platform/Program.h"

/// Where each start begins: the command line is read here and decides what is done.
namespace trelv::modMain {

/// What the composition root calls. Learns what machine this is, reads the command line, fills
/// ProgramState::startup and runs the procedure of the mode. Never raises: of a failure that comes
/// this far the user is told in a box, and the log has its line.
void Main(Program& program);

}  // namespace trelv::modMain
