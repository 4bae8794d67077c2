#pragma once

#include <string>

namespace trelv::tests::publishing {

/// The host whose packs are published, its set-up folder, and two packs that were handed over.
constexpr const char* kHost = "S:\\Lumo";
constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra";
constexpr const char* kPack = "C:\\Consegne\\zb-09.95.zip";
constexpr const char* kOther = "C:\\Consegne\\nerio-03.21.zip";

/// A configuration file of product ZB with which nothing is wrong; `version` such as "09.95.00.00".
inline std::string configuration(const std::string& version) {
  return "[Setup01]\r\nversion=" + version +
         "\r\nServer01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\setup.exe -s\r\n"
         "[Exec]\r\nMVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe\r\n"
         "[Remove]\r\nServer01=%PATHWORK%\\mv\\zb\\togli.exe -s\r\n";
}

}  // namespace trelv::tests::publishing
