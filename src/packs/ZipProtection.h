#pragma once

#include <string>

#include "machine/Files.h"

namespace trelv::modProdTrelvManager {

/// What keeps a pack from being given to 7-Zip.
enum class ZipObstacle {
  None,
  /// It may ask for a password, and wait for it.
  Password,
  /// More folders in each other than kMostPackLevels.
  Levels
};

/// No pack of the products has nearly as many folders in each other; thousands keep 7-Zip and
/// whoever copies or removes them at work for hours.
constexpr int kMostPackLevels = 100;

/// May 7-Zip be started to open this file (full path)? It may ask for a password where an entry of
/// the zip archive is encrypted by what the archive's directory or the header before its content
/// says (7-Zip goes by either), where directory and headers cannot be found or do not agree about
/// where the entries stand, and for archives of the kinds 7z and rar, which need not show whether
/// they are encrypted. A file that cannot be read, or that is no archive at all, is left to 7-Zip,
/// which ends with an error. Reads the end of the file, its directory and the headers only.
ZipObstacle FindObstacle(machine::Files& files, const std::string& path);

}  // namespace trelv::modProdTrelvManager
