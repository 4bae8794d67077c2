#pragma once

#include <optional>
#include <string>

namespace trelv::fuzz {

/// Asks the program's own reader and the simulated platform's functions for every name that the
/// bytes hold and for some that they do not. Describes the first difference. Nothing when there is
/// none or when the reader leaves the bytes to the platform.
std::optional<std::string> iniDifference(const std::string& bytes);

}  // namespace trelv::fuzz
