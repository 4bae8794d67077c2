#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"

namespace trelv {
namespace {

TEST(FailureFromSystemCode, HasTheNumberOfTheBasicRuntimeAndNamesTheFile) {
  struct {
    SystemCode code;
    std::int32_t number;
    const char* text;
  } const rows[]{{2, 53, "Impossibile trovare il file"},
                 {3, 76, "Impossibile trovare il percorso"},
                 {5, 70, "Autorizzazione negata"},
                 {8, 7, "Memoria insufficiente"},
                 {29, 57, "Errore di scrittura"},
                 {30, 57, "Errore di lettura"},
                 {32, 70, "File in uso da un altro programma"},
                 {53, 76, "Impossibile trovare il percorso di rete"},
                 {64, 57, "Percorso di rete non più disponibile"},
                 {80, 58, "Il file esiste già"},
                 {112, 61, "Disco pieno"},
                 {123, 76, "Nome non valido"},
                 {145, 75, "La cartella non è vuota"},
                 {161, 76, "Percorso non valido"},
                 {183, 58, "Il file esiste già"},
                 {267, 75, "Il percorso non è una cartella"}};
  for (const auto& [code, number, text] : rows) {
    const RuntimeError failure = failureFromSystemCode(code, "C:\\a.txt");
    EXPECT_EQ(failure.number(), number) << code;
    EXPECT_EQ(failure.description(), std::string(text) + ": C:\\a.txt");
  }
}

TEST(FailureFromSystemCode, TellsAnUnknownCode) {
  const RuntimeError failure = failureFromSystemCode(1234, "C:\\a.txt");
  EXPECT_EQ(failure.number(), 440);
  EXPECT_EQ(failure.description(), "Errore di sistema 1234: C:\\a.txt");
}

TEST(FailureToStart, TellsWhatKeepsAProgramFromStarting) {
  const std::vector<std::pair<SystemCode, std::string>> rows{
      {2, "Impossibile trovare il programma"},
      {3, "Impossibile trovare il percorso del programma"},
      {5, "Accesso al programma negato"},
      {8, "Memoria insufficiente"},
      {14, "Memoria insufficiente"},
      {21, "Unità non pronta"},
      {32, "Il programma è in uso da un altro programma"},
      {53, "Impossibile trovare il percorso di rete"},
      {64, "Percorso di rete non più disponibile"},
      {67, "Impossibile trovare la condivisione di rete"},
      {87, "Riga di comando non valida o troppo lunga"},
      {123, "Nome del programma non valido"},
      {193, "Il file non è un programma valido per questo Windows"},
      {206, "Nome del programma troppo lungo"},
      {216, "Il programma non è per questa versione di Windows"},
      {225, "Il programma è bloccato dall'antivirus"},
      {740, "Il programma richiede i diritti di amministratore"},
      {1223, "Operazione annullata dall'utente"},
      {1260, "Il programma è bloccato da un criterio di gruppo"},
      {1392, "Il file del programma è danneggiato"},
      {1455, "Memoria virtuale insufficiente"},
      {9999, "Errore di sistema 9999"},
      {14001, "Mancano componenti di cui il programma ha bisogno"}};
  for (const auto& [code, text] : rows) {
    const RuntimeError failure = failureToStart(code);
    EXPECT_EQ(failure.number(), static_cast<std::int32_t>(code));
    EXPECT_EQ(failure.description(), text);
  }
}

TEST(RuntimeError, KeepsItsThreeFields) {
  const RuntimeError failure(-1, "Prodotto  7 non riconosciuto", "perché");
  EXPECT_EQ(failure.number(), -1);
  EXPECT_EQ(failure.source(), "Prodotto  7 non riconosciuto");
  EXPECT_EQ(failure.description(), "perché");
  EXPECT_STREQ(failure.what(), "perché");

  const RuntimeError none;
  EXPECT_EQ(none.number(), 0);
  EXPECT_EQ(none.source() + none.description(), "");
}

}  // namespace
}  // namespace trelv
