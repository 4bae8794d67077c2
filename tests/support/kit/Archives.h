#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <string>
#include <vector>

namespace trelv::tests {

/// An entry of an archive that a test makes; a folder where the name ends in "/".
struct ArchiveFile {
  std::string name;
  std::string content;
  /// Where a link leads to; empty for a file.
  std::string link = {};
};

/// A zip archive; with a password all of its files are encrypted.
inline std::string zipBytes(const std::vector<ArchiveFile>& files,
                            const std::string& password = {}) {
  const std::unique_ptr<archive, int (*)(archive*)> writer(archive_write_new(), archive_write_free);
  archive_write_set_format_zip(writer.get());
  archive_write_set_options(writer.get(), "zip:hdrcharset=UTF-8");
  if (!password.empty()) {
    archive_write_set_options(writer.get(), "zip:encryption=traditional");
    archive_write_set_passphrase(writer.get(), password.c_str());
  }
  std::string bytes;
  archive_write_set_bytes_in_last_block(writer.get(), 1);
  archive_write_open(
      writer.get(), &bytes, nullptr,
      [](archive*, void* target, const void* data, std::size_t size) -> la_ssize_t {
        static_cast<std::string*>(target)->append(static_cast<const char*>(data), size);
        return static_cast<la_ssize_t>(size);
      },
      nullptr);
  for (const ArchiveFile& file : files) {
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(),
                                                                         archive_entry_free);
    archive_entry_set_pathname_utf8(entry.get(), file.name.c_str());
    archive_entry_set_filetype(entry.get(), !file.link.empty()         ? AE_IFLNK
                                            : file.name.ends_with('/') ? AE_IFDIR
                                                                       : AE_IFREG);
    archive_entry_set_perm(entry.get(), 0644);
    if (!file.link.empty()) {
      archive_entry_set_symlink(entry.get(), file.link.c_str());
    }
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(file.content.size()));
    archive_write_header(writer.get(), entry.get());
    archive_write_data(writer.get(), file.content.data(), file.content.size());
  }
  archive_write_close(writer.get());
  return bytes;
}

}  // namespace trelv::tests
