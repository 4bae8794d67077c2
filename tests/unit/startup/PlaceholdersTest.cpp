#include <gtest/gtest.h>

#include <utility>

#include "startup/modProdTrelvLibrary.h"
#include "support/RealProgram.h"

namespace trelv::modProdTrelvLibrary {
namespace {

struct StoredValue {
  const char* placeholder;
  const char* key;
  const char* value;
};
const std::vector<StoredValue> kStoredValues{
    {"%RRAPPDIR%", "Software\\AutoSetupInfo\\GASTRIM", "ProgramPath"},
    {"%BNAPPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Brundel", "Path"},
    {"%OLV2007APPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2007",
     "InstallLocation"},
    {"%OLV2008APPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\uninstall\\Olvamar2008",
     "InstallLocation"},
    {"%KXKAPPDIR%", "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Kexora.exe", "Path"}};

class Placeholders : public testing::Test {
 protected:
  std::string replaced(std::string text, const std::string& setupPath = "S:\\setup",
                       const std::string& workPath = "S:\\work",
                       const std::string& clientPath = "C:\\client") {
    const std::string answer =
        ReplacePlaceholders(program_, text, {setupPath, workPath, clientPath});
    EXPECT_EQ(answer, text) << "the text is rewritten in place and returned";
    return answer;
  }
  /// The registry value behind the placeholder of this index in kStoredValues.
  void store(std::size_t index, const std::string& text) {
    machine_.registry().setText(machine::Hive::LocalMachine, kStoredValues[index].key,
                                kStoredValues[index].value, text);
  }
  void setProgramFiles(const std::string& folder) {
    machine_.system().setShellFolder(machine::kProgramFilesFolder, folder);
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(Placeholders, AreReplacedAtEveryOccurrenceInTheirExactCase) {
  setProgramFiles("D:\\Programmi");
  for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
           {"C:\\a\\b.exe -q", "C:\\a\\b.exe -q"},
           {"", ""},
           {"%PATHSETUP% %PATHWORK% %PATHCLIENT% %PATHSETUP%",
            "S:\\setup S:\\work C:\\client S:\\setup"},
           {"%PathSetup% %programfiles%", "%PathSetup% %programfiles%"},
           {"%PROGRAMFILES%\\x.exe", "D:\\Programmi\\x.exe"},
           {"setup.exe -%INSTALLTYPE%", "setup.exe -rete"},
           {"100%% and 50%%", "100 and 50"},
           {"%%PATHWORK%", "%S:\\work"}}) {
    EXPECT_EQ(expected, replaced(text));
  }
}

TEST_F(Placeholders, SlashesBecomeBackslashesInSwitchesToo) {
  EXPECT_EQ("C:\\a\\b.exe \\s \\v", replaced("C:/a/b.exe /s /v"));
}

TEST_F(Placeholders, SlashesOfInsertedPathsStay) {
  EXPECT_EQ("C:\\Lumo\\D:/x", replaced("C:/Lumo/%PATHSETUP%", "D:/x"));
}

TEST_F(Placeholders, DoublePercentOfAnInsertedPathIsRemovedToo) {
  EXPECT_EQ("S:\\Lumo2026\\setup.exe", replaced("%PATHSETUP%\\setup.exe", "S:\\Lumo%%2026"));
}

TEST_F(Placeholders, RegistryValuesAreInsertedAsTheyAreOrAsEmptyText) {
  for (std::size_t i = 0; i < kStoredValues.size(); ++i) {
    const std::string text = std::string("[") + kStoredValues[i].placeholder + "]";
    EXPECT_EQ("[]", replaced(text));
    store(i, " C:/Altro\\ ");
    EXPECT_EQ("[ C:/Altro\\ ]", replaced(text));
  }
}

TEST_F(Placeholders, RegistryIsReadOnlyForAPlaceholderThatIsThere) {
  replaced("%PATHSETUP%\\setup.exe %INSTALLTYPE%");
  EXPECT_EQ(0U, machine_.callLog().countOf("registry."));
  replaced("%RRAPPDIR% and %RRAPPDIR%");
  EXPECT_EQ(1U, machine_.callLog().countOf("registry.openKey"));
}

TEST_F(Placeholders, EachStepSeesWhatTheStepsBeforeItInserted) {
  setProgramFiles("%INSTALLTYPE%");
  EXPECT_EQ("rete", replaced("%PATHSETUP%", "%PATHWORK%", "%PATHCLIENT%", "%PROGRAMFILES%"));
  EXPECT_EQ("rete", replaced("%PATHSETUP%", "%INSTALLTYPE%"));
  for (std::size_t i = 0; i + 1 < kStoredValues.size(); ++i) {
    store(i, kStoredValues[i + 1].placeholder);
  }
  store(kStoredValues.size() - 1, "a%%b");
  EXPECT_EQ("ab", replaced("%PATHSETUP%", "%RRAPPDIR%"));
}

TEST_F(Placeholders, NoStepSeesWhatALaterOneInserted) {
  EXPECT_EQ("%PATHSETUP%", replaced("%PATHWORK%", "s", "%PATHSETUP%"));
  store(0, "%PATHSETUP% %INSTALLTYPE% %PROGRAMFILES%");
  EXPECT_EQ("%PATHSETUP% %INSTALLTYPE% %PROGRAMFILES%", replaced("%RRAPPDIR%"));
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
