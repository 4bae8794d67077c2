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
  const machine::LocalTime before = over.top().clock.now();
  EXPECT_EQ(over.top().exclusion.take(path, "io", 120'000, second), 32U);
  machine::LocalTime after = over.top().clock.now();
  after.minute -= 2;
  EXPECT_EQ(after, before) << "as long as it would wait for it";
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

/// A store that writes its settings into a file; refuses the value "no".
class StoreInAFile : public sim::SimConfigurationLibrary {
 public:
  explicit StoreInAFile(machine::Files& files) : files_(files) {}

  std::int32_t setParameter(const std::string& /*product*/, const std::string& /*section*/,
                            const std::string& /*key*/, const std::string& /*attribute*/,
                            std::int32_t /*type*/, const std::string& value) override {
    if (value == "no") {
      return -3000;
    }
    return files_.write("C:\\deposito.xml", value) == system_code::kSuccess ? 0 : -3000;
  }

 private:
  machine::Files& files_;
};

TEST(AnOverlay, NotesWhatIsStoredInsteadOfHowItsFileIsWritten) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  StoreInAFile inAFile(over.files());
  overlay::StoreOverFiles store(inAFile, over.noted());
  EXPECT_EQ(store.setParameter("SYSTEM", "S", "K", "A", 1, "S:\\Lumo"), 0);
  EXPECT_EQ(store.setParameter("SYSTEM", "S", "K", "A", 1, "no"), -3000);
  std::string text;
  EXPECT_EQ(over.files().read("C:\\deposito.xml", 100, text), 0U);
  EXPECT_EQ(text, "S:\\Lumo");
  EXPECT_THAT(over.steps(), ElementsAre(Step{.kind = StepKind::Store, .value = "S:\\Lumo"}));
  EXPECT_EQ(over.files().write("C:\\altro.txt", "x"), 0U);
  EXPECT_EQ(over.steps().size(), 2U) << "what comes behind is noted again";
}

constexpr auto kHive = machine::Hive::LocalMachine;
constexpr const char* kKey = "SOFTWARE\\LUMO";

std::unique_ptr<machine::RegistryKey> openedKey(OverlaidMachine& over) {
  std::unique_ptr<machine::RegistryKey> key;
  EXPECT_EQ(over.top().registry.openKey(kHive, kKey, machine::key_access::kAll, key), 0U);
  return key;
}

TEST(AnOverlay, NotesWhatRegistryValuesBecome) {
  sim::SimMachine machine;
  machine.registry().setText(kHive, kKey, "Path", "S:\\Lumo");
  OverlaidMachine over(machine);
  const auto key = openedKey(over);
  const std::string number("\x02\x01\x04\x03", 4);
  const std::vector<std::tuple<std::string, std::uint32_t, std::string, std::string>> rows{
      {"Path", machine::value_type::kText, std::string("\xE8\0x", 3), "è"},
      {"Cartella", machine::value_type::kExpandText, "%TEMP%", "%TEMP%"},
      {"Numero", machine::value_type::kNumber, number, "50594050"},
      {"Corto", machine::value_type::kNumber, std::string("\x07", 1), "7"},
      {"Byte", machine::value_type::kBinary, number, number}};
  std::vector<Step> expected;
  for (const auto& [name, type, data, shown] : rows) {
    EXPECT_EQ(key->writeValue(name, type, data), 0U);
    expected.push_back({.kind = StepKind::Registry,
                        .subject = "HKLM\\SOFTWARE\\LUMO",
                        .name = name,
                        .value = shown});
  }
  EXPECT_EQ(over.steps(), expected);
}

TEST(AnOverlay, NotesNoRegistryValueThatStaysAsItIs) {
  sim::SimMachine machine;
  machine.registry().setText(kHive, kKey, "Path", "S:\\Lumo");
  OverlaidMachine over(machine);
  const auto key = openedKey(over);
  EXPECT_EQ(key->writeValue("Path", machine::value_type::kText, "S:\\Lumo"), 0U);
  EXPECT_THAT(over.steps(), IsEmpty());
  EXPECT_EQ(key->writeValue("Path", machine::value_type::kExpandText, "S:\\Lumo"), 0U);
  EXPECT_EQ(over.steps().size(), 1U) << "of another type";
}

TEST(AnOverlay, SaysNothingOfAWordProcessorThatIsNotThere) {
  sim::SimMachine machine;
  OverlaidMachine over(machine);
  std::unique_ptr<machine::WordProcessor> word;
  const machine::AutomationAnswer missing = over.top().automation.startWord(word);
  EXPECT_EQ(missing.code, machine::automation_code::kNotRegistered);
  EXPECT_EQ(missing.source + missing.description, "");
  EXPECT_THAT(over.steps(), IsEmpty());
  machine.registry().makeKey(machine::Hive::LocalMachine, "SOFTWARE\\Classes\\Word.Application");
  EXPECT_EQ(over.top().automation.startWord(word).code, 0U);
  EXPECT_THAT(over.steps(),
              ElementsAre(Step{.kind = StepKind::Command, .subject = "Word.Application"}));
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
