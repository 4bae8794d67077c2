#include "win32/Win32Clock.h"

#include <windows.h>

namespace trelv::win32 {
namespace {

machine::LocalTime fromSystem(const SYSTEMTIME& time) {
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

}  // namespace

machine::LocalTime Win32Clock::now() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  return fromSystem(time);
}

machine::LocalTime Win32Clock::localTime(std::uint64_t moment) {
  constexpr unsigned kHighBits = 32;
  const FILETIME universal{static_cast<DWORD>(moment), static_cast<DWORD>(moment >> kHighBits)};
  FILETIME local{};
  SYSTEMTIME time{};
  FileTimeToLocalFileTime(&universal, &local);
  FileTimeToSystemTime(&local, &time);
  return fromSystem(time);
}

void Win32Clock::pause(std::uint32_t milliseconds) { Sleep(milliseconds); }

}  // namespace trelv::win32
