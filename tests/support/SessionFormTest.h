#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "integrated/Help.h"
#include "support/Matchers.h"
#include "support/RealProgram.h"
#include "support/SessionForms.h"

namespace trelv::tests {

using machine::BoxAnswer;
using sim::SimFormWindow;

/// What tests of one form of a session stand on: a machine that knows the session's forms, and a
/// FakeProgram or RealProgram on it.
template <class AnyProgram>
class SessionFormTest : public testing::Test {
 protected:
  SessionFormTest() { declareSessionForms(machine_.desktop()); }

  Program& program() { return program_; }
  SessionState& session() { return program().state.session; }
  const std::vector<OfferedProduct>& selection() { return program().state.selectedProducts; }
  const std::vector<sim::SimBox>& boxes() { return machine_.boxes(); }
  std::vector<std::string> boxTexts() { return machine_.desktop().boxTexts(); }
  /// `open` shows the form of this name; the user does that in it and must be able to leave it.
  template <class Open>
  void play(const std::string& form, sim::SimDesktop::UserAction user, const Open& open) {
    machine_.desktop().onForm(form, std::move(user));
    open();
    EXPECT_EQ(machine_.desktop().forcedCloses(), 0U);
  }

  sim::SimMachine machine_;
  AnyProgram program_{machine_};
  modProdTrelvInteractive::Help help_{program_};
};

}  // namespace trelv::tests
