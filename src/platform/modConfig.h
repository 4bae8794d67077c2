#pragma once

#include <cstdint>
#include <string>

#include "platform/Program.h"

/// The host suite's configuration store.
namespace trelv::modConfig {

/// Product codes that the program uses.
constexpr std::int32_t kProductDovra = 14;
constexpr std::int32_t kProductSystem = 999;

/// What the store gives for an absent value when asked with this default.
constexpr const char* kDefaultValue = "_DEFAULT_VALUE_";

/// Name of a product code, or empty text for an unknown code.
std::string ProductName(std::int32_t code);
/// Code of a name (any case), or 0 for an unknown name.
std::int32_t ProductCode(const std::string& name);

/// Reads a setting; `value` receives the text before the buffer's first NUL. False when a failure
/// was reported; a missing setting gives the default value and true.
bool GetParameterXML(Program& program, std::int32_t productCode, const std::string& section,
                     const std::string& key, const std::string& attribute,
                     const std::string& defaultValue, std::int32_t bufferSize, std::string& value);

/// Writes a setting; false when a failure was reported.
bool SetParameterXML(Program& program, std::int32_t productCode, const std::string& section,
                     const std::string& key, const std::string& attribute,
                     std::int32_t attributeType, const std::string& value);

/// Path of the configuration store, without trailing backslash: programs path and client folder.
/// 0, or the library's code (-4001, -4002, -4011, -4012) with an empty path; -9999 after a report
/// when the library cannot be called.
std::int32_t GetConfigPath(Program& program, std::string& path);

/// English text of a library code.
std::string ErrorText(std::int32_t code);

/// Client folder of the workstation; empty when the store cannot give it.
std::string DeterminaPathClient(Program& program);

/// Is the Ferax suite present?
bool EsisteSuiteFerax(Program& program);
/// Is the Travolin suite present? Logs what it finds.
bool EsisteSuiteTravolin(Program& program);

}  // namespace trelv::modConfig
