#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "platform/modLibrary.h"
#include "support/FakeProgram.h"
#include "support/Matchers.h"
#include "support/Refusals.h"

namespace trelv::modLibrary {
namespace {

using machine::SupportAnswer;
using sim::CallKind;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;
using tests::isReport;
using tests::refuse;
using Lines = std::vector<std::string>;

constexpr const char* kModule = "modLibrary";

/// What the suites stand on, each of which has the name of a procedure.
class Library : public testing::Test {
 protected:
  void useTerminalServer() { program.state.startup.terminalServer = true; }
  /// The lines since the last call.
  Lines takeLines() { return std::exchange(program.log.lines, {}); }

  FakeProgram program;
  sim::SimMachine& sim = program.sim;
};

// --- Windows folder

using TheWindowsFolder = Library;

TEST_F(TheWindowsFolder, IsLowerCaseAndEndsBeforeASystemFolderAndAtTheFirstNul) {
  EXPECT_EQ(WindowsFolder(program), "c:\\windows");
  sim.system().setWindowsFolder("C:\\WINNT\\System32");
  EXPECT_EQ(WindowsFolder(program), "c:\\winnt");
  sim.system().setWindowsFolder(std::string("C:\\WINNT\0\0rest", 15));
  EXPECT_EQ(WindowsFolder(program), "c:\\winnt");
}

TEST_F(TheWindowsFolder, IsEmptyAfterAReportWhenTheSystemDoesNotTell) {
  sim.callLog().setInjector(refuse({CallKind::WindowsFolderQuery}));
  EXPECT_EQ(WindowsFolder(program), "");
  EXPECT_THAT(program.reports(),
              ElementsAre(isReport("WindowsFolder", "Errore in lettura cartella di Windows: ", 70,
                                   kModule)));
}

TEST_F(TheWindowsFolder, OfTheUserLiesBelowTheProfileOnATerminalServer) {
  EXPECT_EQ(GetWinDir(program), "c:\\windows");
  useTerminalServer();
  sim.system().setWindowsFolder("D:\\WINNT");
  sim.environment().put("USERPROFILE", "C:\\Users\\mario");
  EXPECT_EQ(GetWinDir(program), "C:\\Users\\mario\\windows");
  sim.environment().remove("USERPROFILE");
  EXPECT_EQ(GetWinDir(program), "\\windows");
}

TEST_F(Library, TheProgramFilesFolderIsShellFolder38) {
  sim.system().setShellFolder(38, "D:\\Programmi");
  EXPECT_EQ(ProgramFilesFolder(program), "D:\\Programmi");
}

TEST_F(Library, PathsAreTheSameInTheSystemsCapitals) {
  EXPECT_TRUE(IsSamePath(program, "S:\\škoda\\œuvre\\ž", "s:\\ŠKODA\\ŒUVRE\\Ž"));
  EXPECT_TRUE(IsSamePath(program, "", ""));
  EXPECT_FALSE(IsSamePath(program, "S:\\s", "S:\\š"));
  EXPECT_FALSE(IsSamePath(program, "S:\\Lumo", "S:\\Lumo\\"));
}

// --- Temporary folders

using TheTempDirectory = Library;

TEST_F(TheTempDirectory, IsWhatTheSupportLibraryGives) {
  for (const char* const given : {"D:\\Lumo\\Tmp\\", ""}) {
    sim.support().setTemporaryPath(given);
    EXPECT_EQ(GetTempDirectory(program), given);
  }
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(TheTempDirectory, IsEmptyWhenTheBufferHasNoNul) {
  sim.support().setTemporaryAnswer(SupportAnswer::Yes);
  EXPECT_EQ(GetTempDirectory(program), "");
}

/// Looks at the buffer that the library gets.
class MeasuringSupport : public machine::SupportLibrary {
 public:
  SupportAnswer isAdministrator() override { return SupportAnswer::Absent; }
  SupportAnswer temporaryPath(std::string& buffer) override {
    received = buffer;
    return SupportAnswer::Absent;
  }
  std::string received;
};

TEST_F(TheTempDirectory, IsAskedForWithAHundredBlanks) {
  MeasuringSupport support;
  machine::Machine& m = sim.machine();
  machine::Machine machine{m.files,  m.profiles, m.registry,   m.processes, m.environment,
                           m.system, m.clock,    m.locale,     m.versions,  m.configuration,
                           support,  m.desktop,  m.automation, m.exclusion};
  FakeProgram measured(sim, machine);
  GetTempDirectory(measured);
  EXPECT_EQ(support.received, std::string(100, ' '));
}

TEST_F(TheTempDirectory, IsTheUsersFolderWithoutTheLibrary) {
  for (const SupportAnswer answer : {SupportAnswer::Absent, SupportAnswer::Failed}) {
    sim.support().setTemporaryAnswer(answer);
    EXPECT_EQ(GetTempDirectory(program), "C:\\Users\\mario\\Temp\\");
  }
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(TheTempDirectory, ThatCannotBeToldIsReportedOnce) {
  sim.callLog().setInjector(refuse({sim::CallKind::TemporaryFolderQuery}));
  EXPECT_EQ(GetTempDirectory(program), "");
  EXPECT_EQ(GetTempDirectory(program), "");
  EXPECT_THAT(program.reports(),
              ElementsAre(isReport("GetTempDirectory",
                                   "Errore in lettura cartella temporanea: ", 70, "modLibrary")));
  EXPECT_EQ(program.lines().size(), 2U);
}

TEST_F(TheTempDirectory, ForWorkIsTheParentWithABackslashOnATerminalServer) {
  EXPECT_EQ(WorkTempDirectory(program), "C:\\Users\\mario\\Temp\\");
  useTerminalServer();
  sim.support().setTemporaryPath("C:\\Users\\mario\\Temp\\3\\");
  EXPECT_EQ(WorkTempDirectory(program), "C:\\Users\\mario\\Temp\\");
  sim.support().setTemporaryPath("");
  EXPECT_EQ(WorkTempDirectory(program), "\\");
}

// --- Making folders

std::string made(const std::string& path) {
  return "Creazione path avvenuta correttamente:" + path;
}
std::string notMade(const std::string& path) {
  return "modLibrary - CreaCartella, errore in creazione cartella: " + path;
}

using MakingFolders = Library;

TEST_F(MakingFolders, MakesAllMissingLevelsWithALineEach) {
  sim.mount("D:");
  sim.makeFolders("d:\\a");
  CreaCartella(program, "d:\\a\\b\\c");
  EXPECT_TRUE(sim.folderExists("d:\\a\\b\\c"));
  EXPECT_THAT(program.lines(), ElementsAre(made("d:\\a\\b"), made("d:\\a\\b\\c")));
}

TEST_F(MakingFolders, LeavesAnExistingFolderAloneInSilence) {
  CreaCartella(program, "C:\\WINDOWS");
  CreaCartella(program, "C:\\");
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST_F(MakingFolders, TellsEachLevelThatFailsUpToTheRootAndRaisesNothing) {
  sim.putFile("C:\\file", "x");
  sim.mount("D:");
  sim.diskOf("D:\\").denyWriting("D:\\");
  const std::vector<std::pair<std::string, Lines>> rows = {
      {"D:\\a\\b", {"D:\\a", "D:\\a\\b"}},
      {"Q:\\a", {"Q:\\", "Q:\\a"}},
      {"\\\\srv\\dati\\a", {"\\\\srv\\dati", "\\\\srv\\dati\\a"}},
      {"", {""}},
      {"C:\\file", {"C:\\file"}}};
  for (const auto& [path, levels] : rows) {
    CreaCartella(program, path);
    Lines expected;
    for (const std::string& level : levels) expected.push_back(notMade(level));
    EXPECT_EQ(takeLines(), expected) << path;
  }
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_EQ(sim.fileText("C:\\file"), "x");
}

TEST_F(MakingFolders, ForWorkMakesThePathAndItsSubFolder) {
  sim.mount("\\\\srv\\dati");
  const std::vector<std::pair<std::string, Lines>> rows = {
      {"C:\\a\\b\\", {made("C:\\a\\"), made("C:\\a\\b\\"), made("C:\\a\\b\\kvar")}},
      {"C:\\c\\b", {made("C:\\c\\"), made("C:\\c\\b"), made("C:\\c\\b\\kvar")}},
      {"\\\\srv\\dati\\a", {made("\\\\srv\\dati\\a"), made("\\\\srv\\dati\\a\\kvar")}}};
  for (const auto& [path, lines] : rows) {
    CreaKvarTemp(program, path);
    EXPECT_TRUE(sim.folderExists(path + "\\kvar")) << path;
    EXPECT_EQ(takeLines(), lines);
  }
}

TEST_F(MakingFolders, ForWorkReportsAnErrorWithBothPaths) {
  // A line and the line that would tell its failure.
  program.log.linesWithoutMemory = 2;
  CreaKvarTemp(program, "C:\\a\\b");
  EXPECT_THAT(
      program.reports(),
      ElementsAre(isReport("CreaKvarTemp",
                           "Verificare percorsi: \r\nvsPathTemp: C:\\a\\b\r\nsPathComodo: C:\\a\\",
                           _, kModule)));
}

// --- Deleting

using Deleting = Library;

TEST_F(Deleting, AFileIsToldInTheLog) {
  sim.putFile("C:\\a.txt", "x");
  EXPECT_TRUE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_FALSE(sim.fileExists("C:\\a.txt"));
  EXPECT_THAT(program.lines(),
              ElementsAre("Cancellazione file: C:\\a.txt effettuata con successo"));
}

TEST_F(Deleting, WhatIsMissingIsSilentAndNoSuccessForAFileOnly) {
  sim.makeFolders("C:\\d");
  for (const char* const file : {"C:\\a.txt", "C:\\d", ""}) {
    EXPECT_FALSE(DeleteFile(program, file)) << file;
  }
  for (const char* const folder : {"C:\\e", ""}) {
    EXPECT_TRUE(DeleteFolder(program, folder)) << folder;
  }
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_TRUE(sim.folderExists("C:\\d"));
}

TEST_F(Deleting, AFileThatAnotherSessionDeletesFirstCountsAsMissing) {
  sim.putFile("C:\\a.txt", "x");
  sim.onCall("files.removeFile", [&] { sim.removeTree("C:\\a.txt"); });
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Deleting, AFileThatStaysIsReportedAndLogged) {
  sim.putFile("C:\\a.txt", "x");
  sim.diskOf("C:\\").setReadOnly("C:\\a.txt");
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_THAT(program.reports(), ElementsAre(isReport("DeleteFile", _, 70, kModule)));
  EXPECT_THAT(program.lines(), ElementsAre("Gestione ProdTrelv - Errore in cancellazione file: "
                                           "Autorizzazione negata: C:\\a.txt"));
}

TEST_F(Deleting, AFolderThatStaysIsReported) {
  sim.putFile("C:\\d\\a.txt", "x");
  sim.diskOf("C:\\").holdOpen("C:\\d\\a.txt", sim::Sharing::None);
  EXPECT_FALSE(DeleteFolder(program, "C:\\d"));
  EXPECT_THAT(program.reports(), ElementsAre(isReport("DeleteFolder", _, 70, kModule)));
  EXPECT_TRUE(sim.folderExists("C:\\d"));
}

TEST_F(Deleting, WhatIsStillThereAlthoughTheSystemDeletedItIsNoSuccess) {
  sim.putFile("C:\\a.txt", "x");
  sim.makeFolders("C:\\d");
  sim.callLog().setInjector(
      refuse({CallKind::FileRemove, CallKind::FolderRemove}, system_code::kSuccess));
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_FALSE(DeleteFolder(program, "C:\\d"));
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Deleting, AFolderMayEndInABackslashAndIsNoRoot) {
  sim.putFile("C:\\d\\e\\a.txt", "x");
  EXPECT_TRUE(DeleteFolder(program, "C:\\d\\"));
  EXPECT_FALSE(sim.folderExists("C:\\d"));
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_FALSE(DeleteFolder(program, "C:\\"));
  EXPECT_TRUE(sim.folderExists("C:\\WINDOWS"));
}

TEST_F(Library, FilesAreToldFromFolders) {
  sim.putFile("C:\\d\\a.txt", "x");
  EXPECT_TRUE(FileExists(program, "C:\\d\\a.txt"));
  EXPECT_FALSE(FileExists(program, "C:\\d"));
  EXPECT_TRUE(FolderExists(program, "C:\\d\\"));
  EXPECT_FALSE(FolderExists(program, "C:\\d\\a.txt"));
}

// --- Path texts

TEST(PathTexts, TheParentIsTheTextBeforeTheLastBackslash) {
  EXPECT_EQ(ParentPath("C:\\a\\b.txt"), "C:\\a");
  EXPECT_EQ(ParentPath("C:\\a\\"), "C:\\a");
  EXPECT_EQ(ParentPath("C:\\a"), "C:");
  EXPECT_EQ(ParentPath("b.txt"), "");
  EXPECT_EQ(ParentPath(""), "");
}

TEST(PathTexts, TheExtensionIsTheTrimmedTextAfterTheLastPoint) {
  EXPECT_EQ(Extension("pack.zip"), "zip");
  EXPECT_EQ(Extension("pack.tar.gz"), "gz");
  EXPECT_EQ(Extension("pack. zip "), "zip");
  EXPECT_EQ(Extension("pack.ZIP"), "ZIP");
  EXPECT_EQ(Extension("pack."), "");
  EXPECT_EQ(Extension("pack"), "");
}

TEST(PathTexts, ATextIsCutAtItsNul) {
  EXPECT_EQ(CutAtNul(std::string("ab\0cd", 5)), "ab");
  EXPECT_EQ(CutAtNul(std::string("\0cd", 3)), "");
  EXPECT_EQ(CutAtNul("abcd"), "abcd");
}

TEST(PathTexts, AFolderLosesBlanksAndOneBackslash) {
  const auto trimmed = [](std::string folder) {
    TrimFolder(folder);
    return folder;
  };
  EXPECT_EQ(trimmed("  C:\\a\\ "), "C:\\a");
  EXPECT_EQ(trimmed("C:\\a\\\\"), "C:\\a\\");
  EXPECT_EQ(trimmed("C:\\a"), "C:\\a");
  EXPECT_EQ(trimmed("\\"), "");
  EXPECT_EQ(trimmed("  "), "");
}

// --- Ini values

class Settings : public Library {
 protected:
  void put(const std::string& keys) { sim.putFile(kFile, "[S]\r\n" + keys + "\r\n"); }
  std::string read(const std::string& key = "k", const std::string& section = "S",
                   const std::string& file = kFile) {
    return ReadSetting(program, {file, section, key});
  }
  std::uint32_t write(const std::string& value, const std::string& section = "S",
                      const std::string& file = kFile) {
    return WriteSetting(program, {file, section, "k"}, value);
  }

  static constexpr const char* kFile = "C:\\a.ini";
};

TEST_F(Settings, AreEmptyTextWhereOneIsMissing) {
  put("k=v");
  EXPECT_EQ(read(), "v");
  EXPECT_EQ(read("x"), "");
  EXPECT_EQ(read("k", "T"), "");
  EXPECT_EQ(read("k", "S", "C:\\no.ini"), "");
}

TEST_F(Settings, AreCutAfter510Characters) {
  put("a=" + std::string(510, 'x') + "\r\nb=" + std::string(511, 'y'));
  EXPECT_EQ(read("a"), std::string(510, 'x'));
  EXPECT_EQ(read("b"), std::string(510, 'y'));
}

TEST_F(Settings, ThatWereWrittenAreSeenByTheNextRead) {
  put("k=v");
  EXPECT_EQ(read(), "v");
  EXPECT_NE(write("w"), 0U);
  EXPECT_EQ(read(), "w");
  EXPECT_EQ(sim.iniValue(kFile, "S", "k"), "w");
}

TEST_F(Settings, MakeTheirFileWhenItIsMissing) {
  EXPECT_EQ(read(), "");
  EXPECT_NE(write("w"), 0U);
  EXPECT_EQ(read(), "w");
}

TEST_F(Settings, WithoutASectionAreWrittenWithoutACall) {
  put("k=v");
  sim.callLog().clear();
  EXPECT_EQ(write("w", ""), 0U);
  EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(Settings, ThatAreRefusedAnswerZero) {
  EXPECT_EQ(write("w", "S", "C:\\no\\a.ini"), 0U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST_F(Settings, WhoseWritingFailsUnexpectedlyAnswerZeroAfterAReport) {
  sim.onCall("profiles.writeValue", [] { throw std::bad_alloc(); });
  EXPECT_EQ(write("w"), 0U);
  EXPECT_THAT(program.reports(),
              ElementsAre(isReport("WriteSetting", "Errore in scrittura file: ", 7, kModule)));
}

// --- File version

TEST_F(Library, AFilesVersionHasTwoOrFourNumbersOrIsEmpty) {
  sim.putFile("C:\\p.exe", "MZ");
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", true), "");
  EXPECT_EQ(FileVersionText(program, "C:\\no.exe", true), "");
  sim.setFileVersion("C:\\p.exe", {3, 20, 30, 4});
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", false), "3.20");
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", true), "3.20.30.4");
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modLibrary
