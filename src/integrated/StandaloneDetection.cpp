#include "integrated/StandaloneDetection.h"

#include <array>
#include <cstdint>

#include "base/Codes.h"
#include "base/Text.h"
#include "inventory/InstallationMode.h"
#include "startup/IntegrationRecord.h"

namespace trelv::modProdTrelvManager {
namespace {

struct Named {
  std::int32_t code;
  const char* name;
};

/// In the order in which they are asked for and listed.
constexpr std::array kProducts{
    Named{product::kNerio, "Nerio Standalone"}, Named{product::kTarsena2, "Tarsena2 Standalone"},
    Named{product::kZeltobilancio, "Bilancio Standalone"}, Named{product::kLuda, "Luda Standalone"},
    Named{product::kZeltomodelli, "Zeltomodelli Standalone"}};

}  // namespace

bool EsisteProdottoComplementareStandalone(Program& program, const std::string& /*serverPath*/,
                                           std::string& list) {
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
    std::int32_t code = product.code;
    if (modProdTrelvInfo::VerifyInstallationMode(program, code)) {
      list += std::string(product.name) + kCrLf;
    }
  }
  program.log.WriteLog(
      list.empty() ? "Gestione ProdTrelv - Nessun prodotto complementare standalone rilevato"
                   : "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
  return !list.empty();
}

}  // namespace trelv::modProdTrelvManager
