#pragma once

#include <string>

namespace trelv::contract {

/// Full path of the running test program. A copy of it under any other name is the small program
/// that the suite starts, see ContractMachine::putProgram.
std::wstring testProgramPath();

}  // namespace trelv::contract
