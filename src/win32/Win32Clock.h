#pragma once

#include "machine/Clock.h"

namespace trelv::win32 {

/// The system's local time.
class Win32Clock : public machine::Clock {
 public:
  machine::LocalTime now() override;
};

}  // namespace trelv::win32
