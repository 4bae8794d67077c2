#pragma once

#include <string>

namespace trelv::win32 {

/// The full path in Windows' words, without trailing backslash except for a root; empty when
/// Windows cannot tell it.
std::wstring fullPath(const std::string& path);

/// A full path so that Windows takes it as it stands: no length of 260, no devices, no blanks or
/// points dropped at the end of names.
std::wstring literalPath(const std::wstring& fullPath);

}  // namespace trelv::win32
