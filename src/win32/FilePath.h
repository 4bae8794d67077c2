#pragma once

#include <string>

/// The only place where paths become what the file functions of Windows take.
namespace trelv::win32 {

/// A path (UTF-8) for a file function. As it is where that is short enough for every one of them;
/// a longer one in its literal form, with "/", "." and ".." and the current folder resolved before.
/// A path that is literal already stays as it is.
std::wstring filePath(const std::string& path);

/// The full path in Windows' words, without trailing backslash except for a root; empty when
/// Windows cannot tell it, and for a path with a NUL inside.
std::wstring fullPath(const std::string& path);

/// A full path so that Windows takes it as it stands ("\\?\C:\a", "\\?\UNC\server\share\a"): no
/// length of 260, no devices, no blanks or points dropped at the end of names.
std::wstring literalPath(const std::wstring& fullPath);

}  // namespace trelv::win32
