#pragma once

#include <string>

#include "decoder/OutputTree.h"

namespace trelv::decoder {

/// A new folder below the output folder, in which a pack is unpacked before anything of it gets its
/// final name. Removed with all that is in it when destroyed, as far as the system lets it.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(OutputTree& output);
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  /// Name of the folder, or of what stands there under a name of the pack.
  const std::string& name() const { return name_; }
  std::string name(const std::string& packName) const { return name_ + "/" + packName; }

  /// Gives everything in the folder its final name: folders that stand in the output folder keep
  /// what is in them, files are replaced. Refused before anything is moved where a file stands in
  /// the place of a folder, a folder in that of a file, or a link in that of either.
  void place();

 private:
  OutputTree& output_;
  std::string name_;
};

}  // namespace trelv::decoder
