#include "win32/Win32ConfigurationLibrary.h"

#include "base/RuntimeError.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using GetParameter = LONG WINAPI(const char* product, const char* section, const char* key,
                                 const char* attribute, const char* defaultValue, LONG size,
                                 char* buffer);
using SetParameter = LONG WINAPI(const char* product, const char* section, const char* key,
                                 const char* attribute, LONG type, const char* value);
using GetConfigPath = LONG WINAPI(LONG kind, char* buffer);

/// A buffer for the library, with room behind the size that it is told.
class RoomyBuffer {
 public:
  explicit RoomyBuffer(const std::string& text) : bytes_(ansi(text)), size_(bytes_.size()) {
    bytes_.resize(size_ + kRoomBehindBuffers);
  }

  char* data() { return bytes_.data(); }
  /// What stands in it now, without the room.
  std::string text() const { return fromAnsi(bytes_.substr(0, size_)); }

 private:
  std::string bytes_;
  std::size_t size_;
};

}  // namespace

Win32ConfigurationLibrary::Win32ConfigurationLibrary(const LibraryFolders& folders)
    : library_(folders, L"mviconf.dll") {}

template <class Function>
Function* Win32ConfigurationLibrary::entry(const char* name) {
  SystemCode code = system_code::kSuccess;
  Function* const found = library_.entry<Function>(name, code);
  if (found == nullptr) {
    throw failureFromSystemCode(code, utf8(library_.path()) + " (" + name + ")");
  }
  return found;
}

std::int32_t Win32ConfigurationLibrary::getParameter(const std::string& product,
                                                     const std::string& section,
                                                     const std::string& key,
                                                     const std::string& attribute,
                                                     const std::string& defaultValue,
                                                     std::int32_t size, std::string& buffer) {
  auto* const call = entry<GetParameter>("GetParameter");
  RoomyBuffer bytes(buffer);
  const LONG code = call(ansi(product).c_str(), ansi(section).c_str(), ansi(key).c_str(),
                         ansi(attribute).c_str(), ansi(defaultValue).c_str(), size, bytes.data());
  buffer = bytes.text();
  return code;
}

std::int32_t Win32ConfigurationLibrary::setParameter(const std::string& product,
                                                     const std::string& section,
                                                     const std::string& key,
                                                     const std::string& attribute,
                                                     std::int32_t type, const std::string& value) {
  auto* const call = entry<SetParameter>("SetParameter");
  return call(ansi(product).c_str(), ansi(section).c_str(), ansi(key).c_str(),
              ansi(attribute).c_str(), type, ansi(value).c_str());
}

std::int32_t Win32ConfigurationLibrary::getConfigPath(std::int32_t kind, std::string& buffer) {
  auto* const call = entry<GetConfigPath>("GetConfigPath");
  RoomyBuffer bytes(buffer);
  const LONG code = call(kind, bytes.data());
  buffer = bytes.text();
  return code;
}

}  // namespace trelv::win32
