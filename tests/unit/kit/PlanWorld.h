#pragma once

#include <set>
#include <string>
#include <vector>

#include "kit/PlanRun.h"
#include "support/GeneratedStation.h"
#include "unit/kit/RecordedRun.h"

namespace trelv::tests {

/// A generated machine and the plan of the start that it was made for.
class PlanWorld : public GeneratedStation {
 public:
  explicit PlanWorld(unsigned seed) : GeneratedStation(seed), hand_(seed) {}

  /// The arguments as a raw command line.
  std::string rawArguments() const;
  /// The plan of the start, on the machine as it is.
  kit::Plan plan();
  /// Lets the machine be what the plan was asked for: a program that fails, a user of few rights.
  void makeTrue();
  /// All that the machine holds.
  std::string text();
  /// Works in the maintenance form, and leaves all others as they are: the same in a window of the
  /// simulated desktop and in the plan's.
  FormHand user() const;
  /// The first row of the plan that says of a record what is not so now; empty where none does.
  std::string wrongRow(const std::vector<kit::UpdateRow>& rows);
  /// What is special about this one, in words.
  std::set<std::string> traits();

 private:
  std::size_t started_ = 0;
  unsigned hand_;
};

}  // namespace trelv::tests
