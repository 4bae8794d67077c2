#include "win32/Win32Processes.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "win32/GrowingText.h"
#include "win32/HostLibraryFile.h"
#include "win32/LibrarySearch.h"
#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

// With the closing NUL the system takes 32,768 characters; some versions do not refuse more but
// start the program with what is left after counting in 16 bits.
constexpr std::size_t kLongestCommandLine = 32767;

static_assert(sizeof(STARTUPINFOW) == 68, "the start-up record of a 32-bit program");

/// Waits while other programs' sent messages are served: a set-up that broadcasts a change waits
/// for every top-level window, ours included. Input, painting and timers stay in the queue.
Called<DWORD> waitServingSentMessages(HANDLE process) {
  for (;;) {
    const Called<DWORD> outcome =
        called(MsgWaitForMultipleObjects, 1, &process, FALSE, INFINITE, QS_SENDMESSAGE);
    if (outcome.answer != WAIT_OBJECT_0 + 1) {
      return outcome;
    }
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
  }
}

/// A process without the window library has no window that anyone could send to: it waits plainly
/// and leaves the library unloaded.
Called<DWORD> waitForEnd(HANDLE process) {
  return GetModuleHandleW(L"user32.dll") != nullptr
             ? waitServingSentMessages(process)
             : called(WaitForSingleObject, process, INFINITE);
}

using OwnedJob = Owned<ProcessKind>;

class Win32RunningProcess : public machine::RunningProcess {
 public:
  /// `job`: what the process lies in, if it is to end with us.
  explicit Win32RunningProcess(OwnedProcess process, OwnedJob job = {})
      : process_(std::move(process)), job_(std::move(job)) {}

  SystemCode wait() override {
    const Called<DWORD> outcome = waitForEnd(process_.get());
    return outcome.answer == WAIT_OBJECT_0 ? system_code::kSuccess : outcome.failure();
  }

  SystemCode waitUntilReady(std::uint32_t milliseconds) override {
    const Called<DWORD> outcome = called(WaitForInputIdle, process_.get(), milliseconds);
    return outcome.answer == WAIT_FAILED ? outcome.failure() : outcome.answer;
  }

  SystemCode exitCode(std::uint32_t& code) override {
    DWORD found = 0;
    const SystemCode answer = codeOf(GetExitCodeProcess, process_.get(), &found);
    if (answer == system_code::kSuccess) {
      code = found;
    }
    return answer;
  }

 private:
  OwnedProcess process_;
  OwnedJob job_;
};

/// A process that was made, and its first thread.
struct Started {
  OwnedProcess process;
  OwnedProcess thread;
};

/// Starts a command line; `program` is its program's full path, null where Windows looks for it.
SystemCode createProcess(const wchar_t* program, const std::string& commandLine, bool visible,
                         DWORD flags, Started& made) {
  std::wstring writable = wide(commandLine);
  if (writable.size() > kLongestCommandLine) {
    return system_code::kInvalidParameter;
  }
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = visible ? SW_SHOWNORMAL : SW_HIDE;
  PROCESS_INFORMATION started{};
  const OwnLibrarySearchSuspended suspended;
  const SystemCode code =
      codeOf(CreateProcessW, program, writable.data(), nullptr, nullptr, FALSE,
             NORMAL_PRIORITY_CLASS | flags, nullptr, nullptr, &startup, &started);
  if (code == system_code::kSuccess) {
    made = {OwnedProcess(started.hProcess), OwnedProcess(started.hThread)};
  }
  return code;
}

SystemCode startFreely(const wchar_t* program, const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) {
  Started made;
  const SystemCode code = createProcess(program, commandLine, visible, 0, made);
  if (code == system_code::kSuccess) {
    process = std::make_unique<Win32RunningProcess>(std::move(made.process));
  }
  return code;
}

/// A job that takes what is in it along when its last handle goes, as the system closes those of a
/// process that is ended by force. None where the system refuses it.
OwnedJob makeEndingJob() {
  OwnedJob job(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  const bool set = job && SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation,
                                                  &limits, sizeof(limits)) != FALSE;
  return set ? std::move(job) : OwnedJob();
}

/// Does the path mean the same whatever folder and drive are the current ones?
bool isFull(const std::wstring& folder) {
  const bool drive = folder.size() > 2 && folder[1] == L':' && folder[2] == L'\\';
  return drive || folder.rfind(L"\\\\", 0) == 0;
}

/// Where tools are looked for, in order.
std::vector<std::wstring> toolFolders() {
  const LibraryFolders first = LibraryFolders::ofThisProcess();
  std::vector<std::wstring> folders{first.own, first.system, first.windows};
  std::wstring path;
  growingText(path, [](wchar_t* buffer, DWORD size) {
    return called(GetEnvironmentVariableW, L"PATH", buffer, size);
  });
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find(L';', at), path.size());
    folders.push_back(path.substr(at, end - at) + L"\\");
    at = end + 1;
  }
  std::erase_if(folders, [](const std::wstring& folder) { return !isFull(folder); });
  return folders;
}

/// Full path of a tool; empty when there is none of that name.
std::wstring findTool(const std::wstring& name) {
  const bool extension = name.find(L'.') != std::wstring::npos;
  for (const std::wstring& folder : toolFolders()) {
    std::wstring path = folder + name + (extension ? L"" : L".exe");
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      return path;
    }
  }
  return {};
}

}  // namespace

SystemCode Win32Processes::start(const std::string& commandLine, bool visible,
                                 std::unique_ptr<machine::RunningProcess>& process) {
  return startFreely(nullptr, commandLine, visible, process);
}

SystemCode Win32Processes::startBound(const std::string& commandLine, bool visible,
                                      std::unique_ptr<machine::RunningProcess>& process) {
  // It must not do anything before it is bound.
  Started made;
  SystemCode code = createProcess(nullptr, commandLine, visible, CREATE_SUSPENDED, made);
  if (code != system_code::kSuccess) {
    return code;
  }
  OwnedJob job = makeEndingJob();
  if (job) {
    AssignProcessToJobObject(job.get(), made.process.get());
  }
  const Called<DWORD> resumed = called(ResumeThread, made.thread.get());
  if (resumed.answer == static_cast<DWORD>(-1)) {
    code = resumed.failure();
    TerminateProcess(made.process.get(), 1);
    return code;
  }
  process = std::make_unique<Win32RunningProcess>(std::move(made.process), std::move(job));
  return code;
}

SystemCode Win32Processes::startTool(const std::string& commandLine, bool visible,
                                     std::unique_ptr<machine::RunningProcess>& process) {
  const std::wstring name = wide(commandLine.substr(0, commandLine.find(' ')));
  if (name.find_first_of(L"\\/:\"") != std::wstring::npos) {
    return start(commandLine, visible, process);
  }
  const std::wstring program = findTool(name);
  return program.empty() ? system_code::kFileNotFound
                         : startFreely(program.c_str(), commandLine, visible, process);
}

void Win32Processes::whenSessionEnds(const std::string& reason, std::function<void()> action) {
  session_.reset();
  if (action) {
    session_ = std::make_unique<SessionWindow>(reason, std::move(action));
  }
}

bool Win32Processes::isRunning(std::uint32_t processId) {
  OwnedProcess process;
  const SystemCode code = obtain(process, OpenProcess, SYNCHRONIZE, FALSE, processId);
  if (code != system_code::kSuccess) {
    return code != system_code::kInvalidParameter;
  }
  return WaitForSingleObject(process.get(), 0) != WAIT_OBJECT_0;
}

}  // namespace trelv::win32
