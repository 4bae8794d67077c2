#include <gtest/gtest.h>

#include "sim/SimMachine.h"
#include "startup/frmwait.h"

namespace trelv {
namespace {

TEST(WaitForm, StandsUntilItIsUnloadedWhateverTheUserPresses) {
  sim::SimMachine machine;
  machine.desktop().declareForm("frmwait", {});
  machine.desktop().onForm("frmwait", [](sim::SimFormWindow& window) {
    window.closeBox();
    EXPECT_TRUE(window.isOpen());
  });
  frmwait form;
  auto shown = machine.desktop().showModeless(form);
  ASSERT_NE(nullptr, shown);
  ASSERT_NE(nullptr, machine.desktop().activeForm());

  shown.reset();
  EXPECT_EQ(nullptr, machine.desktop().activeForm());
  EXPECT_EQ(std::vector<std::string>{"frmwait"}, machine.desktop().unloadedForms());
}

}  // namespace
}  // namespace trelv
