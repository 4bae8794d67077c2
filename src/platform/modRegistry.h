#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "platform/Program.h"

/// Registry operations. Each opens and closes its own key and shows no message. Key paths have no
/// leading backslash; texts are UTF-8 here, ANSI in the registry.
namespace trelv::modRegistry {

/// A value on its way to or from the registry: text for REG_SZ and REG_MULTI_SZ (inner NULs kept),
/// a number for REG_DWORD.
using Variant = std::variant<std::string, std::int32_t>;

/// Result of a read whose type is not supported (REG_EXPAND_SZ included).
constexpr std::int32_t kUnsupportedType = -1;

/// True when the key exists afterwards.
bool CreateKey(Program& program, const std::string& keyPath, machine::Hive hive);

/// True when written, and also for value types that write nothing.
bool SetKeyValue(Program& program, machine::Hive hive, const std::string& keyPath,
                 const std::string& name, const Variant& value, std::uint32_t type);

/// True when read; `value` is filled on success only. A missing key or value answers false without
/// a report.
bool QueryValue(Program& program, machine::Hive hive, const std::string& keyPath,
                const std::string& name, Variant& value);

/// Writes into an open key; status code of the system.
std::int32_t SetValueEx(Program& program, machine::RegistryKey& key, const std::string& name,
                        std::uint32_t type, const Variant& value);

/// Reads from an open key; status code of the system or kUnsupportedType.
std::int32_t QueryValueEx(Program& program, machine::RegistryKey& key, const std::string& name,
                          Variant& value);

/// Default value, as stored, of the first key two levels below `keyPath` (HKEY_LOCAL_MACHINE) that
/// contains `searchText` without regard to case; empty when there is none.
std::string FindRegisteredFile(Program& program, const std::string& keyPath,
                               const std::string& searchText);

/// Folders of the sibling products, without trailing backslash; empty when not installed.
/// `suffix` is added to the product key's name ("2007").
std::string OlvamarFolder(Program& program, const std::string& suffix);
std::string BrundelFolder(Program& program);
std::string KexoraFolder(Program& program);
std::string GastrimFolder(Program& program);

}  // namespace trelv::modRegistry
