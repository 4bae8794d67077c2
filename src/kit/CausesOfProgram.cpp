// What keeps the program that was asked for from starting.

#include "base/Trap.h"
#include "kit/CauseFinders.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::causes {
namespace {

/// Place of the program code among the arguments.
constexpr std::size_t kProgramArgument = 3;

/// Identifier of the product whose program the start was asked for; "" for an unknown code.
std::string requestedProduct(const StartLog& start) {
  if (start.arguments.size() <= kProgramArgument) {
    return {};
  }
  using namespace modProdTrelvLibrary;
  return trap(
      [&]() -> std::string {
        return ConvertNumberToProduct(
            ProgramToProduct(ConvertProgramToNumber(start.arguments[kProgramArgument])));
      },
      [](const RuntimeError&) -> std::string { return {}; });
}

Found inLine(const ProductHistory& history, const LogLine* line) {
  return line == nullptr || requestedProduct(history.start()) != history.product()
             ? Found()
             : Found(Stop{"avvio del programma", history.inLog(*line)});
}

}  // namespace

Found programNotInConfiguration(const ProductHistory& history, Side /*side*/) {
  return inLine(history, history.start().find(log_line::kNoProgram));
}

Found programMissing(const ProductHistory& history, Side /*side*/) {
  return inLine(history, history.start().find(log_line::kNoProgramFile));
}

Found programNotStarted(const ProductHistory& history, Side /*side*/) {
  const LogLine* const begun = history.start().find(log_line::kProgram);
  if (begun == nullptr) {
    return std::nullopt;
  }
  for (const LogLine& line : history.start().lines) {
    if (line.number > begun->number && beginsWith(line.text, log_line::kNotStarted)) {
      return inLine(history, &line);
    }
  }
  return std::nullopt;
}

}  // namespace trelv::kit::causes
