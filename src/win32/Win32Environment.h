#pragma once

#include "machine/Environment.h"

namespace trelv::win32 {

/// This process's environment variables: read through the wide functions, since a profile's path
/// may have any letter, set through the ANSI ones.
class Win32Environment : public machine::Environment {
 public:
  bool get(const std::string& name, std::string& value) override;
  bool set(const std::string& name, const std::string& value) override;
};

}  // namespace trelv::win32
