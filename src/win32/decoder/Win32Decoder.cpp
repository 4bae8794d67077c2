#include "win32/decoder/Win32Decoder.h"

#include <windows.h>

#include <string>
#include <vector>

#include "decoder/Decoder.h"
#include "win32/Win32Text.h"
#include "win32/decoder/Win32OutputTree.h"
#include "win32/decoder/Win32PackInput.h"

namespace trelv::win32 {
namespace {

class Win32DecoderMachine : public decoder::DecoderMachine {
 public:
  SystemCode openPack(const std::string& path, std::unique_ptr<decoder::PackInput>& pack) override {
    return Win32PackInput::open(path, pack);
  }
  SystemCode openOutput(const std::string& path,
                        std::unique_ptr<decoder::OutputTree>& output) override {
    return Win32OutputTree::open(path, output);
  }
  void pause(std::uint32_t milliseconds) override { Sleep(milliseconds); }
};

/// A console takes any letter; a file or pipe gets what other programs of the system read.
void writeError(const std::string& line) {
  const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
  const std::string text = line + "\r\n";
  DWORD mode = 0;
  DWORD written = 0;
  if (GetConsoleMode(error, &mode) != FALSE) {
    const std::wstring shown = wide(text);
    WriteConsoleW(error, shown.data(), static_cast<DWORD>(shown.size()), &written, nullptr);
  } else {
    const std::string bytes = ansi(text);
    WriteFile(error, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  }
}

int decodeWith(int count, wchar_t** arguments) {
  std::vector<std::string> texts;
  for (int index = 1; index < count; ++index) {
    texts.push_back(utf8(arguments[index]));
  }
  Win32DecoderMachine machine;
  const decoder::DecoderResult result = decoder::decode(texts, machine);
  if (!result.line.empty()) {
    writeError(result.line);
  }
  return result.exitCode;
}

}  // namespace

int runDecoder(int count, wchar_t** arguments) {
  // A drive without a medium is a failure, not a box that waits for the user.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  try {
    return decodeWith(count, arguments);
  } catch (...) {
    return decoder::exit_code::kFailed;
  }
}

}  // namespace trelv::win32
