// Times programs from inside Windows, so that the cost of starting a Windows program from outside
// is in no figure.
//
//   runner ROUNDS PAUSE [form]
//
// Standard input: one program a line, UTF-8, words separated by tabs: name, command line, and
// optionally two paths, the first of which is copied over the second before each start. Each round
// starts every program once, in this order, waits for its end and then PAUSE milliseconds, so that
// what it started itself has ended too. One round more, the first, is not told. Answer: one line
// per start: name, milliseconds with three decimals, exit code, the largest working set seen in
// KiB. With 0 rounds each program is started once and looked at every millisecond for its working
// set; else that is not asked, because asking costs time, and is told as 0. With "form" the time
// ends when the program's first dialog shows and answers; it is left then.
#include <windows.h>
// Needs the types of windows.h.
#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Plan {
  std::string name;
  std::wstring commandLine;
  std::wstring from;
  std::wstring to;
};

struct Result {
  double milliseconds = 0;
  DWORD exitCode = 0;
  SIZE_T peak = 0;
};

std::wstring wide(const std::string& bytes) {
  const int length = static_cast<int>(bytes.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, bytes.data(), length, text.data(), size);
  return text;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == separator) {
      words.emplace_back();
    } else if (c != '\r') {
      words.back() += c;
    }
  }
  return words;
}

std::vector<Plan> readPlans() {
  std::string input;
  char piece[4096];
  std::size_t got = 0;
  while ((got = std::fread(piece, 1, sizeof piece, stdin)) > 0) {
    input.append(piece, got);
  }
  std::vector<Plan> plans;
  for (const std::string& line : split(input, '\n')) {
    std::vector<std::string> words = split(line, '\t');
    if (words.size() < 2) {
      continue;
    }
    words.resize(4);
    plans.push_back({words[0], wide(words[1]), wide(words[2]), wide(words[3])});
  }
  return plans;
}

double now() {
  LARGE_INTEGER count{};
  LARGE_INTEGER frequency{};
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) * 1000.0 / static_cast<double>(frequency.QuadPart);
}

/// The largest working set until the end of the process, which is looked at while it lives.
SIZE_T watch(HANDLE process) {
  SIZE_T peak = 0;
  do {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (GetProcessMemoryInfo(process, &counters, sizeof counters) != FALSE) {
      peak = std::max(peak, counters.PeakWorkingSetSize);
    }
  } while (WaitForSingleObject(process, 1) == WAIT_TIMEOUT);
  return peak;
}

struct Search {
  DWORD process = 0;
  HWND dialog = nullptr;
};

BOOL CALLBACK findDialog(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  wchar_t kind[16] = {};
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  GetClassNameW(window, kind, 16);
  if (process != search.process || IsWindowVisible(window) == FALSE ||
      std::wstring(kind) != L"#32770") {
    return TRUE;
  }
  search.dialog = window;
  return FALSE;
}

/// The first dialog that the process shows, once it answers; null when it ends without one.
HWND dialogOf(const PROCESS_INFORMATION& process) {
  Search search{process.dwProcessId};
  while (search.dialog == nullptr && WaitForSingleObject(process.hProcess, 1) == WAIT_TIMEOUT) {
    EnumWindows(&findDialog, reinterpret_cast<LPARAM>(&search));
  }
  SendMessageW(search.dialog, WM_NULL, 0, 0);
  return search.dialog;
}

/// What is done with a program that runs.
enum class Way { ToItsEnd, Watched, ToItsForm };

/// False when the program could not be started.
bool run(const Plan& plan, Way way, Result& result) {
  if (!plan.from.empty()) {
    CopyFileW(plan.from.c_str(), plan.to.c_str(), FALSE);
  }
  std::wstring commandLine = plan.commandLine;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const double before = now();
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &process) == FALSE) {
    return false;
  }
  if (way == Way::Watched) {
    result.peak = watch(process.hProcess);
  }
  HWND const dialog = way == Way::ToItsForm ? dialogOf(process) : nullptr;
  const double atItsForm = now();
  PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
  WaitForSingleObject(process.hProcess, INFINITE);
  result.milliseconds = (dialog != nullptr ? atItsForm : now()) - before;
  GetExitCodeProcess(process.hProcess, &result.exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return true;
}

bool runAll(const std::vector<Plan>& plans, Way way, bool told, DWORD pause) {
  for (const Plan& plan : plans) {
    Result result;
    if (!run(plan, way, result)) {
      std::printf("%s\tfailed\t%lu\t0\n", plan.name.c_str(), GetLastError());
      return false;
    }
    Sleep(pause);
    if (told) {
      std::printf("%s\t%.3f\t%lu\t%lu\n", plan.name.c_str(), result.milliseconds, result.exitCode,
                  static_cast<unsigned long>(result.peak / 1024));
      std::fflush(stdout);
    }
  }
  return true;
}

/// What the programs write must not come among the times.
void keepOutputForTimes() {
  SetStdHandle(STD_OUTPUT_HANDLE, CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                              OPEN_EXISTING, 0, nullptr));
}

}  // namespace

int main(int count, char** arguments) {
  const bool toForm = count == 4 && std::string(arguments[3]) == "form";
  if (count != 3 && !toForm) {
    return 2;
  }
  const int rounds = std::atoi(arguments[1]);
  const auto pause = static_cast<DWORD>(std::atoi(arguments[2]));
  const std::vector<Plan> plans = readPlans();
  keepOutputForTimes();
  // Holds the desktop: without any window it would come and go with the programs.
  CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  if (rounds == 0) {
    return runAll(plans, Way::Watched, true, pause) ? 0 : 1;
  }
  for (int round = 0; round <= rounds; ++round) {
    if (!runAll(plans, toForm ? Way::ToItsForm : Way::ToItsEnd, round > 0, pause)) {
      return 1;
    }
  }
  return 0;
}
