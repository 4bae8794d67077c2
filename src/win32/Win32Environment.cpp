#include "win32/Win32Environment.h"

#include <windows.h>

#include "win32/GrowingText.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {

bool Win32Environment::get(const std::string& name, std::string& value) {
  std::wstring found;
  const SystemCode code = growingText(found, [&](wchar_t* buffer, DWORD size) {
    return called(GetEnvironmentVariableW, wide(name), buffer, size);
  });
  if (code != system_code::kSuccess) {
    return false;
  }
  value = utf8(found);
  return true;
}

bool Win32Environment::set(const std::string& name, const std::string& value) {
  return SetEnvironmentVariableA(ansi(name).c_str(), ansi(value).c_str()) != FALSE;
}

}  // namespace trelv::win32
