#include <gtest/gtest.h>

#include <stdexcept>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;

// A form with a greeting, a counting button and a button that closes it.
class FakeForm : public machine::Form {
 public:
  std::string name() const override { return "frmProva"; }
  void loaded(machine::FormWindow& window) override { window.setText("lblTesto", "ciao"); }
  void clicked(machine::FormWindow& window, const std::string& control) override {
    if (control == "cmdExit") {
      window.close();
    } else {
      ++clicks;
    }
  }
  void closeRequested(machine::FormWindow& window) override {
    ++closeRequests;
    if (closes) {
      window.close();
    }
  }

  int clicks = 0;
  int closeRequests = 0;
  bool closes = true;
};

TEST(SimDesktop, BoxesAreRememberedWithTheirAnswers) {
  SimMachine machine;
  SimDesktop& desktop = machine.desktop();
  desktop.answer({BoxAnswer::Yes});

  EXPECT_EQ(desktop.messageBox("T", "uno", BoxIcon::Question, BoxButtons::YesNo), BoxAnswer::Yes);
  EXPECT_EQ(desktop.messageBox("T", "due", BoxIcon::Question, BoxButtons::YesNo), BoxAnswer::No);
  EXPECT_EQ(desktop.messageBox("T", "tre", BoxIcon::Critical, BoxButtons::OkCancel), BoxAnswer::Ok);
  EXPECT_EQ(desktop.boxTexts(), (std::vector<std::string>{"uno", "due", "tre"}));
  EXPECT_EQ(desktop.boxes()[2].icon, BoxIcon::Critical);
  EXPECT_EQ(desktop.boxes()[0].answer, BoxAnswer::Yes);
}

TEST(SimDesktop, WithoutADesktopNothingIsShown) {
  SimMachine machine;
  FakeForm form;
  machine.desktop().setPresent(false);

  EXPECT_EQ(machine.desktop().messageBox("T", "t", BoxIcon::None, BoxButtons::Ok), BoxAnswer::None);
  EXPECT_FALSE(machine.desktop().showModal(form));
  EXPECT_TRUE(machine.boxes().empty());
  EXPECT_TRUE(machine.desktop().shownForms().empty());
}

TEST(SimDesktop, AScriptPlaysTheUser) {
  SimMachine machine;
  FakeForm form;
  std::string seen;
  machine.desktop().onForm("frmProva", [&](SimFormWindow& window) {
    seen = window.text("LBLTESTO");
    EXPECT_EQ(machine.desktop().activeForm(), &window);
    EXPECT_TRUE(window.click("cmdAltro"));
    window.setEnabled("cmdAltro", false);
    EXPECT_FALSE(window.click("cmdAltro"));
    window.click("cmdExit");
    EXPECT_FALSE(window.isOpen());
    EXPECT_EQ(machine.desktop().activeForm(), nullptr);
  });

  EXPECT_TRUE(machine.desktop().showModal(form));
  EXPECT_EQ(seen, "ciao");
  EXPECT_EQ(form.clicks, 1);
  EXPECT_EQ(form.closeRequests, 0);
}

TEST(SimDesktop, AFormWithoutScriptIsClosedByItsCloseBox) {
  SimMachine machine;
  FakeForm form;
  EXPECT_TRUE(machine.desktop().showModal(form));
  EXPECT_EQ(form.closeRequests, 1);
  EXPECT_EQ(machine.desktop().forcedCloses(), 0U);

  form.closes = false;
  EXPECT_TRUE(machine.desktop().showModal(form));
  EXPECT_EQ(machine.desktop().forcedCloses(), 1U);
  EXPECT_EQ(machine.desktop().shownForms(), (std::vector<std::string>{"frmProva", "frmProva"}));
}

TEST(SimDesktop, ScriptsOfOneFormAreTakenInOrderThenTheStandingOne) {
  SimMachine machine;
  FakeForm form;
  std::string order;
  machine.desktop().onForm("frmProva", [&](SimFormWindow&) { order += "1"; });
  machine.desktop().onForm("frmProva", [&](SimFormWindow&) { order += "2"; });
  machine.desktop().onEveryForm("frmProva", [&](SimFormWindow&) { order += "*"; });
  for (int i = 0; i < 4; ++i) {
    machine.desktop().showModal(form);
  }
  EXPECT_EQ(order, "12**");
}

TEST(SimDesktop, DeclaredFormsHaveTheirControlsOnly) {
  SimMachine machine;
  FakeForm form;
  machine.desktop().declareForm("frmProva", {{"cmdExit"}, {"pbrAvanzamento"}});
  machine.desktop().onForm("frmProva", [&](SimFormWindow& window) {
    machine::ProgressNumbers numbers;
    EXPECT_TRUE(window.hasControl("CMDEXIT"));
    EXPECT_FALSE(window.hasControl("lblTesto"));
    EXPECT_EQ(window.text("lblTesto"), "");
    EXPECT_FALSE(window.progress("cmdExit", numbers));
    EXPECT_TRUE(window.setProgress("pbrAvanzamento", {0, 5, 3}));
    EXPECT_TRUE(window.progress("pbrAvanzamento", numbers));
    EXPECT_EQ(numbers.value, 3);
    EXPECT_THROW(window.click("cmdMancante"), std::logic_error);
  });
  EXPECT_TRUE(machine.desktop().showModal(form));
}

TEST(SimDesktop, AnActivatedWindowShowsProgress) {
  SimMachine machine;
  SimFormWindow window("frmwait");
  machine.desktop().activate(window);
  machine::FormWindow* active = machine.machine().desktop.activeForm();
  ASSERT_EQ(active, &window);
  active->setProgress("barra", {0, 2, 1});
  active->setProgress("barra", {0, 2, 2});
  active->setText("lblPercentuale", "050%");

  EXPECT_EQ(window.progressOf("Barra").size(), 2U);
  EXPECT_EQ(window.textsOf("lblPercentuale"), (std::vector<std::string>{"050%"}));
  window.refuseProgress();
  EXPECT_FALSE(active->setProgress("barra", {0, 2, 0}));
  machine.desktop().deactivate();
  EXPECT_EQ(machine.machine().desktop.activeForm(), nullptr);
}

TEST(SimDesktop, ScriptedClicksRunWhenMessagesRun) {
  SimMachine machine;
  std::string order;
  machine.desktop().onEvents([&] { order += "next "; });
  machine.desktop().onEvents(3, [&] { order += "third "; });
  for (int i = 0; i < 4; ++i) {
    machine.desktop().processEvents();
    order += ".";
  }
  EXPECT_EQ(order, "next ..third ..");
  EXPECT_EQ(machine.desktop().eventRounds(), 4U);
}

}  // namespace
}  // namespace trelv::sim
