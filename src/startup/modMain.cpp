#include "startup/modMain.h"

#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "integrated/SingleRun.h"
#include "integrated/UpdateAll.h"
#include "interactive/modProdTrelvInteractive.h"
#include "packs/ProductInstall.h"
#include "packs/frmProdTrelvMaintain.h"
#include "platform/modConfig.h"
#include "platform/modLibrary.h"
#include "platform/modPlatform.h"
#include "startup/CommandLine.h"
#include "startup/HostPaths.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modMain {
namespace {

/// INTEGRATEDRUN needs keyword, server path, integration path and program code.
constexpr std::uint8_t kIntegratedRunArguments = 4;

void showRefusal(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, machine::BoxIcon::Critical,
                                     machine::BoxButtons::Ok);
}

// Releases that none of the probes knows, and all servers, count as no workstation.
bool isWorkstation(Program& program) {
  return modPlatform::IsWin98(program) || modPlatform::IsWin95(program) ||
         modPlatform::IsWinMe(program) || modPlatform::IsWinXP(program) ||
         modPlatform::IsWin2000Professional(program) || modPlatform::IsWinVista(program) ||
         modPlatform::IsWinSeven(program);
}

bool isWin9x(Program& program) {
  return modPlatform::IsWin98(program) || modPlatform::IsWin95(program) ||
         modPlatform::IsWinMe(program);
}

bool isTerminalServer(Program& program) {
  return modPlatform::IsWin2008TS(program) || modPlatform::IsWin2003TS(program) ||
         modPlatform::IsWin2000TS(program) || modPlatform::IsWinNT40TS(program);
}

void findOutFacts(Program& program) {
  StartupFacts& startup = program.state.startup;
  modConfig::GetConfigPath(program, startup.paths.programs);
  startup.workstation = isWorkstation(program);
  startup.win9x = isWin9x(program);
  startup.administrator = startup.win9x || modLibrary::IsAdmin(program);
  startup.terminalServer = isTerminalServer(program);
}

void readCommandLine(Program& program) {
  StartupFacts& startup = program.state.startup;
  startup.rawCommandLine =
      argumentsOf(program.machine.system.commandLine(),
                  {program.machine.system.startedPath(), program.machine.system.executablePath()});
  ParseCommandLine(startup.rawCommandLine, startup.argumentCount, startup.arguments);
  program.log.WriteLog("Gestione ProdTrelv - Linea di comando ArgV = " + startup.rawCommandLine +
                       "\t Numero parametri = " + std::to_string(startup.argumentCount));
}

/// Stores one argument at its place; `position` counts from 1.
void takeArgument(StartupFacts& startup, std::size_t position, const std::string& argument) {
  const bool single = startup.runMode == RunMode::SingleInstall;
  switch (position) {
    case 1:
      startup.runMode = ConvertModeToNumber(argument);
      break;
    case 2:
      (single ? startup.productToInstall : startup.paths.server) = argument;
      break;
    case 3:
      (single ? startup.packFileName : startup.paths.integration) = argument;
      break;
    case 4:
      // In every mode, those that do not use it included: an unknown code ends the start.
      startup.programNumber = modProdTrelvLibrary::ConvertProgramToNumber(argument);
      break;
    default:
      startup.extraArguments += " " + argument;
      break;
  }
}

void takeArguments(StartupFacts& startup) {
  for (std::size_t i = 0; i < startup.arguments.size(); ++i) {
    takeArgument(startup, i + 1, startup.arguments[i]);
  }
}

bool argumentsSuffice(Program& program) {
  const StartupFacts& startup = program.state.startup;
  if (startup.runMode != RunMode::IntegratedRun ||
      startup.argumentCount >= kIntegratedRunArguments) {
    return true;
  }
  showRefusal(
      program,
      std::string("Non è possibile eseguire il prodotto richiesto, in quanto non è stata ") +
          kCrLf +
          "configurata correttamente la procedura di integrazione dei Prodotti Complementari." +
          kCrLf + kCrLf +
          "Verificare i parametri inseriti all'interno del configuratore di Dovra.");
  program.log.WriteLog("Gestione ProdTrelv - Numero parametri errato. Interruzione procedura.");
  return false;
}

void findPlugin(Program& program) {
  StartupFacts& startup = program.state.startup;
  const bool present =
      program.fileSystem.folderExists(hostPaths::pluginFolder(startup.paths.server));
  startup.pluginProduct = present ? PluginProduct::Dovra : PluginProduct::None;
}

/// " 4 (INTEGRATEDRUN …)", as the first line of a mode tells its arguments.
std::string countAndCommandLine(const StartupFacts& startup) {
  return signedText(startup.argumentCount) + " (" + startup.rawCommandLine + ")";
}

void runIntegrated(Program& program) {
  const StartupFacts& startup = program.state.startup;
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione in modalità integrata - parametri: " +
                       countAndCommandLine(startup));
  modProdTrelvManager::UpdateAllProdottiComplementari(program, startup.paths);
  modProdTrelvManager::RunSingleProdottoComplementare(program, startup.paths, startup.programNumber,
                                                      trimLeft(startup.extraArguments));
}

void maintain(Program& program) {
  program.log.WriteLog("Gestione ProdTrelv - Manutenzione prodotti complementari integrati");
  frmProdTrelvMaintain::showModal(program);
}

void runInteractive(Program& program) {
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione in modalità interattiva");
  modProdTrelvInteractive::StartInstall(program);
}

void installSingle(Program& program) {
  StartupFacts& startup = program.state.startup;
  program.log.WriteLog(
      "Gestione ProdTrelv - Installazione/Aggiornamento singolo prodotto - parametri: " +
      countAndCommandLine(startup));
  std::string recorded;
  if (VerifyConfig(program, recorded)) {
    startup.paths.server = recorded;
    modProdTrelvManager::InstallSingleProdottoComplementareIntegrato(
        program, startup.productToInstall, recorded, startup.packFileName);
  } else {
    modProdTrelvManager::InstallSingleProdottoComplementareStandAlone(
        program, startup.productToInstall, startup.packFileName);
  }
}

// STANDALONEINSTALL is a keyword and nevertheless refused, like no keyword at all; neither is
// logged.
void dispatch(Program& program) {
  switch (program.state.startup.runMode) {
    case RunMode::IntegratedRun:
      runIntegrated(program);
      break;
    case RunMode::IntegratedMaintain:
      maintain(program);
      break;
    case RunMode::Interactive:
      runInteractive(program);
      break;
    case RunMode::SingleInstall:
      installSingle(program);
      break;
    case RunMode::None:
    case RunMode::StandaloneInstall:
      showRefusal(program, std::string("Esecuzione in modalità interattiva non consentita") +
                               kCrLf + kCrLf + "Premere Ok per interrompere");
      break;
  }
}

void start(Program& program) {
  findOutFacts(program);
  readCommandLine(program);
  takeArguments(program.state.startup);
  if (!argumentsSuffice(program)) {
    return;
  }
  program.log.WriteLog("Gestione prodTrelv - Analisi linea di comando effettuata");
  findPlugin(program);
  dispatch(program);
}

void reportFailure(Program& program, const RuntimeError& failure) {
  showRefusal(
      program,
      std::string("Si è verificato un errore durante l'integrazione con il prodotto complementare "
                  "richiesto: ") +
          kCrLf + kCrLf + "(" + failure.description() + ")" + kCrLf + kCrLf +
          "Non è stato pertanto possibile completare l'operazione richiesta");
  program.log.WriteLog("Gestione ProdTrelv - Errore in modulo principale: " +
                       failure.description());
}

}  // namespace

void Main(Program& program) {
  resumeNext([&] { start(program); },
             [&](const RuntimeError& failure) { reportFailure(program, failure); });
}

}  // namespace trelv::modMain
