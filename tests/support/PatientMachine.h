#pragma once

#include "machine/Machine.h"
#include "platform/PatientParts.h"

namespace trelv::tests {

/// A machine with patient parts in the place of its own, as the shipped program gets it.
class PatientMachine {
 public:
  explicit PatientMachine(machine::Machine& machine)
      : parts_(machine), machine_(parts_.machine(machine.configuration)) {}
  PatientMachine(const PatientMachine&) = delete;
  PatientMachine& operator=(const PatientMachine&) = delete;

  machine::Machine& machine() { return machine_; }

 private:
  PatientParts parts_;
  machine::Machine machine_;
};

}  // namespace trelv::tests
