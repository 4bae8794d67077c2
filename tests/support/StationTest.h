#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Installation.h"
#include "support/Matchers.h"

namespace trelv::tests {

/// What tests of whole procedures stand on: an installation on a share, one of its workstations and
/// the process of the manager that runs there. Public, so that the rows of a table can arrange it.
class StationTest : public testing::Test {
 public:
  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }
  sim::SimDisk& disk() { return station_.disk(); }
  FakeProgram& program() { return station_.program(); }

  const std::vector<std::string>& lines() { return program().lines(); }
  /// Command lines of all programs that were started on the workstation.
  std::vector<std::string> started() { return station_.commandLines(); }
  const std::vector<sim::SimBox>& boxes() { return machine().boxes(); }
  const std::vector<FakeReport>& reports() { return program().reports(); }

  Installation installation_;
  Station station_{installation_};
};

}  // namespace trelv::tests
