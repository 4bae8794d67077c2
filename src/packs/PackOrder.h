#pragma once

#include <string>
#include <vector>

#include "base/ProgramState.h"
#include "platform/Program.h"

/// Where the zip packs of a medium lie, and the order in which they are opened.
namespace trelv::modProdTrelvInteractive {

/// Full paths of the zip packs of `folder` (no trailing backslash), ordered by SortStrings; only
/// the extension "zip" in lower case counts. Never raises: a failure is told in one log line, and
/// what was found before it is returned as it was read.
std::vector<std::string> OrderZipPacks(Program& program, const std::string& folder);

/// Full path of the folder on the medium in which an entry's packs lie, without trailing backslash;
/// empty where the medium's menu names none, or one that lies elsewhere.
std::string PackFolder(const Program& program, const OfferedProduct& entry);

/// Sorts by binary comparison, ascending, all but the last element, which stays where it is.
void SortStrings(std::vector<std::string>& list);

}  // namespace trelv::modProdTrelvInteractive
