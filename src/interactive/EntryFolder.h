#pragma once

#include <memory>
#include <string>

#include "machine/Exclusion.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvInteractive {

/// The folder that the packs of one entry are unpacked into: "~pacchiN.tmp" in the temporary
/// folder, new and empty, and nobody else's as long as this lives.
class EntryFolder {
 public:
  /// Takes the first number that no folder has. Before and right behind it removes what sessions
  /// left that were ended by force. Raises when there is no temporary folder or none can be made
  /// there.
  explicit EntryFolder(Program& program);
  EntryFolder(const EntryFolder&) = delete;
  EntryFolder& operator=(const EntryFolder&) = delete;

  /// Without trailing backslash.
  const std::string& path() const { return path_; }

  /// Removes it with everything in it; a failure is told in one log line.
  void remove();

 private:
  bool take(const std::string& name);
  void clearBehind(const std::string& temporary, int number);
  void removeLeft(const std::string& path);

  Program& program_;
  std::string path_;
  std::unique_ptr<machine::Mark> mark_;
};

}  // namespace trelv::modProdTrelvInteractive
