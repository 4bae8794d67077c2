#pragma once

#include <string>
#include <vector>

#include "kit/GivenPath.h"
#include "kit/Workplace.h"

namespace trelv::kit {

/// A file or folder that something is built from.
struct Source {
  /// Full path.
  std::string path;
  /// How it is called towards the user.
  std::string shown;
};

/// Raises Failure where what is built at `output` would come to lie in one of its sources, or would
/// replace one, by whatever name: links, short names, drive and share.
void requireApart(Workplace& workplace, const GivenPath& output,
                  const std::vector<Source>& sources);

}  // namespace trelv::kit
