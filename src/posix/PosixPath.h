#pragma once

#include <string>

#include "base/SystemCode.h"
#include "machine/GivenPaths.h"

/// A plain file system shown as one drive: "Z:\srv\lumo" is "/srv/lumo". Other drives and shares
/// are not there.
namespace trelv::posix {

/// The drive that shows the whole file system.
constexpr const char* kRoot = "Z:\\";

/// Path of the file system that a full path means: each name as it stands there, else one that
/// differs in its letters' case only (the first in the order of bytes), else as it was given.
/// Answers 3 for a path that is not on the drive.
SystemCode hostPath(const std::string& path, std::string& result);

/// The full path ("Z:\…") of an absolute path of the file system; names keep their letters.
std::string shownPath(const std::string& hostPath);

/// The code that stands for an error number of the system's calls on `hostPath`.
SystemCode codeOf(int error, const std::string& hostPath);

class PosixGivenPaths : public machine::GivenPaths {
 public:
  SystemCode fullPath(const std::string& given, std::string& full) override;
  SystemCode room(const std::string& full, std::uint64_t& bytes) override;
  char separator() const override { return '/'; }
};

}  // namespace trelv::posix
