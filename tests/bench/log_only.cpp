// What the log of a start costs: writes the lines of a text file as the manager writes its log,
// each with one opening, one write and one closing, behind the date in the user's form.
//
//   log_only TEXTS LOG
//
// TEXTS: the lines without their dates, code page of the system, ended by CR LF. LOG: the log,
// which is thrown away first when it is longer than the manager lets its own become.
#include <windows.h>

#include <string>

namespace {

constexpr ULONGLONG kMostLogBytes = 102400;

/// Read at run time only, so that the import stays although the function is never called.
volatile bool neverSet = false;

std::string readWhole(const wchar_t* file) {
  const HANDLE handle =
      CreateFileW(file, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  std::string bytes(handle != INVALID_HANDLE_VALUE ? GetFileSize(handle, nullptr) : 0, '\0');
  DWORD got = 0;
  ReadFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
  CloseHandle(handle);
  bytes.resize(got);
  return bytes;
}

void throwAwayLongLog(const wchar_t* log) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (GetFileAttributesExW(log, GetFileExInfoStandard, &data) != FALSE &&
      data.nFileSizeLow > kMostLogBytes) {
    DeleteFileW(log);
  }
}

std::string ansi(const wchar_t* text) {
  char bytes[200] = {};
  WideCharToMultiByte(CP_ACP, 0, text, -1, bytes, sizeof bytes - 1, nullptr, nullptr);
  return bytes;
}

/// Date and time in the user's form, made anew when the second has changed.
const std::string& dateText() {
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

bool append(const wchar_t* log, const std::string& bytes) {
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

bool writeLines(const std::string& texts, const wchar_t* log) {
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

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR arguments, int) {
  if (neverSet) {
    RegCloseKey(nullptr);
  }
  std::wstring texts = arguments;
  const std::size_t blank = texts.find(L' ');
  if (blank == std::wstring::npos) {
    return 1;
  }
  const std::wstring log = texts.substr(blank + 1);
  texts.resize(blank);
  throwAwayLongLog(log.c_str());
  return writeLines(readWhole(texts.c_str()), log.c_str()) ? 0 : 1;
}
