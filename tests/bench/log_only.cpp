// What the log of a start costs: writes the lines of a text file as the manager writes its log,
// each with one opening, one write and one closing, behind the date in the user's form.
//
//   log_only TEXTS LOG
//
// TEXTS: the lines without their dates, code page of the system, ended by CR LF. LOG: the log,
// which is thrown away first when it is longer than the manager lets its own become.
#include <windows.h>

#include <string>

#include "tests/bench/LogLines.h"

namespace {

/// Read at run time only, so that the import stays although the function is never called.
volatile bool neverSet = false;

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
  trelv::bench::throwAwayLongLog(log.c_str());
  return trelv::bench::writeLines(trelv::bench::readWhole(texts.c_str()), log.c_str()) ? 0 : 1;
}
