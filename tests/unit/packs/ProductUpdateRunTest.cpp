#include "packs/ProductUpdateRun.h"
#include "support/PackPrograms.h"
#include "support/Refusals.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::Procedure;
using modProdTrelvManager::RunKind;

constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.ini";
constexpr const char* kPack = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.zip";
constexpr const char* kSearch =
    "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
    "\"S:\\Lumo\\prg\\com\\setup\\aggdovra\"";
constexpr const char* kLock = Installation::kServerLock;
constexpr const char* kClientLock = Station::kClientLock;

/// A section of one server command below S:\Lumo.
std::string section(const std::string& name, const std::string& version,
                    const std::string& command) {
  return "[" + name + "]\r\nversion=" + version + "\r\nServer01=S:\\Lumo\\" + command + "\r\n";
}

/// Runs of one product, whose configuration file tests put: programs a, b and c end well, "fails"
/// with 5; a folder bears a program's name.
class UpdateRun : public StationTest {
 public:
  UpdateRun() {
    installation_.putPrograms({"a", "b", "c", "nuovi file\\a"});
    share().putProgram("S:\\Lumo\\fails.exe", [](sim::SimProcess&) { return 5U; });
    share().makeFolders("S:\\Lumo\\cartella.exe");
  }

  void configure(const std::string& text) { share().put(kConfiguration, text); }

  /// May the procedure go on?
  bool run(Operation operation, Side side, RunKind kind = RunKind::UpdateAll,
           const std::string& integrationPath = "S:\\Work") {
    return modProdTrelvManager::ProductUpdateRun(
               program(), kind, {"S:\\Lumo", integrationPath, "C:\\Programs"}, kConfiguration,
               operation, side, version_) == Procedure::GoesOn;
  }
  bool updateServer() { return run(Operation::Update, Side::Server); }

  /// What a run told, without its search for packs.
  std::vector<std::string> told() {
    std::vector<std::string> all = lines();
    std::erase(all, kSearch);
    return all;
  }
  /// What was started, "S:\Lumo\" left out, with " | " between.
  std::string programs() { return joined(without("S:\\Lumo\\", started()), " | "); }
  /// Content of a lock while an update of one side runs its command; empty when there is none.
  std::string lockDuring(Side side, const std::string& path) {
    std::string lock;
    share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
      lock = machine().fileExists(path) ? machine().fileText(path) : "";
      return 0U;
    });
    configure(section("Update01", "01.00", "a.exe") + "Client01=S:\\Lumo\\a.exe\r\n");
    EXPECT_TRUE(run(Operation::Update, side));
    EXPECT_FALSE(machine().fileExists(path));
    return lock;
  }

  std::string version_;
};

// --- Versions

TEST(VersionNumber, IsTheDigitsWithoutPointsUpToAnyOtherCharacterAndSaturates) {
  constexpr std::uint64_t kMost = 18446744073709551615U;
  const std::vector<std::pair<std::string, std::uint64_t>> rows{
      {"09.93.00.00", 9930000U},
      {"10.00.00.00", 10000000U},
      {"10.00", 1000U},
      {"", 0U},
      {"....", 0U},
      {"03.20b.30", 320U},
      {"beta", 0U},
      {"-1.00", 0U},
      {" 1", 0U},
      {"1 2", 1U},
      {"18446744073709551614", kMost - 1},
      {"18446744073709551615", kMost},
      {"18446744073709551616", kMost},
      {std::string(40, '9'), kMost},
      {"1" + std::string(39, '0'), kMost}};
  for (const auto& [text, number] : rows) {
    EXPECT_EQ(modProdTrelvManager::VersionNumber(text), number) << text;
  }
}

// --- Packs

TEST_F(UpdateRun, SearchesForPacksBeforeItLooksForTheConfigurationFile) {
  const PackPrograms programs(machine());
  share().put(
      kPack,
      packBytes({{"prg\\com\\setup\\aggdovra\\nerio.ini", section("Setup01", "01", "a.exe")}}));
  EXPECT_TRUE(run(Operation::Setup, Side::Server, RunKind::UpdateAll, "S:\\Lumo"));
  EXPECT_EQ(lines().front(), kSearch);
  EXPECT_EQ(version_, "01");
  EXPECT_FALSE(machine().fileExists(kPack));
}

TEST_F(UpdateRun, OpensPacksIntoTheIntegrationPath) {
  const PackPrograms programs(machine());
  share().put(kPack, packBytes({{"prg\\com\\setup\\aggdovra\\nerio.ini", "x"}}));
  EXPECT_TRUE(updateServer());
  EXPECT_TRUE(machine().fileExists("S:\\Work\\prg\\com\\setup\\aggdovra\\nerio.ini"));
  EXPECT_FALSE(machine().fileExists(kConfiguration));
}

TEST_F(UpdateRun, PackThatCannotBeCopiedEndsTheRunAndIsTold) {
  const PackPrograms programs(machine());
  configure(section("Update01", "01", "a.exe"));
  share().put(kPack, packBytes({{"readme.txt", "x"}}));
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Comando non eseguito:  (Impossibile trovare il percorso: "
            "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra)");
  EXPECT_EQ(version_, "");
}

// docs/deployment.md tells it so.
TEST_F(UpdateRun, UserWhoMayOnlyReadGetsOneFormForAPackThatWaitsAndChangesNothing) {
  const PackPrograms programs(machine());
  configure(section("Update01", "01", "a.exe"));
  share().put(kPack, packBytes({{"prg\\com\\setup\\aggdovra\\nerio.ini", "x"}}));
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  const std::string before = share().tree();
  EXPECT_FALSE(run(Operation::Update, Side::Server, RunKind::UpdateAll, "S:\\Lumo"));
  EXPECT_EQ(share().tree(), before);
  EXPECT_THAT(program().reportTexts(), ElementsAre("Errore in cancellazione file: "));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(lines().back(),
            std::string("Gestione ProdTrelv - Comando non eseguito:  (Autorizzazione negata: ") +
                kConfiguration + ")");
  EXPECT_EQ(machine().clock().paused(), 3000U) << "he waits once";
}

TEST_F(UpdateRun, UserWhoMayOnlyReadGetsALineForAnUpdateThatWaitsAndChangesNothing) {
  configure(section("Update01", "01", "a.exe"));
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  const std::string before = share().tree();
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(share().tree(), before);
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(told(), ElementsAre(std::string("Gestione ProdTrelv - Comando non eseguito: "
                                              "S:\\Lumo\\a.exe (Autorizzazione negata: ") +
                                  kLock + ")"));
}

// --- Which commands run

/// A configuration file, the version before a run of the server's side; the programs that ran and
/// the version afterwards.
struct Run : Row {
  Operation operation;
  std::string configuration;
  const char* before;
  const char* programs;
  const char* after;
};

std::string commands(std::size_t failing, const std::string& others) {
  std::string text = "[Update01]\r\nversion=02.00\r\n";
  for (std::size_t i = 1; i <= failing; ++i) {
    text += "Server" + std::string(i < 10 ? "0" : "") + std::to_string(i) + "=S:\\manca.exe\r\n";
  }
  return text + others;
}

const std::vector<Run> kRuns{
    {"ComparesVersionsAsNumbers", Operation::Update, section("Update01", "10.00.00.00", "a.exe"),
     "09.93.00.00", "a.exe", "10.00.00.00"},
    {"VersionOfFewerFieldsIsBelow", Operation::Update, section("Update01", "09.93.00.00", "a.exe"),
     "10.00", "a.exe", "09.93.00.00"},
    {"WithoutVersionEverySectionThatHasOneRuns", Operation::Setup,
     section("Setup01", "01.00", "a.exe") + section("Setup02", "", "b.exe") +
         section("Setup03", "02.00", "c.exe"),
     "", "a.exe | c.exe", "02.00"},
    {"SectionWithoutAnyVersionOnAnEmptyOneIsLeft", Operation::Setup,
     section("Setup01", "", "a.exe"), "", "", ""},
    {"SectionsOfItsKindOnly", Operation::Update,
     section("Setup01", "05.00", "a.exe") + section("Update01", "05.00", "b.exe"), "", "b.exe",
     "05.00"},
    {"SecondCommandOfASectionIsSkippedOnceTheFirstRan", Operation::Update,
     section("Update01", "05.00", "a.exe") + "Server02=S:\\Lumo\\b.exe\r\n", "", "a.exe", "05.00"},
    {"SecondCommandRunsWhenTheFirstCouldNotBeStarted", Operation::Update,
     commands(1, "Server02=S:\\Lumo\\b.exe\r\n"), "", "b.exe", "02.00"},
    {"CommandsAfterAnEmptyOneAreNotLookedAt", Operation::Update,
     "[Update01]\r\nversion=01.00\r\nServer02=S:\\Lumo\\a.exe\r\n" +
         section("Update02", "02.00", "b.exe"),
     "", "b.exe", "02.00"},
    {"AllHundredSections", Operation::Update,
     section("Update02", "02.00", "a.exe") + section("Update100", "03.00", "b.exe") +
         section("Update101", "04.00", "c.exe"),
     "", "a.exe | b.exe", "03.00"},
    {"HundredCommandsOfASection", Operation::Update,
     commands(99, "Server100=S:\\Lumo\\a.exe\r\nServer101=S:\\Lumo\\b.exe\r\n"), "", "a.exe",
     "02.00"},
    {"HundredAndFirstCommandIsNotLookedAt", Operation::Update,
     commands(100, "Server101=S:\\Lumo\\b.exe\r\n"), "", "", ""},
    {"FolderInThePlaceOfACommandCannotBeStarted", Operation::Update,
     section("Update01", "01.00", "cartella.exe"), "", "", ""},
    {"PathWithBlanksRunsQuoted", Operation::Update,
     "[Update01]\r\nversion=01\r\nServer01=\"%PATHSETUP%\\nuovi file\\a.exe\" -S\r\n", "",
     "\"S:\\Lumo\\nuovi file\\a.exe\" -S", "01"},
    {"PlaceholdersAreResolvedWithAnEmptyClientPath", Operation::Update,
     "[Update01]\r\nversion=01\r\nServer01=%PATHSETUP%/a.exe /w:%PATHWORK% /c:%PATHCLIENT%; "
     "/t:%INSTALLTYPE%\r\n",
     "", "a.exe \\w:S:\\Work \\c:; \\t:rete", "01"}};

class UpdateRunOf : public UpdateRun, public testing::WithParamInterface<Run> {};

TEST_P(UpdateRunOf, RunsWhatIsAboveTheVersionAndRaisesIt) {
  configure(GetParam().configuration);
  version_ = GetParam().before;
  EXPECT_TRUE(run(GetParam().operation, Side::Server));
  EXPECT_EQ(programs(), GetParam().programs);
  EXPECT_EQ(version_, GetParam().after);
  EXPECT_FALSE(installation_.serverLockExists());
}

INSTANTIATE_TEST_SUITE_P(Of, UpdateRunOf, testing::ValuesIn(kRuns), NameOfRow());

TEST_F(UpdateRun, TellsEachCommandThatRanOrDidNot) {
  configure(section("Update01", "03.10.00.00", "a.exe") +
            section("Update02", "03.20.30.00", "b.exe -S") + "Server02=%PATHSETUP%\\c.exe\r\n" +
            section("Update03", "04.00.00.00", "manca.exe"));
  version_ = "03.00.00.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "03.20.30.00");
  EXPECT_TRUE(machine().started()[0].waited);
  EXPECT_EQ(
      program().logText(),
      R"(Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "S:\Lumo\prg\com\setup\aggdovra"
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\a.exe"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - Oggetto=Server - Comando=S:\Lumo\a.exe
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\b.exe -S"
Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - Oggetto=Server - Comando=S:\Lumo\b.exe -S
Gestione ProdTrelv - Lato Server la versione: 03.20.30.00 è minore o uguale a quella corrente: 03.20.30.00
Gestione ProdTrelv - Esecuzione comando: "S:\Lumo\manca.exe"
Gestione ProdTrelv - Errore in esecuzione programma: S:\Lumo\manca.exe (2 Impossibile trovare il programma)
Gestione ProdTrelv - Esecuzione non effettuata di: S:\Lumo\manca.exe
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo
)");
  EXPECT_THAT(program().reportTexts(),
              ElementsAre("Errore in esecuzione programma: S:\\Lumo\\manca.exe"));
}

TEST_F(UpdateRun, ExitCodeOfASetUpLeavesNoTrace) {
  configure(section("Update01", "05.00", "fails.exe"));
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "05.00");
  EXPECT_THAT(
      told(),
      ElementsAre("Gestione ProdTrelv - Esecuzione comando: \"S:\\Lumo\\fails.exe\"",
                  "Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                  "Oggetto=Server - Comando=S:\\Lumo\\fails.exe",
                  "Cancellazione file: " + std::string(kLock) + " effettuata con successo"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(UpdateRun, CommandWithoutQuotesIsTriedAtEachBlank) {
  configure(section("Update01", "01.00", "nuovi file\\a.exe -S"));
  EXPECT_TRUE(updateServer());
  share().putProgram("S:\\Lumo\\nuovi.exe");
  version_ = "";
  EXPECT_TRUE(updateServer());
  ASSERT_EQ(machine().started().size(), 2U);
  EXPECT_EQ(machine().started()[0].program, "S:\\Lumo\\nuovi file\\a.exe");
  EXPECT_EQ(machine().started()[1].program, "S:\\Lumo\\nuovi.exe");
}

TEST_F(UpdateRun, LeavesSectionsThatAreNotAbove) {
  configure(section("Update01", "03.20.30.00", "a.exe") +
            section("Update02", "03.10.00.00", "b.exe") + section("Update03", "", "c.exe"));
  version_ = "03.20.30.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "03.20.30.00");
  EXPECT_EQ(programs(), "");
  EXPECT_THAT(endsOf(told(), "Gestione ProdTrelv - Lato Server la versione: "),
              ElementsAre("03.20.30.00 è minore o uguale a quella corrente: 03.20.30.00",
                          "03.10.00.00 è minore o uguale a quella corrente: 03.20.30.00",
                          " è minore o uguale a quella corrente: 03.20.30.00"));
}

TEST_F(UpdateRun, TakesTheCommandsOfItsSideOnly) {
  configure(section("Update01", "05.00.00.00", "b.exe") + "Client01=S:\\Lumo\\c.exe\r\n");
  EXPECT_TRUE(run(Operation::Update, Side::Client));
  EXPECT_EQ(programs(), "c.exe");
  EXPECT_THAT(told(), Contains("Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                               "Oggetto=Client - Comando=S:\\Lumo\\c.exe"));
}

TEST_F(UpdateRun, SeesWhatACommandWroteIntoTheConfiguration) {
  const std::string first = section("Update01", "01.00", "a.exe");
  configure(first);
  share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    configure(first + section("Update02", "02.00", "b.exe"));
    return 0U;
  });
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(programs(), "a.exe | b.exe");
}

TEST_F(UpdateRun, ProductWithoutConfigurationFileIsNoPartOfTheInstallation) {
  share().put(kLock, "other");
  EXPECT_TRUE(updateServer());
  share().makeFolders(kConfiguration);
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(told(), ElementsAre(lines()[1], lines()[1]));
  EXPECT_EQ(lines()[1],
            "Gestione ProdTrelv - Prodotto non rilevato, file di config non presente "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.ini");
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(UpdateRun, OfKindFourCutsCommandsAtTheirFirstBlank) {
  configure(section("Setup01", "01.00", "a.exe -S -X") + section("Setup02", "02.00", "b.exe"));
  EXPECT_TRUE(run(Operation::Setup, Side::Server, RunKind::ProgramOnly));
  EXPECT_EQ(programs(), "a.exe | b.exe");
  EXPECT_THAT(told(), Contains("Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - "
                               "Oggetto=Server - Comando=S:\\Lumo\\a.exe"));
}

// --- The lock

TEST_F(UpdateRun, HoldsTheLockWhileACommandRuns) {
  EXPECT_EQ(lockDuring(Side::Server, kLock), "16/11/2026 09:30:00\r\n");
}

TEST_F(UpdateRun, LockOfMidnightHasNoTime) {
  machine().clock().set({2026, 11, 17, 0, 0, 0});
  EXPECT_EQ(lockDuring(Side::Server, kLock), "17/11/2026\r\n");
}

TEST_F(UpdateRun, OfTheClientLocksBesideTheProgramsPath) {
  share().put(kLock, "other");
  EXPECT_NE(lockDuring(Side::Client, kClientLock), "");
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(UpdateRun, OfTheClientLocksInTheRootForAProgramsPathBelowIt) {
  machine().configuration().setConfigPath("C:\\Client");
  EXPECT_NE(lockDuring(Side::Client, "C:\\Clientagdv.lck"), "");
  EXPECT_THAT(told(), Each(Not(HasSubstr("Crea"))));
}

TEST_F(UpdateRun, MakesTheFolderOfTheLock) {
  share().removeTree("S:\\Lumo\\prg\\tempterm");
  EXPECT_NE(lockDuring(Side::Server, kLock), "");
  EXPECT_EQ(told().front(), "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm");
}

TEST_F(UpdateRun, TakesTheLockOnceAndOnlyForWork) {
  configure(section("Update01", "01.00", "a.exe") + section("Update02", "02.00", "b.exe"));
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(machine().callLog().countOf("files.write S:\\Lumo\\prg\\tempterm\\agdv.lck"), 1U);
  machine().callLog().clear();
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(machine().openings("S:\\Lumo\\prg\\tempterm").files(), 0U);
}

// The scanner of a server reads what has just been written; the lock of the product before may
// still be on its way out.
TEST_F(UpdateRun, LockThatIsStillBeingDeletedIsNobodysAndTakenAgain) {
  share().put(kLock, "x");
  share().holdOpen(kLock, sim::Sharing::All);
  ASSERT_EQ(machine().files().removeFile(kLock), system_code::kSuccess);
  machine().clock().after(1500, [this] { share().release(kLock); });
  configure(section("Update01", "01.00", "a.exe"));
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(programs(), "a.exe");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_FALSE(machine().fileExists(kLock));
}

TEST_F(UpdateRun, LockPathJoinsWithoutBackslashOnTheClientOnly) {
  using modProdTrelvManager::LockPath;
  EXPECT_EQ(LockPath(program(), Side::Server, "\\\\srv\\Lumo"),
            "\\\\srv\\Lumo\\prg\\tempterm\\agdv.lck");
  EXPECT_EQ(LockPath(program(), Side::Client, "S:\\Lumo"), "C:\\Lumo\\Clientagdv.lck");
}

TEST_F(UpdateRun, LockPathOfAMissingStoreIsTheBareNameAndTheStoreIsReportedOnce) {
  using modProdTrelvManager::LockPath;
  machine().configuration().answerAlways(-4011);
  EXPECT_EQ(LockPath(program(), Side::Client, "S:\\Lumo"), "agdv.lck");
  EXPECT_EQ(LockPath(program(), Side::Client, "S:\\Lumo"), "agdv.lck");
  EXPECT_EQ(reports().size(), 1U);
}

TEST_F(UpdateRun, LockOfAnotherSessionIsLeftAlone) {
  share().put(kLock, "01/01/2001 08:00:00\r\n");
  configure("[Update01]\r\nversion=01.00\r\nServer01=%PATHSETUP%\\a.exe\r\n");
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(share().text(kLock), "01/01/2001 08:00:00\r\n");
  EXPECT_EQ(programs(), "");
  EXPECT_EQ(version_, "");
  EXPECT_THAT(told(), ElementsAre("Gestione ProdTrelv - esecuzione non effettuata per presenza "
                                  "altre sessioni: Tipo=Update - Oggetto=Server - "
                                  "Comando=%PATHSETUP%\\a.exe"));
  EXPECT_THAT(
      boxes(),
      ElementsAre(isBox(
          BoxIcon::Exclamation,
          "Il sistema ha rilevato la necessità di effettuare un aggiornamento del seguente "
          "prodotto complementare installato lato: \r\n\r\nServer\r\n\r\noperazione che però non "
          "può essere avviata per la presenza di una o più precedenti sessioni in corso. "
          "L'operazione di aggiornamento verrà ritentata alla prossima esecuzione del "
          "prodotto\r\n\r\nPremere Ok per proseguire")));
}

TEST_F(UpdateRun, WithoutWorkFreesTheLockOfAnotherSession) {
  share().put(kLock, "other");
  configure(section("Update01", "01.00", "a.exe"));
  version_ = "01.00";
  EXPECT_TRUE(updateServer());
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(UpdateRun, LockThatItsOwnerRemovesAtTheSameMomentIsNoFailure) {
  share().put(kLock, "other");
  configure(section("Update01", "01.00", "a.exe"));
  version_ = "01.00";
  machine().onCall(std::string("files.removeFile ") + kLock, [&] { share().removeTree(kLock); });
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(reports(), IsEmpty());
  for (const std::string& line : lines()) {
    EXPECT_EQ(line.find("non rimosso"), std::string::npos) << line;
  }
}

/// Why the lock cannot be taken, and the line that tells it last but for its end.
struct Obstacle : Row {
  void (*arrange)(UpdateRun&);
  /// What stands in the lock's place afterwards: "none", "folder", or what the file holds.
  const char* lock;
  std::string line;
};

const std::string kRefused = "Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\a.exe (";

const std::vector<Obstacle> kObstacles{
    {"FolderInItsPlace", [](UpdateRun& t) { t.share().makeFolders(kLock); }, "folder",
     kRefused + "Autorizzazione negata: " + kLock + ")"},
    {"NoRoom", [](UpdateRun& t) { t.share().setCapacity(t.share().usedBytes()); }, "none",
     kRefused + "Disco pieno: " + kLock + ")"},
    {"AnotherSessionWasFaster",
     [](UpdateRun& t) {
       t.machine().onCall("files.write " + std::string(kLock),
                          [&t] { t.share().put(kLock, "other"); });
       t.machine().callLog().setInjector(refuse({sim::CallKind::FileWrite}));
     },
     "other", kRefused + "Autorizzazione negata: " + kLock + ")"},
    {"ItsFolderCannotBeMade",
     [](UpdateRun& t) {
       t.share().removeTree("S:\\Lumo\\prg\\tempterm");
       t.share().denyWriting("S:\\Lumo\\prg\\tempterm");
     },
     "none", kRefused}};

class LockObstacle : public UpdateRun, public testing::WithParamInterface<Obstacle> {};

TEST_P(LockObstacle, EndsTheRunBeforeAnyCommand) {
  configure(section("Update01", "01.00", "a.exe"));
  GetParam().arrange(*this);
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(programs(), "");
  EXPECT_THAT(told(), Contains(StartsWith(GetParam().line)).Times(1));
  EXPECT_EQ(share().folderExists(kLock)        ? "folder"
            : installation_.serverLockExists() ? share().text(kLock)
                                               : "none",
            GetParam().lock);
}

INSTANTIATE_TEST_SUITE_P(Of, LockObstacle, testing::ValuesIn(kObstacles), NameOfRow());

TEST_F(UpdateRun, UnknownKindIsAFailureOfTheRun) {
  share().put(kLock, "other");
  EXPECT_FALSE(run(static_cast<Operation>(9), Side::Server));
  EXPECT_THAT(told(), ElementsAre("Gestione ProdTrelv - Comando non eseguito:  ()"));
  EXPECT_TRUE(installation_.serverLockExists());
}

// A user who may only read meets the lock for each product at each start.
TEST_F(UpdateRun, LockOfAnotherSessionThatCannotBeDeletedIsOneLine) {
  share().put(kLock, "other");
  share().setRights("S:\\Lumo", {{"*", sim::Right::Read}});
  version_ = "09.00";
  configure(section("Update01", "01.00", "a.exe"));
  EXPECT_TRUE(updateServer());
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(installation_.serverLockExists());
  EXPECT_EQ(std::count(lines().begin(), lines().end(),
                       "Gestione ProdTrelv - Blocco di un'altra sessione non rimosso: "
                       "S:\\Lumo\\prg\\tempterm\\agdv.lck (Autorizzazione negata: "
                       "S:\\Lumo\\prg\\tempterm\\agdv.lck)"),
            1);
}

TEST_F(UpdateRun, OwnLockThatCannotBeDeletedIsReported) {
  configure(section("Update01", "01.00", "a.exe"));
  machine().onCall("processes.start", [&] { share().denyWriting(kLock); });
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(program().reportTexts(), ElementsAre("Errore in cancellazione file: "));
}

// --- The end of the Windows session

/// Ends the session while this command of the share runs.
void endSessionIn(sim::SimMachine& machine, const std::string& program) {
  machine.programs().setDeferred(true);
  machine.programs().define(program, [](sim::SimProcess& process) -> std::uint32_t {
    process.machine().programs().endSession();
  });
}

TEST_F(UpdateRun, EndOfTheSessionWhileACommandRunsFreesItsOwnLock) {
  configure(section("Update01", "01.00", "a.exe") + section("Update02", "02.00", "b.exe"));
  endSessionIn(machine(), "S:\\Lumo\\b.exe");
  EXPECT_THROW(updateServer(), sim::Killed);
  machine().startSession();
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_EQ(version_, "01.00");
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Sessione di Windows terminata durante il comando: "
            "S:\\Lumo\\b.exe");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(UpdateRun, LockThatCannotGoWithTheSessionIsOneLineAndNoForm) {
  configure(section("Update01", "01.00", "a.exe"));
  endSessionIn(machine(), "S:\\Lumo\\a.exe");
  machine().onCall("processes.wait", [&] { share().denyWriting(kLock); });
  EXPECT_THROW(updateServer(), sim::Killed);
  EXPECT_THAT(lines(), Contains(StartsWith("Gestione ProdTrelv - Blocco non rimosso: ")));
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(UpdateRun, WhoEndsTheSessionLearnsWhyHeWaitsWhileCommandsRunAndOnlyThen) {
  configure(section("Update01", "01.00", "a.exe"));
  std::string reason;
  machine().onCall("processes.start", [&] { reason = machine().programs().sessionReason(); });
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(reason, "Aggiornamento dei prodotti complementari in corso: attendere la fine.");
  EXPECT_EQ(machine().programs().sessionReason(), "");
}

// --- The command runner

TEST_F(UpdateRun, ResolvedTextReplacesTheCallersCommand) {
  std::string command = "%PATHSETUP%\\a.exe";
  EXPECT_TRUE(modProdTrelvManager::RunCommand(program(), command,
                                              {"S:\\Lumo", "S:\\Work", "C:\\Programs"}));
  EXPECT_EQ(command, "S:\\Lumo\\a.exe");
}

TEST_F(UpdateRun, UserWithoutRightsGetsOneBoxForEachRefusedCommand) {
  program().state.startup.administrator = false;
  configure("[Update01]\r\nversion=01.00\r\nServer01=%PATHSETUP%\\a.exe\r\n" +
            section("Update02", "02.00", "b.exe"));
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "");
  EXPECT_EQ(programs(), "");
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_EQ(
      joined(told(), "\n"),
      R"(Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente non amministratore
Gestione ProdTrelv - Esecuzione non effettuata di: S:\Lumo\a.exe
Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente non amministratore
Gestione ProdTrelv - Esecuzione non effettuata di: S:\Lumo\b.exe
Cancellazione file: S:\Lumo\prg\tempterm\agdv.lck effettuata con successo)");
  const auto refusal =
      isBox(BoxIcon::Critical,
            "Per il corretto funzionamento il sistema richiede l'aggiornamento di alcuni "
            "componenti.\r\nL'utente corrente non dispone dei privilegi necessari per effettuare "
            "tale operazione, impossibile proseguire.",
            BoxButtons::Ok, "Errore");
  EXPECT_THAT(boxes(), ElementsAre(refusal, refusal));
}

}  // namespace
}  // namespace trelv::tests
