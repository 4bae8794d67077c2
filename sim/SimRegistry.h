#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "machine/Registry.h"
#include "sim/SimCalls.h"

namespace trelv::sim {

/// A stored value: text types as UTF-16LE bytes, as the system keeps them, others as they are.
struct SimRegistryValue {
  std::string name;
  std::uint32_t type = 0;
  std::string stored;
};

/// A key with its values and sub-keys, both in alphabetical order without regard to case.
struct SimRegistryNode {
  std::string name;
  std::map<std::string, SimRegistryValue> values;
  std::map<std::string, std::shared_ptr<SimRegistryNode>> keys;
};

/// The registry of one machine. Key paths are compared without regard to case.
class SimRegistry : public machine::Registry {
 public:
  explicit SimRegistry(SimCalls& calls);

  SystemCode openKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                     std::unique_ptr<machine::RegistryKey>& key) override;
  SystemCode createKey(machine::Hive hive, const std::string& path, std::uint32_t access,
                       std::unique_ptr<machine::RegistryKey>& key) override;

  /// Makes this the registry of another process on the same computer: both see the same keys.
  void shareKeysOf(const SimRegistry& other);
  bool sharesKeysOf(const SimRegistry& other) const { return localMachine_ == other.localMachine_; }

  // For tests, without a trace in the calls.

  /// Makes a key and its parents.
  void makeKey(machine::Hive hive, const std::string& path);
  /// A text value with its closing NUL, key made when missing.
  void setText(machine::Hive hive, const std::string& path, const std::string& name,
               const std::string& value);
  /// Any value: data as they are stored, text types as UTF-16LE bytes.
  void setStored(machine::Hive hive, const std::string& path, const std::string& name,
                 std::uint32_t type, const std::string& stored);
  /// Text of a value up to its first NUL; nothing when key or value is missing.
  std::optional<std::string> text(machine::Hive hive, const std::string& path,
                                  const std::string& name) const;
  std::optional<SimRegistryValue> value(machine::Hive hive, const std::string& path,
                                        const std::string& name) const;
  bool keyExists(machine::Hive hive, const std::string& path) const;
  void removeKey(machine::Hive hive, const std::string& path);
  void removeValue(machine::Hive hive, const std::string& path, const std::string& name);
  /// Opening or making the key or one below it answers 5.
  void deny(machine::Hive hive, const std::string& path);
  /// Only opening with more than query and enumerate rights, and making, answers 5.
  void denyWriting(machine::Hive hive, const std::string& path);
  /// Lifts both for exactly this path.
  void allow(machine::Hive hive, const std::string& path);
  /// All keys and values, one a line: "HKLM\SOFTWARE\LUMO\Programmi: PathLocale=C:\Lumo".
  std::string dump() const;

 private:
  struct Denial {
    machine::Hive hive;
    std::string path;
    bool onlyWriting = false;
  };

  SimRegistryNode& hiveRoot(machine::Hive hive) const;
  std::shared_ptr<SimRegistryNode> find(machine::Hive hive, const std::string& path) const;
  std::shared_ptr<SimRegistryNode> make(machine::Hive hive, const std::string& path);
  bool denied(machine::Hive hive, const std::string& path, bool writing) const;

  SimCalls& calls_;
  std::shared_ptr<SimRegistryNode> currentUser_;
  std::shared_ptr<SimRegistryNode> localMachine_;
  std::vector<Denial> denials_;
};

}  // namespace trelv::sim
