#include "win32/Win32SystemFacts.h"

#include <windows.h>
// The shell's header needs the one above first.
#include <shlobj.h>

#include <array>

#include "win32/GrowingText.h"
#include "win32/ProgramPath.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

static_assert(sizeof(OSVERSIONINFOA) == kShortVersionRecord);
static_assert(sizeof(OSVERSIONINFOEXA) == kExtendedVersionRecord);

/// The system code in a shell result, or the result itself where it carries none.
SystemCode codeIn(HRESULT result) {
  return HRESULT_FACILITY(result) == FACILITY_WIN32 ? static_cast<SystemCode>(HRESULT_CODE(result))
                                                    : static_cast<SystemCode>(result);
}

template <class Fetch>
SystemCode fetchFolder(std::string& folder, Fetch&& fetch) {
  std::wstring found;
  const SystemCode code = growingText(found, fetch);
  if (code == system_code::kSuccess) {
    folder = utf8(found);
  }
  return code;
}

}  // namespace

bool Win32SystemFacts::queryVersion(VersionRecord& record) {
  OSVERSIONINFOEXA found{};
  found.dwOSVersionInfoSize = record.size;
  if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&found)) == FALSE) {
    return false;
  }
  record.major = found.dwMajorVersion;
  record.minor = found.dwMinorVersion;
  record.build = found.dwBuildNumber;
  record.platform = found.dwPlatformId;
  record.servicePack = fromAnsi(found.szCSDVersion);
  record.servicePackMajor = found.wServicePackMajor;
  record.servicePackMinor = found.wServicePackMinor;
  record.suiteMask = found.wSuiteMask;
  record.productType = found.wProductType;
  return true;
}

bool Win32SystemFacts::suiteIncludes(std::uint16_t mask) {
  OSVERSIONINFOEXW wanted{};
  wanted.dwOSVersionInfoSize = sizeof(wanted);
  wanted.wSuiteMask = mask;
  return VerifyVersionInfoW(&wanted, VER_SUITENAME,
                            VerSetConditionMask(0, VER_SUITENAME, VER_AND)) != FALSE;
}

bool Win32SystemFacts::hasKernelFunction(const std::string& name) {
  return GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name.c_str()) != nullptr;
}

bool Win32SystemFacts::isWow64() {
  BOOL answer = FALSE;
  return IsWow64Process(GetCurrentProcess(), &answer) != FALSE && answer != FALSE;
}

SystemCode Win32SystemFacts::isAdministrator(bool& member) {
  std::array<BYTE, SECURITY_MAX_SID_SIZE> group{};
  auto size = static_cast<DWORD>(group.size());
  BOOL answer = FALSE;
  SystemCode code =
      codeOf(CreateWellKnownSid, WinBuiltinAdministratorsSid, nullptr, group.data(), &size);
  if (code == system_code::kSuccess) {
    code = codeOf(CheckTokenMembership, nullptr, group.data(), &answer);
  }
  if (code == system_code::kSuccess) {
    member = answer != FALSE;
  }
  return code;
}

SystemCode Win32SystemFacts::userName(std::uint32_t size, std::string& name) {
  std::wstring buffer(size, L'\0');
  DWORD length = size;
  const SystemCode code = codeOf(GetUserNameW, buffer.data(), &length);
  if (code == system_code::kSuccess) {
    name = utf8(buffer.c_str());
  }
  return code;
}

SystemCode Win32SystemFacts::systemWindowsFolder(std::string& folder) {
  return fetchFolder(folder, [](wchar_t* buffer, DWORD size) {
    return called(GetSystemWindowsDirectoryW, buffer, size);
  });
}

SystemCode Win32SystemFacts::shellFolder(int number, std::string& folder) {
  std::array<wchar_t, MAX_PATH> buffer{};
  const HRESULT result =
      SHGetFolderPathW(nullptr, number, nullptr, SHGFP_TYPE_CURRENT, buffer.data());
  if (result != S_OK) {
    return codeIn(result);
  }
  folder = utf8(buffer.data());
  return system_code::kSuccess;
}

SystemCode Win32SystemFacts::temporaryFolder(std::string& folder) {
  return fetchFolder(
      folder, [](wchar_t* buffer, DWORD size) { return called(GetTempPathW, size, buffer); });
}

std::uint32_t Win32SystemFacts::driveType(const std::string& root) {
  static_assert(machine::drive_type::kNoRoot == DRIVE_NO_ROOT_DIR);
  static_assert(machine::drive_type::kFixed == DRIVE_FIXED);
  static_assert(machine::drive_type::kNetwork == DRIVE_REMOTE);
  return GetDriveTypeW(wide(root).c_str());
}

SystemCode Win32SystemFacts::connectionName(const std::string& drive, std::uint32_t size,
                                            std::string& name) {
  std::wstring buffer(size, L'\0');
  DWORD length = size;
  const DWORD code = WNetGetConnectionW(wide(drive).c_str(), buffer.data(), &length);
  if (code == NO_ERROR) {
    name = utf8(buffer.c_str());
  }
  return code;
}

SystemCode Win32SystemFacts::deviceNames(const std::string& drive, std::uint32_t size,
                                         std::string& names) {
  std::wstring buffer(size, L'\0');
  const Called<DWORD> length = called(QueryDosDeviceW, wide(drive), buffer.data(), size);
  if (length.answer == 0) {
    return length.failure();
  }
  names = utf8(buffer.substr(0, length.answer));
  return system_code::kSuccess;
}

SystemCode Win32SystemFacts::computerName(std::string& name) {
  std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> buffer{};
  auto length = static_cast<DWORD>(buffer.size());
  const SystemCode code = codeOf(GetComputerNameW, buffer.data(), &length);
  if (code == system_code::kSuccess) {
    name = utf8(buffer.data());
  }
  return code;
}

std::uint32_t Win32SystemFacts::processId() { return GetCurrentProcessId(); }

std::uint32_t Win32SystemFacts::sessionId() {
  DWORD session = 0;
  ProcessIdToSessionId(GetCurrentProcessId(), &session);
  return session;
}

std::string Win32SystemFacts::executablePath() { return utf8(programPath(wide(startedPath()))); }

std::string Win32SystemFacts::startedPath() {
  std::string path;
  fetchFolder(path, [](wchar_t* buffer, DWORD size) {
    return called(GetModuleFileNameW, nullptr, buffer, size);
  });
  return path;
}

std::string Win32SystemFacts::commandLine() { return utf8(GetCommandLineW()); }

}  // namespace trelv::win32
