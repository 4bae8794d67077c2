#pragma once

#include <string>

namespace trelv::win32 {

/// The path of a program as the system reports it (it repeats how the program was started), in the
/// form that other paths are joined to: without the prefix under which ".." means nothing, and with
/// long names. A name that cannot be looked up stays as it is.
std::wstring programPath(const std::wstring& reported);

}  // namespace trelv::win32
