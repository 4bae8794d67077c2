// A set-up that takes its time: makes the file named first and ends once the file named second is
// there (exit code 0), or after a minute (exit code 1).
#include <windows.h>

int wmain(int count, wchar_t** words) {
  if (count < 3) {
    return 2;
  }
  CloseHandle(CreateFileW(words[1], GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                          nullptr));
  for (int i = 0; i < 3000; ++i) {
    if (GetFileAttributesW(words[2]) != INVALID_FILE_ATTRIBUTES) {
      return 0;
    }
    Sleep(20);
  }
  return 1;
}
