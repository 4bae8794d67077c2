#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "decoder/GzipReader.h"

struct archive;
struct archive_entry;

namespace trelv::decoder {

enum class EntryKind { kFile, kFolder, kLink, kOther };

/// One entry of a tar archive.
struct TarEntry {
  /// As stored, in UTF-8.
  std::string name;
  EntryKind kind = EntryKind::kOther;
  std::uint64_t size = 0;
  /// Last change in 100 ns since 1601-01-01 UTC; 0 when the entry has none that Windows knows.
  std::uint64_t modified = 0;
};

/// Reads a tar archive (old, ustar, GNU, pax) as it is unpacked. Every name is taken as UTF-8; what
/// the archive library doubts of is refused. Outside Windows the process's own character set must
/// be UTF-8.
class TarReader {
 public:
  explicit TarReader(GzipReader& packed);
  TarReader(const TarReader&) = delete;
  TarReader& operator=(const TarReader&) = delete;

  /// The next entry; false at the archive's end, once all that follows is known to be padding.
  bool next(TarEntry& entry);
  /// The next bytes of that entry, valid until the next call; empty at its end.
  std::string_view data();

 private:
  struct Closer {
    void operator()(archive* reader) const;
  };

  static std::ptrdiff_t readPacked(archive* reader, void* self, const void** bytes);
  void check(int result);
  void fillIn(TarEntry& entry, archive_entry* header);
  void checkHeaderLength() const;
  void checkEnd();

  GzipReader& packed_;
  /// What ended the reading of the pack: must not pass through the library.
  std::exception_ptr failure_;
  std::unique_ptr<archive, Closer> reader_;
  std::uint64_t size_ = 0;
  std::uint64_t given_ = 0;
  bool inHeader_ = false;
  /// How much was unpacked before the header that is being read.
  std::uint64_t headerBegin_ = 0;
};

}  // namespace trelv::decoder
