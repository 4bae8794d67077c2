#pragma once

#include <string>

namespace trelv {

/// Where the products of one host installation lie. No path has a trailing backslash. A path that
/// cannot be had is empty.
struct InstallationPaths {
  /// What the host put on the server: below it lie the catalogue, set-ups and the server's record.
  std::string server;
  /// Folder that the host's configurator asks for; the products' programs lie below its "mv".
  std::string integration;
  /// Folder of the host's programs on this workstation: the client's record and lock lie there.
  std::string programs;
};

}  // namespace trelv
