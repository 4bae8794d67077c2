#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "contract/Contract.h"

namespace trelv::contract {
namespace {

using machine::AutomationAnswer;
using Lines = std::vector<std::string>;

class AutomationContract : public Contract {
 protected:
  std::unique_ptr<machine::WordProcessor> start() {
    std::unique_ptr<machine::WordProcessor> word;
    EXPECT_EQ(machine().automation.startWord(word).code, 0U);
    EXPECT_NE(word, nullptr);
    return word;
  }
};

TEST_F(AutomationContract, WithoutAWordProcessorTheAnswerSaysSo) {
  std::unique_ptr<machine::WordProcessor> word;
  const AutomationAnswer answer = machine().automation.startWord(word);
  EXPECT_EQ(answer.code, machine::automation_code::kNotRegistered);
  EXPECT_EQ(word, nullptr);
}

TEST_F(AutomationContract, TheWordProcessorHearsEachCallInOrder) {
  world().installWord({"frmSelectInstall", "altro"});
  const std::string manual = putFile("Contabilit\u00E0.doc", "testo");
  const auto word = start();
  ASSERT_NE(word, nullptr);
  EXPECT_EQ(word->openDocument(manual).code, 0U);
  EXPECT_EQ(word->makeVisible().code, 0U);
  EXPECT_EQ(word->activate().code, 0U);
  EXPECT_EQ(word->goToBookmark("altro").code, 0U);
  EXPECT_EQ(word->quit().code, 0U);
  EXPECT_EQ(world().wordHeard(), (Lines{"Documents.Open " + manual, "Visible = True", "Activate",
                                        "Selection.GoTo -1 altro", "Quit"}));
}

TEST_F(AutomationContract, AFailureIsToldInTheOtherProgramsWords) {
  world().installWord({});
  const auto word = start();
  ASSERT_NE(word, nullptr);
  const AutomationAnswer document = word->openDocument(path("manca.doc"));
  EXPECT_EQ(document.code, 0x800A1436U);
  EXPECT_EQ(document.source, "Microsoft Word");
  EXPECT_EQ(document.description, "Impossibile trovare il file.");
  EXPECT_EQ(word->openDocument(putFile("c.doc", "testo")).code, 0U);
  const AutomationAnswer bookmark = word->goToBookmark("manca");
  EXPECT_EQ(bookmark.code, 0x800A16D4U);
  EXPECT_EQ(bookmark.description, "Il segnalibro non esiste.");
}

TEST_F(AutomationContract, EachStartIsAWordProcessorOfItsOwn) {
  world().installWord({});
  const auto first = start();
  const auto second = start();
  ASSERT_TRUE(first != nullptr && second != nullptr);
  EXPECT_EQ(first->quit().code, 0U);
  EXPECT_EQ(second->makeVisible().code, 0U);
}

TEST_F(AutomationContract, AWordProcessorThatHasEndedAnswersWithAFailure) {
  world().installWord({});
  const auto word = start();
  ASSERT_NE(word, nullptr);
  EXPECT_EQ(word->quit().code, 0U);
  AutomationAnswer answer;
  // It ends when it comes to it.
  for (int i = 0; i < 20 && answer.code == 0; ++i) {
    answer = word->makeVisible();
    world().passASecond();
  }
  EXPECT_NE(answer.code, 0U);
}

}  // namespace
}  // namespace trelv::contract
