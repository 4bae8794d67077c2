#pragma once

#include <cstdint>
#include <string>

namespace trelv::kit {

/// Seconds since 1970-01-01, universal time.
using Moment = std::int64_t;

/// "2026-11-21", "2026-11-21 10:00:00".
std::string dayText(Moment moment);
std::string momentText(Moment moment);

}  // namespace trelv::kit
