#include "prove/Weave.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

namespace trelv::tests {
namespace {

/// Many times what the longest start makes.
constexpr std::size_t kMostCalls = 100'000;
/// Longer than all waits of a start together.
constexpr std::uint64_t kLongestRun = std::uint64_t{6} * 60 * 60 * 1000;

}  // namespace

Weave::Weave(std::vector<Program> programs) {
  running_.reserve(programs.size());
  for (Program& program : programs) {
    const std::size_t number = running_.size();
    program.machine->callLog().setTurns(
        [this, number](const sim::SimCall& call) { enter(number, call); });
    program.machine->clock().setSleeper(
        [this, number](std::uint32_t milliseconds) { sleep(number, milliseconds); });
    const std::uint64_t begins = program.begins;
    running_.push_back({std::move(program), nullptr, begins});
  }
}

Weave::~Weave() {
  abandon();
  for (const Running& running : running_) {
    running.program.machine->callLog().setTurns(nullptr);
    running.program.machine->clock().setSleeper(nullptr);
  }
}

bool Weave::hasEnded(std::size_t program) const {
  const Running& running = running_[program];
  return running.fiber != nullptr && running.fiber->ended();
}

bool Weave::isReady(std::size_t program) const {
  const Running& running = running_[program];
  return !hasEnded(program) && !running.stalled && running.wakes <= now_;
}

void Weave::run(const std::vector<std::size_t>& order, Chooser chooser, Observer observer) {
  chooser_ = std::move(chooser);
  observer_ = std::move(observer);
  std::size_t current = order.front();
  while (true) {
    if (!isReady(current)) {
      current = nextOf(current, order);
    }
    if (current < running_.size()) {
      chosen_ = running_.size();
      resume(current);
      current = chosen_ < running_.size() ? chosen_ : current;
    } else if (endless_.empty() && now_ < kLongestRun) {
      current = order.front();
      letTimePass();
    } else {
      break;
    }
    if (std::all_of(order.begin(), order.end(), [this](std::size_t p) { return hasEnded(p); })) {
      break;
    }
  }
  abandon();
}

/// Whoever comes next in the order and is ready; the number of programs where nobody is.
std::size_t Weave::nextOf(std::size_t program, const std::vector<std::size_t>& order) const {
  const auto at = std::find(order.begin(), order.end(), program) - order.begin();
  for (std::size_t step = 1; step <= order.size(); ++step) {
    const std::size_t next = order[(static_cast<std::size_t>(at) + step) % order.size()];
    if (isReady(next)) {
      return next;
    }
  }
  return running_.size();
}

void Weave::resume(std::size_t program) {
  Running& running = running_[program];
  if (running.fiber == nullptr) {
    running.fiber = std::make_unique<Fiber>([this, &running] {
      try {
        running.program.run();
      } catch (const sim::Killed&) {
        // As a program ends that is ended by force.
      } catch (const std::exception& failure) {
        raised_.emplace_back(failure.what());
      }
    });
  }
  running.fiber->resume();
}

// Where nobody else waits, the stalled ones go on.
void Weave::letTimePass() {
  std::uint64_t earliest = std::numeric_limits<std::uint64_t>::max();
  for (std::size_t i = 0; i < running_.size(); ++i) {
    if (!hasEnded(i) && !running_[i].stalled) {
      earliest = std::min(earliest, running_[i].wakes);
    }
  }
  if (earliest == std::numeric_limits<std::uint64_t>::max()) {
    for (Running& running : running_) {
      running.stalled = false;
    }
    return;
  }
  for (Running& running : running_) {
    running.program.machine->clock().pass(earliest - now_);
  }
  now_ = earliest;
}

void Weave::enter(std::size_t program, const sim::SimCall& call) {
  if (abandoned_) {
    return;
  }
  Running& running = running_[program];
  if (++running.calls > kMostCalls) {
    endless_.push_back(program);
    running.program.machine->callLog().setDead(true);
    throw sim::Killed(sim::Unfinished::NotBegun);
  }
  const Turn turn = chooser_(program, call);
  if (turn.program != program) {
    leaveTurn(program, turn);
  }
  if (observer_) {
    observer_(program, call);
  }
}

void Weave::leaveTurn(std::size_t program, const Turn& turn) {
  Running& running = running_[program];
  chosen_ = turn.program;
  running.stalled = turn.stalls;
  running.fiber->yield();
  if (abandoned_) {
    running.program.machine->callLog().setDead(true);
    throw sim::Killed(sim::Unfinished::NotBegun);
  }
}

void Weave::sleep(std::size_t program, std::uint32_t milliseconds) {
  Running& running = running_[program];
  if (abandoned_) {
    running.program.machine->clock().pass(milliseconds);
    return;
  }
  running.wakes = now_ + milliseconds;
  running.fiber->yield();
  if (abandoned_) {
    running.program.machine->callLog().setDead(true);
    throw sim::Killed(sim::Unfinished::NotBegun);
  }
}

/// Ends what has not ended yet: each goes on once more and is ended there by force.
void Weave::abandon() {
  if (std::exchange(abandoned_, true)) {
    return;
  }
  for (std::size_t i = 0; i < running_.size(); ++i) {
    if (running_[i].fiber != nullptr && !hasEnded(i)) {
      endless_.push_back(i);
      resume(i);
    }
  }
}

}  // namespace trelv::tests
