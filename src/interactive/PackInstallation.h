#pragma once

#include "platform/Program.h"

namespace trelv::modProdTrelvInteractive {

/// Installs the selected products from the medium: opens their packs, standard in the temporary
/// folder, whose set-ups then run, else into the chosen server path, which is recorded. Tells in a
/// box how an integrated installation ended, and what could not be opened. Never raises: a failure
/// is reported.
void InstallPacks(Program& program);

}  // namespace trelv::modProdTrelvInteractive
