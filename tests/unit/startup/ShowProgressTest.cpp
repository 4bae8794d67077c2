#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/SimMachine.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvLibrary {
namespace {

using machine::ProgressNumbers;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const sim::SimFormControls kWhole{{"txtProgress", "lblProgress"}, {"prgProgress"}};
const sim::SimFormControls kWithoutBar{{"txtProgress", "lblProgress"}, {}};
const sim::SimFormControls kWithoutLine{{"lblProgress"}, {"prgProgress"}};
const sim::SimFormControls kWithoutPercentage{{"txtProgress"}, {"prgProgress"}};

/// The active form of a machine, which shows the progress.
class ProgressForm {
 public:
  explicit ProgressForm(const sim::SimFormControls& controls)
      : window_{"frmProva", nullptr, &controls} {
    machine_.desktop().activate(window_);
  }

  void show(const std::string& text) { ShowProgress(machine_.desktop(), text); }
  /// Sets the bar, then shows a line.
  void showAt(const ProgressNumbers& numbers, const std::string& text = "riga") {
    window_.setProgress("prgProgress", numbers);
    show(text);
  }
  /// The bar as "value of max from min".
  static std::string told(const ProgressNumbers& numbers) {
    return std::to_string(numbers.value) + " of " + std::to_string(numbers.max) + " from " +
           std::to_string(numbers.min);
  }
  std::string bar() const {
    ProgressNumbers numbers;
    return window_.progress("prgProgress", numbers) ? told(numbers) : "none";
  }
  std::string percentage() const { return window_.text("lblProgress"); }
  std::vector<std::string> lines() { return window_.textsOf("txtProgress"); }
  std::vector<std::string> percentages() { return window_.textsOf("lblProgress"); }
  std::size_t eventRounds() { return machine_.desktop().eventRounds(); }
  /// Percentage after one more step that ends at value of max.
  std::string percentageAt(int value, int max) {
    showAt({.min = 1, .max = max - 1, .value = value - 1});
    return percentage();
  }

  sim::SimMachine machine_;
  sim::SimFormWindow window_;
};

class ShowProgressOnForm : public testing::Test, public ProgressForm {
 protected:
  ShowProgressOnForm() : ProgressForm(kWhole) {}
};

TEST_F(ShowProgressOnForm, FreshBarStartsWithOneOfThree) {
  showAt({.min = 0, .max = 1, .value = 0}, "prima riga");
  const std::vector<ProgressNumbers> states = window_.progressOf("prgProgress");
  ASSERT_EQ(3U, states.size());
  EXPECT_EQ("0 of 2 from 1", told(states[1])) << "0 lies below the minimum and is kept";
  EXPECT_EQ("1 of 3 from 1", told(states[2]));
  EXPECT_THAT(lines(), ElementsAre("", "prima riga"));
  EXPECT_EQ("033%", percentage());
}

TEST_F(ShowProgressOnForm, UsedBarGoesOnFromItsNumbers) {
  showAt({.min = 3, .max = 9, .value = 4});
  EXPECT_EQ("5 of 10 from 3", bar());
  EXPECT_EQ("050%", percentage());
  EXPECT_THAT(lines(), ElementsAre("riga")) << "only a fresh bar clears the line first";
}

TEST_F(ShowProgressOnForm, EachLineIsOneStepAnEmptyOneToo) {
  showAt({.min = 0, .max = 1, .value = 0}, "a");
  for (const char* text : {"b", "c", ""}) {
    show(text);
  }
  EXPECT_EQ("4 of 6 from 1", bar());
  EXPECT_EQ("067%", percentage());
  EXPECT_THAT(lines(), ElementsAre("", "a", "b", "c", ""));
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
  showAt({.min = 0, .max = 1, .value = 0});
  for (int i = 1; i < 1000; ++i) {
    show("riga");
  }
  EXPECT_EQ("099%", percentage());
  EXPECT_EQ("1000 of 1002 from 1", bar());
  EXPECT_THAT(percentages(), Not(Contains("100%")));
}

TEST_F(ShowProgressOnForm, PendingEventsRunOncePerLineAndSeeTheWholeStep) {
  std::vector<std::string> seen;
  machine_.desktop().onEvents([&] { seen = {window_.text("txtProgress"), percentage()}; });
  showAt({.min = 1, .max = 9, .value = 4});
  EXPECT_THAT(seen, ElementsAre("riga", "050%"));
  show("b");
  EXPECT_EQ(2U, eventRounds());
}

TEST_F(ShowProgressOnForm, RefusingBarEndsItWithoutAWord) {
  window_.setProgress("prgProgress", {.min = 1, .max = 5, .value = 2});
  window_.refuseProgress();
  show("riga");
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_THAT(percentages(), IsEmpty());
  EXPECT_EQ(0U, eventRounds());
}

TEST_F(ShowProgressOnForm, BarThatComesToZeroIsAtItsBeginning) {
  showAt({.min = -3, .max = 4, .value = -1});
  EXPECT_EQ("0 of 5 from -3", bar());
  EXPECT_EQ("000%", percentage());
  showAt({.min = -3, .max = 4, .value = -2}, "altra");
  EXPECT_THAT(lines(), ElementsAre("riga")) << "below zero there is no percentage";
}

TEST_F(ShowProgressOnForm, BarWhoseEndWouldBeZeroEndsIt) {
  showAt({.min = 0, .max = -1, .value = 0});
  EXPECT_THAT(percentages(), IsEmpty());
}

TEST(ShowProgress, WithoutActiveFormDoesNothing) {
  sim::SimMachine machine;
  ShowProgress(machine.desktop(), "riga");
  EXPECT_EQ(0U, machine.desktop().eventRounds());
}

TEST(ShowProgress, EndsAtTheControlThatAFormDoesNotHave) {
  ProgressForm withoutBar(kWithoutBar);
  withoutBar.show("riga");
  EXPECT_THAT(withoutBar.lines(), IsEmpty());
  EXPECT_THAT(withoutBar.percentages(), IsEmpty());
  EXPECT_EQ(0U, withoutBar.eventRounds());

  ProgressForm withoutLine(kWithoutLine);
  withoutLine.showAt({.min = 1, .max = 5, .value = 2});
  EXPECT_EQ("3 of 6 from 1", withoutLine.bar());
  EXPECT_THAT(withoutLine.percentages(), IsEmpty());
  withoutLine.showAt({.min = 0, .max = 1, .value = 0});
  EXPECT_EQ("0 of 2 from 1", withoutLine.bar()) << "before the first step of a fresh bar";
  EXPECT_THAT(withoutLine.percentages(), IsEmpty());

  ProgressForm withoutPercentage(kWithoutPercentage);
  withoutPercentage.show("riga");
  EXPECT_THAT(withoutPercentage.lines(), Contains("riga"));
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
