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
#include "packs/ProductUpdateRun.h"
#include "platform/modConfig.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

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
  if (modLibrary::IsSamePath(program, recorded, serverPath)) {
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

void prepareAndRepair(Program& program, const InstallationPaths& paths) {
  PreparaInstSrvAll(program, paths.server);
  PreparaInstClientAll(program, paths);
  RiparaCorvelTS(program);
  RiparaNerioTS(program, paths.integration);
  RiparaZeltomodelliTS(program, paths.integration);
  RiparaLudaTS(program, paths.integration);
}

void correctForDovra(Program& program, const std::string& serverPath) {
  program.log.WriteLog("Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)");
  if (program.state.startup.pluginProduct == PluginProduct::Dovra) {
    CorrectDovraBefore11(program, serverPath);
  }
}

/// Does the record, looked at afresh, have this version of the product? One that cannot be read has
/// none.
bool isRecorded(Program& program, const SideOfProduct& product, const std::string& version) {
  const IniAddress address{product.record, product.id, "version"};
  program.configurationFiles.forget(product.record);
  return modLibrary::ReadSetting(program, address) == version &&
         (!version.empty() || program.configurationFiles.holds(address));
}

/// Puts the version that a run left behind into its side's record. The platform writes and reads
/// the file afresh, so that what another workstation recorded meanwhile for other products
/// survives. A version that the run did not raise is looked at afresh first: writing it over an
/// equal one would leave the file as it is. Kept: it is written over another one, a higher one that
/// another workstation or the set-up itself recorded meanwhile included. What a run leaves behind
/// is what this workstation knows; the configuration file says what a set-up brings.
void recordVersion(Program& program, const SideOfProduct& product, const std::string& before,
                   const std::string& after) {
  const bool raised = after != before;
  if (!raised && isRecorded(program, product, after)) {
    return;
  }
  const std::uint32_t written =
      modLibrary::WriteSetting(program, {product.record, product.id, "version"}, after);
  if (raised && written == 0 && !product.id.empty()) {
    throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                       "Impossibile registrare la versione " + after + " di " + product.id +
                           " nel file: " + product.record);
  }
}

Procedure updateSide(Program& program, const InstallationPaths& paths, const SideOfProduct& product,
                     const std::string& recorded) {
  const Operation operation = recorded.empty() ? Operation::Setup : Operation::Update;
  std::string version = recorded;
  const auto record = [&]() -> void {
    orGoOn(program, [&]() -> void { recordVersion(program, product, recorded, version); });
  };
  if (ProductUpdateRun(program, RunKind::UpdateAll, paths, product.configuration, operation,
                       product.side, version, record) == Procedure::Stops) {
    return Procedure::Stops;
  }
  record();
  return Procedure::GoesOn;
}

Procedure updateProduct(Program& program, const InstallationPaths& paths, const HostFiles& files,
                        const std::string& conf, const std::string& id) {
  const std::string configuration = hostPaths::productConfiguration(paths.server, conf);
  const std::string serverVersion =
      modLibrary::ReadSetting(program, {files.serverRecord, id, "version"});
  const std::string clientVersion =
      modLibrary::ReadSetting(program, {files.clientRecord, id, "version"});
  if (updateSide(program, paths, {Side::Server, id, configuration, files.serverRecord},
                 serverVersion) == Procedure::Stops) {
    return Procedure::Stops;
  }
  return updateSide(program, paths, {Side::Client, id, configuration, files.clientRecord},
                    clientVersion);
}

Procedure updateEveryProduct(Program& program, const InstallationPaths& paths,
                             const HostFiles& files) {
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string section = modProdTrelvLibrary::CatalogueSection(index);
    const std::string conf = modLibrary::ReadSetting(program, {files.catalogue, section, "conf"});
    if (conf.empty()) {
      return Procedure::GoesOn;
    }
    const std::string id = modLibrary::ReadSetting(program, {files.catalogue, section, "id"});
    if (updateProduct(program, paths, files, conf, id) == Procedure::Stops) {
      return Procedure::Stops;
    }
  }
  return Procedure::GoesOn;
}

void updateAll(Program& program, const InstallationPaths& paths) {
  const HostFiles files{hostPaths::catalogue(paths.server),
                        hostPaths::serverVersionRecord(paths.server),
                        hostPaths::clientVersionRecord(program)};
  program.log.WriteLog("Gestione ProdTrelv - Inizio procedura");
  if (checkIntegration(program, paths.server) == Procedure::Stops ||
      blockingSuiteIsThere(program) || standaloneProductIsThere(program)) {
    return;
  }
  prepareAndRepair(program, paths);
  correctForDovra(program, paths.server);
  if (updateEveryProduct(program, paths, files) == Procedure::GoesOn) {
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

void UpdateAllProdottiComplementari(Program& program, const InstallationPaths& paths) {
  // Nothing in there raises but for want of memory: the program that the host asked for starts then
  // all the same.
  orGoOn(program, [&]() -> void { updateAll(program, paths); });
}

}  // namespace trelv::modProdTrelvManager
