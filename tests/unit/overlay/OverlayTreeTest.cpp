// What calls at random seldom come to: each case is played on a machine too.

#include <gtest/gtest.h>

#include "support/Matchers.h"
#include "unit/overlay/OverlaidMachine.h"

namespace trelv::tests {
namespace {

using machine::FileFacts;
using machine::Files;
using Names = std::vector<std::string>;

void furnish(sim::SimMachine& machine) {
  const auto share = machine.mount("S:");
  share->put("S:\\a\\uno.txt", "uno");
  share->put("S:\\a\\due.txt", "due");
  share->put("S:\\b\\x.ini", "[s]\r\nk=vecchio\r\n");
}

/// What a case answers on a machine and on an overlay over another one like it, which are the same.
template <class Case>
auto onBoth(const Case& played) {
  sim::SimMachine real;
  sim::SimMachine below;
  furnish(real);
  furnish(below);
  OverlaidMachine over(below);
  const auto onTop = played(over.top());
  EXPECT_EQ(onTop, played(real.machine()));
  return onTop;
}

Names namesIn(Files& files, const std::string& folder) {
  std::vector<machine::FolderEntry> entries;
  EXPECT_EQ(files.list(folder, "", entries), 0U);
  Names names;
  for (const machine::FolderEntry& entry : entries) {
    names.push_back(entry.name);
  }
  return names;
}

std::string textOf(Files& files, const std::string& path) {
  std::string text = "?";
  files.read(path, 100, text);
  return text;
}

TEST(AnOverlaysTree, ListsARewrittenFileWhereItWasMadeAndAsItWasSpelt) {
  const Names names = onBoth([](machine::Machine& machine) -> Names {
    for (const char* const name : {"Prima.txt", "poi.txt", "PRIMA.TXT", "UNO.TXT"}) {
      EXPECT_EQ(machine.files.write(std::string("S:\\a\\") + name, "x"), 0U);
    }
    return namesIn(machine.files, "S:\\a");
  });
  EXPECT_THAT(names, ElementsAre("uno.txt", "due.txt", "Prima.txt", "poi.txt"));
}

TEST(AnOverlaysTree, LeavesNothingUnderTheOldNameOfAFile) {
  const Names names = onBoth([](machine::Machine& machine) -> Names {
    EXPECT_EQ(machine.files.moveFile("S:\\a\\uno.txt", "S:\\b\\uno.txt"), 0U);
    EXPECT_EQ(machine.files.write("S:\\a\\nuovo.txt", "nuovo"), 0U);
    EXPECT_EQ(machine.files.replaceFile("S:\\a\\nuovo.txt", "S:\\a\\due.txt"), 0U);
    EXPECT_EQ(textOf(machine.files, "S:\\a\\due.txt"), "nuovo");
    return namesIn(machine.files, "S:\\a");
  });
  EXPECT_THAT(names, ElementsAre("due.txt"));
}

TEST(AnOverlaysTree, AFolderWhoseAttributesChangeKeepsWhatIsInIt) {
  const Names names = onBoth([](machine::Machine& machine) -> Names {
    EXPECT_EQ(machine.files.setReadOnly("S:\\a", true), 0U);
    EXPECT_EQ(machine.files.write("S:\\a\\nuovo.txt", "x"), 0U);
    return namesIn(machine.files, "S:\\a");
  });
  EXPECT_THAT(names, ElementsAre("uno.txt", "due.txt", "nuovo.txt"));
}

TEST(AnOverlaysTree, AReadOnlyFileIsRenamedButNotReplaced) {
  using Codes = std::vector<SystemCode>;
  const Codes codes = onBoth([](machine::Machine& machine) -> Codes {
    machine.files.setReadOnly("S:\\a\\uno.txt", true);
    return {machine.files.replaceFile("S:\\a\\due.txt", "S:\\a\\uno.txt"),
            machine.files.moveFile("S:\\a\\uno.txt", "S:\\a\\tre.txt")};
  });
  EXPECT_THAT(codes, ElementsAre(5U, 0U));
}

TEST(AnOverlaysTree, AFolderThatIsMadeAnewHasNothingOfTheOldOne) {
  const std::string value = onBoth([](machine::Machine& machine) -> std::string {
    EXPECT_EQ(machine.files.removeFile("S:\\b\\x.ini"), 0U);
    EXPECT_EQ(machine.files.removeFolder("S:\\b"), 0U);
    EXPECT_EQ(machine.files.makeFolder("S:\\b"), 0U);
    EXPECT_THAT(namesIn(machine.files, "S:\\b"), IsEmpty());
    return machine.profiles.readValue("s", "k", "manca", 20, "S:\\b\\x.ini");
  });
  EXPECT_EQ(value, "manca");
}

TEST(AnOverlaysTree, FilesMoveOutOfAFolderThatDoesNotTellItsVolume) {
  using Codes = std::vector<SystemCode>;
  const Codes codes = onBoth([](machine::Machine& machine) -> Codes {
    return {machine.files.moveFile("S:\\a\\uno.txt", "S:\\b\\uno.txt"),
            machine.files.moveFile("S:\\b\\x.ini", "S:\\a\\x.ini"),
            machine.files.moveFile("S:\\a\\due.txt", "C:\\due.txt")};
  });
  EXPECT_THAT(codes, ElementsAre(0U, 0U, 17U));
  sim::SimMachine below;
  furnish(below);
  below.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool refused = call.text == "files.identify S:\\a";
    return refused ? std::optional(system_code::kAccessDenied) : std::nullopt;
  });
  OverlaidMachine over(below);
  EXPECT_EQ(over.files().moveFile("S:\\a\\uno.txt", "S:\\b\\uno.txt"), 0U);
  EXPECT_EQ(over.files().moveFile("S:\\b\\x.ini", "S:\\a\\x.ini"), 0U);
}

TEST(AnOverlaysTree, AConcealedFileIsReplacedByAConcealedOneOnly) {
  sim::SimMachine below;
  furnish(below);
  below.diskOf("S:\\").setConcealed("S:\\a\\uno.txt");
  OverlaidMachine over(below);
  Files& files = over.files();
  EXPECT_EQ(files.write("S:\\a\\uno.txt", "x"), 5U);
  EXPECT_EQ(files.copyFile("S:\\a\\due.txt", "S:\\a\\uno.txt"), 5U);
  EXPECT_EQ(files.copyFile("S:\\a\\uno.txt", "S:\\a\\due.txt"), 0U);
  EXPECT_EQ(files.copyFile("S:\\a\\uno.txt", "S:\\a\\due.txt"), 0U);
  EXPECT_EQ(textOf(files, "S:\\a\\due.txt"), "uno");
}

/// A clock of a place three hours east of universal time.
class EasternClock : public machine::Clock {
 public:
  explicit EasternClock(machine::Clock& universal) : universal_(universal) {}

  machine::LocalTime now() override { return {2026, 3, 1, 1, 30, 15}; }
  machine::LocalTime localTime(std::uint64_t moment) override {
    constexpr std::uint64_t kThreeHours = 3ULL * 3600 * 10'000'000;
    return universal_.localTime(moment + kThreeHours);
  }
  void pause(std::uint32_t milliseconds) override { universal_.pause(milliseconds); }

 private:
  machine::Clock& universal_;
};

TEST(AnOverlaysTree, DatesWhatIsWrittenByTheClockOfItsPlace) {
  sim::SimMachine below;
  furnish(below);
  EasternClock clock(below.clock());
  const machine::Machine& whole = below.machine();
  const machine::Machine eastern{
      whole.files,   whole.profiles, whole.registry,   whole.processes, whole.environment,
      whole.system,  clock,          whole.locale,     whole.versions,  whole.configuration,
      whole.support, whole.desktop,  whole.automation, whole.exclusion};
  overlay::Overlay over(eastern, {.privateParent = "C:\\Users\\mario\\Temp"});
  ASSERT_EQ(over.machine().files.write("S:\\a\\uno.txt", "x"), 0U);
  FileFacts facts;
  ASSERT_EQ(over.machine().files.look("S:\\a\\uno.txt", facts), 0U);
  EXPECT_EQ(clock.localTime(facts.modified), clock.now());
  EXPECT_EQ(below.clock().localTime(facts.modified), (machine::LocalTime{2026, 2, 28, 22, 30, 15}));
}

}  // namespace
}  // namespace trelv::tests
