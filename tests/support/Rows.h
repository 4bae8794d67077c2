#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace trelv::tests {

/// A row of a table that a test suite goes through, one test a row; what derives from it adds the
/// other columns.
struct Row {
  const char* name;

  friend std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }
};

/// Names the tests after their rows:
/// INSTANTIATE_TEST_SUITE_P(Of, Suite, testing::ValuesIn(kRows), NameOfRow()).
struct NameOfRow {
  template <class AnyRow>
  std::string operator()(const testing::TestParamInfo<AnyRow>& row) const {
    return row.param.name;
  }
};

}  // namespace trelv::tests
