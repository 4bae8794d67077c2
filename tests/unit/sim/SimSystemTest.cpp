#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using machine::SupportAnswer;
using namespace system_code;

VersionRecord queried(SimMachine& machine, std::uint32_t size) {
  VersionRecord record;
  record.size = size;
  EXPECT_TRUE(machine.system().queryVersion(record));
  return record;
}

TEST(SimSystem, ReportsTheChosenWindows) {
  SimMachine machine;
  machine.setEdition(WindowsEdition::Win2008R2);
  const VersionRecord extended = queried(machine, kExtendedVersionRecord);
  EXPECT_EQ(extended.major, 6U);
  EXPECT_EQ(extended.minor, 1U);
  EXPECT_EQ(extended.platform, 2U);
  EXPECT_EQ(extended.productType, 3);

  machine.setEdition(WindowsEdition::Win98);
  const VersionRecord shortForm = queried(machine, kShortVersionRecord);
  EXPECT_EQ(shortForm.major, 4U);
  EXPECT_EQ(shortForm.minor, 10U);
  EXPECT_EQ(shortForm.platform, 1U);
  EXPECT_EQ(machine.system().versionQueries(), 2U);
}

TEST(SimSystem, AFailedVersionQueryLeavesTheRecord) {
  SimMachine machine;
  VersionRecord record;
  record.size = 150;
  EXPECT_FALSE(machine.system().queryVersion(record));
  record.size = kShortVersionRecord;
  machine.system().failVersionQuery();
  EXPECT_FALSE(machine.system().queryVersion(record));
  EXPECT_EQ(record.platform, 0U);
}

TEST(SimSystem, ATerminalServerHasTheTerminalSuiteWithoutTheSingleUserOne) {
  SimMachine machine;
  machine.setEdition(WindowsEdition::Win2003TerminalServer);
  EXPECT_TRUE(machine.system().suiteIncludes(0x10));
  EXPECT_FALSE(machine.system().suiteIncludes(0x100));
  machine.setEdition(WindowsEdition::Win2003);
  EXPECT_TRUE(machine.system().suiteIncludes(0x110));
}

TEST(SimSystem, Nt4TerminalServersAreNamedInTheRegistryAndThereOnly) {
  SimMachine machine;
  const std::string key = "System\\CurrentControlSet\\Control\\ProductOptions";
  machine.setEdition(WindowsEdition::NT4TerminalServer);
  EXPECT_EQ(machine.registry().text(machine::Hive::LocalMachine, key, "ProductSuite"),
            "Terminal Server");
  machine.setEdition(WindowsEdition::NT4);
  EXPECT_FALSE(machine.registry().text(machine::Hive::LocalMachine, key, "ProductSuite"));
}

TEST(SimSystem, TheTemporaryFolderFollowsTheVariablesInTheirOrder) {
  SimMachine machine;
  std::string folder;
  machine.environment().put("TMP", "C:/a");
  ASSERT_EQ(machine.system().temporaryFolder(folder), kSuccess);
  EXPECT_EQ(folder, "C:\\a\\");
  machine.environment().remove("TMP");
  machine.environment().put("TEMP", "C:\\b\\");
  ASSERT_EQ(machine.system().temporaryFolder(folder), kSuccess);
  EXPECT_EQ(folder, "C:\\b\\");
  machine.environment().remove("TEMP");
  ASSERT_EQ(machine.system().temporaryFolder(folder), kSuccess);
  EXPECT_EQ(folder, "C:\\Users\\mario\\");
  machine.environment().remove("USERPROFILE");
  ASSERT_EQ(machine.system().temporaryFolder(folder), kSuccess);
  EXPECT_EQ(folder, "C:\\WINDOWS\\");
}

TEST(SimSystem, TheUserNameNeedsRoomForItsNul) {
  SimMachine machine;
  std::string name;
  EXPECT_EQ(machine.system().userName(5, name), kInsufficientBuffer);
  EXPECT_EQ(machine.system().userName(6, name), kSuccess);
  EXPECT_EQ(name, "mario");
}

TEST(SimEnvironment, NamesAreFoundInAnyCaseAndOddOnesRefused) {
  SimMachine machine;
  std::string value;
  EXPECT_TRUE(machine.environment().set("Kx-Dir", "Ω€"));
  EXPECT_TRUE(machine.environment().get("KX-DIR", value));
  EXPECT_EQ(value, "?€");
  EXPECT_FALSE(machine.environment().set("", "x"));
  EXPECT_FALSE(machine.environment().set("a=b", "x"));
  EXPECT_FALSE(machine.environment().get("missing", value));
}

TEST(SimLocale, WritesItalianAndEnglish) {
  SimLocale locale;
  const machine::LocalTime time{2009, 3, 5, 13, 7, 0};
  EXPECT_EQ(locale.shortDate(time) + " " + locale.longTime(time), "05/03/2009 13:07:00");
  EXPECT_EQ(locale.monthName(3), "marzo");
  EXPECT_EQ(locale.truthText(false), "Falso");
  locale.setLanguage(Language::English);
  EXPECT_EQ(locale.shortDate(time) + " " + locale.longTime(time), "3/5/2009 1:07:00 PM");
  EXPECT_EQ(locale.longTime({2009, 3, 5, 0, 0, 1}), "12:00:01 AM");
}

TEST(SimLocale, EveryAnsiByteComesBack) {
  SimLocale locale;
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  EXPECT_EQ(locale.toAnsi(locale.fromAnsi(bytes)), bytes);
  EXPECT_EQ(locale.fromAnsi("\x80\x9F\xE8"), "€Ÿè");
  EXPECT_EQ(locale.toAnsi("Ω"), "?");
}

TEST(SimConfigurationLibrary, AnswersValuesAndTheCodesOfWhatIsMissing) {
  SimMachine machine;
  machine::ConfigurationLibrary& library = machine.machine().configuration;
  machine.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", "S:\\è");
  std::string buffer(10, '\0');
  EXPECT_EQ(library.getParameter("system", "complementary_products", "INTEGRATION", "path", "d", 10,
                                 buffer),
            0);
  EXPECT_EQ(buffer, std::string("S:\\è") + std::string(6, '\0'));

  buffer.assign(3, '\0');
  EXPECT_EQ(library.getParameter("DOVRA", "a", "b", "c", "default", 3, buffer), -3001);
  EXPECT_EQ(buffer, "def");
  EXPECT_EQ(library.getParameter("SYSTEM", "a", "b", "c", "", 3, buffer), -3002);
  EXPECT_EQ(library.getParameter("SYSTEM", "Complementary_Products", "b", "c", "", 3, buffer),
            -3003);
  EXPECT_EQ(
      library.getParameter("SYSTEM", "Complementary_Products", "Integration", "c", "", 3, buffer),
      -3004);
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

TEST(SimVersionResources, TellsMissingFromWithout) {
  SimMachine machine;
  machine::FileVersion version{};
  machine.putFile("C:\\a.dll", "MZ");
  EXPECT_EQ(machine.machine().versions.read("C:\\no.dll", version), kFileNotFound);
  EXPECT_EQ(machine.machine().versions.read("C:\\a.dll", version), kResourceDataNotFound);
  machine.setFileVersion("C:\\a.dll", {3, 20, 30, 0});
  EXPECT_EQ(machine.machine().versions.read("C:\\A.dll", version), kSuccess);
  EXPECT_EQ(version, (machine::FileVersion{3, 20, 30, 0}));
}

}  // namespace
}  // namespace trelv::sim
