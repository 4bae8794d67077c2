#include "kit/TextLines.h"

#include <algorithm>
#include <cstddef>

namespace trelv::kit {

std::vector<std::string> textLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    const bool carriageReturn = end > from && text[end - 1] == '\r';
    lines.push_back(text.substr(from, end - from - (carriageReturn ? 1 : 0)));
    from = end + 1;
  }
  return lines;
}

}  // namespace trelv::kit
