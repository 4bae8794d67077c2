#include "win32/decoder/Win32PackInput.h"

#include <utility>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"

namespace trelv::win32 {

SystemCode Win32PackInput::open(const std::string& path,
                                std::unique_ptr<decoder::PackInput>& pack) {
  const std::wstring full = fullPath(path);
  if (full.empty()) {
    return system_code::kBadPathname;
  }
  OwnedFile file;
  const SystemCode code = obtain(file, CreateFileW, literalPath(full), GENERIC_READ,
                                 FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (code != system_code::kSuccess) {
    return code;
  }
  pack = std::make_unique<Win32PackInput>(path, std::move(file));
  return system_code::kSuccess;
}

SystemCode Win32PackInput::read(char* buffer, std::size_t size, std::size_t& count) {
  DWORD got = 0;
  const SystemCode code =
      codeOf(ReadFile, file_.get(), buffer, static_cast<DWORD>(size), &got, nullptr);
  if (code == system_code::kSuccess) {
    count = got;
  }
  return code;
}

}  // namespace trelv::win32
