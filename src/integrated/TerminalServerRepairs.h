#pragma once

#include <string>

#include "platform/Program.h"

/// Repairs of per-user ini files that a server-wide installation does not create in a Terminal
/// Server session. `integrationPath` (no trailing backslash) is the folder that holds "mv". Each
/// logs and goes on; none stops its caller.
namespace trelv::modProdTrelvManager {

/// Copies the system's lumow.ini to a session user who has none that names the archives. True when
/// it copied the file.
bool RiparaCorvelTS(Program& program);

/// Puts a missing nerio.ini in its place, in the user's, the profile's and the Windows folder.
void RiparaNerioTS(Program& program, const std::string& integrationPath);

/// The same for zeltomodelli.ini; removes an obsolete ini file of the product.
void RiparaZeltomodelliTS(Program& program, const std::string& integrationPath);

/// The same for luda.ini, which is made with the product's paths and version when missing.
void RiparaLudaTS(Program& program, const std::string& integrationPath);

}  // namespace trelv::modProdTrelvManager
