#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "machine/Machine.h"

/// Text files in whatever encoding an editor or the mail has left them, as UTF-8.
namespace trelv::kit {

/// Does a file begin with the mark of UTF-16, in either order of bytes?
bool isWide(std::string_view bytes);

/// UTF-16 with its mark as UTF-8. Characters beyond the first plane are in no code page and come
/// out as two.
std::string utf8OfWide(std::string_view bytes);

/// Does the line hold a letter that was written in UTF-8?
bool holdsUtf8(std::string_view line);

/// A whole file: UTF-16 by its mark, else line by line UTF-8 or the code page, since the manager
/// appends in its own to whatever it finds.
std::string textOfFile(machine::Locale& locale, const std::string& bytes);

/// The end of a text file.
struct FileEnd {
  std::string text;
  /// Lines before it that were left out.
  std::size_t linesBefore = 0;
};

/// Reads the last whole lines of a file (full path), `most` bytes of it. Answers the system's code.
SystemCode readFileEnd(machine::Machine& machine, const std::string& path, std::uint64_t most,
                       FileEnd& end);

}  // namespace trelv::kit
