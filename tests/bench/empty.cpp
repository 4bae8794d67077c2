// What any start costs: a program without windows that loads the libraries that the manager loads
// at its start (kernel, advapi32, C runtime), and does nothing. The manager cannot be faster.
#include <windows.h>

namespace {

/// Read at run time only, so that the import stays although the function is never called.
volatile bool neverSet = false;

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  if (neverSet) {
    RegCloseKey(nullptr);
  }
  return 0;
}
