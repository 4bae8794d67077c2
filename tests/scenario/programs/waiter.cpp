// A set-up that takes its time: makes the file named first and ends once the file named second is
// there (exit code 0), or after a minute (exit code 1).
#include <windows.h>

#include <string>

namespace {

// Made under another name: a file that is being made gets its date anew after it can be seen, and
// who compares what stood before with what stands after would find it changed.
void makeAtOnce(const std::wstring& path) {
  const std::wstring unfinished = path + L".tmp";
  CloseHandle(CreateFileW(unfinished.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                          FILE_ATTRIBUTE_NORMAL, nullptr));
  MoveFileExW(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING);
}

}  // namespace

int wmain(int count, wchar_t** words) {
  if (count < 3) {
    return 2;
  }
  makeAtOnce(words[1]);
  for (int i = 0; i < 3000; ++i) {
    if (GetFileAttributesW(words[2]) != INVALID_FILE_ATTRIBUTES) {
      return 0;
    }
    Sleep(20);
  }
  return 1;
}
