#include <gtest/gtest.h>

#include "support/Matchers.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;
using overlay::Step;
using overlay::StepKind;

TEST(AnOverlay, ShowsNothingAndAnswersWithTheDefault) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  machine::Desktop& desktop = over.top().desktop;
  EXPECT_EQ(desktop.messageBox("t", "x", BoxIcon::Critical, BoxButtons::Ok), BoxAnswer::Ok);
  EXPECT_EQ(desktop.messageBox("t", "x", BoxIcon::None, BoxButtons::OkCancel), BoxAnswer::Ok);
  EXPECT_EQ(desktop.messageBox("t", "x", BoxIcon::None, BoxButtons::YesNo), BoxAnswer::Yes);
  EXPECT_EQ(desktop.inputBox("t", "dove"), std::nullopt);
  EXPECT_EQ(over.steps().size(), 4U);
  EXPECT_EQ(over.steps().front(), (Step{.kind = StepKind::Box,
                                        .subject = "t",
                                        .value = "x",
                                        .icon = BoxIcon::Critical,
                                        .answer = BoxAnswer::Ok}));
  EXPECT_EQ(over.steps().back().answer, BoxAnswer::Cancel);
  EXPECT_THAT(machine.boxes(), IsEmpty());
}

TEST(AnOverlay, PausesWithoutTakingTime) {
  sim::SimMachine machine;
  machine.clock().set({2026, 12, 31, 23, 59, 30});
  OverlaidMachine over(machine);
  over.top().clock.pause(90'500);
  EXPECT_EQ(over.top().clock.now(), (machine::LocalTime{2027, 1, 1, 0, 1, 0}));
  EXPECT_EQ(machine.clock().paused(), 0U);
}

TEST(AnOverlay, TakesMarksOnTopOnly) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  const std::string path = "C:\\Users\\mario\\Temp\\segno.lck";
  std::unique_ptr<machine::Mark> mark;
  std::unique_ptr<machine::Mark> second;
  EXPECT_EQ(over.top().exclusion.take("C:\\manca\\x.lck", "io", 0, mark), 3U);
  EXPECT_EQ(over.top().exclusion.take(path, "io", 0, mark), 0U);
  EXPECT_EQ(over.top().exclusion.take(path, "io", 120'000, second), 32U);
  std::string text;
  EXPECT_EQ(over.files().read(path, 10, text), 0U);
  EXPECT_EQ(text, "io");
  EXPECT_EQ(over.files().removeFile(path), 32U);
  EXPECT_FALSE(machine.fileExists(path));
  mark.reset();
  machine::FileFacts facts;
  EXPECT_EQ(over.files().look(path, facts), 2U);
}

TEST(AnOverlay, LeavesTheMarkOfAnotherAloneAndDoesNotWaitForIt) {
  sim::SimMachine machine;
  const std::string path = "C:\\Users\\mario\\Temp\\segno.lck";
  const auto others = machine.exclusion().takeForAnother(path, "anna");
  OverlaidMachine over(machine);
  std::unique_ptr<machine::Mark> mark;
  EXPECT_EQ(over.top().exclusion.take(path, "io", 120'000, mark), 32U);
  EXPECT_EQ(machine.fileText(path), "anna");
  EXPECT_EQ(machine.clock().paused(), 0U);
}

TEST(AnOverlay, KeepsVariablesOnTop) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  EXPECT_TRUE(over.top().environment.set("Nuova", "\xE6\x97\xA5 è"));
  EXPECT_FALSE(over.top().environment.set("a=b", "x"));
  std::string value;
  EXPECT_TRUE(over.top().environment.get("NUOVA", value));
  EXPECT_EQ(value, "? è");
  EXPECT_FALSE(machine.environment().has("Nuova"));
}

TEST(AnOverlay, KeepsTheStoreOnTopAndRefusesOneThatCannotBeRead) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  machine::ConfigurationLibrary& store = over.top().configuration;
  EXPECT_EQ(store.setParameter("SYSTEM", "S", "K", "A", 1, "S:\\Lumo"), 0);
  std::string buffer(20, '\0');
  EXPECT_EQ(store.getParameter("system", "s", "k", "a", "", 20, buffer), 0);
  EXPECT_EQ(buffer.substr(0, buffer.find('\0')), "S:\\Lumo");
  EXPECT_EQ(machine.configuration().value("SYSTEM", "S", "K", "A"), "");
  machine.configuration().answerAlways(-3000);
  EXPECT_EQ(store.setParameter("SYSTEM", "S", "K2", "A", 1, "x"), -3000);
  EXPECT_THAT(over.steps(), ElementsAre(Step{.kind = StepKind::Store, .value = "S:\\Lumo"}));
}

TEST(AnOverlay, TakesAdministratorsRightsAwayWhenTold) {
  sim::SimMachine machine;
  OverlaidMachine over(machine, {.process = {.asUser = true}});
  bool member = true;
  EXPECT_EQ(over.top().system.isAdministrator(member), 0U);
  EXPECT_FALSE(member);
  EXPECT_EQ(over.top().support.isAdministrator(), machine::SupportAnswer::Absent);
  machine.support().setAdministratorAnswer(machine::SupportAnswer::Yes);
  EXPECT_EQ(over.top().support.isAdministrator(), machine::SupportAnswer::No);
}

TEST(AnOverlay, GivesCopiesTheVersionOfTheirSource) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.exe", "MZ");
  machine.setFileVersion("C:\\a.exe", {1, 2, 3, 4});
  OverlaidMachine over(machine);
  over.files().copyFile("C:\\a.exe", "C:\\b.exe");
  machine::FileVersion version{};
  EXPECT_EQ(over.top().versions.read("C:\\b.exe", version), 0U);
  EXPECT_EQ(version, (machine::FileVersion{1, 2, 3, 4}));
  over.files().write("C:\\b.exe", "MZ");
  EXPECT_EQ(over.top().versions.read("C:\\b.exe", version), system_code::kResourceDataNotFound);
  EXPECT_EQ(over.top().versions.read("C:\\c.exe", version), system_code::kFileNotFound);
}

TEST(AnOverlay, AsksNoFileForItsRightToBeWritten) {
  sim::SimMachine machine;
  machine.putFile("C:\\a.txt", "x");
  OverlaidMachine over(machine);
  machine.callLog().clear();
  over.files().mayAddFile("C:\\a.txt");
  over.files().append("C:\\a.txt", "y");
  over.files().setReadOnly("C:\\a.txt", true);
  EXPECT_EQ(machine.callLog().countOf("files.mayAddFile C:\\a.txt"), 0U)
      << "on a file this opens it for writing";
  const sim::Openings openings = machine.openings("C:\\a.txt");
  EXPECT_EQ(openings.writes + openings.appends + openings.profileWrites + openings.copies, 0U);
}

TEST(AnOverlay, NotesNothingTwiceAndNothingThatChangesNothing) {
  sim::SimMachine machine;
  machine.setIniValue("C:\\a.ini", "s", "k", "v");
  OverlaidMachine over(machine);
  EXPECT_EQ(over.top().profiles.writeValue("s", "k", "v", "C:\\a.ini"), 1U);
  EXPECT_THAT(over.steps(), IsEmpty());
  over.top().profiles.writeValue("s", "k", "w", "C:\\a.ini");
  EXPECT_EQ(over.files().makeFolder("C:\\WINDOWS"), system_code::kAlreadyExists);
  EXPECT_EQ(over.files().removeFile("C:\\manca"), system_code::kFileNotFound);
  EXPECT_EQ(over.steps().size(), 1U);
}

}  // namespace
}  // namespace trelv::tests
