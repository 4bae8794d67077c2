#include "kit/Progress.h"

#include <algorithm>

#include "base/Text.h"

namespace trelv::kit {
namespace {

/// A longer line would go on in the next one, which "\r" does not take back.
constexpr std::size_t kWidth = 78;

}  // namespace

Progress::~Progress() { clear(); }

void Progress::tell(const std::string& text) {
  if (!shown_) {
    return;
  }
  const std::string line = firstCharacters(text, kWidth);
  const std::size_t rest = width_ > line.size() ? width_ - line.size() : 0;
  console_.complain("\r" + line + std::string(rest, ' '));
  width_ = line.size();
}

void Progress::clear() {
  if (width_ > 0) {
    console_.complain("\r" + std::string(std::min(width_, kWidth), ' ') + "\r");
    width_ = 0;
  }
}

}  // namespace trelv::kit
