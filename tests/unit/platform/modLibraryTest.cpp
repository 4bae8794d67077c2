#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/modLibrary.h"
#include "support/FakeProgram.h"

namespace trelv::modLibrary {
namespace {

using machine::SupportAnswer;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeProgram;

// --- Windows folder

TEST(WindowsFolder, IsLowerCase) {
  FakeProgram program;
  EXPECT_EQ(WindowsFolder(program), "c:\\windows");
}

TEST(WindowsFolder, EndsBeforeASystemFolder) {
  FakeProgram program;
  program.sim.system().setWindowsFolder("C:\\WINNT\\System32");
  EXPECT_EQ(WindowsFolder(program), "c:\\winnt");
}

TEST(WindowsFolder, IsCutAtTheFirstNul) {
  FakeProgram program;
  program.sim.system().setWindowsFolder(std::string("C:\\WINNT\0\0rest", 15));
  EXPECT_EQ(WindowsFolder(program), "c:\\winnt");
}

TEST(WindowsFolder, IsEmptyAfterAReportWhenTheSystemDoesNotTell) {
  FakeProgram program;
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.kind == sim::CallKind::WindowsFolderQuery ? std::optional<SystemCode>(5)
                                                          : std::nullopt;
  });
  EXPECT_EQ(WindowsFolder(program), "");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modLibrary");
  EXPECT_EQ(program.reports()[0].procedure, "WindowsFolder");
  EXPECT_EQ(program.reports()[0].failure.number(), 70);
}

TEST(GetWinDir, IsTheWindowsFolderOnAWorkstation) {
  FakeProgram program;
  EXPECT_EQ(GetWinDir(program), "c:\\windows");
}

TEST(GetWinDir, LiesBelowTheProfileOnATerminalServer) {
  FakeProgram program;
  program.state.startup.terminalServer = true;
  program.sim.system().setWindowsFolder("D:\\WINNT");
  program.sim.environment().put("USERPROFILE", "C:\\Users\\mario");
  EXPECT_EQ(GetWinDir(program), "C:\\Users\\mario\\windows");
}

TEST(GetWinDir, KeepsItsEndWithoutAProfile) {
  FakeProgram program;
  program.state.startup.terminalServer = true;
  program.sim.environment().remove("USERPROFILE");
  EXPECT_EQ(GetWinDir(program), "\\windows");
}

TEST(ProgramFilesFolder, IsShellFolder38) {
  FakeProgram program;
  program.sim.system().setShellFolder(38, "D:\\Programmi");
  EXPECT_EQ(ProgramFilesFolder(program), "D:\\Programmi");
}

// --- Temporary folders

TEST(GetTempDirectory, IsWhatTheSupportLibraryGives) {
  FakeProgram program;
  program.sim.support().setTemporaryPath("D:\\Lumo\\Tmp\\");
  EXPECT_EQ(GetTempDirectory(program), "D:\\Lumo\\Tmp\\");
}

TEST(GetTempDirectory, IsEmptyWhenTheFirstCharacterIsANul) {
  FakeProgram program;
  program.sim.support().setTemporaryPath("");
  EXPECT_EQ(GetTempDirectory(program), "");
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(GetTempDirectory, IsEmptyWhenTheBufferHasNoNul) {
  FakeProgram program;
  program.sim.support().setTemporaryAnswer(SupportAnswer::Yes);
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

machine::Machine withSupport(sim::SimMachine& sim, machine::SupportLibrary& support) {
  machine::Machine& m = sim.machine();
  return {m.files,  m.profiles, m.registry,      m.processes, m.environment, m.system,    m.clock,
          m.locale, m.versions, m.configuration, support,     m.desktop,     m.automation};
}

TEST(GetTempDirectory, HandsTheLibraryAHundredBlanks) {
  sim::SimMachine sim;
  MeasuringSupport support;
  machine::Machine machine = withSupport(sim, support);
  FakeProgram program(sim, machine);
  GetTempDirectory(program);
  EXPECT_EQ(support.received, std::string(100, ' '));
}

TEST(GetTempDirectory, IsTheUsersFolderWithoutTheLibrary) {
  for (const SupportAnswer answer : {SupportAnswer::Absent, SupportAnswer::Failed}) {
    FakeProgram program;
    program.sim.support().setTemporaryAnswer(answer);
    EXPECT_EQ(GetTempDirectory(program), "C:\\Users\\mario\\Temp\\");
    EXPECT_THAT(program.reports(), IsEmpty());
  }
}

TEST(WorkTempDirectory, IsTheTemporaryFolderOnAWorkstation) {
  FakeProgram program;
  EXPECT_EQ(WorkTempDirectory(program), "C:\\Users\\mario\\Temp\\");
}

TEST(WorkTempDirectory, IsTheParentWithABackslashOnATerminalServer) {
  FakeProgram program;
  program.state.startup.terminalServer = true;
  program.sim.support().setTemporaryPath("C:\\Users\\mario\\Temp\\3\\");
  EXPECT_EQ(WorkTempDirectory(program), "C:\\Users\\mario\\Temp\\");
}

TEST(WorkTempDirectory, IsOneBackslashWhenATerminalServerHasNoTemporaryFolder) {
  FakeProgram program;
  program.state.startup.terminalServer = true;
  program.sim.support().setTemporaryPath("");
  EXPECT_EQ(WorkTempDirectory(program), "\\");
}

// --- Making folders

TEST(CreaCartella, MakesAllMissingLevelsWithALineEach) {
  FakeProgram program;
  program.sim.mount("D:");
  program.sim.makeFolders("d:\\a");
  CreaCartella(program, "d:\\a\\b\\c");
  EXPECT_TRUE(program.sim.folderExists("d:\\a\\b\\c"));
  EXPECT_THAT(program.lines(), ElementsAre("Creazione path avvenuta correttamente:d:\\a\\b",
                                           "Creazione path avvenuta correttamente:d:\\a\\b\\c"));
}

TEST(CreaCartella, LeavesAnExistingFolderAloneInSilence) {
  FakeProgram program;
  CreaCartella(program, "C:\\WINDOWS");
  CreaCartella(program, "C:\\");
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST(CreaCartella, LogsTheLevelsThatFailAndRaisesNothing) {
  FakeProgram program;
  program.sim.diskOf("C:\\").denyWriting("C:\\");
  CreaCartella(program, "C:\\a\\b");
  EXPECT_THAT(program.lines(),
              ElementsAre("modLibrary - CreaCartella, errore in creazione cartella: C:\\a",
                          "modLibrary - CreaCartella, errore in creazione cartella: C:\\a\\b"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(CreaCartella, EndsAtTheRootOfAMissingDrive) {
  FakeProgram program;
  CreaCartella(program, "Q:\\a");
  EXPECT_THAT(program.lines(),
              ElementsAre("modLibrary - CreaCartella, errore in creazione cartella: Q:\\",
                          "modLibrary - CreaCartella, errore in creazione cartella: Q:\\a"));
}

TEST(CreaCartella, EndsAtAMissingShare) {
  FakeProgram program;
  CreaCartella(program, "\\\\srv\\dati\\a");
  EXPECT_THAT(
      program.lines(),
      ElementsAre("modLibrary - CreaCartella, errore in creazione cartella: \\\\srv\\dati",
                  "modLibrary - CreaCartella, errore in creazione cartella: \\\\srv\\dati\\a"));
}

TEST(CreaCartella, FailsOnAnEmptyPathAndOnAFileInItsPlace) {
  FakeProgram program;
  program.sim.putFile("C:\\a", "x");
  CreaCartella(program, "");
  CreaCartella(program, "C:\\a");
  EXPECT_THAT(program.lines(),
              ElementsAre("modLibrary - CreaCartella, errore in creazione cartella: ",
                          "modLibrary - CreaCartella, errore in creazione cartella: C:\\a"));
  EXPECT_EQ(program.sim.fileText("C:\\a"), "x");
}

TEST(CreaKvarTemp, MakesThePathAndItsSubFolder) {
  FakeProgram program;
  CreaKvarTemp(program, "C:\\a\\b\\");
  EXPECT_TRUE(program.sim.folderExists("C:\\a\\b\\kvar"));
  EXPECT_THAT(program.lines(), ElementsAre("Creazione path avvenuta correttamente:C:\\a\\",
                                           "Creazione path avvenuta correttamente:C:\\a\\b\\",
                                           "Creazione path avvenuta correttamente:C:\\a\\b\\kvar"));
}

TEST(CreaKvarTemp, AddsTheMissingBackslash) {
  FakeProgram program;
  CreaKvarTemp(program, "C:\\a\\b");
  EXPECT_TRUE(program.sim.folderExists("C:\\a\\b\\kvar"));
  EXPECT_THAT(program.lines(), ElementsAre("Creazione path avvenuta correttamente:C:\\a\\",
                                           "Creazione path avvenuta correttamente:C:\\a\\b",
                                           "Creazione path avvenuta correttamente:C:\\a\\b\\kvar"));
}

TEST(CreaKvarTemp, StartsBelowTheShareOfANetworkPath) {
  FakeProgram program;
  program.sim.mount("\\\\srv\\dati");
  CreaKvarTemp(program, "\\\\srv\\dati\\a");
  EXPECT_TRUE(program.sim.folderExists("\\\\srv\\dati\\a\\kvar"));
  EXPECT_THAT(program.lines(),
              ElementsAre("Creazione path avvenuta correttamente:\\\\srv\\dati\\a",
                          "Creazione path avvenuta correttamente:\\\\srv\\dati\\a\\kvar"));
}

TEST(CreaKvarTemp, ReportsAnErrorWithBothPaths) {
  FakeProgram program;
  // A line and the line that would tell its failure.
  program.log.linesWithoutMemory = 2;
  CreaKvarTemp(program, "C:\\a\\b");
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modLibrary");
  EXPECT_EQ(program.reports()[0].procedure, "CreaKvarTemp");
  EXPECT_EQ(program.reports()[0].message,
            "Verificare percorsi: \r\nvsPathTemp: C:\\a\\b\r\nsPathComodo: C:\\a\\");
  EXPECT_EQ(program.reports()[0].kind, ReportKind::ProgramError);
}

// --- Deleting

TEST(DeleteFile, TellsInTheLogThatTheFileIsGone) {
  FakeProgram program;
  program.sim.putFile("C:\\a.txt", "x");
  EXPECT_TRUE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_FALSE(program.sim.fileExists("C:\\a.txt"));
  EXPECT_THAT(program.lines(),
              ElementsAre("Cancellazione file: C:\\a.txt effettuata con successo"));
}

TEST(DeleteFile, AnswersFalseInSilenceWhenThereIsNone) {
  FakeProgram program;
  program.sim.makeFolders("C:\\d");
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_FALSE(DeleteFile(program, "C:\\d"));
  EXPECT_FALSE(DeleteFile(program, ""));
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_THAT(program.reports(), IsEmpty());
  EXPECT_TRUE(program.sim.folderExists("C:\\d"));
}

TEST(DeleteFile, ReportsAndLogsAFileThatStays) {
  FakeProgram program;
  program.sim.putFile("C:\\a.txt", "x");
  program.sim.diskOf("C:\\").setReadOnly("C:\\a.txt");
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].module, "modLibrary");
  EXPECT_EQ(program.reports()[0].procedure, "DeleteFile");
  EXPECT_EQ(program.reports()[0].failure.number(), 70);
  EXPECT_THAT(program.lines(), ElementsAre("Gestione ProdTrelv - Errore in cancellazione file: "
                                           "Autorizzazione negata: C:\\a.txt"));
}

/// The system says that it deleted, and what it deleted is still there.
void deleteInNameOnly(FakeProgram& program) {
  program.sim.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool deletes =
        call.kind == sim::CallKind::FileRemove || call.kind == sim::CallKind::FolderRemove;
    return deletes ? std::optional<SystemCode>(system_code::kSuccess) : std::nullopt;
  });
}

TEST(DeleteFile, AnswersFalseInSilenceWhenTheFileIsStillThere) {
  FakeProgram program;
  program.sim.putFile("C:\\a.txt", "x");
  deleteInNameOnly(program);
  EXPECT_FALSE(DeleteFile(program, "C:\\a.txt"));
  EXPECT_THAT(program.lines(), IsEmpty());
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(DeleteFolder, AnswersFalseInSilenceWhenTheFolderIsStillThere) {
  FakeProgram program;
  program.sim.makeFolders("C:\\d");
  deleteInNameOnly(program);
  EXPECT_FALSE(DeleteFolder(program, "C:\\d"));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(DeleteFolder, DropsOneTrailingBackslash) {
  FakeProgram program;
  program.sim.putFile("C:\\d\\e\\a.txt", "x");
  EXPECT_TRUE(DeleteFolder(program, "C:\\d\\"));
  EXPECT_FALSE(program.sim.folderExists("C:\\d"));
  EXPECT_THAT(program.lines(), IsEmpty());
}

TEST(DeleteFolder, AnswersTrueWhenThereIsNone) {
  FakeProgram program;
  EXPECT_TRUE(DeleteFolder(program, "C:\\d"));
  EXPECT_TRUE(DeleteFolder(program, ""));
  EXPECT_THAT(program.reports(), IsEmpty());
}

TEST(DeleteFolder, ReportsAFolderThatStays) {
  FakeProgram program;
  program.sim.putFile("C:\\d\\a.txt", "x");
  program.sim.diskOf("C:\\").holdOpen("C:\\d\\a.txt", sim::Sharing::None);
  EXPECT_FALSE(DeleteFolder(program, "C:\\d"));
  ASSERT_EQ(program.reports().size(), 1U);
  EXPECT_EQ(program.reports()[0].procedure, "DeleteFolder");
  EXPECT_TRUE(program.sim.folderExists("C:\\d"));
}

TEST(DeleteFolder, RefusesARoot) {
  FakeProgram program;
  EXPECT_FALSE(DeleteFolder(program, "C:\\"));
  EXPECT_TRUE(program.sim.folderExists("C:\\WINDOWS"));
}

TEST(Existence, TellsFilesFromFolders) {
  FakeProgram program;
  program.sim.putFile("C:\\d\\a.txt", "x");
  EXPECT_TRUE(FileExists(program, "C:\\d\\a.txt"));
  EXPECT_FALSE(FileExists(program, "C:\\d"));
  EXPECT_TRUE(FolderExists(program, "C:\\d\\"));
  EXPECT_FALSE(FolderExists(program, "C:\\d\\a.txt"));
}

// --- Path texts

TEST(ParentPath, IsTheTextBeforeTheLastBackslash) {
  EXPECT_EQ(ParentPath("C:\\a\\b.txt"), "C:\\a");
  EXPECT_EQ(ParentPath("C:\\a\\"), "C:\\a");
  EXPECT_EQ(ParentPath("C:\\a"), "C:");
  EXPECT_EQ(ParentPath("b.txt"), "");
  EXPECT_EQ(ParentPath(""), "");
}

TEST(Extension, IsTheTrimmedTextAfterTheLastPoint) {
  EXPECT_EQ(Extension("pack.zip"), "zip");
  EXPECT_EQ(Extension("pack.tar.gz"), "gz");
  EXPECT_EQ(Extension("pack. zip "), "zip");
  EXPECT_EQ(Extension("pack.ZIP"), "ZIP");
  EXPECT_EQ(Extension("pack."), "");
  EXPECT_EQ(Extension("pack"), "");
}

TEST(CutAtNul, KeepsATextWithoutNul) {
  EXPECT_EQ(CutAtNul(std::string("ab\0cd", 5)), "ab");
  EXPECT_EQ(CutAtNul(std::string("\0cd", 3)), "");
  EXPECT_EQ(CutAtNul("abcd"), "abcd");
}

TEST(TrimFolder, DropsBlanksAndOneBackslash) {
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

TEST(ReadSetting, GivesTheValueAndEmptyTextForAMissingOne) {
  FakeProgram program;
  program.sim.putFile("C:\\a.ini", "[S]\r\nk=v\r\n");
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "v");
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "x"}), "");
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "T", "k"}), "");
  EXPECT_EQ(ReadSetting(program, {"C:\\no.ini", "S", "k"}), "");
}

TEST(ReadSetting, CutsAfter510Characters) {
  FakeProgram program;
  program.sim.putFile(
      "C:\\a.ini", "[S]\r\na=" + std::string(510, 'x') + "\r\nb=" + std::string(511, 'y') + "\r\n");
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "a"}), std::string(510, 'x'));
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "b"}), std::string(510, 'y'));
}

TEST(WriteSetting, WritesAndTheNextReadSeesIt) {
  FakeProgram program;
  program.sim.putFile("C:\\a.ini", "[S]\r\nk=v\r\n");
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "v");
  EXPECT_NE(WriteSetting(program, {"C:\\a.ini", "S", "k"}, "w"), 0U);
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "w");
  EXPECT_EQ(program.sim.iniValue("C:\\a.ini", "S", "k"), "w");
}

TEST(WriteSetting, MakesTheFileWhenMissing) {
  FakeProgram program;
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "");
  EXPECT_NE(WriteSetting(program, {"C:\\a.ini", "S", "k"}, "w"), 0U);
  EXPECT_EQ(ReadSetting(program, {"C:\\a.ini", "S", "k"}), "w");
}

TEST(WriteSetting, WithoutASectionCallsNothing) {
  FakeProgram program;
  program.sim.putFile("C:\\a.ini", "[S]\r\nk=v\r\n");
  program.sim.callLog().clear();
  EXPECT_EQ(WriteSetting(program, {"C:\\a.ini", "", "k"}, "w"), 0U);
  EXPECT_THAT(program.sim.calls(), IsEmpty());
}

TEST(WriteSetting, AnswersZeroWhenRefused) {
  FakeProgram program;
  EXPECT_EQ(WriteSetting(program, {"C:\\no\\a.ini", "S", "k"}, "w"), 0U);
  EXPECT_THAT(program.reports(), IsEmpty());
}

// --- File version

TEST(FileVersionText, HasTwoOrFourNumbers) {
  FakeProgram program;
  program.sim.putFile("C:\\p.exe", "MZ");
  program.sim.setFileVersion("C:\\p.exe", {3, 20, 30, 4});
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", false), "3.20");
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", true), "3.20.30.4");
}

TEST(FileVersionText, IsEmptyWithoutAResourceOrAFile) {
  FakeProgram program;
  program.sim.putFile("C:\\p.exe", "MZ");
  EXPECT_EQ(FileVersionText(program, "C:\\p.exe", true), "");
  EXPECT_EQ(FileVersionText(program, "C:\\no.exe", true), "");
  EXPECT_THAT(program.reports(), IsEmpty());
}

}  // namespace
}  // namespace trelv::modLibrary
