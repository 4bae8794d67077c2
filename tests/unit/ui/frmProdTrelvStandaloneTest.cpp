#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "support/Refusals.h"
#include "support/SessionFormTest.h"
#include "ui/frmProdTrelvStandalone.h"

namespace trelv::tests {
namespace {

constexpr const char* kForm = "frmProdTrelvStandalone";
constexpr const char* kVersions = "frmProdTrelvSinglePack";
constexpr const char* kTabs = "labTab";
constexpr const char* kList = "ListProd";
constexpr const char* kQuestion = "Confermi l'avvio della procedura \rNerio";
constexpr const char* kLooking = "Gestione ProdTrelv - Verifico se sono su un sistema a 64Bit";
constexpr const char* k32Bit = "Gestione ProdTrelv - NON Sono su un sistema a 64bit";
constexpr const char* k64Bit = "Gestione ProdTrelv - Sono su un sistema a 64bit";
constexpr const char* kVersionLine =
    "Gestione ProdTrelv - Verifica presenza di più versioni da installare";

/// A medium in E: with Nerio and Bilancio (two versions) on the first page, Zeltomodelli and an
/// entry that leaves on the third.
class StandaloneForm : public SessionFormTest<RealProgram> {
 protected:
  StandaloneForm() {
    machine_.makeFolders("C:\\Users\\mario\\Temp\\log");
    machine_.mount("E:");
    for (const char* const pack :
         {"nerio\\nerio.zip", "zb\\b.zip", "zb\\a.zip", "zb\\c.zip", "zm\\zm.zip"}) {
      machine_.putFile(std::string("E:\\packs\\") + pack, "x");
    }
    session().mediaRoot = "E:\\";
    session().menu[0] = {
        "Contabilità",
        {{"NERIO", "Nerio", "packs\\nerio", {"a.exe"}}, {"ZB", "Bilancio", "packs\\zb\\"}}};
    session().menu[2] = {"", {{"ZM", "Zeltomodelli", "packs\\zm"}, {"exit", "Esci"}}};
    machine_.desktop().setDefaultAnswer(BoxButtons::YesNo, BoxAnswer::Yes);
  }

  void show(sim::SimDesktop::UserAction user) {
    play(kForm, std::move(user), [this] { form_.showModal(); });
  }
  void confirm(int item) {
    show([item](SimFormWindow& form) {
      form.toggle(kList, item);
      form.click("cmdExec");
    });
  }
  std::vector<std::string> lines() { return program_.logLines(); }

  frmProdTrelvStandalone form_{program_, help_};
};

// --- Pages

TEST_F(StandaloneForm, ShowsFourPagesOfWhichEmptyOnesCannotBeTurnedTo) {
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items(kTabs), ElementsAre("Contabilità", "Pagina 2", "Pagina 3", "Pagina 4"));
    EXPECT_TRUE(form.isItemEnabled(kTabs, 0));
    EXPECT_FALSE(form.isItemEnabled(kTabs, 1));
    EXPECT_TRUE(form.isItemEnabled(kTabs, 2));
    EXPECT_FALSE(form.isItemEnabled(kTabs, 3));
    EXPECT_FALSE(form.choose(kTabs, 1));
  });
}

TEST_F(StandaloneForm, APageListsItsEntriesInTheOrderOfTheMenuWithNothingSelected) {
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.selected(kTabs), 0);
    EXPECT_THAT(form.items(kList), ElementsAre("Nerio", "Bilancio"));
    EXPECT_THAT(form.selectedItems(kList), IsEmpty());
    EXPECT_EQ(form.focus(), kList);
    form.choose(kTabs, 2);
    EXPECT_THAT(form.items(kList), ElementsAre("Zeltomodelli", "Esci"));
  });
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(StandaloneForm, TheSelectionSurvivesTurningPages) {
  show([](SimFormWindow& form) {
    form.toggle(kList, 1);
    form.choose(kTabs, 2);
    EXPECT_THAT(form.selectedItems(kList), IsEmpty());
    form.toggle(kList, 0);
    form.choose(kTabs, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(1));
    form.choose(kTabs, 2);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
  });
}

TEST_F(StandaloneForm, ThePageIsKeptFromOneTimeToTheNextAndTheSelectionIsNot) {
  show([](SimFormWindow& form) {
    form.choose(kTabs, 2);
    form.toggle(kList, 0);
    form.click("cmdback");
  });
  EXPECT_EQ(form_.CurrentTab(), 2);
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.selected(kTabs), 2);
    EXPECT_THAT(form.items(kList), ElementsAre("Zeltomodelli", "Esci"));
    EXPECT_THAT(form.selectedItems(kList), IsEmpty());
  });
  form_.setCurrentTab(0);
  show([](SimFormWindow& form) { EXPECT_EQ(form.selected(kTabs), 0); });
}

TEST_F(StandaloneForm, WhereTheFirstPageIsEmptyTheFirstWithEntriesIsShown) {
  session().menu[0].entries.clear();
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.selected(kTabs), 2);
    EXPECT_THAT(form.items(kList), ElementsAre("Zeltomodelli", "Esci"));
  });
}

TEST_F(StandaloneForm, WithoutAnyEntryThereIsNothingToConfirm) {
  session().menu = {};
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.selected(kTabs), 0);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(boxTexts(), ElementsAre("Selezionare almeno una voce"));
}

TEST_F(StandaloneForm, PictureAndBackButtonAreAsTheSessionSays) {
  machine_.putFile("C:\\Lumo\\Programmi\\images\\product.jpg", "\xFF\xD8\xFFx\xFF\xD9");
  form_.setBackDisable(true);
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.picture("picProduct"), "C:\\Lumo\\Programmi\\images\\product.jpg");
    EXPECT_FALSE(form.isEnabled("cmdback"));
  });
}

// --- Confirmation

TEST_F(StandaloneForm, WithNothingSelectedEitherWayHasItsOwnMessage) {
  show([](SimFormWindow& form) {
    form.setFocus("cmdExec");
    form.click("cmdExec");
    EXPECT_EQ(form.focus(), kList);
    form.doubleClick(kList, -1);
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(boxes(),
              ElementsAre(isBox(BoxIcon::Critical, "Selezionare almeno una voce"),
                          isBox(BoxIcon::Critical, "Selezionare preliminarmente una voce")));
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(StandaloneForm, GoingOnRecordsTheProductAndItsLinesStandInTheirOrder) {
  program_.state().selectedProducts = {{"altro"}};
  std::vector<std::string> before;
  machine_.desktop().onBox([&](const sim::SimBox&) { before = lines(); });
  confirm(0);
  EXPECT_THAT(before, ElementsAre(kLooking, k32Bit)) << "the question comes after these";
  EXPECT_THAT(lines(), ElementsAre(kLooking, k32Bit, kVersionLine));
  EXPECT_THAT(boxes(), ElementsAre(isBox(BoxIcon::Question, kQuestion, BoxButtons::YesNo)));
  EXPECT_EQ(session().userAction, UserAction::Execute);
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
  EXPECT_EQ(selection()[0].packFolder, "packs\\nerio");
  EXPECT_THAT(selection()[0].commands, ElementsAre("a.exe"));
  EXPECT_THAT(selection()[0].chosenPacks, IsEmpty());
}

TEST_F(StandaloneForm, ADoubleClickSelectsItsItemAndConfirms) {
  show([](SimFormWindow& form) {
    form.doubleClick(kList, 0);
    EXPECT_FALSE(form.isOpen());
  });
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
}

// What reads the screen aloud, or works by itself, selects without a word to the form.
TEST_F(StandaloneForm, WhatTheListShowsSelectedIsTakenHoweverItCameToBe) {
  show([](SimFormWindow& form) {
    form.setItemSelected(kList, 0, true);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
}

TEST_F(StandaloneForm, NoStaysAndRecordsNothing) {
  machine_.desktop().answer({BoxAnswer::No});
  show([this](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_EQ(session().userAction, UserAction::None);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
  });
  EXPECT_THAT(selection(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre(kLooking, k32Bit));
}

TEST_F(StandaloneForm, TheSelectedProductsOfAllPagesAreTakenPageByPage) {
  show([](SimFormWindow& form) {
    form.choose(kTabs, 2);
    form.toggle(kList, 0);
    form.choose(kTabs, 0);
    form.toggle(kList, 0);
    form.choose(kTabs, 2);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_THAT(boxTexts(), ElementsAre(std::string(kQuestion) + "\rZeltomodelli"));
  ASSERT_THAT(selection(), SizeIs(2));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
  EXPECT_EQ(selection()[1].identifier, "ZM");
  EXPECT_THAT(lines(), ElementsAre(kLooking, k32Bit, kVersionLine, kVersionLine));
}

TEST_F(StandaloneForm, OfMoreThanTenProductsTheQuestionNamesTheFirstTenAndHowManyOthers) {
  for (const int others : {0, 1, 4}) {
    const int count = 10 + others;
    session().menu[0].entries.assign(static_cast<std::size_t>(count),
                                     {"NERIO", "N", "packs\\nerio"});
    show([count](SimFormWindow& form) {
      for (int i = 0; i < count; ++i) {
        form.toggle(kList, i);
      }
      form.click("cmdExec");
    });
    std::string names;
    for (int i = 0; i < 10; ++i) {
      names += "\rN";
    }
    names += others == 0 ? "" : "\r... e altri " + std::to_string(others);
    EXPECT_EQ(boxTexts().back(), "Confermi l'avvio della procedura " + names);
    EXPECT_THAT(selection(), SizeIs(static_cast<std::size_t>(count))) << "all are taken";
  }
}

TEST_F(StandaloneForm, TheEntryExitAloneGoesOnWithNothingToInstall) {
  program_.state().selectedProducts = {{"altro"}};
  show([](SimFormWindow& form) {
    form.choose(kTabs, 2);
    form.doubleClick(kList, 1);
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_EQ(session().userAction, UserAction::Execute);
  EXPECT_THAT(selection(), IsEmpty());
  EXPECT_THAT(boxTexts(), ElementsAre("Confermi l'avvio della procedura \rEsci"));
  EXPECT_THAT(lines(), ElementsAre(kLooking, k32Bit));
}

TEST_F(StandaloneForm, TheEntryExitBesideOthersAddsNothing) {
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.choose(kTabs, 2);
    form.toggle(kList, 1);
    form.click("cmdExec");
  });
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
}

// --- 64 bit

TEST_F(StandaloneForm, Under64BitNothingIsAskedAndTheFormStays) {
  machine_.system().setWow64(true);
  for (const int item : {0, 1}) {
    show([item](SimFormWindow& form) {
      form.toggle(kList, item);
      form.click("cmdExec");
      EXPECT_TRUE(form.isOpen());
    });
  }
  EXPECT_THAT(boxes(),
              AllOf(SizeIs(2),
                    Each(isBox(BoxIcon::Critical,
                               "La procedura non può essere avviata su sistemi a 64 Bit\r\nPremere "
                               "Ok per interrompere l'esecuzione"))));
  EXPECT_THAT(lines(), ElementsAre(kLooking, k64Bit, kLooking, k64Bit));
  EXPECT_THAT(selection(), IsEmpty());
}

TEST_F(StandaloneForm, ASystemWithoutRedirectionIs32BitAndNotAskedFurther) {
  machine_.system().setWow64(true);
  machine_.system().removeKernelFunction("Wow64EnableWow64FsRedirection");
  confirm(0);
  EXPECT_EQ(session().userAction, UserAction::Execute);
  EXPECT_EQ(machine_.callLog().countOf("system.isWow64"), 0U);
  EXPECT_EQ(machine_.callLog().countOf("system.hasKernelFunction IsWow64Process"), 0U);
}

TEST_F(StandaloneForm, ASystemThatCannotBeAskedIs32Bit) {
  machine_.system().setWow64(true);
  machine_.system().removeKernelFunction("IsWow64Process");
  confirm(0);
  EXPECT_EQ(session().userAction, UserAction::Execute);
  EXPECT_EQ(machine_.callLog().countOf("system.isWow64"), 0U);
}

// --- Versions

TEST_F(StandaloneForm, OfSeveralVersionsTheUserPicks) {
  machine_.desktop().onForm(kVersions, [](SimFormWindow& form) {
    EXPECT_EQ(form.text("lblHeading"), "Bilancio. Selezionare le versioni da installare");
    EXPECT_THAT(form.items(kList), ElementsAre("a.zip", "b.zip", "c.zip"));
    form.toggle(kList, 2);
    form.toggle(kList, 0);
    form.click("cmdExec");
  });
  confirm(1);
  EXPECT_EQ(session().userAction, UserAction::Execute);
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_THAT(selection()[0].chosenPacks,
              ElementsAre("E:\\packs\\zb\\a.zip", "E:\\packs\\zb\\c.zip"));
  EXPECT_THAT(lines(), ElementsAre(kLooking, k32Bit, kVersionLine,
                                   "Gestione ProdTrelv - Lettura versioni della cartella: "
                                   "\"E:\\packs\\zb\""));
}

TEST_F(StandaloneForm, LeavingTheVersionFormComesBackAndBackStaysActive) {
  show([this](SimFormWindow& form) {
    form.toggle(kList, 1);
    for (const bool box : {false, true}) {
      machine_.desktop().onForm(kVersions, [box](SimFormWindow& versions) {
        versions.toggle(kList, 0);
        box ? versions.closeBox() : static_cast<void>(versions.click("cmdExit"));
      });
      form.click("cmdExec");
      EXPECT_TRUE(form.isOpen());
      EXPECT_TRUE(form.isEnabled("cmdback"));
      EXPECT_EQ(session().userAction, UserAction::None);
    }
  });
  EXPECT_THAT(selection(), IsEmpty());
}

TEST_F(StandaloneForm, AVersionFormThatCannotBeShownIsToldAndCountsAsLeft) {
  show([this](SimFormWindow& form) {
    form.toggle(kList, 1);
    machine_.callLog().setInjector(refuse({sim::CallKind::FormShow}));
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Impossibile visualizzare la finestra frmProdTrelvSinglePack");
  EXPECT_THAT(selection(), IsEmpty());
}

TEST_F(StandaloneForm, LeavingTheSecondVersionFormTakesNeitherProduct) {
  machine_.putFile("E:\\packs\\zm\\zm2.zip", "x");
  machine_.desktop().onForm(kVersions, [](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.click("cmdExec");
  });
  show([](SimFormWindow& form) {
    form.toggle(kList, 1);
    form.choose(kTabs, 2);
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(selection(), IsEmpty());
}

TEST_F(StandaloneForm, AnyFilesCountAsVersions) {
  machine_.putFile("E:\\packs\\nerio\\leggimi.txt", "x");
  machine_.desktop().onForm(kVersions, [](SimFormWindow& form) {
    EXPECT_THAT(form.items(kList), ElementsAre("nerio.zip"));
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
    form.click("cmdExec");
  });
  confirm(0);
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_THAT(selection()[0].chosenPacks, ElementsAre("E:\\packs\\nerio\\nerio.zip"));
}

TEST_F(StandaloneForm, AFolderThatIsMissingOrLiesElsewhereHasNoVersions) {
  machine_.putFile("C:\\packs\\a.zip", "x");
  machine_.putFile("C:\\packs\\b.zip", "x");
  for (const char* const folder : {"packs\\manca", "..\\packs\\zb", "C:\\packs"}) {
    session().menu[0].entries[0].packFolder = folder;
    session().userAction = UserAction::None;
    confirm(0);
    EXPECT_EQ(session().userAction, UserAction::Execute) << folder;
  }
  EXPECT_EQ(machine_.callLog().countOf("files.list C:\\packs"), 0U);
}

TEST_F(StandaloneForm, AFolderThatCannotBeReadIsReportedAndTheFormStays) {
  machine_.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool listing = call.kind == sim::CallKind::FolderList;
    return listing ? std::optional<SystemCode>(system_code::kAccessDenied) : std::nullopt;
  });
  machine_.desktop().declareForm("frmError", {{"txtModulo", "txtProcedura"}, {}});
  std::vector<std::string> told;
  machine_.desktop().onEveryForm("frmError", [&](SimFormWindow& form) {
    told.push_back(form.text("txtModulo") + "." + form.text("txtProcedura"));
  });
  show([](SimFormWindow& form) {
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    form.doubleClick(kList, 0);
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(told, ElementsAre("frmProdTrelvStandalone.cmdExec_Click",
                                "frmProdTrelvStandalone.ListProd_DblClick"));
  EXPECT_THAT(selection(), IsEmpty());
}

// --- The other ways out, and clicks that come while something runs

TEST_F(StandaloneForm, BackExitAndCloseBoxSayWhichTheyWere) {
  show([](SimFormWindow& form) { form.click("cmdback"); });
  EXPECT_EQ(session().userAction, UserAction::Back);
  show([](SimFormWindow& form) { form.click("cmdExit"); });
  EXPECT_EQ(session().userAction, UserAction::Exit);
  session().userAction = UserAction::None;
  show([](SimFormWindow& form) { form.closeBox(); });
  EXPECT_EQ(session().userAction, UserAction::Exit);
}

TEST_F(StandaloneForm, WhateverTheUserDoesDuringTheConfirmationChangesNothing) {
  show([this](SimFormWindow& form) {
    form.toggle(kList, 0);
    const auto interfere = [&form] {
      form.click("cmdExec");
      form.click("cmdback");
      form.closeBox();
      form.doubleClick(kList, 1);
      EXPECT_TRUE(form.isOpen());
    };
    machine_.desktop().onEvents(1, interfere);
    machine_.desktop().onEvents(3, interfere);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_EQ(session().userAction, UserAction::Execute);
  ASSERT_THAT(selection(), SizeIs(1));
  EXPECT_EQ(selection()[0].identifier, "NERIO");
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
}

TEST_F(StandaloneForm, APageTurnedWhileSomethingRunsIsShownAfterwards) {
  machine_.desktop().answer({BoxAnswer::No});
  show([this](SimFormWindow& form) {
    form.toggle(kList, 0);
    machine_.desktop().onEvents(1, [&form] { form.choose(kTabs, 2); });
    form.click("cmdExec");
    EXPECT_THAT(form.items(kList), ElementsAre("Zeltomodelli", "Esci"));
    form.choose(kTabs, 0);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
  });
}

TEST_F(StandaloneForm, WhilePacksAreOpenedItShowsPageAndSelectionAndTakesNothing) {
  show([](SimFormWindow& form) {
    form.choose(kTabs, 2);
    form.toggle(kList, 0);
    form.click("cmdExec");
  });
  bool shown = false;
  machine_.desktop().onForm(kForm, [&](SimFormWindow& form) {
    shown = true;
    EXPECT_EQ(form.selected(kTabs), 2);
    EXPECT_THAT(form.selectedItems(kList), ElementsAre(0));
    for (const char* const control : {kTabs, kList, "cmdExec", "cmdback", "cmdExit", "cmdhelp"}) {
      EXPECT_FALSE(form.isEnabled(control)) << control;
    }
    form.closeBox();
    EXPECT_TRUE(form.isOpen());
  });
  {
    const SessionForm::Installing installing(form_);
    program_.log().WriteLog("Apro lo zip");
    ASSERT_NE(machine_.desktop().activeForm(), nullptr);
    EXPECT_EQ(machine_.desktop().activeForm()->text("txtProgress"), "Apro lo zip");
    EXPECT_EQ(machine_.desktop().activeForm()->text("lblProgress"), "033%");
  }
  EXPECT_TRUE(shown);
  EXPECT_EQ(session().userAction, UserAction::Execute);
}

}  // namespace
}  // namespace trelv::tests
