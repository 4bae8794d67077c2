#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"

namespace trelv {
namespace {

TEST(FailureFromSystemCode, HasTheNumberOfTheBasicRuntimeAndNamesTheFile) {
  for (const auto& [code, number] : std::vector<std::pair<SystemCode, std::int32_t>>{{2, 53},
                                                                                     {3, 76},
                                                                                     {5, 70},
                                                                                     {8, 7},
                                                                                     {29, 57},
                                                                                     {30, 57},
                                                                                     {32, 70},
                                                                                     {53, 76},
                                                                                     {64, 57},
                                                                                     {80, 58},
                                                                                     {112, 61},
                                                                                     {123, 76},
                                                                                     {145, 75},
                                                                                     {161, 76},
                                                                                     {183, 58},
                                                                                     {267, 75}}) {
    const RuntimeError failure = failureFromSystemCode(code, "C:\\a.txt");
    EXPECT_EQ(failure.number(), number) << code;
    EXPECT_THAT(failure.description(), testing::EndsWith(": C:\\a.txt")) << code;
  }
}

TEST(FailureFromSystemCode, TellsAnUnknownCode) {
  const RuntimeError failure = failureFromSystemCode(1234, "C:\\a.txt");
  EXPECT_EQ(failure.number(), 440);
  EXPECT_EQ(failure.description(), "Errore di sistema 1234: C:\\a.txt");
}

TEST(FailureToStart, TellsWhatKeepsAProgramFromStarting) {
  const std::vector<std::pair<SystemCode, std::string>> rows{
      {193, "Il file non è un programma valido per questo Windows"},
      {206, "Nome del programma troppo lungo"},
      {216, "Il programma non è per questa versione di Windows"},
      {225, "Il programma è bloccato dall'antivirus"},
      {740, "Il programma richiede i diritti di amministratore"},
      {1223, "Operazione annullata dall'utente"},
      {1260, "Il programma è bloccato da un criterio di gruppo"},
      {1392, "Il file del programma è danneggiato"},
      {1455, "Memoria virtuale insufficiente"},
      {9999, "Errore di sistema 9999"}};
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
