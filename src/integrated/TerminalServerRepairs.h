#pragma once

#include <string>

#include "platform/Program.h"

/// Repairs of per-user ini files that a server-wide installation does not create in a Terminal
/// Server session. `integrationPath` (no trailing backslash) is the folder that holds "mv". Each
/// tells a step that fails in one log line and goes on with the next; none stops its caller. A file
/// that is there is never overwritten, except by the Corvel repair.
namespace trelv::modProdTrelvManager {

/// Copies the system's lumow.ini to a session user who has none that names the archives. True when
/// it copied the file.
bool RiparaCorvelTS(Program& program);

/// Puts a missing nerio.ini in its place: in every session in the user's Windows folder, on a
/// Terminal Server also in the profile's and the system's.
void RiparaNerioTS(Program& program, const std::string& integrationPath);

/// On a Terminal Server only: makes the user's zeltomodelli.ini, points it at the product folder,
/// puts missing copies in their places and removes an obsolete ini file of the product.
void RiparaZeltomodelliTS(Program& program, const std::string& integrationPath);

/// In every session: makes the user's luda.ini with the product's paths and version when missing,
/// and keeps the version in the product's own. On a Terminal Server also puts missing copies in
/// their places.
void RiparaLudaTS(Program& program, const std::string& integrationPath);

}  // namespace trelv::modProdTrelvManager
