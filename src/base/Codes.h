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
/// 10, its two programs 11 and 12). A program number may lead to other tens than these.
enum class Product : std::int16_t {
  Undefined = 0,
  Nerio = 10,
  Luda = 20,
  Zeltobilancio = 30,
  Tarsena2 = 40,
  Zeltomodelli = 50,
  Kxk = 60,
  Rr = 70,
  Veltra = 80
};

/// Plugin product number: the host is Dovra, or it is not; nothing before a start asked.
enum class PluginProduct : std::int32_t { Unasked = 0, Dovra = 14, None = 999 };

}  // namespace trelv
