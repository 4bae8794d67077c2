#include "kit/Verify.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "kit/Failure.h"
#include "kit/GivenPath.h"
#include "kit/HostProducts.h"
#include "kit/InstalledProducts.h"
#include "kit/QuietProgram.h"
#include "kit/TextTable.h"
#include "platform/modLibrary.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

std::string sideName(Side side) { return modProdTrelvLibrary::ConvertClientServerToString(side); }

Json jsonOf(const InstalledSide& row) {
  return {{"product", row.product},
          {"side", sideName(row.side)},
          {"recorded", row.recorded},
          {"configured", row.configured},
          {"found", row.found ? Json(*row.found) : Json(nullptr)},
          {"mode", row.mode ? Json(modeName(*row.mode)) : Json(nullptr)},
          {"state", stateName(row.state)}};
}

/// The state in a word for a reader.
const char* stateText(ProductState state) {
  switch (state) {
    case ProductState::Ok:
      return "a posto";
    case ProductState::Missing:
      return "da installare";
    case ProductState::Older:
      return "da aggiornare";
    case ProductState::Newer:
      return "più recente della configurazione";
    case ProductState::Unrecorded:
      return "presente ma non registrato";
    case ProductState::Standalone:
      return "installato in modalità Standard";
    case ProductState::Absent:
      break;
  }
  return "assente";
}

const char* modeText(const std::optional<InstalledMode>& mode) {
  if (!mode) {
    return "?";
  }
  switch (*mode) {
    case InstalledMode::Integrated:
      return "integrata";
    case InstalledMode::Standalone:
      return "Standard";
    case InstalledMode::Absent:
      break;
  }
  return "-";
}

std::string orHyphen(const std::string& version) { return version.empty() ? "-" : version; }

std::string textOf(const std::vector<InstalledSide>& rows) {
  std::vector<std::vector<std::string>> table{
      {"prodotto", "lato", "registrata", "configurata", "trovata", "modalità", "stato"}};
  for (const InstalledSide& row : rows) {
    table.push_back({row.product, sideName(row.side), orHyphen(row.recorded),
                     orHyphen(row.configured), orHyphen(row.found.value_or("?")),
                     modeText(row.mode), stateText(row.state)});
  }
  return textTable(table);
}

}  // namespace

void Verify::declare(Syntax& syntax) {
  syntax.argument("HOST", "cartella della suite sul server", host_);
}

Answer Verify::run(Workplace& workplace, Progress& progress) {
  const GivenPath host(workplace.paths, host_);
  QuietProgram quiet(workplace.machine);
  if (!modLibrary::FolderExists(quiet.program(), host.full())) {
    throw Failure(host.given(), system_code::kPathNotFound);
  }
  progress.tell("Verifica dei prodotti");
  const std::vector<InstalledSide> rows = installedProducts(quiet.program(), serverPathOf(host));
  Answer answer;
  answer.result = std::make_shared<Json>(Json{{"rows", Json::array()}});
  for (const InstalledSide& row : rows) {
    (*answer.result)["rows"].push_back(jsonOf(row));
    if (!isGood(row.state)) {
      answer.exitCode = exit_code::kFindings;
    }
  }
  answer.text = textOf(rows);
  return answer;
}

}  // namespace trelv::kit
