// A support library of the host suite for tests: answers as the section [tovrautil] of
// "tovrautil.ini" beside it says (keys "administrator", 0 or 1, and "temporary") and adds one line
// to "tovrautil.txt" for each call. ErrorModeAtLoad tells the process's error mode when it was
// loaded.
#include <windows.h>

#include <string>

namespace {

std::string besideLibrary(const std::string& name) {
  HMODULE module = nullptr;
  static const char kAnchor = 0;
  GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      &kAnchor, &module);
  std::string path(32768, '\0');
  path.resize(GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of('\\') + 1) + name;
}

void note(const std::string& line) {
  const HANDLE file =
      CreateFileA(besideLibrary("tovrautil.txt").c_str(), FILE_APPEND_DATA, FILE_SHARE_READ,
                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  const std::string bytes = line + "\r\n";
  DWORD written = 0;
  WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  CloseHandle(file);
}

UINT errorModeAtLoad = 0;

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    errorModeAtLoad = SetErrorMode(0);
    SetErrorMode(errorModeAtLoad);
  }
  return TRUE;
}

extern "C" UINT __stdcall ErrorModeAtLoad() { return errorModeAtLoad; }

extern "C" int __stdcall IsAdministrator() {
  note("IsAdministrator");
  return static_cast<int>(GetPrivateProfileIntA("tovrautil", "administrator", 1,
                                                besideLibrary("tovrautil.ini").c_str()));
}

extern "C" int __stdcall GetPelanTempPath(const char* first, char* buffer) {
  note(std::string("GetPelanTempPath '") + first + "'");
  char folder[MAX_PATH] = {};
  GetPrivateProfileStringA("tovrautil", "temporary", "", folder, sizeof folder,
                           besideLibrary("tovrautil.ini").c_str());
  lstrcpyA(buffer, folder);
  return 0;
}
