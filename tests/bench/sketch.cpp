// What a start cannot do without: reads each file of a list once, writes the lines of the manager's
// log as the manager does, and starts the requested program. It looks nothing up, looks at nothing
// a second time, for no pack that waits, for no lock and into no registry.
//
//   sketch TEXTS LOG FILES PROGRAM
//
// TEXTS, LOG: as log_only has them. FILES: the paths of the files to read, code page of the system,
// each ended by CR LF. No blanks in any of them; what follows is the command line of the program.
#include <windows.h>

#include <string>

#include "tests/bench/LogLines.h"

namespace {

/// Read at run time only, so that the import stays although the function is never called.
volatile bool neverSet = false;

/// Removes the first word and the blank behind it, and gives the word.
std::wstring takeWord(std::wstring& words) {
  const std::size_t blank = words.find(L' ');
  const std::wstring word = words.substr(0, blank);
  words.erase(0, blank == std::wstring::npos ? blank : blank + 1);
  return word;
}

bool readEach(const std::string& paths) {
  for (std::size_t begin = 0; begin < paths.size();) {
    const std::size_t end = paths.find("\r\n", begin);
    const std::string path = paths.substr(begin, end - begin);
    if (trelv::bench::readWhole(std::wstring(path.begin(), path.end()).c_str()).empty()) {
      return false;
    }
    begin = end + 2;
  }
  return !paths.empty();
}

bool start(std::wstring commandLine) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &process) == FALSE) {
    return false;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return true;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR arguments, int) {
  if (neverSet) {
    RegCloseKey(nullptr);
  }
  std::wstring words = arguments;
  const std::wstring texts = takeWord(words);
  const std::wstring log = takeWord(words);
  const std::wstring files = takeWord(words);
  trelv::bench::throwAwayLongLog(log.c_str());
  const bool done = readEach(trelv::bench::readWhole(files.c_str())) &&
                    trelv::bench::writeLines(trelv::bench::readWhole(texts.c_str()), log.c_str()) &&
                    start(words);
  return done ? 0 : 1;
}
