#include "prove/Faults.h"

#include <random>
#include <string>
#include <vector>

#include "prove/Worlds.h"
#include "sim/FailingMachine.h"

namespace trelv::tests {
namespace {

/// "start 42 5": the world's work, the call, the code; "start 42 5 60 32" with a second fault; for
/// kills how far the call had come.
std::string nameOf(Work work, const Fault& fault) {
  std::string name =
      std::string(nameOf(work)) + " " + std::to_string(fault.number) + " " +
      std::to_string(fault.trouble == Trouble::Killed ? static_cast<SystemCode>(fault.left)
                                                      : fault.code);
  if (fault.secondNumber != 0) {
    name += " " + std::to_string(fault.secondNumber) + " " + std::to_string(fault.secondCode);
  }
  return name;
}

/// One world of each work, and the faults that its undisturbed run could meet.
class Worlds {
 public:
  Worlds(const Job& job, Tally& tally) : job_(job), tally_(tally) {}

  /// `faults` makes the faults of one world from its calls.
  template <class MakeFaults>
  void prove(const MakeFaults& faults) {
    for (const Work work : kEveryWork) {
      Undisturbed undisturbed = undisturbedRun(work, job_.seed);
      undisturbed.shown = !job_.only.empty();
      tally_.count("worlds");
      tally_.count("calls", undisturbed.calls.size());
      const MakeWorld make = [&]() -> std::unique_ptr<SweptWorld> {
        return World::make(work, job_.seed, &undisturbed);
      };
      proveEach(work, make, faults(undisturbed.calls));
    }
  }

 private:
  void proveEach(Work work, const MakeWorld& make, const std::vector<Fault>& faults) {
    const std::size_t share = job_.enough / kEveryWork.size();
    const std::size_t step = share == 0 ? 1 : faults.size() / share + 1;
    for (std::size_t i = job_.seed % step; i < faults.size(); i += step) {
      const std::string name = nameOf(work, faults[i]);
      if (!job_.wants(name)) {
        continue;
      }
      Findings findings;
      Fault fault = faults[i];
      fault.work = nameOf(work);
      runOnce(make, fault, findings);
      tally_.count("runs");
      for (const std::string& exception : findings.excuses()) {
        tally_.needed(exception);
      }
      for (const std::string& sentence : findings.sentences()) {
        tally_.found(name, describe(faults[i]) + ": " + sentence);
      }
    }
  }

  const Job& job_;
  Tally& tally_;
};

std::vector<Fault> failuresOf(const sim::SimCall& call) {
  std::vector<Fault> faults;
  Fault fault = faultsOf(call, Trouble::FailsOnce).front();
  for (const SystemCode code : sim::FailingMachine::codes(call.kind)) {
    fault.code = code;
    faults.push_back(fault);
  }
  return faults;
}

template <class FaultsOf>
std::vector<Fault> ofAll(const std::vector<sim::SimCall>& calls, const FaultsOf& faultsOfOne) {
  std::vector<Fault> faults;
  for (const sim::SimCall& call : calls) {
    const std::vector<Fault> more = faultsOfOne(call);
    faults.insert(faults.end(), more.begin(), more.end());
  }
  return faults;
}

}  // namespace

void proveFaults(const Job& job, Tally& tally) {
  Worlds(job, tally).prove([](const std::vector<sim::SimCall>& calls) -> std::vector<Fault> {
    return ofAll(calls, failuresOf);
  });
}

void provePairs(const Job& job, Tally& tally) {
  constexpr std::size_t kPairsOfAWorld = 220;
  Worlds(job, tally).prove([&](const std::vector<sim::SimCall>& calls) -> std::vector<Fault> {
    std::mt19937 random(job.seed);
    const std::vector<Fault> singles = ofAll(calls, failuresOf);
    std::vector<Fault> pairs;
    for (std::size_t i = 0; i < kPairsOfAWorld && !singles.empty(); ++i) {
      Fault fault = singles[random() % singles.size()];
      fault.secondNumber = fault.number + 1 + random() % (calls.size() - fault.number + 1);
      fault.secondCode = singles[random() % singles.size()].code;
      pairs.push_back(fault);
    }
    return pairs;
  });
}

void proveKills(const Job& job, Tally& tally) {
  Worlds(job, tally).prove([](const std::vector<sim::SimCall>& calls) -> std::vector<Fault> {
    return ofAll(calls, [](const sim::SimCall& call) -> std::vector<Fault> {
      return faultsOf(call, Trouble::Killed);
    });
  });
}

}  // namespace trelv::tests
