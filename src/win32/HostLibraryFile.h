#pragma once

#include <windows.h>

#include <bit>
#include <string>

#include "base/SystemCode.h"
#include "win32/Owned.h"

namespace trelv::win32 {

/// Where the host suite's libraries may stand: the program's own folder, else the system folder,
/// else the Windows folder; never the current folder. All with trailing backslash.
struct LibraryFolders {
  std::wstring own;
  std::wstring system;
  std::wstring windows;

  /// The folders of this process.
  static LibraryFolders ofThisProcess();
};

/// Bytes behind a buffer that a library of the host's gets, beyond the size that it is told: who
/// writes a little too much destroys nothing.
constexpr std::size_t kRoomBehindBuffers = 4096;

/// One library of the host suite, loaded by its full path at the first use and kept.
class HostLibraryFile {
 public:
  /// `name` is the library's file name.
  HostLibraryFile(const LibraryFolders& folders, const wchar_t* name);

  /// Full path of the library; empty when it stands in none of the folders. Looked up once.
  const std::wstring& path() const { return path_; }

  /// The entry of that name as a function of type `Function` (calling convention included), or
  /// null; `code` then tells why.
  template <class Function>
  Function* entry(const char* name, SystemCode& code) {
    return std::bit_cast<Function*>(address(name, code));
  }

 private:
  FARPROC address(const char* name, SystemCode& code);

  std::wstring path_;
  OwnedLibrary library_;
};

}  // namespace trelv::win32
