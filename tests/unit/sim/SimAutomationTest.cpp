// What a word processor answers on Windows is held by the contract; here is what only the simulated
// machine can show.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sim/FailingMachine.h"
#include "sim/SimMachine.h"

namespace trelv::sim {
namespace {

using namespace machine::automation_code;

class SimAutomationTest : public testing::Test {
 protected:
  SimAutomationTest() { machine_.putFile(kManual, "manuale"); }

  std::unique_ptr<machine::WordProcessor> start() {
    std::unique_ptr<machine::WordProcessor> word;
    EXPECT_EQ(machine_.machine().automation.startWord(word).code, 0U);
    return word;
  }

  static constexpr const char* kManual = "D:\\manuale.doc";
  struct MountedMachine : SimMachine {
    MountedMachine() { mount("D:"); }
  } machine_;
};

TEST_F(SimAutomationTest, RemembersWhatEachWordProcessorWasTold) {
  machine_.automation().installWord({"frmSelectInstall"});
  {
    const auto word = start();
    EXPECT_EQ(word->openDocument(kManual).code, 0U);
    EXPECT_EQ(word->makeVisible().code, 0U);
    EXPECT_EQ(word->activate().code, 0U);
    EXPECT_EQ(word->goToBookmark("frmSelectInstall").code, 0U);
    EXPECT_EQ(word->quit().code, 0U);
    EXPECT_EQ(word->activate().code, kServerGone);
  }
  start();
  ASSERT_EQ(machine_.automation().words().size(), 2U);
  const SimWord& first = *machine_.automation().words()[0];
  EXPECT_EQ(first.documents, (std::vector<std::string>{kManual}));
  EXPECT_TRUE(first.visible && first.activated && first.ended && first.released);
  EXPECT_EQ(first.bookmark, "frmSelectInstall");
  EXPECT_FALSE(machine_.automation().words()[1]->ended);
  EXPECT_EQ(machine_.callLog().countOf("word.openDocument D:\\manuale.doc"), 1U);
}

TEST_F(SimAutomationTest, DocumentsAndBookmarksThatAreMissingAreToldInWords) {
  machine_.automation().installWord();
  const auto word = start();
  const machine::AutomationAnswer document = word->openDocument("D:\\altro.doc");
  EXPECT_NE(document.code, 0U);
  EXPECT_EQ(document.source, "Microsoft Word");
  EXPECT_FALSE(document.description.empty());
  EXPECT_EQ(word->openDocument(kManual).code, 0U);
  EXPECT_NE(word->goToBookmark("altro").code, 0U);
  EXPECT_EQ(machine_.automation().words()[0]->bookmark, "");
}

TEST_F(SimAutomationTest, ATestChoosesHowACallFails) {
  machine_.automation().installWord();
  const auto word = start();
  machine_.automation().failNext({0x800A1234U, "Word", "Occupato"});
  const machine::AutomationAnswer answer = word->makeVisible();
  EXPECT_EQ(answer.code, 0x800A1234U);
  EXPECT_EQ(answer.description, "Occupato");
  EXPECT_FALSE(machine_.automation().words()[0]->visible);
  EXPECT_EQ(word->makeVisible().code, 0U);
}

TEST_F(SimAutomationTest, AnyCallCanBeMadeToFailWithoutEffect) {
  machine_.automation().installWord();
  const auto word = start();
  const FailingMachine failing(machine_, 1, FailureSpan::FromThenOn, 1);
  EXPECT_EQ(word->openDocument(kManual).code, kServerGone);
  EXPECT_EQ(word->quit().code, kServerGone);
  EXPECT_TRUE(machine_.automation().words()[0]->documents.empty());
  EXPECT_FALSE(machine_.automation().words()[0]->ended);
}

}  // namespace
}  // namespace trelv::sim
