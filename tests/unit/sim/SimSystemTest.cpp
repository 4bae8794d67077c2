#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using machine::SupportAnswer;
using namespace system_code;

class SimSystemTest : public testing::Test {
 protected:
  VersionRecord queried(std::uint32_t size) {
    VersionRecord record;
    record.size = size;
    EXPECT_TRUE(system_.queryVersion(record));
    return record;
  }

  SimMachine machine_;
  SimSystem& system_ = machine_.system();
};

TEST_F(SimSystemTest, ReportsTheChosenWindows) {
  machine_.setEdition(WindowsEdition::Win2008R2);
  const VersionRecord extended = queried(kExtendedVersionRecord);
  EXPECT_EQ(extended.major, 6U);
  EXPECT_EQ(extended.minor, 1U);
  EXPECT_EQ(extended.platform, 2U);
  EXPECT_EQ(extended.productType, 3);

  machine_.setEdition(WindowsEdition::Win98);
  const VersionRecord shortForm = queried(kShortVersionRecord);
  EXPECT_EQ(shortForm.major, 4U);
  EXPECT_EQ(shortForm.minor, 10U);
  EXPECT_EQ(shortForm.platform, 1U);
  EXPECT_EQ(system_.versionQueries(), 2U);

  VersionRecord record;
  record.size = kShortVersionRecord;
  system_.failVersionQuery();
  EXPECT_FALSE(system_.queryVersion(record));
  EXPECT_EQ(record.platform, 0U);
}

TEST_F(SimSystemTest, ATerminalServerHasTheTerminalSuiteWithoutTheSingleUserOne) {
  machine_.setEdition(WindowsEdition::Win2003TerminalServer);
  EXPECT_TRUE(system_.suiteIncludes(0x10));
  EXPECT_FALSE(system_.suiteIncludes(0x100));
  machine_.setEdition(WindowsEdition::Win2003);
  EXPECT_TRUE(system_.suiteIncludes(0x110));
}

TEST_F(SimSystemTest, Nt4TerminalServersAreNamedInTheRegistryAndThereOnly) {
  const auto suite = [&] {
    return machine_.registry().text(machine::Hive::LocalMachine,
                                    "System\\CurrentControlSet\\Control\\ProductOptions",
                                    "ProductSuite");
  };
  machine_.setEdition(WindowsEdition::NT4TerminalServer);
  EXPECT_EQ(suite(), "Terminal Server");
  machine_.setEdition(WindowsEdition::NT4);
  EXPECT_FALSE(suite());
}

TEST_F(SimSystemTest, TheTemporaryFolderFollowsTheVariablesInTheirOrder) {
  machine_.environment().put("TMP", "C:/a");
  machine_.environment().put("TEMP", "C:\\b\\");
  // Each counts where those before it are missing.
  const std::pair<const char*, const char*> rows[]{{"TMP", "C:\\a\\"},
                                                   {"TEMP", "C:\\b\\"},
                                                   {"USERPROFILE", "C:\\Users\\mario\\"},
                                                   {"", "C:\\WINDOWS\\"}};
  for (const auto& [variable, expected] : rows) {
    std::string folder;
    ASSERT_EQ(system_.temporaryFolder(folder), kSuccess);
    EXPECT_EQ(folder, expected);
    machine_.environment().remove(variable);
  }
}

TEST_F(SimSystemTest, VariablesAreFoundInAnyCaseAndHoldTextOfTheCodePage) {
  std::string value;
  EXPECT_TRUE(machine_.environment().set("Kx-Dir", "Ω€"));
  EXPECT_TRUE(machine_.environment().get("KX-DIR", value));
  EXPECT_EQ(value, "?€");
}

TEST(SimLocale, WritesEnglishToo) {
  SimLocale locale;
  const machine::LocalTime time{2009, 3, 5, 13, 7, 0};
  EXPECT_EQ(locale.shortDate(time) + " " + locale.longTime(time), "05/03/2009 13:07:00");
  locale.setLanguage(Language::English);
  EXPECT_EQ(locale.shortDate(time) + " " + locale.longTime(time), "3/5/2009 1:07:00 PM");
  EXPECT_EQ(locale.longTime({2009, 3, 5, 0, 0, 1}), "12:00:01 AM");
}

TEST(SimConfigurationLibrary, AnswersValuesAndTheCodesOfWhatIsMissing) {
  SimMachine machine;
  machine.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", "S:\\è");
  struct {
    const char* product;
    const char* section;
    const char* key;
    const char* attribute;
    int code;
    std::string text;
  } const rows[]{
      {"system", "complementary_products", "INTEGRATION", "path", 0, "S:\\è"},
      {"DOVRA", "a", "b", "c", -3001, "default"},
      {"SYSTEM", "a", "b", "c", -3002, "default"},
      {"SYSTEM", "Complementary_Products", "b", "c", -3003, "default"},
      {"SYSTEM", "Complementary_Products", "Integration", "c", -3004, "default"},
  };
  for (const auto& row : rows) {
    std::string buffer(10, '\0');
    EXPECT_EQ(machine.machine().configuration.getParameter(row.product, row.section, row.key,
                                                           row.attribute, "default", 10, buffer),
              row.code);
    EXPECT_EQ(buffer.c_str(), row.text);
  }
  std::string buffer(3, '\0');
  machine.machine().configuration.getParameter("DOVRA", "a", "b", "c", "default", 3, buffer);
  EXPECT_EQ(buffer, "def");
}

TEST(SimConfigurationLibrary, ScriptedCodesComeFirst) {
  SimMachine machine;
  machine::ConfigurationLibrary& library = machine.machine().configuration;
  machine.configuration().put("P", "S", "K", "A", "v");
  machine.configuration().answerNext({-1000, -1000, 0});
  std::string buffer(3, '\0');
  EXPECT_EQ(library.getParameter("P", "S", "K", "A", "d", 3, buffer), -1000);
  EXPECT_EQ(library.getParameter("P", "S", "K", "A", "d", 3, buffer), -1000);
  EXPECT_EQ(buffer, std::string(3, '\0'));
  EXPECT_EQ(library.getParameter("P", "S", "K", "A", "d", 3, buffer), 0);
  EXPECT_EQ(buffer, std::string("v\0\0", 3));
  EXPECT_EQ(machine.configuration().gets(), 3U);

  machine.configuration().setCallable(false);
  EXPECT_THROW(library.getConfigPath(1, buffer), RuntimeError);
}

TEST(SimConfigurationLibrary, AnotherLibraryTakesItsPlace) {
  SimMachine machine;
  SimConfigurationLibrary other;
  other.setConfigPath("D:\\x");
  machine.useConfigurationLibrary(other);
  std::string buffer(6, '\0');

  EXPECT_EQ(machine.machine().configuration.getConfigPath(1, buffer), 0);
  EXPECT_EQ(buffer, std::string("D:\\x\0\0", 6));
  EXPECT_EQ(machine.calls(), (std::vector<std::string>{"configuration.getConfigPath 1"}));
}

TEST(SimSupportLibrary, IsAbsentUnlessScripted) {
  SimMachine machine;
  machine::SupportLibrary& library = machine.machine().support;
  std::string buffer(8, ' ');
  EXPECT_EQ(library.isAdministrator(), SupportAnswer::Absent);
  EXPECT_EQ(library.temporaryPath(buffer), SupportAnswer::Absent);
  EXPECT_EQ(machine.callCount(), 0U);

  machine.support().setAdministratorAnswer(SupportAnswer::No);
  machine.support().setTemporaryPath("C:\\t\\");
  EXPECT_EQ(library.isAdministrator(), SupportAnswer::No);
  EXPECT_EQ(library.temporaryPath(buffer), SupportAnswer::Yes);
  EXPECT_EQ(buffer, std::string("C:\\t\\\0  ", 8));
}

TEST(SimClock, APauseMovesTheClockAndWhatIsDueHappensInItsOrder) {
  SimClock clock;
  std::vector<int> happened;
  clock.after(1500, [&] { happened.push_back(2); });
  clock.after(500, [&] { happened.push_back(1); });
  clock.after(5000, [&] { happened.push_back(3); });
  clock.pause(400);
  EXPECT_TRUE(happened.empty());
  clock.pause(1100);
  EXPECT_EQ(happened, (std::vector<int>{1, 2}));
  EXPECT_EQ(clock.now().second, 1);
  clock.pause(600);
  EXPECT_EQ(clock.now().second, 2);
  EXPECT_EQ(clock.paused(), 2100U);
  clock.advance(60);
  EXPECT_EQ(happened.back(), 3);
  EXPECT_EQ(clock.paused(), 2100U);
}

TEST(SimClock, WhoeverSleepsForTheProgramLetsTimePass) {
  SimClock clock;
  std::vector<std::uint32_t> slept;
  clock.setSleeper([&](std::uint32_t milliseconds) {
    slept.push_back(milliseconds);
    clock.pass(5000);
  });
  clock.pause(400);
  clock.wait(100);
  EXPECT_EQ(slept, (std::vector<std::uint32_t>{400, 100}));
  EXPECT_EQ(clock.now().second, 10);
  EXPECT_EQ(clock.paused(), 400U) << "waiting is no pause of the program's own";
}

}  // namespace
}  // namespace trelv::sim
