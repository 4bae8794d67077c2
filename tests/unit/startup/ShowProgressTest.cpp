#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/SimMachine.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvLibrary {
namespace {

const sim::SimFormControls kProgressControls{{"txtProgress", "lblProgress"}, {"prgProgress"}};

class ShowProgressOnForm : public ::testing::Test {
 protected:
  ShowProgressOnForm() { machine_.desktop().activate(window_); }

  void show(const std::string& text) { ShowProgress(machine_.desktop(), text); }
  void setBar(int min, int max, int value) {
    window_.setProgress("prgProgress", {.min = min, .max = max, .value = value});
  }
  machine::ProgressNumbers bar() const {
    machine::ProgressNumbers numbers;
    EXPECT_TRUE(window_.progress("prgProgress", numbers));
    return numbers;
  }
  /// Percentage after one more step that ends at value of max.
  std::string percentageAt(int value, int max) {
    setBar(1, max - 1, value - 1);
    show("riga");
    return window_.text("lblProgress");
  }

  sim::SimMachine machine_;
  sim::SimFormWindow window_{"frmProva", nullptr, &kProgressControls};
};

TEST_F(ShowProgressOnForm, FreshBarStartsWithOneOfThree) {
  setBar(0, 1, 0);
  show("prima riga");
  const std::vector<machine::ProgressNumbers> states = window_.progressOf("prgProgress");
  ASSERT_EQ(3U, states.size());
  EXPECT_EQ(1, states[1].min);
  EXPECT_EQ(2, states[1].max);
  EXPECT_EQ(0, states[1].value) << "0 lies below the minimum and is kept";
  EXPECT_EQ(1, states[2].min);
  EXPECT_EQ(3, states[2].max);
  EXPECT_EQ(1, states[2].value);
  EXPECT_EQ((std::vector<std::string>{"", "prima riga"}), window_.textsOf("txtProgress"));
  EXPECT_EQ("033%", window_.text("lblProgress"));
}

TEST_F(ShowProgressOnForm, UsedBarGoesOnFromItsNumbers) {
  setBar(3, 9, 4);
  show("riga");
  EXPECT_EQ(3, bar().min);
  EXPECT_EQ(10, bar().max);
  EXPECT_EQ(5, bar().value);
  EXPECT_EQ("050%", window_.text("lblProgress"));
  EXPECT_EQ((std::vector<std::string>{"riga"}), window_.textsOf("txtProgress"))
      << "only a fresh bar clears the line first";
}

TEST_F(ShowProgressOnForm, EachLineIsOneStep) {
  setBar(0, 1, 0);
  for (const char* text : {"a", "b", "c", "d"}) {
    show(text);
  }
  EXPECT_EQ(6, bar().max);
  EXPECT_EQ(4, bar().value);
  EXPECT_EQ("067%", window_.text("lblProgress"));
  EXPECT_EQ("d", window_.text("txtProgress"));
}

TEST_F(ShowProgressOnForm, PercentageRoundsHalvesAwayFromZero) {
  EXPECT_EQ("050%", percentageAt(5, 10));
  EXPECT_EQ("013%", percentageAt(1, 8));
  EXPECT_EQ("038%", percentageAt(3, 8));
  EXPECT_EQ("001%", percentageAt(1, 200));
  EXPECT_EQ("000%", percentageAt(1, 201));
  EXPECT_EQ("015%", percentageAt(29, 200));
}

TEST_F(ShowProgressOnForm, PercentageNeverReachesHundred) {
  EXPECT_EQ("099%", percentageAt(397, 399));
  EXPECT_EQ("099%", percentageAt(398, 400));
  EXPECT_EQ("099%", percentageAt(5000, 5002));
}

TEST_F(ShowProgressOnForm, ManyLinesNeverShowHundred) {
  setBar(0, 1, 0);
  for (int i = 0; i < 1000; ++i) {
    show("riga");
  }
  EXPECT_EQ("099%", window_.text("lblProgress"));
  EXPECT_EQ(1002, bar().max);
  EXPECT_EQ(1000, bar().value);
  for (const std::string& shown : window_.textsOf("lblProgress")) {
    ASSERT_NE("100%", shown);
  }
}

TEST_F(ShowProgressOnForm, PendingEventsRunOncePerLine) {
  show("a");
  show("b");
  EXPECT_EQ(2U, machine_.desktop().eventRounds());
}

TEST_F(ShowProgressOnForm, PendingEventsSeeTheWholeStep) {
  setBar(1, 9, 4);
  std::vector<std::string> seen;
  machine_.desktop().onEvents([&] {
    seen = {window_.text("txtProgress"), window_.text("lblProgress")};
  });
  show("riga");
  EXPECT_EQ((std::vector<std::string>{"riga", "050%"}), seen);
}

TEST_F(ShowProgressOnForm, EmptyLineIsAStepToo) {
  setBar(1, 9, 4);
  show("");
  EXPECT_EQ(10, bar().max);
  EXPECT_EQ(5, bar().value);
  EXPECT_EQ((std::vector<std::string>{""}), window_.textsOf("txtProgress"));
}

TEST_F(ShowProgressOnForm, RefusingBarEndsItWithoutAWord) {
  setBar(1, 5, 2);
  window_.refuseProgress();
  show("riga");
  EXPECT_TRUE(window_.textsOf("txtProgress").empty());
  EXPECT_TRUE(window_.textsOf("lblProgress").empty());
  EXPECT_EQ(0U, machine_.desktop().eventRounds());
}

TEST_F(ShowProgressOnForm, BarWhoseEndWouldBeZeroEndsIt) {
  setBar(0, -1, 0);
  show("riga");
  EXPECT_TRUE(window_.textsOf("lblProgress").empty());
}

TEST(ShowProgress, WithoutActiveFormDoesNothing) {
  sim::SimMachine machine;
  ShowProgress(machine.desktop(), "riga");
  EXPECT_EQ(0U, machine.desktop().eventRounds());
}

TEST(ShowProgress, OnAFormWithoutABarChangesNothing) {
  sim::SimMachine machine;
  const sim::SimFormControls controls{{"txtProgress", "lblProgress"}, {}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine.desktop().activate(window);
  ShowProgress(machine.desktop(), "riga");
  EXPECT_TRUE(window.textsOf("txtProgress").empty());
  EXPECT_TRUE(window.textsOf("lblProgress").empty());
  EXPECT_EQ(0U, machine.desktop().eventRounds());
}

TEST(ShowProgress, OnAFormWithoutALineEndsBeforeThePercentage) {
  sim::SimMachine machine;
  const sim::SimFormControls controls{{"lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  window.setProgress("prgProgress", {.min = 1, .max = 5, .value = 2});
  machine.desktop().activate(window);
  ShowProgress(machine.desktop(), "riga");
  machine::ProgressNumbers numbers;
  ASSERT_TRUE(window.progress("prgProgress", numbers));
  EXPECT_EQ(6, numbers.max);
  EXPECT_EQ(3, numbers.value);
  EXPECT_TRUE(window.textsOf("lblProgress").empty());
}

TEST(ShowProgress, OfAFreshBarWithoutALineEndsBeforeItsFirstStep) {
  sim::SimMachine machine;
  const sim::SimFormControls controls{{"lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  window.setProgress("prgProgress", {.min = 0, .max = 1, .value = 0});
  machine.desktop().activate(window);
  ShowProgress(machine.desktop(), "riga");
  machine::ProgressNumbers numbers;
  ASSERT_TRUE(window.progress("prgProgress", numbers));
  EXPECT_EQ(2, numbers.max);
  EXPECT_EQ(0, numbers.value);
  EXPECT_TRUE(window.textsOf("lblProgress").empty());
}

TEST(ShowProgress, OnAFormWithoutAPercentageStillShowsTheLine) {
  sim::SimMachine machine;
  const sim::SimFormControls controls{{"txtProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine.desktop().activate(window);
  ShowProgress(machine.desktop(), "riga");
  EXPECT_EQ("riga", window.text("txtProgress"));
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
