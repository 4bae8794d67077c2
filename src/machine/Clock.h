#pragma once

#include <cstdint>

namespace trelv::machine {

/// A local date and time. Month and day count from 1.
struct LocalTime {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;

  friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

/// The wall clock, and the passing of time.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual LocalTime now() = 0;
  /// Local date and time of a moment as FileFacts tell it, by the difference from universal time
  /// that holds now.
  virtual LocalTime localTime(std::uint64_t moment) = 0;
  /// Returns when so much time has passed. No message runs meanwhile.
  virtual void pause(std::uint32_t milliseconds) = 0;
};

}  // namespace trelv::machine
