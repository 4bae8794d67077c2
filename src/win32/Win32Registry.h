#pragma once

#include "machine/Registry.h"

namespace trelv::win32 {

/// The registry through its ANSI functions; a 32-bit program gets the 32-bit view by itself.
class Win32Registry : public machine::Registry {
 public:
  SystemCode openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                     std::unique_ptr<machine::RegistryKey>& key) override;
  SystemCode createKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                       std::unique_ptr<machine::RegistryKey>& key) override;
};

}  // namespace trelv::win32
