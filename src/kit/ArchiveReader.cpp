#include "kit/ArchiveReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <utility>

#include "base/RuntimeError.h"
#include "decoder/WideText.h"

namespace trelv::kit {
namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10U;

[[noreturn]] void refuse(const std::string& reason) {
  throw RuntimeError(runtime_number::kInvalidFormat, "trelv",
                     "archivio non valido (" + reason + ")");
}

}  // namespace

ByteSource textSource(std::string bytes) {
  const std::uint64_t size = bytes.size();
  return {size,
          [bytes = std::move(bytes)](std::uint64_t offset, std::size_t count,
                                     std::string& piece) -> SystemCode {
            piece = offset < bytes.size() ? bytes.substr(static_cast<std::size_t>(offset), count)
                                          : std::string();
            return system_code::kSuccess;
          }};
}

ByteSource fileSource(machine::Files& files, const std::string& path) {
  machine::FileFacts facts;
  const SystemCode code = files.look(path, facts);
  if (code != system_code::kSuccess || facts.folder) {
    throw failureFromSystemCode(code != system_code::kSuccess ? code : system_code::kAccessDenied,
                                path);
  }
  return {
      facts.size,
      [&files, path](std::uint64_t offset, std::size_t count, std::string& piece) -> SystemCode {
        return files.readPart(path, offset, count, piece);
      }};
}

void ArchiveReader::Closer::operator()(archive* reader) const { archive_read_free(reader); }

ArchiveReader::ArchiveReader(ByteSource source, ArchiveKind kind)
    : source_(std::move(source)), reader_(archive_read_new()) {
  if (!reader_) {
    throw std::bad_alloc();
  }
  archive* const reader = reader_.get();
  if (kind == ArchiveKind::Zip) {
    check(archive_read_support_format_zip_seekable(reader));
    check(archive_read_set_format_option(reader, "zip", "hdrcharset", "CP850"));
  } else {
    check(archive_read_support_format_iso9660(reader));
  }
  check(archive_read_set_seek_callback(reader, seek));
  check(archive_read_open2(reader, this, nullptr, give, skip, nullptr));
}

ArchiveReader::~ArchiveReader() = default;

std::ptrdiff_t ArchiveReader::give(archive* /*reader*/, void* self, const void** bytes) {
  auto& that = *static_cast<ArchiveReader*>(self);
  try {
    const SystemCode code = that.source_.read(that.at_, kPiece, that.piece_);
    if (code != system_code::kSuccess) {
      throw failureFromSystemCode(code, "");
    }
    that.at_ += that.piece_.size();
    *bytes = that.piece_.data();
    return static_cast<std::ptrdiff_t>(that.piece_.size());
  } catch (...) {
    that.failure_ = std::current_exception();
    return ARCHIVE_FATAL;
  }
}

std::int64_t ArchiveReader::skip(archive* /*reader*/, void* self, std::int64_t count) {
  auto& that = *static_cast<ArchiveReader*>(self);
  const std::uint64_t left = that.source_.size - std::min(that.at_, that.source_.size);
  const std::uint64_t step = std::min(left, static_cast<std::uint64_t>(count));
  that.at_ += step;
  return static_cast<std::int64_t>(step);
}

std::int64_t ArchiveReader::seek(archive* /*reader*/, void* self, std::int64_t offset, int from) {
  auto& that = *static_cast<ArchiveReader*>(self);
  const std::uint64_t base = from == SEEK_SET ? 0 : from == SEEK_CUR ? that.at_ : that.source_.size;
  const std::int64_t wanted = static_cast<std::int64_t>(base) + offset;
  if (wanted < 0) {
    return ARCHIVE_FATAL;
  }
  that.at_ = static_cast<std::uint64_t>(wanted);
  return wanted;
}

/// Ends the work unless the library is content: with the source's own failure where that is the
/// cause.
void ArchiveReader::check(int result) {
  if (failure_) {
    std::rethrow_exception(failure_);
  }
  if (result != ARCHIVE_OK && result != ARCHIVE_EOF) {
    const char* const told = archive_error_string(reader_.get());
    refuse(told != nullptr ? told : "?");
  }
}

bool ArchiveReader::next(ArchivedEntry& entry) {
  archive_entry* header = nullptr;
  const int result = archive_read_next_header(reader_.get(), &header);
  check(result);
  if (result == ARCHIVE_EOF) {
    return false;
  }
  const wchar_t* const name = archive_entry_pathname_w(header);
  if (name == nullptr) {
    refuse("nome non leggibile");
  }
  entry.name = decoder::utf8Of(name);
  const auto kind = archive_entry_filetype(header);
  entry.folder = kind == AE_IFDIR;
  entry.other = kind != AE_IFDIR && kind != AE_IFREG;
  entry.link = kind == AE_IFLNK || archive_entry_hardlink_w(header) != nullptr;
  entry.encrypted = archive_entry_is_encrypted(header) != 0;
  entry.size = static_cast<std::uint64_t>(std::max<la_int64_t>(0, archive_entry_size(header)));
  entry.moment = archive_entry_mtime(header);
  return true;
}

std::string_view ArchiveReader::block() {
  const void* bytes = nullptr;
  std::size_t count = 0;
  la_int64_t offset = 0;
  int result = ARCHIVE_OK;
  do {
    result = archive_read_data_block(reader_.get(), &bytes, &count, &offset);
    check(result);
  } while (result == ARCHIVE_OK && count == 0);
  return result == ARCHIVE_EOF ? std::string_view()
                               : std::string_view(static_cast<const char*>(bytes), count);
}

std::string ArchiveReader::content() {
  std::string bytes;
  for (std::string_view piece = block(); !piece.empty(); piece = block()) {
    bytes += piece;
  }
  return bytes;
}

}  // namespace trelv::kit
