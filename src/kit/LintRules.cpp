#include "kit/LintRules.h"

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "kit/Failure.h"
#include "kit/LintCatalogue.h"
#include "kit/LintConfiguration.h"
#include "kit/LintMedium.h"
#include "kit/LintPacks.h"
#include "kit/LintShare.h"

namespace trelv::kit {
namespace {

constexpr Severity kError = Severity::Error;
constexpr Severity kWarning = Severity::Warning;
constexpr Severity kNote = Severity::Note;

constexpr std::array kRules{
    // Catalogue
    Rule{"TK101", kError, "il catalogo non si può usare e nessun prodotto viene aggiornato",
         "ripristinare agdvcomp.ini", lintCatalogue::unreadable},
    Rule{"TK102", kError,
         "buco nel catalogo: le sezioni che seguono il primo conf vuoto non vengono viste",
         "numerare le sezioni senza buchi", lintCatalogue::gap},
    Rule{"TK103", kWarning, "sezione del catalogo che non viene mai letta",
         "chiamarla prod01 … prod99, prod100", lintCatalogue::sectionNeverRead},
    Rule{"TK104", kNote,
         "il file di configurazione non c'è: il prodotto non fa parte dell'installazione",
         "nessuno se il prodotto manca di proposito, altrimenti correggere conf o portare il file",
         lintCatalogue::confWithoutFile},
    Rule{"TK105", kError, "conf esce dalla cartella dell'host",
         "scrivere un percorso relativo sotto la cartella dell'host, prg\\…",
         lintCatalogue::confOutside},
    Rule{"TK106", kError,
         "manca id: non viene registrata alcuna versione e i setup si ripetono a ogni avvio",
         "scrivere l'identificativo del prodotto", lintCatalogue::noId},
    Rule{"TK107", kError, "id che nessun host passa: i programmi del prodotto non si avviano",
         "scrivere NERIO, LUDA, ZB, Q2 o ZM", lintCatalogue::unknownId},
    Rule{"TK108", kError, "id con maiuscole e minuscole diverse: il confronto è esatto",
         "scriverlo in maiuscolo", lintCatalogue::idInOtherCase},
    Rule{"TK109", kError,
         "id ripetuto: conta soltanto la prima sezione per gli avvii, e le versioni si "
         "sovrascrivono",
         "togliere una delle sezioni", lintCatalogue::idTwice},
    Rule{"TK110", kWarning, "conf ripetuto: gli stessi comandi vengono eseguiti per due prodotti",
         "dare a ogni prodotto il proprio file", lintCatalogue::confTwice},
    Rule{"TK111", kWarning, "manca name: i messaggi non nominano il prodotto", "scrivere il nome",
         lintCatalogue::noName},
    Rule{"TK112", kError, "valore più lungo di 510 caratteri: il resto viene tagliato",
         "accorciare il valore", lintCatalogue::cutValue},
    Rule{"TK113", kError, "codifica che cambia ciò che viene letto",
         "salvare il file in ANSI (code page 1252)", lintCatalogue::wrongEncoding},
    Rule{"TK114", kWarning, "sezione ripetuta: si legge soltanto la prima",
         "unire le sezioni o rinumerarle", lintCatalogue::sectionTwice},
    Rule{"TK115", kWarning, "chiave ripetuta nella sezione: si legge soltanto la prima",
         "togliere la riga di troppo", lintCatalogue::keyTwice},
    // Configuration of a product
    Rule{"TK201", kError, "sezione con comandi e senza version: non viene mai eseguita",
         "scrivere la versione", lintConfiguration::noVersion},
    Rule{"TK202", kError, "versione che si confronta in un ordine diverso da come si legge",
         "usare in tutte le versioni gli stessi campi con le stesse cifre",
         lintConfiguration::otherOrder},
    Rule{"TK203", kError,
         "la versione non è fatta di cifre e punti: conta soltanto ciò che precede",
         "scrivere soltanto cifre e punti", lintConfiguration::notAVersion},
    Rule{"TK204", kError, "sezione che non viene mai eseguita: una precedente è uguale o più alta",
         "ordinare le sezioni per versione crescente", lintConfiguration::neverHigher},
    Rule{"TK205", kError, "buco tra i comandi: quelli che seguono non vengono letti",
         "numerare i comandi senza buchi", lintConfiguration::commandGap},
    Rule{"TK206", kWarning,
         "secondo comando dello stesso lato: viene saltato, il primo ha già portato la versione",
         "scrivere un comando per sezione e lato", lintConfiguration::secondCommand},
    Rule{"TK207", kWarning, "sezione che non viene mai letta",
         "chiamarla Setup01 … Setup100, Update01 … Update100, Remove",
         lintConfiguration::sectionNeverRead},
    Rule{"TK208", kError, "il programma del comando non è sulla condivisione",
         "correggere il percorso o portare il programma", lintConfiguration::programNotOnShare},
    Rule{
        "TK209", kError, "virgolette spaiate nel comando",
        "chiudere le virgolette; un valore che comincia e finisce con virgolette le perde entrambe",
        lintConfiguration::unbalancedQuotes},
    Rule{"TK210", kWarning, "\"/\" che diventa \"\\\" e non è un percorso",
         "scrivere gli interruttori con \"-\"", lintConfiguration::slashThatIsNoPath},
    Rule{"TK211", kError, "segnaposto sconosciuto: resta scritto com'è",
         "usare uno dei segnaposto previsti", lintConfiguration::unknownPlaceholder},
    Rule{"TK212", kError, "%PATHCLIENT% è vuoto nei comandi di installazione e aggiornamento",
         "usarlo soltanto in Exec e Remove", lintConfiguration::emptyClientPath},
    Rule{"TK213", kWarning, "\"%%\" scompare dal comando", "toglierlo",
         lintConfiguration::doublePercent},
    Rule{"TK214", kError, "percorso del programma con spazi e senza virgolette",
         "metterlo tra virgolette e far seguire qualcosa che non finisca con virgolette",
         lintConfiguration::unquotedBlanks},
    Rule{"TK215", kError, "aggiornamenti senza installazione: chi non ha il prodotto non lo riceve",
         "aggiungere una sezione Setup", lintConfiguration::updatesWithoutSetup},
    Rule{"TK216", kWarning, "installazione e aggiornamenti arrivano a versioni diverse",
         "portare entrambi alla stessa versione", lintConfiguration::differentEnds},
    Rule{"TK217", kWarning,
         "comando di rimozione la cui cartella è protetta e non viene cancellata",
         "tenere il programma di rimozione in una cartella propria sotto aggdovra",
         lintConfiguration::keptFolder},
    Rule{"TK218", kError, "due comandi di rimozione nella stessa cartella: il primo la cancella",
         "scrivere un comando per cartella", lintConfiguration::removalsInOneFolder},
    Rule{"TK219", kWarning, "manca il comando di rimozione del server",
         "aggiungere Server01 in [Remove]", lintConfiguration::noRemoval},
    Rule{"TK220", kError, "codice di programma del prodotto senza comando in [Exec]: non si avvia",
         "aggiungere il codice con il percorso del programma",
         lintConfiguration::programWithoutCommand},
    Rule{"TK221", kError, "programma di [Exec] con argomenti o virgolette: risulta non installato",
         "scrivere il solo percorso", lintConfiguration::programWithArguments},
    Rule{"TK222", kWarning,
         "il programma di [Exec] non è sulla condivisione: risulta non installato",
         "correggere il percorso o installare il prodotto", lintConfiguration::programMissing},
    Rule{"TK223", kError,
         "l'installazione diretta taglia il comando al primo spazio, dentro il percorso del "
         "programma",
         "tenere il programma in cartelle senza spazi", lintConfiguration::cutByDirectSetup},
    // Version records
    Rule{"TK301", kWarning,
         "versione registrata più alta di ogni sezione: nulla viene più eseguito",
         "correggere la versione registrata o le sezioni", lintShare::recordedAbove},
    Rule{"TK302", kNote, "prodotto registrato che il catalogo non elenca",
         "aggiungerlo al catalogo o togliere la sezione", lintShare::notInCatalogue},
    Rule{"TK303", kError,
         "il registro delle versioni non si può scrivere: i setup si ripetono a ogni avvio",
         "dare il diritto di modifica e togliere la sola lettura", lintShare::notWritable},
    Rule{"TK304", kError,
         "versione registrata con un altro numero di campi: il confronto è sbagliato",
         "scrivere la versione con gli stessi campi delle sezioni", lintShare::otherFields},
    // Share
    Rule{"TK401", kError, "c'è il blocco di un aggiornamento: il lato server non viene aggiornato",
         "attendere la fine dell'aggiornamento; se nessuno aggiorna, togliere il file",
         lintShare::lock},
    Rule{"TK402", kError,
         "una cartella sta al posto del blocco: nessun aggiornamento del server riesce",
         "togliere la cartella", lintShare::folderAsLock},
    Rule{"TK403", kError, "la cartella di appoggio prg\\tempterm non si può usare",
         "crearla sullo stesso volume di prg", lintShare::temporaryFolder},
    Rule{"TK404", kWarning,
         "ambver non si può aggiornare: le stazioni non si accorgono delle novità",
         "far riscrivere il file all'host", lintShare::environmentFile},
    Rule{"TK405", kWarning,
         "manca dvrel dove c'è Dovra: i passi che dipendono dal rilascio si saltano",
         "ripristinare prg\\etc\\dvrel", lintShare::noRelease},
    Rule{"TK406", kWarning, "copia per le stazioni incompleta o più vecchia di questo rilascio",
         "copiarvi tutti i programmi del rilascio", lintShare::clientCopy},
    // Packs
    Rule{"TK501", kError,
         "pacchetto che non viene mai aperto: l'estensione deve essere in minuscolo",
         "rinominarlo con l'estensione zip o gz in minuscolo", lintPacks::neverOpened},
    Rule{"TK502", kError, "pacchetto danneggiato, o non è uno zip", "rifare il pacchetto",
         lintPacks::damaged},
    Rule{"TK503", kError, "pacchetto cifrato: non viene aperto", "rifarlo senza password",
         lintPacks::encrypted},
    Rule{"TK504", kError, "il pacchetto non contiene prg\\com\\setup\\aggdovra: non porta nulla",
         "mettere tutto sotto prg\\com\\setup\\aggdovra", lintPacks::noTree},
    Rule{"TK505", kWarning, "file fuori da prg\\com\\setup\\aggdovra: non viene copiato",
         "spostarlo sotto prg\\com\\setup\\aggdovra o toglierlo", lintPacks::outsideTree},
    Rule{"TK506", kError, "nome che Windows non può creare", "cambiare il nome",
         lintPacks::impossibleName},
    Rule{"TK507", kError,
         "nomi che differiscono soltanto per maiuscole e minuscole: uno copre l'altro",
         "cambiare uno dei nomi", lintPacks::namesOfOtherCase},
    Rule{"TK508", kWarning, "percorso troppo lungo nella cartella di destinazione",
         "accorciare i nomi", lintPacks::longPath},
    Rule{"TK509", kError, "pacchetto gz dove si aprono soltanto pacchetti zip",
         "portare lo zip che contiene, o usare SINGLEINSTALL", lintPacks::gzWhereZip},
    Rule{"TK510", kWarning,
         "zip dentro la cartella dei setup di un pacchetto zip: verrebbe aperto a sua volta",
         "metterlo in una cartella del prodotto o toglierlo", lintPacks::zipInTree},
    Rule{"TK511", kError, "il pacchetto contiene un collegamento", "sostituirlo con il file",
         lintPacks::link},
    Rule{"TK512", kError, "ciò che il pacchetto contiene non sta sulla condivisione",
         "liberare spazio o dividere la consegna", lintPacks::tooLarge},
    Rule{"TK513", kError, "qalbunex rifiuta il pacchetto",
         "rifarlo con tar czf, senza ciò che è rifiutato", lintPacks::refused},
    Rule{"TK514", kWarning, "il pacchetto porta versioni più basse di quelle della condivisione",
         "verificare di non consegnare un pacchetto vecchio", lintPacks::olderThanShare},
    // Media
    Rule{"TK601", kError, "Setup.cmf non si può usare: il supporto viene rifiutato",
         "rifare il supporto", lintMedium::setupFile},
    Rule{"TK602", kError, "Versione.ver non si può usare: il supporto viene rifiutato",
         "scriverci la versione del supporto", lintMedium::versionFile},
    Rule{"TK603", kWarning, "Products.cmf non si può usare per tutti i prodotti",
         "scriverci una riga per prodotto: identificativo, |, descrizione",
         lintMedium::productsFile},
    Rule{"TK604", kError, "voce la cui cartella manca o non ha pacchetti zip",
         "correggere la cartella o metterci il pacchetto", lintMedium::entryWithoutPacks},
    Rule{"TK605", kWarning, "altro file in una cartella di pacchetti: conta come una versione",
         "toglierlo", lintMedium::otherFiles},
    Rule{"TK606", kError, "pacchetti che vengono aperti in un ordine diverso da quello dei nomi",
         "dare ai pacchetti nomi in minuscolo con le stesse cifre", lintMedium::otherOrder},
    Rule{"TK607", kNote, "manca un'immagine delle finestre",
         "copiare la cartella images del rilascio", lintMedium::noPicture},
    Rule{"TK608", kWarning, "manca il manuale: l'aiuto non mostra nulla",
         "mettere kodamuri.pdf in prodotti\\docs", lintMedium::noManual},
    Rule{"TK609", kError,
         "il programma non è due livelli sotto la radice, o gli mancano gli altri programmi",
         "copiare il rilascio intero in prodotti\\manager", lintMedium::misplacedProgram},
    Rule{"TK610", kWarning, "riga con \"_LISTA#\" che non è una riga di menu: viene ignorata",
         "cominciarla con #PRIMA_LISTA#, #SECONDA_LISTA#, #TERZA_LISTA# o #QUARTA_LISTA#, dalla "
         "terza riga in poi",
         lintMedium::noMenuLine},
    Rule{"TK611", kError, "voce senza identificativo o con uno sconosciuto",
         "scrivere NERIO, LUDA, ZB, Q2, ZM o Exit", lintMedium::unknownEntry},
    Rule{"TK612", kWarning, "Q2 o ZB senza NERIO nel menu, di cui hanno bisogno",
         "aggiungere NERIO", lintMedium::withoutNerio},
    Rule{"TK613", kError, "cartella fuori dal supporto: la voce non installa nulla",
         "scrivere una cartella relativa alla radice del supporto", lintMedium::folderOutside},
};

void checkCodes(const std::vector<std::string>& codes) {
  for (const std::string& code : codes) {
    const bool known = std::any_of(lintRules().begin(), lintRules().end(),
                                   [&](const Rule& rule) -> bool { return rule.code == code; });
    if (!known) {
      throw WrongUsage("codice sconosciuto: " + code);
    }
  }
}

std::vector<std::string> trimmed(std::vector<std::string> codes) {
  for (std::string& code : codes) {
    code = trim(code);
  }
  return codes;
}

bool holds(const std::vector<std::string>& codes, const std::string& code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

}  // namespace

RuleChoice::RuleChoice(std::vector<std::string> only, std::vector<std::string> ignored)
    : only_(trimmed(std::move(only))), ignored_(trimmed(std::move(ignored))) {
  checkCodes(only_);
  checkCodes(ignored_);
}

bool RuleChoice::isChosen(const std::string& code) const {
  return (only_.empty() || holds(only_, code)) && !holds(ignored_, code);
}

std::span<const Rule> lintRules() { return kRules; }

}  // namespace trelv::kit
