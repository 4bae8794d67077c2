#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/Files.h"

/// What a zip pack brings to the set-up folder of a server, and how contents are told apart.
namespace trelv::kit {

/// Tells contents apart without keeping them.
struct Fingerprint {
  std::uint64_t size = 0;
  std::uint64_t hash = 0;

  friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

Fingerprint fingerprintOf(std::string_view bytes);
/// Of a file (full path); nothing where none stands, a folder included. Raises RuntimeError where
/// it cannot be read.
std::optional<Fingerprint> fingerprintOfFile(machine::Files& files, const std::string& path);

/// A file that a pack brings.
struct PackedFile {
  /// Below the set-up folder, "\" between the levels.
  std::string path;
  Fingerprint print;
};

/// The files of a zip pack (full path) that reach the set-up folder, in the order of the pack;
/// those of zip packs inside, which the next start opens, behind the pack that holds them. What
/// lies elsewhere in the pack is not copied and left out. Raises RuntimeError for a pack that
/// cannot be read.
std::vector<PackedFile> packContent(machine::Files& files, const std::string& pack);

/// Bytes of one of those files as the opened pack leaves it; nothing where the pack has none of
/// that name.
std::optional<std::string> packedBytes(machine::Files& files, const std::string& pack,
                                       const std::string& wanted);

}  // namespace trelv::kit
