#include <gtest/gtest.h>

#include "support/Matchers.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

using overlay::QuietWindow;
using overlay::Step;
using overlay::StepKind;

/// Notes what it hears; may close itself as it is filled.
class NotedForm : public machine::Form {
 public:
  explicit NotedForm(bool closesAtOnce = false) : closesAtOnce_(closesAtOnce) {}

  std::string name() const override { return "frmProva"; }
  void loaded(machine::FormWindow& window) override {
    heard.emplace_back("loaded");
    if (closesAtOnce_) {
      window.close();
    }
  }
  void clicked(machine::FormWindow& window, const std::string& control) override {
    heard.push_back("clicked " + control);
    window.close();
  }
  void closeRequested(machine::FormWindow& window) override {
    heard.emplace_back("closeRequested");
    window.close();
  }

  std::vector<std::string> heard;

 private:
  bool closesAtOnce_;
};

void clickExit(machine::Form& form, QuietWindow& window) { form.clicked(window, "btnExit"); }
void doNothing(machine::Form& /*form*/, QuietWindow& /*window*/) {}

/// What a form hears that is shown to this user.
std::vector<std::string> heardBy(NotedForm form, const overlay::FormUser& user) {
  sim::SimMachine machine;
  OverlaidMachine over(machine, {.formUser = user});
  EXPECT_TRUE(over.top().desktop.showModal(form));
  EXPECT_THAT(over.steps(), ElementsAre(Step{.kind = StepKind::Form, .subject = "frmProva"}));
  EXPECT_EQ(over.top().desktop.activeForm(), nullptr);
  return form.heard;
}

TEST(AnOverlaysForm, IsFilledAndClosedByWhoeverComesFirst) {
  EXPECT_THAT(heardBy(NotedForm(), {}), ElementsAre("loaded", "closeRequested"));
  EXPECT_THAT(heardBy(NotedForm(), doNothing), ElementsAre("loaded", "closeRequested"));
  EXPECT_THAT(heardBy(NotedForm(), clickExit), ElementsAre("loaded", "clicked btnExit"));
  EXPECT_THAT(heardBy(NotedForm(true), clickExit), ElementsAre("loaded"));
}

TEST(AnOverlaysForm, ThatWaitsForNobodyIsTheActiveOneWhileItIsShown) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  NotedForm form;
  auto shown = over.top().desktop.showModeless(form);
  EXPECT_THAT(form.heard, ElementsAre("loaded"));
  EXPECT_NE(over.top().desktop.activeForm(), nullptr);
  shown.reset();
  EXPECT_EQ(over.top().desktop.activeForm(), nullptr);
}

TEST(AQuietWindow, KeepsWhatTheFormPutsThere) {
  QuietWindow window;
  EXPECT_EQ(window.text("lblInfo"), "");
  window.setText("lblInfo", "testo");
  window.setTitle("titolo");
  EXPECT_EQ(window.text("LBLINFO"), "testo");
  EXPECT_EQ(window.text("lblAltro"), "");
  EXPECT_EQ(window.title(), "titolo");
  EXPECT_TRUE(window.isEnabled("btnExit"));
  window.setEnabled("btnExit", false);
  EXPECT_FALSE(window.isEnabled("btnexit"));
  window.setEnabled("btnExit", true);
  EXPECT_TRUE(window.isEnabled("btnExit"));
  window.setChecked("optServer", true);
  EXPECT_TRUE(window.checked("optServer"));
  EXPECT_FALSE(window.checked("optClient"));
  machine::ProgressNumbers numbers{7, 8, 9};
  EXPECT_TRUE(window.progress("prgBar", numbers));
  EXPECT_EQ(numbers.max, 1);
  EXPECT_TRUE(window.setProgress("prgBar", {1, 20, 3}));
  EXPECT_TRUE(window.progress("PRGBAR", numbers));
  EXPECT_EQ(numbers.max, 20);
}

TEST(AQuietWindow, HasListsLikeAnyOther) {
  QuietWindow window;
  EXPECT_EQ(window.itemCount("lst"), 0);
  EXPECT_EQ(window.selected("lst"), -1);
  window.addItem("lst", "uno", 11);
  window.addItem("LST", "due", 12);
  EXPECT_EQ(window.itemCount("lst"), 2);
  EXPECT_EQ(window.itemText("lst", 0), "uno");
  EXPECT_EQ(window.itemText("lst", 1), "due");
  EXPECT_EQ(window.itemData("lst", 0), 11);
  EXPECT_EQ(window.itemData("lst", 1), 12);
  EXPECT_EQ(window.selected("lst"), -1);
  window.select("lst", 1);
  EXPECT_EQ(window.selected("lst"), 1);
  EXPECT_TRUE(window.itemSelected("lst", 1));
  EXPECT_FALSE(window.itemSelected("lst", 0));
  window.setItemSelected("lst", 0, true);
  EXPECT_TRUE(window.itemSelected("lst", 1)) << "each of several choices stands for itself";
  EXPECT_EQ(window.selected("lst"), 0);
  window.select("lst", -1);
  EXPECT_EQ(window.selected("lst"), -1);
  window.select("lst", 0);
  window.clearItems("lst");
  EXPECT_EQ(window.itemCount("lst"), 0);
}

TEST(AQuietWindow, HasNothingBeyondItsItems) {
  QuietWindow window;
  window.addItem("lst", "uno", 11);
  window.select("lst", 0);
  for (const int index : {-1, 1, 2}) {
    EXPECT_EQ(window.itemText("lst", index), "") << index;
    EXPECT_EQ(window.itemData("lst", index), 0) << index;
    EXPECT_FALSE(window.itemSelected("lst", index)) << index;
    window.setItemSelected("lst", index, true);
  }
  for (const int index : {1, 2, -2}) {
    window.select("lst", index);
    EXPECT_EQ(window.selected("lst"), 0) << "an index that there is not changes nothing: " << index;
  }
}

}  // namespace
}  // namespace trelv::tests
