#include "win32/Win32VersionResources.h"

#include <windows.h>

#include <string>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"

namespace trelv::win32 {
namespace {

machine::FileVersion numbersOf(const VS_FIXEDFILEINFO& fixed) {
  return {HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS),
          HIWORD(fixed.dwFileVersionLS), LOWORD(fixed.dwFileVersionLS)};
}

}  // namespace

SystemCode Win32VersionResources::read(const std::string& path, machine::FileVersion& version) {
  const std::wstring name = filePath(path);
  DWORD ignored = 0;
  const Called<DWORD> size = called(GetFileVersionInfoSizeW, name, &ignored);
  if (size.answer == 0) {
    return size.failure();
  }
  std::string resource(size.answer, '\0');
  const SystemCode code = codeOf(GetFileVersionInfoW, name, 0, size.answer, resource.data());
  if (code != system_code::kSuccess) {
    return code;
  }
  void* block = nullptr;
  UINT length = 0;
  if (VerQueryValueW(resource.data(), L"\\", &block, &length) == FALSE ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    return system_code::kResourceDataNotFound;
  }
  version = numbersOf(*static_cast<const VS_FIXEDFILEINFO*>(block));
  return system_code::kSuccess;
}

}  // namespace trelv::win32
