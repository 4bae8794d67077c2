#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/RealProgram.h"

namespace trelv::modMain {
namespace {

using Lines = std::vector<std::string>;
using sim::CallKind;
using sim::WindowsEdition;

constexpr const char* kRefusedText =
    "Esecuzione in modalità interattiva non consentita\r\n\r\nPremere Ok per interrompere";
constexpr const char* kParametersText =
    "Non è possibile eseguire il prodotto richiesto, in quanto non è stata \r\n"
    "configurata correttamente la procedura di integrazione dei Prodotti Complementari.\r\n\r\n"
    "Verificare i parametri inseriti all'interno del configuratore di Dovra.";
constexpr const char* kAnalysed = "Gestione prodTrelv - Analisi linea di comando effettuata";

class Start : public ::testing::Test {
 protected:
  Start() { machine_.makeFolders("C:\\Users\\mario\\Temp\\log"); }

  void run(const std::string& arguments) { program_.run(arguments); }
  StartupFacts& facts() { return program_.state().startup; }

  bool logged(const std::string& line) {
    const Lines lines = program_.logLines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
  /// Position of a line in the log, from 0; the number of lines when it is not there.
  std::ptrdiff_t lineAt(const std::string& line) {
    const Lines lines = program_.logLines();
    return std::find(lines.begin(), lines.end(), line) - lines.begin();
  }
  /// Position of the first call of a kind whose path is `path` (any when empty), from 1; 0: none.
  std::size_t callAt(CallKind kind, const std::string& path = "") {
    for (const sim::SimCall& call : machine_.callLog().all()) {
      if (call.kind == kind && (path.empty() || call.path == path)) {
        return call.number;
      }
    }
    return 0;
  }
  void expectOneBox(const std::string& text) {
    ASSERT_EQ(1U, machine_.boxes().size());
    const sim::SimBox& box = machine_.boxes().front();
    EXPECT_EQ(text, box.text);
    EXPECT_EQ("TrelvManager", box.title);
    EXPECT_EQ(machine::BoxIcon::Critical, box.icon);
    EXPECT_EQ(machine::BoxButtons::Ok, box.buttons);
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

// --- Refusals

TEST_F(Start, WithoutArgumentsIsLoggedAndRefused) {
  run("");
  EXPECT_EQ(
      (Lines{"IsWin2008Server = Falso", "IsWin2008TS = Falso",
             "Gestione ProdTrelv - Linea di comando ArgV = \t Numero parametri = 0", kAnalysed}),
      program_.logLines());
  expectOneBox(kRefusedText);
  EXPECT_EQ(RunMode::None, facts().runMode);
}

TEST_F(Start, WithAnUnknownKeywordIsRefusedAndTheRefusalNotLogged) {
  run("QUALCOSA S:\\Lumo");
  expectOneBox(kRefusedText);
  EXPECT_EQ(kAnalysed, program_.logLines().back());
}

TEST_F(Start, StandaloneInstallIsRefusedLikeAnUnknownKeyword) {
  run("STANDALONEINSTALL a b");
  EXPECT_EQ(RunMode::StandaloneInstall, facts().runMode);
  expectOneBox(kRefusedText);
  EXPECT_EQ(kAnalysed, program_.logLines().back());
}

TEST_F(Start, IntegratedRunWithThreeArgumentsIsRefusedAndLogged) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione");
  expectOneBox(kParametersText);
  EXPECT_EQ("Gestione ProdTrelv - Numero parametri errato. Interruzione procedura.",
            program_.logLines().back());
  EXPECT_FALSE(logged(kAnalysed));
}

TEST_F(Start, BoxOfMissingParametersComesBeforeItsLogLine) {
  Lines before;
  machine_.desktop().onBox([&](const sim::SimBox&) { before = program_.logLines(); });
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione");
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(
      "Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\\Lumo S:\\Integrazione\t "
      "Numero parametri = 3",
      before.back());
  EXPECT_EQ(before.size() + 1, program_.logLines().size());
}

TEST_F(Start, OtherModesDoNotCountTheirArguments) {
  run("INTEGRATEDMAINTAIN");
  EXPECT_TRUE(machine_.boxes().empty());
  EXPECT_TRUE(logged("Gestione ProdTrelv - Manutenzione prodotti complementari integrati"));
}

// --- Arguments

TEST_F(Start, CommandLineIsLoggedWithATabAndAPlainCount) {
  run("  QUALCOSA  \"a b\"  c ");
  EXPECT_TRUE(logged(
      "Gestione ProdTrelv - Linea di comando ArgV = QUALCOSA  \"a b\"  c \t Numero parametri = 3"));
  EXPECT_EQ("QUALCOSA  \"a b\"  c ", facts().rawCommandLine);
  EXPECT_EQ(3U, facts().argumentCount);
  EXPECT_EQ((Lines{"QUALCOSA", "a b", "c"}), facts().arguments);
}

TEST_F(Start, UnquotedProgramPathIsNoArgument) {
  machine_.system().setCommandLine("C:\\Lumo\\T.exe INTERACTIVE");
  Main(program_);
  EXPECT_EQ("INTERACTIVE", facts().rawCommandLine);
  EXPECT_EQ(RunMode::Interactive, facts().runMode);
}

TEST_F(Start, ArgumentsAreTakenByPosition) {
  run("INTEGRATEDMAINTAIN \"S:\\Lumo due\" S:\\Integrazione NERIO uno \"due tre\" quattro");
  EXPECT_EQ("S:\\Lumo due", facts().hostFolder);
  EXPECT_EQ("S:\\Integrazione", facts().integrationPath);
  EXPECT_EQ(12, facts().programNumber);
  EXPECT_EQ(" uno due tre quattro", facts().extraArguments);
  EXPECT_EQ("", facts().productToInstall);
  EXPECT_EQ("", facts().packFileName);
}

TEST_F(Start, EmptyQuotesShiftLaterPositions) {
  run("INTEGRATEDMAINTAIN \"\" S:\\Lumo S:\\Integrazione");
  EXPECT_EQ("S:\\Lumo", facts().hostFolder);
  EXPECT_EQ("S:\\Integrazione", facts().integrationPath);
}

TEST_F(Start, MissingArgumentsAreEmpty) {
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_EQ("S:\\Lumo", facts().hostFolder);
  EXPECT_EQ("", facts().integrationPath);
  EXPECT_EQ(0, facts().programNumber);
  EXPECT_EQ("", facts().extraArguments);
}

TEST_F(Start, KeywordOfAnyCaseWithBlanksIsTaken) {
  run("\" integratedmaintain  \" S:\\Lumo");
  EXPECT_EQ(RunMode::IntegratedMaintain, facts().runMode);
}

TEST_F(Start, TwentyFirstArgumentIsDroppedWithoutAMessage) {
  run("INTEGRATEDMAINTAIN a b ZM 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22");
  EXPECT_EQ(20U, facts().argumentCount);
  EXPECT_EQ(" 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20", facts().extraArguments);
  EXPECT_TRUE(machine_.boxes().empty());
}

TEST_F(Start, CommandLineOfThirtyTwoThousandCharactersIsLoggedWhole) {
  const std::string longOne(31980, 'x');
  run("QUALCOSA " + longOne);
  EXPECT_TRUE(logged("Gestione ProdTrelv - Linea di comando ArgV = QUALCOSA " + longOne +
                     "\t Numero parametri = 2"));
  EXPECT_EQ(longOne, facts().hostFolder);
}

// --- Program code

TEST_F(Start, UnknownProgramCodeEndsInTheMainHandler) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione NIENTE");
  expectOneBox(
      "Si è verificato un errore durante l'integrazione con il prodotto complementare richiesto: "
      "\r\n\r\n(Programma \"NIENTE\" non riconosciuto)\r\n\r\nNon è stato pertanto possibile "
      "completare l'operazione richiesta");
  EXPECT_EQ(
      "Gestione ProdTrelv - Errore in modulo principale: Programma \"NIENTE\" non riconosciuto",
      program_.logLines().back());
  EXPECT_FALSE(logged(kAnalysed));
  EXPECT_TRUE(machine_.desktop().shownForms().empty()) << "no error form";
}

TEST_F(Start, UnknownProgramCodeEndsEveryModeBeforeItIsDispatched) {
  for (const char* keyword :
       {"INTEGRATEDMAINTAIN", "INTERACTIVE", "SINGLEINSTALL", "STANDALONEINSTALL", "QUALCOSA"}) {
    sim::SimMachine machine;
    tests::RealProgram program(machine);
    program.run(std::string(keyword) + " a b luda");
    EXPECT_EQ(
        "Gestione ProdTrelv - Errore in modulo principale: Programma \"luda\" non riconosciuto",
        program.logLines().back())
        << keyword;
    ASSERT_EQ(1U, machine.boxes().size()) << keyword;
    EXPECT_NE(kRefusedText, machine.boxes().front().text) << keyword;
  }
}

TEST_F(Start, BoxOfTheMainHandlerComesBeforeItsLogLine) {
  Lines before;
  machine_.desktop().onBox([&](const sim::SimBox&) { before = program_.logLines(); });
  run("INTERACTIVE a b NIENTE");
  EXPECT_EQ(
      "Gestione ProdTrelv - Linea di comando ArgV = INTERACTIVE a b NIENTE\t Numero "
      "parametri = 4",
      before.back());
  EXPECT_EQ(before.size() + 1, program_.logLines().size());
}

// --- Facts

TEST_F(Start, FactsComeBeforeTheFirstLineAboutTheCommandLine) {
  run("");
  const std::size_t path = callAt(CallKind::ConfigurationPath);
  const std::size_t version = callAt(CallKind::VersionQuery);
  const std::size_t administrator = callAt(CallKind::AdministratorQuery);
  const std::size_t line = callAt(CallKind::FileAppend);
  ASSERT_NE(0U, path);
  EXPECT_LT(path, version);
  EXPECT_LT(version, administrator);
  EXPECT_LT(administrator, line) << "the first lines are those of the terminal-server probes";
  EXPECT_EQ("IsWin2008Server = Falso", program_.logLines().front());
}

TEST_F(Start, ProgramsPathComesFromTheConfigurationStore) {
  machine_.configuration().setConfigPath("C:\\Lumo\\Programmi");
  run("");
  EXPECT_EQ("C:\\Lumo\\Programmi", facts().programsPath);
}

TEST_F(Start, ProgramsPathIsEmptyWhenTheStoreCannotGiveIt) {
  machine_.configuration().answerAlways(-4002);
  run("");
  EXPECT_EQ("", facts().programsPath);
  expectOneBox(kRefusedText);
}

TEST_F(Start, StoreThatCannotBeCalledLeavesTheProgramsPathEmpty) {
  machine_.configuration().setCallable(false);
  run("");
  EXPECT_EQ("", facts().programsPath);
  expectOneBox(kRefusedText);
}

TEST_F(Start, FactsFollowTheEdition) {
  struct Case {
    WindowsEdition edition;
    bool workstation;
    bool win9x;
    bool terminalServer;
  };
  for (const Case& known : {
           Case{WindowsEdition::Win95, true, true, false},
           Case{WindowsEdition::Win98, true, true, false},
           Case{WindowsEdition::WinMe, true, true, false},
           Case{WindowsEdition::NT4, false, false, false},
           Case{WindowsEdition::NT4TerminalServer, false, false, true},
           Case{WindowsEdition::Win2000Pro, true, false, false},
           Case{WindowsEdition::Win2000Server, false, false, false},
           Case{WindowsEdition::Win2000TerminalServer, false, false, true},
           Case{WindowsEdition::XP, true, false, false},
           Case{WindowsEdition::XP64, false, false, false},
           Case{WindowsEdition::Win2003, false, false, false},
           Case{WindowsEdition::Win2003TerminalServer, false, false, true},
           Case{WindowsEdition::Vista, true, false, false},
           Case{WindowsEdition::Win2008, false, false, false},
           Case{WindowsEdition::Win2008TerminalServer, false, false, true},
           Case{WindowsEdition::Seven, true, false, false},
           Case{WindowsEdition::Win2008R2TerminalServer, false, false, true},
           Case{WindowsEdition::Win8, false, false, false},
           Case{WindowsEdition::Win10, false, false, false},
       }) {
    sim::SimMachine machine;
    machine.setEdition(known.edition);
    machine.system().setAdministrator(false);
    tests::RealProgram program(machine);
    program.run("");
    const StartupFacts& startup = program.state().startup;
    const int edition = static_cast<int>(known.edition);
    EXPECT_EQ(known.workstation, startup.workstation) << edition;
    EXPECT_EQ(known.win9x, startup.win9x) << edition;
    EXPECT_EQ(known.terminalServer, startup.terminalServer) << edition;
    EXPECT_EQ(known.win9x, startup.administrator) << edition;
  }
}

TEST_F(Start, AdministratorIsAskedOutsideWindows9xOnly) {
  run("");
  EXPECT_NE(0U, callAt(CallKind::AdministratorQuery));
  EXPECT_TRUE(facts().administrator);

  sim::SimMachine old;
  old.setEdition(WindowsEdition::Win98);
  old.support().setAdministratorAnswer(machine::SupportAnswer::No);
  tests::RealProgram program(old);
  program.run("");
  EXPECT_TRUE(program.state().startup.administrator);
  for (const sim::SimCall& call : old.callLog().all()) {
    EXPECT_NE(CallKind::AdministratorQuery, call.kind);
    EXPECT_NE(CallKind::SupportAdministrator, call.kind);
  }
}

TEST_F(Start, UnknownAdministratorAnswerIsLoggedFirst) {
  machine_.support().setAdministratorAnswer(machine::SupportAnswer::Failed);
  run("");
  EXPECT_EQ("Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE",
            program_.logLines().front());
  EXPECT_TRUE(facts().administrator);
}

// --- Plugin

TEST_F(Start, PluginFolderBelowTheHostFolderMeansDovra) {
  machine_.mount("S:");
  machine_.makeFolders("S:\\Lumo\\prg\\com\\dovra\\plugin");
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_EQ(PluginProduct{14}, facts().pluginProduct);
}

TEST_F(Start, NoPluginFolderMeansNoDovra) {
  machine_.mount("S:");
  machine_.putFile("S:\\Lumo\\prg\\com\\dovra\\plugin", "a file is no folder");
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_EQ(PluginProduct{999}, facts().pluginProduct);
}

TEST_F(Start, EmptyHostFolderIsTestedToo) {
  machine_.makeFolders("C:\\prg\\com\\dovra\\plugin");
  run("");
  EXPECT_EQ(PluginProduct{14}, facts().pluginProduct);
}

// --- Dispatch

TEST_F(Start, MaintenanceAndInteractiveModesSayWhatTheyAre) {
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_TRUE(logged("Gestione ProdTrelv - Manutenzione prodotti complementari integrati"));
  EXPECT_FALSE(logged("Gestione ProdTrelv - Esecuzione in modalità interattiva"));

  sim::SimMachine other;
  tests::RealProgram interactive(other);
  interactive.run("INTERACTIVE");
  const Lines lines = interactive.logLines();
  EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(),
                                   "Gestione ProdTrelv - Esecuzione in modalità interattiva"));
}

/// A server share with one product whose program is installed, and a workstation.
class IntegratedStart : public Start {
 protected:
  IntegratedStart() {
    machine_.mount("S:");
    machine_.putFile("S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini",
                     "[prod01]\r\nid=LUDA\r\nname=Luda\r\nconf=prg\\etc\\luda.ini\r\n");
    machine_.putFile("S:\\Lumo\\prg\\etc\\luda.ini", "[Exec]\r\nLUDA=%PATHCLIENT%\\luda.exe\r\n");
    machine_.programs().define("C:\\Lumo\\Client\\luda.exe");
  }
};

TEST_F(IntegratedStart, UpdatesAllThenStartsTheProgramWithItsArguments) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione LUDA uno \"due tre\"");
  const std::ptrdiff_t mode = lineAt(
      "Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  6 (INTEGRATEDRUN "
      "S:\\Lumo S:\\Integrazione LUDA uno \"due tre\")");
  const std::ptrdiff_t begin = lineAt("Gestione ProdTrelv - Inizio procedura");
  const std::ptrdiff_t end =
      lineAt("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari");
  const std::ptrdiff_t started =
      lineAt("Gestione ProdTrelv - Esecuzione di: C:\\Lumo\\Client\\luda.exe uno due tre");
  EXPECT_EQ(lineAt(kAnalysed) + 1, mode);
  EXPECT_LT(mode, begin);
  EXPECT_LT(begin, end);
  EXPECT_LT(end, started);
  EXPECT_EQ((Lines{"C:\\Lumo\\Client\\luda.exe uno due tre"}),
            machine_.programs().startedCommandLines());
  EXPECT_TRUE(machine_.boxes().empty());
  EXPECT_EQ("S:\\Lumo", machine_.configuration().value("SYSTEM", "Complementary_Products",
                                                       "Integration", "Path"));
}

TEST_F(IntegratedStart, WithFourArgumentsRuns) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione LUDA");
  EXPECT_EQ((Lines{"C:\\Lumo\\Client\\luda.exe "}), machine_.programs().startedCommandLines());
}

TEST_F(IntegratedStart, OfUndefinedUpdatesAndFindsNothingToStart) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione UNDEFINED");
  EXPECT_EQ(0, facts().programNumber);
  EXPECT_TRUE(logged("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"));
  EXPECT_TRUE(logged(
      "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: UNDEFINED"));
  EXPECT_TRUE(machine_.started().empty());
}

class SingleInstallStart : public Start {};

TEST_F(SingleInstallStart, TakesProductAndPackInTheirPlaces) {
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ("ZB", facts().productToInstall);
  EXPECT_EQ("pacco.zip", facts().packFileName);
  EXPECT_EQ("", facts().integrationPath);
  EXPECT_TRUE(
      logged("Gestione ProdTrelv - Installazione/Aggiornamento singolo prodotto - parametri:  3 "
             "(SINGLEINSTALL ZB pacco.zip)"));
}

TEST_F(SingleInstallStart, ConvertsAProgramCodeThatItDoesNotUse) {
  run("SINGLEINSTALL ZB pacco.zip MVBIL");
  EXPECT_EQ(31, facts().programNumber);
  EXPECT_TRUE(logged("Gestione ProdTrelv - Verifica integrazione con Dovra SP"));
}

TEST_F(SingleInstallStart, OnAnIntegratedMachineTakesTheRecordedFolder) {
  machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                               "S:\\Lumo");
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ("S:\\Lumo", facts().hostIntegrationFolder);
  EXPECT_EQ("S:\\Lumo", facts().hostFolder);
}

TEST_F(SingleInstallStart, WithoutARecordLeavesTheHostFolderEmpty) {
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_TRUE(logged("Gestione ProdTrelv - Integrazione Dovra SP non rilevata"));
  EXPECT_EQ("", facts().hostIntegrationFolder);
  EXPECT_EQ("", facts().hostFolder);
}

TEST_F(SingleInstallStart, TestsThePluginFolderBeforeItAsksForTheRecord) {
  machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                               "C:\\Lumo");
  machine_.makeFolders("C:\\Lumo\\prg\\com\\dovra\\plugin");
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ(PluginProduct{999}, facts().pluginProduct) << "the host folder was not known yet";
  const std::size_t plugin = callAt(CallKind::FileLook, "\\prg\\com\\dovra\\plugin");
  ASSERT_NE(0U, plugin);
  EXPECT_LT(plugin, callAt(CallKind::ConfigurationGet));
}

}  // namespace
}  // namespace trelv::modMain
