#pragma once

#include <random>
#include <string>
#include <vector>

#include "kit/PlanRun.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"

namespace trelv::tests {

/// A machine with an installation, made up from a number: catalogue, configurations, records,
/// programs, packs, edition, rights, locks, broken files, and the command line of a start.
class PlanWorld {
 public:
  explicit PlanWorld(unsigned seed);

  sim::SimMachine& machine() { return station_.machine(); }
  const std::vector<std::string>& arguments() const { return arguments_; }
  /// The arguments as a raw command line.
  std::string rawArguments() const;
  /// The plan of the start, on the machine as it is.
  kit::Plan plan();
  /// Lets the machine be what the plan was asked for: a program that fails, a user of few rights.
  void makeTrue();
  /// All that the machine holds.
  std::string text();

 private:
  bool oneIn(unsigned count) { return random_() % count == 0; }
  std::size_t below(std::size_t count) { return random_() % count; }
  const std::string& oneOf(const std::vector<std::string>& texts) {
    return texts[below(texts.size())];
  }

  void putSystem();
  void putHost();
  void putCatalogue();
  void putConfiguration(const std::string& path);
  std::string command();
  std::string version();
  void putRecords();
  void putLocks();
  void putPacks();
  PackContent packContent();
  void putClientCopy();
  void putOdds();
  void breakFiles();
  void takeRights();
  void chooseArguments();

  std::mt19937 random_;
  Installation installation_;
  Station station_{installation_};
  PackPrograms packPrograms_{station_.machine()};
  std::vector<std::string> arguments_;
  std::unique_ptr<machine::Mark> mark_;
  std::size_t fails_ = 0;
  bool asUser_ = false;
  std::size_t started_ = 0;
};

/// Works in the maintenance form, and leaves all others as they are; the same in a window of the
/// simulated desktop and in the plan's.
void useForm(machine::Form& form, machine::FormWindow& window);

}  // namespace trelv::tests
