#pragma once

#include <array>

#include "prove/Interleavings.h"

namespace trelv::tests {

/// A pack that the second program publishes while a workstation starts.
Meeting startAndPublish();

/// Every kind of meeting of the manager's programs with each other.
const std::array<Meeting, 12>& meetings();

}  // namespace trelv::tests
