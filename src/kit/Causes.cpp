#include "kit/Causes.h"

#include <algorithm>
#include <array>

#include "kit/CauseFinders.h"

namespace trelv::kit {
namespace {

using namespace causes;

constexpr const char* kUnknown = "unknown";
constexpr const char* kUpToDate = "up-to-date";
constexpr const char* kLogCut = "log-cut";

/// What is to be done about a cause.
struct Remedy {
  const char* cause;
  const char* text;
};

/// Every cause that there is.
constexpr std::array kRemedies{
    Remedy{kUpToDate, "Niente da fare."},
    Remedy{"lock",
           "Attendere la fine dell'altra sessione e riavviare; se nessuno sta aggiornando, "
           "rimuovere il blocco con \"trelv locks HOST --remove\"; una cartella al suo posto va "
           "tolta a mano."},
    Remedy{"other-server",
           "Avviare la suite dal percorso registrato, o correggere il record di integrazione "
           "della macchina."},
    Remedy{"suite", "Su questa macchina i prodotti complementari vengono dalla suite rilevata."},
    Remedy{"standalone-product",
           "Rimuovere i prodotti installati in modalità Standard, poi riavviare."},
    Remedy{"no-rights",
           "Avviare il prodotto una volta come amministratore, con diritto di scrittura sulla "
           "cartella della suite."},
    Remedy{"no-store",
           "Verificare che la suite sia installata sulla macchina e che il suo file di "
           "configurazione sia leggibile e scrivibile."},
    Remedy{"catalogue-gap",
           "Numerare di seguito le sezioni del catalogo, ognuna con il suo \"conf\"."},
    Remedy{"not-in-catalogue", "Aggiungere il prodotto al catalogo agdvcomp.ini."},
    Remedy{"no-configuration",
           "Consegnare il file di configurazione del prodotto o correggere \"conf\" nel "
           "catalogo."},
    Remedy{"no-version", "Dare alla sezione una versione, con gli stessi campi delle altre."},
    Remedy{"version-not-higher",
           "Dare alle sezioni una versione superiore a quella registrata, o correggere il file "
           "delle versioni."},
    Remedy{"field-count",
           "Scrivere tutte le versioni con lo stesso numero di campi, ognuno di due cifre."},
    Remedy{"command-not-started",
           "Verificare che il programma del comando sia al suo posto e che nulla ne impedisca "
           "l'avvio; il numero tra parentesi dice il motivo."},
    Remedy{"command-gap", "Numerare di seguito i comandi della sezione, a partire da 01."},
    Remedy{"second-command",
           "Riunire i comandi in uno solo, o metterli in sezioni con versioni diverse."},
    Remedy{"pack-failed", "Consegnare di nuovo il pacco, integro e senza password."},
    Remedy{"pack-name", "Dare al pacco un nome che termina con \".zip\", in minuscolo."},
    Remedy{"pack-in-use", "Attendere che l'altra sessione termini, poi riavviare."},
    Remedy{"record-not-writable",
           "Rendere scrivibile il file delle versioni per gli utenti che aggiornano."},
    Remedy{"run-stopped-earlier",
           "Rimediare a ciò che ha fermato il prodotto nominato, poi riavviare."},
    Remedy{"program-not-in-configuration",
           "Aggiungere il programma alla sezione Exec del file di configurazione."},
    Remedy{"program-missing",
           "Verificare che il setup abbia installato il programma e che la sezione Exec ne "
           "indichi il percorso, senza argomenti."},
    Remedy{kLogCut, "Ripetere l'avvio e attenderne la fine, poi spiegare il nuovo registro."},
    Remedy{kUnknown, "Inviare il registro all'assistenza."}};

/// A cause and what finds it.
struct Finder {
  const char* cause;
  Found (*find)(const ProductHistory&, Side);
};

/// In the order in which a start meets them. Each table is gone through once, those of runs once
/// for each side.
constexpr std::array<Finder, 6> kOfStart{{
    {"no-store", storeUnreadable},
    {"other-server", otherServer},
    {"suite", suite},
    {"standalone-product", standaloneProduct},
    {"no-store", noStore},
    {kUnknown, startFailed},
}};
constexpr std::array<Finder, 6> kOfRuns{{
    {"lock", lock},
    {"no-rights", noRights},
    {"command-not-started", commandNotStarted},
    {"pack-failed", packLost},
    {kUnknown, runFailed},
    {"record-not-writable", recordNotWritable},
}};
constexpr std::array<Finder, 7> kOnTheWay{{
    {"run-stopped-earlier", runStoppedEarlier},
    {kLogCut, logCut},
    {"pack-in-use", packInUse},
    {"pack-failed", packFailed},
    {"pack-name", packName},
    {"catalogue-gap", catalogueGap},
    {"not-in-catalogue", notInCatalogue},
}};
constexpr std::array<Finder, 6> kOfConfiguration{{
    {"no-configuration", noConfiguration},
    {"no-version", noVersion},
    {"field-count", fieldCount},
    {"command-gap", commandGap},
    {"second-command", secondCommand},
    {"version-not-higher", versionNotHigher},
}};
constexpr std::array<Finder, 3> kOfProgram{{
    {"program-not-in-configuration", programNotInConfiguration},
    {"program-missing", programMissing},
    {"command-not-started", programNotStarted},
}};

Cause causeNamed(const char* name, Stop stop) {
  const auto* const remedy = std::find_if(
      kRemedies.begin(), kRemedies.end(),
      [name](const Remedy& each) -> bool { return std::string_view(each.cause) == name; });
  return {name, std::move(stop), remedy == kRemedies.end() ? "" : remedy->text};
}

template <class Finders>
std::optional<Cause> firstOf(const Finders& finders, const ProductHistory& history, Side side) {
  for (const Finder& finder : finders) {
    if (Found stop = finder.find(history, side)) {
      return causeNamed(finder.cause, std::move(*stop));
    }
  }
  return std::nullopt;
}

template <class Finders>
std::optional<Cause> firstOnSides(const Finders& finders, const ProductHistory& history) {
  for (const Side side : {Side::Server, Side::Client}) {
    if (std::optional<Cause> cause = firstOf(finders, history, side)) {
      return cause;
    }
  }
  return std::nullopt;
}

Cause unknown(const std::string& logFile) {
  return causeNamed(kUnknown, {"", {logFile, std::nullopt, ""}});
}

/// Do the runs of the start belong to the products of the catalogue as it stands now?
bool fitsTheCatalogue(const ProductHistory& history) {
  const std::size_t runs = history.start().runs.size();
  const std::size_t expected = history.entries().size() * 2;
  return !history.start().mixed && (history.start().walked ? runs == expected : runs <= expected);
}

/// Nothing stopped the product: is it where its configuration leads to?
Cause upToDateOrUnknown(const ProductHistory& history) {
  const Found server = upToDate(history, Side::Server);
  Found client = upToDate(history, Side::Client);
  return server && client ? causeNamed(kUpToDate, std::move(*client)) : unknown(history.logFile());
}

/// What a start meets behind its own checks, in that order.
constexpr std::array<std::optional<Cause> (*)(const ProductHistory&), 4> kBehindStart{
    [](const ProductHistory& history) { return firstOnSides(kOfRuns, history); },
    [](const ProductHistory& history) { return firstOf(kOnTheWay, history, Side::None); },
    [](const ProductHistory& history) { return firstOnSides(kOfConfiguration, history); },
    [](const ProductHistory& history) { return firstOf(kOfProgram, history, Side::None); }};

Cause causeInStart(const ProductHistory& history) {
  if (std::optional<Cause> cause = firstOf(kOfStart, history, Side::None)) {
    return *cause;
  }
  if (!fitsTheCatalogue(history)) {
    return unknown(history.logFile());
  }
  for (const auto& stage : kBehindStart) {
    if (std::optional<Cause> cause = stage(history)) {
      return *cause;
    }
  }
  return upToDateOrUnknown(history);
}

}  // namespace

Cause causeOf(Program& program, const std::string& serverPath, const std::string& product,
              const std::string& logFile, const RunLogText& log) {
  if (log.start) {
    return causeInStart(ProductHistory(program, serverPath, product, logFile, *log.start));
  }
  if (log.cutAtItsBegin) {
    return causeNamed(kLogCut,
                      {"registro", {logFile, log.cutAtItsBegin->number, log.cutAtItsBegin->whole}});
  }
  return unknown(logFile);
}

}  // namespace trelv::kit
