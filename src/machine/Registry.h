#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// The two hives, numbered as Windows numbers its ready-made handles.
enum class Hive : std::uint32_t { CurrentUser = 0x80000001U, LocalMachine = 0x80000002U };

/// Numbers of the value types (REG_SZ and so on).
namespace value_type {
constexpr std::uint32_t kText = 1;
constexpr std::uint32_t kExpandText = 2;
constexpr std::uint32_t kBinary = 3;
constexpr std::uint32_t kNumber = 4;
constexpr std::uint32_t kMultiText = 7;
}  // namespace value_type

/// Rights that a key is opened with (KEY_QUERY_VALUE and so on).
namespace key_access {
constexpr std::uint32_t kQueryValue = 0x1;
constexpr std::uint32_t kSetValue = 0x2;
constexpr std::uint32_t kEnumerate = 0x8;
/// Every right of a key itself, none of the standard rights beside them (to delete the key, to
/// change who may use it): a user who lacks those may still write.
constexpr std::uint32_t kAll = 0x3F;
}  // namespace key_access

/// An open key; closed when destroyed. ANSI interface: data are bytes of the system's code page.
class RegistryKey {
 public:
  virtual ~RegistryKey() = default;

  /// Type and size in bytes of a value ("" is the default value). Missing answers 2; a key opened
  /// without query access 5.
  virtual SystemCode describeValue(const std::string& name, std::uint32_t& type,
                                   std::uint32_t& size) = 0;

  /// Reads the data into `data`, whose length on entry is the buffer's size; on success it has the
  /// length read. Too small a buffer answers 234.
  virtual SystemCode readValue(const std::string& name, std::string& data) = 0;

  /// Writes raw data of the given type; the key must have been opened with set access (else 5).
  virtual SystemCode writeValue(const std::string& name, std::uint32_t type,
                                const std::string& data) = 0;

  /// Name of the sub-key at `index` (from 0), cut at its first NUL. `size` is the buffer's size
  /// with the closing NUL; a longer name answers 234, the end 259.
  virtual SystemCode subKeyName(std::uint32_t index, std::uint32_t size, std::string& name) = 0;
};

/// The registry through its ANSI interface, in the 32-bit view. Key paths have no leading
/// backslash (one answers 161) and are compared without regard to case.
class Registry {
 public:
  virtual ~Registry() = default;

  /// Opens an existing key; `key` is set on success. Missing answers 2, refused 5.
  virtual SystemCode openKey(Hive hive, const std::string& path, std::uint32_t access,
                             std::unique_ptr<RegistryKey>& key) = 0;

  /// Opens the key, making it and its parents when missing; non-volatile.
  virtual SystemCode createKey(Hive hive, const std::string& path, std::uint32_t access,
                               std::unique_ptr<RegistryKey>& key) = 0;
};

}  // namespace trelv::machine
