#include "win32/Win32FinishedFiles.h"

#include <windows.h>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"

namespace trelv::win32 {

SystemCode Win32FinishedFiles::finish(const std::string& path, std::uint64_t modified) {
  OwnedFile file;
  // Without the last but one flag a folder cannot be opened.
  const SystemCode code = obtain(file, CreateFileW, filePath(path), FILE_WRITE_ATTRIBUTES,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (code != system_code::kSuccess) {
    return code;
  }
  const FILETIME time{static_cast<DWORD>(modified & 0xFFFFFFFFU),
                      static_cast<DWORD>(modified >> 32U)};
  return codeOf(SetFileTime, file.get(), nullptr, nullptr, &time);
}

SystemCode Win32FinishedFiles::moveFolder(const std::string& source, const std::string& target) {
  return codeOf(MoveFileExW, filePath(source), filePath(target), 0);
}

SystemCode Win32FinishedFiles::replaceFolder(const machine::FolderReplacement& replacement) {
  SystemCode code = moveFolder(replacement.target, replacement.aside);
  if (code != system_code::kSuccess) {
    return code;
  }
  code = moveFolder(replacement.source, replacement.target);
  if (code != system_code::kSuccess) {
    moveFolder(replacement.aside, replacement.target);
  }
  return code;
}

}  // namespace trelv::win32
