#include "integrated/UpdateAll.h"

#include <cstdint>

#include "base/Codes.h"
#include "base/ProductName.h"
#include "base/Text.h"
#include "integrated/DovraCorrection.h"
#include "integrated/LoggedStep.h"
#include "integrated/Preparation.h"
#include "integrated/StandaloneDetection.h"
#include "integrated/TerminalServerRepairs.h"
#include "packs/HostPaths.h"
#include "packs/ProductUpdateRun.h"
#include "platform/modConfig.h"
#include "platform/modLibrary.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

constexpr int kMostProducts = 100;

/// The three inputs, passed on unchanged.
struct Inputs {
  const std::string& serverPath;
  const std::string& integrationPath;
  const std::string& programsPath;
};

struct HostFiles {
  std::string catalogue;
  std::string serverRecord;
  std::string clientRecord;
};

/// One product on one side.
struct SideOfProduct {
  Side side;
  const std::string& id;
  const std::string& configuration;
  const std::string& record;
};

void refuse(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, machine::BoxIcon::Critical,
                                     machine::BoxButtons::Ok);
}

void refuseUnwritableRecord(Program& program) {
  std::string path;
  modConfig::GetConfigPath(program, path);
  refuse(program,
         "Non è stato possibile aggiornare il file di configurazione della macchina nel percorso "
         "\"" +
             path +
             "\"\r\nLa procedura di integrazione pertanto non può essere completata\r\n\r\n"
             "Premere Ok per interrompere");
  program.log.WriteLog("Gestione ProdTrelv - Impossibile aggiornare IntegrazioneSuMacchina");
}

void refuseOtherServer(Program& program, const std::string& recorded,
                       const std::string& serverPath) {
  refuse(program,
         "Sull'installazione corrente è stata rilevata l'integrazione con i prodotti complementari "
         "su \"" +
             recorded + "\" diverso dal percorso richiesto \"" + serverPath +
             "\"\r\n\r\nLa procedura pertanto non può essere completata\r\n\r\n"
             "Premere Ok per interrompere");
  program.log.WriteLog(
      "Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile proseguire");
}

Procedure integrate(Program& program, const std::string& serverPath) {
  if (modMain::WriteIntegrationConfig(program, serverPath)) {
    return Procedure::GoesOn;
  }
  refuseUnwritableRecord(program);
  return Procedure::Stops;
}

Procedure checkIntegration(Program& program, const std::string& serverPath) {
  std::string recorded;
  if (!modMain::VerifyConfig(program, recorded)) {
    return integrate(program, serverPath);
  }
  // Kept: compared as texts, so a trailing backslash or another name of the same share is refused.
  if (equalNoCase(recorded, serverPath)) {
    return Procedure::GoesOn;
  }
  refuseOtherServer(program, recorded, serverPath);
  return Procedure::Stops;
}

bool blockingSuiteIsThere(Program& program) {
  if (modConfig::EsisteSuiteFerax(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - SuiteFerax rilevata, nessun prodotto complementare viene "
        "installato/aggiornato");
    return true;
  }
  if (modConfig::EsisteSuiteTravolin(program)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - SuiteTravolin rilevata, nessun prodotto complementare viene "
        "installato/aggiornato");
    return true;
  }
  return false;
}

bool standaloneProductIsThere(Program& program) {
  std::string list;
  if (!EsisteProdottoComplementareStandalone(program, list)) {
    return false;
  }
  program.machine.desktop.messageBox("Gestione prodotti complementari", standaloneRefusal(list),
                                     machine::BoxIcon::Exclamation, machine::BoxButtons::Ok);
  return true;
}

void prepareAndRepair(Program& program, const Inputs& inputs) {
  PreparaInstSrvAll(program, inputs.serverPath);
  PreparaInstClientAll(program, inputs.serverPath, inputs.programsPath);
  RiparaCorvelTS(program);
  RiparaNerioTS(program, inputs.integrationPath);
  RiparaZeltomodelliTS(program, inputs.integrationPath);
  RiparaLudaTS(program, inputs.integrationPath);
}

void correctForDovra(Program& program, const Inputs& inputs, const HostFiles& files) {
  program.log.WriteLog("Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)");
  if (program.state.startup.pluginProduct == PluginProduct::Dovra) {
    CorrectDovraBefore11(program, inputs.serverPath, files.serverRecord, files.clientRecord);
  }
}

/// Does the record, looked at afresh, have a version of the product? One that cannot be read has
/// none.
bool isRecorded(Program& program, const SideOfProduct& product) {
  program.configurationFiles.forget(product.record);
  return program.configurationFiles.holds(product.id, "version", product.record) ||
         !modLibrary::ReadSetting(program, product.id, "version", product.record).empty();
}

/// Puts the version that a run left behind into its side's record. The platform writes and reads
/// the file afresh, so that what another workstation recorded meanwhile for other products
/// survives. A version that the run did not raise is looked at afresh first: writing it over an
/// equal one would leave the file as it is, and over one that another workstation raised meanwhile
/// would lower that. Kept: one that it raised is written over whatever stands there, a higher one
/// that the set-up itself recorded included. The configuration file says what a set-up brings.
void recordVersion(Program& program, const SideOfProduct& product, const std::string& before,
                   const std::string& after) {
  const bool raised = after != before;
  if (!raised && isRecorded(program, product)) {
    return;
  }
  const std::uint32_t written =
      modLibrary::WriteSetting(program, product.id, "version", product.record, after);
  if (raised && written == 0 && !product.id.empty()) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "Impossibile registrare la versione " + after + " di " + product.id +
                           " nel file: " + product.record);
  }
}

Procedure updateSide(Program& program, const Inputs& inputs, const SideOfProduct& product,
                     const std::string& recorded) {
  const Operation operation = recorded.empty() ? Operation::Setup : Operation::Update;
  std::string version = recorded;
  if (ProductUpdateRun(program, RunKind::UpdateAll, inputs.serverPath, inputs.integrationPath,
                       inputs.programsPath, product.configuration, operation, product.side,
                       version) == Procedure::Stops) {
    return Procedure::Stops;
  }
  orGoOn(program, [&]() -> void { recordVersion(program, product, recorded, version); });
  return Procedure::GoesOn;
}

Procedure updateProduct(Program& program, const Inputs& inputs, const HostFiles& files,
                        const std::string& conf, const std::string& id) {
  const std::string configuration = hostPaths::productConfiguration(inputs.serverPath, conf);
  const std::string serverVersion =
      modLibrary::ReadSetting(program, id, "version", files.serverRecord);
  const std::string clientVersion =
      modLibrary::ReadSetting(program, id, "version", files.clientRecord);
  if (updateSide(program, inputs, {Side::Server, id, configuration, files.serverRecord},
                 serverVersion) == Procedure::Stops) {
    return Procedure::Stops;
  }
  return updateSide(program, inputs, {Side::Client, id, configuration, files.clientRecord},
                    clientVersion);
}

Procedure updateEveryProduct(Program& program, const Inputs& inputs, const HostFiles& files) {
  for (int index = 1; index <= kMostProducts; ++index) {
    const std::string section = modProdTrelvLibrary::CatalogueSection(index);
    const std::string conf = modLibrary::ReadSetting(program, section, "conf", files.catalogue);
    if (conf.empty()) {
      return Procedure::GoesOn;
    }
    const std::string id = modLibrary::ReadSetting(program, section, "id", files.catalogue);
    if (updateProduct(program, inputs, files, conf, id) == Procedure::Stops) {
      return Procedure::Stops;
    }
  }
  return Procedure::GoesOn;
}

void updateAll(Program& program, const Inputs& inputs) {
  const HostFiles files{hostPaths::catalogue(inputs.serverPath),
                        hostPaths::serverVersionRecord(inputs.serverPath),
                        hostPaths::clientVersionRecord(program)};
  program.log.WriteLog("Gestione ProdTrelv - Inizio procedura");
  if (checkIntegration(program, inputs.serverPath) == Procedure::Stops ||
      blockingSuiteIsThere(program) || standaloneProductIsThere(program)) {
    return;
  }
  prepareAndRepair(program, inputs);
  correctForDovra(program, inputs, files);
  if (updateEveryProduct(program, inputs, files) == Procedure::GoesOn) {
    program.log.WriteLog("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari");
  }
}

}  // namespace

std::string standaloneRefusal(const std::string& list) {
  return "Sulla macchina corrente è stata rilevata la presenza dei seguenti prodotti "
         "complementari:\r\n\r\n" +
         list +
         "\r\nL'installazione/aggiornamento non avverra' finche' questi ultimi non verrano rimossi "
         "manualmente dal sistema\r\n\r\nPremere Ok per proseguire";
}

void UpdateAllProdottiComplementari(Program& program, const std::string& serverPath,
                                    const std::string& integrationPath,
                                    const std::string& programsPath) {
  // Nothing in there raises but for want of memory: the program that the host asked for starts then
  // all the same.
  orGoOn(program, [&]() -> void {
    updateAll(program, {serverPath, integrationPath, programsPath});
  });
}

}  // namespace trelv::modProdTrelvManager
