#pragma once

#include <cstdint>

namespace trelv {

/// Side of an installation. The values are stored and their names build ini key names.
enum class Side : std::int16_t { None = 0, Client = 1, Server = 2, ClientServer = 3 };

/// Operation of a section in a product's configuration file. The names build ini section names.
enum class Operation : std::int16_t { Setup = 1, Update = 2, Remove = 3, Exec = 4 };

/// What the first command-line argument asks for.
enum class RunMode : std::int32_t {
  None = 0,
  IntegratedRun = 2,
  IntegratedMaintain = 3,
  Interactive = 4,
  StandaloneInstall = 5,
  SingleInstall = 6
};

/// Product numbers are multiples of ten; a program number is its product's plus 1 to 4.
namespace product {
constexpr std::int16_t kUndefined = 0;
constexpr std::int16_t kNerio = 10;
constexpr std::int16_t kLuda = 20;
constexpr std::int16_t kZeltobilancio = 30;
constexpr std::int16_t kTarsena2 = 40;
constexpr std::int16_t kZeltomodelli = 50;
constexpr std::int16_t kKxk = 60;
constexpr std::int16_t kRr = 70;
}  // namespace product

/// Values of the plugin product number: the host is Dovra, or it is not.
constexpr std::int32_t kPluginDovra = 14;
constexpr std::int32_t kPluginNone = 999;

}  // namespace trelv
