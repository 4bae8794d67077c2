#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "prove/Interleavings.h"

namespace trelv::tests {

constexpr std::size_t kMeetings = 18;

/// A pack that the second program publishes while so many workstations start.
Meeting startsAndPublish(const char* name, std::size_t starts,
                         const std::vector<std::size_t>& alike);

/// Every kind of meeting of the manager's programs with each other: those of two programs first.
const std::array<Meeting, kMeetings>& meetings();

}  // namespace trelv::tests
