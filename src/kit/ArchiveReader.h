#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/SystemCode.h"
#include "kit/ArchiveSurroundings.h"
#include "kit/Moment.h"
#include "machine/Files.h"

struct archive;

namespace trelv::kit {

/// Bytes that can be read anywhere: a file or a text.
struct ByteSource {
  std::uint64_t size = 0;
  std::function<SystemCode(std::uint64_t offset, std::size_t size, std::string& bytes)> read;
};

ByteSource textSource(std::string bytes);
/// Raises RuntimeError where the file (full path) cannot be looked at.
ByteSource fileSource(machine::Files& files, const std::string& path);

enum class ArchiveKind { Zip, Iso };

/// What an archive says of one of its entries.
struct ArchivedEntry {
  /// As stored, in UTF-8, "/" between the levels.
  std::string name;
  bool folder = false;
  /// Neither a file nor a folder.
  bool other = false;
  /// Leads to another file; also a second name of one.
  bool link = false;
  /// What is in it cannot be read.
  bool encrypted = false;
  std::uint64_t size = 0;
  Moment moment = 0;
};

/// Reads a zip archive or an image of a disk. Names that are not marked as UTF-8 are those of code
/// page 850, as 7-Zip takes them on an Italian Windows. Raises RuntimeError for what is no such
/// archive or is damaged.
class ArchiveReader {
 public:
  ArchiveReader(ByteSource source, ArchiveKind kind);
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;
  ~ArchiveReader();

  /// The next entry; false at the end.
  bool next(ArchivedEntry& entry);
  /// The next bytes of that entry, valid until the next call; empty at its end.
  std::string_view block();
  /// All its bytes that have not been read yet.
  std::string content();

 private:
  struct Closer {
    void operator()(archive* reader) const;
  };
  static std::ptrdiff_t give(archive* reader, void* self, const void** bytes);
  static std::int64_t skip(archive* reader, void* self, std::int64_t count);
  static std::int64_t seek(archive* reader, void* self, std::int64_t offset, int from);
  void check(int result);

  ArchiveSurroundings surroundings_;
  ByteSource source_;
  std::uint64_t at_ = 0;
  std::string piece_;
  std::exception_ptr failure_;
  std::unique_ptr<archive, Closer> reader_;
};

}  // namespace trelv::kit
