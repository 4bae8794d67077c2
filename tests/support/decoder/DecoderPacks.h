#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "decoder/Extraction.h"
#include "decoder/PackInput.h"
#include "support/decoder/MemoryTree.h"

namespace trelv::decoder {

/// The bytes of a tar archive, put together entry by entry.
class TarBytes {
 public:
  /// Any entry; `type` is the type flag of its header.
  TarBytes& entry(const std::string& name, char type, const std::string& content = "",
                  const std::string& link = "");
  TarBytes& file(const std::string& name, const std::string& content) {
    return entry(name, '0', content);
  }
  TarBytes& folder(const std::string& name) { return entry(name, '5'); }
  /// Values of pax that hold for the next entry.
  TarBytes& pax(const std::vector<std::pair<std::string, std::string>>& values);
  /// The next entry's name as GNU tar stores a long one.
  TarBytes& gnuName(const std::string& name);
  /// The header of a sparse file of GNU tar without content, whose map goes on in the next block.
  TarBytes& gnuSparse(const std::string& name);
  TarBytes& bytes(const std::string& more);

  /// With the archive's end, filled to 10,240 bytes as tar does.
  std::string whole() const;
  const std::string& withoutEnd() const { return bytes_; }

 private:
  std::string bytes_;
};

/// One gzip member.
std::string gzip(const std::string& bytes);
inline std::string pack(const TarBytes& archive) { return gzip(archive.whole()); }

/// A pack in memory that comes in pieces of any length.
class MemoryPack : public PackInput {
 public:
  explicit MemoryPack(std::string bytes, std::size_t piece = 1U << 20U);

  std::string path() const override { return "C:\\P\\a.gz"; }
  SystemCode read(char* buffer, std::size_t size, std::size_t& count) override;

  /// What a read answers behind the last byte.
  SystemCode atEnd = system_code::kSuccess;

 private:
  std::string bytes_;
  std::size_t piece_;
  std::size_t at_ = 0;
};

/// Unpacks the bytes into the tree; the refusal's description, empty when all is well.
std::string extracted(const std::string& packBytes, MemoryTree& tree,
                      std::uint64_t largest = kLargestContent);

}  // namespace trelv::decoder
