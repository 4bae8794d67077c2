#pragma once

#include "prove/Proof.h"

namespace trelv::tests {

/// Every call of every work fails, in every way in which it can. A seed is one world of each work.
void proveFaults(const Job& job, Tally& tally);
/// A second call, anywhere behind the first, fails too; sampled.
void provePairs(const Job& job, Tally& tally);
/// The program is ended by force before each call and within each that writes; then it is started
/// until nothing is left to do.
void proveKills(const Job& job, Tally& tally);
/// The power fails before each call and within each that writes; the disks keep what chance says.
/// Then it is started until nothing is left to do.
void provePower(const Job& job, Tally& tally);

}  // namespace trelv::tests
