#pragma once

#include <string>
#include <vector>

#include "kit/Verb.h"

namespace trelv::kit {

/// "plan": what a start of the manager with these arguments would do, on this machine, now. This
/// program stands for the manager that lies beside it.
class PlanVerb : public Verb {
 public:
  void declare(Syntax& syntax) override;
  Answer run(Workplace& workplace, Progress& progress) override;

 private:
  std::string mode_;
  std::vector<std::string> arguments_;
  std::string fails_;
  bool asUser_ = false;
};

}  // namespace trelv::kit
