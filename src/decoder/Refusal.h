#pragma once

#include <string>

#include "base/RuntimeError.h"
#include "base/SystemCode.h"

namespace trelv::decoder {

/// Ends the work on a pack because of what is in it; `reason` is for the user.
[[noreturn]] inline void refuse(const std::string& reason) {
  throw RuntimeError(runtime_number::kApplicationDefined, "qalbunex", reason);
}

/// The same because of one of its entries, whose stored name ends the description.
[[noreturn]] void refuseEntry(const std::string& reason, const std::string& name);

/// Ends the work because of the machine, unless the code is success. `path` is what was worked on.
inline void require(SystemCode code, const std::string& path) {
  if (code != system_code::kSuccess) {
    throw failureFromSystemCode(code, path);
  }
}

}  // namespace trelv::decoder
