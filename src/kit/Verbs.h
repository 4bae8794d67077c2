#pragma once

#include <memory>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// A verb of the command line.
struct VerbRow {
  const char* name;
  /// One line for the help text, Italian.
  const char* summary;
  std::unique_ptr<Verb> (*make)();
};

/// The one table of verbs, in the order in which the help text lists them.
const std::vector<VerbRow>& verbs();

}  // namespace trelv::kit
