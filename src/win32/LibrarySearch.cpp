#include "win32/LibrarySearch.h"

#include <windows.h>

#include <bit>

namespace trelv::win32 {
namespace {

constexpr DWORD kSystemFolder = 0x800;

using SetDefaultFolders = BOOL WINAPI(DWORD folders);

/// Null on systems that lack it.
SetDefaultFolders* setDefaultFolders() {
  return std::bit_cast<SetDefaultFolders*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories"));
}

}  // namespace

void searchLibrariesOfTheSystemOnly() {
  SetDefaultFolders* const set = setDefaultFolders();
  if (set == nullptr || set(kSystemFolder) == FALSE) {
    SetDllDirectoryW(L"");
  }
}

OwnLibrarySearchSuspended::OwnLibrarySearchSuspended() {
  if (setDefaultFolders() == nullptr) {
    SetDllDirectoryW(nullptr);
  }
}

OwnLibrarySearchSuspended::~OwnLibrarySearchSuspended() {
  if (setDefaultFolders() == nullptr) {
    SetDllDirectoryW(L"");
  }
}

}  // namespace trelv::win32
