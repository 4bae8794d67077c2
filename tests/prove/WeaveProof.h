#pragma once

#include <cstddef>

#include "prove/Meetings.h"
#include "prove/Proof.h"

namespace trelv::tests {

/// Into so many seeds the schedules of a meeting are divided.
constexpr std::size_t kPartsOfAMeeting = 20;
constexpr std::size_t kSeedsOfMeetings = kMeetings * kPartsOfAMeeting;
/// Schedules with three switches that are drawn for each meeting of two, all seeds together, where
/// there are so many.
constexpr std::size_t kDrawnOfAMeeting = 20'000;

/// Programs of several workstations, sessions or processes at once. A seed is one meeting, and one
/// part of its schedules: all with one switch, all with two, and drawn ones with three. Where
/// Job::enough says how many runs are enough they have one switch.
void proveInterleavings(const Job& job, Tally& tally);

/// Working weeks; a seed is one of them. Job::enough is the number of starts of each of its days.
void proveWeeks(const Job& job, Tally& tally);

}  // namespace trelv::tests
