#include "packs/DirectSetup.h"

#include <cstdint>
#include <vector>

#include "base/Codes.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "inventory/PresenceChecks.h"
#include "packs/ProductUpdateRun.h"
#include "packs/WorkFolder.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

void runSide(Program& program, const std::string& rootFolder, const std::string& configuration,
             Operation kind, Side side) {
  std::string version;
  ProductUpdateRun(program, RunKind::ProgramOnly,
                   {rootFolder, rootFolder, program.state.startup.paths.programs}, configuration,
                   kind, side, version);
}

void setUp(Program& program, const std::string& rootFolder, const std::string& configuration,
           const std::string& identifier) {
  // Kept: the catalogue's spelling is converted, not the selected one, and codes are upper case: an
  // identifier that a catalogue spells otherwise ends the walk. Catalogues are delivered so.
  const Product code = modProdTrelvLibrary::ConvertProductToNumber(identifier);
  modProdTrelvInfo::CheckProduct(program, code);
  // A product without a check leaves the record as the check of another product filled it.
  if (code == Product::Undefined || program.state.inventory.product.productCode != code) {
    program.log.WriteLog("Gestione ProdTrelv - Prodotto senza verifica di presenza: " + identifier);
    return;
  }
  const Operation kind = program.state.inventory.product.kind;
  const Side side = program.state.inventory.product.side;
  program.log.WriteLog("Gestione ProdTrelv - Lancio installazione " + identifier);
  if (side == Side::ClientServer) {
    runSide(program, rootFolder, configuration, kind, Side::Server);
    runSide(program, rootFolder, configuration, kind, Side::Client);
  } else {
    runSide(program, rootFolder, configuration, kind, side);
  }
}

void setUpWhereSelected(Program& program, const std::string& rootFolder,
                        const std::string& configuration, const std::string& identifier) {
  // A click that arrives while a line is logged may select others.
  const std::vector<OfferedProduct> selection = program.state.selectedProducts;
  for (const OfferedProduct& selected : selection) {
    if (equalNoCase(selected.identifier, identifier)) {
      setUp(program, rootFolder, configuration, identifier);
    }
  }
}

/// Key "Id" of a section, else its "name"; empty where the catalogue has ended.
std::string identifierOf(Program& program, const std::string& section,
                         const std::string& catalogue) {
  const std::string id = modLibrary::ReadSetting(program, {catalogue, section, "Id"});
  return id.empty() ? modLibrary::ReadSetting(program, {catalogue, section, "name"}) : id;
}

/// There is no last index, and an entry without "conf" is passed over: UpdateAll does neither.
void walkCatalogue(Program& program, const std::string& rootFolder) {
  const std::string catalogue = hostPaths::catalogue(rootFolder);
  for (int index = 1;; ++index) {
    const std::string section = "Prod" + twoDigits(index);
    const std::string identifier = identifierOf(program, section, catalogue);
    if (identifier.empty()) {
      return;
    }
    const std::string conf = modLibrary::ReadSetting(program, {catalogue, section, "conf"});
    if (!conf.empty()) {
      setUpWhereSelected(program, rootFolder, hostPaths::productConfiguration(rootFolder, conf),
                         identifier);
    }
  }
}

}  // namespace

void ExecuteDirectSetup(Program& program, const std::string& rootFolder) {
  // Kept: another module name than the one of all other installation procedures, so that a report
  // tells which of them it was; support knows it so.
  loggedTrap(program.log, program.errors, "ModTrelvManager", "ExecuteDirectSetup",
             "Errore in esecuzione setup", false, [&]() -> bool {
               program.log.WriteLog(
                   "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità "
                   "standalone");
               // What a link leads to is not what the pack brought.
               const std::string link = LinkOnTheWay(program, rootFolder);
               if (!link.empty()) {
                 throw RuntimeError(runtime_number::kPathAccess, "TrelvManager",
                                    "Nessun setup eseguito, " + link);
               }
               walkCatalogue(program, rootFolder);
               return true;
             });
}

}  // namespace trelv::modProdTrelvManager
