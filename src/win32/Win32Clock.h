#pragma once

#include "machine/Clock.h"

namespace trelv::win32 {

/// The system's local time.
class Win32Clock : public machine::Clock {
 public:
  machine::LocalTime now() override;
  machine::LocalTime localTime(std::uint64_t moment) override;
  void pause(std::uint32_t milliseconds) override;
};

}  // namespace trelv::win32
