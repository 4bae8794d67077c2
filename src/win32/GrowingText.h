#pragma once

#include <string>

#include "win32/SystemCall.h"

namespace trelv::win32 {

/// Fetches a text of unknown length: `fetch(buffer, size)` gives the Called of a function that
/// answers the length without NUL, 0 on failure, or `size` and more when the buffer is too small.
/// The code of a failure, or 0 with `text` set; a text that is empty without failure is one too.
template <class Text, class Fetch>
SystemCode growingText(Text& text, Fetch&& fetch) {
  Text buffer(MAX_PATH, typename Text::value_type());
  for (;;) {
    const auto size = static_cast<DWORD>(buffer.size());
    const auto length = fetch(buffer.data(), size);
    if (length.answer == 0 && length.left != ERROR_SUCCESS) {
      return length.failure();
    }
    if (length.answer < size) {
      buffer.resize(length.answer);
      text = std::move(buffer);
      return system_code::kSuccess;
    }
    buffer.resize(static_cast<std::size_t>(size) * 2);
  }
}

}  // namespace trelv::win32
