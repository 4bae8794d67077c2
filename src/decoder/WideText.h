#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trelv::decoder {

/// Takes the next character off the text; nothing when it is not well-formed UTF-8.
std::optional<std::uint32_t> takeCharacter(std::string_view& text);

/// Wide text as UTF-8. Wide text is UTF-16 on Windows and UTF-32 elsewhere. A lone surrogate stays
/// one: its three bytes are no UTF-8.
std::string utf8Of(const wchar_t* text);

/// UTF-8 as wide text; what is no UTF-8 becomes U+FFFD, so that the way back gives another text.
std::wstring wideOf(std::string_view text);

}  // namespace trelv::decoder
