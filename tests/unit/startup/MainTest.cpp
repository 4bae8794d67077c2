#include <algorithm>

#include "support/Matchers.h"
#include "support/RealProgram.h"

namespace trelv::modMain {
namespace {

using sim::CallKind;
using sim::WindowsEdition;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kRefusedText =
    "Esecuzione in modalità interattiva non consentita\r\n\r\nPremere Ok per interrompere";
constexpr const char* kParametersText =
    "Non è possibile eseguire il prodotto richiesto, in quanto non è stata \r\n"
    "configurata correttamente la procedura di integrazione dei Prodotti Complementari.\r\n\r\n"
    "Verificare i parametri inseriti all'interno del configuratore di Dovra.";
constexpr const char* kAnalysed = "Gestione prodTrelv - Analisi linea di comando effettuata";
constexpr const char* kMaintenance =
    "Gestione ProdTrelv - Manutenzione prodotti complementari integrati";
constexpr const char* kInteractive = "Gestione ProdTrelv - Esecuzione in modalità interattiva";

/// The line about a command line of so many arguments.
std::string commandLine(const std::string& raw, int count) {
  return "Gestione ProdTrelv - Linea di comando ArgV = " + raw +
         "\t Numero parametri = " + std::to_string(count);
}

/// A workstation on which the manager starts.
class Starting {
 public:
  explicit Starting(WindowsEdition edition = WindowsEdition::XP) {
    machine_.setEdition(edition);
    machine_.makeFolders("C:\\Users\\mario\\Temp\\log");
    machine_.desktop().onBox([this](const sim::SimBox&) { linesAtBox_ = lines(); });
  }

  void run(const std::string& arguments) { program_.run(arguments); }
  StartupFacts& facts() { return program_.state().startup; }
  std::vector<std::string> lines() { return program_.logLines(); }
  std::vector<std::string> started() { return machine_.programs().startedCommandLines(); }

  /// Position of a line in the log, from 0; the number of lines when it is not there.
  std::ptrdiff_t lineAt(const std::string& line) {
    const std::vector<std::string> all = lines();
    return std::find(all.begin(), all.end(), line) - all.begin();
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
  /// Runs into the one critical box with this text.
  void expectRefused(const std::string& arguments, const std::string& text) {
    run(arguments);
    EXPECT_THAT(machine_.boxes(), ElementsAre(tests::isBox(machine::BoxIcon::Critical, text)));
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
  /// The log as it was when a box came.
  std::vector<std::string> linesAtBox_;
};

class Start : public testing::Test, public Starting {};

// --- Refusals

TEST_F(Start, WithoutArgumentsIsLoggedAndRefused) {
  expectRefused("", kRefusedText);
  EXPECT_THAT(lines(), ElementsAre("IsWin2008Server = Falso", "IsWin2008TS = Falso",
                                   commandLine("", 0), kAnalysed));
  EXPECT_EQ(RunMode::None, facts().runMode);
}

TEST_F(Start, WithAnUnknownKeywordIsRefusedAndTheRefusalNotLogged) {
  expectRefused("QUALCOSA S:\\Lumo", kRefusedText);
  EXPECT_EQ(kAnalysed, lines().back());
}

TEST_F(Start, StandaloneInstallIsRefusedLikeAnUnknownKeyword) {
  expectRefused("STANDALONEINSTALL a b", kRefusedText);
  EXPECT_EQ(RunMode::StandaloneInstall, facts().runMode);
  EXPECT_EQ(kAnalysed, lines().back());
}

TEST_F(Start, IntegratedRunWithThreeArgumentsIsRefusedAndThenLogged) {
  const std::string arguments = "INTEGRATEDRUN S:\\Lumo S:\\Integrazione";
  expectRefused(arguments, kParametersText);
  EXPECT_EQ(commandLine(arguments, 3), linesAtBox_.back());
  EXPECT_EQ("Gestione ProdTrelv - Numero parametri errato. Interruzione procedura.",
            lines().back());
  EXPECT_EQ(linesAtBox_.size() + 1, lines().size());
}

TEST_F(Start, OtherModesDoNotCountTheirArguments) {
  run("INTEGRATEDMAINTAIN");
  EXPECT_THAT(machine_.boxes(), IsEmpty());
  EXPECT_THAT(lines(), Contains(kMaintenance));
}

// --- Arguments

TEST_F(Start, CommandLineIsLoggedWithATabAndAPlainCount) {
  run("  QUALCOSA  \"a b\"  c ");
  EXPECT_THAT(lines(), Contains(commandLine("QUALCOSA  \"a b\"  c ", 3)));
  EXPECT_EQ("QUALCOSA  \"a b\"  c ", facts().rawCommandLine);
  EXPECT_EQ(3U, facts().argumentCount);
  EXPECT_THAT(facts().arguments, ElementsAre("QUALCOSA", "a b", "c"));
}

TEST_F(Start, UnquotedProgramPathIsNoArgument) {
  machine_.system().setCommandLine("C:\\Lumo\\T.exe INTERACTIVE");
  Main(program_);
  EXPECT_EQ("INTERACTIVE", facts().rawCommandLine);
  EXPECT_EQ(RunMode::Interactive, facts().runMode);
}

TEST_F(Start, ArgumentsAreTakenByPosition) {
  run("\" integratedmaintain  \" \"S:\\Lumo due\" S:\\Integrazione NERIO uno \"due tre\" quattro");
  EXPECT_EQ(RunMode::IntegratedMaintain, facts().runMode);
  EXPECT_EQ("S:\\Lumo due", facts().paths.server);
  EXPECT_EQ("S:\\Integrazione", facts().paths.integration);
  EXPECT_EQ(12, facts().programNumber);
  EXPECT_EQ(" uno due tre quattro", facts().extraArguments);
  EXPECT_EQ("", facts().productToInstall);
  EXPECT_EQ("", facts().packFileName);
}

TEST_F(Start, EmptyQuotesShiftLaterPositions) {
  run("INTEGRATEDMAINTAIN \"\" S:\\Lumo S:\\Integrazione");
  EXPECT_EQ("S:\\Lumo", facts().paths.server);
  EXPECT_EQ("S:\\Integrazione", facts().paths.integration);
}

TEST_F(Start, MissingArgumentsAreEmpty) {
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_EQ("S:\\Lumo", facts().paths.server);
  EXPECT_EQ("", facts().paths.integration);
  EXPECT_EQ(0, facts().programNumber);
  EXPECT_EQ("", facts().extraArguments);
}

TEST_F(Start, TwentyFirstArgumentIsDroppedWithoutAMessage) {
  run("INTEGRATEDMAINTAIN a b ZM 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22");
  EXPECT_EQ(20U, facts().argumentCount);
  EXPECT_EQ(" 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20", facts().extraArguments);
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(Start, CommandLineOfThirtyTwoThousandCharactersIsLoggedWhole) {
  const std::string longOne(31980, 'x');
  run("QUALCOSA " + longOne);
  EXPECT_THAT(lines(), Contains(commandLine("QUALCOSA " + longOne, 2)));
  EXPECT_EQ(longOne, facts().paths.server);
}

// --- Program code

TEST_F(Start, UnknownProgramCodeEndsInTheMainHandler) {
  const std::string arguments = "INTEGRATEDRUN S:\\Lumo S:\\Integrazione NIENTE";
  expectRefused(arguments,
                "Si è verificato un errore durante l'integrazione con il prodotto complementare "
                "richiesto: \r\n\r\n(Programma \"NIENTE\" non riconosciuto)\r\n\r\nNon è stato "
                "pertanto possibile completare l'operazione richiesta");
  EXPECT_EQ(commandLine(arguments, 4), linesAtBox_.back());
  EXPECT_EQ(
      "Gestione ProdTrelv - Errore in modulo principale: Programma \"NIENTE\" non riconosciuto",
      lines().back());
  EXPECT_EQ(linesAtBox_.size() + 1, lines().size());
  EXPECT_THAT(machine_.desktop().shownForms(), IsEmpty()) << "no error form";
}

TEST_F(Start, UnknownProgramCodeEndsEveryModeBeforeItIsDispatched) {
  for (const std::string keyword :
       {"INTEGRATEDMAINTAIN", "INTERACTIVE", "SINGLEINSTALL", "STANDALONEINSTALL", "QUALCOSA"}) {
    Starting start;
    start.run(keyword + " a b luda");
    EXPECT_EQ(
        "Gestione ProdTrelv - Errore in modulo principale: Programma \"luda\" non riconosciuto",
        start.lines().back())
        << keyword;
    ASSERT_EQ(1U, start.machine_.boxes().size()) << keyword;
    EXPECT_NE(kRefusedText, start.machine_.boxes().front().text) << keyword;
  }
}

// --- Facts

TEST_F(Start, FactsComeBeforeTheFirstLineAboutTheCommandLine) {
  run("");
  const std::vector<std::size_t> calls{
      callAt(CallKind::ConfigurationPath), callAt(CallKind::VersionQuery),
      callAt(CallKind::AdministratorQuery), callAt(CallKind::FileAppend)};
  EXPECT_NE(0U, calls[0]);
  EXPECT_TRUE(std::is_sorted(calls.begin(), calls.end()))
      << "the first lines are those of the terminal-server probes";
  EXPECT_EQ("IsWin2008Server = Falso", lines().front());
}

TEST_F(Start, ProgramsPathComesFromTheConfigurationStore) {
  machine_.configuration().setConfigPath("C:\\Lumo\\Programmi");
  run("");
  EXPECT_EQ("C:\\Lumo\\Programmi", facts().paths.programs);
}

TEST_F(Start, ProgramsPathIsEmptyWhenTheStoreCannotGiveItOrBeCalled) {
  machine_.configuration().answerAlways(-4002);
  expectRefused("", kRefusedText);
  EXPECT_EQ("", facts().paths.programs);

  Starting other;
  other.machine_.configuration().setCallable(false);
  other.expectRefused("", kRefusedText);
  EXPECT_EQ("", other.facts().paths.programs);
}

TEST_F(Start, FactsFollowTheEdition) {
  struct Case {
    WindowsEdition edition;
    bool workstation;
    bool win9x;
    bool terminalServer;
  };
  for (const Case& known :
       std::vector<Case>{{WindowsEdition::Win95, true, true, false},
                         {WindowsEdition::Win98, true, true, false},
                         {WindowsEdition::WinMe, true, true, false},
                         {WindowsEdition::NT4, false, false, false},
                         {WindowsEdition::NT4TerminalServer, false, false, true},
                         {WindowsEdition::Win2000Pro, true, false, false},
                         {WindowsEdition::Win2000Server, false, false, false},
                         {WindowsEdition::Win2000TerminalServer, false, false, true},
                         {WindowsEdition::XP, true, false, false},
                         {WindowsEdition::XP64, false, false, false},
                         {WindowsEdition::Win2003, false, false, false},
                         {WindowsEdition::Win2003TerminalServer, false, false, true},
                         {WindowsEdition::Vista, true, false, false},
                         {WindowsEdition::Win2008, false, false, false},
                         {WindowsEdition::Win2008TerminalServer, false, false, true},
                         {WindowsEdition::Seven, true, false, false},
                         {WindowsEdition::Win2008R2TerminalServer, false, false, true},
                         {WindowsEdition::Win8, false, false, false},
                         {WindowsEdition::Win10, false, false, false}}) {
    Starting start(known.edition);
    start.machine_.system().setAdministrator(false);
    start.run("");
    const int edition = static_cast<int>(known.edition);
    EXPECT_EQ(known.workstation, start.facts().workstation) << edition;
    EXPECT_EQ(known.win9x, start.facts().win9x) << edition;
    EXPECT_EQ(known.terminalServer, start.facts().terminalServer) << edition;
    EXPECT_EQ(known.win9x, start.facts().administrator) << edition;
  }
}

TEST_F(Start, AdministratorIsAskedOutsideWindows9xOnly) {
  run("");
  EXPECT_NE(0U, callAt(CallKind::AdministratorQuery));
  EXPECT_TRUE(facts().administrator);

  Starting old(WindowsEdition::Win98);
  old.machine_.support().setAdministratorAnswer(machine::SupportAnswer::No);
  old.run("");
  EXPECT_TRUE(old.facts().administrator);
  EXPECT_EQ(0U, old.callAt(CallKind::AdministratorQuery));
  EXPECT_EQ(0U, old.callAt(CallKind::SupportAdministrator));
}

TEST_F(Start, UnknownAdministratorAnswerIsLoggedFirst) {
  machine_.support().setAdministratorAnswer(machine::SupportAnswer::Failed);
  run("");
  EXPECT_EQ("Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE",
            lines().front());
  EXPECT_TRUE(facts().administrator);
}

// --- Plugin

TEST_F(Start, PluginFolderBelowTheServerPathMeansDovra) {
  machine_.mount("S:");
  machine_.putFile("S:\\Lumo\\prg\\com\\dovra\\plugin", "a file is no folder");
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_EQ(PluginProduct{999}, facts().pluginProduct);
  machine_.makeFolders("S:\\Altro\\prg\\com\\dovra\\plugin");
  run("INTEGRATEDMAINTAIN S:\\Altro");
  EXPECT_EQ(PluginProduct{14}, facts().pluginProduct);
}

TEST_F(Start, EmptyServerPathIsTestedToo) {
  machine_.makeFolders("C:\\prg\\com\\dovra\\plugin");
  run("");
  EXPECT_EQ(PluginProduct{14}, facts().pluginProduct);
}

// --- Dispatch

TEST_F(Start, MaintenanceAndInteractiveModesSayWhatTheyAre) {
  run("INTEGRATEDMAINTAIN S:\\Lumo");
  EXPECT_THAT(lines(), Contains(kMaintenance));
  EXPECT_THAT(lines(), Not(Contains(kInteractive)));

  Starting interactive;
  interactive.run("INTERACTIVE");
  EXPECT_THAT(interactive.lines(), Contains(kInteractive));
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
  const std::vector<std::ptrdiff_t> places{
      lineAt(kAnalysed) + 1, lineAt("Gestione ProdTrelv - Inizio procedura"),
      lineAt("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"),
      lineAt("Gestione ProdTrelv - Esecuzione di: C:\\Lumo\\Client\\luda.exe uno due tre")};
  EXPECT_EQ(places[0], lineAt("Gestione ProdTrelv - Esecuzione in modalità integrata - parametri:  "
                              "6 (INTEGRATEDRUN S:\\Lumo S:\\Integrazione LUDA uno \"due tre\")"));
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end(), std::less_equal<>()));
  EXPECT_LT(places.back(), std::ssize(lines()));
  EXPECT_THAT(started(), ElementsAre("C:\\Lumo\\Client\\luda.exe uno due tre"));
  EXPECT_THAT(machine_.boxes(), IsEmpty());
  EXPECT_EQ("S:\\Lumo", machine_.configuration().value("SYSTEM", "Complementary_Products",
                                                       "Integration", "Path"));
}

TEST_F(IntegratedStart, WithFourArgumentsRuns) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione LUDA");
  EXPECT_THAT(started(), ElementsAre("C:\\Lumo\\Client\\luda.exe "));
}

TEST_F(IntegratedStart, OfUndefinedUpdatesAndFindsNothingToStart) {
  run("INTEGRATEDRUN S:\\Lumo S:\\Integrazione UNDEFINED");
  EXPECT_EQ(0, facts().programNumber);
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Non è stato rilevato alcun programma per il "
                                "prodotto: UNDEFINED"));
  EXPECT_THAT(started(), IsEmpty());
}

class SingleInstallStart : public Start {
 protected:
  void integrateWith(const std::string& folder) {
    machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", folder);
  }
};

TEST_F(SingleInstallStart, TakesProductAndPackInTheirPlaces) {
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ("ZB", facts().productToInstall);
  EXPECT_EQ("pacco.zip", facts().packFileName);
  EXPECT_EQ("", facts().paths.integration);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Installazione/Aggiornamento singolo prodotto "
                                "- parametri:  3 (SINGLEINSTALL ZB pacco.zip)"));
}

TEST_F(SingleInstallStart, ConvertsAProgramCodeThatItDoesNotUse) {
  run("SINGLEINSTALL ZB pacco.zip MVBIL");
  EXPECT_EQ(31, facts().programNumber);
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Verifica integrazione con Dovra SP"));
}

TEST_F(SingleInstallStart, OnAnIntegratedMachineTakesTheRecordedFolder) {
  integrateWith("S:\\Lumo");
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ("S:\\Lumo", facts().paths.server);
}

TEST_F(SingleInstallStart, WithoutARecordLeavesTheServerPathEmpty) {
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Integrazione Dovra SP non rilevata"));
  EXPECT_EQ("", facts().paths.server);
}

TEST_F(SingleInstallStart, TestsThePluginFolderBeforeItAsksForTheRecord) {
  integrateWith("C:\\Lumo");
  machine_.makeFolders("C:\\Lumo\\prg\\com\\dovra\\plugin");
  run("SINGLEINSTALL ZB pacco.zip");
  EXPECT_EQ(PluginProduct{999}, facts().pluginProduct) << "the server path was not known yet";
  const std::size_t plugin = callAt(CallKind::FileLook, "\\prg\\com\\dovra\\plugin");
  ASSERT_NE(0U, plugin);
  EXPECT_LT(plugin, callAt(CallKind::ConfigurationGet));
}

}  // namespace
}  // namespace trelv::modMain
