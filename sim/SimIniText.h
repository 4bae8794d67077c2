#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace trelv::sim {

/// What the system's ini functions make of the bytes of a file: what a value is read as into a
/// buffer of `size` characters. No bytes where there is no file that can be read.
std::string iniValue(const std::string* bytes, const std::string& section, const std::string& key,
                     const std::string& defaultValue, std::uint32_t size);

/// The bytes after a value was written; nothing where it stands there already.
std::optional<std::string> withIniValue(const std::string& bytes, const std::string& section,
                                        const std::string& key, const std::string& value);

}  // namespace trelv::sim
