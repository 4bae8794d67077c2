#pragma once

namespace trelv::win32 {

/// Runs the pack decoder with the arguments of the process (the first is the program's own name):
/// writes its line to standard error and answers the exit code.
int runDecoder(int count, wchar_t** arguments);

}  // namespace trelv::win32
