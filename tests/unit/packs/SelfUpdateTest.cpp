#include "packs/SelfUpdate.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/StationTest.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::UpdateTrelvManager;
using sim::CallKind;

constexpr const char* kOwn = "C:\\Lumo\\Programmi\\TrelvManager.exe";
constexpr const char* kClientCopyFolder = "S:\\Lumo\\prg\\com\\bin\\cpy\\client";
constexpr const char* kClientCopy = "S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
constexpr const char* kAmbver = "S:\\Lumo\\prg\\etc\\ambver";
constexpr const char* kTemporaries = "S:\\Lumo\\prg\\tempterm";
constexpr const char* kCopies = "S:\\Lumo\\prg\\com\\bin\\cpy";
constexpr const char* kMark = "Zone.Identifier";
/// Who may change the client copy, and who may only start it.
const sim::RightsList kOfTheClientCopy{{"mario", sim::Right::All}, {"*", sim::Right::Read}};
const sim::RightsList kEveryone{{"*", sim::Right::All}};
constexpr const char* kScratch = "C:\\Users\\mario\\Temp\\ambver";

constexpr const char* kCopyLine =
    "Gestione ProdTrelv - Copia Trelvmanager.Exe su S:\\Lumo\\prg\\com\\bin\\cpy\\client";
constexpr const char* kCopied = "Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita";
constexpr const char* kNotCopied =
    "Gestione ProdTrelv - Copia Trelvmanager.Exe non eseguita: Il file destinazione è più recente";
constexpr const char* kStampLine =
    "Gestione ProdTrelv - Modifica file ambver su S:\\Lumo\\prg\\etc";
constexpr const char* kFailure = "Gestione ProdTrelv - Errore in aggiornamento TrelvManager ";

/// A manager of 1 March 2009, "il nuovo", and a client copy of a month before, "il vecchio".
class SelfUpdate : public StationTest {
 public:
  SelfUpdate() {
    machine().clock().set({2009, 3, 5, 9, 7, 59});
    putOwn("il nuovo", {2009, 3, 1, 12, 0, 0});
    putClientCopy("il vecchio", {2009, 2, 1, 12, 0, 0});
    share().put(kAmbver, "AMB0001 01/02/08 10:11\r\n");
  }

  void update() { UpdateTrelvManager(program(), "S:\\Lumo"); }

  void putOwn(const std::string& bytes, const machine::LocalTime& date) {
    machine().putFile(kOwn, bytes);
    disk().setModified(kOwn, date);
  }
  void putClientCopy(const std::string& bytes, const machine::LocalTime& date) {
    share().put(kClientCopy, bytes);
    share().setModified(kClientCopy, date);
  }
  std::string clientCopy() { return share().text(kClientCopy); }
  /// Puts a program aside as an update of the process 99 does; gives its path.
  std::string putAside(const std::string& bytes, const machine::LocalTime& date) {
    const std::string path = std::string(kCopies) + "\\TrelvManager-ALTRA-2-99-" +
                             std::to_string(bytes.size()) + "-" +
                             std::to_string(sim::ticksOf(date)) + ".old";
    share().put(path, bytes);
    share().setModified(path, date);
    return path;
  }
  /// What stands beside the client copy's folder.
  std::vector<std::string> putAsides() {
    std::vector<std::string> names = share().names(kCopies);
    std::erase(names, "client");
    return names;
  }
  std::string ambver() { return share().text(kAmbver); }
  std::vector<std::string> temporaries() { return share().names(kTemporaries); }

  /// The update ended by its error report with a failure of this number.
  void expectFailed(std::int32_t number) {
    ASSERT_THAT(reports(),
                ElementsAre(isReport("UpdateTrelvManager", StartsWith(kFailure), number)));
    EXPECT_EQ(reports()[0].message, kFailure + reports()[0].failure.description());
    EXPECT_EQ(lines().back(), reports()[0].message);
  }
};

// --- Whether a file is newer

class FileNewer : public SelfUpdate {
 public:
  bool newer(const std::string& source, const std::string& target) {
    return modProdTrelvManager::IsFileNewer(program(), source, target);
  }
  void put(const std::string& path, sim::FileTicks ticks) {
    machine().putFile(path, "x");
    disk().setModifiedTicks(path, ticks);
  }
};

TEST_F(FileNewer, ThanATargetThatIsOlderInWholeSeconds) {
  put("C:\\a", 1'200'000'000'000);
  put("C:\\same", 1'200'000'000'000);
  put("C:\\sameSecond", 1'200'009'999'999);
  put("C:\\nextSecond", 1'200'010'000'000);
  EXPECT_FALSE(newer("C:\\same", "C:\\a"));
  EXPECT_FALSE(newer("C:\\sameSecond", "C:\\a"));
  EXPECT_TRUE(newer("C:\\nextSecond", "C:\\sameSecond"));
  EXPECT_FALSE(newer("C:\\sameSecond", "C:\\nextSecond"));
}

TEST_F(FileNewer, ThanATargetThatIsMissingOrAFolder) {
  put("C:\\a", 1);
  machine().makeFolders("C:\\folder");
  EXPECT_TRUE(newer("C:\\a", "C:\\b"));
  EXPECT_TRUE(newer("C:\\a", "C:\\manca\\b"));
  EXPECT_TRUE(newer("C:\\manca", "C:\\b"));
  EXPECT_TRUE(newer("C:\\a", "C:\\folder"));
}

TEST_F(FileNewer, RaisesWithoutASourceAndForATargetThatCannotBeLookedAt) {
  put("C:\\b", 1);
  EXPECT_THAT([this] { newer("C:\\a", "C:\\b"); }, testing::Throws<RuntimeError>(isFailure(53)));
  put("C:\\a", 2);
  disk().deny("b");
  EXPECT_THROW(newer("C:\\a", "C:\\b"), RuntimeError);
}

// --- The client copy

TEST_F(SelfUpdate, CopiesANewerProgramAndStampsTheEnvironmentFile) {
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(ambver(), "AMB000105/03/09 09:07\r\n");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kCopied, kStampLine));
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(SelfUpdate, LeavesACopyOfTheSameOrALaterDateAndStampsAllTheSame) {
  for (const machine::LocalTime& date : {machine::LocalTime{2009, 3, 1, 12, 0, 0}, {2009, 3, 2}}) {
    putClientCopy("il vecchio", date);
    share().put(kAmbver, "AMB0001");
    update();
    EXPECT_EQ(clientCopy(), "il vecchio");
    EXPECT_EQ(ambver(), "AMB000105/03/09 09:07\r\n");
    EXPECT_THAT(lines(), AllOf(Contains(kNotCopied), Not(Contains(kCopied))));
  }
}

TEST_F(SelfUpdate, KeepsTheProgramsDateSoThatTheNextOneCopiesNothing) {
  update();
  EXPECT_EQ(share().modifiedTicks(kClientCopy), sim::ticksOf({2009, 3, 1, 12, 0, 0}));
  update();
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kCopied, kStampLine, kCopyLine, kNotCopied,
                                   kStampLine, StartsWith("Cancellazione file: ")));
}

TEST_F(SelfUpdate, CopiesUnderTheNameOfTheRunningProgram) {
  machine().setExecutable("C:\\Altrove\\Gestore.EXE");
  update();
  EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe", "Gestore.exe"));
  EXPECT_EQ(clientCopy(), "il vecchio");
}

TEST_F(SelfUpdate, PutsItInPlaceByOneRenameFromTheServersTemporaryFolder) {
  machine().onCall("files.replaceFile", [&] {
    EXPECT_EQ(clientCopy(), "il vecchio");
    EXPECT_THAT(temporaries(), ElementsAre("TrelvManager.lck", "TrelvManager-STAZIONE-1-4711.tmp"));
    EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe"));
    machine().onCall("files.replaceFile", [&] {
      EXPECT_EQ(ambver(), "AMB0001 01/02/08 10:11\r\n");
      EXPECT_THAT(temporaries(), ElementsAre("TrelvManager.lck", "ambver-STAZIONE-1-4711.tmp"));
    });
  });
  update();
  EXPECT_EQ(machine().callLog().countOf("files.replaceFile"), 2U);
  EXPECT_EQ(machine().callLog().countOf("files.copyFile C:\\Lumo\\Programmi\\TrelvManager.exe"),
            1U);
  EXPECT_THAT(temporaries(), IsEmpty());
}

/// A circumstance that does not keep the program from being copied, and the line that tells it.
struct Circumstance : Row {
  void (*arrange)(SelfUpdate&);
  std::string line;
};

const std::vector<Circumstance> kCircumstances{
    {"CopyIsOneMinuteOlder",
     [](SelfUpdate& t) {
       t.putClientCopy("il vecchio", {2009, 3, 1, 11, 59, 0});
     },
     ""},
    {"CopyIsMissing", [](SelfUpdate& t) { t.share().removeTree(kClientCopy); }, ""},
    {"CopyIsReadForAMoment",
     [](SelfUpdate& t) {
       t.share().holdOpen(kClientCopy, sim::Sharing::All);
       t.machine().clock().after(5, [&t] { t.share().release(kClientCopy); });
     },
     ""},
    // Not every server answers alike for a file in use.
    {"ServerCallsTheCopyShared",
     [](SelfUpdate& t) {
       t.machine().callLog().setInjector(
           refuse(CallKind::FileReplace, 1, 1, system_code::kSharingViolation));
     },
     ""},
    // An update was ended between the two renames of a copy in use.
    {"CopyWasLeftAside",
     [](SelfUpdate& t) {
       t.putAside("il vecchio", {2009, 2, 1, 12, 0, 0});
       t.share().removeTree(kClientCopy);
     },
     std::string("Gestione ProdTrelv - Copia precedente ripristinata: ") + kClientCopy},
    {"TemporaryFolderIsMissing", [](SelfUpdate& t) { t.share().removeTree(kTemporaries); },
     "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm"},
    {"ComputerHasNoName",
     [](SelfUpdate& t) { t.machine().system().failComputerName(system_code::kAccessDenied); }, ""},
    {"OwnProgramIsProtected", [](SelfUpdate& t) { t.disk().setReadOnly(kOwn); }, ""},
    {"DateIsWrittenOtherwise",
     [](SelfUpdate& t) { t.machine().locale().setLanguage(sim::Language::English); }, ""}};

class SelfUpdateWhen : public SelfUpdate, public testing::WithParamInterface<Circumstance> {};

TEST_P(SelfUpdateWhen, CopiesAndStamps) {
  GetParam().arrange(*this);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_FALSE(share().isReadOnly(kClientCopy));
  EXPECT_EQ(ambver(), "AMB000105/03/09 09:07\r\n");
  EXPECT_THAT(temporaries(), IsEmpty());
  EXPECT_THAT(reports(), IsEmpty());
  std::vector<std::string> expected{kCopyLine, GetParam().line, kCopied, kStampLine};
  std::erase(expected, "");
  EXPECT_EQ(lines(), expected);
}

INSTANTIATE_TEST_SUITE_P(When, SelfUpdateWhen, testing::ValuesIn(kCircumstances), NameOfRow());

TEST_F(SelfUpdate, CopyOfAProtectedProgramCanBeReplacedAgain) {
  disk().setReadOnly(kOwn);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_FALSE(share().isReadOnly(kClientCopy));
  putOwn("il terzo", {2009, 3, 4, 12, 0, 0});
  update();
  EXPECT_EQ(clientCopy(), "il terzo");
}

// --- A client copy in use

TEST_F(SelfUpdate, RunningCopyIsPutAsideAndReplacedAndGoesAtTheNextSelfUpdate) {
  auto running = share().run(kClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  ASSERT_THAT(putAsides(), ElementsAre(StartsWith("TrelvManager-STAZIONE-1-4711-10-")));
  const std::string aside = std::string(kCopies) + "\\" + putAsides().front();
  EXPECT_EQ(share().text(aside), "il vecchio");
  EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe"));
  EXPECT_THAT(temporaries(), IsEmpty());
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre(kCopyLine,
                                   "Gestione ProdTrelv - File temporaneo non rimosso: " + aside +
                                       " (Autorizzazione negata: " + aside + ")",
                                   kCopied, kStampLine));
  running.reset();
  update();
  EXPECT_THAT(putAsides(), IsEmpty());
}

/// Whoever installs waits for what may pass, and once.
TEST_F(SelfUpdate, WaitsOnceForACopyInUseAndOnceForAnEnvironmentFileInUse) {
  const auto running = share().run(kClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(machine().clock().paused(), 3000U);
  putOwn("il terzo", {2009, 3, 4, 12, 0, 0});
  share().holdOpen(kClientCopy, sim::Sharing::Read);
  share().holdOpen(kAmbver, sim::Sharing::Read);
  update();
  expectFailed(70);
  EXPECT_LE(machine().clock().paused(), 9000U) << "one put aside, the copy, the environment file";
}

TEST_F(SelfUpdate, CopyThatIsReadForLongIsPutAsideAndGoesWhenItIsClosed) {
  share().holdOpen(kClientCopy, sim::Sharing::All);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(reports(), IsEmpty());
  ASSERT_THAT(putAsides(), testing::SizeIs(1));
  share().release(std::string(kCopies) + "\\" + putAsides().front());
  EXPECT_THAT(putAsides(), IsEmpty());
}

TEST_F(SelfUpdate, RunningCopyThatCannotBePutAsideStaysWhole) {
  const auto running = share().run(kClientCopy);
  machine().callLog().setInjector(refuse({CallKind::FileMove}));
  update();
  expectFailed(70);
  EXPECT_EQ(clientCopy(), "il vecchio");
  EXPECT_THAT(putAsides(), IsEmpty());
  EXPECT_THAT(temporaries(), IsEmpty());
}

// Whoever may rename files of a folder may not always make new ones.
TEST_F(SelfUpdate, RunningCopyStaysWhereNoOtherOneCouldBeMade) {
  const auto running = share().run(kClientCopy);
  share().setRights(kClientCopyFolder,
                    {{"*", sim::Right::Read | sim::Right::Change | sim::Right::Remove}});
  update();
  expectFailed(70);
  EXPECT_EQ(machine().callLog().countOf("files.moveFile"), 0U);
  EXPECT_EQ(clientCopy(), "il vecchio");
}

TEST_F(SelfUpdate, RunningCopyIsLeftToAWorkstationThatPutItsOwnThereMeanwhile) {
  const auto running = share().run(kClientCopy);
  // The second rename is that of the new program.
  machine().onCall("files.moveFile", [&] {
    machine().onCall("files.moveFile", [&] {
      putClientCopy("dell'altra", {2009, 2, 20, 0, 0, 0});
    });
  });
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(temporaries(), IsEmpty());
}

TEST_F(SelfUpdate, RunningCopyThatAnotherWorkstationBroughtBackMeanwhileIsPutAsideAgain) {
  const auto running = share().run(kClientCopy);
  Station other(installation_);
  other.machine().system().setComputerName("ALTRA");
  other.machine().clock().set({2009, 3, 5, 9, 7, 59});
  machine().onCall("files.moveFile", [&] {
    machine().onCall("files.moveFile", [&] { UpdateTrelvManager(other.program(), "S:\\Lumo"); });
  });
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(putAsides(), testing::SizeIs(1));
}

// The first rename to the client copy's name is that of the new program, the second brings the old
// one back.
TEST_F(SelfUpdate, CopyThatWasPutAsideComesBackWhenTheNewOneCannotTakeItsPlace) {
  const auto running = share().run(kClientCopy);
  machine().callLog().setInjector(
      refuse(CallKind::FileMove, 1, 1, system_code::kNetNameDeleted, kClientCopy));
  update();
  expectFailed(57);
  EXPECT_EQ(clientCopy(), "il vecchio");
  EXPECT_EQ(ambver(), "AMB0001 01/02/08 10:11\r\n");
  EXPECT_THAT(temporaries(), IsEmpty());
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("non ripristinata"))));
}

TEST_F(SelfUpdate, CopyThatCannotComeBackIsTold) {
  const auto running = share().run(kClientCopy);
  machine().callLog().setInjector(
      refuse(CallKind::FileMove, 1, 2, system_code::kNetNameDeleted, kClientCopy));
  update();
  expectFailed(57);
  ASSERT_THAT(putAsides(), testing::SizeIs(1));
  const std::string aside = std::string(kCopies) + "\\" + putAsides().front();
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Copia precedente non ripristinata: " + aside));
  EXPECT_EQ(share().text(aside), "il vecchio");
}

// --- What ends it

/// Something in the way of an update: the failure that is told; whether the client copy was made
/// before. Nothing else on the share changes.
struct Obstacle : Row {
  void (*arrange)(SelfUpdate&);
  std::int32_t number;
  std::string description;
  bool copied = false;
};

const std::string kCopyDenied = std::string("Autorizzazione negata: ") + kClientCopy;
const std::string kAmbverDenied = std::string("Autorizzazione negata: ") + kAmbver;

const std::vector<Obstacle> kObstacles{
    {"LockedCopy", [](SelfUpdate& t) { t.share().holdOpen(kClientCopy, sim::Sharing::Read); }, 70,
     kCopyDenied},
    {"ProtectedCopy", [](SelfUpdate& t) { t.share().setReadOnly(kClientCopy); }, 70, kCopyDenied},
    {"FolderInTheCopysPlace",
     [](SelfUpdate& t) {
       t.share().removeTree(kClientCopy);
       t.share().makeFolders(std::string(kClientCopy) + "\\dentro");
     },
     70, kCopyDenied},
    // A mount point in the share: what cannot be renamed there is not copied there either.
    {"TemporaryFolderOnAnotherVolume",
     [](SelfUpdate& t) { t.machine().callLog().setInjector(refuse({CallKind::FileReplace}, 17)); },
     440, std::string("Errore di sistema 17: ") + kClientCopy},
    {"MissingOwnProgram",
     [](SelfUpdate& t) { t.machine().setExecutable("C:\\Altrove\\Gestore.scr"); }, 53,
     "Impossibile trovare il file: C:\\Altrove\\Gestore.exe"},
    {"MissingOwnProgramWhereACopyStands",
     [](SelfUpdate& t) { t.machine().setExecutable("C:\\Altrove\\TrelvManager.scr"); }, 53,
     "Impossibile trovare il file: C:\\Altrove\\TrelvManager.exe"},
    {"MissingClientCopyFolder", [](SelfUpdate& t) { t.share().removeTree(kClientCopyFolder); }, 76,
     std::string("Impossibile trovare il percorso: ") + kClientCopyFolder +
         "\\TrelvManager-STAZIONE-1-4711.tmp"},
    {"FullShare", [](SelfUpdate& t) { t.share().setCapacity(t.share().usedBytes() + 3); }, 61,
     "Disco pieno: S:\\Lumo\\prg\\tempterm\\TrelvManager-STAZIONE-1-4711.tmp"},
    {"NoTemporaryFolder", [](SelfUpdate& t) { t.machine().support().setTemporaryPath(""); }, 76,
     "Cartella temporanea non disponibile", true},
    {"MissingEnvironmentFile", [](SelfUpdate& t) { t.share().removeTree(kAmbver); }, 53,
     std::string("Impossibile trovare il file: ") + kAmbver, true},
    {"FolderInTheEnvironmentFilesPlace",
     [](SelfUpdate& t) {
       t.share().removeTree(kAmbver);
       t.share().makeFolders(kAmbver);
     },
     70, kAmbverDenied, true},
    {"ProtectedEnvironmentFile", [](SelfUpdate& t) { t.share().setReadOnly(kAmbver); }, 70,
     kAmbverDenied, true},
    {"EnvironmentFileThatIsReadMeanwhile",
     [](SelfUpdate& t) { t.share().holdOpen(kAmbver, sim::Sharing::All); }, 70, kAmbverDenied,
     true},
    {"LockedEnvironmentFile",
     [](SelfUpdate& t) { t.share().holdOpen(kAmbver, sim::Sharing::None); }, 70,
     std::string("File in uso da un altro programma: ") + kAmbver, true}};

class SelfUpdateObstacle : public SelfUpdate, public testing::WithParamInterface<Obstacle> {};

TEST_P(SelfUpdateObstacle, EndsItWithAReportAndWithoutHarm) {
  GetParam().arrange(*this);
  std::string expected = share().tree();
  if (GetParam().copied) {
    const std::string copy = "TrelvManager.exe ";
    expected.replace(expected.find(copy + "10"), copy.size() + 2, copy + "8");
  }
  update();
  expectFailed(GetParam().number);
  EXPECT_EQ(reports()[0].failure.description(), GetParam().description);
  EXPECT_THAT(lines(), testing::AnyOf(ElementsAre(kCopyLine, testing::_),
                                      ElementsAre(kCopyLine, kCopied, kStampLine, testing::_)));
  EXPECT_EQ(lines().size() == 4, GetParam().copied);
  EXPECT_EQ(share().tree(), expected);
}

INSTANTIATE_TEST_SUITE_P(Of, SelfUpdateObstacle, testing::ValuesIn(kObstacles), NameOfRow());

TEST_F(SelfUpdate, WithoutAServerPathTouchesNoDrive) {
  UpdateTrelvManager(program(), "");
  expectFailed(76);
  EXPECT_FALSE(machine().folderExists("C:\\prg"));
  EXPECT_EQ(clientCopy(), "il vecchio");
}

TEST_F(SelfUpdate, ProtectedScratchCopyEndsIt) {
  machine().putFile(kScratch, "di ieri");
  disk().setReadOnly(kScratch);
  update();
  EXPECT_THAT(program().reportTexts(),
              ElementsAre("Errore in cancellazione file: ", StartsWith(kFailure)));
  EXPECT_EQ(ambver(), "AMB0001 01/02/08 10:11\r\n");
}

// --- What an update that was ended by force has left

TEST_F(SelfUpdate, RemovesLeftoversOfThisComputerAlsoWhenNothingIsCopied) {
  putClientCopy("più nuovo", {2009, 3, 2, 0, 0, 0});
  share().put(kAmbver, "");
  for (const std::string& name :
       {std::string(kTemporaries) + "\\TrelvManager-STAZIONE-1-4711.tmp",
        std::string(kTemporaries) + "\\TrelvManager-STAZIONE-7-99.tmp",
        std::string(kTemporaries) + "\\ambver-STAZIONE-2-99.tmp",
        std::string(kClientCopyFolder) + "\\TrelvManager-STAZIONE-2-99.tmp"}) {
    share().put(name, "metà");
    share().setReadOnly(name);
  }
  update();
  EXPECT_THAT(temporaries(), IsEmpty());
  EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe"));
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kNotCopied, kStampLine));
}

TEST_F(SelfUpdate, LeavesTemporariesOfOthersAlone) {
  machine().programs().setRunning(99);
  const std::vector<std::string> names{"TrelvManager-STAZIONE-1-99.tmp",
                                       "TrelvManager-ALTRA-1-98.tmp",
                                       "TrelvManager-STAZIONE-1-98-1.tmpx",
                                       "TrelvManager-STAZIONE-.tmp",
                                       "TrelvManager-STAZIONE-1-9x.tmp",
                                       "TrelvManager.tmp",
                                       "ambver-STAZIONE.old"};
  for (const std::string& name : names) {
    share().put(std::string(kTemporaries) + "\\" + name, "x");
  }
  update();
  EXPECT_EQ(temporaries(), names);
}

TEST_F(SelfUpdate, TwoSessionsOfATerminalServerDoNotMeetInATemporary) {
  Station other(installation_);
  other.machine().system().setSessionId(2);
  other.machine().system().setProcessId(815);
  machine().programs().setRunning(815);
  other.machine().programs().setRunning(4711);
  other.machine().clock().set({2009, 3, 5, 9, 7, 59});
  other.machine().putFile(kOwn, "dell'altra");
  other.disk().setModified(kOwn, {2009, 3, 2, 0, 0, 0});
  machine().onCall("files.replaceFile", [&] { UpdateTrelvManager(other.program(), "S:\\Lumo"); });
  update();
  EXPECT_THAT(clientCopy(), testing::AnyOf("il nuovo", "dell'altra"));
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(other.program().reports(), IsEmpty());
  EXPECT_THAT(temporaries(), IsEmpty());
}

TEST_F(SelfUpdate, CopyThatWasLeftAsideIsNotLostWhereTheNewOneCannotBeMade) {
  putAside("il più vecchio", {2009, 1, 1, 12, 0, 0});
  putAside("il vecchio", {2009, 2, 1, 12, 0, 0});
  share().removeTree(kClientCopy);
  machine().callLog().setInjector(refuse({CallKind::FileCopy}));
  update();
  expectFailed(70);
  EXPECT_EQ(clientCopy(), "il vecchio");
  EXPECT_THAT(putAsides(), IsEmpty());
}

// Only what an update put aside is known to be a program of ours.
TEST_F(SelfUpdate, AFileThatSomebodyElsePutThereIsNeitherPutBackNorRemoved) {
  putOwn("il nuovo", {2009, 3, 1, 12, 0, 0});
  share().removeTree(kClientCopy);
  share().setCapacity(0);
  const std::vector<std::string> names{"TrelvManager.old", "TrelvManager-STAZIONE-1-99.old",
                                       "TrelvManager-STAZIONE-1-99-7-1.old",
                                       "Altro-STAZIONE-1-99-7-1.old"};
  for (const std::string& name : names) {
    share().put(std::string(kCopies) + "\\" + name, "estraneo");
  }
  share().put("S:\\Lumo\\prg\\tempterm\\TrelvManager.old", "estraneo");
  update();
  expectFailed(61);
  EXPECT_FALSE(share().exists(kClientCopy));
  EXPECT_EQ(putAsides(), names);
  EXPECT_TRUE(share().exists("S:\\Lumo\\prg\\tempterm\\TrelvManager.old"));
}

TEST_F(SelfUpdate, CopyThatWasLeftAsideReplacesNoneThatCannotBeLookedAt) {
  const std::string aside = putAside("ancora più vecchio", {2009, 1, 1, 12, 0, 0});
  machine().callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    return call.text == std::string("files.look ") + kClientCopy
               ? std::optional<SystemCode>(system_code::kAccessDenied)
               : std::nullopt;
  });
  update();
  EXPECT_EQ(clientCopy(), "il vecchio");
  EXPECT_EQ(share().text(aside), "ancora più vecchio");
}

// --- Rights

TEST_F(SelfUpdate, KeepsTheRightsOfWhatItReplaces) {
  share().setRights(kTemporaries, kEveryone);
  share().setRights(kClientCopy, kOfTheClientCopy);
  share().setRights(kAmbver, kOfTheClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(share().rights(kClientCopy), kOfTheClientCopy);
  EXPECT_EQ(ambver(), "AMB000105/03/09 09:07\r\n");
  EXPECT_EQ(share().rights(kAmbver), kOfTheClientCopy);
}

TEST_F(SelfUpdate, KeepsTheRightsOfACopyInUse) {
  const auto running = share().run(kClientCopy);
  share().setRights(kTemporaries, kEveryone);
  share().setRights(kClientCopy, kOfTheClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(share().rights(kClientCopy), kOfTheClientCopy);
}

TEST_F(SelfUpdate, CopyWhereNoneWasGetsTheRightsOfItsFolder) {
  share().removeTree(kClientCopy);
  share().setRights(kTemporaries, kEveryone);
  share().setRights(kClientCopyFolder, kOfTheClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(share().rights(kClientCopy), kOfTheClientCopy);
  EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe"));
}

// A program that everybody could change must not stand there for a moment either.
TEST_F(SelfUpdate, GetsItsRightsBeforeItsName) {
  share().setRights(kTemporaries, kEveryone);
  share().setRights(kClientCopy, kOfTheClientCopy);
  machine().onCall("files.replaceFile", [&] {
    EXPECT_EQ(share().rights("S:\\Lumo\\prg\\tempterm\\TrelvManager-STAZIONE-1-4711.tmp"),
              kOfTheClientCopy);
  });
  update();
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(SelfUpdate, WithoutTheRightsOfWhatItReplacesNothingIsReplaced) {
  machine().callLog().setInjector(refuse({CallKind::FileRights}));
  update();
  expectFailed(70);
  EXPECT_EQ(clientCopy(), "il vecchio");
  EXPECT_EQ(ambver(), "AMB0001 01/02/08 10:11\r\n");
}

TEST_F(SelfUpdate, UserWhoMayOnlyReadChangesNothing) {
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  const std::string before = share().tree();
  update();
  expectFailed(70);
  EXPECT_EQ(share().tree(), before);
}

TEST_F(SelfUpdate, CopyThatAppearsMeanwhileIsReplaced) {
  share().removeTree(kClientCopy);
  machine().onCall("files.moveFile", [&] { putClientCopy("dell'altra", {2009, 2, 20, 0, 0, 0}); });
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(share().names(kClientCopyFolder), ElementsAre("TrelvManager.exe"));
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(SelfUpdate, CopyThatVanishesMeanwhileIsMadeAnew) {
  machine().onCall("files.copyRights", [&] { share().removeTree(kClientCopy); });
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(temporaries(), IsEmpty());
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(SelfUpdate, WhatComesFromEncryptedFoldersIsReadByEveryone) {
  disk().encrypt("C:\\Lumo\\Programmi", "mario");
  machine().makeFolders("C:\\Users\\mario\\Temp");
  disk().encrypt("C:\\Users\\mario\\Temp", "mario");
  update();
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_TRUE(disk().isEncrypted(kScratch));
  EXPECT_FALSE(share().isEncrypted(kClientCopy));
  EXPECT_FALSE(share().isEncrypted(kAmbver));
}

// --- The mark of a download

TEST_F(SelfUpdate, LeavesTheMarkOfADownloadBehind) {
  disk().putStream(kOwn, kMark, "[ZoneTransfer]\r\nZoneId=3\r\n");
  update();
  EXPECT_FALSE(share().hasStream(kClientCopy, kMark));
  EXPECT_TRUE(disk().hasStream(kOwn, kMark));
  share().removeTree(kClientCopy);
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_FALSE(share().hasStream(kClientCopy, kMark));
}

TEST_F(SelfUpdate, CopyNeverStandsThereWithTheMark) {
  disk().putStream(kOwn, kMark, "[ZoneTransfer]\r\nZoneId=3\r\n");
  machine().callLog().setInjector(refuse({CallKind::FileStreamRemove}));
  update();
  expectFailed(70);
  EXPECT_EQ(clientCopy(), "il vecchio");
}

TEST_F(SelfUpdate, FileSystemWithoutStreamsCopies) {
  machine().callLog().setInjector(refuse({CallKind::FileStreamRemove}, system_code::kInvalidName));
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(SelfUpdate, TwoWorkstationsAtOnceBothSucceedAndLeaveOtherTemporariesAlone) {
  share().put("S:\\Lumo\\prg\\tempterm\\TrelvManager-TERZA-1-7.tmp", "in viaggio");
  share().put("S:\\Lumo\\prg\\tempterm\\agdv.lck", "x");
  Station other(installation_);
  other.machine().system().setComputerName("ALTRA");
  other.machine().clock().set({2009, 3, 5, 9, 7, 59});
  other.machine().putFile(kOwn, "dell'altra");
  other.disk().setModified(kOwn, {2009, 2, 15, 0, 0, 0});
  machine().onCall("files.replaceFile", [&] { UpdateTrelvManager(other.program(), "S:\\Lumo"); });
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(other.program().reports(), IsEmpty());
  EXPECT_THAT(temporaries(), ElementsAre("TrelvManager-TERZA-1-7.tmp", "agdv.lck"));
}

TEST_F(SelfUpdate, WaitsForAnotherOneAndDoesNotPutTheOlderProgramOverTheNewer) {
  std::unique_ptr<machine::Mark> theirs =
      machine().exclusion().takeForAnother("S:\\Lumo\\prg\\tempterm\\TrelvManager.lck", "x");
  machine().clock().after(2000, [&] {
    putClientCopy("dell'altra", {2009, 3, 2, 12, 0, 0});
    theirs.reset();
  });
  update();
  EXPECT_EQ(clientCopy(), "dell'altra");
  EXPECT_THAT(lines(), ElementsAre(kCopyLine, kNotCopied, kStampLine));
  EXPECT_THAT(temporaries(), IsEmpty());
}

TEST_F(SelfUpdate, WithoutItsTurnGoesOnAllTheSame) {
  const std::unique_ptr<machine::Mark> theirs =
      machine().exclusion().takeForAnother("S:\\Lumo\\prg\\tempterm\\TrelvManager.lck", "x");
  update();
  EXPECT_EQ(clientCopy(), "il nuovo");
  EXPECT_EQ(machine().clock().now().second, 9) << "ten seconds later";
  EXPECT_THAT(reports(), IsEmpty());
}

// --- The environment file

/// The environment file before and after an update.
struct Stamp : Row {
  std::string before;
  std::string after;
};

/// Bytes that are no text of any code page, a NUL and an end-of-file mark among them.
const std::string kOddHead("\xE0\x81\xFF\x00\xC3\xA8\x1A", 7);

std::string manyLines() {
  std::string bytes;
  for (int i = 0; i < 200'000; ++i) {
    bytes += "AMB0001 01/02/08 10:11\r\n";
  }
  return bytes;
}

const std::vector<Stamp> kStamps{
    {"KeepsOnlyTheLastLineWithoutItsBlankAndOldDate",
     "prima\r\nseconda\r\nAMB0001 01/02/08 10:11\r\n", "AMB000105/03/09 09:07\r\n"},
    {"LastLineMayLackItsEnd", "prima\r\nAMB0001 01/02/08 10:11", "AMB000105/03/09 09:07\r\n"},
    {"LinesMayEndWithLineFeedsOnly", "prima\nAMB0001 01/02\n", "AMB000105/03/09 09:07\r\n"},
    {"LoneCarriageReturnEndsNoLine", "abc\rdefghi\r\n", "abc\rdef05/03/09 09:07\r\n"},
    {"ShortLineIsKeptWhole", "AMB\r\n", "AMB05/03/09 09:07\r\n"},
    {"OneCharacterIsKept", "A", "A05/03/09 09:07\r\n"},
    {"LineOfSevenCharactersIsKeptWhole", "AMB0001\r\n", "AMB000105/03/09 09:07\r\n"},
    {"BlankLineCounts", "AMB0001\r\n \r\n", " 05/03/09 09:07\r\n"},
    {"BytesOutsideAsciiAreKept", kOddHead + " 01/02\r\n", kOddHead + "05/03/09 09:07\r\n"},
    {"ByteOrderMarkCountsAsCharacters",
     "\xEF\xBB\xBF"
     "AMB0001\r\n",
     "\xEF\xBB\xBF"
     "AMB005/03/09 09:07\r\n"},
    {"HugeFileBecomesOneLine", manyLines() + "AMB0002 x", "AMB000205/03/09 09:07\r\n"}};

class EnvironmentFile : public SelfUpdate, public testing::WithParamInterface<Stamp> {};

TEST_P(EnvironmentFile, IsStamped) {
  share().put(kAmbver, GetParam().before);
  update();
  EXPECT_EQ(ambver(), GetParam().after);
  EXPECT_THAT(reports(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(That, EnvironmentFile, testing::ValuesIn(kStamps), NameOfRow());

TEST_F(SelfUpdate, EmptyLastLineLeavesTheFileAsItIs) {
  for (const char* const text : {"", "\r\n", "\n", "AMB0001 01/02/08\r\n\r\n", "AMB0001\n\n",
                                 "AMB0001\r\n\n", "AMB0001\n\r\n"}) {
    share().put(kAmbver, text);
    update();
    EXPECT_EQ(ambver(), text);
  }
  EXPECT_EQ(lines().back(), kStampLine);
  EXPECT_FALSE(machine().fileExists(kScratch));
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(SelfUpdate, YearHasTwoDigitsAndHoursCountTo24) {
  machine().clock().set({2000, 12, 31, 23, 5, 0});
  update();
  EXPECT_EQ(ambver(), "AMB000131/12/00 23:05\r\n");
  machine().clock().set({2107, 1, 2, 0, 0, 0});
  update();
  EXPECT_EQ(ambver(), "AMB000102/01/07 00:00\r\n");
}

TEST_F(SelfUpdate, NewLineIsMadeInAScratchCopyAndAnOldOneIsDeletedFirst) {
  update();
  EXPECT_EQ(machine().fileText(kScratch), "AMB000105/03/09 09:07\r\n");
  machine().putFile(kScratch, "di ieri");
  update();
  EXPECT_EQ(machine().fileText(kScratch), "AMB000105/03/09 09:07\r\n");
  EXPECT_EQ(lines().back(),
            "Cancellazione file: C:\\Users\\mario\\Temp\\ambver effettuata con successo");
}

/// Another one of the same user, for another server or behind the wait for its turn.
TEST_F(SelfUpdate, ScratchCopyThatAnotherSelfUpdateMakesAnewIsNotPutInPlace) {
  for (const char* const others : {"", "AMB9999"}) {
    const std::string before = ambver();
    machine().onCall("files.copyFile " + std::string(kScratch),
                     [&] { machine().putFile(kScratch, others); });
    update();
    EXPECT_EQ(ambver(), before);
    ASSERT_FALSE(reports().empty());
    EXPECT_THAT(reports().back().failure.description(), testing::HasSubstr(kScratch));
  }
}

TEST_F(SelfUpdate, ScratchCopyOfAnEarlierOneThatAScannerReadsIsMadeAnew) {
  machine().putFile(kScratch, "di ieri");
  disk().holdOpen(kScratch, sim::Sharing::All);
  machine().clock().after(1500, [this] { disk().release(kScratch); });
  update();
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_EQ(ambver(), "AMB000105/03/09 09:07\r\n");
}

TEST_F(SelfUpdate, NothingStandsBetweenTemporaryFolderAndScratchCopy) {
  machine().makeFolders("C:\\T");
  machine().support().setTemporaryPath("C:\\T");
  update();
  EXPECT_EQ(machine().fileText("C:\\Tambver"), "AMB000105/03/09 09:07\r\n");
}

}  // namespace
}  // namespace trelv::tests
