#pragma once

#include "base/SiteNames.h"
#include "platform/Program.h"

/// The optional file "TrelvManager.ini" beside the program, in which a site gives the names of its
/// host suite where they differ from the built-in ones. docs/formats.md describes it.
namespace trelv::siteFile {

/// The names of this site. The file is looked at once in the life of the process, when somebody
/// first asks; what it does not give, or gives in a shape that cannot be right, stays as it is
/// built in. The latter gets a log line that names the key.
const SiteNames& Names(Program& program);

}  // namespace trelv::siteFile
