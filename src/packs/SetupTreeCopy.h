#pragma once

#include <string>

#include "platform/Program.h"

/// How the content of a pack comes to the set-up folder of a server, from which other workstations
/// start what they find at any moment.
namespace trelv::modProdTrelvManager {

/// Copies the set-up tree `source` onto `target`, a folder that is there (full paths, no trailing
/// backslash). What both have is replaced, read-only files too; what only the target has stays.
/// What names a version arrives behind what it starts: first the files of all sub-folders, then
/// those that lie in the tree itself, each time ini files behind the others, the product catalogue
/// last of all. Each file is copied under another name beside its place and renamed: under its own
/// name there is the old one or the new one, whole, whenever somebody looks and wherever the copy
/// ends. A file that is in use and has the same content already counts as copied. Raises before
/// anything is changed 76 when the source is missing, 75 for a link or junction in it, which is
/// never followed, or too many levels of folders (kMostPackLevels); later 58 where a file stands in
/// the place of a folder, 70 for a target that is
/// in use, protected by rights or a folder, and what the system answers else, with the path of the
/// target, or of the source when that is what is missing. The first failure ends it.
void CopySetupTree(Program& program, const std::string& source, const std::string& target);

/// Removes what copies onto `target` that were ended by force left under way, in those of its
/// folders that the tree `source` has too. Never raises: what cannot be removed waits for the next.
void RemoveCopiesUnderWay(Program& program, const std::string& source, const std::string& target);

}  // namespace trelv::modProdTrelvManager
