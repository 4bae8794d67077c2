#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>

#include "sim/SimMachine.h"
#include "support/PackPrograms.h"

namespace trelv::tests {

/// A user of the maintenance form and of the session from a medium. What he wants was made up from
/// a number and stays the same from start to start; what is not there he leaves out.
class ScriptedUser {
 public:
  ScriptedUser(sim::SimMachine& machine, unsigned seed);
  ScriptedUser(const ScriptedUser&) = delete;
  ScriptedUser& operator=(const ScriptedUser&) = delete;

  /// A start begins: he begins anew.
  void begin();

 private:
  /// His wishes in the window of a form that he sees now: the same whatever he saw before.
  std::mt19937 wishesIn(const std::string& form);
  void maintain(sim::SimFormWindow& form);
  void select(sim::SimFormWindow& form);
  void choose(sim::SimFormWindow& form);

  sim::SimMachine& machine_;
  const unsigned seed_;
  /// How often he saw each form in this start.
  std::map<std::string, unsigned> seen_;
};

/// A medium in drive E:, made up from a number, from which the manager is started. The programs
/// that open its packs live as long as the answer.
[[nodiscard]] std::unique_ptr<PackPrograms> putMedium(sim::SimMachine& machine, unsigned seed);

}  // namespace trelv::tests
