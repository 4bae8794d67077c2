#pragma once

#include <string>
#include <vector>

namespace trelv::kit {

/// The lines of a text without their ends, which are CR LF or LF; nothing behind the last end is no
/// line.
std::vector<std::string> textLines(const std::string& text);

}  // namespace trelv::kit
