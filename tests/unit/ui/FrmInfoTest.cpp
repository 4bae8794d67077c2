#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/SessionFormTest.h"
#include "ui/FrmInfo.h"

namespace trelv::tests {
namespace {

constexpr const char* kProgram = "C:\\Lumo\\Programmi\\TrelvManager.exe";

class InformationDialog : public SessionFormTest<FakeProgram> {
 protected:
  InformationDialog() {
    machine_.setFileVersion(kProgram, {1, 2, 3, 40});
    machine_.diskOf("C:\\").setModified(kProgram, {2009, 3, 5, 23, 59, 59});
  }

  void show(sim::SimDesktop::UserAction user) {
    FrmInfo form(program_);
    play("FrmInfo", std::move(user), [&] { EXPECT_TRUE(machine_.desktop().showModal(form)); });
  }
};

TEST_F(InformationDialog, TellsProgramDayOfItsChangeAndVersionInFourNumbers) {
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.text("lblinfo_0"), "TrelvManager.exe");
    EXPECT_EQ(form.text("lblinfo_1"), "05/03/2009");
    EXPECT_EQ(form.text("lblinfo_2"), "1.2.3.40");
  });
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(InformationDialog, ButtonAndCloseBoxCloseIt) {
  show([](SimFormWindow& form) {
    form.click("Command1");
    EXPECT_FALSE(form.isOpen());
  });
  show([](SimFormWindow& form) { form.closeBox(); });
}

TEST_F(InformationDialog, AProgramFileThatCannotBeReadIsReportedAndTheRestStays) {
  machine_.diskOf("C:\\").deny(kProgram);
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.text("lblinfo_0"), "TrelvManager.exe");
    EXPECT_EQ(form.text("lblinfo_1"), "");
    EXPECT_EQ(form.text("lblinfo_2"), "");
  });
  ASSERT_THAT(program_.reports(), SizeIs(1));
  EXPECT_EQ(program_.reports()[0].module, "FrmInfo");
  EXPECT_EQ(program_.reports()[0].procedure, "Form_Load");
}

}  // namespace
}  // namespace trelv::tests
