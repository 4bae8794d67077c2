// Stands in for 7-Zip with a pack that takes long: writes a numbered file into the set-up folder
// below the output folder every 50 ms, for 20 s.
#include <windows.h>

#include <string>

int wmain(int count, wchar_t** words) {
  std::wstring folder;
  for (int i = 1; i < count; ++i) {
    if (std::wstring(words[i]).rfind(L"-o", 0) == 0) {
      folder = words[i] + 2;
    }
  }
  for (const wchar_t* const level : {L"\\prg", L"\\com", L"\\setup", L"\\aggdovra"}) {
    folder += level;
    CreateDirectoryW(folder.c_str(), nullptr);
  }
  for (int i = 0; i < 400; ++i) {
    const std::wstring path = folder + L"\\" + std::to_wstring(i) + L".txt";
    CloseHandle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    Sleep(50);
  }
  return 0;
}
