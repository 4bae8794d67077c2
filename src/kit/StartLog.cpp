#include "kit/StartLog.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "kit/TextLines.h"
#include "startup/CommandLine.h"

namespace trelv::kit {
namespace {

constexpr const char* kBehindDate = " -- ";

/// What stands behind a line's date; the whole line where it has none.
std::string behindDate(const std::string& line) {
  const std::size_t at = line.find(kBehindDate);
  return at == std::string::npos ? line : line.substr(at + std::string(kBehindDate).size());
}

std::vector<LogLine> linesOf(const std::string& text, std::size_t before) {
  std::vector<LogLine> lines;
  for (const std::string& line : textLines(text)) {
    lines.push_back({before + lines.size() + 1, behindDate(line), line});
  }
  return lines;
}

const LogLine* firstOf(const std::vector<LogLine>& lines, const std::string& beginning) {
  const auto found = std::find_if(
      lines.begin(), lines.end(),
      [&beginning](const LogLine& line) -> bool { return beginsWith(line.text, beginning); });
  return found == lines.end() ? nullptr : &*found;
}

std::size_t countOf(const std::vector<LogLine>& lines, const std::string& beginning) {
  return static_cast<std::size_t>(std::count_if(
      lines.begin(), lines.end(),
      [&beginning](const LogLine& line) -> bool { return beginsWith(line.text, beginning); }));
}

std::vector<std::string> argumentsOf(const std::string& commandLine) {
  const std::string raw =
      textBetween(commandLine, log_line::kCommandLine, "\t Numero parametri = ");
  std::uint8_t count = 0;
  std::vector<std::string> arguments;
  modMain::ParseCommandLine(raw, count, arguments);
  return arguments;
}

/// A search for packs that fails has no line of its own: the failure then stands behind a run that
/// has come to its end.
bool isFailedSearch(const LogLine& line, const std::vector<SideRun>& runs) {
  return beginsWith(line.text, std::string(log_line::kRunFailed) + " (") &&
         (runs.empty() || runs.back().find(log_line::kNotHigher) != nullptr ||
          runs.back().find(log_line::kDone) != nullptr ||
          runs.back().find(log_line::kNotDone) != nullptr ||
          runs.back().find(log_line::kNoConfiguration) != nullptr);
}

bool isOfTheProgram(const LogLine& line) {
  return beginsWith(line.text, log_line::kProgram) || beginsWith(line.text, log_line::kNoProgram) ||
         beginsWith(line.text, log_line::kNoProgramFile) ||
         beginsWith(line.text, log_line::kMainFailed);
}

/// Does a line name the other side than the one whose turn it is?
bool isOfOtherSide(const SideRun& run) {
  const std::string other = run.side == Side::Server ? "Client" : "Server";
  return std::any_of(run.lines.begin(), run.lines.end(), [&other](const LogLine& line) -> bool {
    return beginsWith(line.text, log_line::kNotHigher + other + " ") ||
           line.text.find(" - Oggetto=" + other + " - ") != std::string::npos;
  });
}

/// What each start writes once at most, in whatever way it goes.
constexpr std::array kOnce{"Gestione prodTrelv - Analisi linea di comando effettuata",
                           log_line::kBegin,
                           "Gestione ProdTrelv - Verifica Esistenza Travolin",
                           "Gestione ProdTrelv - Inizio gestione anomalia Corvel",
                           "Gestione ProdTrelv - Inizio Gestione Anomalia Nerio",
                           "Gestione ProdTrelv - Inizio Gestione anomalia ZeltoModelli",
                           "Gestione ProdTrelv - Inizio Gestione anomalia Luda",
                           log_line::kEnd};
/// One of these.
constexpr std::array kProgramLines{log_line::kProgram, log_line::kNoProgram,
                                   log_line::kNoProgramFile};

/// Do lines of another start stand in this one, as of two sessions of one user?
bool holdsAnother(const StartLog& start) {
  const auto isTwice = [&start](const char* line) -> bool {
    return countOf(start.lines, line) > 1;
  };
  std::size_t programs = 0;
  for (const char* const line : kProgramLines) {
    programs += countOf(start.lines, line);
  }
  const auto isStopped = [](const SideRun& run) -> bool { return run.stop() != nullptr; };
  const auto stopped = std::find_if(start.runs.begin(), start.runs.end(), isStopped);
  return programs > 1 || std::any_of(kOnce.begin(), kOnce.end(), isTwice) ||
         std::any_of(start.runs.begin(), start.runs.end(), isOfOtherSide) ||
         // The run that stops is a start's last one.
         (stopped != start.runs.end() && (start.walked || stopped + 1 != start.runs.end()));
}

/// Has a start of another kind, which began in between, the rest of this one among its lines?
bool mayGoOnIn(const StartLog& start, const StartLog& later) {
  return !start.wentOn &&
         (later.find(log_line::kPackSearch) != nullptr ||
          later.find(log_line::kNotHigher) != nullptr || later.find(log_line::kEnd) != nullptr);
}

void addToRuns(StartLog& start, const LogLine& line) {
  if (start.walked || start.wentOn) {
    return;
  }
  if (beginsWith(line.text, log_line::kPackSearch) || isFailedSearch(line, start.runs)) {
    const bool server = start.runs.size() % 2 == 0;
    start.runs.push_back({server ? Side::Server : Side::Client, {}});
  }
  if (!start.runs.empty()) {
    start.runs.back().lines.push_back(line);
  }
}

void digest(StartLog& start) {
  start.arguments = argumentsOf(start.lines.front().text);
  for (const LogLine& line : start.lines) {
    start.walked = start.walked || line.text == log_line::kEnd;
    start.wentOn = start.wentOn || isOfTheProgram(line) || line.text == log_line::kFewArguments;
    addToRuns(start, line);
  }
  start.mixed = holdsAnother(start);
}

bool isIntegrated(const StartLog& start) {
  return !start.arguments.empty() &&
         modMain::ConvertModeToNumber(start.arguments.front()) == RunMode::IntegratedRun;
}

/// The lines of a log, a start each; what stands before the first is left out.
std::vector<StartLog> startsOf(const std::vector<LogLine>& lines) {
  std::vector<StartLog> starts;
  for (const LogLine& line : lines) {
    if (beginsWith(line.text, log_line::kCommandLine)) {
      starts.emplace_back();
    }
    if (!starts.empty()) {
      starts.back().lines.push_back(line);
    }
  }
  return starts;
}

}  // namespace

const LogLine* SideRun::find(const std::string& beginning) const {
  return firstOf(lines, beginning);
}

const LogLine* SideRun::findLast(const std::string& beginning) const {
  const auto found = std::find_if(
      lines.rbegin(), lines.rend(),
      [&beginning](const LogLine& line) -> bool { return beginsWith(line.text, beginning); });
  return found == lines.rend() ? nullptr : &*found;
}

const LogLine* SideRun::stop() const {
  for (const char* const beginning :
       {log_line::kOtherSession, log_line::kRunFailed, log_line::kSessionEnded}) {
    if (const LogLine* const line = find(beginning)) {
      return line;
    }
  }
  return nullptr;
}

const LogLine* StartLog::find(const std::string& beginning) const {
  return firstOf(lines, beginning);
}

RunLogText readRunLog(const std::string& text, std::size_t linesBefore) {
  RunLogText log;
  const std::vector<LogLine> lines = linesOf(text, linesBefore);
  log.empty = lines.empty();
  std::vector<StartLog> starts = startsOf(lines);
  for (StartLog& start : starts) {
    digest(start);
  }
  const auto newest = std::find_if(starts.rbegin(), starts.rend(), isIntegrated);
  if (newest != starts.rend()) {
    log.start = *newest;
    log.start->mixed =
        newest->mixed || std::any_of(starts.rbegin(), newest, [&newest](const StartLog& later) {
          return mayGoOnIn(*newest, later);
        });
  }
  const LogLine* const first = firstOf(lines, "Gestione ProdTrelv - ");
  if (first != nullptr && !beginsWith(first->text, log_line::kCommandLine)) {
    log.cutAtItsBegin = *first;
  }
  return log;
}

bool beginsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

std::string textBetween(const std::string& text, const std::string& before,
                        const std::string& after) {
  const std::size_t begin = text.find(before);
  if (begin == std::string::npos) {
    return {};
  }
  const std::size_t from = begin + before.size();
  const std::size_t end = text.find(after, from);
  return end == std::string::npos ? std::string() : text.substr(from, end - from);
}

}  // namespace trelv::kit
