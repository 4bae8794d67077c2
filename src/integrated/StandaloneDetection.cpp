#include "integrated/StandaloneDetection.h"

#include <array>

#include "base/Codes.h"
#include "base/Text.h"
#include "inventory/InstallationMode.h"
#include "startup/IntegrationRecord.h"

namespace trelv::modProdTrelvManager {
namespace {

struct Named {
  Product code;
  const char* name;
};

/// In the order in which they are asked for and listed.
constexpr std::array kProducts{
    Named{Product::Nerio, "Nerio Standalone"}, Named{Product::Tarsena2, "Tarsena2 Standalone"},
    Named{Product::Zeltobilancio, "Bilancio Standalone"}, Named{Product::Luda, "Luda Standalone"},
    Named{Product::Zeltomodelli, "Zeltomodelli Standalone"}};

}  // namespace

bool EsisteProdottoComplementareStandalone(Program& program, std::string& list) {
  program.log.WriteLog("Gestione ProdTrelv - Verifica esistenza prodotti complementari standalone");
  std::string recorded;
  if (modMain::VerifyConfig(program, recorded)) {
    program.log.WriteLog(
        "Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone "
        "rilevato");
    return false;
  }
  list.clear();
  for (const Named& product : kProducts) {
    if (modProdTrelvInfo::VerifyInstallationMode(program, product.code)) {
      list += std::string(product.name) + kCrLf;
    }
  }
  program.log.WriteLog(
      list.empty() ? "Gestione ProdTrelv - Nessun prodotto complementare standalone rilevato"
                   : "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
  return !list.empty();
}

}  // namespace trelv::modProdTrelvManager
