#include "win32/Win32FileUse.h"

#include <aclapi.h>
#include <windows.h>

#include <array>
#include <memory>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct LocalFreeing {
  void operator()(void* memory) const { LocalFree(memory); }
};
using Descriptor = std::unique_ptr<void, LocalFreeing>;

/// "DOMAIN\name", or the name alone.
std::string accountText(const std::wstring& domain, const std::wstring& name) {
  return utf8(domain.empty() ? name : domain + L"\\" + name);
}

SystemCode accountOf(PSID sid, std::string& account) {
  // Longer than a name or a domain may be.
  constexpr DWORD kLetters = 512;
  std::wstring name(kLetters, L'\0');
  std::wstring domain(kLetters, L'\0');
  DWORD nameLetters = kLetters;
  DWORD domainLetters = kLetters;
  SID_NAME_USE kind{};
  const SystemCode code = codeOf(LookupAccountSidW, nullptr, sid, name.data(), &nameLetters,
                                 domain.data(), &domainLetters, &kind);
  if (code == system_code::kSuccess) {
    name.resize(nameLetters);
    domain.resize(domainLetters);
    account = accountText(domain, name);
  }
  return code;
}

/// What the system fills in for "which processes have this file open", as it lies in memory.
struct ProcessesUsingFile {
  ULONG count;
  std::array<ULONG_PTR, 256> processes;
};

struct StatusBlock {
  LONG status;
  ULONG_PTR information;
};

using QueryFile = LONG(WINAPI*)(HANDLE, StatusBlock*, void*, ULONG, int);

/// Windows Vista and later, files of its own disks. The function has no import library of its own
/// and is not in every system.
bool askProcesses(HANDLE file, ProcessesUsingFile& answer) {
  constexpr int kProcessesUsingFile = 47;
  const HMODULE library = GetModuleHandleW(L"ntdll.dll");
  const FARPROC function =
      library == nullptr ? nullptr : GetProcAddress(library, "NtQueryInformationFile");
  if (function == nullptr) {
    return false;
  }
  StatusBlock status{};
  const auto query = reinterpret_cast<QueryFile>(reinterpret_cast<void*>(function));
  return query(file, &status, &answer, sizeof answer, kProcessesUsingFile) >= 0;
}

}  // namespace

SystemCode Win32FileUse::owner(const std::string& path, std::string& account) {
  PSID sid = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  const DWORD code =
      GetNamedSecurityInfoW(filePath(path).data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &sid,
                            nullptr, nullptr, nullptr, &descriptor);
  const Descriptor owned(descriptor);
  return code == ERROR_SUCCESS ? accountOf(sid, account) : code;
}

// Without any access nobody is in its way, and this handle keeps nobody from anything.
std::optional<bool> Win32FileUse::isOpen(const std::string& path) {
  OwnedFile file;
  if (obtain(file, CreateFileW, filePath(path), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr) != system_code::kSuccess) {
    return std::nullopt;
  }
  ProcessesUsingFile answer{};
  if (!askProcesses(file.get(), answer)) {
    return std::nullopt;
  }
  for (ULONG i = 0; i < answer.count && i < answer.processes.size(); ++i) {
    if (answer.processes.at(i) != GetCurrentProcessId()) {
      return true;
    }
  }
  return false;
}

// Opened for nobody else: that succeeds only while nobody else has it open, on a server too, and
// the file goes with this handle.
SystemCode Win32FileUse::removeUnused(const std::string& path) {
  OwnedFile file;
  return obtain(file, CreateFileW, filePath(path), DELETE, 0, nullptr, OPEN_EXISTING,
                FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

}  // namespace trelv::win32
