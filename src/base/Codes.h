#pragma once

#include <cstdint>

namespace trelv {

/// Which end of an installation is meant. Its name begins the key of a command, "Server01".
enum class Side : std::int16_t { None = 0, Client = 1, Server = 2, ClientServer = 3 };

/// What the commands of a section are for. Its name begins that of the section, "Update01".
enum class Operation : std::int16_t { Setup = 1, Update = 2, Remove = 3, Exec = 4 };

/// What a start is to do; the host says it with the first argument.
enum class RunMode : std::int32_t {
  None = 0,
  IntegratedRun = 2,
  IntegratedMaintain = 3,
  Interactive = 4,
  StandaloneInstall = 5,
  SingleInstall = 6
};

/// Each product owns ten numbers: the first is its own, those behind it are its programs' (Nerio is
/// 10, its two programs 11 and 12).
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
