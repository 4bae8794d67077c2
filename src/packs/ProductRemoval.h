#pragma once

#include "base/InstallationPaths.h"
#include "base/ProductOnSide.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvManager {

/// The progress bar of a removal.
class RemovalProgress {
 public:
  virtual ~RemovalProgress() = default;
  /// Back to its start, with this maximum.
  virtual void begin(int max) = 0;
  /// One more.
  virtual void advance() = 0;
  /// To its maximum.
  virtual void finish() = 0;
};

/// Runs the product's removal commands of one side, each waited for, and records that no version is
/// left there. On the server side the folder of each command's program is deleted behind it (unless
/// SetupFolderGuard keeps it), and the product's configuration file at the end. True when there was
/// at least one command, whatever became of it. Never raises: a run-time failure ends it with one
/// log line; a version that could not be recorded keeps the configuration file, so that the removal
/// can be repeated.
bool RemoveProduct(Program& program, const InstallationPaths& paths, const ProductOnSide& product,
                   RemovalProgress& progress);

}  // namespace trelv::modProdTrelvManager
