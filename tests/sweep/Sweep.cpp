#include "sweep/Sweep.h"

#include <exception>
#include <random>
#include <sstream>
#include <stdexcept>

#include "sim/FailingMachine.h"
#include "sim/KilledMachine.h"
#include "support/Cores.h"

namespace trelv::tests {
namespace {

std::size_t waysToFail(const sim::SimCall& call) {
  // Appending is logging: a line that fails is lost, whatever the code.
  return call.kind == sim::CallKind::FileAppend ? 1 : sim::FailingMachine::variants(call.kind);
}

std::vector<sim::Unfinished> waysToEnd(const sim::SimCall& call) {
  using sim::Unfinished;
  return sim::KilledMachine::canBeLeftBegun(call.kind)
             ? std::vector<Unfinished>{Unfinished::NotBegun, Unfinished::Empty, Unfinished::Half}
             : std::vector<Unfinished>{Unfinished::NotBegun};
}

/// The text of the call that failed.
std::string runFailing(SweptWorld& world, Fault& fault) {
  const auto span =
      fault.trouble == Trouble::FailsOnce ? sim::FailureSpan::Once : sim::FailureSpan::FromThenOn;
  sim::FailingMachine failing(world.machine(), fault.number, span, fault.variant);
  failing.failWith(fault.code);
  if (fault.secondNumber != 0) {
    failing.failAlso(fault.secondNumber, fault.secondCode);
  }
  world.run();
  fault.secondCall = failing.secondCall();
  fault.secondCode = failing.secondCode();
  return failing.failedCall();
}

/// The text of the call in which the program ended.
std::string runKilled(SweptWorld& world, const Fault& fault) {
  const sim::KilledMachine killed(world.machine(), fault.number, fault.left);
  try {
    world.run();
  } catch (const sim::Killed&) {
    // What it was killed in is asked for below.
  }
  return killed.reached() ? killed.killedCall() : kNoCall;
}

/// The text of the call in which the power failed.
std::string runWithoutPower(SweptWorld& world, const Fault& fault) {
  sim::PowerLoss power(world.machine(), {"C:", "S:"}, fault.number, fault.left);
  try {
    world.run();
  } catch (const sim::Killed&) {
    // What it was ended in is asked for below.
  }
  std::mt19937 random(static_cast<unsigned>(fault.variant));
  world.powerFailed(power.cut([&](std::size_t count) -> std::size_t { return random() % count; }));
  return power.reached() ? power.deadlyCall() : kNoCall;
}

/// The text of the first call that did without the share.
std::string runWithoutShare(SweptWorld& world, const Fault& fault) {
  std::string met;
  world.machine().onCall(fault.number, [&] {
    met = world.machine().callLog().all().back().text;
    world.share().disconnect(fault.variant % 2 == 0 ? system_code::kBadNetPath
                                                    : system_code::kNetNameDeleted);
  });
  world.run();
  world.share().reconnect();
  return met;
}

/// Lets the program run into a fault; the text of the call that met it.
std::string runInto(SweptWorld& world, Fault& fault) {
  world.machine().callLog().clear();
  switch (fault.trouble) {
    case Trouble::FailsOnce:
    case Trouble::FailsFromThenOn:
      return runFailing(world, fault);
    case Trouble::Killed:
      return runKilled(world, fault);
    case Trouble::ShareVanishes:
      return runWithoutShare(world, fault);
    case Trouble::PowerFails:
      return runWithoutPower(world, fault);
    default:
      world.run();
      return fault.call;
  }
}

}  // namespace

std::vector<Fault> faultsOf(const sim::SimCall& call, Trouble trouble) {
  std::vector<Fault> faults;
  Fault fault;
  fault.trouble = trouble;
  fault.number = call.number;
  fault.call = call.text;
  fault.variant = call.number;
  if (trouble == Trouble::FailsOnce) {
    for (std::size_t way = 0; way < waysToFail(call); ++way, ++fault.variant) {
      faults.push_back(fault);
    }
  } else if (trouble == Trouble::Killed || trouble == Trouble::PowerFails) {
    for (const sim::Unfinished left : waysToEnd(call)) {
      fault.left = left;
      faults.push_back(fault);
    }
  } else {
    faults.push_back(fault);
  }
  return faults;
}

namespace {

std::string andTheSecond(const Fault& fault) {
  return fault.secondNumber == 0
             ? ""
             : " and so did call " + std::to_string(fault.secondNumber) + ", " + fault.secondCall +
                   " (code " + std::to_string(fault.secondCode) + ")";
}

}  // namespace

std::string describe(const Fault& fault) {
  const std::string call = "call " + std::to_string(fault.number) + ", " + fault.call;
  switch (fault.trouble) {
    case Trouble::FailsOnce:
      return call + ", failed (" +
             (fault.code == system_code::kSuccess ? "variant " + std::to_string(fault.variant)
                                                  : "code " + std::to_string(fault.code)) +
             ")" + andTheSecond(fault);
    case Trouble::FailsFromThenOn:
      return "everything failed from " + call + " on";
    case Trouble::Killed:
      return "ended by force in " + call + " (" +
             (fault.left == sim::Unfinished::NotBegun ? "not begun"
              : fault.left == sim::Unfinished::Empty  ? "opened"
                                                      : "half done") +
             ")";
    case Trouble::PowerFails:
      return "the power failed in " + call + " (loss " + std::to_string(fault.variant) + ")";
    case Trouble::ShareVanishes:
      return "the share vanished before " + call;
    default:
      return "undisturbed";
  }
}

std::vector<sim::SimCall> runOnce(const MakeWorld& make, Fault& fault, Findings& findings) {
  std::vector<sim::SimCall> calls;
  try {
    const std::unique_ptr<SweptWorld> world = make();
    const std::string call = runInto(*world, fault);
    calls = world->machine().callLog().all();
    findings.expect(call == fault.call, "it was met by another call: " + call);
    world->judge(fault, findings);
  } catch (const std::exception& raised) {
    findings.expect(false, std::string("ends: it was raised: ") + raised.what());
  }
  return calls;
}

void SweptWorld::powerFailed(const std::vector<sim::OnItsWay>& /*onTheirWay*/) {}

sim::SimDisk& SweptWorld::share() { throw std::logic_error("a world without a share"); }

SweepResult sweep(const MakeWorld& make, std::initializer_list<Trouble> troubles) {
  std::vector<Fault> faults{Fault{}};
  std::vector<Findings> found(1);
  const std::vector<sim::SimCall> calls = runOnce(make, faults[0], found[0]);
  for (const Trouble trouble : troubles) {
    for (const sim::SimCall& call : calls) {
      const std::vector<Fault> more = faultsOf(call, trouble);
      faults.insert(faults.end(), more.begin(), more.end());
    }
  }
  found.resize(faults.size());
  onAllCores(faults.size() - 1,
             [&](std::size_t at) { runOnce(make, faults[at + 1], found[at + 1]); });
  SweepResult result{calls.size(), {}};
  for (std::size_t i = 0; i < faults.size(); ++i) {
    for (const std::string& sentence : found[i].sentences()) {
      result.findings.push_back(describe(faults[i]) + ": " + sentence);
    }
  }
  return result;
}

bool beginsLike(std::string_view text, std::string_view beginning) {
  const std::size_t star = beginning.find('*');
  if (star == std::string_view::npos) {
    return beginning.ends_with('$') ? text == beginning.substr(0, beginning.size() - 1)
                                    : text.starts_with(beginning);
  }
  if (text.substr(0, star) != beginning.substr(0, star)) {
    return false;
  }
  for (std::size_t at = star; at <= text.size(); ++at) {
    if (beginsLike(text.substr(at), beginning.substr(star + 1))) {
      return true;
    }
  }
  return false;
}

bool isListed(std::string_view list, std::string_view word) {
  return list.empty() ||
         ("|" + std::string(list) + "|").find("|" + std::string(word) + "|") != std::string::npos;
}

bool Exception::fits(const Fault& fault, SystemCode code) const {
  return isListed(works, fault.work) &&
         isListed(codes, std::to_string(static_cast<std::int32_t>(code)));
}

bool tellsOneOf(const std::vector<std::string>& texts, const std::string& parts) {
  std::istringstream text(parts);
  for (std::string part; std::getline(text, part, '|');) {
    if (std::any_of(texts.begin(), texts.end(), [&part](const std::string& line) {
          return line.find(part) != std::string::npos;
        })) {
      return true;
    }
  }
  return false;
}

}  // namespace trelv::tests
