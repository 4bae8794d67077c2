#include "win32/Win32Registry.h"

#include <windows.h>

#include "win32/Owned.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

class Win32RegistryKey : public machine::RegistryKey {
 public:
  explicit Win32RegistryKey(HKEY key) : key_(key) {}

  SystemCode describeValue(const std::string& name, std::uint32_t& type,
                           std::uint32_t& size) override;
  SystemCode readValue(const std::string& name, std::string& data) override;
  SystemCode writeValue(const std::string& name, std::uint32_t type,
                        const std::string& data) override;
  SystemCode subKeyName(std::uint32_t index, std::uint32_t size, std::string& name) override;

 private:
  OwnedKey key_;
};

SystemCode codeOf(LSTATUS status) { return static_cast<SystemCode>(status); }

SystemCode Win32RegistryKey::describeValue(const std::string& name, std::uint32_t& type,
                                           std::uint32_t& size) {
  DWORD foundType = 0;
  DWORD foundSize = 0;
  const SystemCode code = codeOf(
      RegQueryValueExA(key_.get(), ansi(name).c_str(), nullptr, &foundType, nullptr, &foundSize));
  if (code == system_code::kSuccess) {
    type = foundType;
    size = foundSize;
  }
  return code;
}

SystemCode Win32RegistryKey::readValue(const std::string& name, std::string& data) {
  auto size = static_cast<DWORD>(data.size());
  const SystemCode code = codeOf(RegQueryValueExA(key_.get(), ansi(name).c_str(), nullptr, nullptr,
                                                  reinterpret_cast<BYTE*>(data.data()), &size));
  if (code == system_code::kSuccess) {
    data.resize(size);
  }
  return code;
}

SystemCode Win32RegistryKey::writeValue(const std::string& name, std::uint32_t type,
                                        const std::string& data) {
  return codeOf(RegSetValueExA(key_.get(), ansi(name).c_str(), 0, type,
                               reinterpret_cast<const BYTE*>(data.data()),
                               static_cast<DWORD>(data.size())));
}

SystemCode Win32RegistryKey::subKeyName(std::uint32_t index, std::uint32_t size,
                                        std::string& name) {
  std::string buffer(size, '\0');
  DWORD length = size;
  const SystemCode code = codeOf(
      RegEnumKeyExA(key_.get(), index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr));
  if (code == system_code::kSuccess) {
    name = fromAnsi(buffer.c_str());
  }
  return code;
}

HKEY handleOf(machine::Hive hive) {
  return hive == machine::Hive::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

}  // namespace

SystemCode Win32Registry::openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                                  std::unique_ptr<machine::RegistryKey>& key) {
  HKEY opened = nullptr;
  const SystemCode code =
      codeOf(RegOpenKeyExA(handleOf(hive), ansi(path).c_str(), 0, access, &opened));
  if (code == system_code::kSuccess) {
    key = std::make_unique<Win32RegistryKey>(opened);
  }
  return code;
}

SystemCode Win32Registry::createKey(machine::Hive hive, const std::string& path,
                                    std::uint32_t access,
                                    std::unique_ptr<machine::RegistryKey>& key) {
  HKEY opened = nullptr;
  const SystemCode code =
      codeOf(RegCreateKeyExA(handleOf(hive), ansi(path).c_str(), 0, nullptr,
                             REG_OPTION_NON_VOLATILE, access, nullptr, &opened, nullptr));
  if (code == system_code::kSuccess) {
    key = std::make_unique<Win32RegistryKey>(opened);
  }
  return code;
}

}  // namespace trelv::win32
