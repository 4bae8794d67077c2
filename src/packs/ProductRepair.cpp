#include "packs/ProductRepair.h"

#include <array>

#include "base/Text.h"
#include "base/Trap.h"
#include "packs/NumberedFailure.h"
#include "packs/ProductConfiguration.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

/// A repair brings a product to a version; who wants it removed presses the other button.
constexpr std::array<Operation, 3> kRepairKinds{Operation::Setup, Operation::Update,
                                                Operation::Exec};

std::string configurationOf(Program& program, const std::string& serverPath,
                            const std::string& productId) {
  return hostPaths::productConfiguration(serverPath,
                                         modProdTrelvLibrary::GetCatalogueProductConf(
                                             program, hostPaths::catalogue(serverPath), productId));
}

bool runAgain(Program& program, const std::string& command) {
  const bool started = modLibrary::Execute(program, command, true);
  program.log.WriteLog((started ? "Gestione ProdTrelv - Esecuzione comando: "
                                : "Gestione ProdTrelv - Comando non eseguito: ") +
                       command);
  return started;
}

}  // namespace

std::vector<std::string> CatalogueProducts(Program& program, const std::string& serverPath) {
  const std::string catalogue = hostPaths::catalogue(serverPath);
  std::vector<std::string> products;
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string id = modLibrary::ReadSetting(
        program, {catalogue, modProdTrelvLibrary::CatalogueSection(index), "id"});
    if (!id.empty()) {
      products.push_back(id);
    }
  }
  return products;
}

std::vector<RepairVersion> ProductVersions(Program& program, const std::string& serverPath,
                                           const std::string& productId) {
  const std::string configuration = configurationOf(program, serverPath, productId);
  std::vector<RepairVersion> versions;
  for (const Operation kind : kRepairKinds) {
    const std::string name = modProdTrelvLibrary::ConvertSetupUpdateToString(kind);
    for (int index = 1; index <= kMostSections; ++index) {
      const std::string section = name + twoDigits(index);
      const std::string version =
          modLibrary::ReadSetting(program, {configuration, section, "version"});
      if (!version.empty()) {
        versions.push_back({section, kind, index, version});
      }
    }
  }
  return versions;
}

bool RepairProduct(Program& program, const InstallationPaths& paths, const ProductOnSide& product,
                   const std::string& section) {
  bool anyStarted = false;
  trap(
      [&]() -> void {
        // As for a removal: what was read when the version was shown may be hours old.
        program.configurationFiles.forget();
        const std::string configuration = configurationOf(program, paths.server, product.id);
        const std::string sideName = modProdTrelvLibrary::ConvertClientServerToString(product.side);
        for (int index = 1; index <= kMostCommands; ++index) {
          std::string command = modLibrary::ReadSetting(
              program, {configuration, section, sideName + twoDigits(index)});
          if (command.empty()) {
            return;
          }
          modProdTrelvLibrary::ReplacePlaceholders(program, command, paths);
          anyStarted = runAgain(program, command) || anyStarted;
        }
      },
      [&](const RuntimeError& failure) -> void {
        logNumbered(program, "Gestione ProdTrelv - Errore in ripristino prodotto (", failure);
      });
  return anyStarted;
}

}  // namespace trelv::modProdTrelvManager
