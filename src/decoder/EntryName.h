#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace trelv::decoder {

/// What the name of a pack's entry means below the output folder.
struct EntryName {
  /// Names parted by "/", without one at either end; empty for the output folder itself.
  std::string path;
  /// Length of the path in UTF-16 units, as Windows counts.
  std::size_t length = 0;
  /// Why the name is refused, in words for the user; null when it is good.
  const char* refusal = nullptr;
};

/// Reads a stored name (UTF-8, "/" between the names). "." and empty names between, as in
/// "./a//b/", count for nothing. Refused is every name that Windows could take for a place outside
/// the output folder, for a device, a stream or another name of the folder.
EntryName readEntryName(std::string_view stored);

/// First part of the names that the decoder keeps for its own temporary folders.
constexpr const char* kTemporaryPrefix = "~qalbunex";

}  // namespace trelv::decoder
