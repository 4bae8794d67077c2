#include "ui/NameList.h"

#include <algorithm>
#include <cstddef>

namespace trelv {

std::string namesByLine(const std::vector<std::string>& names, const std::string& lineEnd) {
  constexpr std::size_t kMost = 10;
  std::string list;
  for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i) {
    list += lineEnd + names[i];
  }
  return names.size() <= kMost
             ? list
             : list + lineEnd + "... e altri " + std::to_string(names.size() - kMost);
}

}  // namespace trelv
