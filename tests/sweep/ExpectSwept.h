#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "sweep/Sweep.h"

namespace trelv::tests {

/// Sweeps worlds of a type, made from the arguments; fails for each finding, and where the work has
/// no more than `leastCalls` calls, since the sweep then saw little of it.
template <class World, class... Arguments>
void expectSwept(std::initializer_list<Trouble> troubles, std::size_t leastCalls,
                 const Arguments&... arguments) {
  const SweepResult result =
      sweep([&]() { return std::make_unique<World>(arguments...); }, troubles);
  constexpr std::size_t kMostTold = 30;
  for (std::size_t i = 0; i < result.findings.size() && i < kMostTold; ++i) {
    ADD_FAILURE() << result.findings[i];
  }
  EXPECT_LE(result.findings.size(), kMostTold) << "and more of them";
  EXPECT_GT(result.calls, leastCalls);
}

/// To be called when everything that a table is for was swept.
template <class Row>
void expectEachRowMatched(const CallTable<Row>& table) {
  for (const std::string& row : table.unmatched()) {
    ADD_FAILURE() << "a row that nothing needs: " << row;
  }
}

}  // namespace trelv::tests
