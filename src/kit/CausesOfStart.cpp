// What stops a start before it comes to the products.

#include <algorithm>

#include "inventory/InstallationMode.h"
#include "kit/CauseFinders.h"
#include "platform/modConfig.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit::causes {
namespace {

constexpr const char* kIntegration = "integrazione";
constexpr const char* kOtherServer =
    "Gestione ProdTrelv - Integrazione disponibile ma su altro server";
constexpr const char* kRecorded = "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: ";

Found inLine(const ProductHistory& history, const char* step, const LogLine* line) {
  return line == nullptr ? Found() : Found(Stop{step, history.inLog(*line)});
}

/// A store that cannot be read gives an empty record, which no server path equals. A record that
/// was really written empty is one of another server.
bool isRecordedEmpty(Program& program) {
  constexpr std::int32_t kRecordSize = 1000;
  std::string value;
  return modConfig::GetParameterXML(
             program, {modConfig::kProductSystem, "Complementary_Products", "Integration", "Path"},
             modConfig::kDefaultValue, kRecordSize, value) &&
         value.empty();
}

/// Identifiers of the products that the start took for installed on their own.
std::vector<std::string> productsOnTheirOwn(const StartLog& start) {
  std::vector<std::string> products;
  for (const LogLine& line : start.lines) {
    const std::string product =
        textBetween(line.text, "Gestione ProdTrelv - ", " è in modalità standalone");
    if (!product.empty()) {
      products.push_back(product);
    }
  }
  return products;
}

/// Without its record an integrated workstation looks as if the host's own products stood there on
/// their own.
bool areAllOfTheHost(const ProductHistory& history) {
  const std::vector<std::string> products = productsOnTheirOwn(history.start());
  return std::all_of(products.begin(), products.end(), [&](const std::string& product) -> bool {
    modProdTrelvInfo::VerifyInstallationMode(history.program(),
                                             modProdTrelvLibrary::ConvertProductToNumber(product));
    const ProductInformation& found = history.program().state.inventory.product;
    const std::string& folder =
        found.clientFolder.empty() ? found.serverFolder : found.clientFolder;
    return FileSystemObject::liesAtOrIn(folder, history.serverPath());
  });
}

}  // namespace

Found storeUnreadable(const ProductHistory& history, Side /*side*/) {
  const LogLine* const recorded = history.start().find(kRecorded);
  return recorded != nullptr && recorded->text == kRecorded && !isRecordedEmpty(history.program())
             ? inLine(history, kIntegration, history.start().find(kOtherServer))
             : Found();
}

Found noStore(const ProductHistory& history, Side /*side*/) {
  for (const char* const beginning :
       {"Suite Lumo non trovata in registro: ",
        "Gestione ProdTrelv - Impossibile aggiornare IntegrazioneSuMacchina"}) {
    if (const LogLine* const line = history.start().find(beginning)) {
      return inLine(history, kIntegration, line);
    }
  }
  return std::nullopt;
}

Found otherServer(const ProductHistory& history, Side /*side*/) {
  return inLine(history, kIntegration, history.start().find(kOtherServer));
}

Found suite(const ProductHistory& history, Side /*side*/) {
  for (const char* const beginning : {"Gestione ProdTrelv - SuiteFerax rilevata, ",
                                      "Gestione ProdTrelv - SuiteTravolin rilevata, "}) {
    if (const LogLine* const line = history.start().find(beginning)) {
      return inLine(history, "suite", line);
    }
  }
  return std::nullopt;
}

Found standaloneProduct(const ProductHistory& history, Side side) {
  const LogLine* const line = history.start().find(
      "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone");
  return line != nullptr && noStore(history, side) && areAllOfTheHost(history)
             ? Found()
             : inLine(history, "prodotti in modalità Standard", line);
}

Found startFailed(const ProductHistory& history, Side /*side*/) {
  for (const char* const beginning : {log_line::kMainFailed, log_line::kFewArguments}) {
    if (const LogLine* const line = history.start().find(beginning)) {
      return inLine(history, "avvio", line);
    }
  }
  return std::nullopt;
}

}  // namespace trelv::kit::causes
