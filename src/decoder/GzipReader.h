#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "decoder/PackInput.h"

namespace trelv::decoder {

/// Unpacks gzip as it is read: one or several members one after the other, check sum and length of
/// each compared, zeros allowed behind the last. Everything else behind it, and every damage, is
/// refused. Keeps two buffers, whatever the length of the pack.
class GzipReader {
 public:
  /// Refuses to unpack more than `limit` bytes.
  GzipReader(PackInput& input, std::uint64_t limit);
  ~GzipReader();
  GzipReader(const GzipReader&) = delete;
  GzipReader& operator=(const GzipReader&) = delete;

  /// The next bytes, valid until the next call; empty at the end of a good pack.
  std::string_view next();

  /// How many bytes next() has given.
  std::uint64_t position() const { return position_; }
  /// The position behind the last byte that was not 0.
  std::uint64_t contentEnd() const { return contentEnd_; }

 private:
  struct Inflation;

  std::string_view inflateSome();
  bool fill();
  void requireInput();
  void beginMember();
  void passPadding();
  void count(std::string_view bytes);

  PackInput& input_;
  const std::uint64_t limit_;
  std::unique_ptr<char[]> packed_;
  std::unique_ptr<char[]> unpacked_;
  std::unique_ptr<Inflation> inflation_;
  bool inMember_ = false;
  bool ended_ = false;
  std::uint64_t position_ = 0;
  std::uint64_t contentEnd_ = 0;
};

}  // namespace trelv::decoder
