#pragma once

#include <string>

#include "base/InstallationPaths.h"
#include "platform/Program.h"

/// Set-ups of some products do not find their way on a machine that never had the product: they
/// read lumow.ini, ini files of their own and a registry value, and stumble over old components
/// that Windows still knows at another place. All this is put right here, at each start until the
/// side's record has a version. Paths have no trailing backslash. None raises: who fails tells it,
/// and the next step follows.
namespace trelv::modProdTrelvManager {

/// Server side: Tarsena2, Zeltobilancio, Nerio.
void PreparaInstSrvAll(Program& program, const std::string& serverPath);

/// Client side: Tarsena2, Zeltobilancio, Nerio.
void PreparaInstClientAll(Program& program, const InstallationPaths& paths);

}  // namespace trelv::modProdTrelvManager
