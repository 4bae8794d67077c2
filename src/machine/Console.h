#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/SystemCode.h"

namespace trelv::machine {

/// What a console program writes and asks. Texts are UTF-8 with LF between lines; a stream that is
/// no terminal gets the bytes as they are.
class Console {
 public:
  virtual ~Console() = default;

  /// Writes to standard output; 0 when all of it was taken. A full disk answers 112; without
  /// standard output there is nobody to read, and nothing fails.
  virtual SystemCode print(std::string_view text) = 0;
  /// Writes to standard error. What cannot be written is lost.
  virtual void complain(std::string_view text) = 0;

  /// Does a person read standard error, type standard input?
  virtual bool errorIsTerminal() = 0;
  virtual bool inputIsTerminal() = 0;

  /// The next line of standard input without its end; nothing at its end.
  virtual std::optional<std::string> readLine() = 0;
};

}  // namespace trelv::machine
