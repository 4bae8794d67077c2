#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/PlanOfUpdates.h"
#include "machine/Machine.h"
#include "overlay/Overlay.h"

namespace trelv::kit {

/// A start of the manager that is to be planned.
struct PlannedStart {
  /// Full path of the manager's executable; 7-Zip and the decoder lie beside it.
  std::string manager;
  /// Mode and arguments, as on its command line.
  std::vector<std::string> arguments;
  /// Which program cannot be started, from 1; 0: none.
  std::size_t fails = 0;
  /// Without administrator's rights.
  bool asUser = false;
  overlay::ListingOrder order = overlay::ListingOrder::ByName;
  /// What the user does in forms; without anything he closes them.
  overlay::FormUser user = {};
  /// Hears each step as it is noted.
  std::function<void(const overlay::Step&)> onStep = {};
};

/// What the start would do.
struct Plan {
  /// In order.
  std::vector<overlay::Step> steps;
  /// Command line of the program that the host asks for; nothing where none would be started.
  std::optional<std::string> starts;
  std::vector<UpdateRow> updates;
  /// Where the run log lies; empty where the start wrote none.
  std::string logFolder;

  /// Is there anything but the run log and the start of the program that the host asks for?
  bool changesAnything() const;
};

/// Runs the manager's own entry with its own procedures over an overlay of the machine. Raises
/// RuntimeError where that cannot be done; what fails in the run is a part of the plan.
Plan planRun(const machine::Machine& below, const PlannedStart& start);

/// The raw command line of a start: arguments with blanks, and empty ones, stand in quotes.
std::string commandLineOf(const PlannedStart& start);

}  // namespace trelv::kit
