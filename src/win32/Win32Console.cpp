#include "win32/Win32Console.h"

#include <windows.h>

#include <algorithm>

#include "win32/GrowingText.h"
#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

/// A console takes no more in one call.
constexpr std::size_t kMostLetters = 8192;

bool isConsole(HANDLE stream) {
  DWORD mode = 0;
  return GetConsoleMode(stream, &mode) != FALSE;
}

SystemCode writeLetters(HANDLE stream, std::wstring_view letters) {
  while (!letters.empty()) {
    const std::size_t count = std::min(letters.size(), kMostLetters);
    DWORD written = 0;
    const SystemCode code =
        codeOf(WriteConsoleW, stream, letters.data(), static_cast<DWORD>(count), &written, nullptr);
    if (code != system_code::kSuccess) {
      return code;
    }
    letters.remove_prefix(count);
  }
  return system_code::kSuccess;
}

SystemCode writeBytes(HANDLE stream, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    const SystemCode code = codeOf(WriteFile, stream, bytes.data(),
                                   static_cast<DWORD>(bytes.size()), &written, nullptr);
    if (code != system_code::kSuccess || written == 0) {
      return code != system_code::kSuccess ? code : system_code::kWriteFault;
    }
    bytes.remove_prefix(written);
  }
  return system_code::kSuccess;
}

SystemCode write(HANDLE stream, std::string_view text) {
  if (stream == nullptr) {
    return system_code::kSuccess;
  }
  return isConsole(stream) ? writeLetters(stream, wide(text)) : writeBytes(stream, text);
}

/// One letter of a console or one byte of another stream; false at the end.
template <class Letter, class Read>
bool readUntilLineEnd(std::basic_string<Letter>& line, Read&& read) {
  bool any = false;
  for (Letter letter{}; read(letter);) {
    any = true;
    if (letter == Letter('\n')) {
      break;
    }
    line += letter;
  }
  if (!line.empty() && line.back() == Letter('\r')) {
    line.pop_back();
  }
  return any;
}

}  // namespace

Win32Console::Win32Console()
    : input_(GetStdHandle(STD_INPUT_HANDLE)),
      output_(GetStdHandle(STD_OUTPUT_HANDLE)),
      errors_(GetStdHandle(STD_ERROR_HANDLE)),
      nothing_(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                           nullptr, OPEN_EXISTING, 0, nullptr)) {
  if (nothing_) {
    handToPrograms(nothing_.get(), nothing_.get(), nothing_.get());
  }
}

Win32Console::~Win32Console() { handToPrograms(input_, output_, errors_); }

void Win32Console::handToPrograms(HANDLE input, HANDLE output, HANDLE errors) {
  SetStdHandle(STD_INPUT_HANDLE, input);
  SetStdHandle(STD_OUTPUT_HANDLE, output);
  SetStdHandle(STD_ERROR_HANDLE, errors);
}

SystemCode Win32Console::print(std::string_view text) { return write(output_, text); }
void Win32Console::complain(std::string_view text) { write(errors_, text); }
bool Win32Console::errorIsTerminal() { return isConsole(errors_); }
bool Win32Console::inputIsTerminal() { return isConsole(input_); }

std::optional<std::string> Win32Console::readLine() {
  DWORD got = 0;
  if (isConsole(input_)) {
    std::wstring line;
    const bool any = readUntilLineEnd(line, [&](wchar_t& letter) -> bool {
      return ReadConsoleW(input_, &letter, 1, &got, nullptr) != FALSE && got == 1;
    });
    return any ? std::optional<std::string>(utf8(line)) : std::nullopt;
  }
  std::string line;
  const bool any = readUntilLineEnd(line, [&](char& letter) -> bool {
    return ReadFile(input_, &letter, 1, &got, nullptr) != FALSE && got == 1;
  });
  return any ? std::optional<std::string>(line) : std::nullopt;
}

SystemCode Win32GivenPaths::fullPath(const std::string& given, std::string& full) {
  if (given.empty()) {
    return system_code::kBadPathname;
  }
  std::wstring path;
  const std::wstring text = wide(given);
  const SystemCode code = growingText(path, [&](wchar_t* buffer, DWORD size) -> Called<DWORD> {
    return called(GetFullPathNameW, text, size, buffer, nullptr);
  });
  if (code == system_code::kSuccess) {
    full = utf8(path);
    while (full.size() > 3 && full.back() == '\\') {
      full.pop_back();
    }
  }
  return code;
}

SystemCode Win32GivenPaths::room(const std::string& full, std::uint64_t& bytes) {
  ULARGE_INTEGER free{};
  // A share that is named by its own path wants a backslash behind it.
  const std::wstring folder = wide(full) + (full.ends_with('\\') ? L"" : L"\\");
  const SystemCode code = codeOf(GetDiskFreeSpaceExW, folder, &free, nullptr, nullptr);
  if (code == system_code::kSuccess) {
    bytes = free.QuadPart;
  }
  return code;
}

}  // namespace trelv::win32
