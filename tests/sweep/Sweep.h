#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sim/PowerLoss.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// What goes wrong while a program runs.
enum class Trouble {
  /// Nothing. The run that tells which calls there are.
  None,
  /// One call fails, in each of the ways in which it can.
  FailsOnce,
  /// One call fails and so do all behind it.
  FailsFromThenOn,
  /// The program is ended by force before a call, and within it where it writes.
  Killed,
  /// The share is gone from before a call until the program has ended.
  ShareVanishes,
  /// The power fails before a call, or within it where it writes, or behind the last one, and the
  /// disks lose of what was on its way what chance says.
  PowerFails
};

/// Which call of a run meets which trouble.
struct Fault {
  Trouble trouble = Trouble::None;
  /// The call, from 1 at the start of the run, and its text.
  std::size_t number = 0;
  std::string call;
  /// FailsOnce, FailsFromThenOn: the way in which it fails, as sim::FailingMachine counts them.
  /// PowerFails: the number that what is lost is made up from.
  std::size_t variant = 0;
  /// Killed, PowerFails: how far the call had come.
  sim::Unfinished left = sim::Unfinished::NotBegun;
  /// FailsOnce: the code that it fails with; 0: as the variant says.
  SystemCode code = system_code::kSuccess;
  /// FailsOnce: a second call that fails, behind the first, counted like it, and its code; 0 for
  /// none. Its text is known when the run is over.
  std::size_t secondNumber = 0;
  SystemCode secondCode = system_code::kSuccess;
  std::string secondCall{};
  /// What is done in the world, for tables that ask for it.
  const char* work = "";
};

/// What a run did and may not, one sentence each.
class Findings {
 public:
  /// Notes `otherwise` where something does not hold.
  void expect(bool holds, const std::string& otherwise) {
    if (!holds) {
      sentences_.push_back(otherwise);
    }
  }
  const std::vector<std::string>& sentences() const { return sentences_; }

  /// Notes that something does not hold, and which exception says that it need not.
  void excuse(const std::string& exception) { excuses_.push_back(exception); }
  const std::vector<std::string>& excuses() const { return excuses_; }

 private:
  std::vector<std::string> sentences_;
  std::vector<std::string> excuses_;
};

/// A world: a machine, a program that runs on it, and what must hold when it has ended. Made afresh
/// for each run. Two worlds share nothing, so that runs stand side by side in threads; a world sees
/// one thread only.
class SweptWorld {
 public:
  virtual ~SweptWorld() = default;

  virtual sim::SimMachine& machine() = 0;
  /// The share of ShareVanishes; needed for that only.
  virtual sim::SimDisk& share();
  /// Starts the program; returns when it has ended.
  virtual void run() = 0;
  /// The power has failed while the contents of these files were on their way.
  virtual void powerFailed(const std::vector<sim::OnItsWay>& onTheirWay);
  /// What must hold behind a run that met `fault`, which is over by now; may run the program again.
  /// Fault of trouble None: behind a run that nothing disturbed.
  virtual void judge(const Fault& fault, Findings& findings) = 0;
};

/// The text of a call that no run has: the fault is met behind the run's end.
constexpr const char* kNoCall = "none: it lived on";

using MakeWorld = std::function<std::unique_ptr<SweptWorld>()>;

/// The faults by which a call meets a trouble: one for each way that differs. Where one way is
/// enough it is another from call to call.
std::vector<Fault> faultsOf(const sim::SimCall& call, Trouble trouble);

/// The fault in words, the call included.
std::string describe(const Fault& fault);

/// Makes a world, runs it into a fault and has it judged. Gives the calls of the run. What the
/// world raises is a finding. Of a second failure the fault then says what it met.
std::vector<sim::SimCall> runOnce(const MakeWorld& make, Fault& fault, Findings& findings);

struct SweepResult {
  /// Calls of the run that nothing disturbed.
  std::size_t calls = 0;
  /// What was found, in the order of the faults: the fault, then the sentence.
  std::vector<std::string> findings;
};

/// Runs a fresh world for each trouble in each call that the work has, on all cores.
SweepResult sweep(const MakeWorld& make, std::initializer_list<Trouble> troubles);

/// Does a call's text begin like this? "*" in the beginning stands for any text, "$" behind it for
/// the text's end.
bool beginsLike(std::string_view text, std::string_view beginning);

/// Is it one of the words that "|" separates? An empty list has all.
bool isListed(std::string_view list, std::string_view word);

/// Calls whose trouble may have a consequence that others may not have, and why. A row has the
/// members `call`, how the call's text begins (see beginsLike), and `in`, the trouble that it is
/// meant for; it may have fits(fault, code) to ask for more of the fault and its code. The first
/// row that fits counts.
template <class Row>
class CallTable {
 public:
  CallTable(std::initializer_list<Row> rows) : rows_(rows), matched_(rows.size()) {}

  /// Null where no row fits. Notes that the row was needed.
  const Row* of(const Fault& fault) const {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (rows_[i].in == fault.trouble &&
          (fits(rows_[i], fault, fault.call, fault.code) ||
           (!fault.secondCall.empty() &&
            fits(rows_[i], fault, fault.secondCall, fault.secondCode)))) {
        matched_[i] = true;
        return &rows_[i];
      }
    }
    return nullptr;
  }
  bool holds(const Fault& fault) const { return of(fault) != nullptr; }

  /// The rows that no fault ever needed: call and reason.
  std::vector<std::string> unmatched() const {
    std::vector<std::string> rows;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (!matched_[i]) {
        rows.push_back(rows_[i].call + std::string(": ") + rows_[i].reason);
      }
    }
    return rows;
  }
  const std::vector<Row>& rows() const { return rows_; }

 private:
  static bool fits(const Row& row, const Fault& fault, const std::string& call, SystemCode code) {
    if constexpr (requires { row.fits(fault, code); }) {
      return beginsLike(call, row.call) && row.fits(fault, code);
    } else {
      return beginsLike(call, row.call);
    }
  }

  std::vector<Row> rows_;
  mutable std::vector<std::atomic<bool>> matched_;
};

/// The plain row: a call, and why what it leads to is right.
struct Exception {
  const char* call;
  const char* reason;
  Trouble in = Trouble::FailsOnce;
  /// Only in these works and with these codes; see isListed().
  const char* works = "";
  const char* codes = "";

  bool fits(const Fault& fault, SystemCode code) const;
};

/// Does one of the texts contain one of the parts, which "|" separates?
bool tellsOneOf(const std::vector<std::string>& texts, const std::string& parts);

}  // namespace trelv::tests
