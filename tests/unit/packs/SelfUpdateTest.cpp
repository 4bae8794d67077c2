#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/SelfUpdate.h"
#include "support/Installation.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::IsFileNewer;
using modProdTrelvManager::UpdateTrelvManager;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kOwn = "C:\\Lumo\\Programmi\\TrelvManager.exe";
constexpr const char* kClientFolder = "S:\\Lumo\\prg\\com\\bin\\cpy\\client";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kAmbver = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kTemporaries = "S:\\Lumo\\prg\\tempterm";
constexpr const char* kOldProgram = "S:\\Lumo\\prg\\tempterm\\TrelvManager.old";
constexpr const char* kScratch = "C:\\Users\\mario\\Temp\\ambver";

constexpr const char* kCopyLine =
    "Gestione ProdTrelv - Copia Trelvmanager.Exe su S:\\Lumo\\prg\\com\\bin\\cpy\\client";
constexpr const char* kCopied = "Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita";
constexpr const char* kNotCopied =
    "Gestione ProdTrelv - Copia Trelvmanager.Exe non eseguita: Il file destinazione è più recente";
constexpr const char* kStampLine =
    "Gestione ProdTrelv - Modifica file ambver su S:\\Lumo\\prg\\etc";
constexpr const char* kFailure = "Gestione ProdTrelv - Errore in aggiornamento TrelvManager ";

class SelfUpdate : public testing::Test {
 protected:
  SelfUpdate() {
    machine().clock().set({2009, 3, 5, 9, 7, 59});
    machine().putFile(kOwn, "il nuovo");
    setOwnDate({2009, 3, 1, 12, 0, 0});
    putClientCopy("il vecchio", {2009, 2, 1, 12, 0, 0});
    putAmbver("AMB0001 01/02/08 10:11\r\n");
  }

  void update() { UpdateTrelvManager(program_, "S:\\Lumo"); }

  void putClientCopy(const std::string& bytes, const machine::LocalTime& date) {
    share().put(kClientCopy, bytes);
    share().setModified(kClientCopy, date);
  }
  void setOwnDate(const machine::LocalTime& date) {
    machine().diskOf(kOwn).setModified(kOwn, date);
  }
  void putAmbver(const std::string& bytes) { share().put(kAmbver, bytes); }
  std::string ambverAfter(const std::string& before) {
    putAmbver(before);
    update();
    EXPECT_THAT(program_.reports(), IsEmpty());
    return share().text(kAmbver);
  }

  /// The operation ended by its error report; nothing of ambver was changed.
  void expectFailed(std::int32_t number) {
    ASSERT_EQ(program_.reports().size(), 1U);
    const FakeReport& report = program_.reports()[0];
    EXPECT_EQ(report.module, "ModProdTrelvManager");
    EXPECT_EQ(report.procedure, "UpdateTrelvManager");
    EXPECT_EQ(report.kind, 0);
    EXPECT_EQ(report.failure.number(), number);
    EXPECT_EQ(report.message, kFailure + report.failure.description());
    EXPECT_EQ(lines().back(), report.message);
    EXPECT_EQ(share().text(kAmbver), "AMB0001 01/02/08 10:11\r\n");
    EXPECT_THAT(share().names(kTemporaries), IsEmpty());
  }

  sim::SimMachine& machine() { return station_.machine(); }
  sim::SimDisk& share() { return installation_.share(); }
  const std::vector<std::string>& lines() { return program_.lines(); }

  Installation installation_;
  Station station_{installation_};
  FakeProgram& program_ = station_.program();
};

// --- Whether a file is newer

class FileNewer : public SelfUpdate {
 protected:
  bool newer(const std::string& source, const std::string& target) {
    return IsFileNewer(program_, source, target);
  }
  void put(const std::string& path, sim::FileTicks ticks) {
    machine().putFile(path, "x");
    machine().diskOf(path).setModifiedTicks(path, ticks);
  }
};

TEST_F(FileNewer, ThanATargetOneMinuteOlder) {
  put("C:\\a", 1'200'000'000'000);
  put("C:\\b", 1'200'600'000'000);
  EXPECT_TRUE(newer("C:\\b", "C:\\a"));
  EXPECT_FALSE(newer("C:\\a", "C:\\b"));
}

TEST_F(FileNewer, NotThanATargetOfTheSameDate) {
  put("C:\\a", 1'200'000'000'000);
  put("C:\\b", 1'200'000'000'000);
  EXPECT_FALSE(newer("C:\\a", "C:\\b"));
}

TEST_F(FileNewer, ComparesWholeSeconds) {
  put("C:\\a", 1'200'000'000'000);
  put("C:\\b", 1'200'009'999'999);
  put("C:\\c", 1'200'010'000'000);
  EXPECT_FALSE(newer("C:\\b", "C:\\a"));
  EXPECT_TRUE(newer("C:\\c", "C:\\b"));
}

TEST_F(FileNewer, ThanATargetThatIsMissing) {
  put("C:\\a", 1);
  EXPECT_TRUE(newer("C:\\a", "C:\\b"));
  EXPECT_TRUE(newer("C:\\a", "C:\\manca\\b"));
  EXPECT_TRUE(newer("C:\\manca", "C:\\b"));
}

TEST_F(FileNewer, ThanAFolderInTheTargetsPlace) {
  put("C:\\a", 1);
  machine().makeFolders("C:\\b");
  EXPECT_TRUE(newer("C:\\a", "C:\\b"));
}

TEST_F(FileNewer, WithoutASourceRaises) {
  put("C:\\b", 1);
  try {
    newer("C:\\a", "C:\\b");
    ADD_FAILURE() << "nothing was raised";
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.number(), 53);
  }
}

TEST_F(FileNewer, ThanATargetThatCannotBeLookedAtRaises) {
  put("C:\\a", 2);
  put("C:\\b", 1);
  machine().diskOf("C:\\").deny("b");
  EXPECT_THROW(newer("C:\\a", "C:\\b"), RuntimeError);
}

// --- The client copy

TEST_F(SelfUpdate, CopiesANewerProgramAndStampsTheEnvironmentFile) {
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_EQ(share().text(kAmbver), "AMB000105/03/09 09:07\r\n");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kCopied, kStampLine));
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_THAT(machine().boxes(), IsEmpty());
}

TEST_F(SelfUpdate, CopiesAProgramThatIsOneMinuteNewer) {
  putClientCopy("il vecchio", {2009, 3, 1, 11, 59, 0});
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
}

TEST_F(SelfUpdate, LeavesACopyOfTheSameDateAndStampsAllTheSame) {
  putClientCopy("il vecchio", {2009, 3, 1, 12, 0, 0});
  update();
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kNotCopied, kStampLine));
  EXPECT_EQ(share().text(kAmbver), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, LeavesANewerCopy) {
  putClientCopy("più nuovo", {2009, 3, 2, 0, 0, 0});
  update();
  EXPECT_EQ(share().text(kClientCopy), "più nuovo");
  EXPECT_EQ(lines()[1], kNotCopied);
}

TEST_F(SelfUpdate, MakesAMissingCopy) {
  share().removeTree(kClientCopy);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_EQ(lines()[1], kCopied);
}

TEST_F(SelfUpdate, KeepsTheProgramsDateSoThatTheNextOneCopiesNothing) {
  update();
  EXPECT_EQ(share().modifiedTicks(kClientCopy), sim::ticksOf({2009, 3, 1, 12, 0, 0}));
  program_.log.lines.clear();
  update();
  EXPECT_EQ(lines()[1], kNotCopied);
}

TEST_F(SelfUpdate, CopiesUnderTheNameOfTheRunningProgram) {
  machine().setExecutable("C:\\Altrove\\Gestore.EXE");
  update();
  EXPECT_TRUE(share().fileExists("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\Gestore.exe"));
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, PutsItInPlaceByOneRenameFromTheServersTemporaryFolder) {
  machine().onCall("files.replaceFile", [&] {
    EXPECT_EQ(share().text(kClientCopy), "il vecchio");
    EXPECT_THAT(share().names(kTemporaries), ElementsAre("TrelvManager-STAZIONE.tmp"));
    EXPECT_THAT(share().names(kClientFolder), ElementsAre("TrelvManager.exe"));
    machine().onCall("files.replaceFile", [&] {
      EXPECT_EQ(share().text(kAmbver), "AMB0001 01/02/08 10:11\r\n");
      EXPECT_THAT(share().names(kTemporaries), ElementsAre("ambver-STAZIONE.tmp"));
    });
  });
  update();
  EXPECT_EQ(machine().callLog().countOf("files.replaceFile"), 2U);
  EXPECT_EQ(machine().callLog().countOf("files.copyFile C:\\Lumo\\Programmi\\TrelvManager.exe"),
            1U);
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
}

TEST_F(SelfUpdate, MakesTheServersTemporaryFolder) {
  share().removeTree(kTemporaries);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine,
                                   "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm",
                                   kCopied, kStampLine));
}

TEST_F(SelfUpdate, WithoutAComputerNameWorksAllTheSame) {
  machine().system().failComputerName(system_code::kAccessDenied);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
}

TEST_F(SelfUpdate, CopyOfAProtectedProgramCanBeReplacedAgain) {
  machine().diskOf(kOwn).setReadOnly(kOwn);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_FALSE(share().isReadOnly(kClientCopy));
  machine().diskOf(kOwn).setReadOnly(kOwn, false);
  machine().putFile(kOwn, "il terzo");
  setOwnDate({2009, 3, 4, 12, 0, 0});
  update();
  EXPECT_EQ(share().text(kClientCopy), "il terzo");
}

// --- A client copy that resists

TEST_F(SelfUpdate, RunningCopyIsPutAsideAndReplaced) {
  const auto running = share().run(kClientCopy);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_EQ(share().text(kOldProgram), "il vecchio");
  EXPECT_THAT(share().names(kClientFolder), ElementsAre("TrelvManager.exe"));
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre(kCopyLine,
                                   "Gestione ProdTrelv - File temporaneo non rimosso: "
                                   "S:\\Lumo\\prg\\tempterm\\TrelvManager.old (Autorizzazione "
                                   "negata: S:\\Lumo\\prg\\tempterm\\TrelvManager.old)",
                                   kCopied, kStampLine));
}

TEST_F(SelfUpdate, ProgramThatWasPutAsideGoesAtTheNextSelfUpdate) {
  auto running = share().run(kClientCopy);
  update();
  running.reset();
  update();
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
}

TEST_F(SelfUpdate, CopyThatIsReadMeanwhileIsPutAsideAndReplaced) {
  share().holdOpen(kClientCopy, sim::Sharing::All);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// Not every server answers alike for a file in use.
TEST_F(SelfUpdate, CopyThatTheServerCallsSharedIsPutAsideToo) {
  int replacements = 0;
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool first = call.kind == sim::CallKind::FileReplace && ++replacements == 1;
    return first ? std::optional<SystemCode>(system_code::kSharingViolation) : std::nullopt;
  });
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(SelfUpdate, LockedCopyStaysWholeAndEndsIt) {
  share().holdOpen(kClientCopy, sim::Sharing::Read);
  update();
  expectFailed(70);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
  EXPECT_THAT(lines(), Not(Contains(kStampLine)));
  EXPECT_THAT(program_.reports()[0].message, HasSubstr(kClientCopy));
}

TEST_F(SelfUpdate, RunningCopyThatCannotBePutAsideStaysWhole) {
  const auto running = share().run(kClientCopy);
  share().put(kOldProgram, "ancora più vecchio");
  const auto oldRunning = share().run(kOldProgram);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
  EXPECT_EQ(share().text(kOldProgram), "ancora più vecchio");
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].failure.number(), 70);
  EXPECT_THAT(share().names(kTemporaries), ElementsAre("TrelvManager.old"));
}

TEST_F(SelfUpdate, CopyThatWasPutAsideComesBackWhenTheNewOneCannotTakeItsPlace) {
  const auto running = share().run(kClientCopy);
  int replacements = 0;
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    // The second one to the client copy's name: the new program, after the old one went aside.
    const bool toCopy = call.kind == sim::CallKind::FileReplace && call.target == kClientCopy &&
                        ++replacements == 2;
    return toCopy ? std::optional<SystemCode>(system_code::kNetNameDeleted) : std::nullopt;
  });
  update();
  EXPECT_EQ(replacements, 3);
  expectFailed(57);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, CopyThatCannotComeBackIsTold) {
  const auto running = share().run(kClientCopy);
  int replacements = 0;
  machine().callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
    const bool toCopy =
        call.kind == sim::CallKind::FileReplace && call.target == kClientCopy && ++replacements > 1;
    return toCopy ? std::optional<SystemCode>(system_code::kNetNameDeleted) : std::nullopt;
  });
  update();
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Copia precedente non ripristinata: "
                                "S:\\Lumo\\prg\\tempterm\\TrelvManager.old"));
  EXPECT_EQ(share().text(kOldProgram), "il vecchio");
  EXPECT_EQ(program_.reports().size(), 1U);
}

TEST_F(SelfUpdate, ProtectedCopyStaysAndEndsIt) {
  share().setReadOnly(kClientCopy);
  update();
  expectFailed(70);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, FolderInTheCopysPlaceStaysAndEndsIt) {
  share().removeTree(kClientCopy);
  share().makeFolders(std::string(kClientCopy) + "\\dentro");
  update();
  expectFailed(70);
  EXPECT_TRUE(share().folderExists(std::string(kClientCopy) + "\\dentro"));
}

// A mount point in the share: what cannot be renamed there is not copied there either.
TEST_F(SelfUpdate, TemporaryFolderOnAnotherVolumeEndsItWithoutHarm) {
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    constexpr SystemCode kNotSameDevice = 17;
    return call.kind == sim::CallKind::FileReplace ? std::optional<SystemCode>(kNotSameDevice)
                                                   : std::nullopt;
  });
  update();
  expectFailed(runtime_number::kApplicationDefined);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
  EXPECT_EQ(program_.reports()[0].message,
            std::string(kFailure) + "Errore di sistema 17: " + kClientCopy);
}

TEST_F(SelfUpdate, MissingOwnProgramEndsIt) {
  machine().setExecutable("C:\\Altrove\\Gestore.scr");
  update();
  expectFailed(53);
  EXPECT_THAT(program_.reports()[0].message, HasSubstr("C:\\Altrove\\Gestore.exe"));
}

TEST_F(SelfUpdate, MissingOwnProgramEndsItWhereACopyStands) {
  machine().setExecutable("C:\\Altrove\\TrelvManager.scr");
  update();
  expectFailed(53);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, MissingClientFolderEndsItAndIsNotMade) {
  share().removeTree(kClientFolder);
  update();
  expectFailed(76);
  EXPECT_FALSE(share().folderExists(kClientFolder));
}

TEST_F(SelfUpdate, FullShareLeavesTheOldCopyWhole) {
  share().setCapacity(share().usedBytes() + 3);
  update();
  expectFailed(61);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, WithoutAHostServerFolderTouchesNoDrive) {
  UpdateTrelvManager(program_, "");
  expectFailed(76);
  EXPECT_FALSE(machine().folderExists("C:\\prg"));
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, WithoutAFileSystemObjectIsReported) {
  program_.fileSystem.missing = true;
  update();
  expectFailed(91);
}

// --- What an update that was ended by force has left

TEST_F(SelfUpdate, RemovesLeftoversAlsoWhenNothingIsCopied) {
  putClientCopy("più nuovo", {2009, 3, 2, 0, 0, 0});
  putAmbver("");
  for (const char* const name :
       {"TrelvManager-STAZIONE.tmp", "ambver-STAZIONE.tmp", "TrelvManager.old"}) {
    const std::string path = std::string(kTemporaries) + "\\" + name;
    share().put(path, "metà");
    share().setReadOnly(path);
  }
  update();
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kNotCopied, kStampLine));
}

// Ended between the two renames of a copy in use.
TEST_F(SelfUpdate, CopyThatWasLeftAsideComesBackBeforeTheNewOneIsTried) {
  share().put(kOldProgram, "il vecchio");
  share().setModified(kOldProgram, {2009, 2, 1, 12, 0, 0});
  share().removeTree(kClientCopy);
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre(kCopyLine,
                                   std::string("Gestione ProdTrelv - Copia precedente "
                                               "ripristinata: ") +
                                       kClientCopy,
                                   kCopied, kStampLine));
}

TEST_F(SelfUpdate, CopyThatWasLeftAsideIsNotLostWhereTheNewOneCannotBeMade) {
  share().put(kOldProgram, "il vecchio");
  share().removeTree(kClientCopy);
  share().setCapacity(share().usedBytes() + 3);
  update();
  expectFailed(61);
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, CopyThatWasLeftAsideReplacesNoneThatCannotBeLookedAt) {
  share().put(kOldProgram, "ancora più vecchio");
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.text == std::string("files.look ") + kClientCopy
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  update();
  EXPECT_EQ(share().text(kClientCopy), "il vecchio");
}

TEST_F(SelfUpdate, LeavesTheTemporariesOfOtherWorkstations) {
  share().put("S:\\Lumo\\prg\\tempterm\\TrelvManager-ALTRA.tmp", "in viaggio");
  share().put("S:\\Lumo\\prg\\tempterm\\agdv.lck", "x");
  update();
  EXPECT_THAT(share().names(kTemporaries), ElementsAre("TrelvManager-ALTRA.tmp", "agdv.lck"));
}

TEST_F(SelfUpdate, TwoWorkstationsAtOnceBothSucceed) {
  Station other(installation_);
  other.machine().system().setComputerName("ALTRA");
  other.machine().clock().set({2009, 3, 5, 9, 7, 59});
  other.machine().putFile(kOwn, "dell'altra");
  other.machine().diskOf(kOwn).setModified(kOwn, {2009, 2, 15, 0, 0, 0});
  machine().onCall("files.replaceFile", [&] { UpdateTrelvManager(other.program(), "S:\\Lumo"); });
  update();
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_THAT(other.program().reports(), IsEmpty());
  EXPECT_THAT(share().names(kTemporaries), IsEmpty());
}

// --- The environment file

TEST_F(SelfUpdate, KeepsOnlyTheLastLineWithoutItsBlankAndOldDate) {
  EXPECT_EQ(ambverAfter("prima\r\nseconda\r\nAMB0001 01/02/08 10:11\r\n"),
            "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, LastLineMayLackItsEnd) {
  EXPECT_EQ(ambverAfter("prima\r\nAMB0001 01/02/08 10:11"), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, LinesMayEndWithLineFeedsOnly) {
  EXPECT_EQ(ambverAfter("prima\nAMB0001 01/02/08 10:11\n"), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, LoneCarriageReturnEndsNoLine) {
  EXPECT_EQ(ambverAfter("abc\rdefghi\r\n"), "abc\rdef05/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, ShortLineIsKeptWhole) {
  EXPECT_EQ(ambverAfter("AMB\r\n"), "AMB05/03/09 09:07\r\n");
  EXPECT_EQ(ambverAfter("A"), "A05/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, LineOfSevenCharactersIsKeptWhole) {
  EXPECT_EQ(ambverAfter("AMB0001\r\n"), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, BlankLineCounts) {
  EXPECT_EQ(ambverAfter("AMB0001\r\n \r\n"), " 05/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, BytesOutsideAsciiAreKept) {
  const std::string head("\xE0\x81\xFF\x00\xC3\xA8\x1A", 7);
  EXPECT_EQ(ambverAfter(head + " 01/02/08 10:11\r\n"), head + "05/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, ByteOrderMarkCountsAsCharacters) {
  EXPECT_EQ(ambverAfter("\xEF\xBB\xBF"
                        "AMB0001\r\n"),
            "\xEF\xBB\xBF"
            "AMB005/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, HugeFileBecomesOneLine) {
  std::string bytes;
  for (int i = 0; i < 200'000; ++i) {
    bytes += "AMB0001 01/02/08 10:11\r\n";
  }
  EXPECT_EQ(ambverAfter(bytes + "AMB0002 x"), "AMB000205/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, EmptyLastLineLeavesTheFileAsItIs) {
  for (const char* const text : {"", "\r\n", "\n", "AMB0001 01/02/08\r\n\r\n", "AMB0001\n\n",
                                 "AMB0001\r\n\n", "AMB0001\n\r\n"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(ambverAfter(text), text);
  }
  EXPECT_EQ(lines().back(), kStampLine);
  EXPECT_FALSE(machine().fileExists(kScratch));
}

TEST_F(SelfUpdate, YearHasTwoDigitsAndHoursCountTo24) {
  machine().clock().set({2000, 12, 31, 23, 5, 0});
  EXPECT_EQ(ambverAfter("AMB0001"), "AMB000131/12/00 23:05\r\n");
  machine().clock().set({2107, 1, 2, 0, 0, 0});
  EXPECT_EQ(ambverAfter("AMB0001"), "AMB000102/01/07 00:00\r\n");
}

TEST_F(SelfUpdate, SeparatorsOfTheDateAreThoseWrittenWhateverTheLocale) {
  machine().locale().setLanguage(sim::Language::English);
  EXPECT_EQ(ambverAfter("AMB0001"), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, NewLineIsMadeInAScratchCopyInTheTemporaryFolder) {
  update();
  EXPECT_EQ(machine().fileText(kScratch), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, OldScratchCopyIsDeletedFirst) {
  machine().putFile(kScratch, "di ieri");
  update();
  EXPECT_EQ(machine().fileText(kScratch), "AMB000105/03/09 09:07\r\n");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kCopied, kStampLine,
                                   "Cancellazione file: C:\\Users\\mario\\Temp\\ambver effettuata "
                                   "con successo"));
}

TEST_F(SelfUpdate, NothingStandsBetweenTemporaryFolderAndScratchCopy) {
  machine().makeFolders("C:\\T");
  machine().support().setTemporaryPath("C:\\T");
  update();
  EXPECT_EQ(machine().fileText("C:\\Tambver"), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, WithoutATemporaryFolderTheEnvironmentFileStays) {
  machine().support().setTemporaryPath("");
  update();
  expectFailed(76);
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
}

TEST_F(SelfUpdate, ProtectedScratchCopyEndsIt) {
  machine().putFile(kScratch, "di ieri");
  machine().diskOf(kScratch).setReadOnly(kScratch);
  update();
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in cancellazione file: ", StartsWith(kFailure)));
  EXPECT_EQ(share().text(kAmbver), "AMB0001 01/02/08 10:11\r\n");
}

TEST_F(SelfUpdate, MissingEnvironmentFileEndsItAndIsNotMade) {
  share().removeTree(kAmbver);
  update();
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].failure.number(), 53);
  EXPECT_FALSE(share().exists(kAmbver));
  EXPECT_EQ(share().text(kClientCopy), "il nuovo");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kCopied, kStampLine, StartsWith(kFailure)));
}

TEST_F(SelfUpdate, FolderInTheEnvironmentFilesPlaceEndsIt) {
  share().removeTree(kAmbver);
  share().makeFolders(kAmbver);
  update();
  ASSERT_EQ(program_.reports().size(), 1U);
  EXPECT_EQ(program_.reports()[0].failure.number(), 70);
  EXPECT_TRUE(share().folderExists(kAmbver));
}

TEST_F(SelfUpdate, ProtectedEnvironmentFileStaysAndEndsIt) {
  share().setReadOnly(kAmbver);
  update();
  expectFailed(70);
}

TEST_F(SelfUpdate, EnvironmentFileThatIsReadMeanwhileStaysWholeAndEndsIt) {
  share().holdOpen(kAmbver, sim::Sharing::All);
  update();
  share().release(kAmbver);
  expectFailed(70);
}

TEST_F(SelfUpdate, LockedEnvironmentFileEndsIt) {
  share().holdOpen(kAmbver, sim::Sharing::None);
  update();
  share().release(kAmbver);
  expectFailed(70);
}

}  // namespace
}  // namespace trelv::tests
