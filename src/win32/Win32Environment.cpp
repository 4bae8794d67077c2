#include "win32/Win32Environment.h"

#include <windows.h>

#include "win32/GrowingText.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {

bool Win32Environment::get(const std::string& name, std::string& value) {
  std::string found;
  const SystemCode code = growingText(found, [&](char* buffer, DWORD size) {
    return called(GetEnvironmentVariableA, ansi(name), buffer, size);
  });
  if (code != system_code::kSuccess) {
    return false;
  }
  value = fromAnsi(found);
  return true;
}

bool Win32Environment::set(const std::string& name, const std::string& value) {
  return SetEnvironmentVariableA(ansi(name).c_str(), ansi(value).c_str()) != FALSE;
}

}  // namespace trelv::win32
