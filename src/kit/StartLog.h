#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/Codes.h"

/// The run log of the manager, read back: the integrated starts in it and what they say of each
/// product's runs.
namespace trelv::kit {

/// One line of a log.
struct LogLine {
  /// From 1.
  std::size_t number = 0;
  /// What stands behind the date.
  std::string text;
  /// All of it.
  std::string whole;
};

/// What a start says of one product on one side: from its search for packs to the next one's.
struct SideRun {
  Side side = Side::Server;
  std::vector<LogLine> lines;

  /// The first line that begins so, nothing where there is none.
  const LogLine* find(const std::string& beginning) const;
  const LogLine* findLast(const std::string& beginning) const;
  /// The line that ended the whole update: another session's lock, a failure, the session's end.
  const LogLine* stop() const;
};

/// One integrated start.
struct StartLog {
  std::vector<LogLine> lines;
  /// Arguments of its command line.
  std::vector<std::string> arguments;
  /// Server side of the first product, its client side, server side of the second, and so on.
  std::vector<SideRun> runs;
  /// The walk through the catalogue has come to its end.
  bool walked = false;
  /// The start has gone on to the program that was asked for, or has ended in a failure.
  bool wentOn = false;
  /// Lines of another start stand among them, or they do not fit together.
  bool mixed = false;

  const LogLine* find(const std::string& beginning) const;
};

/// A whole log.
struct RunLogText {
  bool empty = true;
  /// The first line of the manager's stands in the middle of a start.
  std::optional<LogLine> cutAtItsBegin;
  /// The newest integrated start.
  std::optional<StartLog> start;
};

/// Reads a log; `text` is UTF-8 and begins behind `linesBefore` lines that were left out.
RunLogText readRunLog(const std::string& text, std::size_t linesBefore = 0);

/// Does the text begin so?
bool beginsWith(const std::string& text, const std::string& beginning);

/// What stands between the first `before` and the next `after` behind it; "" where they do not.
std::string textBetween(const std::string& text, const std::string& before,
                        const std::string& after);

namespace log_line {
constexpr const char* kCommandLine = "Gestione ProdTrelv - Linea di comando ArgV = ";
constexpr const char* kBegin = "Gestione ProdTrelv - Inizio procedura";
constexpr const char* kEnd =
    "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari";
constexpr const char* kPackSearch =
    "Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: ";
constexpr const char* kPackOpening = "Gestione ProdTrelv - Apertura pacco zip con comando: ";
constexpr const char* kPackRemoval = "Gestione ProdTrelv - Rimozione pacco zip: ";
constexpr const char* kNoConfiguration =
    "Gestione ProdTrelv - Prodotto non rilevato, file di config non presente ";
constexpr const char* kNotHigher = "Gestione ProdTrelv - Lato ";
constexpr const char* kCommand = "Gestione ProdTrelv - Esecuzione comando: ";
constexpr const char* kDone = "Gestione ProdTrelv - esecuzione effettuata: ";
constexpr const char* kNotDone = "Gestione ProdTrelv - Esecuzione non effettuata di: ";
constexpr const char* kOtherSession =
    "Gestione ProdTrelv - esecuzione non effettuata per presenza altre sessioni: ";
constexpr const char* kRunFailed = "Gestione ProdTrelv - Comando non eseguito: ";
constexpr const char* kSessionEnded =
    "Gestione ProdTrelv - Sessione di Windows terminata durante il comando: ";
constexpr const char* kNoRights =
    "Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente non amministratore";
constexpr const char* kNotStarted = "Gestione ProdTrelv - Errore in esecuzione programma: ";
constexpr const char* kStepFailed =
    "Gestione ProdTrelv - Errore in GestioneProdottiComplementari (";
constexpr const char* kProgram = "Gestione ProdTrelv - Esecuzione di: ";
constexpr const char* kNoProgram =
    "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: ";
constexpr const char* kNoProgramFile = "Gestione ProdTrelv - Il programma: ";
constexpr const char* kMainFailed = "Gestione ProdTrelv - Errore in modulo principale: ";
constexpr const char* kFewArguments =
    "Gestione ProdTrelv - Numero parametri errato. Interruzione procedura.";
}  // namespace log_line

}  // namespace trelv::kit
