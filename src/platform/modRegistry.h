#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "platform/Program.h"

/// The registry for the rest of the program: no key stays open behind a call, and no box comes up.
/// A key path starts with a name, not with a backslash. Texts are UTF-8 here and ANSI there.
namespace trelv::modRegistry {

/// What a value holds: a number if it is a REG_DWORD, else text; the parts of a REG_MULTI_SZ stay
/// separated by their NULs.
using Variant = std::variant<std::string, std::int32_t>;

/// Answer to a read of any other type, REG_EXPAND_SZ for example.
constexpr std::int32_t kUnsupportedType = -1;

/// Makes sure of a key. True if it is there now.
bool CreateKey(Program& program, const std::string& keyPath, machine::Hive hive);

/// Stores a value under a key that is there. Types that cannot be stored answer true all the same.
bool SetKeyValue(Program& program, machine::Hive hive, const std::string& keyPath,
                 const std::string& name, const Variant& value, std::uint32_t type);

/// Reads a value; false leaves `value` alone. That key or value are missing is nothing to report.
bool QueryValue(Program& program, machine::Hive hive, const std::string& keyPath,
                const std::string& name, Variant& value);

/// The writing half of SetKeyValue, into a key that is open. Answers as the system does.
std::int32_t SetValueEx(Program& program, machine::RegistryKey& key, const std::string& name,
                        std::uint32_t type, const Variant& value);

/// The reading half of QueryValue. Answers as the system does, or kUnsupportedType.
std::int32_t QueryValueEx(Program& program, machine::RegistryKey& key, const std::string& name,
                          Variant& value);

/// Looks through the default values two levels below `keyPath` (HKEY_LOCAL_MACHINE) for one with
/// `searchText` in it, in any case of letters, and gives the first as it is stored, or "".
std::string FindRegisteredFile(Program& program, const std::string& keyPath,
                               const std::string& searchText);

/// Where products of the same house are installed, without trailing backslash; "" where they are
/// not. Olvamar has a key for each year: `suffix` is the year, "2007".
std::string OlvamarFolder(Program& program, const std::string& suffix);
std::string BrundelFolder(Program& program);
std::string KexoraFolder(Program& program);
std::string GastrimFolder(Program& program);

}  // namespace trelv::modRegistry
