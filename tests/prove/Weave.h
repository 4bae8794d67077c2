#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "prove/Fiber.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// Programs that run at once, each on a simulated machine of its own; machines may share disks and
/// registry keys. One of them has its turn at any time, and keeps it until somebody takes it away
/// just before one of its calls, until it waits or until it has ended. Time passes when all wait:
/// what nobody waits for takes none.
class Weave {
 public:
  struct Program {
    sim::SimMachine* machine = nullptr;
    /// From its start to its end.
    std::function<void()> run;
    /// It begins so many milliseconds after the first.
    std::uint64_t begins = 0;
  };

  /// What happens before a call.
  struct Turn {
    /// Who goes on; the program itself, or one that is ready.
    std::size_t program = 0;
    /// The program whose turn ends waits until all others have ended, as if its computer stood
    /// still.
    bool stalls = false;
  };
  /// Who goes on when a program (from 0) is about to make a call.
  using Chooser = std::function<Turn(std::size_t program, const sim::SimCall& call)>;
  /// A call that is carried out now.
  using Observer = std::function<void(std::size_t program, const sim::SimCall& call)>;

  /// Whoever waits has to be there: nobody begins before run().
  explicit Weave(std::vector<Program> programs);
  Weave(const Weave&) = delete;
  Weave& operator=(const Weave&) = delete;
  ~Weave();

  /// Runs all of them to their ends. `order` has the first one and who follows when a turn ends by
  /// itself. sim::Killed ends a program quietly.
  void run(const std::vector<std::size_t>& order, Chooser chooser, Observer observer = nullptr);

  /// Could it go on now?
  bool isReady(std::size_t program) const;
  bool hasEnded(std::size_t program) const;
  /// Milliseconds since the beginning.
  std::uint64_t now() const { return now_; }
  /// Programs that had not ended after more calls, or more time, than any program needs; they were
  /// ended by force.
  const std::vector<std::size_t>& endless() const { return endless_; }
  /// What programs raised: no program of ours lets a failure out.
  const std::vector<std::string>& raised() const { return raised_; }

 private:
  struct Running {
    Program program;
    std::unique_ptr<Fiber> fiber;
    /// When it can go on.
    std::uint64_t wakes = 0;
    std::size_t calls = 0;
    bool stalled = false;
  };

  void enter(std::size_t program, const sim::SimCall& call);
  void leaveTurn(std::size_t program, const Turn& turn);
  void sleep(std::size_t program, std::uint32_t milliseconds);
  void resume(std::size_t program);
  std::size_t nextOf(std::size_t program, const std::vector<std::size_t>& order) const;
  void letTimePass();
  void abandon();

  std::vector<Running> running_;
  Chooser chooser_;
  Observer observer_;
  std::uint64_t now_ = 0;
  /// Who goes on when the present one has yielded; the number of programs: whoever is next.
  std::size_t chosen_ = 0;
  bool abandoned_ = false;
  std::vector<std::size_t> endless_;
  std::vector<std::string> raised_;
};

}  // namespace trelv::tests
