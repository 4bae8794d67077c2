#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "machine/Processes.h"
#include "overlay/PrivateFolder.h"
#include "overlay/ProgramSearch.h"
#include "overlay/Steps.h"
#include "overlay/Tree.h"

namespace trelv::overlay {

/// A command line that opens a pack: which program, which pack, into which folder.
struct Unpacking {
  std::string program;
  std::string pack;
  std::string output;
  /// The same command line with other paths, in the order above.
  std::function<std::string(const std::string&, const std::string&, const std::string&)> with;
};

/// Takes a command line apart that opens a pack; nothing for all others.
using FindUnpacking = std::function<std::optional<Unpacking>(const std::string& commandLine)>;

/// Programs that are noted instead of started and count as ended well. Those that open packs run
/// for real, on a copy of the pack, into a private folder that is mounted over their output folder
/// once they have ended.
class OverlayProcesses : public machine::Processes {
 public:
  /// `fails`: which of the programs cannot be started, from 1; 0: none. Those that open packs do
  /// not count.
  OverlayProcesses(machine::Processes& below, machine::Files& files, Tree& tree,
                   PrivateFolder& privateFolder, ProgramSearch& search, Steps& steps,
                   FindUnpacking findUnpacking, std::size_t fails)
      : below_(below),
        files_(files),
        tree_(tree),
        privateFolder_(privateFolder),
        search_(search),
        steps_(steps),
        findUnpacking_(std::move(findUnpacking)),
        fails_(fails) {}

  SystemCode start(const std::string& commandLine, bool visible,
                   std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startTool(const std::string& commandLine, bool visible,
                       std::unique_ptr<machine::RunningProcess>& process) override;
  SystemCode startBound(const std::string& commandLine, bool visible,
                        std::unique_ptr<machine::RunningProcess>& process) override;
  void whenSessionEnds(const std::string& reason, std::function<void()> action) override;
  bool isRunning(std::uint32_t processId) override;

 private:
  /// How the machine below starts a program.
  using Start = SystemCode (machine::Processes::*)(const std::string&, bool,
                                                   std::unique_ptr<machine::RunningProcess>&);

  SystemCode startBy(Start way, const std::string& commandLine, bool visible,
                     std::unique_ptr<machine::RunningProcess>& process);
  SystemCode unpack(Start way, const Unpacking& unpacking, bool visible,
                    std::unique_ptr<machine::RunningProcess>& process);
  std::string copyToOpen(const std::string& pack);
  SystemCode note(SystemCode found, const std::string& commandLine,
                  std::unique_ptr<machine::RunningProcess>& process);

  machine::Processes& below_;
  /// Below, for the private folder.
  machine::Files& files_;
  Tree& tree_;
  PrivateFolder& privateFolder_;
  ProgramSearch& search_;
  Steps& steps_;
  FindUnpacking findUnpacking_;
  std::size_t fails_;
  std::size_t started_ = 0;
};

}  // namespace trelv::overlay
