#pragma once

#include <cstdint>
#include <string>

#include "platform/Program.h"

/// Questions to the store that the suite keeps its settings in.
namespace trelv::modConfig {

/// Product codes that the program uses.
constexpr std::int32_t kProductDovra = 14;
constexpr std::int32_t kProductSystem = 999;

/// What the store gives for an absent value when asked with this default.
constexpr const char* kDefaultValue = "_DEFAULT_VALUE_";

/// "DOVRA" for 14; "" for a number that no product has. Names of the suite's other products are the
/// site's, see platform/SiteFile.h.
std::string ProductName(Program& program, std::int32_t code);
/// The other way round, in any case of letters; 0 for what is no product.
std::int32_t ProductCode(Program& program, const std::string& name);

/// Where a setting stands in the store.
struct SettingAddress {
  /// Product code.
  std::int32_t product = 0;
  std::string section;
  std::string key;
  std::string attribute;
};

/// Reads a setting, cut at its first NUL, into `value`. One that is missing reads as
/// `defaultValue`, which is no failure; of any other trouble the user is told, and the answer is
/// false.
bool GetParameterXML(Program& program, const SettingAddress& address,
                     const std::string& defaultValue, std::int32_t bufferSize, std::string& value);

/// Stores a setting. False if the user had to be told that it was not stored.
bool SetParameterXML(Program& program, const SettingAddress& address, std::int32_t attributeType,
                     const std::string& value);

/// Path of the configuration store, without trailing backslash: it is the programs path. 0, or the
/// library's code (-4001, -4002, -4011, -4012) with an empty path; -9999 after a report when the
/// library cannot be called.
std::int32_t GetConfigPath(Program& program, std::string& path);

/// English text of a library code.
std::string ErrorText(std::int32_t code);

/// The same path; "", after a report, if the store does not know it.
std::string DeterminaPathClient(Program& program);

/// Does Ferax say in the registry that it is in use here?
bool EsisteSuiteFerax(Program& program);
/// Does any setting lead to a folder of Travolin's? The log has what was found.
bool EsisteSuiteTravolin(Program& program);

}  // namespace trelv::modConfig
