#include "prove/CommandLine.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "prove/Ledger.h"

namespace trelv::tests {
namespace {

using Clock = std::chrono::steady_clock;

/// What a command line asks for.
struct Wish {
  unsigned first = 1;
  unsigned last = 0;
  std::string only;
  std::size_t enough = 0;
  Clock::time_point end = Clock::time_point::max();
  std::string state;
};

unsigned today() {
  constexpr int kHoursOfADay = 24;
  const auto hours = std::chrono::duration_cast<std::chrono::hours>(
      std::chrono::system_clock::now().time_since_epoch());
  return static_cast<unsigned>(hours.count() / kHoursOfADay);
}

unsigned number(const std::string& text) { return static_cast<unsigned>(std::stoul(text)); }

void takeSeeds(Wish& wish, const std::string& text) {
  const std::size_t dash = text.find('-');
  wish.first = number(text);
  wish.last = dash == std::string::npos ? wish.first : number(text.substr(dash + 1));
}

/// Seeds of the whole proof: other ones each day, until it begins anew.
void takeToday(Wish& wish, const Proof& proof) {
  const auto some = static_cast<unsigned>(proof.seedsOfADay);
  const unsigned days = static_cast<unsigned>(proof.seeds) / some;
  wish.first = 1 + today() % days * some;
  wish.last = wish.first + some - 1;
  wish.enough = proof.enough;
}

/// Raises std::logic_error for words that it does not know.
Wish wishOf(const Proof& proof, const std::vector<std::string>& arguments) {
  Wish wish;
  wish.last = static_cast<unsigned>(proof.seeds);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string& option = arguments[i];
    if (option == "--today" && proof.seedsOfADay > 0) {
      takeToday(wish, proof);
      continue;
    }
    const std::string& value = arguments.at(++i);
    if (option == "--seeds" || option == "--seed") {
      takeSeeds(wish, value);
    } else if (option == "--only") {
      wish.only = value;
    } else if (option == "--enough") {
      wish.enough = number(value);
    } else if (option == "--for") {
      wish.end = Clock::now() + std::chrono::minutes(number(value));
    } else if (option == "--state") {
      wish.state = value;
    } else {
      throw std::invalid_argument(option);
    }
  }
  return wish;
}

void work(const Proof& proof, const Job& job, Tally& tally) {
  try {
    proof.work(job, tally);
  } catch (const std::exception& raised) {
    tally.found("all", std::string("ends: it was raised: ") + raised.what());
  }
}

void workOnAllCores(const Proof& proof, const Wish& wish, Ledger& ledger) {
  std::atomic<unsigned> next{wish.first};
  const auto worker = [&]() -> void {
    for (unsigned seed = next++; seed <= wish.last && Clock::now() < wish.end; seed = next++) {
      if (!ledger.holds(seed)) {
        Tally tally;
        work(proof, {seed, wish.only, wish.enough}, tally);
        ledger.add(seed, tally);
      }
    }
  };
  std::vector<std::jthread> threads;
  for (unsigned core = 1; core < std::thread::hardware_concurrency(); ++core) {
    threads.emplace_back(worker);
  }
  worker();
}

std::string repetition(const Proof& proof, const LedgerFinding& found) {
  return std::string("prove ") + proof.name + " --seed " + std::to_string(found.seed) +
         " --only '" + found.finding.run + "'";
}

void show(const Proof& proof, const Ledger& ledger, Clock::duration took) {
  constexpr std::size_t kMostShown = 40;
  const std::vector<LedgerFinding>& findings = ledger.findings();
  for (std::size_t i = 0; i < std::min(findings.size(), kMostShown); ++i) {
    std::cout << findings[i].finding.sentence << "\n  " << repetition(proof, findings[i]) << "\n";
  }
  std::cout << proof.name << ": seeds " << ledger.seeds();
  for (const auto& [what, count] : ledger.counts()) {
    std::cout << ", " << what << " " << count;
  }
  std::cout << ", findings " << findings.size() << " ("
            << std::chrono::duration_cast<std::chrono::seconds>(took).count() << " s)\n";
}

/// Once the whole proof was made: the exceptions that none of its runs needed.
std::vector<std::string> unneeded(const Proof& proof, const Wish& wish, const Ledger& ledger) {
  std::vector<std::string> names;
  const bool whole = wish.only.empty() && wish.enough == 0 && ledger.seeds() >= proof.seeds;
  if (proof.exceptions != nullptr && whole) {
    names = proof.exceptions();
    std::erase_if(names, [&](const std::string& name) { return ledger.needed().contains(name); });
  }
  return names;
}

int prove(const Proof& proof, const Wish& wish) {
  std::cout << proof.name << ": seeds " << wish.first << " to " << wish.last << "\n" << std::flush;
  Ledger ledger(wish.state);
  const Clock::time_point began = Clock::now();
  workOnAllCores(proof, wish, ledger);
  show(proof, ledger, Clock::now() - began);
  const std::vector<std::string> left = unneeded(proof, wish, ledger);
  for (const std::string& name : left) {
    std::cout << "an exception that no run needed: " << name << "\n";
  }
  return ledger.findings().empty() && left.empty() ? 0 : 1;
}

void list(const std::vector<Proof>& proofs) {
  for (const Proof& proof : proofs) {
    std::cout << proof.name << "\t" << proof.seeds << "\t" << proof.promise << "\t" << proof.how
              << "\n";
  }
}

/// What ./test makes.
int proveToday(const std::vector<Proof>& proofs) {
  int code = 0;
  for (const Proof& proof : proofs) {
    if (proof.seedsOfADay > 0) {
      code = std::max(code, prove(proof, wishOf(proof, {proof.name, "--today"})));
      std::cout << std::flush;
    }
  }
  return code;
}

}  // namespace

int runProofs(const std::vector<Proof>& proofs, const std::vector<std::string>& arguments) {
  constexpr int kNothingSaid = 2;
  if (arguments.empty()) {
    list(proofs);
    return 0;
  }
  if (arguments.size() == 1 && arguments.front() == "--today") {
    return proveToday(proofs);
  }
  const auto proof = std::find_if(proofs.begin(), proofs.end(), [&](const Proof& known) -> bool {
    return known.name == arguments.front();
  });
  if (proof == proofs.end()) {
    std::cerr << "no proof of this name: " << arguments.front() << "\n";
    return kNothingSaid;
  }
  try {
    return prove(*proof, wishOf(*proof, arguments));
  } catch (const std::exception& raised) {
    std::cerr << "not understood, or not possible: " << raised.what() << "\n";
    return kNothingSaid;
  }
}

}  // namespace trelv::tests
