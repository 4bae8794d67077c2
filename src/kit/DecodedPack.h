#pragma once

#include <map>
#include <string>

namespace trelv::kit {

/// What the decoder writes of a gz pack: {path with "/": content}. `shown` names the pack. Raises
/// RuntimeError with the decoder's own words where it refuses the pack.
std::map<std::string, std::string> decodedPack(const std::string& bytes, const std::string& shown);

}  // namespace trelv::kit
