#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace trelv::tests {

/// What one seed of a proof is to do.
struct Job {
  unsigned seed = 1;
  /// Not empty: only the run of this name is made.
  std::string only;
  /// About so many runs are enough, spread over all of them; 0: all.
  std::size_t enough = 0;

  bool wants(const std::string& run) const { return only.empty() || only == run; }
};

/// What the runs of one seed came to. Filled by one thread.
class Tally {
 public:
  /// `what` is one word, shown in the report: "runs", "worlds". Every proof counts its "runs".
  void count(const std::string& what, std::uint64_t by = 1) { counts_[what] += by; }
  /// A run broke an invariant. `run` is its name within the seed: it has no quotes and no line
  /// ends, and makes exactly that run again as Job::only.
  void found(const std::string& run, const std::string& sentence) {
    findings_.push_back({run, sentence});
  }

  /// An exception was needed: an invariant did not hold and need not.
  void needed(const std::string& exception) { needed_.insert(exception); }

  struct Finding {
    std::string run;
    std::string sentence;
  };
  const std::map<std::string, std::uint64_t>& counts() const { return counts_; }
  const std::vector<Finding>& findings() const { return findings_; }
  const std::set<std::string>& needed() const { return needed_; }

 private:
  std::map<std::string, std::uint64_t> counts_;
  std::set<std::string> needed_;
  std::vector<Finding> findings_;
};

/// A promise and how it is proved, seed by seed. The same seed makes the same runs, on any machine
/// and in any company; seeds are proved side by side in threads and share nothing.
struct Proof {
  /// The sub-command.
  const char* name;
  /// What holds, and how that is shown: one line each.
  const char* promise;
  const char* how;
  /// Seeds from 1 to this are the whole proof.
  std::size_t seeds;
  /// Seeds of a day in ./test, and Job::enough for each of them.
  std::size_t seedsOfADay;
  std::size_t enough;
  void (*work)(const Job& job, Tally& tally);
  /// The names of the exceptions that it judges with: one that the whole proof does not need is a
  /// finding. None where this is null.
  std::vector<std::string> (*exceptions)() = nullptr;
};

}  // namespace trelv::tests
