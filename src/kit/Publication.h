#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "kit/Finding.h"
#include "kit/HostShare.h"
#include "kit/Progress.h"

namespace trelv::kit {

/// What there is to say against packs (full paths) that are to wait on the share as it is.
using PackJudge = std::function<std::vector<Finding>(const std::vector<std::string>& packs)>;

struct PublicationResult {
  std::vector<Finding> findings;
  /// A finding is an error: nothing was changed.
  bool refused = false;
  /// Name of the journal; empty where nothing was left to do.
  std::string journal;
  /// Names of the packs that were put on the share, and of those that were there: waiting, or
  /// opened already.
  std::vector<std::string> published;
  std::vector<std::string> present;
  /// Files below the set-up folder that they replace and add when they are opened.
  std::vector<std::string> replaces;
  std::vector<std::string> adds;
};

/// Puts packs (full paths) where the next start opens them, under their own names. Each comes there
/// whole and in one step; before the first of them does, the share keeps what taking them back
/// needs. A failure takes back what was done. Raises Failure or RuntimeError.
PublicationResult publish(HostShare& share, const std::vector<std::string>& packs,
                          const PackJudge& judge, Progress& progress);

}  // namespace trelv::kit
