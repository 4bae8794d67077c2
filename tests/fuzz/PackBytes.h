#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Packs in bytes, made and read without the decoder.
namespace trelv::fuzz {

/// One gzip member; not compressed, which is fast, unless asked for.
std::string packed(std::string_view bytes, bool compressed = false);

/// What a pack unpacks to; nothing where it is damaged, or something else stands behind it.
std::optional<std::string> unpacked(std::string_view pack);

/// Makes headers of an archive's blocks right again, so that more than their sums is looked at.
void repairSums(std::string& archive);

}  // namespace trelv::fuzz
