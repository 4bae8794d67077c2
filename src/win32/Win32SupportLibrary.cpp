#include "win32/Win32SupportLibrary.h"

#include <algorithm>

#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using machine::SupportAnswer;

using IsAdministrator = LONG WINAPI();
using GetPelanTempPath = LONG WINAPI(const char* unused, char* buffer);

}  // namespace

Win32SupportLibrary::Win32SupportLibrary(const LibraryFolders& folders)
    : library_(folders, L"tovrautil.dll") {}

SupportAnswer Win32SupportLibrary::isAdministrator() {
  if (library_.path().empty()) {
    return SupportAnswer::Absent;
  }
  SystemCode code = system_code::kSuccess;
  auto* const call = library_.entry<IsAdministrator>("IsAdministrator", code);
  if (call == nullptr) {
    return SupportAnswer::Failed;
  }
  return call() != 0 ? SupportAnswer::Yes : SupportAnswer::No;
}

SupportAnswer Win32SupportLibrary::temporaryPath(std::string& buffer) {
  if (library_.path().empty()) {
    return SupportAnswer::Absent;
  }
  SystemCode code = system_code::kSuccess;
  auto* const call = library_.entry<GetPelanTempPath>("GetPelanTempPath", code);
  if (call == nullptr) {
    return SupportAnswer::Failed;
  }
  std::string bytes = ansi(buffer);
  const std::size_t told = bytes.size();
  bytes.resize(told + kRoomBehindBuffers, ' ');
  call("", bytes.data());
  // A path that is longer than what it was told to fill is none the worse for it.
  bytes.resize(std::max(told, std::min(bytes.find('\0') + 1, bytes.size())));
  buffer = fromAnsi(bytes);
  return SupportAnswer::Yes;
}

}  // namespace trelv::win32
