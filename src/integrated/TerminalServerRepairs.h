#pragma once

#include <string>

#include "platform/Program.h"

/// On a Terminal Server a product is installed once, and each user's session lacks the ini files
/// that its programs read there; these repairs put them in place. `integrationPath` (no trailing
/// backslash) is the folder that holds "mv". Each tells a step that fails in one log line and goes
/// on with the next; none stops its caller. A file that is there is never overwritten, except by
/// the Corvel repair.
namespace trelv::modProdTrelvManager {

/// A session's user whose lumow.ini does not name the archives gets the system's. True if so.
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
