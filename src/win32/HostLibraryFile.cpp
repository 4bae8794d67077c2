#include "win32/HostLibraryFile.h"

#include "win32/GrowingText.h"

namespace trelv::win32 {
namespace {

std::wstring ownFolder() {
  std::wstring path;
  growingText(path, [](wchar_t* buffer, DWORD size) {
    return called(GetModuleFileNameW, nullptr, buffer, size);
  });
  return path.substr(0, path.rfind(L'\\') + 1);
}

std::wstring systemFolder() {
  std::wstring path;
  growingText(
      path, [](wchar_t* buffer, DWORD size) { return called(GetSystemDirectoryW, buffer, size); });
  return path + L"\\";
}

std::wstring windowsFolder() {
  std::wstring path;
  growingText(path, [](wchar_t* buffer, DWORD size) {
    return called(GetSystemWindowsDirectoryW, buffer, size);
  });
  return path + L"\\";
}

bool isFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// `code` receives the system's answer. A library that is damaged, or lacks one of its own, is an
/// answer like others: without this the system shows a box of its own for it, before ours. Only
/// while loading, because started programs inherit the mode.
OwnedLibrary loaded(const std::wstring& path, SystemCode& code) {
  const UINT before = SetErrorMode(SEM_FAILCRITICALERRORS);
  SetErrorMode(before | SEM_FAILCRITICALERRORS);
  // The library's own dependencies are looked for beside it, not beside this program.
  OwnedLibrary library;
  code = obtain(library, LoadLibraryExW, path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  SetErrorMode(before);
  return library;
}

}  // namespace

LibraryFolders LibraryFolders::ofThisProcess() {
  return {ownFolder(), systemFolder(), windowsFolder()};
}

HostLibraryFile::HostLibraryFile(const LibraryFolders& folders, const wchar_t* name) {
  for (const std::wstring* folder : {&folders.own, &folders.system, &folders.windows}) {
    if (path_.empty() && isFile(*folder + name)) {
      path_ = *folder + name;
    }
  }
}

FARPROC HostLibraryFile::address(const char* name, SystemCode& code) {
  if (!library_) {
    library_ = loaded(path_, code);
  }
  if (!library_) {
    return nullptr;
  }
  const Called<FARPROC> found = called(GetProcAddress, library_.get(), name);
  code = found.answer != nullptr ? system_code::kSuccess : found.failure();
  return found.answer;
}

}  // namespace trelv::win32
