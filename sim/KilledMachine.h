#pragma once

#include <cstddef>
#include <string>

#include "sim/SimMachine.h"

namespace trelv::sim {

/// Ends the program that runs on a machine at one of its calls, as a power failure or the task
/// manager does: the call of number `number` (from 1, counted from here) throws Killed instead of
/// being carried out. What the dying program still asks of the machine while the exception travels
/// (in destructors and handlers) is refused with code 5, changes nothing, is not recorded and runs
/// no hook; no message of it runs. Programs that it started live on, but for those that are bound
/// to it. When this is destroyed the machine is ready for the program's next start: its windows are
/// gone, the world is as it was left. Not together with a FailingMachine.
class KilledMachine {
 public:
  /// `left` tells how far a writing, appending or copying call had come; every other call is met
  /// before it begins, and replacing a file happens in one step.
  KilledMachine(SimMachine& simMachine, std::size_t number, Unfinished left = Unfinished::NotBegun);
  ~KilledMachine();
  KilledMachine(const KilledMachine&) = delete;
  KilledMachine& operator=(const KilledMachine&) = delete;

  /// Can such a call be left begun? Otherwise `left` makes no difference.
  static bool canBeLeftBegun(CallKind kind);

  /// Was there a call of that number? A sweep ends with the first run that answers false.
  bool reached() const { return !killedCall_.empty(); }
  /// How many calls were made until then, the deadly one included.
  std::size_t calls() const { return seen_; }
  /// Text of the call that was met; empty when none was.
  const std::string& killedCall() const { return killedCall_; }

 private:
  void look(const SimCall& call);

  SimMachine& machine_;
  /// How many calls were made before.
  std::size_t before_;
  std::size_t number_;
  Unfinished left_;
  std::size_t seen_ = 0;
  std::string killedCall_;
};

}  // namespace trelv::sim
