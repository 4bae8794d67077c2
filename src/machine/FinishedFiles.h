#pragma once

#include <cstdint>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// Full paths on one volume: the folder that comes, the one that goes, and where the latter is
/// afterwards, where nothing stands yet.
struct FolderReplacement {
  std::string source;
  std::string target;
  std::string aside;
};

/// What is done to files that were built, once they are whole. Paths as machine::Files takes them;
/// each method answers the system's code.
class FinishedFiles {
 public:
  virtual ~FinishedFiles() = default;

  /// Sets when a file or folder was last changed: 100 ns since 1601-01-01 UTC. What is made in a
  /// folder changes its time again. Where a file carries its rights with it everybody may read it
  /// and its owner write, whatever whoever builds lets new files have.
  virtual SystemCode finish(const std::string& path, std::uint64_t modified) = 0;

  /// Renames a folder with all that is in it on the same volume. Never replaces: where something
  /// stands at `target` it answers 183.
  virtual SystemCode moveFolder(const std::string& source, const std::string& target) = 0;

  /// Puts one folder in the place of another, which is put aside. One step where the system has
  /// one. Where it has none, whoever is ended meanwhile leaves nothing at `target` and what stood
  /// there at `aside`. A failure leaves everything where it was.
  virtual SystemCode replaceFolder(const FolderReplacement& replacement) = 0;
};

}  // namespace trelv::machine
