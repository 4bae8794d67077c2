#include "sim/SimProcesses.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "sim/SimText.h"

namespace trelv::sim {

using namespace system_code;

namespace {

constexpr std::size_t kLongestCommandLine = 32767;
constexpr std::uint32_t kStillActive = 259;

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && equalNoCase(text.substr(text.size() - end.size()), end);
}

bool hasFolder(const std::string& name) { return name.find_first_of("\\/:") != std::string::npos; }

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('\\')); }

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : text + separator) {
    if (c != separator) {
      part += c;
    } else if (!part.empty()) {
      parts.push_back(std::exchange(part, ""));
    }
  }
  return parts;
}

}  // namespace

/// A started program as the starter holds it.
class SimRunning : public machine::RunningProcess {
 public:
  SimRunning(SimProcesses& processes, std::size_t index)
      : processes_(processes), index_(index), bound_(processes.started_[index].bound) {}
  SimRunning(const SimRunning&) = delete;
  SimRunning& operator=(const SimRunning&) = delete;
  ~SimRunning() override {
    // Only a bound one may not outlive the machine.
    if (bound_) {
      processes_.end(index_);
    }
  }
  SystemCode wait() override { return processes_.waitFor(index_); }
  SystemCode waitUntilReady(std::uint32_t milliseconds) override {
    return processes_.waitUntilReady(index_, milliseconds);
  }
  SystemCode exitCode(std::uint32_t& code) override { return processes_.exitCodeOf(index_, code); }

 private:
  SimProcesses& processes_;
  std::size_t index_;
  bool bound_;
};

std::vector<std::string> splitArguments(const std::string& text) {
  std::vector<std::string> arguments;
  std::string argument;
  bool quoted = false;
  bool any = false;
  for (const char c : text + " ") {
    if (c == '"') {
      quoted = !quoted;
      any = true;
    } else if ((c == ' ' || c == '\t') && !quoted) {
      if (any) {
        arguments.push_back(std::exchange(argument, ""));
      }
      any = false;
    } else {
      argument += c;
      any = true;
    }
  }
  if (any) {  // a quote that was never closed: without the blank added above
    arguments.push_back(argument.substr(0, argument.size() - 1));
  }
  return arguments;
}

std::string SimProcess::variable(const std::string& name) const {
  for (const auto& [key, value] : record_.environment) {
    if (equalNoCase(key, name)) {
      return value;
    }
  }
  return "";
}

SimProcesses::SimProcesses(SimMachine& simMachine, SimVolumes& volumes, SimSystem& system,
                           SimEnvironment& environment, SimCalls& calls)
    : machine_(simMachine),
      volumes_(volumes),
      system_(system),
      environment_(environment),
      calls_(calls) {}

SystemCode SimProcesses::start(const std::string& commandLine, bool visible,
                               std::unique_ptr<machine::RunningProcess>& process) {
  return startAny(commandLine, visible, false, process);
}

SystemCode SimProcesses::startBound(const std::string& commandLine, bool visible,
                                    std::unique_ptr<machine::RunningProcess>& process) {
  return startAny(commandLine, visible, true, process);
}

SystemCode SimProcesses::startAny(const std::string& commandLine, bool visible, bool bound,
                                  std::unique_ptr<machine::RunningProcess>& process) {
  if (const auto injected = calls_.enter(CallKind::ProcessStart, "processes.start", commandLine)) {
    return *injected;
  }
  Found found;
  const SystemCode code = resolve(commandLine, found);
  return code == kSuccess ? startFound(commandLine, visible, bound, found, process) : code;
}

SystemCode SimProcesses::startTool(const std::string& commandLine, bool visible,
                                   std::unique_ptr<machine::RunningProcess>& process) {
  if (const auto injected = calls_.enter(CallKind::ProcessStart, "processes.start", commandLine)) {
    return *injected;
  }
  Found found;
  const SystemCode code = resolveTool(commandLine, found);
  return code == kSuccess ? startFound(commandLine, visible, false, found, process) : code;
}

SystemCode SimProcesses::startFound(const std::string& commandLine, bool visible, bool bound,
                                    const Found& found,
                                    std::unique_ptr<machine::RunningProcess>& process) {
  const SystemCode refused = refusal(found.program);
  if (refused != kSuccess) {
    return refused;
  }
  StartedProgram record;
  record.commandLine = commandLine;
  record.program = found.program;
  record.arguments = splitArguments(found.argumentText);
  record.visible = visible;
  record.bound = bound;
  record.environment = environment_.snapshot();
  started_.push_back(std::move(record));
  SimNode& node = *volumes_.find(found.program, true).node;
  running_.push_back({found.childCommandLine, node.program, node.run()});
  const std::size_t index = started_.size() - 1;
  if (!deferred_) {
    run(index);
  }
  process = std::make_unique<SimRunning>(*this, index);
  return kSuccess;
}

bool SimProcesses::isRunning(std::uint32_t processId) {
  const auto injected = calls_.enter(CallKind::ProcessLookUp, "processes.isRunning", "", "",
                                     std::to_string(processId));
  return injected || processId == system_.processId() || others_.count(processId) > 0;
}

void SimProcesses::whenSessionEnds(const std::string& reason, std::function<void()> action) {
  sessionReason_ = action ? reason : "";
  sessionAction_ = std::move(action);
}

void SimProcesses::endSession() {
  if (const std::function<void()> action = std::exchange(sessionAction_, nullptr)) {
    action();
  }
  sessionReason_.clear();
  calls_.setDead(true);
  throw Killed(Unfinished::NotBegun);
}

void SimProcesses::setRunning(std::uint32_t processId, bool running) {
  if (running) {
    others_.insert(processId);
  } else {
    others_.erase(processId);
  }
}

void SimProcesses::define(const std::string& path, ProgramScript script) {
  volumes_.disk(path).putProgram(path, std::move(script));
}

std::vector<std::string> SimProcesses::startedCommandLines() const {
  std::vector<std::string> lines;
  for (const StartedProgram& program : started_) {
    lines.push_back(program.commandLine);
  }
  return lines;
}

void SimProcesses::runDeferred() {
  for (std::size_t i = 0; i < started_.size(); ++i) {
    run(i);
  }
}

void SimProcesses::failStart(const std::string& programPath, SystemCode code) {
  startCodes_[upperCase(programPath)] = code;
}

void SimProcesses::requireElevation(const std::string& programPath) {
  elevated_.insert(upperCase(programPath));
}

// --- Which file a command line means

SystemCode SimProcesses::resolve(const std::string& commandLine, Found& found) const {
  if (characterCount(commandLine) > kLongestCommandLine) {
    return kInvalidParameter;
  }
  if (commandLine.empty() || commandLine.front() == ' ') {
    return kFileNotFound;
  }
  return commandLine.front() == '"' ? resolveQuoted(commandLine, found)
                                    : resolveByCuts(commandLine, found);
}

SystemCode SimProcesses::resolveTool(const std::string& commandLine, Found& found) const {
  const std::string name = commandLine.substr(0, commandLine.find(' '));
  if (hasFolder(name) || name.find('"') != std::string::npos) {
    return resolve(commandLine, found);
  }
  std::vector<std::string> folders{parentOf(system_.executablePath()),
                                   system_.windowsFolder() + "\\system32", system_.windowsFolder()};
  for (const std::string& folder : split(environment_.value("PATH"), ';')) {
    if (folder.find(":\\") == 1 || folder.compare(0, 2, "\\\\") == 0) {
      folders.push_back(folder);
    }
  }
  for (const std::string& folder : folders) {
    const std::string path = existing(volumes_.fullPath(folder + "\\" + name));
    if (!path.empty()) {
      found = {path, commandLine.substr(name.size()), commandLine};
      return kSuccess;
    }
  }
  return kFileNotFound;
}

SystemCode SimProcesses::resolveQuoted(const std::string& commandLine, Found& found) const {
  const std::size_t end = std::min(commandLine.find('"', 1), commandLine.size());
  const std::string name = commandLine.substr(1, end - 1);
  if (name.empty()) {
    return kInvalidParameter;
  }
  found.argumentText = end < commandLine.size() ? commandLine.substr(end + 1) : "";
  found.childCommandLine = commandLine;
  return candidate(name, found.program);
}

// Every cut at a blank is tried, the shortest first.
SystemCode SimProcesses::resolveByCuts(const std::string& commandLine, Found& found) const {
  for (std::size_t end = 0; end < commandLine.size();) {
    end = std::min(commandLine.find_first_of(" \t", end + 1), commandLine.size());
    const std::string name = commandLine.substr(0, end);
    const SystemCode code = candidate(name, found.program);
    if (code != kFileNotFound) {
      const bool blanks = name.find(' ') != std::string::npos;
      found.argumentText = commandLine.substr(end);
      found.childCommandLine = blanks ? "\"" + name + "\"" + found.argumentText : commandLine;
      return code;
    }
  }
  return kFileNotFound;
}

SystemCode SimProcesses::candidate(const std::string& name, std::string& program) const {
  const std::string path = search(name);
  if (path.empty()) {
    return kFileNotFound;
  }
  const SimNode& node = *volumes_.find(path, true).node;
  const bool script = endsWith(path, ".bat") || endsWith(path, ".cmd");
  const bool isProgram = node.program || script || node.bytes.compare(0, 2, "MZ") == 0;
  program = path;
  return isProgram ? kSuccess : kBadExeFormat;
}

std::string SimProcesses::search(const std::string& name) const {
  if (hasFolder(name)) {
    return existing(volumes_.fullPath(name));
  }
  std::vector<std::string> folders{parentOf(system_.executablePath()), volumes_.currentFolder(),
                                   system_.windowsFolder() + "\\system32",
                                   system_.windowsFolder() + "\\system", system_.windowsFolder()};
  for (const std::string& folder : split(environment_.value("PATH"), ';')) {
    folders.push_back(folder);
  }
  for (const std::string& folder : folders) {
    std::string path = existing(volumes_.fullPath(folder + "\\" + name));
    if (!path.empty()) {
      return path;
    }
  }
  return "";
}

// The file of that path, or with ".exe" where its name has no extension; empty when there is none.
std::string SimProcesses::existing(const std::string& path) const {
  const std::string name = path.substr(path.rfind('\\') + 1);
  for (const char* extension : {"", ".exe"}) {
    const SimVolumes::Place place = volumes_.find(path + extension, true);
    if (place.code == kSuccess && !place.node->folder) {
      return path + extension;
    }
    if (name.find('.') != std::string::npos) {
      break;
    }
  }
  return "";
}

SystemCode SimProcesses::refusal(const std::string& program) const {
  const auto code = startCodes_.find(upperCase(program));
  if (code != startCodes_.end() && code->second != kSuccess) {
    return code->second;
  }
  const SimNode& node = *volumes_.find(program, true).node;
  if (node.held &&
      (static_cast<unsigned>(*node.held) & static_cast<unsigned>(Sharing::Read)) == 0) {
    return kSharingViolation;
  }
  const bool elevated = elevated_.count(upperCase(program)) > 0;
  return elevated && !system_.administrator() ? kElevationRequired : kSuccess;
}

// --- What runs

void SimProcesses::end(std::size_t index) { running_[index] = Running{}; }

void SimProcesses::run(std::size_t index) {
  Running taken = std::exchange(running_[index], Running{});
  StartedProgram& record = started_[index];
  if (record.ended || taken.token == nullptr) {
    return;
  }
  SimProcess process(machine_, taken.commandLine, record);
  record.exitCode = taken.script ? taken.script(process) : 0;
  record.ended = true;
}

SystemCode SimProcesses::waitFor(std::size_t index) {
  const auto injected =
      calls_.enter(CallKind::ProcessWait, "processes.wait", started_[index].commandLine);
  if (calls_.dead()) {
    return *injected;
  }
  started_[index].waited = true;
  run(index);
  return injected.value_or(waitCode_);
}

// A deferred program does what its script says before it waits for its user.
SystemCode SimProcesses::waitUntilReady(std::size_t index, std::uint32_t milliseconds) {
  const auto injected = calls_.enter(CallKind::ProcessReady, "processes.waitUntilReady",
                                     started_[index].commandLine, "", std::to_string(milliseconds));
  if (injected) {
    return *injected;
  }
  run(index);
  return kSuccess;
}

SystemCode SimProcesses::exitCodeOf(std::size_t index, std::uint32_t& code) {
  const StartedProgram& record = started_[index];
  if (const auto injected =
          calls_.enter(CallKind::ProcessExitCode, "processes.exitCode", record.commandLine)) {
    return *injected;
  }
  code = record.ended ? record.exitCode : kStillActive;
  return kSuccess;
}

}  // namespace trelv::sim
