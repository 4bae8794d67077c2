#pragma once

#include <string>

#include "kit/PlanRun.h"
#include "support/GeneratedStation.h"

namespace trelv::tests {

/// A generated machine and the plan of the start that it was made for.
class PlanWorld : public GeneratedStation {
 public:
  explicit PlanWorld(unsigned seed) : GeneratedStation(seed) {}

  /// The arguments as a raw command line.
  std::string rawArguments() const;
  /// The plan of the start, on the machine as it is.
  kit::Plan plan();
  /// Lets the machine be what the plan was asked for: a program that fails, a user of few rights.
  void makeTrue();
  /// All that the machine holds.
  std::string text();

 private:
  std::size_t started_ = 0;
};

/// Works in the maintenance form, and leaves all others as they are; the same in a window of the
/// simulated desktop and in the plan's.
void useForm(machine::Form& form, machine::FormWindow& window);

}  // namespace trelv::tests
