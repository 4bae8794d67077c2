#include "win32/decoder/DecoderPath.h"

#include <windows.h>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

bool beginsWith(const std::wstring& text, const wchar_t* beginning) {
  return text.rfind(beginning, 0) == 0;
}

}  // namespace

std::wstring fullPath(const std::string& path) {
  const std::wstring given = wide(path);
  // A NUL would end the path before its end.
  if (given.find(L'\0') != std::wstring::npos) {
    return {};
  }
  const DWORD needed = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  std::wstring full(needed, L'\0');
  const DWORD length = GetFullPathNameW(given.c_str(), needed, full.data(), nullptr);
  full.resize(length < needed ? length : 0);
  while (full.size() > 3 && full.back() == L'\\') {
    full.pop_back();
  }
  return full;
}

std::wstring literalPath(const std::wstring& fullPath) {
  if (beginsWith(fullPath, L"\\\\?\\") || beginsWith(fullPath, L"\\\\.\\")) {
    return fullPath;
  }
  if (beginsWith(fullPath, L"\\\\")) {
    return L"\\\\?\\UNC\\" + fullPath.substr(2);
  }
  return L"\\\\?\\" + fullPath;
}

}  // namespace trelv::win32
