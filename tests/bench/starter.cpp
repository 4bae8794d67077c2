// The empty program, except that it starts the program of its command line and does not wait for
// it: what a start costs whose end is another start.
#include <windows.h>

#include <string>

namespace {

/// Read at run time only, so that the import stays although the function is never called.
volatile bool neverSet = false;

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR arguments, int) {
  if (neverSet) {
    RegCloseKey(nullptr);
  }
  std::wstring commandLine = arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &process) == FALSE) {
    return 1;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return 0;
}
