#include "win32/decoder/Win32PackInput.h"

#include <utility>

#include "win32/decoder/DecoderPath.h"

namespace trelv::win32 {

SystemCode Win32PackInput::open(const std::string& path,
                                std::unique_ptr<decoder::PackInput>& pack) {
  const std::wstring full = fullPath(path);
  if (full.empty()) {
    return system_code::kBadPathname;
  }
  OwnedFile file(CreateFileW(literalPath(full).c_str(), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file) {
    return GetLastError();
  }
  pack = std::make_unique<Win32PackInput>(path, std::move(file));
  return system_code::kSuccess;
}

SystemCode Win32PackInput::read(char* buffer, std::size_t size, std::size_t& count) {
  DWORD got = 0;
  if (ReadFile(file_.get(), buffer, static_cast<DWORD>(size), &got, nullptr) == FALSE) {
    return GetLastError();
  }
  count = got;
  return system_code::kSuccess;
}

}  // namespace trelv::win32
