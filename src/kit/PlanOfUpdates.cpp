#include "kit/PlanOfUpdates.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/modLibrary.h"
#include "startup/HostPaths.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::kit {
namespace {

constexpr std::string_view kWho = "Gestione ProdTrelv - ";
constexpr std::string_view kWalkBegins = "Inizio procedura";
constexpr std::string_view kRunBegins = "Inizio verifica presenza di pacchi zip in cartella: ";
constexpr std::string_view kNothing = "nessun comando per questo lato";
constexpr const char* kNoWalk = "questo avvio non aggiorna i prodotti";

/// Lines that say what became of a run.
constexpr std::array<std::string_view, 7> kOutcomes{"Lato ",
                                                    "esecuzione effettuata: ",
                                                    "esecuzione non effettuata ",
                                                    "Esecuzione non effettuata di: ",
                                                    "Prodotto non rilevato",
                                                    "Comando non eseguito: ",
                                                    "Esecuzione prodotto complementare fallita"};

/// Lines about the program that is started behind the walk.
constexpr std::array<std::string_view, 4> kBehind{
    "Termine procedura", "Esecuzione di: ", "Non è stato rilevato alcun programma",
    "Il programma: "};

/// Outcomes of a command stand above those of versions that were compared.
constexpr std::string_view kCompared = "Lato ";

template <std::size_t N>
bool beginsWithOneOf(std::string_view text, const std::array<std::string_view, N>& beginnings) {
  return std::any_of(
      beginnings.begin(), beginnings.end(),
      [text](std::string_view beginning) -> bool { return text.starts_with(beginning); });
}

UpdateRow row(Program& program, const std::string& product, Side side, const std::string& record) {
  const std::string version = modLibrary::ReadSetting(program, {record, product, "version"});
  return {product, side, version, version, ""};
}

}  // namespace

void LogOfUpdates::add(const std::string& line) {
  const std::string_view whole(line);
  const std::string sentence(whole.starts_with(kWho) ? whole.substr(kWho.size()) : whole);
  if (sentence == kWalkBegins) {
    walking_ = true;
  }
  if (beginsWithOneOf(sentence, kBehind)) {
    walking_ = false;
  }
  if (!walking_) {
    return;
  }
  if (std::string_view(sentence).starts_with(kRunBegins)) {
    runs_.emplace_back();
    return;
  }
  const bool outcome = beginsWithOneOf(sentence, kOutcomes);
  if (runs_.empty() || outcome) {
    last_ = sentence;
  }
  if (outcome && !runs_.empty() &&
      (runs_.back().empty() || !std::string_view(sentence).starts_with(kCompared) ||
       std::string_view(runs_.back()).starts_with(kCompared))) {
    runs_.back() = sentence;
  }
}

std::string LogOfUpdates::because(std::size_t run) const {
  if (run >= runs_.size()) {
    return last_.empty() ? kNoWalk : last_;
  }
  return runs_[run].empty() ? std::string(kNothing) : runs_[run];
}

std::vector<UpdateRow> recordedVersions(Program& program, const std::string& serverPath) {
  using modProdTrelvLibrary::CatalogueSection;
  std::vector<UpdateRow> rows;
  const std::string catalogue = hostPaths::catalogue(serverPath);
  for (int index = 1; index <= modProdTrelvLibrary::kMostCatalogueEntries; ++index) {
    const std::string section = CatalogueSection(index);
    if (modLibrary::ReadSetting(program, {catalogue, section, "conf"}).empty()) {
      break;
    }
    const std::string id = modLibrary::ReadSetting(program, {catalogue, section, "id"});
    rows.push_back(row(program, id, Side::Server, hostPaths::serverVersionRecord(serverPath)));
    rows.push_back(row(program, id, Side::Client, hostPaths::clientVersionRecord(program)));
  }
  return rows;
}

}  // namespace trelv::kit
