#pragma once

#include <string>

#include "platform/Program.h"

/// What the machine needs before a product's first set-up on a side. Paths have no trailing
/// backslash. Each preparation acts only while the product has no version in that side's record:
/// the host suite's ini file is pointed at the server, registry values and ini files that the
/// client set-ups expect are written, and components that an earlier installation registered from
/// another folder are deregistered.
namespace trelv::modProdTrelvManager {

/// Server side: Tarsena2, Zeltobilancio, Nerio.
void PreparaInstSrvAll(Program& program, const std::string& serverPath);

/// Client side: Tarsena2, Zeltobilancio, Nerio.
void PreparaInstClientAll(Program& program, const std::string& serverPath,
                          const std::string& programsPath);

}  // namespace trelv::modProdTrelvManager
