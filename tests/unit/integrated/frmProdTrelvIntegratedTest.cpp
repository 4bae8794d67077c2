#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "integrated/frmProdTrelvIntegrated.h"
#include "support/SessionFormTest.h"

namespace trelv::tests {
namespace {

constexpr const char* kForm = "frmProdTrelvIntegrated";
constexpr const char* kList = "ListProd";
constexpr int kNerio = 1;
constexpr int kTarsena2 = 2;
constexpr int kBilancio = 3;

class IntegratedForm : public SessionFormTest<FakeProgram> {
 protected:
  IntegratedForm() {
    offer({{"LUDA", "Luda", "packs\\luda", {"a.exe"}},
           {"nerio", "Nerio", "packs\\nerio"},
           {"q2", "Tarsena2", "packs\\q2"},
           {"ZB", "Bilancio", "packs\\zb"}});
  }

  void offer(std::vector<OfferedProduct> products) {
    program_.state.session.offeredProducts = std::move(products);
  }
  void show(sim::SimDesktop::UserAction user) {
    play(kForm, std::move(user), [this] { form_.showModal(); });
  }
  UserAction action() const { return program_.state.session.userAction; }
  std::vector<std::string> selectedCaptions() {
    std::vector<std::string> captions;
    for (const OfferedProduct& product : selection()) {
      captions.push_back(product.caption);
    }
    return captions;
  }

  frmProdTrelvIntegrated form_{program_, help_};
};

// --- What is shown

TEST_F(IntegratedForm, ListsTheOfferedProductsInOrderWithNothingSelected) {
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items(kList), ElementsAre("Luda", "Nerio", "Tarsena2", "Bilancio"));
    EXPECT_THAT(form.selectedItems(kList), IsEmpty());
    EXPECT_EQ(form.itemData(kList, 3), 3);
    EXPECT_EQ(form.focus(), kList);
    EXPECT_TRUE(form.isEnabled("cmdback"));
  });
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(IntegratedForm, ShowsThePictureBesideTheProgram) {
  machine_.putFile("C:\\Lumo\\Programmi\\images\\product.jpg", "\xFF\xD8\xFFx\xFF\xD9");
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.picture("picProduct"), "C:\\Lumo\\Programmi\\images\\product.jpg");
  });
}

TEST_F(IntegratedForm, BackIsDisabledOnDemand) {
  EXPECT_FALSE(form_.BackDisable());
  form_.setBackDisable(true);
  EXPECT_TRUE(form_.BackDisable());
  show([](SimFormWindow& form) { EXPECT_FALSE(form.isEnabled("cmdback")); });
}

TEST_F(IntegratedForm, NothingIsSelectedAnyMoreWhenItComesBack) {
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.click("cmdback");
  });
  show([](SimFormWindow& form) { EXPECT_THAT(form.selectedItems(kList), IsEmpty()); });
}

// --- Nerio

TEST_F(IntegratedForm, Tarsena2AndBilancioBringNerioAlong) {
  for (const int product : {kTarsena2, kBilancio}) {
    show([product](SimFormWindow& form) {
      form.toggle(kList, product);
      EXPECT_THAT(form.selectedItems(kList), ElementsAre(kNerio, product));
    });
  }
}

TEST_F(IntegratedForm, OthersBringNothingAlong) {
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
  });
}

TEST_F(IntegratedForm, DeselectingNeverDeselectsNerio) {
  show([](SimFormWindow& form) {
    form.toggle(kList, kTarsena2);
    form.toggle(kList, kTarsena2);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(kNerio));
  });
}

TEST_F(IntegratedForm, NerioMayBeDeselectedBehindThem) {
  show([](SimFormWindow& form) {
    form.toggle(kList, kTarsena2);
    form.toggle(kList, kNerio);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(kTarsena2));
    form.toggle(kList, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0, kTarsena2))
        << "only its own click counts";
  });
}

TEST_F(IntegratedForm, WithoutNerioInTheListNothingElseIsSelected) {
  offer({{"Q2", "Tarsena2", "q2"}, {"LUDA", "Luda", "luda"}});
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
  });
}

TEST_F(IntegratedForm, OfSeveralEntriesOfNerioTheFirstIsSelected) {
  offer({{"Q2", "Tarsena2", "q2"}, {"NERIO", "Nerio 3", "n3"}, {"NERIO", "Nerio 4", "n4"}});
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0, 1));
  });
}

// --- The ways out

TEST_F(IntegratedForm, GoingOnTakesTheSelectionInTheOrderOfTheList) {
  program_.state.selectedProducts = {{"altro"}};
  show([](SimFormWindow& form) {
    form.toggle(kList, kBilancio);
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_EQ(action(), UserAction::Execute);
  EXPECT_THAT(selectedCaptions(), ElementsAre("Luda", "Nerio", "Bilancio"));
  EXPECT_EQ(selection()[0].identifier, "LUDA");
  EXPECT_EQ(selection()[0].packFolder, "packs\\luda");
  EXPECT_THAT(selection()[0].commands, ElementsAre("a.exe"));
  EXPECT_THAT(machine_.boxes(), IsEmpty());
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(IntegratedForm, WithNothingSelectedItStaysAndTheResultIsUnchanged) {
  program_.state.session.userAction = UserAction::None;
  show([this](SimFormWindow& form) {
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_EQ(action(), UserAction::None);
  });
  EXPECT_THAT(boxes(), ElementsAre(isBox(BoxIcon::Critical, "Selezionare almeno una voce")));
  EXPECT_THAT(selection(), IsEmpty());
}

TEST_F(IntegratedForm, ADoubleClickSelectsItsItemAndDoesNotGoOn) {
  show([](SimFormWindow& form) {
    form.doubleClick(kList, kBilancio);
    form.doubleClick(kList, -1);
    EXPECT_TRUE(form.isOpen());
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(kNerio, kBilancio));
  });
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(IntegratedForm, AnEntryWithoutCaptionInTheFirstPlaceCountsAsNothing) {
  offer({{"LUDA", "", "luda"}, {"ZM", "Zeltomodelli", "zm"}});
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    form.toggle(kList, 0);
    form.toggle(kList, 1);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_THAT(machine_.desktop().boxTexts(), ElementsAre("Selezionare almeno una voce"));
}

TEST_F(IntegratedForm, BackExitAndCloseBoxSayWhichTheyWere) {
  show([](SimFormWindow& form) { form.click("cmdback"); });
  EXPECT_EQ(action(), UserAction::Back);
  show([](SimFormWindow& form) { form.click("cmdExit"); });
  EXPECT_EQ(action(), UserAction::Exit);
  program_.state.session.userAction = UserAction::None;
  show([](SimFormWindow& form) { form.closeBox(); });
  EXPECT_EQ(action(), UserAction::Exit);
}

TEST_F(IntegratedForm, HelpAsksForTheFormsOwnTopicAndTheFormStaysOpen) {
  machine_.mount("E:");
  machine_.putFile("E:\\prodotti\\docs\\UserManual.doc", "doc");
  program_.state.session.mediaRoot = "E:\\";
  machine_.automation().installWord({kForm});
  show([](SimFormWindow& form) {
    form.click("cmdhelp");
    EXPECT_TRUE(form.isOpen());
  });
  ASSERT_THAT(machine_.automation().words(), SizeIs(1));
  EXPECT_EQ(machine_.automation().words()[0]->bookmark, kForm);
}

TEST_F(IntegratedForm, ThatCannotBeShownCountsAsLeft) {
  machine_.desktop().setPresent(false);
  form_.showModal();
  EXPECT_EQ(action(), UserAction::Exit);
  EXPECT_THAT(program_.lines(),
              ElementsAre("Gestione ProdTrelv - Impossibile visualizzare la finestra "
                          "frmProdTrelvIntegrated"));
}

// --- While packs are opened

TEST_F(IntegratedForm, WhilePacksAreOpenedItShowsTheSelectionAndTakesNothing) {
  show([](SimFormWindow& form) {
    form.toggle(kList, kTarsena2);
    form.click("cmdExec");
  });
  bool shown = false;
  machine_.desktop().onForm(kForm, [&](SimFormWindow& form) {
    shown = true;
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(kNerio, kTarsena2));
    EXPECT_NE(form.title().find("Installazione in corso"), std::string::npos);
    for (const char* const control : {kList, "cmdExec", "cmdback", "cmdExit", "cmdhelp"}) {
      EXPECT_FALSE(form.isEnabled(control)) << control;
    }
    form.closeBox();
    EXPECT_TRUE(form.isOpen());
  });
  {
    const SessionForm::Installing installing(form_);
    machine::FormWindow* const window = machine_.desktop().activeForm();
    ASSERT_NE(window, nullptr);
    form_.clicked(*window, "cmdExit");
    form_.clicked(*window, "cmdExec");
    form_.selectionChanged(*window, kList);
  }
  EXPECT_TRUE(shown);
  EXPECT_EQ(action(), UserAction::Execute) << "what closed it stays";
  EXPECT_EQ(machine_.desktop().activeForm(), nullptr);
  show([](SimFormWindow& form) { EXPECT_TRUE(form.isEnabled("cmdExec")); });
}

}  // namespace
}  // namespace trelv::tests
