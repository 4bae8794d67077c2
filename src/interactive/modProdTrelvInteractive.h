#pragma once

#include "platform/Program.h"

/// The interactive session, started from an installation medium.
namespace trelv::modProdTrelvInteractive {

/// Checks the medium, then leads the user through the forms and installs the chosen products.
/// Comes back when the user is done.
void StartInstall(Program& program);

}  // namespace trelv::modProdTrelvInteractive
