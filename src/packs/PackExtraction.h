#pragma once

#include <string>

#include "platform/Program.h"

/// Opening of product packs.
namespace trelv::modProdTrelvManager {

/// Opens every zip pack of `folder` with 7-Zip and copies what it held into the set-up folder below
/// `target`; opened packs are deleted when `removePacks`. Both folders without trailing backslash.
/// True on normal completion, also when packs could not be opened.
bool OpenZipPacksInFolder(Program& program, const std::string& folder, const std::string& target,
                          bool removePacks);

}  // namespace trelv::modProdTrelvManager
