#include "win32/FilePath.h"

#include <windows.h>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

/// Folders are made up to this length: a name of 8.3 has to fit behind it. Files end at 259.
constexpr std::size_t kLongestForAll = 247;

bool beginsWith(const std::wstring& text, const wchar_t* beginning) {
  return text.rfind(beginning, 0) == 0;
}

bool isLiteral(const std::wstring& path) {
  return beginsWith(path, L"\\\\?\\") || beginsWith(path, L"\\\\.\\");
}

/// Does nothing have to be put before it, whatever folder is the current one?
bool isFull(const std::wstring& path) {
  const bool drive = path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
  return drive || beginsWith(path, L"\\\\") || beginsWith(path, L"//");
}

/// In Windows' words; empty when it cannot tell them.
std::wstring resolved(const std::wstring& given) {
  const DWORD needed = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  std::wstring full(needed, L'\0');
  const DWORD length = GetFullPathNameW(given.c_str(), needed, full.data(), nullptr);
  full.resize(length < needed ? length : 0);
  return full;
}

}  // namespace

std::wstring filePath(const std::string& path) {
  std::wstring given = wide(path);
  if (isLiteral(given) || (given.size() <= kLongestForAll && isFull(given))) {
    return given;
  }
  const std::wstring full = resolved(given);
  return full.size() <= kLongestForAll ? given : literalPath(full);
}

std::wstring fullPath(const std::string& path) {
  const std::wstring given = wide(path);
  // A NUL would end the path before its end.
  if (given.find(L'\0') != std::wstring::npos) {
    return {};
  }
  std::wstring full = resolved(given);
  while (full.size() > 3 && full.back() == L'\\') {
    full.pop_back();
  }
  return full;
}

std::wstring literalPath(const std::wstring& fullPath) {
  if (isLiteral(fullPath)) {
    return fullPath;
  }
  if (beginsWith(fullPath, L"\\\\")) {
    return L"\\\\?\\UNC\\" + fullPath.substr(2);
  }
  return L"\\\\?\\" + fullPath;
}

}  // namespace trelv::win32
