#include "kit/Explain.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/Text.h"
#include "base/Trap.h"
#include "kit/Causes.h"
#include "kit/Failure.h"
#include "kit/FileText.h"
#include "kit/GivenPath.h"
#include "kit/OnWindows.h"
#include "kit/QuietProgram.h"
#include "platform/modLibrary.h"
#include "startup/IntegrationRecord.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

/// Far more than a start writes.
constexpr std::uint64_t kMostLogBytes = 16U << 20U;

bool isKnownProduct(const std::string& identifier) {
  return trap(
      [&]() -> bool {
        return modProdTrelvLibrary::ConvertProductToNumber(identifier) != Product::Undefined;
      },
      [](const RuntimeError&) -> bool { return false; });
}

/// The identifier as the manager writes it, or as the catalogue has it: products that only the
/// catalogue knows are updated all the same.
std::string knownIdentifier(Program& program, const std::string& serverPath,
                            const std::string& given) {
  std::string upper = upperCase(given);
  if (isKnownProduct(upper)) {
    return upper;
  }
  for (const CatalogueEntry& entry : walkedEntries(program, serverPath)) {
    if (!entry.id.empty() && equalNoCase(entry.id, given)) {
      return entry.id;
    }
  }
  throw WrongUsage("prodotto sconosciuto: " + given);
}

/// The host that this workstation is integrated with.
std::string recordedHost(Program& program) {
  std::string path;
  if (!modMain::VerifyConfig(program, path) || path.empty()) {
    throw WrongUsage("manca --host: questa macchina non è integrata");
  }
  return path;
}

/// This user's run log.
std::string ownLog(Program& program) {
  std::string folder;
  if (!isWindows(program.machine.system)) {
    throw WrongUsage("manca --log: qui nessun avvio ha scritto un registro");
  }
  if (program.machine.system.temporaryFolder(folder) != system_code::kSuccess) {
    throw WrongUsage("manca --log: la cartella temporanea non è nota");
  }
  return folder + "log\\TrelvManager.log";
}

RunLogText runLog(Workplace& workplace, const GivenPath& log) {
  FileEnd end;
  const SystemCode code = readFileEnd(workplace.machine, log.full(), kMostLogBytes, end);
  if (code != system_code::kSuccess) {
    throw Failure(log.given(), code);
  }
  return readRunLog(end.text, end.linesBefore);
}

Json jsonOf(const std::string& product, const Cause& cause, const std::string& shownFile) {
  const Evidence& evidence = cause.stop.evidence;
  return {{"product", product},
          {"cause", cause.name},
          {"step", cause.stop.step},
          {"evidence",
           {{"file", shownFile},
            {"line", evidence.line ? Json(*evidence.line) : Json(nullptr)},
            {"text", evidence.text}}},
          {"remedy", cause.remedy}};
}

std::string textOf(const std::string& product, const Cause& cause, const std::string& shownFile) {
  const Evidence& evidence = cause.stop.evidence;
  const std::string line = evidence.line ? ":" + std::to_string(*evidence.line) : "";
  return product + ": " + cause.name +
         (cause.stop.step.empty() ? "" : " (" + cause.stop.step + ")") + "\n    " + shownFile +
         line + (evidence.text.empty() ? "" : ": " + evidence.text) +
         "\n    rimedio: " + cause.remedy + "\n";
}

}  // namespace

void Explain::declare(Syntax& syntax) {
  syntax.argument("PRODUCT", "identificativo del prodotto: NERIO, LUDA, ZB, Q2, ZM", product_);
  syntax.value("host", "HOST", "cartella della suite sul server; altrimenti quella registrata",
               host_);
  syntax.value("log", "FILE", "registro di TrelvManager; altrimenti quello dell'utente", log_);
}

Answer Explain::run(Workplace& workplace, Progress& progress) {
  QuietProgram quiet(workplace.machine);
  const GivenPath host(workplace.paths, host_.empty() ? recordedHost(quiet.program()) : host_);
  const GivenPath log(workplace.paths, log_.empty() ? ownLog(quiet.program()) : log_);
  if (!modLibrary::FolderExists(quiet.program(), host.full())) {
    throw Failure(host.given(), system_code::kPathNotFound);
  }
  const std::string serverPath = serverPathOf(host);
  const std::string product = knownIdentifier(quiet.program(), serverPath, product_);
  progress.tell("Lettura del registro");
  const Cause cause =
      causeOf(quiet.program(), serverPath, product, log.full(), runLog(workplace, log));
  const std::string shownFile =
      cause.stop.evidence.file == log.full() ? log.given() : host.shown(cause.stop.evidence.file);
  Answer answer;
  answer.exitCode = cause.name == "up-to-date" ? exit_code::kGood : exit_code::kFindings;
  answer.result = std::make_shared<Json>(jsonOf(product, cause, shownFile));
  answer.text = textOf(product, cause, shownFile);
  return answer;
}

}  // namespace trelv::kit
