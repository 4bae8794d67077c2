#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Packs in bytes, made and read without the decoder.
namespace trelv::fuzz {

/// One gzip member, not compressed: fast.
std::string stored(std::string_view bytes);

/// One gzip member, compressed.
std::string compressed(std::string_view bytes);

/// What a pack unpacks to; nothing where it is damaged, or something else stands behind it.
std::optional<std::string> unpacked(std::string_view pack);

/// Makes headers of an archive's blocks right again, so that more than their sums is looked at.
void repairSums(std::string& archive);

}  // namespace trelv::fuzz
