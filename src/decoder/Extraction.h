#pragma once

#include <cstdint>

#include "decoder/OutputTree.h"
#include "decoder/PackInput.h"

namespace trelv::decoder {

/// The most that a pack may unpack to: four times the largest pack that was thought of, far below
/// what a small hostile pack could fill.
constexpr std::uint64_t kLargestContent = std::uint64_t{16} << 30U;

/// Writes the tree of a "gz" pack (a tar archive compressed with gzip) below the output folder.
/// Nothing gets its final name before the whole pack has been read and found good; a file gets it
/// in one step. Throws a RuntimeError that describes the refusal or failure; what was temporary is
/// removed then. Keeps the same memory whatever the pack holds.
void extractPack(PackInput& pack, OutputTree& output,
                 std::uint64_t largestContent = kLargestContent);

}  // namespace trelv::decoder
