#pragma once

#include <cstdint>

namespace trelv {

/// A system error code as the Windows calls give it (GetLastError or a call's own result).
using SystemCode = std::uint32_t;

/// The system codes that the program or its tests tell apart; every other value is passed on as is.
namespace system_code {
constexpr SystemCode kSuccess = 0;
constexpr SystemCode kFileNotFound = 2;
constexpr SystemCode kPathNotFound = 3;
constexpr SystemCode kAccessDenied = 5;
constexpr SystemCode kOutOfMemory = 8;
constexpr SystemCode kNoMoreFiles = 18;
constexpr SystemCode kWriteFault = 29;
constexpr SystemCode kReadFault = 30;
constexpr SystemCode kSharingViolation = 32;
constexpr SystemCode kBadNetPath = 53;
constexpr SystemCode kNetNameDeleted = 64;
constexpr SystemCode kFileExists = 80;
constexpr SystemCode kInvalidParameter = 87;
constexpr SystemCode kDiskFull = 112;
constexpr SystemCode kInsufficientBuffer = 122;
constexpr SystemCode kInvalidName = 123;
constexpr SystemCode kDirectoryNotEmpty = 145;
constexpr SystemCode kBadPathname = 161;
constexpr SystemCode kAlreadyExists = 183;
constexpr SystemCode kBadExeFormat = 193;
constexpr SystemCode kMoreData = 234;
constexpr SystemCode kNoMoreItems = 259;
constexpr SystemCode kDirectoryName = 267;
constexpr SystemCode kElevationRequired = 740;
constexpr SystemCode kResourceDataNotFound = 1812;
}  // namespace system_code

/// Does this answer to a look at a path say that nothing stands there? A server that is gone and a
/// path that is no path say nothing of the kind.
constexpr bool meansMissing(SystemCode code) {
  return code == system_code::kFileNotFound || code == system_code::kPathNotFound;
}

/// Does this answer to a search for names say that there is none? The empty root of a drive has not
/// even "." in it, and servers differ in how they tell of an empty folder.
constexpr bool meansNoEntry(SystemCode code) {
  return code == system_code::kFileNotFound || code == system_code::kNoMoreFiles;
}

}  // namespace trelv
