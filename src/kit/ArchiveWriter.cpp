#include "kit/ArchiveWriter.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <new>
#include <set>
#include <utility>

#include "base/RuntimeError.h"
#include "decoder/WideText.h"
#include "kit/IsoDates.h"

namespace trelv::kit {
namespace {

constexpr const char* kUtf8 = "UTF-8";
constexpr const char* kStrongest = "9";
/// Reading and writing for the owner, reading for all others: nothing of the machine that builds.
constexpr int kFileMode = 0644;
constexpr int kFolderMode = 0755;

struct EntryCloser {
  void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Entry = std::unique_ptr<archive_entry, EntryCloser>;

struct WriterCloser {
  void operator()(archive* writer) const { archive_write_free(writer); }
};

/// An archive that is being written.
class Writer {
 public:
  explicit Writer(ByteSink sink) : sink_(std::move(sink)), writer_(archive_write_new()) {
    if (!writer_) {
      throw std::bad_alloc();
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() = default;

  archive* handle() { return writer_.get(); }

  /// Ends the work unless the library is content: with the sink's own failure where that is the
  /// cause.
  void check(int result) {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    if (result != ARCHIVE_OK) {
      const char* const told = archive_error_string(writer_.get());
      throw RuntimeError(
          runtime_number::kDeviceFailure, "trelv",
          std::string("archivio non scritto (") + (told != nullptr ? told : "?") + ")");
    }
  }

  void option(const char* module, const char* name, const char* value) {
    check(archive_write_set_format_option(writer_.get(), module, name, value));
  }

  /// Behind the format and its options.
  void open() {
    // Otherwise the last block is filled up.
    check(archive_write_set_bytes_in_last_block(writer_.get(), 1));
    check(archive_write_open(writer_.get(), this, nullptr, take, nullptr));
  }

  void addFolder(const std::string& name, Moment moment) {
    add(name, AE_IFDIR, kFolderMode, "", moment);
  }
  void addFile(const ArchiveFile& file, Moment moment) {
    add(file.name, AE_IFREG, kFileMode, file.content, moment);
  }

  void close() { check(archive_write_close(writer_.get())); }

 private:
  static la_ssize_t take(archive* /*writer*/, void* self, const void* bytes, std::size_t size) {
    auto& that = *static_cast<Writer*>(self);
    try {
      that.sink_({static_cast<const char*>(bytes), size});
      return static_cast<la_ssize_t>(size);
    } catch (...) {
      that.failure_ = std::current_exception();
      return -1;
    }
  }

  void add(const std::string& name, unsigned kind, int mode, std::string_view content,
           Moment moment) {
    const Entry entry(archive_entry_new2(writer_.get()));
    if (!entry) {
      throw std::bad_alloc();
    }
    archive_entry_copy_pathname_w(entry.get(), decoder::wideOf(name).c_str());
    archive_entry_set_filetype(entry.get(), kind);
    archive_entry_set_perm(entry.get(), static_cast<__LA_MODE_T>(mode));
    archive_entry_set_nlink(entry.get(), 1);
    archive_entry_set_mtime(entry.get(), static_cast<time_t>(moment), 0);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    check(archive_write_header(writer_.get(), entry.get()));
    while (!content.empty()) {
      const la_ssize_t written = archive_write_data(writer_.get(), content.data(), content.size());
      check(written > 0 ? ARCHIVE_OK : ARCHIVE_FATAL);
      content.remove_prefix(static_cast<std::size_t>(written));
    }
    check(archive_write_finish_entry(writer_.get()));
  }

  ByteSink sink_;
  std::exception_ptr failure_;
  std::unique_ptr<archive, WriterCloser> writer_;
};

/// The folders that lead to a file, from above.
std::vector<std::string> foldersAbove(const std::string& name) {
  std::vector<std::string> folders;
  for (std::size_t at = name.find('/'); at != std::string::npos; at = name.find('/', at + 1)) {
    folders.push_back(name.substr(0, at));
  }
  return folders;
}

/// Adds files, and before each the folders above it that have not come yet.
class Tree {
 public:
  void add(Writer& writer, const ArchiveFile& file, Moment folderMoment, Moment moment) {
    for (const std::string& folder : foldersAbove(file.name)) {
      if (folders_.insert(folder).second) {
        writer.addFolder(folder, folderMoment);
      }
    }
    writer.addFile(file, moment);
  }

 private:
  std::set<std::string> folders_;
};

ByteSink appendTo(std::string& text) {
  return [&text](std::string_view bytes) -> void { text += bytes; };
}

/// The library writes the present time: puts ours where the format has it.
void putGzipTime(std::string& archive, Moment moment) {
  constexpr std::size_t kPlace = 4;
  for (std::size_t i = 0; i < 4; ++i) {
    archive.at(kPlace + i) =
        static_cast<char>((static_cast<std::uint64_t>(moment) >> (8U * i)) & 0xFFU);
  }
}

}  // namespace

std::string zipArchive(const std::vector<ArchiveFile>& files, Moment moment) {
  const ArchiveSurroundings surroundings;
  std::string bytes;
  Writer writer(appendTo(bytes));
  writer.check(archive_write_set_format_zip(writer.handle()));
  writer.option("zip", "compression", "deflate");
  writer.option("zip", "compression-level", kStrongest);
  writer.option("zip", "hdrcharset", kUtf8);
  writer.open();
  for (const ArchiveFile& file : files) {
    writer.addFile(file, moment);
  }
  writer.close();
  return bytes;
}

std::string tarGzArchive(const std::vector<ArchiveFile>& files, Moment moment) {
  const ArchiveSurroundings surroundings;
  std::string bytes;
  Writer writer(appendTo(bytes));
  writer.check(archive_write_set_format_pax_restricted(writer.handle()));
  writer.option(nullptr, "hdrcharset", kUtf8);
  writer.check(archive_write_add_filter_gzip(writer.handle()));
  writer.check(
      archive_write_set_filter_option(writer.handle(), "gzip", "compression-level", kStrongest));
  writer.open();
  Tree tree;
  for (const ArchiveFile& file : files) {
    tree.add(writer, file, moment, moment);
  }
  writer.close();
  putGzipTime(bytes, moment);
  return bytes;
}

struct IsoImage::Content {
  Content(Moment time, ByteSink sink)
      : moment(time),
        dates(time, std::move(sink)),
        writer([this](std::string_view bytes) -> void { dates.take(bytes); }) {}

  ArchiveSurroundings surroundings;
  Moment moment;
  IsoDates dates;
  Writer writer;
  Tree tree;
};

IsoImage::IsoImage(const std::string& label, Moment moment, ByteSink sink)
    : content_(std::make_unique<Content>(moment, std::move(sink))) {
  Writer& writer = content_->writer;
  writer.check(archive_write_set_format_iso9660(writer.handle()));
  constexpr const char* kModule = "iso9660";
  writer.option(kModule, "volume-id", label.c_str());
  // Names and times of another system's own: Windows reads Joliet.
  writer.option(kModule, "rockridge", nullptr);
  writer.option(kModule, "joliet", "long");
  writer.option(kModule, "iso-level", "3");
  writer.open();
}

IsoImage::~IsoImage() = default;

bool IsoImage::takes(const std::string& name) {
  constexpr std::size_t kLongest = 239;
  constexpr std::ptrdiff_t kDeepest = 6;
  return name.size() <= kLongest && std::count(name.begin(), name.end(), '/') <= kDeepest;
}

void IsoImage::add(const ArchiveFile& file, Moment moment) {
  content_->tree.add(content_->writer, file, content_->moment, moment);
}

void IsoImage::finish() {
  content_->writer.close();
  content_->dates.finish();
}

}  // namespace trelv::kit
