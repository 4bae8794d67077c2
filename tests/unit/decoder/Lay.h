#pragma once

#include <string>
#include <vector>

#include "support/decoder/MemoryTree.h"

namespace trelv::decoder {

/// Lays out what the tree's names() would tell; the files hold "old".
inline void lay(MemoryTree& tree, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const std::string shorter = name.substr(0, name.size() - 1);
    if (name.back() == '/') {
      tree.putFolder(shorter);
    } else if (name.back() == '@') {
      tree.putLink(shorter);
    } else {
      tree.put(name, "old");
    }
  }
}

}  // namespace trelv::decoder
