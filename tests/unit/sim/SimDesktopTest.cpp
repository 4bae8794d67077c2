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
  EXPECT_EQ(desktop_.boxTexts(), (std::vector<std::string>{"uno", "due", "tre"}));
  EXPECT_EQ(desktop_.boxes()[2].icon, BoxIcon::Critical);
  EXPECT_EQ(desktop_.boxes()[0].answer, BoxAnswer::Yes);
}

TEST_F(SimDesktopTest, WithoutADesktopNothingIsShown) {
  desktop_.setPresent(false);

  EXPECT_EQ(desktop_.messageBox("T", "t", BoxIcon::None, BoxButtons::Ok), BoxAnswer::None);
  EXPECT_FALSE(desktop_.showModal(form_));
  EXPECT_TRUE(machine_.boxes().empty());
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
  EXPECT_EQ(form_.clicks, 1);
  EXPECT_EQ(form_.closeRequests, 0);
}

TEST_F(SimDesktopTest, AFormWithoutScriptIsClosedByItsCloseBox) {
  EXPECT_TRUE(desktop_.showModal(form_));
  EXPECT_EQ(form_.closeRequests, 1);
  EXPECT_EQ(desktop_.forcedCloses(), 0U);

  form_.closes = false;
  EXPECT_TRUE(desktop_.showModal(form_));
  EXPECT_EQ(desktop_.forcedCloses(), 1U);
  EXPECT_EQ(desktop_.shownForms(), (std::vector<std::string>{"frmProva", "frmProva"}));
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
  EXPECT_EQ(window.textsOf("lblPercentuale"), (std::vector<std::string>{"050%"}));
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

// --- Lists, options, pictures

// Shows a form of two lists and two options; `user` does what it likes.
class ChoiceForm : public machine::Form {
 public:
  std::string name() const override { return "frmScelta"; }
  void loaded(machine::FormWindow& window) override {
    window.addItem("lstProdotti", "Contabilit\u00E0", 7);
    window.addItem("lstProdotti", "Paghe", 9);
  }
  void clicked(machine::FormWindow&, const std::string&) override {}
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
  void closeRequested(machine::FormWindow& window) override { window.close(); }

  std::vector<std::string> heard;
};

class SimChoices : public testing::Test {
 protected:
  void show(SimDesktop::UserAction user) {
    machine_.desktop().declareForm(
        "frmScelta", {{"lstProdotti", "optClient", "optServer", "chkTutti", "picFoto"},
                      {},
                      {{"optClient", "optServer"}},
                      {"lstVersioni"},
                      {"labTab"}});
    machine_.desktop().onForm("frmScelta", std::move(user));
    EXPECT_TRUE(machine_.desktop().showModal(form_));
  }

  SimMachine machine_;
  ChoiceForm form_;
};

TEST_F(SimChoices, ItemsKeepTheirTextsNumbersAndOrder) {
  show([](SimFormWindow& window) {
    EXPECT_EQ(window.itemCount("LSTPRODOTTI"), 2);
    EXPECT_EQ(window.items("lstProdotti"), (std::vector<std::string>{"Contabilit\u00E0", "Paghe"}));
    EXPECT_EQ(window.itemData("lstProdotti", 1), 9);
    EXPECT_EQ(window.selected("lstProdotti"), -1);
    EXPECT_EQ(window.itemText("lstProdotti", 2), "");
    EXPECT_EQ(window.itemData("lstProdotti", -1), 0);
    window.select("lstProdotti", 1);
    window.select("lstProdotti", 2);
    EXPECT_EQ(window.selected("lstProdotti"), 1);
    window.clearItems("lstProdotti");
    EXPECT_EQ(window.itemCount("lstProdotti"), 0);
    EXPECT_EQ(window.selected("lstProdotti"), -1);
  });
  EXPECT_TRUE(form_.heard.empty());
}

TEST_F(SimChoices, AControlThatTheFormDoesNotHaveHasNoItems) {
  show([](SimFormWindow& window) {
    window.addItem("lstAltro", "x");
    window.select("lstAltro", 0);
    window.setChecked("optAltro", true);
    EXPECT_EQ(window.itemCount("lstAltro"), 0);
    EXPECT_EQ(window.selected("lstAltro"), -1);
    EXPECT_FALSE(window.checked("optAltro"));
    EXPECT_THROW(window.choose("lstAltro", 0), std::logic_error);
    EXPECT_THROW(window.choose("lstProdotti", 2), std::out_of_range);
  });
}

TEST_F(SimChoices, TheFormHearsOfTheUsersChoicesOnly) {
  show([](SimFormWindow& window) {
    window.select("lstProdotti", 0);
    EXPECT_TRUE(window.choose("lstProdotti", 1));
    EXPECT_TRUE(window.choose("lstProdotti", 1));
    window.setEnabled("lstProdotti", false);
    EXPECT_FALSE(window.choose("lstProdotti", 0));
    window.close();
    EXPECT_FALSE(window.check("chkTutti"));
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{"lstProdotti 1"}));
}

TEST_F(SimChoices, AListOfSeveralChoicesIsToggledItemByItem) {
  show([](SimFormWindow& window) {
    for (const char* const item : {"a", "b", "c"}) {
      window.addItem("lstVersioni", item);
    }
    EXPECT_TRUE(window.selectedItems("lstVersioni").empty());
    EXPECT_TRUE(window.toggle("lstVersioni", 2));
    EXPECT_TRUE(window.toggle("lstVersioni", 1));
    EXPECT_EQ(window.selected("lstVersioni"), 1);
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{1, 2}));
    EXPECT_TRUE(window.toggle("lstVersioni", 2));
    window.setItemSelected("lstVersioni", 0, true);
    window.setItemSelected("lstVersioni", 3, true);
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{0, 1}));
    EXPECT_FALSE(window.itemSelected("lstVersioni", 2));
    EXPECT_FALSE(window.itemSelected("lstVersioni", 3));
    window.select("lstVersioni", 2);
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{2}));
    window.select("lstVersioni", -1);
    EXPECT_EQ(window.selected("lstVersioni"), -1);
    EXPECT_THROW(window.toggle("lstVersioni", 3), std::out_of_range);
    EXPECT_THROW(window.choose("lstVersioni", 0), std::logic_error);
    EXPECT_THROW(window.toggle("lstProdotti", 0), std::logic_error);
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(window.doubleClick("lstVersioni", 0));
      EXPECT_TRUE(window.itemSelected("lstVersioni", 0)) << "what the first click took comes back";
    }
    EXPECT_TRUE(window.doubleClick("lstVersioni", -1));
    EXPECT_EQ(window.selectedItems("lstVersioni"), (std::vector<int>{0}));
    window.setEnabled("lstVersioni", false);
    EXPECT_FALSE(window.toggle("lstVersioni", 0));
    EXPECT_FALSE(window.doubleClick("lstVersioni", 0));
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{
                             "lstVersioni 2", "lstVersioni 1", "lstVersioni 1", "lstVersioni 0",
                             "double lstVersioni", "lstVersioni -1", "lstVersioni 0",
                             "double lstVersioni", "double lstVersioni"}));
}

TEST_F(SimChoices, AListOfSingleChoiceHasOneItemSelectedAtMost) {
  show([](SimFormWindow& window) {
    window.setItemSelected("lstProdotti", 0, true);
    window.setItemSelected("lstProdotti", 1, true);
    EXPECT_EQ(window.selectedItems("lstProdotti"), (std::vector<int>{1}));
    window.setItemSelected("lstProdotti", 0, false);
    EXPECT_TRUE(window.itemSelected("lstProdotti", 1));
    window.setItemSelected("lstProdotti", 1, false);
    EXPECT_EQ(window.selected("lstProdotti"), -1);
  });
  EXPECT_TRUE(form_.heard.empty());
}

TEST_F(SimChoices, APageThatIsDisabledCannotBeChosen) {
  show([](SimFormWindow& window) {
    EXPECT_EQ(window.selected("labTab"), -1);
    for (const char* const page : {"Uno", "Due", "Tre"}) {
      window.addItem("labTab", page);
    }
    EXPECT_EQ(window.selected("labTab"), 0);
    window.setItemEnabled("labTab", 1, false);
    EXPECT_FALSE(window.choose("labTab", 1));
    EXPECT_TRUE(window.choose("labTab", 2));
    EXPECT_EQ(window.selected("labTab"), 2);
    window.select("labTab", -1);
    EXPECT_EQ(window.selected("labTab"), 2);
    window.select("labTab", 1);
    EXPECT_EQ(window.selected("labTab"), 1);
    window.setItemEnabled("lstProdotti", 0, false);
    EXPECT_TRUE(window.choose("lstProdotti", 0)) << "items of lists are always enabled";
    EXPECT_THROW(window.doubleClick("labTab", 0), std::logic_error);
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{"labTab 2", "lstProdotti 0"}));
}

TEST_F(SimChoices, ADoubleClickPicksTheItemFirst) {
  show([](SimFormWindow& window) {
    EXPECT_TRUE(window.doubleClick("lstProdotti", -1));
    EXPECT_TRUE(window.doubleClick("lstProdotti", 1));
    EXPECT_TRUE(window.doubleClick("lstProdotti", 1));
    EXPECT_THROW(window.doubleClick("lstProdotti", 2), std::out_of_range);
    window.setEnabled("lstProdotti", false);
    EXPECT_FALSE(window.doubleClick("lstProdotti", 0));
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{"double lstProdotti", "lstProdotti 1",
                                                   "double lstProdotti", "double lstProdotti"}));
}

TEST_F(SimChoices, AKeyIsHeardInTheControlThatHasTheFocus) {
  show([](SimFormWindow& window) {
    EXPECT_TRUE(window.press("lstProdotti", machine::Key::F10));
    EXPECT_EQ(window.focus(), "lstProdotti");
    EXPECT_FALSE(window.press("optClient", machine::Key::F10));
    window.setEnabled("lstProdotti", false);
    EXPECT_FALSE(window.press("lstProdotti", machine::Key::F10));
    EXPECT_EQ(window.focus(), "optClient");
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{"key lstProdotti", "key optClient"}));
}

TEST_F(SimChoices, OptionsOfAGroupExcludeEachOther) {
  show([](SimFormWindow& window) {
    window.setChecked("optClient", true);
    EXPECT_TRUE(window.check("chkTutti"));
    EXPECT_TRUE(window.check("optServer"));
    EXPECT_TRUE(window.check("optServer"));
    EXPECT_FALSE(window.checked("optClient"));
    EXPECT_TRUE(window.checked("optServer"));
    EXPECT_TRUE(window.checked("chkTutti"));
    EXPECT_TRUE(window.check("chkTutti", false));
    EXPECT_FALSE(window.checked("chkTutti"));
  });
  EXPECT_EQ(form_.heard, (std::vector<std::string>{"chkTutti -1", "optServer -1", "chkTutti -1"}));
}

TEST_F(SimChoices, APictureMustBeWhole) {
  machine_.putFile("C:\\a.jpg", "\xFF\xD8\xFF content \xFF\xD9");
  machine_.putFile("C:\\cut.jpg", "\xFF\xD8\xFF content");
  machine_.putFile("C:\\a.bmp", std::string("BM\x10\0\0\0 1234567890", 17));
  machine_.putFile("C:\\cut.bmp", std::string("BM\x20\0\0\0 1234567890", 17));
  machine_.putFile("C:\\a.txt", "a text");
  show([](SimFormWindow& window) {
    EXPECT_TRUE(window.setPicture("picFoto", "C:\\a.jpg"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\cut.jpg"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\cut.bmp"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\a.txt"));
    EXPECT_FALSE(window.setPicture("picFoto", "C:\\missing.jpg"));
    EXPECT_FALSE(window.setPicture("picAltro", "C:\\a.jpg"));
    EXPECT_EQ(window.picture("picFoto"), "C:\\a.jpg");
    EXPECT_TRUE(window.setPicture("picFoto", "C:\\a.bmp"));
    EXPECT_EQ(window.picture("picFoto"), "C:\\a.bmp");
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
  EXPECT_EQ(shown, (std::vector<std::string>{"Uno", "Due", "Tre", "Quattro"}));
  EXPECT_EQ(desktop_.inputs().at(0).answer, "S:\\Lumo");
  EXPECT_EQ(desktop_.inputs().at(0).title, "Titolo");
  EXPECT_EQ(machine_.callLog().countOf("desktop.inputBox Due"), 1U);
  desktop_.setPresent(false);
  desktop_.answerInput({"C:\\"});
  EXPECT_EQ(desktop_.inputBox("Titolo", "Cinque"), std::nullopt);
  EXPECT_EQ(desktop_.inputs().size(), 4U);
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

  EXPECT_EQ(above.clicks, 1);
  EXPECT_EQ(below.clicks, 1);
  EXPECT_EQ(above.closeRequests, 0);
  EXPECT_EQ(desktop_.activeForm(), nullptr);
  EXPECT_EQ(desktop_.shownForms(), (std::vector<std::string>{"frmProva", "frmProva"}));
  EXPECT_EQ(desktop_.unloadedForms(), (std::vector<std::string>{"frmProva"}));
  EXPECT_EQ(machine_.callLog().countOf("desktop.showModeless frmProva"), 1U);
}

TEST_F(SimDesktopTest, WithoutADesktopThereIsNoModelessForm) {
  desktop_.setPresent(false);
  EXPECT_EQ(desktop_.showModeless(form_), nullptr);
  EXPECT_TRUE(desktop_.shownForms().empty());
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
