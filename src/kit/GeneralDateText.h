#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "machine/Clock.h"
#include "machine/Locale.h"

namespace trelv::kit {

/// A date as the manager writes it into locks and logs ("16/11/2026 09:30:00", at midnight the date
/// alone), read back: in the order of this user's system, else day, month, year. Nothing where the
/// text is no date.
std::optional<machine::LocalTime> readGeneralDate(machine::Locale& locale, const std::string& text);

/// Seconds between two local times, 0 where `later` is the earlier one: clocks differ.
std::int64_t secondsBetween(const machine::LocalTime& earlier, const machine::LocalTime& later);

}  // namespace trelv::kit
