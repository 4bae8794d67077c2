#pragma once

#include <string>

namespace trelv::machine {

/// Environment variables of this process, UTF-8 here. They are set through the ANSI interface: a
/// character outside the code page becomes "?". Started programs inherit them.
class Environment {
 public:
  virtual ~Environment() = default;

  /// Value of a variable; false when it is not set.
  virtual bool get(const std::string& name, std::string& value) = 0;

  /// Sets a variable; false when refused (an empty name, a name with "=").
  virtual bool set(const std::string& name, const std::string& value) = 0;
};

}  // namespace trelv::machine
