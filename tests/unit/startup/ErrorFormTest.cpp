#include "startup/frmError.h"
#include "support/Matchers.h"
#include "support/RealProgram.h"

namespace trelv {
namespace {

using machine::BoxIcon;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::isBox;

constexpr const char* kLog = "C:\\Lumo\\prova.log";
constexpr const char* kNotepad = "C:\\WINDOWS\\system32\\notepad.exe";
const std::vector<std::string> kTexts{
    "txtErrLabel",  "txtProgetto",  "txtModulo",         "txtProcedura",
    "txtErrSource", "txtErrCodice", "txtErrDescrizione", "txtErrDescrizioneInterna",
    "txtErrTrace"};

class ErrorForm : public testing::Test {
 protected:
  ErrorForm() {
    machine_.programs().define(kNotepad);
    std::vector<std::string> controls = kTexts;
    controls.insert(controls.end(), {"picError", "btnOk", "cmdDettagli"});
    machine_.desktop().declareForm("frmError", {controls, {}});
  }

  /// Shows the form; `user` is what is done in it. Is it open afterwards?
  bool isOpenAfter(const sim::SimDesktop::UserAction& user) {
    bool open = true;
    machine_.desktop().onForm("frmError", [&](sim::SimFormWindow& form) {
      user(form);
      open = form.isOpen();
    });
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
    return open;
  }
  static void pressDetails(sim::SimFormWindow& form) { form.click("cmdDettagli"); }
  void putLog() {
    machine_.putFile(kLog, "riga\r\n");
    program_.state().runLog.logFile = kLog;
  }
  /// Its title when it is loaded at this time.
  std::string titleAt(const machine::LocalTime& time) {
    machine_.clock().set(time);
    frmError form(program_, ErrorRecord());
    sim::SimFormWindow window("frmError");
    window.setTitle("Errore");
    form.loaded(window);
    return window.title();
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(ErrorForm, FillsItsBoxes) {
  std::vector<std::string> texts;
  isOpenAfter([&](sim::SimFormWindow& form) {
    for (const std::string& control : kTexts) {
      texts.push_back(form.text(control));
    }
  });
  EXPECT_THAT(texts, ElementsAre("intestazione", "progetto", "modulo", "procedura", "sorgente",
                                 "12", "descrizione", "interna", "traccia"));
}

TEST_F(ErrorForm, TitleIsTheDesignTitleAndTheDateInTheUsersLanguage) {
  EXPECT_EQ("Errore - 05 marzo 2009  09:07", titleAt({2009, 3, 5, 9, 7, 0}));
  machine_.locale().setLanguage(sim::Language::English);
  EXPECT_EQ("Errore - 24 December 2026  00:00", titleAt({2026, 12, 24, 0, 0, 0}));
}

TEST_F(ErrorForm, OkAndCloseBoxCloseIt) {
  EXPECT_FALSE(isOpenAfter([](sim::SimFormWindow& form) { form.click("btnOk"); }));
  EXPECT_FALSE(isOpenAfter([](sim::SimFormWindow& form) { form.closeBox(); }));
  EXPECT_EQ(0U, machine_.desktop().forcedCloses());
}

TEST_F(ErrorForm, DetailsOpenTheLogWithoutWaitingAndLeaveTheFormOpen) {
  putLog();
  EXPECT_TRUE(isOpenAfter(pressDetails));
  ASSERT_EQ(1U, machine_.started().size());
  EXPECT_EQ("notepad.exe C:\\Lumo\\prova.log", machine_.started().front().commandLine);
  EXPECT_FALSE(machine_.started().front().waited);
  EXPECT_TRUE(machine_.started().front().visible);
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(ErrorForm, DetailsWarnWhenTheLogIsMissingOrNotKnown) {
  isOpenAfter(pressDetails);
  program_.state().runLog.logFile = kLog;
  isOpenAfter(pressDetails);
  EXPECT_THAT(machine_.boxes(),
              ElementsAre(isBox(BoxIcon::Exclamation, "File di log non disponibile"),
                          isBox(BoxIcon::Exclamation,
                                "File di log: 'C:\\Lumo\\prova.log' non disponibile")));
  EXPECT_THAT(machine_.started(), IsEmpty());
}

TEST_F(ErrorForm, NotepadThatCannotBeStartedIsReportedOnASecondForm) {
  putLog();
  machine_.programs().failStart(kNotepad, system_code::kAccessDenied);
  std::string inner;
  machine_.desktop().onForm("frmError", pressDetails);
  machine_.desktop().onForm(
      "frmError", [&](sim::SimFormWindow& form) { inner = form.text("txtErrDescrizioneInterna"); });
  program_.log().VisualizzaErrore("m", "p", "t", ReportKind::ProgramError, RuntimeError());
  EXPECT_EQ(2U, machine_.desktop().shownForms().size());
  EXPECT_EQ("Errore in esecuzione programma: notepad.exe C:\\Lumo\\prova.log", inner);
}

}  // namespace
}  // namespace trelv
