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
  machines.reserve(programs.size());
  for (const Weave::Program& program : programs) {
    machines.push_back(program.machine);
  }
  return machines;
}

}  // namespace

/// Switches drawn by chance: at which of the places where one makes a difference, and to whom.
class Draw {
 public:
  /// `places` tells of each program at how many of them it comes by.
  Draw(std::size_t switches, std::uint64_t seed, std::vector<std::size_t> places)
      : switches_(switches), random_(seed), places_(std::move(places)), turn_(places_.size()) {}
  /// The switch at the next place, where one was drawn.
  std::optional<TurnSwitch> next(const SwitchPoint& point);

 private:
  std::size_t below(std::size_t count) { return random_() % std::max<std::size_t>(1, count); }

  std::size_t switches_;
  std::mt19937_64 random_;
  /// By program: the places that it still has before it.
  std::vector<std::size_t> places_;
  /// Whose turn it is, and how many places he still comes by in it.
  std::size_t turn_;
  std::size_t left_ = 0;
};

std::optional<TurnSwitch> Draw::next(const SwitchPoint& point) {
  if (point.program != std::exchange(turn_, point.program)) {
    // Earlier places rather than later ones: whoever meets others on his way has fewer than alone.
    left_ = below(1 + below(places_[turn_]));
  }
  places_[turn_] -= std::min<std::size_t>(1, places_[turn_]);
  if (switches_ == 0 || left_ > 0) {
    left_ -= std::min<std::size_t>(1, left_);
    return std::nullopt;
  }
  --switches_;
  // Where one stands still to the end there is nothing left to draw.
  constexpr std::size_t kStalling = 8;
  return TurnSwitch{point.program, point.call, point.targets[below(point.targets.size())],
                    switches_ == 0 && below(kStalling) == 0};
}

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

End without(End end, const std::set<std::string>& endings) {
  std::erase_if(end, [&](const auto& file) -> bool {
    return std::any_of(endings.begin(), endings.end(), [&](const std::string& ending) -> bool {
      return file.first.ends_with(ending);
    });
  });
  return end;
}

/// All orders in which those that are alike follow each other as they are given.
std::vector<Schedule> ordersOf(std::size_t programs, const std::vector<std::size_t>& alike) {
  Schedule schedule;
  schedule.order.resize(programs);
  std::iota(schedule.order.begin(), schedule.order.end(), 0);
  std::vector<Schedule> orders;
  do {
    const std::vector<std::size_t>& order = schedule.order;
    const bool given = std::is_sorted(alike.begin(), alike.end(),
                                      [&order](std::size_t left, std::size_t right) -> bool {
                                        return std::find(order.begin(), order.end(), left) <
                                               std::find(order.begin(), order.end(), right);
                                      });
    if (given) {
      orders.push_back(schedule);
    }
  } while (std::next_permutation(schedule.order.begin(), schedule.order.end()));
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
  pointsOf_.resize(programs);
  serial_ = ordersOf(programs, meeting_.alike);
  for (const Schedule& order : ordersOf(programs, {})) {
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
  for (const Schedule& order : serial_) {
    serialWoven_.push_back(run(order));
    pointsOf_[order.order.front()] = serialWoven_.back().points.size();
  }
  for (const std::size_t program : meeting_.alike) {
    pointsOf_[program] = pointsOf_[meeting_.alike.front()];
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
  Draw draw(switches, seed, pointsOf_);
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
      expect(findings, Invariant::Ends, false,
             std::string("it does not end: program ") + letterOf(program));
    }
    for (const std::string& raised : weave.raised()) {
      expect(findings, Invariant::Ends, false, "it was raised: " + raised);
    }
    findings.expect(turns.allMet(), "the schedule is none of these programs");
  }
  world.judge(findings);
  judgeEnd(world, findings);
  return {findings.sentences(), turns.takePoints()};
}

void Interleavings::judgeEnd(WovenWorld& world, Findings& findings) const {
  const std::set<std::string> mayDiffer = world.mayDiffer();
  const End end = without(world.end(), mayDiffer);
  const bool known = std::any_of(ends_.begin(), ends_.end(), [&](const End& serial) -> bool {
    return mayDiffer.empty() ? serial == end : without(serial, mayDiffer) == end;
  });
  if (!known) {
    expect(findings, Invariant::Heals, false,
           "none of the ends of one after the other: " +
               differenceOf(without(*ends_.begin(), mayDiffer), end));
  }
}

}  // namespace trelv::tests
