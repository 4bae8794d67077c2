// Keeps a file to itself for a moment, as a scanner does: keeper.exe MILLISECONDS SHARING RUNNING
// FILE opens FILE without sharing it ("none"), or so that others may only read it ("read"), makes
// the file RUNNING, and lets go when the time is over. Exit code 0, or 3 where the file cannot be
// opened.
#include <windows.h>

#include <string>

int wmain(int count, wchar_t** words) {
  if (count < 5) {
    return 2;
  }
  const DWORD sharing = std::wstring(words[2]) == L"read" ? FILE_SHARE_READ : 0;
  const HANDLE kept = CreateFileW(words[4], GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (kept == INVALID_HANDLE_VALUE) {
    return 3;
  }
  CloseHandle(CreateFileW(words[3], GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                          nullptr));
  Sleep(std::stoul(words[1]));
  CloseHandle(kept);
  return 0;
}
