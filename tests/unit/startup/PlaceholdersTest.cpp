#include <gtest/gtest.h>

#include <string>

#include "startup/modProdTrelvLibrary.h"
#include "support/RealProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

constexpr auto kMachineWide = machine::Hive::LocalMachine;

class Placeholders : public ::testing::Test {
 protected:
  std::string replaced(std::string text) {
    const std::string answer =
        ReplacePlaceholders(program_, text, "S:\\setup", "S:\\work", "C:\\client");
    EXPECT_EQ(answer, text) << "the text is rewritten in place and returned";
    return answer;
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(Placeholders, TextWithoutPlaceholdersStays) {
  EXPECT_EQ("C:\\a\\b.exe -q", replaced("C:\\a\\b.exe -q"));
  EXPECT_EQ("", replaced(""));
}

TEST_F(Placeholders, SlashesBecomeBackslashesInSwitchesToo) {
  EXPECT_EQ("C:\\a\\b.exe \\s \\v", replaced("C:/a/b.exe /s /v"));
}

TEST_F(Placeholders, PathsAreInsertedAtEveryOccurrence) {
  EXPECT_EQ("S:\\setup S:\\work C:\\client S:\\setup",
            replaced("%PATHSETUP% %PATHWORK% %PATHCLIENT% %PATHSETUP%"));
}

TEST_F(Placeholders, PlaceholdersAreCaseSensitive) {
  EXPECT_EQ("%PathSetup% %programfiles%", replaced("%PathSetup% %programfiles%"));
}

TEST_F(Placeholders, ProgramFilesIsTheShellsFolder) {
  machine_.system().setShellFolder(machine::kProgramFilesFolder, "D:\\Programmi");
  EXPECT_EQ("D:\\Programmi\\x.exe", replaced("%PROGRAMFILES%\\x.exe"));
}

TEST_F(Placeholders, InstallTypeIsRete) {
  EXPECT_EQ("setup.exe -rete", replaced("setup.exe -%INSTALLTYPE%"));
}

TEST_F(Placeholders, RegistryValuesAreInserted) {
  machine_.registry().setText(kMachineWide, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath",
                              "C:\\Gastrim");
  machine_.registry().setText(kMachineWide,
                              "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Brundel",
                              "Path", "C:\\Brundel");
  machine_.registry().setText(
      kMachineWide, "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2007",
      "InstallLocation", "C:\\Olv7");
  machine_.registry().setText(
      kMachineWide, "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2008",
      "InstallLocation", "C:\\Olv8");
  machine_.registry().setText(kMachineWide,
                              "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Kexora.exe",
                              "Path", "C:\\Kexora");
  EXPECT_EQ("C:\\Gastrim", replaced("%RRAPPDIR%"));
  EXPECT_EQ("C:\\Brundel", replaced("%BNAPPDIR%"));
  EXPECT_EQ("C:\\Olv7", replaced("%OLV2007APPDIR%"));
  EXPECT_EQ("C:\\Olv8", replaced("%OLV2008APPDIR%"));
  EXPECT_EQ("C:\\Kexora", replaced("%KXKAPPDIR%"));
}

TEST_F(Placeholders, RegistryValuesAreInsertedAsTheyAre) {
  machine_.registry().setText(kMachineWide, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath",
                              " C:/Gastrim\\ ");
  EXPECT_EQ("[ C:/Gastrim\\ ]", replaced("[%RRAPPDIR%]"));
}

TEST_F(Placeholders, MissingRegistryValueGivesEmptyText) {
  EXPECT_EQ("[]", replaced("[%RRAPPDIR%]"));
  EXPECT_EQ("[]", replaced("[%BNAPPDIR%]"));
  EXPECT_EQ("[]", replaced("[%OLV2007APPDIR%]"));
  EXPECT_EQ("[]", replaced("[%OLV2008APPDIR%]"));
  EXPECT_EQ("[]", replaced("[%KXKAPPDIR%]"));
}

TEST_F(Placeholders, RegistryIsReadOnlyForAPlaceholderThatIsThere) {
  replaced("%PATHSETUP%\\setup.exe %INSTALLTYPE%");
  EXPECT_EQ(0U, machine_.callLog().countOf("registry."));
  replaced("%RRAPPDIR% and %RRAPPDIR%");
  EXPECT_EQ(1U, machine_.callLog().countOf("registry.openKey"));
}

TEST_F(Placeholders, DoublePercentIsRemoved) {
  EXPECT_EQ("100 and 50", replaced("100%% and 50%%"));
}

TEST_F(Placeholders, DoublePercentOfAnInsertedPathIsRemovedToo) {
  std::string text = "%PATHSETUP%\\setup.exe";
  ReplacePlaceholders(program_, text, "S:\\Lumo%%2026", "", "");
  EXPECT_EQ("S:\\Lumo2026\\setup.exe", text);
}

TEST_F(Placeholders, DoublePercentBeforeAPlaceholderLeavesOnePercent) {
  EXPECT_EQ("%S:\\work", replaced("%%PATHWORK%"));
}

TEST_F(Placeholders, SlashesOfInsertedPathsStay) {
  std::string text = "C:/Lumo/%PATHSETUP%";
  ReplacePlaceholders(program_, text, "D:/x", "", "");
  EXPECT_EQ("C:\\Lumo\\D:/x", text);
}

TEST_F(Placeholders, EachStepSeesWhatTheStepBeforeItInserted) {
  machine_.system().setShellFolder(machine::kProgramFilesFolder, "%INSTALLTYPE%");
  std::string paths = "%PATHSETUP%";
  ReplacePlaceholders(program_, paths, "%PATHWORK%", "%PATHCLIENT%", "%PROGRAMFILES%");
  EXPECT_EQ("rete", paths);

  const std::string system = "Software\\Microsoft\\Windows\\CurrentVersion\\";
  sim::SimRegistry& registry = machine_.registry();
  registry.setText(kMachineWide, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath", "%BNAPPDIR%");
  registry.setText(kMachineWide, system + "App Paths\\Brundel", "Path", "%OLV2007APPDIR%");
  registry.setText(kMachineWide, system + "uninstall\\Olvamar2007", "InstallLocation",
                   "%OLV2008APPDIR%");
  registry.setText(kMachineWide, system + "uninstall\\Olvamar2008", "InstallLocation",
                   "%KXKAPPDIR%");
  registry.setText(kMachineWide, system + "App Paths\\Kexora.exe", "Path", "a%%b");
  std::string values = "%PATHSETUP%";
  ReplacePlaceholders(program_, values, "%RRAPPDIR%", "w", "c");
  EXPECT_EQ("ab", values);
}

TEST_F(Placeholders, ValuesOfTheRegistryAreNoPathsAnyMore) {
  machine_.registry().setText(kMachineWide, "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath",
                              "%PATHSETUP% %INSTALLTYPE% %PROGRAMFILES%");
  EXPECT_EQ("%PATHSETUP% %INSTALLTYPE% %PROGRAMFILES%", replaced("%RRAPPDIR%"));
}

TEST_F(Placeholders, InsertedTextIsSeenByLaterStepsOnly) {
  std::string later = "%PATHSETUP%";
  ReplacePlaceholders(program_, later, "%INSTALLTYPE%", "w", "c");
  EXPECT_EQ("rete", later);
  std::string earlier = "%PATHWORK%";
  ReplacePlaceholders(program_, earlier, "s", "%PATHSETUP%", "c");
  EXPECT_EQ("%PATHSETUP%", earlier);
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
