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

using FileInformation = LONG(WINAPI*)(HANDLE, StatusBlock*, void*, ULONG, int);

/// A function that has no import library of its own and is not in every system; null where it is
/// missing.
FileInformation functionNamed(const char* name) {
  const HMODULE library = GetModuleHandleW(L"ntdll.dll");
  const FARPROC function = library == nullptr ? nullptr : GetProcAddress(library, name);
  return reinterpret_cast<FileInformation>(reinterpret_cast<void*>(function));
}

/// Windows Vista and later, files of its own disks.
bool askProcesses(HANDLE file, ProcessesUsingFile& answer) {
  constexpr int kProcessesUsingFile = 47;
  const FileInformation query = functionNamed("NtQueryInformationFile");
  StatusBlock status{};
  return query != nullptr && query(file, &status, &answer, sizeof answer, kProcessesUsingFile) >= 0;
}

/// The file goes with its last handle. The function that has this in its name came with Windows
/// Vista.
SystemCode removeWithHandle(HANDLE file) {
  constexpr int kDisposition = 13;
  const FileInformation set = functionNamed("NtSetInformationFile");
  StatusBlock status{};
  BOOLEAN remove = TRUE;
  return set != nullptr && set(file, &status, &remove, sizeof remove, kDisposition) >= 0
             ? system_code::kSuccess
             : system_code::kAccessDenied;
}

std::uint64_t wholeOf(DWORD high, DWORD low) { return std::uint64_t{high} << 32U | low; }

/// Is the opened file the one that was seen? 5 for one that may not be removed.
SystemCode compare(HANDLE file, const machine::FileFacts& seen) {
  BY_HANDLE_FILE_INFORMATION found{};
  const SystemCode code = codeOf(GetFileInformationByHandle, file, &found);
  if (code != system_code::kSuccess) {
    return code;
  }
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
    return system_code::kAccessDenied;
  }
  const FILETIME& written = found.ftLastWriteTime;
  const bool same = wholeOf(written.dwHighDateTime, written.dwLowDateTime) == seen.modified &&
                    wholeOf(found.nFileSizeHigh, found.nFileSizeLow) == seen.size;
  return same ? system_code::kSuccess : machine::kFileChanged;
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

// Opened for nobody else: that succeeds only while nobody else has it open, on a server too. The
// handle keeps everybody out until the file is gone with it.
SystemCode Win32FileUse::removeUnused(const std::string& path, const machine::FileFacts& seen) {
  OwnedFile file;
  SystemCode code = obtain(file, CreateFileW, filePath(path), DELETE | FILE_READ_ATTRIBUTES, 0,
                           nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (code == system_code::kSuccess) {
    code = compare(file.get(), seen);
  }
  return code == system_code::kSuccess ? removeWithHandle(file.get()) : code;
}

}  // namespace trelv::win32
