// Keeps a file to itself: opens the file named first without sharing it, makes the file named
// second and ends once the one named third is there (exit code 0), or after a minute (exit code 1).
#include <windows.h>

int wmain(int count, wchar_t** words) {
  if (count < 4) {
    return 2;
  }
  const HANDLE held = CreateFileW(words[1], GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (held == INVALID_HANDLE_VALUE) {
    return 3;
  }
  CloseHandle(CreateFileW(words[2], GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                          nullptr));
  for (int i = 0; i < 3000; ++i) {
    if (GetFileAttributesW(words[3]) != INVALID_FILE_ATTRIBUTES) {
      return 0;
    }
    Sleep(20);
  }
  return 1;
}
