#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "prove/Invariants.h"
#include "prove/Weave.h"
#include "prove/WeaveAccess.h"
#include "sweep/Sweep.h"

namespace trelv::tests {

/// What there is, by path in lower case; two ends that are alike are equal.
using End = Picture;

/// Programs that run at once, and what must hold when all have ended. Made afresh for each
/// schedule; the same calls are made in the same order wherever the turns are the same.
class WovenWorld {
 public:
  virtual ~WovenWorld() = default;

  virtual std::vector<Weave::Program> programs() = 0;
  /// A call of a program is carried out now.
  virtual void observe(std::size_t /*program*/, const sim::SimCall& /*call*/) {}
  virtual void judge(Findings& findings) = 0;
  /// How the paths end, in lower case, that may be otherwise by design. Asked before end().
  virtual std::set<std::string> mayDiffer() { return {}; }
  /// What the world is like when each workplace has been started once more.
  virtual End end() = 0;
};

/// One kind of meeting.
struct Meeting {
  const char* name;
  std::function<std::unique_ptr<WovenWorld>()> make;
  /// Programs that differ in nothing but where they run: which of them comes first is the same.
  std::vector<std::size_t> alike{};
};

/// Just before this call of a program (from 1) the turn is another one's.
struct TurnSwitch {
  std::size_t program = 0;
  std::size_t call = 0;
  std::size_t target = 0;
  /// The program then stands still until the others have ended or stand still too.
  bool stalls = false;
};

/// Who has the turn when. Text: the order in letters, then the switches, "AB A137>B B12>>A", where
/// ">>" is a switch that stalls.
struct Schedule {
  std::vector<std::size_t> order;
  std::vector<TurnSwitch> switches;

  std::string text() const;
  /// Raises std::invalid_argument for what is no such text.
  static Schedule of(const std::string& text);
};

/// A place behind the last switch of a schedule where one more would make a difference.
struct SwitchPoint {
  std::size_t program = 0;
  std::size_t call = 0;
  /// Who could have the turn instead.
  std::vector<std::size_t> targets;
};

/// What a schedule came to.
struct Woven {
  std::vector<std::string> findings;
  std::vector<SwitchPoint> points;
};

class Draw;

/// All schedules of one meeting.
class Interleavings {
 public:
  /// Runs the schedules without a switch. Their ends are those that the others are compared with,
  /// and what their programs touch says which calls somebody else minds; a thorough look sees what
  /// they touch in schedules with one switch too, on ways that they take only then.
  Interleavings(const Meeting& meeting, bool thorough);

  const std::vector<Schedule>& serial() const { return serial_; }
  /// The schedules with one switch more than `schedule`, which came to `woven`.
  static std::vector<Schedule> oneMore(const Schedule& schedule, const Woven& woven, bool stalling);
  /// The schedules with one switch: before each call that anybody else minds.
  std::vector<Schedule> withOneSwitch() const;
  /// Runs a schedule in a world of its own. Can be called from several threads.
  Woven run(const Schedule& schedule) const;
  /// Runs one with so many switches, before calls drawn by chance, and says which it was; fewer
  /// where the programs end before.
  Woven runDrawn(std::size_t switches, std::uint64_t seed, Schedule& drawn) const;

 private:
  void touch(const Schedule& schedule);
  void runSerial();
  Woven weave(Schedule& schedule, Draw* draw) const;
  Woven weaveWorld(WovenWorld& world, Schedule& schedule, Draw* draw) const;
  void judgeEnd(WovenWorld& world, Findings& findings) const;

  const Meeting& meeting_;
  TouchedPlaces places_{0};
  std::vector<Schedule> serial_;
  std::vector<Woven> serialWoven_;
  std::set<End> ends_;
  /// By program: at how many places of its schedules without a switch one would make a difference.
  std::vector<std::size_t> pointsOf_;
};

}  // namespace trelv::tests
