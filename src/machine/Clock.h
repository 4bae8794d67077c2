#pragma once

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

/// The wall clock.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual LocalTime now() = 0;
};

}  // namespace trelv::machine
