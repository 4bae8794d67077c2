#pragma once

#include <functional>
#include <string>
#include <vector>

#include "overlay/Steps.h"
#include "sim/SimMachine.h"

namespace trelv::tests {

/// Is this a command line of 7-Zip or the decoder?
bool opensPacks(const std::string& commandLine);

/// What the user does in a form.
using FormHand = std::function<void(machine::Form&, machine::FormWindow&)>;

/// What a start does on a simulated machine: the changes that took effect, the programs that were
/// started (but for those that open packs), the boxes and forms, the log lines; in order, and
/// written down by what the machine itself then holds.
std::vector<overlay::Step> recordedRun(sim::SimMachine& machine, const std::string& arguments,
                                       const FormHand& user);

/// Everything that a machine and its disks hold: bytes, dates, attributes, rights, keys, variables,
/// settings, clock.
std::string worldOf(sim::SimMachine& machine, const std::vector<std::string>& volumes);

}  // namespace trelv::tests
