#include <gtest/gtest.h>

#include <stdexcept>

#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;

using Texts = std::vector<std::string>;

// A form with a greeting, lists, pages and a button that closes it. It remembers what it hears.
class FakeForm : public machine::Form {
 public:
  std::string name() const override { return "frmProva"; }
  void loaded(machine::FormWindow& window) override {
    window.setText("lblTesto", "ciao");
    for (const char* const control : {"lstProdotti", "lstVersioni", "labTab"}) {
      window.addItem(control, "Contabilit\u00E0", 7);
      window.addItem(control, "Paghe", 9);
    }
  }
  void clicked(machine::FormWindow& window, const std::string& control) override {
    heard.push_back("click " + control);
    if (control == "cmdExit") {
      window.close();
    }
  }
  void selectionChanged(machine::FormWindow& window, const std::string& control) override {
    heard.push_back(control + " " + std::to_string(window.selected(control)));
  }
  void doubleClicked(machine::FormWindow& /*window*/, const std::string& control) override {
    heard.push_back("double " + control);
  }
  bool keyPressed(machine::FormWindow& /*window*/, const std::string& control,
                  machine::Key key) override {
    heard.push_back("key " + control);
    return key == machine::Key::F10 && control == "lstProdotti";
  }
  void closeRequested(machine::FormWindow& window) override {
    heard.emplace_back("close box");
    if (closes) {
      window.close();
    }
  }

  Texts heard;
  bool closes = true;
};

class SimDesktopTest : public testing::Test {
 protected:
  SimMachine machine_;
  SimDesktop& desktop_ = machine_.desktop();
  FakeForm form_;
};

TEST_F(SimDesktopTest, BoxesAreRememberedWithTheirAnswers) {
  desktop_.answer({BoxAnswer::Yes});

  EXPECT_EQ(desktop_.messageBox("T", "uno", BoxIcon::Question, BoxButtons::YesNo), BoxAnswer::Yes);
  EXPECT_EQ(desktop_.messageBox("T", "due", BoxIcon::Question, BoxButtons::YesNo), BoxAnswer::No);
  EXPECT_EQ(desktop_.messageBox("T", "tre", BoxIcon::Critical, BoxButtons::OkCancel),
            BoxAnswer::Ok);
  EXPECT_EQ(desktop_.boxTexts(), (Texts{"uno", "due", "tre"}));
  EXPECT_EQ(desktop_.boxes()[2].icon, BoxIcon::Critical);
  EXPECT_EQ(desktop_.boxes()[0].answer, BoxAnswer::Yes);
}

TEST_F(SimDesktopTest, WithoutADesktopNothingIsShown) {
  desktop_.setPresent(false);

  EXPECT_EQ(desktop_.messageBox("T", "t", BoxIcon::None, BoxButtons::Ok), BoxAnswer::None);
  EXPECT_FALSE(desktop_.showModal(form_));
  EXPECT_EQ(desktop_.showModeless(form_), nullptr);
  desktop_.answerInput({"C:\\"});
  EXPECT_EQ(desktop_.inputBox("T", "t"), std::nullopt);
  EXPECT_TRUE(machine_.boxes().empty());
  EXPECT_TRUE(desktop_.inputs().empty());
  EXPECT_TRUE(desktop_.shownForms().empty());
}

TEST_F(SimDesktopTest, AScriptPlaysTheUser) {
  std::string seen;
  desktop_.onForm("frmProva", [&](SimFormWindow& window) {
    seen = window.text("LBLTESTO");
    EXPECT_EQ(desktop_.activeForm(), &window);
    EXPECT_TRUE(window.click("cmdAltro"));
    window.setEnabled("cmdAltro", false);
    EXPECT_FALSE(window.click("cmdAltro"));
    window.click("cmdExit");
    EXPECT_FALSE(window.isOpen());
    EXPECT_EQ(desktop_.activeForm(), nullptr);
  });

  EXPECT_TRUE(desktop_.showModal(form_));
  EXPECT_EQ(seen, "ciao");
  EXPECT_EQ(form_.heard, (Texts{"click cmdAltro", "click cmdExit"}));
}

TEST_F(SimDesktopTest, AFormWithoutScriptIsClosedByItsCloseBox) {
  EXPECT_TRUE(desktop_.showModal(form_));
  EXPECT_EQ(form_.heard, (Texts{"close box"}));
  EXPECT_EQ(desktop_.forcedCloses(), 0U);

  form_.closes = false;
  EXPECT_TRUE(desktop_.showModal(form_));
  EXPECT_EQ(desktop_.forcedCloses(), 1U);
  EXPECT_EQ(desktop_.shownForms(), (Texts{"frmProva", "frmProva"}));
}

TEST_F(SimDesktopTest, ScriptsOfOneFormAreTakenInOrderThenTheStandingOne) {
  std::string order;
  desktop_.onForm("frmProva", [&](SimFormWindow&) { order += "1"; });
  desktop_.onForm("frmProva", [&](SimFormWindow&) { order += "2"; });
  desktop_.onEveryForm("frmProva", [&](SimFormWindow&) { order += "*"; });
  for (int i = 0; i < 4; ++i) {
    desktop_.showModal(form_);
  }
  EXPECT_EQ(order, "12**");
}

TEST_F(SimDesktopTest, DeclaredFormsHaveTheirControlsOnly) {
  desktop_.declareForm("frmProva", {{"cmdExit"}, {"pbrAvanzamento"}});
  desktop_.onForm("frmProva", [&](SimFormWindow& window) {
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
  EXPECT_TRUE(desktop_.showModal(form_));
}

TEST_F(SimDesktopTest, AnActivatedWindowShowsProgress) {
  SimFormWindow window("frmwait");
  desktop_.activate(window);
  machine::FormWindow* active = machine_.machine().desktop.activeForm();
  ASSERT_EQ(active, &window);
  active->setProgress("barra", {0, 2, 1});
  active->setProgress("barra", {0, 2, 2});
  active->setText("lblPercentuale", "050%");

  EXPECT_EQ(window.progressOf("Barra").size(), 2U);
  EXPECT_EQ(window.textsOf("lblPercentuale"), (Texts{"050%"}));
  window.refuseProgress();
  EXPECT_FALSE(active->setProgress("barra", {0, 2, 0}));
  desktop_.deactivate();
  EXPECT_EQ(machine_.machine().desktop.activeForm(), nullptr);
}

TEST_F(SimDesktopTest, ScriptedClicksRunWhenMessagesRun) {
  std::string order;
  desktop_.onEvents([&] { order += "next "; });
  desktop_.onEvents(3, [&] { order += "third "; });
  for (int i = 0; i < 4; ++i) {
    desktop_.processEvents();
    order += ".";
  }
  EXPECT_EQ(order, "next ..third ..");
  EXPECT_EQ(desktop_.eventRounds(), 4U);
}

// --- Lists, options, pages; what they do on Windows is held by the contract

class SimChoices : public SimDesktopTest {
 protected:
  /// Shows the form; the user does that and closes it.
  void show(SimDesktop::UserAction user) {
    desktop_.declareForm("frmProva",
                         {{"lstProdotti", "optClient", "optServer", "chkTutti", "picFoto"},
                          {},
                          {{"optClient", "optServer"}},
                          {"lstVersioni"},
                          {"labTab"}});
    desktop_.onForm("frmProva", std::move(user));
    EXPECT_TRUE(desktop_.showModal(form_));
    std::erase(form_.heard, "close box");
  }
};

TEST_F(SimChoices, ItemsAreListedAndFoundInAnyCase) {
  show([](SimFormWindow& window) {
    EXPECT_EQ(window.itemCount("LSTPRODOTTI"), 2);
    EXPECT_EQ(window.items("lstProdotti"), (Texts{"Contabilit\u00E0", "Paghe"}));
    EXPECT_EQ(window.itemData("lstProdotti", 1), 9);
    EXPECT_TRUE(window.selectedItems("lstVersioni").empty());
    window.setItemSelected("lstVersioni", 1, true);
    window.setItemSelected("lstVersioni", 0, true);
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{0, 1}));
  });
  EXPECT_TRUE(form_.heard.empty());
}

TEST_F(SimChoices, WhatAUserCannotDoIsAnErrorOfTheTest) {
  show([](SimFormWindow& window) {
    EXPECT_THROW(window.choose("lstAltro", 0), std::logic_error);
    EXPECT_THROW(window.choose("lstVersioni", 0), std::logic_error);
    EXPECT_THROW(window.toggle("lstProdotti", 0), std::logic_error);
    EXPECT_THROW(window.doubleClick("labTab", 0), std::logic_error);
    EXPECT_THROW(window.choose("lstProdotti", 2), std::out_of_range);
    EXPECT_THROW(window.toggle("lstVersioni", 2), std::out_of_range);
    EXPECT_THROW(window.doubleClick("lstProdotti", 2), std::out_of_range);
  });
  EXPECT_TRUE(form_.heard.empty());
}

TEST_F(SimChoices, NothingIsDoneInADisabledControlOrAClosedForm) {
  show([](SimFormWindow& window) {
    window.setItemEnabled("labTab", 1, false);
    EXPECT_FALSE(window.choose("labTab", 1));
    for (const char* const list : {"lstProdotti", "lstVersioni"}) {
      window.setEnabled(list, false);
      EXPECT_FALSE(window.doubleClick(list, 0));
      EXPECT_FALSE(window.press(list, machine::Key::F10));
    }
    EXPECT_FALSE(window.choose("lstProdotti", 0));
    EXPECT_FALSE(window.toggle("lstVersioni", 0));
    window.close();
    EXPECT_FALSE(window.check("chkTutti"));
  });
  EXPECT_TRUE(form_.heard.empty());
}

TEST_F(SimChoices, WhatAUserDidIsToldAndHeard) {
  show([](SimFormWindow& window) {
    EXPECT_TRUE(window.choose("lstProdotti", 1));
    EXPECT_TRUE(window.toggle("lstVersioni", 1));
    EXPECT_TRUE(window.choose("labTab", 1));
    EXPECT_TRUE(window.check("optServer"));
    EXPECT_TRUE(window.press("lstProdotti", machine::Key::F10));
    EXPECT_EQ(window.focus(), "lstProdotti");
    EXPECT_FALSE(window.press("optClient", machine::Key::F10));
    EXPECT_EQ(window.focus(), "optClient");
  });
  EXPECT_EQ(form_.heard, (Texts{"lstProdotti 1", "lstVersioni 1", "labTab 1", "optServer -1",
                                "key lstProdotti", "key optClient"}));
}

TEST_F(SimChoices, ADoubleClickLeavesItsItemSelected) {
  show([](SimFormWindow& window) {
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(window.doubleClick("lstVersioni", 0));
      EXPECT_TRUE(window.itemSelected("lstVersioni", 0)) << "what the first click took comes back";
    }
    EXPECT_TRUE(window.doubleClick("lstVersioni", -1));
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{0}));
  });
  EXPECT_EQ(form_.heard, (Texts{"lstVersioni 0", "double lstVersioni", "lstVersioni -1",
                                "lstVersioni 0", "double lstVersioni", "double lstVersioni"}));
}

TEST_F(SimChoices, APictureIsKeptByItsFileAndMustBeWhole) {
  machine_.putFile("C:\\a.jpg", "\xFF\xD8\xFF content \xFF\xD9");
  machine_.putFile("C:\\cut.bmp", std::string("BM\x20\0\0\0 1234567890", 17));
  show([](SimFormWindow& window) {
    EXPECT_TRUE(window.setPicture("picFoto", "C:\\a.jpg"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\cut.bmp"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\missing.jpg"));
    EXPECT_FALSE(window.setPicture("picAltro", "C:\\a.jpg"));
    EXPECT_EQ(window.picture("picFoto"), "C:\\a.jpg");
  });
  EXPECT_EQ(machine_.callLog().countOf("form.setPicture C:\\a.jpg"), 1U);
}

// --- Input boxes

TEST_F(SimDesktopTest, InputBoxesAreAnsweredInOrderAndCancelledAfterwards) {
  std::vector<std::string> shown;
  desktop_.answerInput({"S:\\Lumo", std::nullopt, ""});
  desktop_.onInput([&](const SimInput& input) { shown.push_back(input.prompt); });
  EXPECT_EQ(desktop_.inputBox("Titolo", "Uno"), "S:\\Lumo");
  EXPECT_EQ(desktop_.inputBox("Titolo", "Due"), std::nullopt);
  EXPECT_EQ(desktop_.inputBox("Titolo", "Tre"), "");
  EXPECT_EQ(desktop_.inputBox("Titolo", "Quattro"), std::nullopt);
  EXPECT_EQ(shown, (Texts{"Uno", "Due", "Tre", "Quattro"}));
  EXPECT_EQ(desktop_.inputs().at(0).answer, "S:\\Lumo");
  EXPECT_EQ(desktop_.inputs().at(0).title, "Titolo");
  EXPECT_EQ(machine_.callLog().countOf("desktop.inputBox Due"), 1U);
}

// --- Modeless forms and the pointer

TEST_F(SimDesktopTest, AModelessFormIsTheActiveOneUntilItIsDestroyed) {
  FakeForm below;
  FakeForm above;
  desktop_.onForm("frmProva", [&](SimFormWindow& lower) {
    desktop_.onForm("frmProva", [](SimFormWindow& upper) { upper.click("cmdAltro"); });
    const auto shown = desktop_.showModeless(above);
    ASSERT_NE(shown, nullptr);
    EXPECT_NE(desktop_.activeForm(), &lower);
    EXPECT_EQ(desktop_.activeForm()->text("lblTesto"), "ciao");
    EXPECT_TRUE(lower.click("cmdAltro"));
  });
  desktop_.onEveryForm("frmProva", [&](SimFormWindow&) {});
  EXPECT_TRUE(desktop_.showModal(below));

  EXPECT_EQ(above.heard, (Texts{"click cmdAltro"}));
  EXPECT_EQ(below.heard, (Texts{"click cmdAltro", "close box"}));
  EXPECT_EQ(desktop_.activeForm(), nullptr);
  EXPECT_EQ(desktop_.shownForms(), (Texts{"frmProva", "frmProva"}));
  EXPECT_EQ(desktop_.unloadedForms(), (Texts{"frmProva"}));
  EXPECT_EQ(machine_.callLog().countOf("desktop.showModeless frmProva"), 1U);
}

TEST_F(SimDesktopTest, ThePointersChangesAreRemembered) {
  desktop_.setHourglass(true);
  desktop_.setHourglass(true);
  EXPECT_TRUE(desktop_.hourglass());
  desktop_.setHourglass(false);
  EXPECT_FALSE(desktop_.hourglass());
  EXPECT_EQ(desktop_.hourglassChanges(), (std::vector<bool>{true, false}));
}

}  // namespace
}  // namespace trelv::sim
