#pragma once

#include <string>

namespace trelv::kit {

/// The version of the project, "1.0.0.0".
std::string programVersion();

}  // namespace trelv::kit
