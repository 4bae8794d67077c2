// A library that somebody has put where the manager must not take it from: tells who loaded it in a
// file of its own name with the ending ".caricata.txt".
#include <windows.h>

#include <string>

namespace {

std::wstring pathOf(HMODULE module) {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

void tell(HMODULE library) {
  const std::wstring loader = pathOf(nullptr);
  const HANDLE file = CreateFileW((pathOf(library) + L".caricata.txt").c_str(), GENERIC_WRITE, 0,
                                  nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  WriteFile(file, loader.data(), static_cast<DWORD>(loader.size() * sizeof(wchar_t)), &written,
            nullptr);
  CloseHandle(file);
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    tell(library);
  }
  return TRUE;
}

extern "C" int __stdcall Nothing() { return 0; }
