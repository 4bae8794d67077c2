#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "support/FakeProgram.h"

namespace trelv::tests {

/// Where a report lies that was begun by a user mario.
constexpr const char* kReport = "C:\\Users\\mario\\Temp\\log\\ProdInfo.txt";

/// The lines of the report in UTF-8, each of which must begin with the date and time of the
/// simulated clock's start.
inline std::vector<std::string> reportLines(sim::SimMachine& machine) {
  const std::string date = "[16/11/2026 09:30:00] - ";
  std::istringstream text(machine.locale().fromAnsi(machine.fileText(kReport)));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    EXPECT_EQ(line.substr(0, date.size()), date);
    EXPECT_EQ(line.back(), '\r') << line;
    lines.push_back(line.substr(date.size(), line.size() - date.size() - 1));
  }
  return lines;
}

/// Puts an empty report where CreateProductReport puts it.
inline void beginReport(FakeProgram& program) {
  program.sim.putFile(kReport, "");
  program.state.inventory.reportFile = kReport;
}

}  // namespace trelv::tests
