#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "support/SessionFormTest.h"
#include "ui/frmProdTrelvSinglePack.h"

namespace trelv::tests {
namespace {

constexpr const char* kForm = "frmProdTrelvSinglePack";
constexpr const char* kList = "ListProd";
constexpr const char* kFolder = "E:\\packs\\zb";

class VersionForm : public SessionFormTest<FakeProgram> {
 protected:
  VersionForm() {
    machine_.mount("E:");
    machine_.makeFolders(kFolder);
  }

  void put(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      machine_.putFile(std::string(kFolder) + "\\" + name, "x");
    }
  }
  /// Shows a new form; true when it was confirmed.
  bool show(sim::SimDesktop::UserAction user) {
    frmProdTrelvSinglePack form(program_, "Bilancio", kFolder);
    play(kForm, std::move(user), [&] { EXPECT_TRUE(machine_.desktop().showModal(form)); });
    return form.confirmed();
  }
  const std::vector<ChosenVersion>& chosen() { return program_.state.session.chosenVersions; }
};

TEST_F(VersionForm, ListsThePacksByFileNameInTheirOrderWithNothingSelected) {
  put({"c.zip", "leggimi.txt", "b.zip", "D.ZIP", "a.zip"});
  machine_.putFile("C:\\Lumo\\Programmi\\images\\product.jpg", "\xFF\xD8\xFFx\xFF\xD9");
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.picture("picProduct"), "C:\\Lumo\\Programmi\\images\\product.jpg");
    EXPECT_EQ(form.text("lblHeading"), "Bilancio. Selezionare le versioni da installare");
    EXPECT_THAT(form.items(kList), ElementsAre("b.zip", "c.zip", "a.zip"));
    EXPECT_EQ(form.itemData(kList, 2), 2);
    EXPECT_THAT(form.selectedItems(kList), IsEmpty());
    EXPECT_EQ(form.focus(), kList);
  });
  EXPECT_THAT(
      program_.lines(),
      ElementsAre("Gestione ProdTrelv - Lettura versioni della cartella: \"E:\\packs\\zb\""));
}

TEST_F(VersionForm, ASinglePackIsSelected) {
  put({"a.zip", "leggimi.txt"});
  show([](SimFormWindow& form) { EXPECT_THAT(form.selectedItems(kList), ElementsAre(0)); });
}

TEST_F(VersionForm, ConfirmingTakesTheSelectedRowsInTheirOrder) {
  put({"a.zip", "b.zip", "c.zip", "d.zip"});
  program_.state.session.chosenVersions = {{"vecchio", "vecchio"}};
  EXPECT_TRUE(show([](SimFormWindow& form) {
    form.toggle(kList, 2);
    form.toggle(kList, 0);
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  }));
  ASSERT_THAT(chosen(), SizeIs(2));
  EXPECT_EQ(chosen()[0].pack, "E:\\packs\\zb\\a.zip");
  EXPECT_EQ(chosen()[0].fileName, "a.zip");
  EXPECT_EQ(chosen()[1].pack, "E:\\packs\\zb\\c.zip");
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(VersionForm, ConfirmingNothingShowsTheMessageAndStays) {
  put({"a.zip", "b.zip"});
  program_.state.session.chosenVersions = {{"vecchio", "vecchio"}};
  EXPECT_FALSE(show([this](SimFormWindow& form) {
    form.setFocus("cmdExec");
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_EQ(form.focus(), kList);
    EXPECT_THAT(chosen(), IsEmpty()) << "emptied at the beginning";
  }));
  EXPECT_THAT(boxes(), ElementsAre(isBox(BoxIcon::Critical, "Selezionare almeno una voce")));
}

TEST_F(VersionForm, AFolderWithoutPacksGivesAnEmptyListThatCannotBeConfirmed) {
  EXPECT_FALSE(show([](SimFormWindow& form) {
    EXPECT_THAT(form.items(kList), IsEmpty());
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  }));
  EXPECT_THAT(machine_.desktop().boxTexts(), ElementsAre("Selezionare almeno una voce"));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(VersionForm, AFolderThatCannotBeReadIsReportedAndTheListStaysEmpty) {
  machine_.removeTree(kFolder);
  show([](SimFormWindow& form) { EXPECT_THAT(form.items(kList), IsEmpty()); });
  ASSERT_THAT(program_.reports(), SizeIs(1));
  EXPECT_EQ(program_.reports()[0].module, "frmProdTrelvSinglePack");
  EXPECT_EQ(program_.reports()[0].procedure, "ReadVersions");
}

TEST_F(VersionForm, ExitAndCloseBoxLeaveWithoutAChoice) {
  put({"a.zip"});
  EXPECT_FALSE(show([](SimFormWindow& form) {
    form.click("cmdExit");
    EXPECT_FALSE(form.isOpen());
  }));
  EXPECT_FALSE(show([](SimFormWindow& form) { form.closeBox(); }));
  EXPECT_EQ(program_.state.session.userAction, UserAction::None) << "the session goes on";
}

}  // namespace
}  // namespace trelv::tests
