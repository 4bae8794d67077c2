#pragma once

#include <string>

#include "platform/Program.h"

namespace trelv::modProdTrelvInfo {

/// Folder above "\setup\korvatgestionepratiche.ocx" as it is registered on this machine: lower
/// case, without trailing backslash. Empty when the component is not registered. The class
/// registrations are many: they are searched once and again only after a program ran.
std::string NerioComponentFolder(Program& program);

}  // namespace trelv::modProdTrelvInfo
