#pragma once

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/Installation.h"
#include "support/PackPrograms.h"

namespace trelv::tests {

/// A machine with an installation, made up from a number: catalogue, configurations, records,
/// programs, packs, edition, rights, locks, broken files, and the command line of a start. The same
/// number gives the same machine.
class GeneratedStation {
 public:
  explicit GeneratedStation(unsigned seed);

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }
  Installation& installation() { return installation_; }
  Station& station() { return station_; }
  const std::vector<std::string>& arguments() const { return arguments_; }
  /// Which of the started programs cannot be started, from 1; 0 for none. The machine does not know
  /// it.
  std::size_t fails() const { return fails_; }
  /// Is the start made by a user of few rights? The machine does not know it.
  bool asUser() const { return asUser_; }

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
};

}  // namespace trelv::tests
