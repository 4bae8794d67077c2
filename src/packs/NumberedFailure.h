#pragma once

#include <string>

#include "base/RuntimeError.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// One log line for a failure: `beginning`, which ends with the opening bracket, then number and
/// text of the failure and the closing bracket.
inline void logNumbered(Program& program, const std::string& beginning,
                        const RuntimeError& failure) {
  program.log.WriteLog(beginning + std::to_string(failure.number()) + " " + failure.description() +
                       ")");
}

}  // namespace trelv::modProdTrelvManager
