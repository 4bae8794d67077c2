// Times programs from inside Windows, so that the cost of starting a Windows program from outside
// is in no figure.
//
//   runner ROUNDS PAUSE
//
// Standard input: one program a line, UTF-8, words separated by tabs: name, command line, and
// optionally two paths, the first of which is copied over the second before each start. Each round
// starts every program once, in this order, waits for its end and then PAUSE milliseconds, so that
// what it started itself has ended too. One round more, the first, is not told. Answer: one line
// per start: name, milliseconds with three decimals, exit code, the largest working set seen in
// KiB. With 0 rounds each program is started once and looked at every millisecond for its working
// set; else that is not asked, because asking costs time, and is told as 0.
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

/// False when the program could not be started.
bool run(const Plan& plan, bool watched, Result& result) {
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
  if (watched) {
    result.peak = watch(process.hProcess);
  }
  WaitForSingleObject(process.hProcess, INFINITE);
  result.milliseconds = now() - before;
  GetExitCodeProcess(process.hProcess, &result.exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return true;
}

bool runAll(const std::vector<Plan>& plans, bool watched, bool told, DWORD pause) {
  for (const Plan& plan : plans) {
    Result result;
    if (!run(plan, watched, result)) {
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

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  const int rounds = std::atoi(arguments[1]);
  const auto pause = static_cast<DWORD>(std::atoi(arguments[2]));
  const std::vector<Plan> plans = readPlans();
  // Holds the desktop: without any window it would come and go with the programs.
  CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  if (rounds == 0) {
    return runAll(plans, true, true, pause) ? 0 : 1;
  }
  for (int round = 0; round <= rounds; ++round) {
    if (!runAll(plans, false, round > 0, pause)) {
      return 1;
    }
  }
  return 0;
}
