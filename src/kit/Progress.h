#pragma once

#include <string>

#include "machine/Console.h"

namespace trelv::kit {

/// One line on standard error that says what is being done; nothing where no person reads it.
class Progress {
 public:
  Progress(machine::Console& console, bool shown) : console_(console), shown_(shown) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// Puts this text (one line) in the place of the last one.
  void tell(const std::string& text);
  /// Takes the line away, before something else is written there.
  void clear();

 private:
  machine::Console& console_;
  bool shown_;
  std::size_t width_ = 0;
};

}  // namespace trelv::kit
