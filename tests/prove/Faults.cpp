#include "prove/Faults.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "prove/Scenes.h"
#include "prove/Worlds.h"
#include "sim/FailingMachine.h"
#include "sim/PowerLoss.h"

namespace trelv::tests {
namespace {

/// "start 42 5": what is done, the call, the code; "start 42 5 60 32" with a second fault; for
/// kills and power failures how far the call had come, for the latter what is lost then.
std::string nameOf(const std::string& what, const Fault& fault) {
  const bool ended = fault.trouble == Trouble::Killed || fault.trouble == Trouble::PowerFails;
  std::string name = what + " " + std::to_string(fault.number) + " " +
                     std::to_string(ended ? static_cast<SystemCode>(fault.left) : fault.code);
  if (fault.secondNumber != 0) {
    name += " " + std::to_string(fault.secondNumber) + " " + std::to_string(fault.secondCode);
  }
  if (fault.trouble == Trouble::PowerFails) {
    name += " " + std::to_string(fault.variant);
  }
  return name;
}

/// What is called, and the file that it is about: "files.removeFile agdv.lck".
std::string kindOf(const Fault& fault) {
  const std::string method = fault.call.substr(0, fault.call.find(' '));
  const std::size_t name = fault.call.find_last_of("\\ ");
  return name == std::string::npos ? method : method + " " + fault.call.substr(name + 1);
}

/// About `share` of them: one of each kind, another one of each, and so on; other ones with another
/// seed. All, in their order, where `share` is 0.
std::vector<Fault> spread(const std::vector<Fault>& faults, std::size_t share, unsigned seed) {
  if (share == 0 || faults.size() <= share) {
    return faults;
  }
  std::map<std::string, std::vector<Fault>> kinds;
  for (const Fault& fault : faults) {
    kinds[kindOf(fault)].push_back(fault);
  }
  std::mt19937 random(seed);
  for (auto& [kind, ones] : kinds) {
    std::shuffle(ones.begin(), ones.end(), random);
  }
  std::vector<Fault> chosen;
  for (std::size_t round = 0; chosen.size() < share; ++round) {
    for (const auto& [kind, ones] : kinds) {
      if (round < ones.size()) {
        chosen.push_back(ones[round]);
      }
    }
  }
  return chosen;
}

/// Makes about `share` of the runs, or all where that is 0.
void proveEach(const Job& job, Tally& tally, std::size_t share, const char* what,
               const MakeWorld& make, const std::vector<Fault>& faults) {
  for (Fault fault : spread(faults, share, job.seed)) {
    const std::string name = nameOf(what, fault);
    if (!job.wants(name)) {
      continue;
    }
    Findings findings;
    fault.work = what;
    runOnce(make, fault, findings);
    tally.count("runs");
    for (const std::string& exception : findings.excuses()) {
      tally.needed(exception);
    }
    for (const std::string& sentence : findings.sentences()) {
      tally.found(name, describe(fault) + ": " + sentence);
    }
  }
}

/// One world of each work, and the faults that its undisturbed run could meet.
class Worlds {
 public:
  /// `kinds` share what is enough: the works, and what a proof has besides.
  Worlds(const Job& job, Tally& tally, std::size_t kinds = kEveryWork.size())
      : job_(job), tally_(tally), kinds_(kinds) {}

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
      proveEach(job_, tally_, job_.enough / kinds_, nameOf(work), make, faults(undisturbed.calls));
    }
  }

 private:
  const Job& job_;
  Tally& tally_;
  const std::size_t kinds_;
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

/// At each moment at which something else may be lost, and behind the end: some losses.
class PowerFailures {
 public:
  explicit PowerFailures(unsigned seed) : seed_(seed) {}

  std::vector<Fault> operator()(const std::vector<sim::SimCall>& calls) const {
    std::vector<Fault> faults;
    for (const sim::SimCall& call : calls) {
      if (sim::PowerLoss::matters(call.kind)) {
        add(faults, faultsOf(call, Trouble::PowerFails));
      }
    }
    add(faults, faultsOf({calls.size() + 1, sim::CallKind::FileLook, kNoCall, "", ""},
                         Trouble::PowerFails));
    return faults;
  }

 private:
  void add(std::vector<Fault>& faults, const std::vector<Fault>& moments) const {
    constexpr std::size_t kLosses = 3;
    constexpr std::size_t kMostMoments = 10'000;
    for (Fault fault : moments) {
      for (std::size_t i = 0; i < kLosses; ++i) {
        fault.variant = (seed_ * kMostMoments + faults.size()) * kLosses + i;
        faults.push_back(fault);
      }
    }
  }

  const unsigned seed_;
};

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

void provePower(const Job& job, Tally& tally) {
  constexpr std::size_t kKinds = kEveryWork.size() + kEverySubject.size();
  // It is made for one thread: the command line and the locale are the process's.
  static std::mutex secondProgram;
  const PowerFailures failures(job.seed);
  Worlds(job, tally, kKinds).prove(failures);
  for (const Subject subject : kEverySubject) {
    std::unique_lock alone(secondProgram, std::defer_lock);
    if (subject == Subject::Publication || subject == Subject::Withdrawal) {
      alone.lock();
    }
    const Past past = pastOf(subject, job.seed);
    tally.count("worlds");
    tally.count("calls", past.calls.size());
    const MakeWorld make = [&]() -> std::unique_ptr<SweptWorld> {
      return Scene::make(subject, job.seed, &past);
    };
    proveEach(job, tally, job.enough / kKinds, nameOf(subject), make, failures(past.calls));
  }
}

}  // namespace trelv::tests
