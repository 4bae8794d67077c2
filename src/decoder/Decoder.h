#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "decoder/OutputTree.h"
#include "decoder/PackInput.h"

namespace trelv::decoder {

/// How the program ends.
namespace exit_code {
constexpr int kGood = 0;
/// The pack was refused, or the machine failed.
constexpr int kFailed = 2;
constexpr int kCommandLine = 7;
}  // namespace exit_code

/// What the decoder asks of the machine.
class DecoderMachine {
 public:
  virtual ~DecoderMachine() = default;

  virtual SystemCode openPack(const std::string& path, std::unique_ptr<PackInput>& pack) = 0;
  /// Opens the output folder and makes it, with its parents, where it is missing.
  virtual SystemCode openOutput(const std::string& path, std::unique_ptr<OutputTree>& output) = 0;
  /// Returns when so much time has passed.
  virtual void pause(std::uint32_t milliseconds) = 0;
};

struct DecoderResult {
  int exitCode = exit_code::kGood;
  /// One line for standard error, without line end; empty when all is well.
  std::string line;
};

/// The whole program. `arguments`: the pack's path and the output folder's, UTF-8, without the
/// program's own name. The folder may end with a backslash, also one that took the closing quote
/// into the argument.
DecoderResult decode(const std::vector<std::string>& arguments, DecoderMachine& machine);

}  // namespace trelv::decoder
