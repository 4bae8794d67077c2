#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "startup/frmError.h"
#include "support/RealProgram.h"

namespace trelv {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kLog = "C:\\Lumo\\prova.log";

class ErrorForm : public ::testing::Test {
 protected:
  ErrorForm() {
    machine_.programs().define("C:\\WINDOWS\\system32\\notepad.exe");
    machine_.desktop().declareForm(
        "frmError", {{"txtErrLabel", "txtProgetto", "txtModulo", "txtProcedura", "txtErrSource",
                      "txtErrCodice", "txtErrDescrizione", "txtErrDescrizioneInterna",
                      "txtErrTrace", "picError", "btnOk", "cmdDettagli"},
                     {}});
  }

  /// Shows the form; `user` is what is done in it.
  void show(sim::SimDesktop::UserAction user) {
    machine_.desktop().onForm("frmError", std::move(user));
    frmError form(program_, ErrorRecord{.label = "intestazione",
                                        .project = "progetto",
                                        .module = "modulo",
                                        .procedure = "procedura",
                                        .source = "sorgente",
                                        .code = "12",
                                        .description = "descrizione",
                                        .internalDescription = "interna",
                                        .trace = "traccia"});
    machine_.desktop().showModal(form);
  }
  void pressDetails() {
    show([](sim::SimFormWindow& form) { form.click("cmdDettagli"); });
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(ErrorForm, FillsItsBoxes) {
  Lines texts;
  show([&](sim::SimFormWindow& form) {
    texts = {form.text("txtErrLabel"),       form.text("txtProgetto"),
             form.text("txtModulo"),         form.text("txtProcedura"),
             form.text("txtErrSource"),      form.text("txtErrCodice"),
             form.text("txtErrDescrizione"), form.text("txtErrDescrizioneInterna"),
             form.text("txtErrTrace")};
  });
  EXPECT_EQ((Lines{"intestazione", "progetto", "modulo", "procedura", "sorgente", "12",
                   "descrizione", "interna", "traccia"}),
            texts);
}

TEST_F(ErrorForm, TitleIsTheDesignTitleAndTheDateInTheUsersLanguage) {
  machine_.clock().set({2009, 3, 5, 9, 7, 0});
  frmError form(program_, ErrorRecord());
  sim::SimFormWindow window("frmError");
  window.setTitle("Errore");
  form.loaded(window);
  EXPECT_EQ("Errore - 05 marzo 2009  09:07", window.title());

  machine_.locale().setLanguage(sim::Language::English);
  machine_.clock().set({2026, 12, 24, 0, 0, 0});
  sim::SimFormWindow english("frmError");
  english.setTitle("Errore");
  form.loaded(english);
  EXPECT_EQ("Errore - 24 December 2026  00:00", english.title());
}

TEST_F(ErrorForm, OkCloses) {
  bool open = true;
  show([&](sim::SimFormWindow& form) {
    form.click("btnOk");
    open = form.isOpen();
  });
  EXPECT_FALSE(open);
}

TEST_F(ErrorForm, CloseBoxCloses) {
  bool open = true;
  show([&](sim::SimFormWindow& form) {
    form.closeBox();
    open = form.isOpen();
  });
  EXPECT_FALSE(open);
  EXPECT_EQ(0U, machine_.desktop().forcedCloses());
}

TEST_F(ErrorForm, DetailsOpenTheLogWithoutWaitingAndLeaveTheFormOpen) {
  machine_.putFile(kLog, "riga\r\n");
  program_.state().runLog.logFile = kLog;
  bool open = false;
  show([&](sim::SimFormWindow& form) {
    form.click("cmdDettagli");
    open = form.isOpen();
  });
  EXPECT_TRUE(open);
  ASSERT_EQ(1U, machine_.started().size());
  EXPECT_EQ("notepad.exe C:\\Lumo\\prova.log", machine_.started().front().commandLine);
  EXPECT_FALSE(machine_.started().front().waited);
  EXPECT_TRUE(machine_.started().front().visible);
  EXPECT_TRUE(machine_.boxes().empty());
}

TEST_F(ErrorForm, DetailsWarnWhenTheLogIsMissing) {
  program_.state().runLog.logFile = kLog;
  pressDetails();
  ASSERT_EQ(1U, machine_.boxes().size());
  const sim::SimBox& box = machine_.boxes().front();
  EXPECT_EQ("File di log: 'C:\\Lumo\\prova.log' non disponibile", box.text);
  EXPECT_EQ(machine::BoxIcon::Exclamation, box.icon);
  EXPECT_EQ(machine::BoxButtons::Ok, box.buttons);
  EXPECT_EQ("TrelvManager", box.title);
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(ErrorForm, DetailsWarnWhenNoLogIsKnown) {
  pressDetails();
  ASSERT_EQ(1U, machine_.boxes().size());
  EXPECT_EQ("File di log non disponibile", machine_.boxes().front().text);
  EXPECT_EQ(machine::BoxIcon::Exclamation, machine_.boxes().front().icon);
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(ErrorForm, NotepadThatCannotBeStartedIsReportedOnASecondForm) {
  machine_.putFile(kLog, "riga\r\n");
  program_.state().runLog.logFile = kLog;
  machine_.programs().failStart("C:\\WINDOWS\\system32\\notepad.exe", system_code::kAccessDenied);
  std::string inner;
  machine_.desktop().onForm("frmError",
                            [](sim::SimFormWindow& form) { form.click("cmdDettagli"); });
  machine_.desktop().onForm(
      "frmError", [&](sim::SimFormWindow& form) { inner = form.text("txtErrDescrizioneInterna"); });
  program_.log().VisualizzaErrore("m", "p", "t", ReportKind::ProgramError, RuntimeError());
  EXPECT_EQ(2U, machine_.desktop().shownForms().size());
  EXPECT_EQ("Errore in esecuzione programma: notepad.exe C:\\Lumo\\prova.log", inner);
}

}  // namespace
}  // namespace trelv
