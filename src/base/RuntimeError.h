#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "base/SystemCode.h"

namespace trelv {

/// A run-time failure: what travels from the place that fails to the nearest trap.
/// The three fields are those of the Basic runtime's error object. A failure that has nothing to
/// say of itself (a system call that only answered "no") is a default-made one: number 0, no texts.
class RuntimeError : public std::exception {
 public:
  RuntimeError() = default;
  RuntimeError(std::int32_t number, std::string source, std::string description);

  /// Number of the failure: the Basic runtime's number for file and memory failures, -1 and -99
  /// for unknown codes.
  std::int32_t number() const { return number_; }
  /// Who raised it; some failures carry their whole text here.
  const std::string& source() const { return source_; }
  /// What happened, in words for the log and the user. May be empty.
  const std::string& description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::int32_t number_ = 0;
  std::string source_;
  std::string description_;
};

/// The numbers of the Basic runtime that this program raises.
namespace runtime_number {
constexpr std::int32_t kInvalidCall = 5;
constexpr std::int32_t kOverflow = 6;
constexpr std::int32_t kOutOfMemory = 7;
constexpr std::int32_t kFileNotFound = 53;
constexpr std::int32_t kDeviceFailure = 57;
constexpr std::int32_t kFileExists = 58;
constexpr std::int32_t kDiskFull = 61;
constexpr std::int32_t kPastEndOfFile = 62;
constexpr std::int32_t kPermissionDenied = 70;
constexpr std::int32_t kPathAccess = 75;
constexpr std::int32_t kPathNotFound = 76;
constexpr std::int32_t kInvalidFormat = 321;
constexpr std::int32_t kApplicationDefined = 440;
}  // namespace runtime_number

/// The failure that a system code stands for. `subject` names what was worked on (a full path); it
/// ends the description, so that every log line names the file. This is the only place where
/// system codes become failures.
RuntimeError failureFromSystemCode(SystemCode code, const std::string& subject);

/// Why a program could not be started: the system's code as number, its meaning in words as
/// description. The command line is not part of it.
RuntimeError failureToStart(SystemCode code);

}  // namespace trelv
