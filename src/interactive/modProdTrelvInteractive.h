#pragma once

#include "platform/Program.h"

/// The interactive session, started from an installation medium.
namespace trelv::modProdTrelvInteractive {

/// Checks the medium, then leads the user through the forms and installs the chosen products.
/// Returns when the session ends.
void StartInstall(Program& program);

}  // namespace trelv::modProdTrelvInteractive
