#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "machine/Files.h"
#include "machine/Processes.h"
#include "machine/SystemFacts.h"

namespace trelv::overlay {

/// A real folder of this process alone, for what must be done for real: packs that are opened, ini
/// files that the platform's functions write. It goes with everything in it when this is destroyed.
/// What a process that was ended by force has left goes when the next one is made.
class PrivateFolder {
 public:
  /// Made in `parent` (full path), which the user may write to. Raises RuntimeError where it cannot
  /// be made.
  PrivateFolder(machine::Files& files, machine::SystemFacts& system, machine::Processes& processes,
                const std::string& parent);
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::string& path() const { return path_; }
  /// Full path in the folder that was not given before; nothing stands there.
  std::string newPath() { return path_ + "\\" + std::to_string(++given_); }

 private:
  void removeLeftovers(machine::Processes& processes, const std::string& parent,
                       const std::string& beginning);

  machine::Files& files_;
  std::string path_;
  std::size_t given_ = 0;
};

}  // namespace trelv::overlay
