#pragma once

// What the programs that tools/bench compares have in common: files that are read whole, and a log
// that is written as the manager writes it, each line with one opening, one write and one closing.
#include <windows.h>

#include <string>

namespace trelv::bench {

constexpr ULONGLONG kMostLogBytes = 102400;

/// Empty when the file cannot be read.
inline std::string readWhole(const wchar_t* file) {
  const HANDLE handle =
      CreateFileW(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  std::string bytes(handle != INVALID_HANDLE_VALUE ? GetFileSize(handle, nullptr) : 0, '\0');
  DWORD got = 0;
  ReadFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
  CloseHandle(handle);
  bytes.resize(got);
  return bytes;
}

/// The log is thrown away when it is longer than the manager lets its own become.
inline void throwAwayLongLog(const wchar_t* log) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (GetFileAttributesExW(log, GetFileExInfoStandard, &data) != FALSE &&
      data.nFileSizeLow > kMostLogBytes) {
    DeleteFileW(log);
  }
}

inline std::string ansi(const wchar_t* text) {
  char bytes[200] = {};
  WideCharToMultiByte(CP_ACP, 0, text, -1, bytes, sizeof bytes - 1, nullptr, nullptr);
  return bytes;
}

/// Date and time in the user's form, made anew when the second has changed.
inline const std::string& dateText() {
  static std::string text;
  static WORD second = 60;
  SYSTEMTIME now{};
  GetLocalTime(&now);
  if (now.wSecond != second) {
    wchar_t date[80] = {};
    wchar_t time[80] = {};
    GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &now, nullptr, date, 80);
    GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &now, nullptr, time, 80);
    text = ansi(date) + " " + ansi(time);
    second = now.wSecond;
  }
  return text;
}

inline bool append(const wchar_t* log, const std::string& bytes) {
  const HANDLE handle = CreateFileW(log, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return false;
  }
  DWORD written = 0;
  const bool done =
      WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != FALSE;
  CloseHandle(handle);
  return done && written == bytes.size();
}

/// The lines of `texts`, which end with CR LF, each behind the date in the user's form. False when
/// one could not be written, or there is none.
inline bool writeLines(const std::string& texts, const wchar_t* log) {
  for (std::size_t begin = 0; begin < texts.size();) {
    const std::size_t end = texts.find("\r\n", begin);
    if (end == std::string::npos ||
        !append(log, dateText() + " -- " + texts.substr(begin, end + 2 - begin))) {
      return false;
    }
    begin = end + 2;
  }
  return !texts.empty();
}

}  // namespace trelv::bench
