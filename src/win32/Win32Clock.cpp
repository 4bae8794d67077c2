#include "win32/Win32Clock.h"

#include <windows.h>

namespace trelv::win32 {

machine::LocalTime Win32Clock::now() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

}  // namespace trelv::win32
