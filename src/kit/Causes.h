#pragma once

#include <optional>
#include <string>

#include "kit/ProductHistory.h"

namespace trelv::kit {

/// Why a product is as it is.
struct Cause {
  /// "lock", "catalogue-gap", …: one of the names that the documents list.
  std::string name;
  Stop stop;
  /// Italian.
  std::string remedy;
};

/// The first thing that stopped a product in the newest start of a log; "up-to-date" where nothing
/// did, "unknown" where nothing can be proved. Asks the host, writes nothing.
Cause causeOf(Program& program, const std::string& serverPath, const std::string& product,
              const std::string& logFile, const RunLogText& log);

}  // namespace trelv::kit
