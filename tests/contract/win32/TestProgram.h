#pragma once

#include <string>

namespace trelv::contract {

/// Full path of the running test program. A copy of it under any other name is the small program
/// that the suite starts, see ContractMachine::putProgram.
std::wstring testProgramPath();

/// Environment variable with the name of an event that the small program waits for before it does
/// anything; 10 s at most.
constexpr const wchar_t* kWaitForEvent = L"TRELV_TEST_WAIT";

}  // namespace trelv::contract
