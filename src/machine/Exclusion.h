#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/SystemCode.h"

namespace trelv::machine {

/// Something that one process has and no other. Free when this is destroyed, or when the process
/// ends, however it ends.
class Mark {
 public:
  virtual ~Mark() = default;
};

/// Exclusion between processes, whatever their session, user and computer.
class Exclusion {
 public:
  virtual ~Exclusion() = default;

  /// Takes a file as the mark: makes it (full path, UTF-8; its folder exists), keeps it open for
  /// this process alone and writes `text` (bytes) into it, which others may read meanwhile. The
  /// file is gone when the mark is free; one that a power failure left is taken as it stands. While
  /// somebody else has it this waits, `milliseconds` at most, and serves messages sent by other
  /// programs; input and painting stay queued. 0: taken, `mark` is set. 32: still somebody else's,
  /// also where this process itself has taken it. A missing folder answers 3, a path that cannot be
  /// opened 5 or another code.
  virtual SystemCode take(const std::string& path, const std::string& text,
                          std::uint32_t milliseconds, std::unique_ptr<Mark>& mark) = 0;
};

}  // namespace trelv::machine
