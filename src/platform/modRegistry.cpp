#include "platform/modRegistry.h"

#include <charconv>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"

namespace trelv::modRegistry {
namespace {

using machine::Hive;
using machine::RegistryKey;
using KeyOwner = std::unique_ptr<RegistryKey>;

constexpr const char* kModule = "modRegistry";
constexpr const char* kMessage = "Errore in accesso al registro di sistema: ";

/// Characters of the buffer that receives a sub-key's name, its closing NUL included.
constexpr std::uint32_t kSubKeyNameSize = 255;
constexpr std::size_t kNumberBytes = 4;

/// Number of the Basic runtime for a text that is no number.
constexpr std::int32_t kTypeMismatch = 13;

/// Runs an operation under the module's trap; a failure is reported and logged and answers
/// `onFailure`.
template <class Result, class Body>
Result guarded(Program& program, const char* procedure, Result onFailure, Body&& body) {
  return loggedTrap(program.log, program.errors, kModule, procedure, kMessage, std::move(onFailure),
                    std::forward<Body>(body));
}

std::string textOf(const Variant& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : std::to_string(std::get<std::int32_t>(value));
}

/// A whole decimal number with an optional sign, blanks round it allowed.
std::int32_t numberOf(const std::string& text) {
  const std::string trimmed = trim(text);
  const bool plus = trimmed.starts_with('+') && !trimmed.starts_with("+-");
  const std::string_view digits = std::string_view(trimmed).substr(plus ? 1 : 0);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error == std::errc::result_out_of_range) {
    throw RuntimeError(runtime_number::kOverflow, "TrelvManager", "Numero troppo grande: " + text);
  }
  if (error != std::errc() || end != digits.data() + digits.size()) {
    throw RuntimeError(kTypeMismatch, "TrelvManager", "Non è un numero: " + text);
  }
  return number;
}

std::int32_t numberOf(const Variant& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text != nullptr ? numberOf(*text) : std::get<std::int32_t>(value);
}

std::string littleEndian(std::int32_t number) {
  auto bits = static_cast<std::uint32_t>(number);
  std::string bytes;
  for (std::size_t i = 0; i < kNumberBytes; ++i, bits >>= 8U) {
    bytes.push_back(static_cast<char>(bits & 0xFFU));
  }
  return bytes;
}

std::int32_t fromLittleEndian(const std::string& bytes) {
  const auto append = [](std::uint32_t bits, char byte) -> std::uint32_t {
    return (bits << 8U) | static_cast<unsigned char>(byte);
  };
  return static_cast<std::int32_t>(
      std::accumulate(bytes.rbegin(), bytes.rend(), std::uint32_t{0}, append));
}

std::int32_t status(SystemCode code) { return static_cast<std::int32_t>(code); }

SystemCode readNumber(RegistryKey& key, const std::string& name, Variant& value) {
  std::string data(kNumberBytes, '\0');
  const SystemCode code = key.readValue(name, data);
  if (code == system_code::kSuccess) {
    value = fromLittleEndian(data);
  }
  return code;
}

/// The last character of what is stored is dropped as its closing NUL, whatever it is: kept, what
/// the outside programs write ends with one.
SystemCode readText(Program& program, RegistryKey& key, const std::string& name, std::size_t size,
                    Variant& value) {
  std::string data(size, '\0');
  const SystemCode code = key.readValue(name, data);
  data.resize(code == system_code::kSuccess && size > 0 ? size - 1 : 0);
  value = program.machine.locale.fromAnsi(data);
  return code;
}

/// Calls `visit(name)` for each sub-key until it answers true or the enumeration fails.
bool anySubKey(RegistryKey& key, const std::function<bool(const std::string&)>& visit) {
  std::string name;
  for (std::uint32_t index = 0;
       key.subKeyName(index, kSubKeyNameSize, name) == system_code::kSuccess; ++index) {
    if (visit(modLibrary::CutAtNul(name))) {
      return true;
    }
  }
  return false;
}

KeyOwner opened(Program& program, const std::string& keyPath, std::uint32_t access) {
  KeyOwner key;
  if (program.machine.registry.openKey(Hive::LocalMachine, keyPath, access, key) !=
      system_code::kSuccess) {
    return nullptr;
  }
  return key;
}

/// Default value of a key when it is a plain text; empty text otherwise.
std::string defaultText(Program& program, const std::string& keyPath) {
  const KeyOwner key = opened(program, keyPath, machine::key_access::kQueryValue);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  if (key == nullptr || key->describeValue("", type, size) != system_code::kSuccess ||
      type != machine::value_type::kText) {
    return {};
  }
  std::string data(size, ' ');
  if (key->readValue("", data) != system_code::kSuccess) {
    return {};
  }
  return program.machine.locale.fromAnsi(modLibrary::CutAtNul(data));
}

/// The registered files of one class: the default values one level below `classPath`.
std::string findInClass(Program& program, const std::string& classPath,
                        const std::string& lowerSearch) {
  std::string result;
  const KeyOwner key = opened(program, classPath, machine::key_access::kEnumerate);
  if (key == nullptr) {
    return result;
  }
  anySubKey(*key, [&](const std::string& name) -> bool {
    const std::string text = defaultText(program, classPath + "\\" + name);
    if (text.empty() || lowerCase(text).find(lowerSearch) == std::string::npos) {
      return false;
    }
    result = text;
    return true;
  });
  return result;
}

std::string productFolder(Program& program, const std::string& keyPath, const std::string& name) {
  Variant value;
  if (!QueryValue(program, Hive::LocalMachine, keyPath, name, value)) {
    return {};
  }
  std::string folder = textOf(value);
  modLibrary::TrimFolder(folder);
  return folder;
}

}  // namespace

bool CreateKey(Program& program, const std::string& keyPath, Hive hive) {
  return guarded(program, "CreateKey", false, [&]() -> bool {
    KeyOwner key;
    return program.machine.registry.createKey(hive, keyPath, machine::key_access::kAll, key) ==
           system_code::kSuccess;
  });
}

bool SetKeyValue(Program& program, Hive hive, const std::string& keyPath, const std::string& name,
                 const Variant& value, std::uint32_t type) {
  KeyOwner key;
  if (program.machine.registry.openKey(hive, keyPath, machine::key_access::kSetValue, key) !=
      system_code::kSuccess) {
    return false;
  }
  return SetValueEx(program, *key, name, type, value) == status(system_code::kSuccess);
}

bool QueryValue(Program& program, Hive hive, const std::string& keyPath, const std::string& name,
                Variant& value) {
  KeyOwner key;
  if (program.machine.registry.openKey(hive, keyPath, machine::key_access::kQueryValue, key) !=
      system_code::kSuccess) {
    return false;
  }
  return QueryValueEx(program, *key, name, value) == status(system_code::kSuccess);
}

std::int32_t SetValueEx(Program& program, RegistryKey& key, const std::string& name,
                        std::uint32_t type, const Variant& value) {
  return guarded(
      program, "SetValueEx", status(system_code::kInvalidParameter), [&]() -> std::int32_t {
        switch (type) {
          case machine::value_type::kText:
            return status(
                key.writeValue(name, type, program.machine.locale.toAnsi(textOf(value)) + '\0'));
          case machine::value_type::kNumber:
            return status(key.writeValue(name, type, littleEndian(numberOf(value))));
          default:
            // Kept: this looks like a write that went well. Callers only have texts and numbers.
            return status(system_code::kSuccess);
        }
      });
}

std::int32_t QueryValueEx(Program& program, RegistryKey& key, const std::string& name,
                          Variant& value) {
  return guarded(program, "QueryValueEx", kUnsupportedType, [&]() -> std::int32_t {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    const SystemCode code = key.describeValue(name, type, size);
    if (code == system_code::kFileNotFound) {
      return status(code);
    }
    if (code != system_code::kSuccess) {
      throw failureFromSystemCode(code, name);
    }
    switch (type) {
      case machine::value_type::kNumber:
        return status(readNumber(key, name, value));
      case machine::value_type::kText:
      case machine::value_type::kMultiText:
        return status(readText(program, key, name, size, value));
      default:
        return kUnsupportedType;
    }
  });
}

std::string FindRegisteredFile(Program& program, const std::string& keyPath,
                               const std::string& searchText) {
  return guarded(program, "FindRegisteredFile", std::string(), [&]() -> std::string {
    std::string result;
    const KeyOwner key = opened(program, keyPath, machine::key_access::kEnumerate);
    if (key == nullptr) {
      return result;
    }
    const std::string lowerSearch = lowerCase(searchText);
    anySubKey(*key, [&](const std::string& name) -> bool {
      result = findInClass(program, keyPath + "\\" + name, lowerSearch);
      return !result.empty();
    });
    return result;
  });
}

std::string OlvamarFolder(Program& program, const std::string& suffix) {
  return productFolder(program,
                       "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar" + suffix,
                       "InstallLocation");
}

std::string BrundelFolder(Program& program) {
  return productFolder(program, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Brundel",
                       "Path");
}

std::string KexoraFolder(Program& program) {
  return productFolder(
      program, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Kexora.exe", "Path");
}

std::string GastrimFolder(Program& program) {
  return productFolder(program, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath");
}

}  // namespace trelv::modRegistry
