#include "prove/Interleavings.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "prove/Invariants.h"

namespace trelv::tests {
namespace {

char letterOf(std::size_t program) { return static_cast<char>('A' + static_cast<char>(program)); }

std::size_t programOf(char letter) {
  if (letter < 'A' || letter > 'Z') {
    throw std::invalid_argument(std::string("no program: ") + letter);
  }
  return static_cast<std::size_t>(letter - 'A');
}

/// "A137>B", "A137>>B".
TurnSwitch switchOf(const std::string& text) {
  const std::size_t arrow = text.find('>');
  if (arrow == std::string::npos || arrow < 2 || text.size() < arrow + 2) {
    throw std::invalid_argument("no switch: " + text);
  }
  const bool stalls = text[arrow + 1] == '>';
  return {programOf(text.front()), std::stoul(text.substr(1, arrow - 1)), programOf(text.back()),
          stalls};
}

std::vector<sim::SimMachine*> machinesOf(const std::vector<Weave::Program>& programs) {
  std::vector<sim::SimMachine*> machines;
  for (const Weave::Program& program : programs) {
    machines.push_back(program.machine);
  }
  return machines;
}

}  // namespace

/// Switches drawn by chance: at which of the places where one makes a difference, and to whom.
class Draw {
 public:
  /// So many of the first `places` places.
  Draw(std::size_t switches, std::uint64_t seed, std::size_t places) : random_(seed) {
    for (std::size_t i = 0; i < switches; ++i) {
      at_.insert(random_() % places);
    }
  }
  /// The switch at the next place, where one was drawn.
  std::optional<TurnSwitch> next(const SwitchPoint& point) {
    if (at_.count(seen_++) == 0) {
      return std::nullopt;
    }
    constexpr unsigned kStalling = 8;
    return TurnSwitch{point.program, point.call, point.targets[random_() % point.targets.size()],
                      random_() % kStalling == 0};
  }

 private:
  std::mt19937_64 random_;
  std::set<std::size_t> at_;
  std::size_t seen_ = 0;
};

namespace {

/// Takes turns as a schedule says, and looks where they could be taken otherwise.
class Turns {
 public:
  /// Adds to the schedule what is drawn; `draw` may be null.
  Turns(Schedule& schedule, PlacesOfWorld& world, const TouchedPlaces& places, std::size_t programs,
        Draw* draw)
      : schedule_(schedule), world_(world), places_(places), draw_(draw), calls_(programs) {}

  void watch(Weave& weave) { weave_ = &weave; }
  Weave::Turn choose(std::size_t program, const sim::SimCall& call);
  std::vector<SwitchPoint> takePoints() { return std::move(points_); }
  bool allMet() const { return met_ == schedule_.switches.size(); }

 private:
  bool isPoint(std::size_t program, const sim::SimCall& call);
  SwitchPoint pointAt(std::size_t program) const;
  Weave::Turn take(const TurnSwitch& taken);

  Schedule& schedule_;
  PlacesOfWorld& world_;
  const TouchedPlaces& places_;
  Draw* draw_;
  Weave* weave_ = nullptr;
  std::vector<std::size_t> calls_;
  std::size_t met_ = 0;
  /// Whose turn it is, and whether he has made a call in it that others mind.
  std::size_t current_ = 0;
  bool minded_ = false;
  std::vector<SwitchPoint> points_;
};

Weave::Turn Turns::choose(std::size_t program, const sim::SimCall& call) {
  const std::size_t number = ++calls_[program];
  if (program != current_) {
    current_ = program;
    minded_ = false;
  }
  if (met_ < schedule_.switches.size()) {
    const TurnSwitch& next = schedule_.switches[met_];
    return next.program == program && next.call == number ? take(next) : Weave::Turn{program};
  }
  if (!isPoint(program, call)) {
    return {program};
  }
  const SwitchPoint point = pointAt(program);
  if (point.targets.empty()) {
    return {program};
  }
  points_.push_back(point);
  const std::optional<TurnSwitch> drawn = draw_ != nullptr ? draw_->next(point) : std::nullopt;
  if (!drawn) {
    return {program};
  }
  schedule_.switches.push_back(*drawn);
  return take(*drawn);
}

Weave::Turn Turns::take(const TurnSwitch& taken) {
  ++met_;
  // What comes first when he goes on is the call that he was met in.
  minded_ = false;
  if (!weave_->isReady(taken.target)) {
    return {taken.program};
  }
  current_ = taken.target;
  return {taken.target, taken.stalls};
}

/// Between two calls that nobody minds a switch is as good in one place as in another, and right at
/// the beginning of a turn it is one turn less.
bool Turns::isPoint(std::size_t program, const sim::SimCall& call) {
  return world_.isShared(program, call, places_) && std::exchange(minded_, true);
}

SwitchPoint Turns::pointAt(std::size_t program) const {
  SwitchPoint point{program, calls_[program], {}};
  for (std::size_t other = 0; other < calls_.size(); ++other) {
    if (other != program && weave_->isReady(other)) {
      point.targets.push_back(other);
    }
  }
  return point;
}

/// The first line that an end has and another one has not, or the other way round.
std::string differenceOf(const std::string& end, const std::string& other) {
  std::istringstream left(end);
  std::istringstream right(other);
  std::string line;
  std::string otherLine;
  while (line == otherLine && (left || right)) {
    line.clear();
    otherLine.clear();
    std::getline(left, line);
    std::getline(right, otherLine);
  }
  return line + " | in one of them " + otherLine;
}

std::vector<Schedule> ordersOf(std::size_t programs, bool alike) {
  Schedule schedule;
  schedule.order.resize(programs);
  std::iota(schedule.order.begin(), schedule.order.end(), 0);
  std::vector<Schedule> orders;
  do {
    orders.push_back(schedule);
  } while (!alike && std::next_permutation(schedule.order.begin(), schedule.order.end()));
  return orders;
}

}  // namespace

std::string Schedule::text() const {
  std::string text;
  for (const std::size_t program : order) {
    text += letterOf(program);
  }
  for (const TurnSwitch& each : switches) {
    text += " " + (letterOf(each.program) + std::to_string(each.call)) +
            (each.stalls ? ">>" : ">") + letterOf(each.target);
  }
  return text;
}

Schedule Schedule::of(const std::string& text) {
  std::istringstream words(text);
  std::string word;
  words >> word;
  Schedule schedule;
  for (const char letter : word) {
    schedule.order.push_back(programOf(letter));
  }
  while (words >> word) {
    schedule.switches.push_back(switchOf(word));
  }
  return schedule;
}

Interleavings::Interleavings(const Meeting& meeting, bool thorough) : meeting_(meeting) {
  const std::size_t programs = meeting_.make()->programs().size();
  places_ = TouchedPlaces(programs);
  serial_ = ordersOf(programs, meeting_.alike);
  for (const Schedule& order : ordersOf(programs, false)) {
    touch(order);
  }
  runSerial();
  if (thorough) {
    for (const Schedule& schedule : withOneSwitch()) {
      touch(schedule);
    }
    runSerial();
  }
}

/// Notes what the programs touch; and the end, where no switch is in the schedule.
void Interleavings::touch(const Schedule& schedule) {
  const std::unique_ptr<WovenWorld> world = meeting_.make();
  const std::vector<Weave::Program> programs = world->programs();
  PlacesOfWorld where(machinesOf(programs));
  {
    Weave weave(programs);
    Schedule same = schedule;
    const TouchedPlaces none(programs.size());
    Turns turns(same, where, none, programs.size(), nullptr);
    turns.watch(weave);
    weave.run(schedule.order, [&](std::size_t program, const sim::SimCall& call) -> Weave::Turn {
      where.note(program, call, places_);
      return turns.choose(program, call);
    });
  }
  if (schedule.switches.empty()) {
    ends_.insert(world->end());
  }
}

void Interleavings::runSerial() {
  serialWoven_.clear();
  sharedCalls_ = 0;
  for (const Schedule& order : serial_) {
    serialWoven_.push_back(run(order));
    sharedCalls_ += serialWoven_.back().points.size();
  }
}

std::vector<Schedule> Interleavings::oneMore(const Schedule& schedule, const Woven& woven,
                                             bool stalling) {
  std::vector<Schedule> more;
  for (const SwitchPoint& point : woven.points) {
    for (const std::size_t target : point.targets) {
      Schedule next = schedule;
      next.switches.push_back({point.program, point.call, target, false});
      more.push_back(next);
      if (stalling) {
        next.switches.back().stalls = true;
        more.push_back(next);
      }
    }
  }
  return more;
}

std::vector<Schedule> Interleavings::withOneSwitch() const {
  std::vector<Schedule> all;
  for (std::size_t i = 0; i < serial_.size(); ++i) {
    const std::vector<Schedule> more = oneMore(serial_[i], serialWoven_[i], true);
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

Woven Interleavings::run(const Schedule& schedule) const {
  Schedule same = schedule;
  return weave(same, nullptr);
}

Woven Interleavings::runDrawn(std::size_t switches, std::uint64_t seed, Schedule& drawn) const {
  Draw draw(switches, seed, std::max<std::size_t>(1, sharedCalls_ / serial_.size()));
  drawn = serial_[seed % serial_.size()];
  return weave(drawn, &draw);
}

Woven Interleavings::weave(Schedule& schedule, Draw* draw) const {
  try {
    const std::unique_ptr<WovenWorld> world = meeting_.make();
    return weaveWorld(*world, schedule, draw);
  } catch (const std::exception& raised) {
    return {{nameOf(Invariant::Ends) + std::string(": it was raised: ") + raised.what()}, {}};
  }
}

Woven Interleavings::weaveWorld(WovenWorld& world, Schedule& schedule, Draw* draw) const {
  const std::vector<Weave::Program> programs = world.programs();
  PlacesOfWorld where(machinesOf(programs));
  Turns turns(schedule, where, places_, programs.size(), draw);
  Findings findings;
  {
    Weave weave(programs);
    turns.watch(weave);
    weave.run(
        schedule.order,
        [&turns](std::size_t program, const sim::SimCall& call) -> Weave::Turn {
          return turns.choose(program, call);
        },
        [&world](std::size_t program, const sim::SimCall& call) { world.observe(program, call); });
    for (const std::size_t program : weave.endless()) {
      findings.expect(false, nameOf(Invariant::Ends) + std::string(": it does not end: program ") +
                                 letterOf(program));
    }
    for (const std::string& raised : weave.raised()) {
      findings.expect(false, nameOf(Invariant::Ends) + (": it was raised: " + raised));
    }
    findings.expect(turns.allMet(), "the schedule is none of these programs");
  }
  world.judge(findings);
  if (!world.mayEndOtherwise()) {
    const std::string end = world.end();
    findings.expect(ends_.count(end) > 0,
                    nameOf(Invariant::Heals) + (": none of the ends of one after the other: " +
                                                differenceOf(end, *ends_.begin())));
  }
  return {findings.sentences(), turns.takePoints()};
}

}  // namespace trelv::tests
