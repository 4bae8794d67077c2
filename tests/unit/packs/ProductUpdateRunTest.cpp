#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packs/ProductUpdateRun.h"
#include "support/Installation.h"
#include "support/PackPrograms.h"

namespace trelv::tests {
namespace {

using modProdTrelvManager::ProductUpdateRun;
using modProdTrelvManager::RunCommand;
using modProdTrelvManager::VersionNumber;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.ini";
constexpr const char* kSearch =
    "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: "
    "\"S:\\Lumo\\prg\\com\\setup\\aggdovra\"";
constexpr const char* kLock = Installation::kServerLock;

class UpdateRun : public testing::Test {
 protected:
  UpdateRun() {
    for (const char* const name : {"a", "b", "c"}) {
      installation_.share().putProgram("S:\\Lumo\\" + std::string(name) + ".exe");
    }
  }

  void configure(const std::vector<Section>& sections) {
    installation_.share().put(kConfiguration, configurationText(sections));
  }

  bool run(Operation operation, Side side, std::int32_t kind = 1) {
    return ProductUpdateRun(program_, kind, "S:\\Lumo", "S:\\Work", "C:\\Programs", kConfiguration,
                            operation, side, version_);
  }
  bool updateServer() { return run(Operation::Update, Side::Server); }

  sim::SimMachine& machine() { return station_.machine(); }
  /// What a run told, without its search for packs.
  std::vector<std::string> lines() {
    std::vector<std::string> all = program_.lines();
    std::erase(all, kSearch);
    return all;
  }
  std::vector<std::string> started() { return station_.commandLines(); }

  Installation installation_;
  Station station_{installation_};
  FakeProgram& program_ = station_.program();
  std::string version_;
};

// --- Versions

TEST(VersionNumber, IsTheDigitsWithoutPoints) {
  EXPECT_EQ(VersionNumber("09.93.00.00"), 9930000U);
  EXPECT_EQ(VersionNumber("10.00.00.00"), 10000000U);
  EXPECT_EQ(VersionNumber("10.00"), 1000U);
  EXPECT_EQ(VersionNumber(""), 0U);
  EXPECT_EQ(VersionNumber("...."), 0U);
}

TEST(VersionNumber, EndsAtTheFirstOtherCharacter) {
  EXPECT_EQ(VersionNumber("03.20b.30"), 320U);
  EXPECT_EQ(VersionNumber("beta"), 0U);
  EXPECT_EQ(VersionNumber("-1.00"), 0U);
  EXPECT_EQ(VersionNumber(" 1"), 0U);
  EXPECT_EQ(VersionNumber("1 2"), 1U);
}

TEST(VersionNumber, SaturatesWhereItIsTooLong) {
  EXPECT_EQ(VersionNumber("18446744073709551614"), 18446744073709551614U);
  EXPECT_EQ(VersionNumber("18446744073709551615"), 18446744073709551615U);
  EXPECT_EQ(VersionNumber("18446744073709551616"), 18446744073709551615U);
  EXPECT_EQ(VersionNumber(std::string(40, '9')), 18446744073709551615U);
  EXPECT_EQ(VersionNumber("1" + std::string(39, '0')), 18446744073709551615U);
}

// --- Packs

TEST_F(UpdateRun, SearchesForPacksBeforeItLooksForTheConfigurationFile) {
  const PackPrograms programs(machine());
  installation_.share().put(
      "S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.zip",
      packBytes({{"prg\\com\\setup\\aggdovra\\nerio.ini",
                  configurationText({{"Setup01", "01", {"S:\\Lumo\\a.exe"}, {}}})}}));
  EXPECT_TRUE(ProductUpdateRun(program_, 1, "S:\\Lumo", "S:\\Lumo", "C:\\Programs", kConfiguration,
                               Operation::Setup, Side::Server, version_));
  EXPECT_EQ(program_.lines().front(), kSearch);
  EXPECT_EQ(version_, "01");
  EXPECT_FALSE(machine().fileExists("S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.zip"));
}

TEST_F(UpdateRun, OpensPacksIntoTheIntegrationPath) {
  const PackPrograms programs(machine());
  installation_.share().put("S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.zip",
                            packBytes({{"prg\\com\\setup\\aggdovra\\nerio.ini", "x"}}));
  EXPECT_TRUE(updateServer());
  EXPECT_TRUE(machine().fileExists("S:\\Work\\prg\\com\\setup\\aggdovra\\nerio.ini"));
  EXPECT_FALSE(machine().fileExists(kConfiguration));
}

TEST_F(UpdateRun, PackThatCannotBeCopiedEndsTheRunAndIsTold) {
  const PackPrograms programs(machine());
  configure({{"Update01", "01", {"S:\\Lumo\\a.exe"}, {}}});
  installation_.share().put("S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.zip",
                            packBytes({{"readme.txt", "x"}}));
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Comando non eseguito:  (Impossibile trovare il percorso: "
            "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra)");
  EXPECT_EQ(version_, "");
}

// --- Which commands run

TEST_F(UpdateRun, RunsTheSectionsAboveTheVersionAndRaisesIt) {
  configure({{"Update01", "03.10.00.00", {"S:\\Lumo\\a.exe"}, {}},
             {"Update02", "03.20.30.00", {"S:\\Lumo\\b.exe -S"}, {}}});
  version_ = "03.00.00.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "03.20.30.00");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe -S"));
  EXPECT_TRUE(machine().started()[0].waited);
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Esecuzione comando: \"S:\\Lumo\\a.exe\"",
                          "Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                          "Oggetto=Server - Comando=S:\\Lumo\\a.exe",
                          "Gestione ProdTrelv - Esecuzione comando: \"S:\\Lumo\\b.exe -S\"",
                          "Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                          "Oggetto=Server - Comando=S:\\Lumo\\b.exe -S",
                          "Cancellazione file: S:\\Lumo\\prg\\tempterm\\agdv.lck effettuata con "
                          "successo"));
}

TEST_F(UpdateRun, LeavesSectionsThatAreNotAbove) {
  configure({{"Update01", "03.20.30.00", {"S:\\Lumo\\a.exe"}, {}},
             {"Update02", "03.10.00.00", {"S:\\Lumo\\b.exe"}, {}}});
  version_ = "03.20.30.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "03.20.30.00");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Lato Server la versione: 03.20.30.00 è "
                                   "minore o uguale a quella corrente: 03.20.30.00",
                                   "Gestione ProdTrelv - Lato Server la versione: 03.10.00.00 è "
                                   "minore o uguale a quella corrente: 03.20.30.00"));
}

TEST_F(UpdateRun, ComparesVersionsAsNumbers) {
  configure({{"Update01", "10.00.00.00", {"S:\\Lumo\\a.exe"}, {}}});
  version_ = "09.93.00.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "10.00.00.00");
}

TEST_F(UpdateRun, VersionOfFewerFieldsIsBelow) {
  configure({{"Update01", "09.93.00.00", {"S:\\Lumo\\a.exe"}, {}}});
  version_ = "10.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "09.93.00.00");
}

TEST_F(UpdateRun, WithoutVersionRunsEverySectionThatHasOne) {
  configure({{"Setup01", "01.00.00.00", {"S:\\Lumo\\a.exe"}, {}},
             {"Setup02", "", {"S:\\Lumo\\b.exe"}, {}},
             {"Setup03", "02.00.00.00", {"S:\\Lumo\\c.exe"}, {}}});
  EXPECT_TRUE(run(Operation::Setup, Side::Server));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\c.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lato Server la versione:  è minore o uguale "
                                "a quella corrente: 01.00.00.00"));
}

TEST_F(UpdateRun, SectionWithoutAnyVersionOnAnEmptyOneIsLeft) {
  configure({{"Setup01", "", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_TRUE(run(Operation::Setup, Side::Server));
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Lato Server la versione:  è minore o "
                                   "uguale a quella corrente: "));
}

TEST_F(UpdateRun, TakesTheCommandsOfItsSideAndKindOnly) {
  configure({{"Setup01", "05.00.00.00", {"S:\\Lumo\\a.exe"}, {"S:\\Lumo\\a.exe"}},
             {"Update01", "05.00.00.00", {"S:\\Lumo\\b.exe"}, {"S:\\Lumo\\c.exe"}}});
  EXPECT_TRUE(run(Operation::Update, Side::Client));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\c.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                                "Oggetto=Client - Comando=S:\\Lumo\\c.exe"));
}

TEST_F(UpdateRun, SecondCommandOfASectionIsSkippedOnceTheFirstRan) {
  configure({{"Update01", "05.00.00.00", {"S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Lato Server la versione: 05.00.00.00 è "
                                "minore o uguale a quella corrente: 05.00.00.00"));
}

TEST_F(UpdateRun, SecondCommandOfASectionRunsWhenTheFirstCouldNotBeStarted) {
  configure({{"Update01", "05.00.00.00", {"S:\\Lumo\\manca.exe", "S:\\Lumo\\b.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "05.00.00.00");
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\b.exe"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\manca.exe"));
}

TEST_F(UpdateRun, CommandThatRanCountsWhateverItsExitCode) {
  installation_.share().putProgram("S:\\Lumo\\a.exe", [](sim::SimProcess&) { return 5U; });
  configure({{"Update01", "05.00.00.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "05.00.00.00");
}

TEST_F(UpdateRun, CommandsAfterAnEmptyOneAreNotLookedAt) {
  installation_.share().put(kConfiguration,
                            "[Update01]\r\nversion=01.00\r\nServer02=S:\\Lumo\\a.exe\r\n"
                            "[Update02]\r\nversion=02.00\r\nServer01=S:\\Lumo\\b.exe\r\n");
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\b.exe"));
}

TEST_F(UpdateRun, VisitsAllHundredSections) {
  configure({{"Update02", "02.00", {"S:\\Lumo\\a.exe"}, {}},
             {"Update100", "03.00", {"S:\\Lumo\\b.exe"}, {}},
             {"Update101", "04.00", {"S:\\Lumo\\c.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_EQ(version_, "03.00");
}

TEST_F(UpdateRun, LooksAtHundredCommandsOfASection) {
  std::vector<std::string> commands(99, "S:\\Lumo\\manca.exe");
  commands.push_back("S:\\Lumo\\a.exe");
  commands.push_back("S:\\Lumo\\b.exe");
  configure({{"Update01", "02.00", commands, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe"));
  // The one that ran tells no comparison, and the 101st is not looked at.
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("minore o uguale"))));
}

TEST_F(UpdateRun, SeesWhatACommandWroteIntoTheConfiguration) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  installation_.share().putProgram("S:\\Lumo\\a.exe", [this](sim::SimProcess&) {
    configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}},
               {"Update02", "02.00", {"S:\\Lumo\\b.exe"}, {}}});
    return 0U;
  });
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
}

TEST_F(UpdateRun, ProductWithoutConfigurationFileIsNoPartOfTheInstallation) {
  installation_.share().put(kLock, "other");
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Prodotto non rilevato, file di config non "
                                   "presente S:\\Lumo\\prg\\com\\setup\\aggdovra\\nerio.ini"));
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(UpdateRun, FolderInThePlaceOfTheConfigurationFileIsNone) {
  installation_.share().makeFolders(kConfiguration);
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(lines(), ElementsAre(HasSubstr("file di config non presente")));
}

// --- Run kinds

TEST_F(UpdateRun, OfKindFourCutsCommandsAtTheirFirstBlank) {
  configure({{"Setup01", "01.00", {"S:\\Lumo\\a.exe -S -X"}, {}},
             {"Setup02", "02.00", {"S:\\Lumo\\b.exe"}, {}}});
  EXPECT_TRUE(run(Operation::Setup, Side::Server, 4));
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe", "S:\\Lumo\\b.exe"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - esecuzione effettuata: Tipo=Setup - "
                                "Oggetto=Server - Comando=S:\\Lumo\\a.exe"));
}

// --- The lock

TEST_F(UpdateRun, HoldsTheLockWhileACommandRuns) {
  std::string lock;
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    lock = installation_.share().text(kLock);
    return 0U;
  });
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(lock, "16/11/2026 09:30:00\r\n");
  EXPECT_FALSE(installation_.serverLockExists());
}

TEST_F(UpdateRun, LockOfMidnightHasNoTime) {
  machine().clock().set({2026, 11, 17, 0, 0, 0});
  std::string lock;
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    lock = installation_.share().text(kLock);
    return 0U;
  });
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(lock, "17/11/2026\r\n");
}

TEST_F(UpdateRun, MakesTheFolderOfTheLock) {
  installation_.share().removeTree("S:\\Lumo\\prg\\tempterm");
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(lines().front(), "Creazione path avvenuta correttamente:S:\\Lumo\\prg\\tempterm");
  EXPECT_EQ(version_, "01.00");
}

TEST_F(UpdateRun, WithoutWorkTakesNoLock) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  version_ = "01.00";
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(machine().openings("S:\\Lumo\\prg\\tempterm").files(), 0U);
}

TEST_F(UpdateRun, TakesTheLockOnce) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}},
             {"Update02", "02.00", {"S:\\Lumo\\b.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(machine().callLog().countOf("files.write S:\\Lumo\\prg\\tempterm\\agdv.lck"), 1U);
}

TEST_F(UpdateRun, OfTheClientLocksBesideTheClientFolder) {
  bool locked = false;
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    locked = machine().fileExists("C:\\Lumo\\Clientagdv.lck");
    return 0U;
  });
  configure({{"Update01", "01.00", {}, {"S:\\Lumo\\a.exe"}}});
  installation_.share().put(kLock, "other");
  EXPECT_TRUE(run(Operation::Update, Side::Client));
  EXPECT_TRUE(locked);
  EXPECT_FALSE(machine().fileExists("C:\\Lumo\\Clientagdv.lck"));
  EXPECT_TRUE(installation_.serverLockExists());
}

TEST_F(UpdateRun, OfTheClientLocksInTheRootForAClientFolderBelowIt) {
  machine().configuration().setConfigPath("C:\\Client");
  bool locked = false;
  installation_.share().putProgram("S:\\Lumo\\a.exe", [&](sim::SimProcess&) {
    locked = machine().fileExists("C:\\Clientagdv.lck");
    return 0U;
  });
  configure({{"Update01", "01.00", {}, {"S:\\Lumo\\a.exe"}}});
  EXPECT_TRUE(run(Operation::Update, Side::Client));
  EXPECT_TRUE(locked);
  EXPECT_THAT(lines(), Not(Contains(HasSubstr("Crea"))));
}

TEST(LockPath, JoinsWithoutBackslashOnTheClientOnly) {
  Installation installation;
  Station station(installation);
  using modProdTrelvManager::LockPath;
  EXPECT_EQ(LockPath(station.program(), Side::Server, "\\\\srv\\Lumo"),
            "\\\\srv\\Lumo\\prg\\tempterm\\agdv.lck");
  EXPECT_EQ(LockPath(station.program(), Side::Client, "S:\\Lumo"), "C:\\Lumo\\Clientagdv.lck");
}

TEST(LockPath, OfAMissingStoreIsTheBareNameAndTheStoreIsReportedOnce) {
  Installation installation;
  Station station(installation);
  using modProdTrelvManager::LockPath;
  station.machine().configuration().answerAlways(-4011);
  EXPECT_EQ(LockPath(station.program(), Side::Client, "S:\\Lumo"), "agdv.lck");
  EXPECT_EQ(LockPath(station.program(), Side::Client, "S:\\Lumo"), "agdv.lck");
  EXPECT_EQ(station.program().reports().size(), 1U);
}

TEST_F(UpdateRun, LockOfAnotherSessionIsLeftAlone) {
  installation_.share().put(kLock, "01/01/2001 08:00:00\r\n");
  configure({{"Update01", "01.00", {"%PATHSETUP%\\a.exe"}, {}}});
  EXPECT_FALSE(updateServer());
  EXPECT_EQ(installation_.share().text(kLock), "01/01/2001 08:00:00\r\n");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(version_, "");
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - esecuzione non effettuata per presenza "
                                   "altre sessioni: Tipo=Update - Oggetto=Server - "
                                   "Comando=%PATHSETUP%\\a.exe"));
  ASSERT_EQ(machine().boxes().size(), 1U);
  const sim::SimBox& box = machine().boxes()[0];
  EXPECT_EQ(box.title, "TrelvManager");
  EXPECT_EQ(box.icon, machine::BoxIcon::Exclamation);
  EXPECT_EQ(box.buttons, machine::BoxButtons::Ok);
  EXPECT_EQ(box.text,
            "Il sistema ha rilevato la necessità di effettuare un aggiornamento del seguente "
            "prodotto complementare installato lato: \r\n\r\nServer\r\n\r\noperazione che però non "
            "può essere avviata per la presenza di una o più precedenti sessioni in corso. "
            "L'operazione di aggiornamento verrà ritentata alla prossima esecuzione del "
            "prodotto\r\n\r\nPremere Ok per proseguire");
}

TEST_F(UpdateRun, WithoutWorkFreesTheLockOfAnotherSession) {
  installation_.share().put(kLock, "other");
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  version_ = "01.00";
  EXPECT_TRUE(updateServer());
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_THAT(machine().boxes(), IsEmpty());
}

TEST_F(UpdateRun, FolderInThePlaceOfTheLockEndsTheRunBeforeAnyCommand) {
  installation_.share().makeFolders(kLock);
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_FALSE(updateServer());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(installation_.share().folderExists(kLock));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\a.exe "
                                   "(Autorizzazione negata: "
                                   "S:\\Lumo\\prg\\tempterm\\agdv.lck)"));
}

TEST_F(UpdateRun, LockThatHasNoRoomLeavesNoEmptyFileBehind) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  installation_.share().setCapacity(installation_.share().usedBytes());
  EXPECT_FALSE(updateServer());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_EQ(lines().front(),
            "Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\a.exe (Disco pieno: "
            "S:\\Lumo\\prg\\tempterm\\agdv.lck)");
}

TEST_F(UpdateRun, LockThatAnotherSessionWasFasterToTakeIsLeftAlone) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  machine().callLog().setInjector([this](const sim::SimCall& call) -> std::optional<SystemCode> {
    if (call.text.rfind("files.write " + std::string(kLock), 0) != 0) {
      return std::nullopt;
    }
    installation_.share().put(kLock, "other");
    return system_code::kAccessDenied;
  });
  EXPECT_FALSE(updateServer());
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_EQ(installation_.share().text(kLock), "other");
}

TEST_F(UpdateRun, FolderOfTheLockThatCannotBeMadeEndsTheRun) {
  installation_.share().removeTree("S:\\Lumo\\prg\\tempterm");
  installation_.share().denyWriting("S:\\Lumo\\prg\\tempterm");
  configure({{"Update01", "01.00", {"S:\\Lumo\\a.exe"}, {}}});
  EXPECT_FALSE(updateServer());
  EXPECT_THAT(started(), IsEmpty());
  ASSERT_EQ(lines().size(), 2U);
  EXPECT_EQ(lines()[0],
            "modLibrary - CreaCartella, errore in creazione cartella: S:\\Lumo\\prg\\tempterm");
  EXPECT_THAT(lines()[1],
              HasSubstr("Gestione ProdTrelv - Comando non eseguito: S:\\Lumo\\a.exe ("));
}

/// A reporter that raises, which the real one never does: a failure in the middle of a run.
class RaisingReporter : public FakeErrorReporter {
 public:
  std::int16_t VisualizzaErrore(const std::string&, const std::string&, const std::string&,
                                std::int32_t, const RuntimeError&) override {
    throw RuntimeError(runtime_number::kOutOfMemory, "test", "Memoria insufficiente");
  }
};

TEST_F(UpdateRun, FailureWhileItHoldsTheLockRemovesIt) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\manca.exe"}, {}}});
  RaisingReporter errors;
  Program failing{
      program_.program.machine,   program_.state, program_.log, errors, program_.fileSystem,
      program_.configurationFiles};
  EXPECT_FALSE(ProductUpdateRun(failing, 1, "S:\\Lumo", "S:\\Work", "", kConfiguration,
                                Operation::Update, Side::Server, version_));
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Esecuzione comando: "
                                   "\"S:\\Lumo\\manca.exe\"",
                                   "Gestione ProdTrelv - Comando non eseguito: "
                                   "S:\\Lumo\\manca.exe (Memoria insufficiente)",
                                   "Cancellazione file: S:\\Lumo\\prg\\tempterm\\agdv.lck "
                                   "effettuata con successo"));
}

TEST_F(UpdateRun, UnknownKindIsAFailureOfTheRun) {
  installation_.share().put(kLock, "other");
  EXPECT_FALSE(run(static_cast<Operation>(9), Side::Server));
  EXPECT_THAT(lines(), ElementsAre("Gestione ProdTrelv - Comando non eseguito:  ()"));
  EXPECT_TRUE(installation_.serverLockExists());
}

// --- The command runner

TEST_F(UpdateRun, ResolvesPlaceholdersWithAnEmptyClientPath) {
  configure({{"Update01",
              "01.00",
              {"%PATHSETUP%/a.exe /w:%PATHWORK% /c:%PATHCLIENT%; /t:%INSTALLTYPE%"},
              {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("S:\\Lumo\\a.exe \\w:S:\\Work \\c:; \\t:rete"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Esecuzione comando: \"S:\\Lumo\\a.exe "
                                "\\w:S:\\Work \\c:; \\t:rete\""));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - esecuzione effettuata: Tipo=Update - "
                                "Oggetto=Server - Comando=S:\\Lumo\\a.exe \\w:S:\\Work \\c:; "
                                "\\t:rete"));
}

TEST_F(UpdateRun, ResolvedTextReplacesTheCallersCommand) {
  std::string command = "%PATHSETUP%\\a.exe";
  EXPECT_TRUE(RunCommand(program_, command, "S:\\Lumo", "S:\\Work", "C:\\Programs"));
  EXPECT_EQ(command, "S:\\Lumo\\a.exe");
}

TEST_F(UpdateRun, UserWithoutRightsGetsOneBoxForEachRefusedCommand) {
  program_.state.startup.administrator = false;
  configure({{"Update01", "01.00", {"%PATHSETUP%\\a.exe"}, {}},
             {"Update02", "02.00", {"%PATHSETUP%\\b.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "");
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_FALSE(installation_.serverLockExists());
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente "
                          "non amministratore",
                          "Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\a.exe",
                          "Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente "
                          "non amministratore",
                          "Gestione ProdTrelv - Esecuzione non effettuata di: S:\\Lumo\\b.exe",
                          "Cancellazione file: S:\\Lumo\\prg\\tempterm\\agdv.lck effettuata con "
                          "successo"));
  ASSERT_EQ(machine().boxes().size(), 2U);
  EXPECT_EQ(machine().boxes()[0].title, "Errore");
  EXPECT_EQ(machine().boxes()[0].icon, machine::BoxIcon::Critical);
  EXPECT_EQ(machine().boxes()[0].text,
            "Per il corretto funzionamento il sistema richiede l'aggiornamento di alcuni "
            "componenti.\r\nL'utente corrente non dispone dei privilegi necessari per effettuare "
            "tale operazione, impossibile proseguire.");
}

TEST_F(UpdateRun, CommandThatCannotBeStartedIsReportedOnceAndDoesNotRaiseTheVersion) {
  configure({{"Update01", "01.00", {"S:\\Lumo\\manca.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "");
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: S:\\Lumo\\manca.exe"));
  EXPECT_THAT(lines(),
              ElementsAre("Gestione ProdTrelv - Esecuzione comando: \"S:\\Lumo\\manca.exe\"",
                          "Gestione ProdTrelv - Esecuzione non effettuata di: "
                          "S:\\Lumo\\manca.exe",
                          "Cancellazione file: S:\\Lumo\\prg\\tempterm\\agdv.lck effettuata con "
                          "successo"));
}

TEST_F(UpdateRun, FolderInThePlaceOfACommandCannotBeStarted) {
  installation_.share().makeFolders("S:\\Lumo\\cartella.exe");
  configure({{"Update01", "01.00", {"S:\\Lumo\\cartella.exe"}, {}}});
  EXPECT_TRUE(updateServer());
  EXPECT_EQ(version_, "");
  EXPECT_EQ(program_.reports().size(), 1U);
}

TEST_F(UpdateRun, CommandOnAPathWithBlanksRunsQuoted) {
  installation_.share().putProgram("S:\\Lumo\\nuovi file\\a.exe");
  installation_.share().put(
      kConfiguration,
      "[Update01]\r\nversion=01.00\r\nServer01=\"%PATHSETUP%\\nuovi file\\a.exe\" -S\r\n");
  EXPECT_TRUE(updateServer());
  EXPECT_THAT(started(), ElementsAre("\"S:\\Lumo\\nuovi file\\a.exe\" -S"));
  EXPECT_EQ(machine().started()[0].program, "S:\\Lumo\\nuovi file\\a.exe");
}

}  // namespace
}  // namespace trelv::tests
