#pragma once

#include <string>
#include <vector>

#include "prove/Proof.h"

namespace trelv::tests {

/// Does what the command line of the proofs says; the exit code: 0 where all held, 1 where
/// something was found, 2 for a command line that says nothing.
///
///     prove                    names each proof: name, seeds, promise and how, tabs between them
///     prove --today            what ./test makes of each, one after the other
///     prove NAME …             makes the proof's runs on all cores
///       --seeds A-B, --seed A  these seeds and not all of it
///       --today                as many as ./test makes, which change with the day
///       --only RUN             with --seed: exactly this run
///       --for MINUTES          begins no seed after that
///       --state FILE           keeps there what was done, and goes on behind it
int runProofs(const std::vector<Proof>& proofs, const std::vector<std::string>& arguments);

}  // namespace trelv::tests
