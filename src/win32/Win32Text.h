#pragma once

#include <string>
#include <string_view>

/// The only place where texts change between the program's UTF-8 and what Windows takes.
namespace trelv::win32 {

/// UTF-8 to UTF-16 and back; what is not well-formed becomes U+FFFD. NULs inside are kept.
std::wstring wide(std::string_view text);
std::string utf8(std::wstring_view text);

/// UTF-8 to bytes of the system's ANSI code page and back. A character that the code page lacks
/// becomes "?", never a similar one: in a path that would be another file. NULs inside are kept.
std::string ansi(std::string_view text);
std::string fromAnsi(std::string_view bytes);

}  // namespace trelv::win32
