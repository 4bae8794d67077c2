#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "machine/Locale.h"
#include "machine/Registry.h"
#include "overlay/Steps.h"

namespace trelv::overlay {

/// A value that was written.
struct WrittenValue {
  std::uint32_t type = 0;
  /// Bytes of the system's code page, as the ANSI interface gives them.
  std::string data;
};

/// What was made and written in one key.
struct WrittenKey {
  /// Nothing of it stands below.
  bool made = false;
  /// By upper-case names.
  std::map<std::string, WrittenValue> values;
  /// Sub-keys that were made, as they are spelt, by upper-case name.
  std::map<std::string, std::string> keys;
};

/// The registry with what was written kept on top. Keys that are there are opened below with the
/// rights that the program asks for, which changes nothing and tells whether it would have them;
/// making a key asks for the right to do so in the nearest one above that is there.
class OverlayRegistry : public machine::Registry {
 public:
  OverlayRegistry(machine::Registry& below, machine::Locale& locale, Steps& steps)
      : below_(below), locale_(locale), steps_(steps) {}

  SystemCode openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                     std::unique_ptr<machine::RegistryKey>& key) override;
  SystemCode createKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                       std::unique_ptr<machine::RegistryKey>& key) override;

 private:
  friend class OverlayKey;

  SystemCode mayMake(machine::Hive hive, const std::vector<std::string>& levels);
  void make(machine::Hive hive, const std::vector<std::string>& levels);
  void write(const std::string& name, const std::string& shownKey, const std::string& valueName,
             const WrittenValue& value);
  std::optional<WrittenValue> read(machine::Hive hive, const std::string& path,
                                   const std::string& name);
  std::string shownData(const WrittenValue& value);

  machine::Registry& below_;
  machine::Locale& locale_;
  Steps& steps_;
  /// By hive and upper-case path.
  std::map<std::string, WrittenKey> written_;
};

}  // namespace trelv::overlay
