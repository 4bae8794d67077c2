/* The library has this beside its table of all formats, which would need every one of them. */
#include <archive.h>
#include <archive_entry.h>

void __archive_write_entry_filetype_unsupported(struct archive* archive,
                                                struct archive_entry* entry, const char* format) {
  (void)entry;
  archive_set_error(archive, -1, "%s: not a file, folder or link", format);
}
