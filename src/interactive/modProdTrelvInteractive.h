#pragma once

#include "platform/Program.h"

/// The interactive session, started from an installation medium. What is read from the medium and
/// what the forms tell stands in SessionState. Only StartInstall may raise.
namespace trelv::modProdTrelvInteractive {

/// Checks the medium, then leads the user through the forms and installs the chosen products.
/// Returns when the session ends, and the process with it.
void StartInstall(Program& program);

/// Are the files there without which there is no session? False too, after a report, when the
/// medium cannot be looked at.
bool TestFileSetup(Program& program);

/// Reads the medium's version, the header of the forms, the options and the menu. A file that
/// cannot be read is reported, and what it would tell stays empty.
void getVersione(Program& program);

/// Reads the products that the medium wants to be looked for, and looks for them.
void PrepareProducts(Program& program);

/// Fills in what the presence checks find out of the products that were read. Raises -99 for an
/// identifier that is no product's.
void GetConfiguratedProducts(Program& program);

/// Makes the list of the integrated form from the lists of the menu.
void PrepareVoiceMenu(Program& program);

}  // namespace trelv::modProdTrelvInteractive
