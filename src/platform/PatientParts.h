#pragma once

#include "machine/Machine.h"
#include "platform/PatientFiles.h"
#include "platform/PatientProcesses.h"
#include "platform/PatientProfileFiles.h"
#include "platform/PatientVersionResources.h"

namespace trelv {

/// The parts of a machine that others may have in hand for a moment, each with patience: the one
/// place of the program that tries again. The machine outlives them.
class PatientParts {
 public:
  explicit PatientParts(machine::Machine machine)
      : machine_(machine),
        files_(machine.files, machine.clock),
        profiles_(machine.profiles, machine.files, machine.clock),
        processes_(machine.processes, machine.clock),
        versions_(machine.versions, machine.clock) {}

  machine::Files& files() { return files_; }

  /// The machine with these parts in the place of its own, and with this configuration store.
  machine::Machine machine(machine::ConfigurationLibrary& configuration) {
    return {files_,
            profiles_,
            machine_.registry,
            processes_,
            machine_.environment,
            machine_.system,
            machine_.clock,
            machine_.locale,
            versions_,
            configuration,
            machine_.support,
            machine_.desktop,
            machine_.automation,
            machine_.exclusion};
  }

 private:
  machine::Machine machine_;
  PatientFiles files_;
  PatientProfileFiles profiles_;
  PatientProcesses processes_;
  PatientVersionResources versions_;
};

}  // namespace trelv
