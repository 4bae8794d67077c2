#include "win32/Win32Text.h"

#include <windows.h>

namespace trelv::win32 {
namespace {

/// In any code page, GB 18030 included.
constexpr std::size_t kMostBytesOfACharacter = 4;

std::wstring decode(UINT codePage, std::string_view bytes) {
  // No code page makes more characters than bytes.
  const int length = static_cast<int>(bytes.size());
  std::wstring result(bytes.size(), L'\0');
  const int made = MultiByteToWideChar(codePage, 0, bytes.data(), length, result.data(), length);
  result.resize(static_cast<std::size_t>(made));
  return result;
}

std::string encode(UINT codePage, std::wstring_view text) {
  // UTF-8 lacks nothing, and the system refuses flag and substitute for it; it may also be the
  // ANSI code page that the user chose.
  const bool all = codePage == CP_UTF8 || GetACP() == CP_UTF8;
  const DWORD flags = all ? 0 : WC_NO_BEST_FIT_CHARS;
  const char* const substitute = all ? nullptr : "?";
  std::string result(text.size() * kMostBytesOfACharacter, '\0');
  const int made =
      WideCharToMultiByte(codePage, flags, text.data(), static_cast<int>(text.size()),
                          result.data(), static_cast<int>(result.size()), substitute, nullptr);
  result.resize(static_cast<std::size_t>(made));
  return result;
}

}  // namespace

std::wstring wide(std::string_view text) { return decode(CP_UTF8, text); }

std::string utf8(std::wstring_view text) { return encode(CP_UTF8, text); }

std::string ansi(std::string_view text) { return encode(CP_ACP, wide(text)); }

std::string fromAnsi(std::string_view bytes) { return utf8(decode(CP_ACP, bytes)); }

}  // namespace trelv::win32
