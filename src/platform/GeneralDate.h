#pragma once

#include <string>

#include "machine/Clock.h"
#include "machine/Locale.h"

namespace trelv {

/// A date and time as the log lines and the update locks carry it: the user's short date, one blank
/// and the user's long time. At exactly midnight the time is left out, as in the Basic runtime's
/// "general date".
std::string generalDate(machine::Locale& locale, const machine::LocalTime& time);

}  // namespace trelv
