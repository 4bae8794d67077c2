#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "contract/Contract.h"
#include "contract/TestPictures.h"

namespace trelv::contract {
namespace {

using machine::FormWindow;
using Names = std::vector<std::string>;
using Items = std::vector<std::pair<std::string, int>>;
using Indexes = std::vector<int>;

/// The stage's form: makes its controls, notes what it hears and does what the test says.
class StageForm : public machine::Form {
 public:
  explicit StageForm(ContractMachine& world) : world_(world) {}

  std::string name() const override { return stage::kForm; }
  void loaded(FormWindow& window) override {
    world_.makeControls(window);
    onLoaded(window);
  }
  void clicked(FormWindow& window, const std::string& control) override {
    heard.push_back("clicked " + control);
    onClicked(window, control);
  }
  void selectionChanged(FormWindow& /*window*/, const std::string& control) override {
    heard.push_back("changed " + control);
  }
  void doubleClicked(FormWindow& /*window*/, const std::string& control) override {
    heard.push_back("double-clicked " + control);
  }
  bool keyPressed(FormWindow& /*window*/, const std::string& control, machine::Key) override {
    heard.push_back("F10 in " + control);
    return true;
  }
  void closeRequested(FormWindow& window) override { window.close(); }

  std::function<void(FormWindow&)> onLoaded = [](FormWindow&) {};
  std::function<void(FormWindow&, const std::string&)> onClicked = [](FormWindow&,
                                                                      const std::string&) {};
  Names heard;

 private:
  ContractMachine& world_;
};

class DesktopContract : public Contract {
 protected:
  machine::Desktop& desktop() { return machine().desktop; }

  /// Shows the form, lets the user do that, and closes it.
  void play(std::function<void(FormWindow&)> user) {
    bool played = false;
    world().playUser([&played, user](FormWindow& window) {
      played = true;
      user(window);
      window.close();
    });
    EXPECT_TRUE(desktop().showModal(form_));
    EXPECT_TRUE(played);
  }

  /// Shows a form that does not keep the others from being worked in.
  std::unique_ptr<machine::ShownForm> showModeless(machine::Form& form) {
    auto shown = desktop().showModeless(form);
    EXPECT_NE(shown, nullptr);
    return shown;
  }

  /// Texts and numbers of a list's items.
  static Items items(FormWindow& window, const std::string& list) {
    Items found;
    for (int i = 0; i < window.itemCount(list); ++i) {
      found.emplace_back(window.itemText(list, i), window.itemData(list, i));
    }
    return found;
  }
  /// There is no item: it has no text and the number 0.
  static void expectNoItem(FormWindow& window, const std::string& list, int index) {
    EXPECT_EQ(window.itemText(list, index), "") << index;
    EXPECT_EQ(window.itemData(list, index), 0) << index;
    EXPECT_FALSE(window.itemSelected(list, index)) << index;
  }
  /// Indexes of the selected items.
  static Indexes chosen(FormWindow& window, const std::string& list) {
    Indexes found;
    for (int i = 0; i < window.itemCount(list); ++i) {
      if (window.itemSelected(list, i)) found.push_back(i);
    }
    return found;
  }

  /// What the form has heard since it was asked last.
  Names heard() { return std::exchange(form_.heard, {}); }

  static std::string clicked(const char* control) { return std::string("clicked ") + control; }
  static std::string changed(const char* control) { return std::string("changed ") + control; }
  static std::string doubled(const char* control) {
    return std::string("double-clicked ") + control;
  }

  StageForm form_{world()};
};

/// The lists of both kinds behave alike.
class ListContract : public DesktopContract, public testing::WithParamInterface<const char*> {
 protected:
  void fill(FormWindow& window) {
    window.addItem(list_, "Paghe", 7);
    window.addItem(list_, "Contabilit\u00E0", -9);
    window.addItem(list_, "Paghe");
  }
  /// Shows the form with these items in the list.
  void playFilled(std::function<void(FormWindow&)> user) {
    play([&](FormWindow& window) {
      fill(window);
      user(window);
    });
  }

  const std::string list_ = GetParam();
  const std::string changed_ = changed(GetParam());
};

INSTANTIATE_TEST_SUITE_P(BothKinds, ListContract, testing::Values(stage::kList, stage::kCombo));

// --- Lists

TEST_P(ListContract, StartsEmptyWithoutSelection) {
  play([&](FormWindow& window) {
    EXPECT_TRUE(window.hasControl(list_));
    EXPECT_EQ(window.itemCount(list_), 0);
    EXPECT_EQ(window.selected(list_), -1);
  });
}

TEST_P(ListContract, ItemsStandInTheOrderInWhichTheyWereAddedAndNoOthersAreThere) {
  playFilled([&](FormWindow& window) {
    EXPECT_EQ(items(window, list_), (Items{{"Paghe", 7}, {"Contabilit\u00E0", -9}, {"Paghe", 0}}));
    for (const int index : {-2, -1, 3, 1000}) expectNoItem(window, list_, index);
  });
}

TEST_P(ListContract, TheProgramSelectsAndTakesTheSelectionAway) {
  playFilled([&](FormWindow& window) {
    EXPECT_EQ(window.selected(list_), -1);
    window.select(list_, 1);
    EXPECT_EQ(window.selected(list_), 1);
    window.select(list_, 3);
    EXPECT_EQ(window.selected(list_), 1) << "there is no such item";
    window.select(list_, -1);
    EXPECT_EQ(window.selected(list_), -1);
  });
  EXPECT_EQ(form_.heard, Names{});
}

TEST_P(ListContract, ClearingTakesItemsAndSelection) {
  playFilled([&](FormWindow& window) {
    window.select(list_, 1);
    window.clearItems(list_);
    EXPECT_EQ(window.itemCount(list_), 0);
    EXPECT_EQ(window.selected(list_), -1);
    window.addItem(list_, "nuovo", 1);
    EXPECT_EQ(items(window, list_), (Items{{"nuovo", 1}}));
    EXPECT_EQ(window.selected(list_), -1);
  });
  EXPECT_EQ(form_.heard, Names{});
}

TEST_P(ListContract, TheFormHearsOfAnotherItemThatTheUserChose) {
  playFilled([&](FormWindow& window) {
    world().choose(window, list_, 1);
    EXPECT_EQ(window.selected(list_), 1);
    EXPECT_EQ(form_.heard, Names{changed_});
    world().choose(window, list_, 1);
    EXPECT_EQ(form_.heard, Names{changed_}) << "the same item again";
    window.select(list_, 0);
    world().choose(window, list_, 1);
  });
  EXPECT_EQ(form_.heard, (Names{changed_, changed_}));
}

TEST_P(ListContract, AfterClearingTheFirstChoiceIsANewOne) {
  playFilled([&](FormWindow& window) {
    window.select(list_, 0);
    window.clearItems(list_);
    fill(window);
    world().choose(window, list_, 0);
  });
  EXPECT_EQ(form_.heard, Names{changed_});
}

// --- Lists of several choices

class MultiListContract : public DesktopContract {
 protected:
  /// Shows the form with three items in the list.
  void playFilled(std::function<void(FormWindow&)> user) {
    play([&](FormWindow& window) {
      for (const char* const item : {"Paghe", "Contabilit\u00E0", "Agenda"}) {
        window.addItem(list_, item);
      }
      user(window);
    });
  }
  Indexes chosen(FormWindow& window) { return DesktopContract::chosen(window, list_); }

  const std::string list_ = stage::kMultiList;
  const std::string changed_ = changed(stage::kMultiList);
};

TEST_F(MultiListContract, EachClickSelectsOrDeselectsOneItemAndTheFormHears) {
  playFilled([&](FormWindow& window) {
    EXPECT_EQ(chosen(window), Indexes{});
    world().toggle(window, list_, 2);
    EXPECT_EQ(chosen(window), Indexes{2});
    world().toggle(window, list_, 0);
    EXPECT_EQ(chosen(window), (Indexes{0, 2}));
    EXPECT_EQ(window.selected(list_), 0) << "the first of the selected";
    world().toggle(window, list_, 2);
    EXPECT_EQ(chosen(window), Indexes{0});
  });
  EXPECT_EQ(form_.heard, (Names{changed_, changed_, changed_}));
}

TEST_F(MultiListContract, ADoubleClickLeavesItsItemSelectedAndIsHeardAfterIt) {
  const std::string twice = doubled(stage::kMultiList);
  play([&](FormWindow& window) {
    window.addItem(list_, "Paghe");
    world().doubleClick(window, list_, -1);
    EXPECT_EQ(chosen(window), Indexes{}) << "below the items";
    world().doubleClick(window, list_, 0);
    EXPECT_EQ(chosen(window), Indexes{0});
    EXPECT_EQ(heard(), (Names{twice, changed_, twice}));
    world().doubleClick(window, list_, 0);
    EXPECT_EQ(chosen(window), Indexes{0}) << "its first click deselects";
    EXPECT_EQ(form_.heard, (Names{changed_, changed_, twice}));
    world().doubleClick(window, list_, -1);
    EXPECT_EQ(chosen(window), Indexes{0}) << "below the items";
  });
}

TEST_F(MultiListContract, TheProgramSelectsEachItemByItselfAndAClickDeselectsIt) {
  playFilled([&](FormWindow& window) {
    window.setItemSelected(list_, 2, true);
    window.setItemSelected(list_, 1, true);
    window.setItemSelected(list_, 1, true);
    EXPECT_EQ(chosen(window), (Indexes{1, 2}));
    window.setItemSelected(list_, 2, false);
    window.setItemSelected(list_, 3, true);
    window.setItemSelected(list_, -1, true);
    EXPECT_EQ(chosen(window), Indexes{1});
    EXPECT_EQ(form_.heard, Names{});
    world().toggle(window, list_, 1);
    EXPECT_EQ(chosen(window), Indexes{}) << "a click deselects it";
  });
  EXPECT_EQ(form_.heard, Names{changed_});
}

TEST_F(MultiListContract, SelectingOneTakesTheSelectionFromAllOthers) {
  playFilled([&](FormWindow& window) {
    window.setItemSelected(list_, 0, true);
    window.setItemSelected(list_, 1, true);
    window.select(list_, 2);
    EXPECT_EQ(chosen(window), Indexes{2});
    window.select(list_, 3);
    EXPECT_EQ(chosen(window), Indexes{2}) << "there is no such item";
    window.select(list_, -1);
    EXPECT_EQ(chosen(window), Indexes{});
    EXPECT_EQ(window.selected(list_), -1);
  });
  EXPECT_EQ(form_.heard, Names{});
}

TEST_F(MultiListContract, ItemsStandInTheirOrderWithTheirNumbersAndClearingTakesAll) {
  play([&](FormWindow& window) {
    window.addItem(list_, "Paghe", 7);
    window.addItem(list_, "Agenda", -9);
    window.setItemSelected(list_, 1, true);
    EXPECT_EQ(items(window, list_), (Items{{"Paghe", 7}, {"Agenda", -9}}));
    for (const int index : {-1, 2}) expectNoItem(window, list_, index);
    window.clearItems(list_);
    EXPECT_EQ(window.itemCount(list_), 0);
    window.addItem(list_, "nuovo");
    EXPECT_EQ(chosen(window), Indexes{});
  });
}

TEST_P(ListContract, AnItemOfALaterChoiceIsTheOneThatIsSelected) {
  playFilled([&](FormWindow& window) {
    window.setItemSelected(list_, 0, true);
    window.setItemSelected(list_, 2, true);
    EXPECT_EQ(chosen(window, list_), Indexes{2});
    window.setItemSelected(list_, 0, false);
    window.setItemSelected(list_, 3, true);
    EXPECT_EQ(window.selected(list_), 2);
    window.setItemSelected(list_, 2, false);
    EXPECT_EQ(window.selected(list_), -1);
  });
  EXPECT_EQ(form_.heard, Names{});
}

// --- Double clicks

TEST_F(DesktopContract, ADoubleClickPicksTheItemAndIsHeardAfterIt) {
  const char* const list = stage::kList;
  play([&](FormWindow& window) {
    window.addItem(list, "Paghe");
    window.addItem(list, "Agenda");
    world().doubleClick(window, list, 1);
    EXPECT_EQ(window.selected(list), 1);
    world().doubleClick(window, list, 1);
  });
  EXPECT_EQ(form_.heard, (Names{changed(list), doubled(list), doubled(list)}));
}

TEST_F(DesktopContract, ADoubleClickBelowTheItemsPicksNothingAndIsHeard) {
  const char* const list = stage::kList;
  play([&](FormWindow& window) {
    window.addItem(list, "Paghe");
    world().doubleClick(window, list, -1);
    EXPECT_EQ(window.selected(list), -1);
  });
  EXPECT_EQ(form_.heard, Names{doubled(list)});
}

// --- Pages

class TabContract : public DesktopContract {
 protected:
  void playFilled(std::function<void(FormWindow&)> user) {
    play([&](FormWindow& window) {
      for (const char* const page : {"Paghe & C.", "Contabilit\u00E0", "Agenda", "Altro"}) {
        window.addItem(tabs_, page, 10 + window.itemCount(tabs_));
      }
      user(window);
    });
  }

  const std::string tabs_ = stage::kTabs;
  const std::string changed_ = changed(stage::kTabs);
};

TEST_F(TabContract, TheFirstPageIsSelectedAsSoonAsItIsThere) {
  play([&](FormWindow& window) {
    EXPECT_EQ(window.selected(tabs_), -1);
    EXPECT_EQ(window.itemCount(tabs_), 0);
    window.addItem(tabs_, "Paghe");
    EXPECT_EQ(window.selected(tabs_), 0);
    window.addItem(tabs_, "Agenda");
    EXPECT_EQ(window.selected(tabs_), 0);
    world().choose(window, tabs_, 0);
  });
  EXPECT_EQ(form_.heard, Names{}) << "it was selected before";
}

TEST_F(TabContract, PagesKeepTheirTextsAndNumbers) {
  playFilled([&](FormWindow& window) {
    EXPECT_EQ(items(window, tabs_),
              (Items{{"Paghe & C.", 10}, {"Contabilit\u00E0", 11}, {"Agenda", 12}, {"Altro", 13}}));
    for (const int index : {-1, 4}) expectNoItem(window, tabs_, index);
    window.clearItems(tabs_);
    EXPECT_EQ(window.itemCount(tabs_), 0);
    EXPECT_EQ(window.selected(tabs_), -1);
  });
}

TEST_F(TabContract, OnePageIsAlwaysSelected) {
  playFilled([&](FormWindow& window) {
    window.select(tabs_, 2);
    EXPECT_EQ(chosen(window, tabs_), Indexes{2});
    for (const int index : {-1, 4}) {
      window.select(tabs_, index);
      EXPECT_EQ(window.selected(tabs_), 2);
    }
    window.setItemSelected(tabs_, 2, false);
    EXPECT_EQ(window.selected(tabs_), 2);
    window.setItemSelected(tabs_, 3, true);
    EXPECT_EQ(window.selected(tabs_), 3);
  });
  EXPECT_EQ(form_.heard, Names{});
}

TEST_F(TabContract, TheFormHearsOfAnotherPageThatTheUserChose) {
  playFilled([&](FormWindow& window) {
    world().choose(window, tabs_, 2);
    EXPECT_EQ(window.selected(tabs_), 2);
    world().choose(window, tabs_, 2);
    window.select(tabs_, 1);
    world().choose(window, tabs_, 2);
  });
  EXPECT_EQ(form_.heard, (Names{changed_, changed_}));
}

TEST_F(TabContract, ADisabledPageCannotBeChosenUntilItIsEnabledAgain) {
  playFilled([&](FormWindow& window) {
    window.setItemEnabled(tabs_, 2, false);
    window.setItemEnabled(tabs_, 4, false);
    world().choose(window, tabs_, 2);
    EXPECT_EQ(window.selected(tabs_), 0);
    EXPECT_EQ(form_.heard, Names{});
    world().choose(window, tabs_, 3);
    EXPECT_EQ(window.selected(tabs_), 3);
    window.setItemEnabled(tabs_, 2, true);
    world().choose(window, tabs_, 2);
    EXPECT_EQ(window.selected(tabs_), 2);
  });
  EXPECT_EQ(form_.heard, (Names{changed_, changed_}));
}

TEST_F(TabContract, TheProgramSelectsADisabledPageToo) {
  playFilled([&](FormWindow& window) {
    window.setItemEnabled(tabs_, 1, false);
    window.select(tabs_, 1);
    EXPECT_EQ(window.selected(tabs_), 1);
    world().choose(window, tabs_, 0);
    EXPECT_EQ(window.selected(tabs_), 0);
  });
  EXPECT_EQ(form_.heard, Names{changed_});
}

TEST_F(TabContract, AfterClearingThePagesAreEnabled) {
  playFilled([&](FormWindow& window) {
    window.setItemEnabled(tabs_, 1, false);
    window.clearItems(tabs_);
    window.addItem(tabs_, "a");
    window.addItem(tabs_, "b");
    world().choose(window, tabs_, 1);
    EXPECT_EQ(window.selected(tabs_), 1);
  });
}

TEST_P(ListContract, ItemsOfListsAreAlwaysEnabled) {
  playFilled([&](FormWindow& window) {
    window.setItemEnabled(list_, 1, false);
    world().choose(window, list_, 1);
    EXPECT_EQ(window.selected(list_), 1);
  });
}

// --- Keys

TEST_F(DesktopContract, F10IsHeardInTheControlThatHasTheFocus) {
  play([&](FormWindow& window) {
    world().pressF10(window, stage::kList);
    world().pressF10(window, stage::kButton);
  });
  const std::string heard = "F10 in ";
  EXPECT_EQ(form_.heard, (Names{heard + stage::kList, heard + stage::kButton}));
}

// --- Input boxes

TEST_F(DesktopContract, AnInputBoxAnswersTheTextThatStandsInItAtOk) {
  world().answerInput("S:\\Contabilit\u00E0\\ ");
  EXPECT_EQ(desktop().inputBox("Setup 1.0", "Indicare il path & basta"), "S:\\Contabilit\u00E0\\ ");
  EXPECT_EQ(world().inputTitle(), "Setup 1.0");
  EXPECT_EQ(world().inputPrompt(), "Indicare il path & basta");
}

TEST_F(DesktopContract, AnEmptyInputIsAnAnswerAndCancelIsNone) {
  for (const std::optional<std::string>& answer : {std::optional<std::string>(""), {}}) {
    world().answerInput(answer);
    EXPECT_EQ(desktop().inputBox("Titolo", "Prompt"), answer);
  }
}

TEST_F(DesktopContract, AnInputBoxStandsOverAFormWhichIsTheActiveOneAgainAfterIt) {
  play([&](FormWindow& window) {
    world().answerInput("testo");
    EXPECT_EQ(desktop().inputBox("Titolo", "Prompt"), "testo");
    EXPECT_EQ(desktop().activeForm(), &window);
  });
  EXPECT_EQ(form_.heard, Names{});
}

// --- Options and check boxes

TEST_F(DesktopContract, OptionsOfAGroupExcludeEachOther) {
  play([&](FormWindow& window) {
    EXPECT_FALSE(window.checked(stage::kFirstOption));
    window.setChecked(stage::kFirstOption, true);
    EXPECT_TRUE(window.checked(stage::kFirstOption));
    window.setChecked(stage::kSecondOption, true);
    EXPECT_FALSE(window.checked(stage::kFirstOption));
    EXPECT_TRUE(window.checked(stage::kSecondOption));
  });
  EXPECT_EQ(form_.heard, Names{});
}

TEST_F(DesktopContract, TheFormHearsOnceOfEachOptionThatTheUserPicks) {
  play([&](FormWindow& window) {
    window.setChecked(stage::kFirstOption, true);
    world().check(window, stage::kSecondOption);
    EXPECT_FALSE(window.checked(stage::kFirstOption));
    EXPECT_TRUE(window.checked(stage::kSecondOption));
    world().check(window, stage::kSecondOption);
    world().check(window, stage::kFirstOption);
  });
  EXPECT_EQ(form_.heard, (Names{changed(stage::kSecondOption), changed(stage::kFirstOption)}));
}

TEST_F(DesktopContract, ACheckBoxIsCheckedAndUnchecked) {
  play([&](FormWindow& window) {
    window.setChecked(stage::kFirstOption, true);
    world().check(window, stage::kCheckBox);
    EXPECT_TRUE(window.checked(stage::kCheckBox));
    world().check(window, stage::kCheckBox);
    EXPECT_FALSE(window.checked(stage::kCheckBox));
    window.setChecked(stage::kCheckBox, true);
    EXPECT_TRUE(window.checked(stage::kCheckBox));
    window.setChecked(stage::kCheckBox, false);
    EXPECT_FALSE(window.checked(stage::kCheckBox));
    EXPECT_TRUE(window.checked(stage::kFirstOption)) << "it is of no group";
  });
  EXPECT_EQ(form_.heard, Names(2, changed(stage::kCheckBox)));
}

TEST_F(DesktopContract, AControlThatTheFormDoesNotHaveIsAnsweredWithNothing) {
  play([&](FormWindow& window) {
    window.addItem(stage::kMissing, "x", 1);
    window.select(stage::kMissing, 0);
    window.clearItems(stage::kMissing);
    window.setChecked(stage::kMissing, true);
    EXPECT_EQ(window.itemCount(stage::kMissing), 0);
    expectNoItem(window, stage::kMissing, 0);
    EXPECT_EQ(window.selected(stage::kMissing), -1);
    EXPECT_FALSE(window.checked(stage::kMissing));
    EXPECT_FALSE(window.setPicture(stage::kMissing, putFile("a.jpg", kGrayJpeg)));
  });
}

// --- Pictures

TEST_F(DesktopContract, AJpegAndABitmapAreShown) {
  play([&](FormWindow& window) {
    EXPECT_TRUE(window.setPicture(stage::kPicture, putFile("a.jpg", kGrayJpeg)));
    EXPECT_TRUE(window.setPicture(stage::kPicture, putFile("a.bmp", kStripedBitmap)));
  });
}

TEST_F(DesktopContract, AFileThatIsNoWholePictureIsNotShown) {
  const std::string half(kGrayJpeg.substr(0, kGrayJpeg.size() / 2));
  play([&](FormWindow& window) {
    for (const std::string& file :
         {putFile("cut.jpg", half), putFile("empty.jpg", ""), putFile("text.jpg", "no picture"),
          path("missing.jpg"), world().folder(), std::string()}) {
      EXPECT_FALSE(window.setPicture(stage::kPicture, file)) << file;
    }
  });
}

// --- Modeless forms

TEST_F(DesktopContract, AModelessFormIsTheActiveOneUntilItIsDestroyed) {
  StageForm above(world());
  FormWindow* loaded = nullptr;
  above.onLoaded = [&loaded](FormWindow& window) { loaded = &window; };
  play([&](FormWindow& window) {
    auto shown = showModeless(above);
    EXPECT_EQ(desktop().activeForm(), loaded);
    shown.reset();
    EXPECT_EQ(desktop().activeForm(), &window);
  });
  EXPECT_EQ(desktop().activeForm(), nullptr);
}

TEST_F(DesktopContract, AModelessFormStandsAloneToo) {
  {
    const auto shown = showModeless(form_);
    ASSERT_NE(desktop().activeForm(), nullptr);
    EXPECT_TRUE(desktop().activeForm()->hasControl(stage::kList));
    desktop().processEvents();
  }
  EXPECT_EQ(desktop().activeForm(), nullptr);
}

TEST_F(DesktopContract, AModelessFormHearsItsClicksWhenMessagesRun) {
  const auto shown = showModeless(form_);
  world().clickLater(*desktop().activeForm(), stage::kButton);
  EXPECT_EQ(form_.heard, Names{});
  desktop().processEvents();
  EXPECT_EQ(form_.heard, Names{clicked(stage::kButton)});
}

TEST_F(DesktopContract, AModelessFormMayCloseItselfBeforeItIsDestroyed) {
  form_.onClicked = [](FormWindow& window, const std::string&) { window.close(); };
  auto shown = showModeless(form_);
  FormWindow& window = *desktop().activeForm();
  world().clickLater(window, stage::kButton);
  world().clickLater(window, stage::kButton);
  desktop().processEvents();
  EXPECT_EQ(form_.heard.size(), 1U) << "a closed form hears nothing more";
  EXPECT_EQ(desktop().activeForm(), nullptr);
  shown.reset();
  EXPECT_EQ(desktop().activeForm(), nullptr);
}

TEST_F(DesktopContract, AModalFormStandsOverAModelessOne) {
  const auto shown = showModeless(form_);
  FormWindow* const below = desktop().activeForm();
  StageForm above(world());
  world().playUser([&](FormWindow& window) {
    EXPECT_EQ(desktop().activeForm(), &window);
    EXPECT_NE(&window, below);
    window.close();
  });
  EXPECT_TRUE(desktop().showModal(above));
  EXPECT_EQ(desktop().activeForm(), below);
}

TEST_F(DesktopContract, AFormEndsWithTheModelessOneBelowIt) {
  auto below = showModeless(form_);
  StageForm above(world());
  auto shown = showModeless(above);
  world().clickLater(*desktop().activeForm(), stage::kButton);
  below.reset();
  EXPECT_EQ(desktop().activeForm(), nullptr);
  desktop().processEvents();
  EXPECT_EQ(above.heard, Names{}) << "it is closed";

  StageForm last(world());
  world().playUser([&](FormWindow& window) {
    shown.reset();
    EXPECT_EQ(desktop().activeForm(), &window) << "what had ended before takes nothing with it";
    window.close();
  });
  EXPECT_TRUE(desktop().showModal(last));
}

// --- The hourglass

TEST_F(DesktopContract, TheHourglassStaysOverEveryFormUntilItIsTakenAway) {
  StageForm above(world());
  play([&](FormWindow& window) {
    EXPECT_FALSE(world().hourglassOver(window));
    desktop().setHourglass(true);
    EXPECT_TRUE(world().hourglassOver(window));
    {
      const auto shown = showModeless(above);
      EXPECT_TRUE(world().hourglassOver(*desktop().activeForm()));
    }
    desktop().processEvents();
    EXPECT_TRUE(world().hourglassOver(window));
    desktop().setHourglass(false);
    EXPECT_FALSE(world().hourglassOver(window));
  });
}

TEST_F(DesktopContract, AnHourglassWithoutAnyFormIsKeptForTheNext) {
  desktop().setHourglass(true);
  play([&](FormWindow& window) { EXPECT_TRUE(world().hourglassOver(window)); });
  desktop().setHourglass(false);
  play([&](FormWindow& window) { EXPECT_FALSE(world().hourglassOver(window)); });
}

// --- Handlers within handlers

TEST_F(DesktopContract, ASecondClickReachesTheFormWhileTheFirstIsStillHandled) {
  int running = 0;
  int most = 0;
  form_.onClicked = [&](FormWindow& window, const std::string&) {
    ++running;
    most = std::max(most, running);
    if (running == 1) {
      world().clickLater(window, stage::kButton);
      desktop().processEvents();
      form_.heard.push_back("step done");
    }
    --running;
  };
  play([&](FormWindow& window) { world().click(window, stage::kButton); });
  EXPECT_EQ(form_.heard, (Names{clicked(stage::kButton), clicked(stage::kButton), "step done"}));
  EXPECT_EQ(most, 2) << "whether it begins again is the form's own decision";
}

TEST_F(DesktopContract, AFormThatDisablesItsButtonIsNotClickedAgain) {
  form_.onClicked = [&](FormWindow& window, const std::string&) {
    window.setEnabled(stage::kButton, false);
    world().clickLater(window, stage::kButton);
    desktop().processEvents();
    window.setEnabled(stage::kButton, true);
  };
  play([&](FormWindow& window) { world().click(window, stage::kButton); });
  EXPECT_EQ(form_.heard, Names{clicked(stage::kButton)});
}

TEST_F(DesktopContract, AFormClosedWhileItsHandlerRunsStaysUntilTheHandlerEnds) {
  bool ended = false;
  form_.onClicked = [&](FormWindow& window, const std::string& control) {
    if (control == stage::kOtherButton) {
      window.close();
      return;
    }
    world().clickLater(window, stage::kOtherButton);
    desktop().processEvents();
    EXPECT_EQ(desktop().activeForm(), nullptr) << "closed by the click that came meanwhile";
    // The long step goes on with its form, and with the messages.
    window.setText(stage::kButton, "ancora");
    window.addItem(stage::kList, "ancora");
    world().clickLater(window, stage::kOtherButton);
    desktop().processEvents();
    ended = true;
  };
  world().playUser([&](FormWindow& window) { world().click(window, stage::kButton); });
  EXPECT_TRUE(desktop().showModal(form_));
  EXPECT_TRUE(ended);
  EXPECT_EQ(form_.heard, (Names{clicked(stage::kButton), clicked(stage::kOtherButton)}));
}

}  // namespace
}  // namespace trelv::contract
