#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Text.h"
#include "integrated/Help.h"
#include "support/FakeProgram.h"

namespace trelv::tests {
namespace {

using machine::BoxButtons;
using machine::BoxIcon;
using modProdTrelvInteractive::GetAppPath;
using modProdTrelvInteractive::Help;
using modProdTrelvInteractive::ShowPdf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kRoot = "E:\\prodotti\\manager\\..\\..\\";
constexpr const char* kPdf = "E:\\prodotti\\manager\\..\\..\\prodotti\\docs\\kodamuri.pdf";
constexpr const char* kDocument = "E:\\prodotti\\manager\\..\\..\\prodotti\\docs\\UserManual.doc";
constexpr const char* kAppPaths = "software\\microsoft\\windows\\currentversion\\App Paths\\";

/// A medium in E: without a manual, a machine without readers.
class HelpOfTheForms : public testing::Test {
 protected:
  HelpOfTheForms() {
    machine_.mount("E:");
    machine_.makeFolders("E:\\prodotti\\manager");
    program_.state.session.mediaRoot = kRoot;
  }

  void putPdf() { machine_.putFile("E:\\prodotti\\docs\\kodamuri.pdf", "pdf"); }
  void putDocument() { machine_.putFile("E:\\prodotti\\docs\\UserManual.doc", "doc"); }
  void registerReader(const std::string& executable, const std::string& path) {
    machine_.registry().setText(machine::Hive::LocalMachine, kAppPaths + executable, "", path);
    machine_.programs().define(trim(path));
  }
  std::vector<std::string> started() { return machine_.programs().startedCommandLines(); }
  const std::vector<std::shared_ptr<sim::SimWord>>& words() {
    return machine_.automation().words();
  }
  void expectReport(const std::string& description) {
    ASSERT_THAT(program_.reports(), SizeIs(1));
    const FakeReport& report = program_.reports().front();
    EXPECT_EQ(report.module, "ModProdTrelvInteractive");
    EXPECT_EQ(report.procedure, "ShowHelp");
    EXPECT_EQ(report.message, "Errore in visualizzazione help: ");
    EXPECT_EQ(report.failure.description(), description);
    EXPECT_THAT(program_.lines(),
                ElementsAre("Gestione ProdTrelv - Errore in visualizzazione help: " + description));
  }

  sim::SimMachine machine_;
  FakeProgram program_{machine_};
  Help help_{program_};
};

// --- PDF

TEST_F(HelpOfTheForms, WithBothManualsOnlyThePdfIsShownWhateverTheTopic) {
  putPdf();
  putDocument();
  machine_.automation().installWord({"indice"});
  registerReader("Acrobat.exe", "C:\\Adobe\\Acrobat.exe");
  help_.ShowHelp("indice");
  help_.ShowHelp("");
  const std::string command = std::string("C:\\Adobe\\Acrobat.exe \"") + kPdf + "\"";
  EXPECT_THAT(started(), ElementsAre(command, command));
  EXPECT_THAT(words(), IsEmpty());
  EXPECT_FALSE(machine_.started()[0].waited);
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(HelpOfTheForms, TheFullProductComesBeforeTheFreeReader) {
  registerReader("AcroRd32.exe", "C:\\Adobe\\AcroRd32.exe");
  registerReader("Acrobat.exe", "C:\\Adobe\\Acrobat.exe");
  ShowPdf(program_, "C:\\a.pdf");
  EXPECT_THAT(started(), ElementsAre("C:\\Adobe\\Acrobat.exe \"C:\\a.pdf\""));
}

TEST_F(HelpOfTheForms, TheFreeReaderServesWhereTheFullProductIsMissing) {
  registerReader("AcroRd32.exe", "  C:\\Program Files\\Adobe\\AcroRd32.exe ");
  ShowPdf(program_, "C:\\a b.pdf");
  EXPECT_THAT(started(), ElementsAre("C:\\Program Files\\Adobe\\AcroRd32.exe \"C:\\a b.pdf\""));
}

TEST_F(HelpOfTheForms, WhatIsRegisteredStandsInTheCommandAsItIs) {
  machine_.programs().define("C:\\Program Files\\Adobe\\Acrobat.exe");
  for (const char* const registered : {"\"C:\\Program Files\\Adobe\\Acrobat.exe\"",
                                       "\"C:\\Program Files\\Adobe\\Acrobat.exe\" /n \"%1\"",
                                       "C:\\Program Files\\Adobe\\Acrobat.exe"}) {
    machine_.registry().setText(machine::Hive::LocalMachine, std::string(kAppPaths) + "Acrobat.exe",
                                "", registered);
    ShowPdf(program_, "C:\\a.pdf");
    ASSERT_THAT(started(), testing::Not(IsEmpty()));
    EXPECT_EQ(started().back(), std::string(registered) + " \"C:\\a.pdf\"");
    EXPECT_EQ(machine_.started().back().program, "C:\\Program Files\\Adobe\\Acrobat.exe");
  }
  EXPECT_THAT(started(), SizeIs(3));
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(HelpOfTheForms, AFullProductThatIsRegisteredAsBlanksLeavesTheFreeReader) {
  registerReader("AcroRd32.exe", "C:\\Adobe\\AcroRd32.exe");
  machine_.registry().setText(machine::Hive::LocalMachine, std::string(kAppPaths) + "Acrobat.exe",
                              "", "  ");
  ShowPdf(program_, "C:\\a.pdf");
  EXPECT_THAT(started(), ElementsAre("C:\\Adobe\\AcroRd32.exe \"C:\\a.pdf\""));
}

TEST_F(HelpOfTheForms, WithoutReaderABoxAsksForOne) {
  putPdf();
  help_.ShowHelp("");
  ASSERT_THAT(machine_.boxes(), SizeIs(1));
  EXPECT_EQ(machine_.boxes()[0].title, "TrelvManager");
  EXPECT_EQ(machine_.boxes()[0].text, "Help non visualizzabile! Installare Acrobat Reader");
  EXPECT_EQ(machine_.boxes()[0].icon, BoxIcon::Critical);
  EXPECT_EQ(machine_.boxes()[0].buttons, BoxButtons::Ok);
}

TEST_F(HelpOfTheForms, AReaderThatCannotBeStartedIsReportedAndNoOtherIsTried) {
  registerReader("AcroRd32.exe", "C:\\Adobe\\AcroRd32.exe");
  machine_.registry().setText(machine::Hive::LocalMachine, std::string(kAppPaths) + "Acrobat.exe",
                              "", "C:\\via.exe");
  ShowPdf(program_, "C:\\a.pdf");
  EXPECT_THAT(program_.reportTexts(),
              ElementsAre("Errore in esecuzione programma: C:\\via.exe \"C:\\a.pdf\""));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(HelpOfTheForms, APathThatIsNotRegisteredIsEmpty) {
  EXPECT_EQ(GetAppPath(program_, "Acrobat.exe"), "");
  machine_.registry().setText(machine::Hive::LocalMachine, std::string(kAppPaths) + "Acrobat.exe",
                              "Path", "C:\\Adobe");
  EXPECT_EQ(GetAppPath(program_, "Acrobat.exe"), "") << "the key has no default value";
  EXPECT_THAT(program_.reports(), IsEmpty());
}

// --- Word

TEST_F(HelpOfTheForms, WithoutManualTheBoxNamesTheWordManual) {
  help_.ShowHelp("indice");
  ASSERT_THAT(machine_.boxes(), SizeIs(1));
  EXPECT_EQ(machine_.boxes()[0].title, "Errore");
  EXPECT_EQ(machine_.boxes()[0].text, std::string("File di help: ") + kDocument + " non trovato");
  EXPECT_EQ(machine_.boxes()[0].icon, BoxIcon::Exclamation);
  EXPECT_EQ(machine_.boxes()[0].buttons, BoxButtons::Ok);
}

TEST_F(HelpOfTheForms, TheWordManualIsOpenedShownAndTurnedToItsBookmark) {
  putDocument();
  machine_.automation().installWord({"frmSelectInstall"});
  help_.ShowHelp("frmSelectInstall");
  ASSERT_THAT(words(), SizeIs(1));
  EXPECT_THAT(words()[0]->documents, ElementsAre(kDocument));
  EXPECT_TRUE(words()[0]->visible);
  EXPECT_TRUE(words()[0]->activated);
  EXPECT_EQ(words()[0]->bookmark, "frmSelectInstall");
  EXPECT_FALSE(words()[0]->ended);
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(HelpOfTheForms, WithoutTopicTheManualStaysAtItsBeginning) {
  putDocument();
  machine_.automation().installWord();
  help_.ShowHelp("");
  ASSERT_THAT(words(), SizeIs(1));
  EXPECT_EQ(words()[0]->bookmark, "");
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(HelpOfTheForms, ASecondCallTellsTheFirstWordToQuitBeforeItStartsAnother) {
  putDocument();
  machine_.automation().installWord();
  help_.ShowHelp("");
  help_.ShowHelp("");
  ASSERT_THAT(words(), SizeIs(2));
  EXPECT_TRUE(words()[0]->ended);
  EXPECT_TRUE(words()[0]->released);
  EXPECT_FALSE(words()[1]->ended);
}

TEST_F(HelpOfTheForms, AWordThatTheUserClosedDoesNotKeepTheNextFromStarting) {
  putDocument();
  machine_.automation().installWord();
  help_.ShowHelp("");
  words()[0]->ended = true;
  help_.ShowHelp("");
  ASSERT_THAT(words(), SizeIs(2));
  EXPECT_TRUE(words()[1]->visible);
  EXPECT_THAT(program_.reports(), IsEmpty());
}

TEST_F(HelpOfTheForms, AWordThatRefusesToQuitDoesNotKeepTheNextFromStarting) {
  constexpr SystemCode kBusy = 0x80010001U;
  putDocument();
  machine_.automation().installWord({"indice"});
  help_.ShowHelp("");
  machine_.automation().failNext({kBusy, "", ""});
  help_.ShowHelp("indice");
  ASSERT_THAT(words(), SizeIs(2));
  EXPECT_FALSE(words()[0]->ended);
  EXPECT_TRUE(words()[0]->released);
  EXPECT_EQ(words()[1]->bookmark, "indice");
  EXPECT_THAT(program_.reports(), IsEmpty());
  EXPECT_THAT(program_.lines(), IsEmpty());
}

TEST_F(HelpOfTheForms, AWordThatTheUserClosesWhileTheManualOpensIsReportedAndTheNextOneServes) {
  putDocument();
  machine_.automation().installWord({"indice"});
  machine_.onCall("word.goToBookmark", [this] { words()[0]->ended = true; });
  help_.ShowHelp("indice");
  EXPECT_THAT(program_.reports(), SizeIs(1));
  help_.ShowHelp("indice");
  ASSERT_THAT(words(), SizeIs(2));
  EXPECT_EQ(words()[1]->bookmark, "indice");
  EXPECT_THAT(program_.reports(), SizeIs(1));
}

TEST_F(HelpOfTheForms, WithoutWordTheFailureIsReported) {
  putDocument();
  help_.ShowHelp("");
  ASSERT_THAT(program_.reports(), SizeIs(1));
  expectReport(program_.reports()[0].failure.description());
  EXPECT_NE(program_.reports()[0].failure.description(), "");
  EXPECT_EQ(program_.reports()[0].failure.number(),
            static_cast<std::int32_t>(machine::automation_code::kNotRegistered));
}

TEST_F(HelpOfTheForms, AMissingBookmarkIsReportedAndTheManualStaysOpen) {
  putDocument();
  machine_.automation().installWord({"altro"});
  help_.ShowHelp("indice");
  EXPECT_THAT(program_.reports(), SizeIs(1));
  ASSERT_THAT(words(), SizeIs(1));
  EXPECT_TRUE(words()[0]->visible);
  EXPECT_FALSE(words()[0]->ended);
}

TEST_F(HelpOfTheForms, AWordThatCannotOpenTheManualIsNotLeftBehindUnseen) {
  putDocument();
  machine_.automation().installWord();
  machine_.automation().failNext({5174, "Microsoft Word", "Impossibile trovare il file."});
  help_.ShowHelp("");
  expectReport("Impossibile trovare il file.");
  EXPECT_EQ(program_.reports()[0].failure.number(), 5174);
  EXPECT_EQ(program_.reports()[0].failure.source(), "Microsoft Word");
  ASSERT_THAT(words(), SizeIs(1));
  EXPECT_TRUE(words()[0]->ended);
  EXPECT_TRUE(words()[0]->released);
}

TEST_F(HelpOfTheForms, TheEndOfTheProgramLeavesTheManualOpen) {
  putDocument();
  machine_.automation().installWord();
  {
    Help help(program_);
    help.ShowHelp("");
  }
  ASSERT_THAT(words(), SizeIs(1));
  EXPECT_TRUE(words()[0]->released);
  EXPECT_FALSE(words()[0]->ended);
}

}  // namespace
}  // namespace trelv::tests
