#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace trelv::kit {

/// Seconds since 1970-01-01, universal time.
using Moment = std::int64_t;

/// "2026-11-21 10:00:00" or "2026-11-21", universal time; nothing for another text and for a day or
/// time that there is not.
std::optional<Moment> momentOf(const std::string& text);

/// "2026-11-21", "2026-11-21 10:00:00".
std::string dayText(Moment moment);
std::string momentText(Moment moment);

/// As machine::FileFacts tell it.
std::uint64_t fileTimeOf(Moment moment);

}  // namespace trelv::kit
