#pragma once

#include <string>

namespace trelv::machine {

/// Environment variables of this process (ANSI interface, UTF-8 here). Started programs inherit
/// them.
class Environment {
 public:
  virtual ~Environment() = default;

  /// Value of a variable; false when it is not set.
  virtual bool get(const std::string& name, std::string& value) = 0;

  /// Sets a variable; false when refused (an empty name, a name with "=").
  virtual bool set(const std::string& name, const std::string& value) = 0;
};

}  // namespace trelv::machine
