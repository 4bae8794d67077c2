#include "win32/Win32Exclusion.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "win32/FilePath.h"
#include "win32/SystemCall.h"

namespace trelv::win32 {
namespace {

/// Between two looks at a mark that somebody else has.
constexpr std::uint32_t kPause = 100;
/// A file that is being deleted refuses everybody; a refused right stays refused.
constexpr std::uint32_t kLongestDeletion = 3000;

class Win32Mark : public machine::Mark {
 public:
  explicit Win32Mark(OwnedFile file) : file_(std::move(file)) {}

 private:
  OwnedFile file_;
};

/// Everybody may open it: one that a power failure left must not keep other users out.
SystemCode open(OwnedFile& file, const std::wstring& path) {
  SECURITY_DESCRIPTOR everybody{};
  SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), &everybody, FALSE};
  const bool made =
      InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION) != FALSE &&
      SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE) != FALSE;
  return obtain(file, CreateFileW, path, GENERIC_WRITE | DELETE, FILE_SHARE_READ,
                made ? &attributes : nullptr, OPEN_ALWAYS,
                FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

/// The mark is what counts: a full disk only leaves it without its text.
void write(const OwnedFile& file, const std::string& text) {
  DWORD written = 0;
  WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  SetEndOfFile(file.get());
}

/// A process without the window library has no window that anyone could send to.
void pause(std::uint32_t milliseconds) {
  if (GetModuleHandleW(L"user32.dll") == nullptr) {
    Sleep(milliseconds);
    return;
  }
  MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds, QS_SENDMESSAGE);
  MSG message;
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

bool isWorthWaiting(SystemCode code, std::uint32_t waited) {
  return code == ERROR_SHARING_VIOLATION ||
         (code == ERROR_ACCESS_DENIED && waited < kLongestDeletion);
}

}  // namespace

SystemCode Win32Exclusion::take(const std::string& path, const std::string& text,
                                std::uint32_t milliseconds, std::unique_ptr<machine::Mark>& mark) {
  const std::wstring name = filePath(path);
  const DWORD begun = GetTickCount();
  OwnedFile file;
  SystemCode code = open(file, name);
  for (DWORD waited = 0; isWorthWaiting(code, waited) && waited < milliseconds;
       waited = GetTickCount() - begun) {
    pause(std::min<std::uint32_t>(kPause, milliseconds - waited));
    code = open(file, name);
  }
  if (code == system_code::kSuccess) {
    write(file, text);
    mark = std::make_unique<Win32Mark>(std::move(file));
  }
  return code;
}

}  // namespace trelv::win32
