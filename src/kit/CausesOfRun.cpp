// What stops a product in one of its own runs, or before them.

#include "kit/CauseFinders.h"
#include "packs/ProductUpdateRun.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::causes {
namespace {

Found inRun(const ProductHistory& history, Side side, const LogLine* line) {
  return line == nullptr ? Found() : Found(Stop{stepOf(side), history.inLog(*line)});
}

const LogLine* lineOf(const ProductHistory& history, Side side, const std::string& beginning) {
  const SideRun* const run = history.run(side);
  return run == nullptr ? nullptr : run->find(beginning);
}

/// The line of a run that failed because its lock could not be made.
const LogLine* refusedLock(const ProductHistory& history, Side side) {
  const LogLine* const line = lineOf(history, side, log_line::kRunFailed);
  return line != nullptr && line->text.find("agdv.lck") != std::string::npos ? line : nullptr;
}

bool isFolderInPlaceOfLock(const ProductHistory& history, Side side) {
  machine::FileFacts facts;
  const std::string path =
      modProdTrelvManager::LockPath(history.program(), side, history.serverPath());
  return history.program().machine.files.look(path, facts) == system_code::kSuccess && facts.folder;
}

/// Another command of the side has brought the product on all the same.
bool wasDone(const ProductHistory& history, Side side) {
  return lineOf(history, side, log_line::kDone) != nullptr;
}

/// The run in which the whole update stopped; null where it came to its end or was cut.
const SideRun* stoppedRun(const ProductHistory& history) {
  const StartLog& start = history.start();
  return start.runs.empty() || start.runs.back().stop() == nullptr ? nullptr : &start.runs.back();
}

}  // namespace

std::string stepOf(Side side) {
  return "lato " + modProdTrelvLibrary::ConvertClientServerToString(side);
}

Found lock(const ProductHistory& history, Side side) {
  if (const LogLine* const line = lineOf(history, side, log_line::kOtherSession)) {
    return inRun(history, side, line);
  }
  const LogLine* const refused = refusedLock(history, side);
  return refused != nullptr && isFolderInPlaceOfLock(history, side) ? inRun(history, side, refused)
                                                                    : Found();
}

Found noRights(const ProductHistory& history, Side side) {
  const LogLine* const line = lineOf(history, side, log_line::kNoRights);
  if (line != nullptr && !wasDone(history, side)) {
    return inRun(history, side, line);
  }
  const LogLine* const refused = refusedLock(history, side);
  return refused != nullptr && refused->text.find("Autorizzazione negata") != std::string::npos
             ? inRun(history, side, refused)
             : Found();
}

Found commandNotStarted(const ProductHistory& history, Side side) {
  return lineOf(history, side, log_line::kNotDone) != nullptr && !wasDone(history, side)
             ? inRun(history, side, lineOf(history, side, log_line::kNotStarted))
             : Found();
}

Found recordNotWritable(const ProductHistory& history, Side side) {
  return inRun(history, side,
               lineOf(history, side,
                      std::string(log_line::kStepFailed) + "Impossibile registrare la versione "));
}

Found packLost(const ProductHistory& history, Side side) {
  const LogLine* const failed = lineOf(history, side, log_line::kRunFailed);
  return failed != nullptr && lineOf(history, side, log_line::kPackOpening) != nullptr &&
                 lineOf(history, side, log_line::kNotHigher) == nullptr &&
                 lineOf(history, side, log_line::kCommand) == nullptr
             ? inRun(history, side, lineOf(history, side, log_line::kPackOpening))
             : Found();
}

Found runFailed(const ProductHistory& history, Side side) {
  const SideRun* const run = history.run(side);
  return run == nullptr ? Found() : inRun(history, side, run->stop());
}

Found runStoppedEarlier(const ProductHistory& history, Side /*side*/) {
  const SideRun* const stopped = stoppedRun(history);
  const CatalogueEntry* const stopper = stopped == nullptr ? nullptr : history.entryOf(*stopped);
  if (stopper == nullptr || !history.place() || history.run(Side::Client) != nullptr) {
    return std::nullopt;
  }
  return Stop{stepOf(stopped->side) + " di " + stopper->id, history.inLog(*stopped->stop())};
}

Found logCut(const ProductHistory& history, Side /*side*/) {
  const StartLog& start = history.start();
  const bool ended = start.walked || start.wentOn || stoppedRun(history) != nullptr;
  return ended || history.isBehindBothRuns()
             ? Found()
             : Found(Stop{"registro", history.inLog(start.lines.back())});
}

}  // namespace trelv::kit::causes
