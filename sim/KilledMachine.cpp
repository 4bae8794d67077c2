#include "sim/KilledMachine.h"

#include <algorithm>
#include <optional>

namespace trelv::sim {

KilledMachine::KilledMachine(SimMachine& simMachine, std::size_t number, Unfinished left)
    : machine_(simMachine), before_(simMachine.callLog().count()), number_(number), left_(left) {
  machine_.callLog().setInjector([this](const SimCall& call) -> std::optional<SystemCode> {
    look(call);
    return std::nullopt;
  });
}

KilledMachine::~KilledMachine() {
  machine_.callLog().setInjector(nullptr);
  if (reached()) {
    machine_.startSession();
  }
}

bool KilledMachine::canBeLeftBegun(CallKind kind) {
  return kind == CallKind::FileWrite || kind == CallKind::FileAppend || kind == CallKind::FileCopy;
}

void KilledMachine::look(const SimCall& call) {
  seen_ = std::max(seen_, call.number - before_);
  if (call.number - before_ == number_) {
    killedCall_ = call.text;
    machine_.callLog().setDead(true);
    throw Killed(left_);
  }
}

}  // namespace trelv::sim
