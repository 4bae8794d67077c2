#pragma once

#include <string>

#include "platform/Program.h"

/// The manager refreshes its client copy: the executable on the server share that the host hands
/// out to its workstations.
namespace trelv::modProdTrelvManager {

/// Replaces the client copy below `serverPath` (no trailing backslash) by the running
/// executable where that is newer, then puts today's date into the host's environment file, which
/// keeps one line. Both are made ready in the host's prg\tempterm, get the rights list of what they
/// replace and are put in place by one rename: a reader meets the old file or the new one, never
/// half of it. A client copy where there was none is made in its folder, whose rights it so has.
/// One that is in use is renamed aside first, to prg\com\bin\cpy. A mark of a download stays
/// behind. Never raises: a failure ends it, is reported and logged, and what was not yet replaced
/// stays as it was.
void UpdateTrelvManager(Program& program, const std::string& serverPath);

/// True when there is no target file, or when the source was changed later, in whole seconds. Full
/// paths. Raises 53 when the target is there and the source is missing, and what the file system
/// answers when the target cannot be looked at: one that nobody can see is not taken for missing.
bool IsFileNewer(Program& program, const std::string& sourcePath, const std::string& targetPath);

}  // namespace trelv::modProdTrelvManager
