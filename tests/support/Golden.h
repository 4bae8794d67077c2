#pragma once

#include <string>

namespace trelv::tests {

/// Text of a file of tests/golden, its lines ended by "\n". Raises std::runtime_error where there
/// is none.
std::string golden(const std::string& name);

}  // namespace trelv::tests
