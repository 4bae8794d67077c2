#include "decoder/TarReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <new>

#include "decoder/Refusal.h"
#include "decoder/WideText.h"

namespace trelv::decoder {
namespace {

constexpr const char* kDamaged = "archivio tar non valido";
constexpr const char* kNameNotUtf8 = "nome che non è in UTF-8";
constexpr const char* kHole = "file con parti mancanti";
constexpr const char* kLongHeader = "archivio tar con un'intestazione troppo lunga";
constexpr const char* kNoEnd = "archivio tar senza la sua fine";
constexpr const char* kAfterEnd = "dati estranei dopo la fine dell'archivio tar";

/// All that may stand before an entry's content: names, values of pax, the map of a sparse file.
/// The library keeps it in memory and bounds only some of it.
constexpr std::uint64_t kLargestHeader = std::uint64_t{1} << 20U;

/// An archive ends with two blocks of zeros.
constexpr std::uint64_t kEndMark = 1024;

/// Seconds from 1601 to 1970, and the last second that the system's file times can tell.
constexpr std::int64_t kSecondsTo1970 = 11644473600;
constexpr std::int64_t kLastSecond = 900000000000;
constexpr std::uint64_t kTicksPerSecond = 10000000;

EntryKind kindOf(archive_entry* header) {
  if (archive_entry_hardlink_w(header) != nullptr || archive_entry_hardlink(header) != nullptr) {
    return EntryKind::kLink;
  }
  switch (archive_entry_filetype(header)) {
    case AE_IFREG:
      return EntryKind::kFile;
    case AE_IFDIR:
      return EntryKind::kFolder;
    case AE_IFLNK:
      return EntryKind::kLink;
    default:
      return EntryKind::kOther;
  }
}

std::uint64_t modifiedOf(archive_entry* header) {
  const std::int64_t seconds = archive_entry_mtime(header);
  if (archive_entry_mtime_is_set(header) == 0 || seconds <= -kSecondsTo1970 ||
      seconds > kLastSecond) {
    return 0;
  }
  return static_cast<std::uint64_t>(seconds + kSecondsTo1970) * kTicksPerSecond +
         static_cast<std::uint64_t>(archive_entry_mtime_nsec(header)) / 100;
}

}  // namespace

void TarReader::Closer::operator()(archive* reader) const { archive_read_free(reader); }

TarReader::TarReader(GzipReader& packed) : packed_(packed), reader_(archive_read_new()) {
  if (!reader_) {
    throw std::bad_alloc();
  }
  check(archive_read_support_format_tar(reader_.get()));
  check(archive_read_set_format_option(reader_.get(), "tar", "hdrcharset", "UTF-8"));
  check(archive_read_open(reader_.get(), this, nullptr, readPacked, nullptr));
}

std::ptrdiff_t TarReader::readPacked(archive* /*reader*/, void* self, const void** bytes) {
  auto& that = *static_cast<TarReader*>(self);
  try {
    const std::string_view block = that.packed_.next();
    that.checkHeaderLength();
    *bytes = block.data();
    return static_cast<std::ptrdiff_t>(block.size());
  } catch (...) {
    that.failure_ = std::current_exception();
    return ARCHIVE_FATAL;
  }
}

/// Ends the work unless the library is content: with the pack's own failure where that is the
/// cause.
void TarReader::check(int result) {
  if (failure_) {
    std::rethrow_exception(failure_);
  }
  if (result != ARCHIVE_OK && result != ARCHIVE_EOF) {
    const char* const told = archive_error_string(reader_.get());
    refuse(std::string(kDamaged) + " (" + (told != nullptr ? told : "?") + ")");
  }
}

void TarReader::fillIn(TarEntry& entry, archive_entry* header) {
  const wchar_t* const name = archive_entry_pathname_w(header);
  if (name == nullptr) {
    refuse(kNameNotUtf8);
  }
  entry.name = utf8Of(name);
  entry.kind = kindOf(header);
  entry.size = static_cast<std::uint64_t>(archive_entry_size(header));
  entry.modified = modifiedOf(header);
  size_ = entry.kind == EntryKind::kFile ? entry.size : 0;
  given_ = 0;
}

void TarReader::checkHeaderLength() const {
  if (inHeader_ && packed_.position() - headerBegin_ > kLargestHeader) {
    refuse(kLongHeader);
  }
}

/// The library stops at the first sign of an end. Reads the rest, which also compares the check
/// sum.
void TarReader::checkEnd() {
  const auto end = static_cast<std::uint64_t>(archive_read_header_position(reader_.get()));
  while (!packed_.next().empty()) {
  }
  if (packed_.contentEnd() > end) {
    refuse(kAfterEnd);
  }
  if (packed_.position() - end < kEndMark) {
    refuse(kNoEnd);
  }
}

bool TarReader::next(TarEntry& entry) {
  archive_entry* header = nullptr;
  headerBegin_ = packed_.position();
  inHeader_ = true;
  const int result = archive_read_next_header(reader_.get(), &header);
  inHeader_ = false;
  check(result);
  if (result == ARCHIVE_EOF) {
    checkEnd();
    return false;
  }
  fillIn(entry, header);
  return true;
}

std::string_view TarReader::data() {
  const void* bytes = nullptr;
  std::size_t count = 0;
  la_int64_t offset = 0;
  int result = ARCHIVE_OK;
  do {
    result = archive_read_data_block(reader_.get(), &bytes, &count, &offset);
    check(result);
  } while (result == ARCHIVE_OK && count == 0);
  const std::size_t given = result == ARCHIVE_EOF ? 0 : count;
  const bool gap = given > 0 && static_cast<std::uint64_t>(offset) != given_;
  given_ += given;
  if (gap || (given == 0 && given_ != size_)) {
    refuse(kHole);
  }
  return {static_cast<const char*>(bytes), given};
}

}  // namespace trelv::decoder
