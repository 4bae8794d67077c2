#include "win32/ProgramPath.h"

#include <windows.h>

#include "base/SystemCode.h"
#include "win32/GrowingText.h"

namespace trelv::win32 {
namespace {

constexpr const wchar_t* kPrefix = L"\\\\?\\";
constexpr const wchar_t* kShare = L"UNC\\";

/// Takes `beginning` away where the text has it.
bool loses(std::wstring& text, const std::wstring& beginning) {
  const bool has = text.compare(0, beginning.size(), beginning) == 0;
  text.erase(0, has ? beginning.size() : 0);
  return has;
}

bool beginsWithDrive(const std::wstring& path) { return path.size() > 1 && path[1] == L':'; }

/// Some systems drop the first part of the prefix of a share by themselves.
std::wstring withoutPrefix(const std::wstring& reported) {
  std::wstring rest = reported;
  const bool prefixed = loses(rest, kPrefix);
  if (loses(rest, kShare)) {
    return L"\\\\" + rest;
  }
  return prefixed && beginsWithDrive(rest) ? rest : reported;
}

}  // namespace

std::wstring programPath(const std::wstring& reported) {
  std::wstring path = withoutPrefix(reported);
  // Looking it up costs a start some reading of folders.
  if (path.find(L'~') != std::wstring::npos) {
    const std::wstring given = path;
    growingText(path, [&given](wchar_t* buffer, DWORD size) {
      return called(GetLongPathNameW, given.c_str(), buffer, size);
    });
  }
  return path;
}

}  // namespace trelv::win32
