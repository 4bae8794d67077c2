#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace trelv::win32 {

/// Lets the user choose a folder of a drive or share in the system's own dialog, over `owner` (may
/// be null) and with this sentence above the folders; it opens at `first` where that is a folder.
/// The folder's path, or nothing when the user cancelled or the dialog could not be shown.
std::optional<std::string> chooseFolder(HWND owner, const std::string& sentence,
                                        const std::string& first);

}  // namespace trelv::win32
