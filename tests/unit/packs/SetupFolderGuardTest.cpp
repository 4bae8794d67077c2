#include <cctype>
#include <random>

#include "base/Text.h"
#include "packs/ProductRemoval.h"
#include "packs/SetupFolderGuard.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

using Folders = std::vector<std::string>;

/// A server path S:\Lumo whose share is also \\srv\dati.
class Guard : public StationTest {
 protected:
  Guard() {
    machine().mount("\\\\srv\\dati", installation_.sharedDisk());
    installation_.putCatalogue({{"ZB", "Bilancio", "zb.ini"}});
    installation_.putServerRecord(deliveredVersions());
  }

  std::string integration_ = Installation::kServer;
  std::string programs_ = "C:\\Lumo\\Client";

  bool removable(const std::string& folder, const std::string& server) {
    return modProdTrelvManager::IsRemovableSetupFolder(program(), {server, integration_, programs_},
                                                       folder);
  }
  void expectStays(const Folders& folders, const std::string& server = Installation::kServer) {
    for (const std::string& folder : folders) {
      EXPECT_FALSE(removable(folder, server)) << folder;
    }
  }
  void expectMayGo(const Folders& folders, const std::string& server = Installation::kServer) {
    for (const std::string& folder : folders) {
      EXPECT_TRUE(removable(folder, server)) << folder;
    }
  }
  std::string folderOf(const std::string& command) {
    return modProdTrelvManager::FolderOfCommand(program(), command);
  }
};

// --- What may go

TEST_F(Guard, FoldersOfOneProductMayGo) {
  machine().mount("\\\\srv\\share");
  expectMayGo({"S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb", "S:\\Lumo\\mv\\zb", "S:\\Lumo\\prg\\zb",
               "S:\\Lumo\\prg\\com\\zb", "S:\\Lumo\\prg\\etc\\zb", "S:\\Lumo\\zb", "S:\\Altro",
               "D:\\Setup", "C:\\Program Files\\Lumo", "C:\\Lumo\\Client\\zb", "C:\\WINDOWS2",
               "\\\\srv\\share\\zb", "S:\\Lumo2", "S:\\Lumo\\prgx", "S:/Lumo/mv/zb/",
               "S:\\Lumo\\mv\\x\\..\\zb", "S:\\Lumo\\.\\mv\\zb", "S:\\LUMO\\MV\\ZB\\",
               "S:\\Lumo\\mv\\zb\\prg"});
}

// --- What stays

TEST_F(Guard, FoldersOfUsersAndOfTheWorkstationAndWhatHoldsThemStay) {
  expectStays({"C:\\Users\\mario", "c:/users/MARIO/", "C:\\Users", "C:\\Users\\anna",
               "C:\\Users\\Public", "C:\\Users\\mario\\Temp", "C:\\ProgramData",
               "C:\\Program Files\\Common Files", "C:\\Lumo\\Client", "C:\\Lumo",
               "C:\\LUMO\\client. "});
  expectMayGo({"C:\\Users\\mario\\zb", "C:\\Users\\anna\\zb", "C:\\Users\\mario\\Temp\\zb",
               "C:\\ProgramData\\zb", "C:\\Program Files\\Common Files\\zb", "C:\\Lumo\\Client\\zb",
               "C:\\Users2"});
}

TEST_F(Guard, FoldersOfUsersAreThoseThatTheSystemNames) {
  machine().system().setShellFolder(machine::kUserProfileFolder, "D:\\Profili\\mario");
  machine().system().setShellFolder(machine::kCommonDesktopFolder, "E:\\Documenti\\Tutti\\Desktop");
  machine().system().setShellFolder(machine::kCommonDataFolder, "E:\\Dati comuni");
  machine().system().setShellFolder(machine::kCommonFilesFolder, "F:\\Base\\Comuni");
  expectStays({"D:\\Profili\\mario", "D:\\Profili", "D:\\Profili\\anna", "E:\\Documenti\\Tutti",
               "E:\\Documenti", "E:\\Documenti\\anna", "E:\\Dati comuni", "F:\\Base\\Comuni",
               "F:\\Base", "C:\\Users\\mario"});
  expectMayGo({"D:\\zb", "E:\\zb", "F:\\zb", "D:\\Profili\\mario\\zb", "E:\\Dati comuni\\zb"});
}

TEST_F(Guard, AProfileInTheRootOfADriveLeavesItsNeighboursFree) {
  machine().environment().put("USERPROFILE", "D:\\mario");
  machine().system().setShellFolder(machine::kUserProfileFolder, "D:\\mario");
  expectStays({"D:\\mario"});
  expectMayGo({"D:\\zb", "D:\\mario\\zb"});
}

TEST_F(Guard, BothCommonFilesFoldersOfA64BitWindowsStay) {
  machine().system().setWow64(true);
  expectStays({"C:\\Program Files (x86)\\Common Files", "C:\\Program Files\\Common Files"});
}

TEST_F(Guard, AFolderThatThisWindowsDoesNotKnowKeepsNothing) {
  for (const int number : {machine::kUserProfileFolder, machine::kCommonDesktopFolder,
                           machine::kCommonDataFolder, machine::kCommonFilesFolder}) {
    machine().system().setShellFolder(number, "");
  }
  expectMayGo({"S:\\Lumo\\mv\\zb", "D:\\Setup"});
}

TEST_F(Guard, TheIntegrationPathAndItsProgramsStay) {
  integration_ = "D:\\Integrazione\\Lumo";
  expectStays({"D:\\Integrazione\\Lumo", "D:\\Integrazione", "D:\\Integrazione\\Lumo\\mv"});
  expectMayGo({"D:\\Integrazione\\Lumo\\mv\\zb", "D:\\Integrazione\\zb"});
  integration_ = "\\\\?\\D:\\Integrazione\\Lumo";
  expectStays({"D:\\Integrazione\\Lumo", "D:\\Integrazione\\Lumo\\mv"});
  integration_ = "\\\\?\\UNC\\srv\\integra\\Lumo";
  expectStays({"\\\\srv\\integra\\Lumo", "\\\\srv\\integra\\Lumo\\mv"});
}

TEST_F(Guard, OtherNamesOfTheseFoldersStayToo) {
  integration_ = "D:\\Integrazione";
  const auto other = machine().mount("D:");
  machine().mount("\\\\srv\\integra", other);
  machine().makeFolders("D:\\Integrazione\\mv\\zb");
  for (const char* const folder :
       {"C:\\ProgramData\\zb", "C:\\Users\\anna\\zb", "C:\\Lumo\\Client\\zb",
        "C:\\Users\\mario\\Temp\\zb", "C:\\Program Files\\Common Files\\zb"}) {
    machine().makeFolders(folder);
  }
  disk().putLink("C:\\utenti", "C:\\Users");
  disk().putLink("C:\\PROGRA~3", "C:\\ProgramData");
  disk().putLink("C:\\cliente", "C:\\Lumo\\Client");
  disk().putLink("C:\\comuni", "C:\\Program Files\\Common Files");
  disk().putLink("C:\\sistema", "C:\\WINDOWS");
  disk().putLink("C:\\disco", "C:\\");
  expectStays({"\\\\srv\\integra\\Integrazione", "\\\\srv\\integra\\Integrazione\\mv", "C:\\utenti",
               "C:\\utenti\\mario", "C:\\utenti\\anna", "C:\\utenti\\mario\\Temp", "C:\\PROGRA~3",
               "C:\\cliente", "C:\\comuni", "C:\\sistema\\system32", "C:\\disco\\Users",
               "C:\\disco\\Lumo"});
  expectMayGo({"\\\\srv\\integra\\Integrazione\\mv\\zb", "C:\\utenti\\anna\\zb", "C:\\PROGRA~3\\zb",
               "C:\\cliente\\zb", "C:\\disco\\ProgramData\\zb"});
}

TEST_F(Guard, AFolderThatCannotBeLookedAtStays) {
  machine().makeFolders("C:\\zb");
  expectMayGo({"C:\\zb"});
  disk().deny("C:\\zb");
  expectStays({"C:\\zb"});
}

TEST_F(Guard, TheFolderOfAllProductsAndTheManagersOwnStay) {
  const std::string manager = "C:\\Lumo\\Programmi";
  expectStays(
      {"S:\\Lumo\\mv", "s:/lumo/MV/", manager, upperCase(manager) + "\\", manager + "\\zb\\.."});
  expectMayGo({manager + "\\zb", manager + "2"});
}

TEST_F(Guard, TheClientCopyAndWhatHoldsItStay) {
  expectStays({"S:\\Lumo\\prg\\com\\bin", "S:\\Lumo\\prg\\com\\bin\\cpy",
               "S:\\Lumo\\prg\\com\\bin\\cpy\\client",
               "\\\\srv\\dati\\prg\\com\\bin\\cpy\\client"});
  expectMayGo({"S:\\Lumo\\prg\\com\\bin\\zb", "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\zb"});
}

TEST_F(Guard, TheFolderOfAllProductsStaysWithoutACatalogueToo) {
  share().removeTree(Installation::kCatalogue);
  expectStays({"S:\\Lumo\\mv"});
  expectMayGo({"S:\\Lumo\\mv\\zb"});
}

TEST_F(Guard, EmptyAndRelativePathsStay) {
  expectStays({"", " ", "zb", "zb\\setup", "..\\zb", ".", "\\Lumo\\mv\\zb", "S:Lumo\\mv\\zb",
               "S:", "/Lumo/mv/zb", "\\", "C:zb"});
}

TEST_F(Guard, RootsStay) {
  machine().mount("\\\\srv\\share");
  expectStays({"S:\\", "D:\\", "s:/", "S:\\\\", "S:\\.", "S:\\Lumo\\..", "S:\\a\\..\\..",
               "\\\\srv\\share", "\\\\srv\\share\\", "\\\\srv", "\\\\", "//srv/share",
               "\\\\srv\\share\\x\\.."});
}

TEST_F(Guard, WindowsAndWhatHoldsOrLiesInItStays) {
  machine().system().setWindowsFolder("C:\\Sistema\\WINDOWS");
  expectStays({"C:\\Sistema\\WINDOWS", "c:\\sistema\\windows\\", "C:\\Sistema",
               "C:\\Sistema\\Windows\\zb", "C:\\sistema\\WINDOWS\\system32\\a\\b",
               "C:/Sistema/Windows/system32", "C:\\Sistema\\x\\..\\WINDOWS"});
  expectMayGo({"C:\\Sistema\\zb"});
}

TEST_F(Guard, WindowsFolderOfTheUserStaysToo) {
  program().state.startup.terminalServer = true;
  machine().environment().put("USERPROFILE", "C:\\Users\\mario");
  expectStays({"C:\\Users\\mario\\windows", "C:\\Users\\mario\\windows\\zb", "C:\\Users\\mario",
               "C:\\WINDOWS", "C:\\WINDOWS\\system32\\zb"});
  expectMayGo({"C:\\Users\\mario\\zb"});
}

TEST_F(Guard, ProgramFilesItselfAndWhatHoldsItStays) {
  machine().system().setShellFolder(38, "D:\\Base\\Programmi");
  expectStays({"D:\\Base\\Programmi", "d:/base/programmi/", "D:\\Base"});
  expectMayGo({"D:\\Base\\Programmi\\zb"});
}

TEST_F(Guard, BothProgramFilesOfA64BitWindowsStay) {
  machine().system().setWow64(true);
  expectStays({"C:\\Program Files (x86)", "C:\\Program Files"});
  expectMayGo({"C:\\Program Files (x86)\\zb"});
}

TEST_F(Guard, ServerPathItsSharedFoldersAndWhatHoldsThemStay) {
  const Folders shared{"S:\\Lumo",
                       "S:\\Lumo\\prg",
                       "S:\\Lumo\\prg\\com",
                       "S:\\Lumo\\prg\\com\\setup",
                       "S:\\Lumo\\prg\\com\\setup\\aggdovra",
                       "S:\\Lumo\\prg\\etc",
                       "S:\\Lumo\\prg\\tempterm"};
  for (const std::string& folder : shared) {
    expectStays({folder, folder + "\\", folder + "\\\\"});
  }
  expectStays(shared, "S:\\Lumo\\");
  expectStays(shared, "s:/LUMO");
  expectStays({"D:\\Dati", "D:\\Dati\\Host"}, "D:\\Dati\\Host\\Lumo");
  expectMayGo({"D:\\Dati\\Altro"}, "D:\\Dati\\Host\\Lumo");
}

TEST_F(Guard, OtherSpellingsOfAPathDoNotHelp) {
  expectStays({"s:\\lumo\\PRG", "S:/Lumo/prg", "S:\\Lumo\\prg ", "S:\\Lumo\\prg.",
               "S:\\Lumo\\prg. .", "S:\\Lumo \\prg", "S:\\Lumo.\\prg", "S:\\Lumo\\.\\prg",
               "S:\\Lumo\\mv\\..\\prg", "S:\\Lumo\\mv\\zb\\..\\..\\prg\\com", "S:\\\\Lumo\\\\prg",
               " S:\\Lumo\\prg", "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\..", "S:\\..\\Lumo\\prg",
               "S:\\Lumo\\mv/../prg"});
}

TEST_F(Guard, DevicePathsStreamsNamesOfPointsAndAdministrativeSharesStay) {
  // Paths that can be looked at, as on Windows.
  for (const char* const name : {"\\\\?\\S:", "\\\\.\\S:", "\\\\?\\UNC", "\\\\localhost\\C$",
                                 "\\\\localhost\\admin$", "\\\\srv\\D$"}) {
    machine().mount(name);
  }
  expectStays({"\\\\?\\S:\\Lumo\\mv\\zb", "\\\\.\\S:\\Lumo\\mv\\zb", "\\\\?\\UNC\\srv\\share\\zb",
               "S:\\Lumo\\mv\\zb:flusso", "S:\\Lumo\\mv\\...", "S:\\Lumo\\mv\\zb\\... ",
               "\\\\localhost\\C$\\WINDOWS", "\\\\localhost\\admin$\\system32",
               "\\\\srv\\D$\\Lumo\\mv\\zb"});
}

TEST_F(Guard, ServersFoldersByTheirShareStayThoughTheServerPathNamesADrive) {
  expectStays({"\\\\srv\\dati\\Lumo", "\\\\srv\\dati\\Lumo\\prg", "\\\\SRV\\Dati\\lumo\\prg\\com",
               "\\\\srv\\dati\\Lumo\\prg\\com\\setup",
               "\\\\srv\\dati\\Lumo\\prg\\com\\setup\\aggdovra", "\\\\srv\\dati\\Lumo\\prg\\etc",
               "\\\\srv\\dati\\Lumo\\prg\\tempterm"});
  expectMayGo({"\\\\srv\\dati\\Lumo\\mv\\zb"});
  expectStays({"S:\\Lumo\\prg"}, "\\\\srv\\dati\\Lumo");
  expectMayGo({"S:\\Lumo\\mv\\zb"}, "\\\\srv\\dati\\Lumo");
}

TEST_F(Guard, TheFolderOfAllProductsAndTheManagersOwnStayByOtherNamesToo) {
  disk().putLink("C:\\Altro", "C:\\Lumo");
  expectStays({"\\\\srv\\dati\\Lumo\\mv", "\\\\SRV\\dati\\lumo\\MV\\", "C:\\Altro\\Programmi"});
  expectStays({"S:\\Lumo\\mv"}, "\\\\srv\\dati\\Lumo");
  expectMayGo({"\\\\srv\\dati\\Lumo\\mv\\mv", "\\\\srv\\dati\\Altro\\mv", "C:\\Altro\\Programmi2"});
}

TEST_F(Guard, FolderAboveTheServerPathIsKnownByTheShareToo) {
  Installation deep;
  deep.share().put("dati\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini", "[prod01]\r\n");
  machine().mount("T:", deep.sharedDisk());
  machine().mount("\\\\srv\\tutto", deep.sharedDisk());
  expectStays({"\\\\srv\\tutto\\dati"}, "T:\\dati\\Lumo");
}

// The last one leads to the record of versions.
TEST_F(Guard, LinkToASharedFolderStays) {
  disk().putLink("C:\\Collegamento", "S:\\Lumo");
  disk().putLink("C:\\Versioni", "S:\\Lumo\\prg\\etc");
  expectStays({"C:\\Collegamento", "C:\\Collegamento\\prg\\com", "C:\\Collegamento\\prg\\tempterm",
               "C:\\Versioni"});
}

TEST_F(Guard, ShortNameCountsAsEveryLongNameThatHasOne) {
  expectStays({"C:\\PROGRA~1", "C:\\progra~2\\"});
  expectMayGo({"C:\\PROGRA~1\\zb"});
  expectStays({"S:\\HOSTLU~1\\prg"}, "S:\\Host Lumo");
  expectStays({"S:\\HOSTLU~1\\prg"}, "S:\\HostLumo2026");
  // Also one of which nothing but the number is left.
  expectStays({"C:\\~1"});
  expectMayGo({"C:\\Lumo~"});
  machine().system().setWindowsFolder("C:\\Windows di prova");
  expectStays({"C:\\WINDOW~1\\system32"});
}

TEST_F(Guard, NothingGoesWhileTheSystemsFoldersCannotBeTold) {
  machine().system().setWindowsFolder("");
  expectStays({"S:\\Lumo\\mv\\zb"});
  machine().system().setWindowsFolder("C:\\WINDOWS");
  expectMayGo({"S:\\Lumo\\mv\\zb"});
  machine().system().setShellFolder(38, "");
  expectStays({"S:\\Lumo\\mv\\zb"});
}

TEST_F(Guard, NothingGoesThatCannotBeLookedAtOrWithoutAFullServerPath) {
  expectStays({"S:\\Lumo\\mv\\zb"}, "");
  expectStays({"S:\\Lumo\\mv\\zb"}, "Lumo");
  share().deny("S:\\Lumo\\mv\\zb");
  expectStays({"S:\\Lumo\\mv\\zb", "\\\\srv\\spento\\zb"});
}

// --- The folder of a command

TEST_F(Guard, FolderOfAQuotedCommandIsThatOfThePathInQuotes) {
  EXPECT_EQ(folderOf(R"("S:\Lumo\mv\z b\unins.exe" -s "C:\x y\z.exe")"), "S:\\Lumo\\mv\\z b");
  EXPECT_EQ(folderOf(R"("S:\Lumo\mv\zb\unins.exe)"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf(R"(  "S:\zb\u.exe")"), "S:\\zb");
  // A command that lost its outer quotes ends at the one that is left.
  EXPECT_EQ(folderOf(R"(S:\Lumo\mv\z b\unins.exe" -s "y z)"), "S:\\Lumo\\mv\\z b");
}

TEST_F(Guard, FolderOfAnUnquotedCommandWithoutBlanksIsItsParent) {
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\zb\\unins.exe"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf("S:/Lumo/mv/zb/unins"), "S:\\Lumo\\mv\\zb");
  EXPECT_EQ(folderOf("unins.exe"), "");
  EXPECT_EQ(folderOf(""), "");
  EXPECT_EQ(folderOf("\"\""), "");
}

TEST_F(Guard, FolderOfAnUnquotedCommandIsThatOfItsShortestBeginningThatIsAFileAsForTheSystem) {
  share().putProgram("S:\\Lumo\\mv\\z b\\un ins.exe");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins.exe -s a b"), "S:\\Lumo\\mv\\z b");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins -s"), "S:\\Lumo\\mv\\z b");
  share().makeFolders("S:\\Lumo\\mv\\z");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins.exe"), "S:\\Lumo\\mv\\z b");
  // Each of several blanks ends a beginning.
  share().putProgram("S:\\Lumo\\mv\\q .exe");
  share().putProgram("S:\\Lumo\\mv\\q  b\\unins.exe");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\q  b\\unins.exe -s"), "S:\\Lumo\\mv");
  share().putProgram("S:\\Lumo\\mv\\z.exe");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\un ins.exe -s"), "S:\\Lumo\\mv");
}

TEST_F(Guard, OfAMissingProgramTheOnlyBeginningThatEndsLikeOneIsTaken) {
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.EXE -s a"), "S:\\Lumo\\mv\\z b");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins.exe  -s   a"), "S:\\Lumo\\mv\\z b");
  for (const std::string extension : {"bat", "cmd", "com", "exe"}) {
    EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins." + extension), "S:\\Lumo\\mv\\z b") << extension;
  }
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\z b\\unins -s a"), "");
  EXPECT_EQ(folderOf("S:\\Lumo\\mv\\a.com b\\unins.exe"), "");
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
  static const Folders kFolders{
      // Those that stay
      "S:\\Lumo", "S:\\Lumo\\prg", "S:\\Lumo\\prg\\com", "S:\\Lumo\\prg\\com\\setup",
      "S:\\Lumo\\prg\\com\\setup\\aggdovra", "S:\\Lumo\\prg\\etc", "S:\\Lumo\\prg\\tempterm",
      "S:", "\\\\srv\\dati", "\\\\srv\\dati\\Lumo",
      "\\\\srv\\dati\\Lumo\\prg\\com\\setup\\aggdovra", "\\\\srv\\dati\\Lumo\\prg\\etc",
      "\\\\srv\\dati\\Lumo\\prg\\tempterm", "C:\\WINDOWS", "C:\\WINDOWS\\system32",
      "C:\\Program Files", "C:", "C:\\Collegamento", "C:\\Collegamento\\prg", "..\\..",
      "S:\\Lumo\\mv\\zb\\..\\..", "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb\\..",
      // Those that may go
      "S:\\Lumo\\mv\\zb", "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb"};
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
    for (const char* const file :
         {Installation::kServerLock, "S:\\Lumo\\mv\\zb\\a.dat", "S:\\Lumo\\mv\\q2\\a.dat"}) {
      installation.share().put(file, "x");
    }
    const std::vector<std::string> commands{generatedProgram(random), generatedProgram(random),
                                            generatedProgram(random)};
    installation.putConfiguration("zb.ini", configurationText({{"Remove", "", commands, {}}}));
    SCOPED_TRACE(commands[0] + " | " + commands[1] + " | " + commands[2]);
    const std::string windows = machine.diskOf("C:\\").tree("C:\\WINDOWS");
    NoProgress progress;
    modProdTrelvManager::RemoveProduct(station.program(),
                                       {Installation::kServer, "S:\\Lumo", "C:\\Lumo\\Client"},
                                       {"ZB", Side::Server}, progress);
    for (const char* const kept :
         {Installation::kCatalogue, Installation::kServerRecord, Installation::kServerLock,
          "S:\\Lumo\\mv\\q2\\a.dat", "C:\\Program Files\\Altro\\a.exe",
          "C:\\Lumo\\Programmi\\TrelvManager.exe"}) {
      EXPECT_TRUE(machine.fileExists(kept)) << kept;
    }
    EXPECT_EQ(machine.diskOf("C:\\").tree("C:\\WINDOWS"), windows);
    EXPECT_THAT(installation.serverRecord(), HasSubstr("[ZB]\r\nversion=\r\n"));
    deleted += installation.share().exists("S:\\Lumo\\mv\\zb") ? 0 : 1;
  }
  // Folders that may go did go: the generator reaches both.
  EXPECT_GT(deleted, 20U);
}

}  // namespace
}  // namespace trelv::tests
