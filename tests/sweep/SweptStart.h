#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv::tests {

/// Which start is swept.
enum class StartKind {
  /// All five products at their versions.
  NothingToDo,
  /// No record, no integration: all set-ups run.
  FirstInstallation,
  /// Bilancio is behind on both sides.
  Update,
  /// As NothingToDo, by a user who is no administrator.
  NothingToDoWithoutRights
};

/// One world in which Bilancio's program is started once while something fails. A fresh world per
/// run: nothing is shared.
class SweptStart {
 public:
  explicit SweptStart(StartKind kind);

  Installation& installation() { return installation_; }
  Station& station() { return station_; }
  sim::SimMachine& machine() { return station_.machine(); }

  /// The start itself; returns when the program has ended.
  void run();

  const std::vector<std::string>& log() const { return log_; }
  bool logHas(const std::string& part) const;
  bool formWasShown();
  bool programWasStarted();
  bool programIsOnDisk();

  /// What is wrong with the state that the start left, one sentence each; empty when nothing is.
  /// Locks are judged by locksLeft().
  std::vector<std::string> damage();
  /// The lock files that are still there.
  std::vector<std::string> locksLeft();

 private:
  struct Expected {
    std::string before;
    std::string delivered;
  };

  void damageOf(const std::string& record, const std::string& serverOrClient,
                std::vector<std::string>& damage);
  bool commandWasStarted(const std::string& id, const std::string& side);

  Installation installation_;
  Station station_;
  /// Versions by product identifier, the same on both sides.
  std::map<std::string, Expected> products_;
  std::vector<std::string> log_;
};

}  // namespace trelv::tests
