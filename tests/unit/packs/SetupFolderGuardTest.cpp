#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "base/Text.h"
#include "packs/ProductRemoval.h"
#include "packs/SetupFolderGuard.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::FolderOfCommand;
using modProdTrelvManager::IsRemovableSetupFolder;
using testing::HasSubstr;

class Guard : public testing::Test {
 protected:
  Guard() {
    installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
    installation_.putServerRecord(deliveredVersions());
  }

  bool removable(const std::string& folder, const std::string& server = Installation::kServer) {
    return IsRemovableSetupFolder(station_.program(), server, folder);
  }
  std::string folderOf(const std::string& command) {
    return FolderOfCommand(station_.program(), command);
  }
  void put(const std::string& path) { installation_.share().putProgram(path); }

  Installation installation_;
  Station station_{installation_};
};

// --- What may go

TEST_F(Guard, FoldersOfOneProductMayGo) {
  station_.machine().mount("\\\\srv\\share");
  for (const char* const folder :
       {"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb", "S:\\Lumo\\mv\\zb", "S:\\Lumo\\prg\\zb",
        "S:\\Lumo\\prg\\com\\zb", "S:\\Lumo\\prg\\etc\\zb", "S:\\Lumo\\zb", "S:\\Altro",
        "D:\\Setup", "C:\\Program Files\\Lumo", "C:\\Lumo\\Client\\zb", "C:\\WINDOWS2",
        "\\\\srv\\share\\zb", "S:\\Lumo2", "S:\\Lumo\\prgx", "S:/Lumo/mv/zb/",
        "S:\\Lumo\\mv\\x\\..\\zb", "S:\\Lumo\\.\\mv\\zb", "S:\\LUMO\\MV\\ZB\\",
        "S:\\Lumo\\mv\\zb\\prg"}) {
    EXPECT_TRUE(removable(folder)) << folder;
  }
}

// --- What stays

TEST_F(Guard, TheFolderOfAllProductsAndTheManagersOwnStay) {
  const std::string manager = station_.machine().system().executablePath();
  const std::string folder = manager.substr(0, manager.rfind('\\'));
  for (const std::string& kept : {std::string("S:\\Lumo\\mv"), std::string("s:/lumo/MV/"), folder,
                                  upperCase(folder) + "\\", folder + "\\zb\\.."}) {
    EXPECT_FALSE(removable(kept)) << kept;
  }
  EXPECT_TRUE(removable(folder + "\\zb"));
  EXPECT_TRUE(removable(folder + "2"));
}

TEST_F(Guard, TheClientCopyAndWhatHoldsItStay) {
  for (const char* const kept :
       {"S:\\Lumo\\prg\\com\\bin", "S:\\Lumo\\prg\\com\\bin\\cpy",
        "S:\\Lumo\\prg\\com\\bin\\cpy\\client", "\\\\srv\\dati\\prg\\com\\bin\\cpy\\client"}) {
    EXPECT_FALSE(removable(kept)) << kept;
  }
  EXPECT_TRUE(removable("S:\\Lumo\\prg\\com\\bin\\zb"));
  EXPECT_TRUE(removable("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\zb"));
}

TEST_F(Guard, TheFolderOfAllProductsStaysWithoutACatalogueToo) {
  installation_.share().removeTree(Installation::kCatalogue);
  EXPECT_FALSE(removable("S:\\Lumo\\mv"));
  EXPECT_TRUE(removable("S:\\Lumo\\mv\\zb"));
}

TEST_F(Guard, EmptyAndRelativePathsStay) {
  for (const char* const folder : {"", " ", "zb", "zb\\setup", "..\\zb", ".", "\\Lumo\\mv\\zb",
                                   "S:Lumo\\mv\\zb", "S:", "/Lumo/mv/zb", "\\", "C:zb"}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
}

TEST_F(Guard, RootsStay) {
  for (const char* const folder :
       {"S:\\", "D:\\", "s:/", "S:\\\\", "S:\\.", "S:\\Lumo\\..", "S:\\a\\..\\..", "\\\\srv\\share",
        "\\\\srv\\share\\", "\\\\srv", "\\\\", "//srv/share", "\\\\srv\\share\\x\\.."}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
}

TEST_F(Guard, WindowsAndWhatHoldsOrLiesInItStays) {
  station_.machine().system().setWindowsFolder("C:\\Sistema\\WINDOWS");
  for (const char* const folder :
       {"C:\\Sistema\\WINDOWS", "c:\\sistema\\windows\\", "C:\\Sistema", "C:\\Sistema\\Windows\\zb",
        "C:\\sistema\\WINDOWS\\system32\\a\\b", "C:/Sistema/Windows/system32",
        "C:\\Sistema\\x\\..\\WINDOWS"}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
  EXPECT_TRUE(removable("C:\\Sistema\\zb"));
}

TEST_F(Guard, WindowsFolderOfTheUserStaysToo) {
  station_.program().state.startup.terminalServer = true;
  station_.machine().environment().put("USERPROFILE", "C:\\Users\\mario");
  EXPECT_FALSE(removable("C:\\Users\\mario\\windows"));
  EXPECT_FALSE(removable("C:\\Users\\mario\\windows\\zb"));
  EXPECT_FALSE(removable("C:\\Users\\mario"));
  EXPECT_FALSE(removable("C:\\WINDOWS"));
  EXPECT_FALSE(removable("C:\\WINDOWS\\system32\\zb"));
  EXPECT_TRUE(removable("C:\\Users\\mario\\zb"));
}

TEST_F(Guard, ProgramFilesItselfAndWhatHoldsItStays) {
  station_.machine().system().setShellFolder(38, "D:\\Base\\Programmi");
  EXPECT_FALSE(removable("D:\\Base\\Programmi"));
  EXPECT_FALSE(removable("d:/base/programmi/"));
  EXPECT_FALSE(removable("D:\\Base"));
  EXPECT_TRUE(removable("D:\\Base\\Programmi\\zb"));
}

TEST_F(Guard, BothProgramFilesOfA64BitWindowsStay) {
  station_.machine().system().setWow64(true);
  EXPECT_FALSE(removable("C:\\Program Files (x86)"));
  EXPECT_FALSE(removable("C:\\Program Files"));
  EXPECT_TRUE(removable("C:\\Program Files (x86)\\zb"));
}

TEST_F(Guard, ServerPathItsSharedFoldersAndWhatHoldsThemStay) {
  for (const char* const folder :
       {"S:\\Lumo", "S:\\Lumo\\prg", "S:\\Lumo\\prg\\com", "S:\\Lumo\\prg\\com\\setup",
        "S:\\Lumo\\prg\\com\\setup\\aggdovra", "S:\\Lumo\\prg\\etc", "S:\\Lumo\\prg\\tempterm"}) {
    EXPECT_FALSE(removable(folder)) << folder;
    EXPECT_FALSE(removable(std::string(folder) + "\\")) << folder;
    EXPECT_FALSE(removable(std::string(folder) + "\\\\")) << folder;
    EXPECT_FALSE(removable(folder, "S:\\Lumo\\")) << folder;
    EXPECT_FALSE(removable(folder, "s:/LUMO")) << folder;
  }
  EXPECT_FALSE(removable("D:\\Dati", "D:\\Dati\\Host\\Lumo"));
  EXPECT_FALSE(removable("D:\\Dati\\Host", "D:\\Dati\\Host\\Lumo"));
  EXPECT_TRUE(removable("D:\\Dati\\Altro", "D:\\Dati\\Host\\Lumo"));
}

TEST_F(Guard, OtherSpellingsOfAPathDoNotHelp) {
  for (const char* const folder :
       {"s:\\lumo\\PRG", "S:/Lumo/prg", "S:\\Lumo\\prg ", "S:\\Lumo\\prg.", "S:\\Lumo\\prg. .",
        "S:\\Lumo \\prg", "S:\\Lumo.\\prg", "S:\\Lumo\\.\\prg", "S:\\Lumo\\mv\\..\\prg",
        "S:\\Lumo\\mv\\zb\\..\\..\\prg\\com", "S:\\\\Lumo\\\\prg", " S:\\Lumo\\prg",
        "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\..", "S:\\..\\Lumo\\prg",
        "S:\\Lumo\\mv/../prg"}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
}

TEST_F(Guard, DevicePathsStreamsAndNamesOfPointsStay) {
  // Paths that can be looked at, as on Windows.
  for (const char* const device : {"\\\\?\\S:", "\\\\.\\S:", "\\\\?\\UNC"}) {
    station_.machine().mount(device);
  }
  for (const char* const folder :
       {"\\\\?\\S:\\Lumo\\mv\\zb", "\\\\.\\S:\\Lumo\\mv\\zb", "\\\\?\\UNC\\srv\\share\\zb",
        "S:\\Lumo\\mv\\zb:flusso", "S:\\Lumo\\mv\\...", "S:\\Lumo\\mv\\zb\\... "}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
}

TEST_F(Guard, AdministrativeSharesStay) {
  for (const char* const share : {"\\\\localhost\\C$", "\\\\localhost\\admin$", "\\\\srv\\D$"}) {
    station_.machine().mount(share);
  }
  EXPECT_FALSE(removable("\\\\localhost\\C$\\WINDOWS"));
  EXPECT_FALSE(removable("\\\\localhost\\admin$\\system32"));
  EXPECT_FALSE(removable("\\\\srv\\D$\\Lumo\\mv\\zb"));
}

TEST_F(Guard, ServersFoldersByTheirShareStayThoughTheServerPathNamesADrive) {
  station_.machine().mount("\\\\srv\\dati", installation_.sharedDisk());
  for (const char* const folder :
       {"\\\\srv\\dati\\Lumo", "\\\\srv\\dati\\Lumo\\prg", "\\\\SRV\\Dati\\lumo\\prg\\com",
        "\\\\srv\\dati\\Lumo\\prg\\com\\setup", "\\\\srv\\dati\\Lumo\\prg\\com\\setup\\aggdovra",
        "\\\\srv\\dati\\Lumo\\prg\\etc", "\\\\srv\\dati\\Lumo\\prg\\tempterm"}) {
    EXPECT_FALSE(removable(folder)) << folder;
  }
  EXPECT_TRUE(removable("\\\\srv\\dati\\Lumo\\mv\\zb"));
  EXPECT_FALSE(removable("S:\\Lumo\\prg", "\\\\srv\\dati\\Lumo"));
  EXPECT_TRUE(removable("S:\\Lumo\\mv\\zb", "\\\\srv\\dati\\Lumo"));
}

TEST_F(Guard, TheFolderOfAllProductsAndTheManagersOwnStayByOtherNamesToo) {
  station_.machine().mount("\\\\srv\\dati", installation_.sharedDisk());
  EXPECT_FALSE(removable("\\\\srv\\dati\\Lumo\\mv"));
  EXPECT_FALSE(removable("\\\\SRV\\dati\\lumo\\MV\\"));
  EXPECT_FALSE(removable("S:\\Lumo\\mv", "\\\\srv\\dati\\Lumo"));
  EXPECT_TRUE(removable("\\\\srv\\dati\\Lumo\\mv\\mv"));
  EXPECT_TRUE(removable("\\\\srv\\dati\\Altro\\mv"));
  station_.machine().diskOf("C:\\").putLink("C:\\Altro", "C:\\Lumo");
  EXPECT_FALSE(removable("C:\\Altro\\Programmi"));
  EXPECT_TRUE(removable("C:\\Altro\\Programmi2"));
}

TEST_F(Guard, FolderAboveTheServerPathIsKnownByTheShareToo) {
  Installation deep;
  deep.share().put("dati\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini", "[prod01]\r\n");
  station_.machine().mount("T:", deep.sharedDisk());
  station_.machine().mount("\\\\srv\\tutto", deep.sharedDisk());
  EXPECT_FALSE(removable("\\\\srv\\tutto\\dati", "T:\\dati\\Lumo"));
}

TEST_F(Guard, LinkToASharedFolderStays) {
  station_.machine().diskOf("C:\\").putLink("C:\\Collegamento", "S:\\Lumo");
  EXPECT_FALSE(removable("C:\\Collegamento"));
  EXPECT_FALSE(removable("C:\\Collegamento\\prg\\com"));
  EXPECT_FALSE(removable("C:\\Collegamento\\prg\\tempterm"));
  station_.machine().diskOf("C:\\").putLink("C:\\Versioni", "S:\\Lumo\\prg\\etc");
  EXPECT_FALSE(removable("C:\\Versioni")) << "the record of versions is in it";
}

TEST_F(Guard, ShortNameCountsAsEveryLongNameThatHasOne) {
  EXPECT_FALSE(removable("C:\\PROGRA~1"));
  EXPECT_FALSE(removable("C:\\progra~2\\"));
  EXPECT_TRUE(removable("C:\\PROGRA~1\\zb"));
  EXPECT_FALSE(removable("S:\\HOSTLU~1\\prg", "S:\\Host Lumo"));
  station_.machine().system().setWindowsFolder("C:\\Windows di prova");
  EXPECT_FALSE(removable("C:\\WINDOW~1\\system32"));
}

TEST_F(Guard, NothingGoesWhileTheSystemsFoldersCannotBeTold) {
  station_.machine().system().setWindowsFolder("");
  EXPECT_FALSE(removable("S:\\Lumo\\mv\\zb"));
  station_.machine().system().setWindowsFolder("C:\\WINDOWS");
  EXPECT_TRUE(removable("S:\\Lumo\\mv\\zb"));
  station_.machine().system().setShellFolder(38, "");
  EXPECT_FALSE(removable("S:\\Lumo\\mv\\zb"));
}

TEST_F(Guard, NothingGoesThatCannotBeLookedAt) {
  installation_.share().deny("S:\\Lumo\\mv\\zb");
  EXPECT_FALSE(removable("S:\\Lumo\\mv\\zb"));
  EXPECT_FALSE(removable("\\\\srv\\spento\\zb"));
}

TEST_F(Guard, NothingGoesWithoutAFullServerPath) {
  EXPECT_FALSE(removable("S:\\Lumo\\mv\\zb", ""));
  EXPECT_FALSE(removable("S:\\Lumo\\mv\\zb", "Lumo"));
}

// --- The folder of a command

TEST_F(Guard, FolderOfAQuotedCommandIsThatOfThePathInQuotes) {
  EXPECT_EQ(folderOf("\"S:\\Lumo\\mv\\z b\\unins.exe\" -s \"C:\\x y\\z.exe\""),
            "S:\\Lumo\\mv\\z b");
  EXPECT_EQ(folderOf("\"S:\\Lumo\\mv\\zb\\unins.exe"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf("  \"S:\\zb\\u.exe\""), "S:\\zb");
}

TEST_F(Guard, FolderOfAnUnquotedCommandWithoutBlanksIsItsParent) {
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\zb\\unins.exe"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf("S:/Lumo/mv/zb/unins"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf("unins.exe"), "");
  EXPECT_EQ(folderOf(""), "");
  EXPECT_EQ(folderOf("\"\""), "");
}

TEST_F(Guard, FolderOfAnUnquotedCommandWithBlanksIsThatOfTheFileThatIsThere) {
  put("S:\\Lumo\\mv\\z b\\un ins.exe");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins.exe -s a b"), "S:\\Lumo\\mv\\z b");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins -s"), "S:\\Lumo\\mv\\z b");
}

TEST_F(Guard, TheShortestBeginningThatIsAFileIsTheProgramAsForTheSystem) {
  put("S:\\Lumo\\mv\\z.exe");
  put("S:\\Lumo\\mv\\z b\\unins.exe");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.exe -s"), "S:\\Lumo\\mv");
}

TEST_F(Guard, FolderIsNoProgramThoughItsNameIsABeginning) {
  put("S:\\Lumo\\mv\\z b\\unins.exe");
  installation_.share().makeFolders("S:\\Lumo\\mv\\z");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.exe"), "S:\\Lumo\\mv\\z b");
}

TEST_F(Guard, OfAMissingProgramTheOnlyBeginningThatEndsLikeOneIsTaken) {
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.EXE -s a"), "S:\\Lumo\\mv\\z b");
  for (const char* const extension : {"bat", "cmd", "com", "exe"}) {
    EXPECT_EQ(folderOf(std::string("S:\\Lumo\\mv\\z b\\unins.") + extension), "S:\\Lumo\\mv\\z b")
        << extension;
  }
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins -s a"), "");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\a.com b\\unins.exe"), "");
}

TEST_F(Guard, CommandThatLostItsOuterQuotesEndsAtTheOneThatIsLeft) {
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.exe\" -s \"y z"), "S:\\Lumo\\mv\\z b");
}

// --- Generated removals: whatever the commands say, the shared folders survive

/// A way to write a path that the system reads as the same one.
std::string disguise(std::string path, std::mt19937& random) {
  const auto once = [&random](unsigned in) -> bool { return random() % in == 0; };
  std::string written;
  for (const char c : path) {
    if (c != '\\') {
      written += once(3) ? static_cast<char>(std::toupper(c)) : c;
      continue;
    }
    written += once(6) && written.size() > 3 ? "." : "";
    written += "\\";
    written += once(8) && written.size() > 3 ? ".\\" : "";
    written += once(8) && written.size() > 3 ? "nulla\\..\\" : "";
    written += once(10) && written.size() > 3 ? "\\" : "";
  }
  return written;
}

std::string generatedProgram(std::mt19937& random) {
  static const std::vector<std::string> kFolders{"S:\\Lumo",
                                                 "S:\\Lumo\\prg",
                                                 "S:\\Lumo\\prg\\com",
                                                 "S:\\Lumo\\prg\\com\\setup",
                                                 "S:\\Lumo\\prg\\com\\setup\\aggdovra",
                                                 "S:\\Lumo\\prg\\etc",
                                                 "S:\\Lumo\\prg\\tempterm",
                                                 "S:",
                                                 "\\\\srv\\dati",
                                                 "\\\\srv\\dati\\Lumo",
                                                 "\\\\srv\\dati\\Lumo\\prg\\com\\setup\\aggdovra",
                                                 "\\\\srv\\dati\\Lumo\\prg\\etc",
                                                 "\\\\srv\\dati\\Lumo\\prg\\tempterm",
                                                 "C:\\WINDOWS",
                                                 "C:\\WINDOWS\\system32",
                                                 "C:\\Program Files",
                                                 "C:",
                                                 "C:\\Collegamento",
                                                 "C:\\Collegamento\\prg",
                                                 "S:\\Lumo\\mv\\zb",
                                                 "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb",
                                                 "..\\..",
                                                 "S:\\Lumo\\mv\\zb\\..\\..",
                                                 "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\.."};
  static const std::vector<std::string> kNames{"u.exe", "un ins.exe", "u", "u.exe -s",
                                               "u.exe x.exe"};
  const std::string program = disguise(kFolders[random() % kFolders.size()], random) + "\\" +
                              kNames[random() % kNames.size()];
  switch (random() % 4) {
    case 0:
      return "\"" + program + "\" -s";
    case 1:
      return "\"" + program;
    case 2:
      return replaceAll(program, "\\", "/");
    default:
      return program;
  }
}

class NoProgress : public modProdTrelvManager::RemovalProgress {
 public:
  void begin(int) override {}
  void advance() override {}
  void finish() override {}
};

TEST(GeneratedRemovals, NeverTouchASharedFolder) {
  // The same paths at every run.
  std::mt19937 random(20261121);
  std::size_t deleted = 0;
  for (int round = 0; round < 400; ++round) {
    Installation installation;
    Station station(installation);
    sim::SimMachine& machine = station.machine();
    machine.mount("\\\\srv\\dati", installation.sharedDisk());
    machine.diskOf("C:\\").putLink("C:\\Collegamento", "S:\\Lumo");
    machine.putFile("C:\\Program Files\\Altro\\a.exe", "MZ");
    installation.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
    installation.putServerRecord(deliveredVersions());
    installation.share().put("S:\\Lumo\\prg\\tempterm\\agdv.lck", "16/11/2026");
    installation.share().put("S:\\Lumo\\mv\\zb\\a.dat", "x");
    installation.share().put("S:\\Lumo\\mv\\q2\\a.dat", "x");
    std::vector<std::string> commands;
    for (int i = 0; i < 3; ++i) {
      commands.push_back(generatedProgram(random));
    }
    installation.putConfiguration("zb.ini", configurationText({{"Remove", "", commands, {}}}));
    SCOPED_TRACE(commands[0] + " | " + commands[1] + " | " + commands[2]);
    const std::string windows = machine.diskOf("C:\\").tree("C:\\WINDOWS");
    NoProgress progress;
    RemoveProduct(station.program(), Installation::kServer, "S:\\Lumo", "C:\\Lumo\\Client", "ZB",
                  Side::Server, progress);
    EXPECT_TRUE(installation.share().fileExists(Installation::kCatalogue));
    EXPECT_TRUE(installation.share().fileExists("S:\\Lumo\\prg\\etc\\agdvver.ini"));
    EXPECT_TRUE(installation.share().fileExists("S:\\Lumo\\prg\\tempterm\\agdv.lck"));
    EXPECT_TRUE(installation.share().fileExists("S:\\Lumo\\mv\\q2\\a.dat"));
    EXPECT_EQ(machine.diskOf("C:\\").tree("C:\\WINDOWS"), windows);
    EXPECT_TRUE(machine.fileExists("C:\\Program Files\\Altro\\a.exe"));
    EXPECT_TRUE(machine.fileExists("C:\\Lumo\\Programmi\\TrelvManager.exe"));
    EXPECT_THAT(installation.serverRecord(), HasSubstr("[ZB]\r\nversion=\r\n"));
    deleted += installation.share().exists("S:\\Lumo\\mv\\zb") ? 0 : 1;
  }
  // Folders that may go did go: the generator reaches both.
  EXPECT_GT(deleted, 20U);
}

}  // namespace
}  // namespace trelv::tests
