#include "overlay/OverlayProcesses.h"

#include <utility>

namespace trelv::overlay {
namespace {

using namespace system_code;

/// A program that was noted: it has ended well as soon as anybody asks.
class NotedProcess : public machine::RunningProcess {
 public:
  NotedProcess(Steps& steps, std::size_t place) : steps_(steps), place_(place) {}

  SystemCode wait() override {
    steps_.markWaits(place_);
    return kSuccess;
  }
  SystemCode waitUntilReady(std::uint32_t /*milliseconds*/) override { return kSuccess; }
  SystemCode exitCode(std::uint32_t& code) override {
    code = 0;
    return kSuccess;
  }

 private:
  Steps& steps_;
  std::size_t place_;
};

/// A program that opens a pack: what it wrote is mounted when it has ended.
class UnpackingProcess : public machine::RunningProcess {
 public:
  UnpackingProcess(std::unique_ptr<machine::RunningProcess> process, Tree& tree,
                   std::string realFolder, std::string output)
      : process_(std::move(process)),
        tree_(tree),
        realFolder_(std::move(realFolder)),
        output_(std::move(output)) {}

  SystemCode wait() override {
    const SystemCode code = process_->wait();
    tree_.mount(realFolder_, output_);
    return code;
  }
  SystemCode waitUntilReady(std::uint32_t milliseconds) override {
    return process_->waitUntilReady(milliseconds);
  }
  SystemCode exitCode(std::uint32_t& code) override { return process_->exitCode(code); }

 private:
  std::unique_ptr<machine::RunningProcess> process_;
  Tree& tree_;
  std::string realFolder_;
  std::string output_;
};

}  // namespace

SystemCode OverlayProcesses::start(const std::string& commandLine, bool visible,
                                   std::unique_ptr<machine::RunningProcess>& process) {
  return startBy(&machine::Processes::start, commandLine, visible, process);
}

SystemCode OverlayProcesses::startBound(const std::string& commandLine, bool visible,
                                        std::unique_ptr<machine::RunningProcess>& process) {
  return startBy(&machine::Processes::startBound, commandLine, visible, process);
}

SystemCode OverlayProcesses::startBy(Start way, const std::string& commandLine, bool visible,
                                     std::unique_ptr<machine::RunningProcess>& process) {
  const std::optional<Unpacking> unpacking = findUnpacking_(commandLine);
  if (unpacking) {
    return unpack(way, *unpacking, visible, process);
  }
  std::string program;
  return note(search_.find(commandLine, program), commandLine, process);
}

SystemCode OverlayProcesses::startTool(const std::string& commandLine, bool /*visible*/,
                                       std::unique_ptr<machine::RunningProcess>& process) {
  std::string program;
  return note(search_.findTool(commandLine, program), commandLine, process);
}

SystemCode OverlayProcesses::note(SystemCode found, const std::string& commandLine,
                                  std::unique_ptr<machine::RunningProcess>& process) {
  if (found != kSuccess) {
    return found;
  }
  ++started_;
  if (started_ == fails_) {
    return kFileNotFound;
  }
  const std::size_t place = steps_.add({.kind = StepKind::Command, .subject = commandLine});
  process = std::make_unique<NotedProcess>(steps_, place);
  return kSuccess;
}

SystemCode OverlayProcesses::unpack(Start way, const Unpacking& unpacking, bool visible,
                                    std::unique_ptr<machine::RunningProcess>& process) {
  const std::string folder = privateFolder_.newPath();
  const SystemCode made = files_.makeFolder(folder);
  if (made != kSuccess) {
    return made;
  }
  std::unique_ptr<machine::RunningProcess> started;
  const SystemCode code = (below_.*way)(
      unpacking.with(tree_.realPath(unpacking.program), copyToOpen(unpacking.pack), folder),
      visible, started);
  if (code == kSuccess) {
    process =
        std::make_unique<UnpackingProcess>(std::move(started), tree_, folder, unpacking.output);
  }
  return code;
}

/// Full path of a pack for a program that opens it: a copy, because that program would keep a start
/// from deleting the pack meanwhile. One that cannot be copied is opened where it lies, and fails
/// as it would in the run.
std::string OverlayProcesses::copyToOpen(const std::string& pack) {
  constexpr std::size_t kPiece = 1U << 20U;
  // With its name behind: the program may go by the ending.
  std::string copy = privateFolder_.newPath() + "-" + pack.substr(pack.find_last_of("\\/") + 1);
  SystemCode code = files_.write(copy, "");
  std::string piece;
  for (std::uint64_t at = 0; code == kSuccess; at += piece.size()) {
    code = tree_.read(pack, at, kPiece, piece);
    if (code == kSuccess && piece.empty()) {
      return copy;
    }
    if (code == kSuccess) {
      code = files_.append(copy, piece);
    }
  }
  return tree_.realPath(pack);
}

/// No program runs for which somebody could wait at the session's end.
void OverlayProcesses::whenSessionEnds(const std::string& /*reason*/,
                                       std::function<void()> /*action*/) {}

bool OverlayProcesses::isRunning(std::uint32_t processId) { return below_.isRunning(processId); }

}  // namespace trelv::overlay
