#pragma once

#include <string>
#include <vector>

#include "prove/Invariants.h"

namespace trelv::tests {

/// Exceptions of worlds that are made up by chance: the call, in which works and with which codes,
/// and why the system leaves it undone.
const CallTable<Exception>& exceptionsByChance(Invariant invariant);

/// The names of all exceptions for a trouble.
std::vector<std::string> namesOfExceptions(Trouble trouble);

}  // namespace trelv::tests
