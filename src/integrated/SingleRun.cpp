#include "integrated/SingleRun.h"

#include <initializer_list>

#include "base/Codes.h"
#include "base/ProductName.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvManager {
namespace {

/// The requested program, as codes and catalogue tell it.
struct Request {
  Product productNumber = Product::Undefined;
  std::string productId;
  std::string displayName;
  /// Path of the program, placeholders resolved; empty when the product has none of this name.
  std::string command;
};

Request findProgram(Program& program, const InstallationPaths& paths, std::int32_t programNumber) {
  using namespace modProdTrelvLibrary;
  const std::string programName = ConvertNumberToProgram(static_cast<std::int16_t>(programNumber));
  Request request;
  request.productNumber = ProgramToProduct(programNumber);
  request.productId = ConvertNumberToProduct(request.productNumber);
  const std::string catalogue = hostPaths::catalogue(paths.server);
  request.displayName = GetCatalogueProductName(program, catalogue, request.productId);
  const std::string configuration = hostPaths::productConfiguration(
      paths.server, GetCatalogueProductConf(program, catalogue, request.productId));
  request.command = modLibrary::ReadSetting(
      program, {configuration, ConvertSetupUpdateToString(Operation::Exec), programName});
  ReplacePlaceholders(program, request.command, paths);
  return request;
}

void tell(Program& program, const std::string& text) {
  program.machine.desktop.messageBox(TRELV_PRODUCT_NAME, text, machine::BoxIcon::Exclamation,
                                     machine::BoxButtons::Ok);
}

bool isInstalled(Program& program, const Request& request) {
  if (request.command.empty()) {
    tell(program, "Il prodotto selezionato " + request.displayName +
                      " non risulta installato\r\n\r\nPremere Ok per interrompere");
    program.log.WriteLog(
        "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: " +
        request.productId);
    return false;
  }
  // Kept: the whole text is tested, so a command that carries arguments counts as not installed.
  if (!modLibrary::FileExists(program, request.command)) {
    tell(program,
         "Il programma selezionato non risulta installato\r\n\r\nPremere Ok per interrompere");
    program.log.WriteLog("Gestione ProdTrelv - Il programma: " + request.command +
                         " non è stato trovato su disco");
    return false;
  }
  return true;
}

void setVariables(Program& program, std::initializer_list<const char*> names, const char* value,
                  const char* failureLine) {
  bool allSet = true;
  for (const char* const name : names) {
    allSet = program.machine.environment.set(name, value) && allSet;
  }
  if (!allSet) {
    program.log.WriteLog(failureLine);
  }
}

/// Through these variables a product learns that it runs hosted.
void setProductVariables(Program& program, Product productNumber) {
  switch (productNumber) {
    case Product::Tarsena2:
      setVariables(program,
                   {"MVQ2_HostedByLumo", "MVQ2_Valutazione", "MVQ2_Rating", "MVQ2_Analisi"}, "Yes",
                   "Gestione ProdTrelv - Errore in settaggio variabili di ambiente Tarsena2");
      break;
    case Product::Zeltobilancio:
      setVariables(program,
                   {"MVBil_HostedByLumo", "MVBil_Bilancio", "MVBil_Consolidato", "MVBil_ICAD",
                    "MVBil_BIL-COOSOC", "MVBil_BIL-ENTFIN", "MVBil_BIL-IASCON", "MVBil_BIL-IASIFR"},
                   "Yes",
                   "Gestione ProdTrelv - Errore in settaggio variabili di ambiente Bilancio");
      break;
    case Product::Luda:
      setVariables(program, {"LUDAIntermed", "LUDAProf", "LUDAIndFin", "LUDAComRap"}, "1",
                   "Gestione ProdTrelv - Errore in settaggio variabili di ambiente LUDA");
      break;
    default:
      break;
  }
}

void reportFailure(Program& program, const RuntimeError& failure) {
  program.errors.VisualizzaErrore("ModProdTrelvManager", "RunSingleProdottoComplementare",
                                  "Esecuzione comando fallita: " + failure.description(),
                                  ReportKind::ProgramError, failure);
  program.log.WriteLog("Gestione ProdTrelv - Esecuzione comando fallita: " + failure.description());
}

}  // namespace

void RunSingleProdottoComplementare(Program& program, const InstallationPaths& paths,
                                    std::int32_t programNumber,
                                    const std::optional<std::string>& arguments) {
  trap(
      [&]() -> void {
        const Request request = findProgram(program, paths, programNumber);
        if (!isInstalled(program, request)) {
          return;
        }
        setProductVariables(program, request.productNumber);
        const std::string commandLine = request.command + " " + arguments.value_or("");
        program.log.WriteLog("Gestione ProdTrelv - Esecuzione di: " + commandLine);
        modLibrary::Execute(program, commandLine, false);
      },
      [&](const RuntimeError& failure) -> void { reportFailure(program, failure); });
}

}  // namespace trelv::modProdTrelvManager
