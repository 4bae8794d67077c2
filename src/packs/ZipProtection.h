#pragma once

#include <string>

#include "machine/Files.h"

namespace trelv::modProdTrelvManager {

/// May 7-Zip ask for a password to open this file (full path)? True where an entry of the zip
/// archive is encrypted, where its directory, which would say so, cannot be found, and for archives
/// of the kinds 7z and rar, which need not show whether they are. A file that cannot be read, or
/// that is no archive at all, is left to 7-Zip, which ends with an error. Reads the end of the file
/// and its directory only.
bool NeedsPassword(machine::Files& files, const std::string& path);

}  // namespace trelv::modProdTrelvManager
