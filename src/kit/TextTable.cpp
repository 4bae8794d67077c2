#include "kit/TextTable.h"

#include <algorithm>
#include <cstddef>

namespace trelv::kit {
namespace {

/// Characters, not bytes, of a UTF-8 text.
std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

}  // namespace

std::string textTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const std::vector<std::string>& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], lengthOf(row[i]));
    }
  }
  std::string text;
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const bool last = i + 1 == row.size();
      text += row[i] + (last ? "" : std::string(widths[i] - lengthOf(row[i]) + 2, ' '));
    }
    text += "\n";
  }
  return text;
}

}  // namespace trelv::kit
