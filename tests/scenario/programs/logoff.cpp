// Tells the manager that the session of Windows ends, as Windows does: asks its window first, then
// says it, and ends with what the question was answered with (1: it may end). 2: there is no such
// window, 3: the manager went on.
#include <windows.h>

int main() {
  const HWND window = FindWindowW(L"TrelvManagerSession", L"TrelvManager");
  if (window == nullptr) {
    return 2;
  }
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  const HANDLE manager = OpenProcess(SYNCHRONIZE, FALSE, process);
  const LRESULT may = SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
  SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  return WaitForSingleObject(manager, 5000) == WAIT_OBJECT_0 ? static_cast<int>(may) : 3;
}
