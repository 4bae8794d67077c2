#include "win32/Win32Text.h"

#include <windows.h>

namespace trelv::win32 {
namespace {

std::wstring decode(UINT codePage, std::string_view bytes) {
  const int length = static_cast<int>(bytes.size());
  const int needed = MultiByteToWideChar(codePage, 0, bytes.data(), length, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(codePage, 0, bytes.data(), length, result.data(), needed);
  return result;
}

std::string encode(UINT codePage, std::wstring_view text) {
  // UTF-8 lacks nothing, and the system refuses flag and substitute for it; it may also be the
  // ANSI code page that the user chose.
  const bool all = codePage == CP_UTF8 || GetACP() == CP_UTF8;
  const DWORD flags = all ? 0 : WC_NO_BEST_FIT_CHARS;
  const char* const substitute = all ? nullptr : "?";
  const int length = static_cast<int>(text.size());
  const int needed =
      WideCharToMultiByte(codePage, flags, text.data(), length, nullptr, 0, substitute, nullptr);
  std::string result(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(codePage, flags, text.data(), length, result.data(), needed, substitute,
                      nullptr);
  return result;
}

}  // namespace

std::wstring wide(std::string_view text) { return decode(CP_UTF8, text); }

std::string utf8(std::wstring_view text) { return encode(CP_UTF8, text); }

std::string ansi(std::string_view text) { return encode(CP_ACP, wide(text)); }

std::string fromAnsi(std::string_view bytes) { return utf8(decode(CP_ACP, bytes)); }

}  // namespace trelv::win32
