#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Codes.h"
#include "machine/FileUse.h"
#include "platform/Program.h"

namespace trelv::kit {

/// An update lock that stands.
struct UpdateLock {
  /// Full path.
  std::string path;
  Side side = Side::Server;
  /// How the file was found.
  machine::FileFacts seen;
  /// The lock's text, which is the date at which it was taken; empty where it cannot be read.
  std::string written;
  /// Seconds since then; where the text is no date, since the file's own date.
  std::int64_t age = 0;
  /// Account that owns the file, and whether somebody has it open; nothing where the system does
  /// not tell.
  std::optional<std::string> owner;
  std::optional<bool> open;
  /// Identifiers of the products that a start would not update because of this lock.
  std::vector<std::string> waiting;
};

/// The locks that stand on a host, and on this workstation where it has a configuration store.
/// Nothing is waited for, nothing is written.
std::vector<UpdateLock> updateLocks(Program& program, machine::FileUse& fileUse,
                                    const std::string& serverPath);

}  // namespace trelv::kit
