#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "prove/Proof.h"

namespace trelv::tests {

/// A finding and the seed whose run it is.
struct LedgerFinding {
  unsigned seed = 0;
  Tally::Finding finding;
};

/// What was done of one proof, in a file to which a seed is added when its runs are over: whoever
/// is ended in the middle loses the seeds in work and no other. Used by several threads.
class Ledger {
 public:
  /// Reads what the file holds; an empty path keeps nothing. Raises std::runtime_error where it
  /// cannot be written.
  explicit Ledger(const std::string& path);

  bool holds(unsigned seed) const { return seeds_.contains(seed); }
  void add(unsigned seed, const Tally& tally);

  // Behind the threads.

  std::size_t seeds() const { return seeds_.size(); }
  /// Sums over all seeds, in the order of their names.
  const std::map<std::string, std::uint64_t>& counts() const { return counts_; }
  const std::vector<LedgerFinding>& findings() const { return findings_; }
  /// The exceptions that were needed.
  const std::set<std::string>& needed() const { return needed_; }

 private:
  void read(const std::string& path);
  void readSeed(const std::string& line, std::vector<LedgerFinding>& pending);

  std::mutex mutex_;
  std::ofstream file_;
  std::set<unsigned> seeds_;
  std::map<std::string, std::uint64_t> counts_;
  std::vector<LedgerFinding> findings_;
  std::set<std::string> needed_;
};

}  // namespace trelv::tests
