#include "win32/Win32ProfileFiles.h"

#include <windows.h>

#include "win32/Win32Text.h"

namespace trelv::win32 {

std::string Win32ProfileFiles::readValue(const std::string& section, const std::string& key,
                                         const std::string& defaultValue, std::uint32_t size,
                                         const std::string& file) {
  std::string buffer(size, '\0');
  const DWORD length =
      GetPrivateProfileStringA(ansi(section).c_str(), ansi(key).c_str(), ansi(defaultValue).c_str(),
                               buffer.data(), size, ansi(file).c_str());
  buffer.resize(length);
  return fromAnsi(buffer);
}

std::uint32_t Win32ProfileFiles::writeValue(const std::string& section, const std::string& key,
                                            const std::string& value, const std::string& file) {
  return static_cast<std::uint32_t>(WritePrivateProfileStringA(
      ansi(section).c_str(), ansi(key).c_str(), ansi(value).c_str(), ansi(file).c_str()));
}

}  // namespace trelv::win32
