#pragma once

#include "machine/Machine.h"
#include "platform/PatientFiles.h"

namespace trelv::tests {

/// A machine with patient files in the place of its own, as the shipped program gets it.
class PatientMachine {
 public:
  explicit PatientMachine(machine::Machine& machine)
      : files_(machine.files, machine.clock), machine_{files_,
                                                       machine.profiles,
                                                       machine.registry,
                                                       machine.processes,
                                                       machine.environment,
                                                       machine.system,
                                                       machine.clock,
                                                       machine.locale,
                                                       machine.versions,
                                                       machine.configuration,
                                                       machine.support,
                                                       machine.desktop,
                                                       machine.automation,
                                                       machine.exclusion} {}
  PatientMachine(const PatientMachine&) = delete;
  PatientMachine& operator=(const PatientMachine&) = delete;

  machine::Machine& machine() { return machine_; }

 private:
  PatientFiles files_;
  machine::Machine machine_;
};

}  // namespace trelv::tests
