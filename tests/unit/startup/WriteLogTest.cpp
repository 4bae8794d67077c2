#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "sim/FailingMachine.h"
#include "support/RealProgram.h"

namespace trelv::modError {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kTemp = "C:\\Users\\mario\\Temp";
constexpr const char* kLogFolder = "C:\\Users\\mario\\Temp\\log";
constexpr const char* kLog = "C:\\Users\\mario\\Temp\\log\\TrelvManager.log";
constexpr const char* kAppend = "files.append C:\\Users\\mario\\Temp\\log\\TrelvManager.log";

class WriteLog : public ::testing::Test {
 protected:
  void write(const std::string& text) { program_.log().WriteLog(text); }
  RunLogState& state() { return program_.state().runLog; }
  std::string logText() { return machine_.fileExists(kLog) ? machine_.fileText(kLog) : "(none)"; }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

TEST_F(WriteLog, LineHasDateTimeAndText) {
  machine_.clock().set({2026, 11, 16, 1, 2, 3});
  write("Gestione ProdTrelv - Inizio procedura.");
  EXPECT_EQ("16/11/2026 01:02:03 -- Gestione ProdTrelv - Inizio procedura.\r\n",
            machine_.fileText(kLog).substr(machine_.fileText(kLog).rfind("16/11/2026")));
}

TEST_F(WriteLog, LinesAreAppendedInOrder) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  machine_.clock().advance(61);
  write("due");
  EXPECT_EQ("16/11/2026 09:30:00 -- uno\r\n16/11/2026 09:31:01 -- due\r\n", logText());
}

TEST_F(WriteLog, DateFollowsTheUsersLanguage) {
  machine_.makeFolders(kLogFolder);
  machine_.locale().setLanguage(sim::Language::English);
  machine_.clock().set({2026, 3, 5, 10, 5, 3});
  write("uno");
  EXPECT_EQ("3/5/2026 10:05:03 AM -- uno\r\n", logText());
}

TEST_F(WriteLog, AtMidnightTheTimeIsLeftOut) {
  machine_.makeFolders(kLogFolder);
  machine_.clock().set({2026, 11, 15, 23, 59, 59});
  write("prima");
  machine_.clock().advance(1);
  write("mezzanotte");
  machine_.clock().advance(1);
  write("dopo");
  EXPECT_EQ(
      "15/11/2026 23:59:59 -- prima\r\n"
      "16/11/2026 -- mezzanotte\r\n"
      "16/11/2026 00:00:01 -- dopo\r\n",
      logText());
}

TEST_F(WriteLog, TextIsWrittenInTheAnsiCodePage) {
  machine_.makeFolders(kLogFolder);
  write("modalità è così");
  EXPECT_EQ("16/11/2026 09:30:00 -- modalit\xE0 \xE8 cos\xEC\r\n", logText());
}

TEST_F(WriteLog, FileIsNamedLikeTheExecutable) {
  machine_.setExecutable("C:\\Lumo\\prova.due.exe");
  write("uno");
  EXPECT_EQ("C:\\Users\\mario\\Temp\\log", state().logFolder);
  EXPECT_EQ("C:\\Users\\mario\\Temp\\log\\prova.due.log", state().logFile);
  EXPECT_TRUE(machine_.fileExists("C:\\Users\\mario\\Temp\\log\\prova.due.log"));
}

TEST_F(WriteLog, LogFolderIsMadeAtTheFirstLineAndToldBeforeIt) {
  write("uno");
  EXPECT_EQ((Lines{"Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log", "uno"}),
            program_.logLines());
  EXPECT_TRUE(machine_.desktop().shownForms().empty());
}

TEST_F(WriteLog, ExistingLogFolderIsNotTold) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  EXPECT_EQ((Lines{"uno"}), program_.logLines());
}

TEST_F(WriteLog, MissingTemporaryFolderIsReportedAndMade) {
  machine_.removeTree(kTemp);
  Lines shown;
  machine_.desktop().onForm("frmError", [&](sim::SimFormWindow& form) {
    shown = {form.text("txtErrDescrizioneInterna"), form.text("txtModulo"),
             form.text("txtProcedura"), form.text("txtErrCodice")};
    EXPECT_FALSE(machine_.folderExists(kTemp)) << "the report comes before the folder is made";
  });
  write("uno");
  EXPECT_EQ((Lines{"Verificare percorsi: \r\nvsPathTemp: C:\\Users\\mario\\Temp\\", "modError",
                   "WriteLog", "0"}),
            shown);
  EXPECT_EQ((Lines{"Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log", "uno"}),
            program_.logLines())
      << "the line about the outer folder came before there was a place for it";
}

TEST_F(WriteLog, FolderThatCannotBeMadeLosesTheLineAndEnds) {
  machine_.diskOf(kTemp).denyWriting(kTemp);
  write("uno");
  write("due");
  EXPECT_FALSE(machine_.folderExists(kLogFolder));
  EXPECT_EQ("", state().lastLine);
  machine_.diskOf(kTemp).allow(kTemp);
  write("tre");
  EXPECT_EQ((Lines{"Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log", "tre"}),
            program_.logLines());
}

TEST_F(WriteLog, FolderDeletedMeanwhileIsMadeAgain) {
  write("uno");
  machine_.removeTree(kLogFolder);
  write("due");
  EXPECT_EQ((Lines{"Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log", "due"}),
            program_.logLines());
}

TEST_F(WriteLog, UnreadableTemporaryFolderLosesTheLineWithoutAReport) {
  machine_.callLog().setInjector([](const sim::SimCall& call) -> std::optional<SystemCode> {
    if (call.kind == sim::CallKind::TemporaryFolderQuery) {
      return system_code::kAccessDenied;
    }
    return std::nullopt;
  });
  write("uno");
  EXPECT_EQ("", state().lastLine);
  EXPECT_TRUE(machine_.desktop().shownForms().empty());
  machine_.callLog().setInjector(nullptr);
  write("due");
  EXPECT_EQ("due", program_.logLines().back());
}

TEST_F(WriteLog, OldLogOf102401BytesIsDiscardedWhole) {
  machine_.putFile(kLog, std::string(102401, 'x'));
  write("uno");
  EXPECT_EQ((Lines{"Cancellazione file: C:\\Users\\mario\\Temp\\log\\TrelvManager.log effettuata "
                   "con successo",
                   "uno"}),
            program_.logLines());
}

TEST_F(WriteLog, OldLogOf102400BytesIsKept) {
  machine_.putFile(kLog, std::string(102400, 'x'));
  write("uno");
  EXPECT_EQ(std::string(102400, 'x') + "16/11/2026 09:30:00 -- uno\r\n", logText());
}

TEST_F(WriteLog, SizeIsCheckedOncePerProcess) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  machine_.putFile(kLog, std::string(200000, 'x'));
  write("due");
  EXPECT_EQ(200000U + 28U, logText().size());
  tests::RealProgram next(machine_);
  next.log().WriteLog("tre");
  EXPECT_EQ((Lines{"Cancellazione file: C:\\Users\\mario\\Temp\\log\\TrelvManager.log effettuata "
                   "con successo",
                   "tre"}),
            next.logLines());
}

TEST_F(WriteLog, OldLogThatCannotBeDeletedIsContinued) {
  machine_.putFile(kLog, std::string(102401, 'x'));
  machine_.diskOf(kLog).setReadOnly(kLog);
  write("uno");
  EXPECT_EQ(102401U, logText().size());
  machine_.diskOf(kLog).setReadOnly(kLog, false);
  write("due");
  EXPECT_EQ(std::string(102401, 'x') + "16/11/2026 09:30:00 -- due\r\n", logText());
}

TEST_F(WriteLog, NamedFileIsUsedForThisAndAllLaterLines) {
  machine_.makeFolders(kLogFolder);
  program_.log().WriteLog("uno", "C:\\Lumo\\altro.log");
  write("due");
  EXPECT_EQ("16/11/2026 09:30:00 -- uno\r\n16/11/2026 09:30:00 -- due\r\n",
            machine_.fileText("C:\\Lumo\\altro.log"));
  EXPECT_FALSE(machine_.fileExists(kLog));
  EXPECT_EQ("C:\\Lumo\\altro.log", state().logFile);
  EXPECT_EQ(kLogFolder, state().logFolder);
}

TEST_F(WriteLog, NamedFileIsNeverDiscarded) {
  machine_.makeFolders(kLogFolder);
  machine_.putFile("C:\\Lumo\\altro.log", std::string(102401, 'x'));
  program_.log().WriteLog("uno", "C:\\Lumo\\altro.log");
  EXPECT_EQ(102401U + 28U, machine_.fileText("C:\\Lumo\\altro.log").size());
}

TEST_F(WriteLog, NamedFileAtTheFirstLineStillMakesTheLogFolder) {
  program_.log().WriteLog("uno", "C:\\Lumo\\altro.log");
  EXPECT_TRUE(machine_.folderExists(kLogFolder));
  EXPECT_EQ((Lines{"Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log", "uno"}),
            program_.logLines());
}

TEST_F(WriteLog, LogFolderThatAnotherSetIsKept) {
  state().logFolder = "C:\\Lumo\\registri";
  machine_.makeFolders("C:\\Lumo\\registri");
  write("uno");
  EXPECT_EQ("C:\\Lumo\\registri\\TrelvManager.log", state().logFile);
  EXPECT_EQ((Lines{"uno"}), program_.logLines());
}

TEST_F(WriteLog, EachFurtherLineIsOneAppendAndNothingElse) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  const std::vector<std::string> first = machine_.calls();
  EXPECT_EQ(1U, machine_.openings("C:\\").looks);
  EXPECT_EQ(1U, machine_.openings("C:\\").files());
  for (int i = 0; i < 3; ++i) {
    machine_.clock().advance(1);
    write("riga");
  }
  const std::vector<std::string> all = machine_.calls();
  EXPECT_EQ((Lines{kAppend, kAppend, kAppend}),
            Lines(all.begin() + static_cast<std::ptrdiff_t>(first.size()), all.end()));
}

TEST_F(WriteLog, LastLineIsRememberedWithoutItsDate) {
  write("uno");
  write("due");
  EXPECT_EQ("due", state().lastLine);
}

TEST_F(WriteLog, LineThatCannotBeWrittenIsLostAndTheNextOneIsWritten) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  machine_.diskOf(kLog).holdOpen(kLog, sim::Sharing::None);
  write("due");
  EXPECT_EQ("uno", state().lastLine) << "a failure ends the line's steps";
  machine_.diskOf(kLog).release(kLog);
  write("tre");
  EXPECT_EQ((Lines{"uno", "tre"}), program_.logLines());
  EXPECT_TRUE(machine_.desktop().shownForms().empty());
}

TEST_F(WriteLog, FullDiskLosesTheLine) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  machine_.diskOf(kLog).setCapacity(machine_.diskOf(kLog).usedBytes() + 5);
  write("due");
  machine_.diskOf(kLog).setCapacity(std::nullopt);
  write("tre");
  EXPECT_EQ((Lines{"uno", "tre"}), program_.logLines());
}

TEST_F(WriteLog, LostLineIsNotShownInTheProgress) {
  const sim::SimFormControls controls{{"txtProgress", "lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine_.makeFolders(kLogFolder);
  machine_.desktop().activate(window);
  write("uno");
  machine_.diskOf(kLog).holdOpen(kLog, sim::Sharing::None);
  write("due");
  EXPECT_EQ("uno", window.text("txtProgress"));
}

TEST_F(WriteLog, ReaderThatSharesDoesNotDisturb) {
  machine_.makeFolders(kLogFolder);
  write("uno");
  machine_.diskOf(kLog).holdOpen(kLog, sim::Sharing::ReadWrite);
  write("due");
  EXPECT_EQ((Lines{"uno", "due"}), program_.logLines());
}

TEST_F(WriteLog, ProgressComesAfterTheLineIsWritten) {
  const sim::SimFormControls controls{{"txtProgress", "lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine_.makeFolders(kLogFolder);
  machine_.desktop().activate(window);
  std::string written;
  machine_.desktop().onEvents([&] { written = logText(); });
  write("uno");
  EXPECT_EQ("16/11/2026 09:30:00 -- uno\r\n", written);
  EXPECT_EQ("uno", window.text("txtProgress"));
}

TEST_F(WriteLog, ClickDuringALineMayLogItself) {
  const sim::SimFormControls controls{{"txtProgress", "lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine_.makeFolders(kLogFolder);
  machine_.desktop().activate(window);
  machine_.desktop().onEvents([&] { write("clic"); });
  write("uno");
  write("due");
  EXPECT_EQ((Lines{"uno", "clic", "due"}), program_.logLines());
}

TEST_F(WriteLog, DebugSwitchIsOffAndShowsNothing) {
  write("uno");
  EXPECT_FALSE(state().debugSwitch);
  EXPECT_TRUE(machine_.boxes().empty());
}

TEST_F(WriteLog, DebugBoxShowsTheFirst200CharactersAndTheLogAll) {
  machine_.makeFolders(kLogFolder);
  state().debugSwitch = true;
  std::string text;
  std::string ansi;
  for (int i = 0; i < 300; ++i) {
    text += i % 2 == 0 ? "è" : "b";
    ansi += i % 2 == 0 ? "\xE8" : "b";
  }
  write(text);
  ASSERT_EQ(1U, machine_.boxes().size());
  const sim::SimBox& box = machine_.boxes().front();
  std::string shown;
  for (int i = 0; i < 100; ++i) {
    shown += "èb";
  }
  EXPECT_EQ(shown + "\r\n\r\nContinuare a visualizzare informazioni di debug?", box.text);
  EXPECT_EQ("Informazioni di debug", box.title);
  EXPECT_EQ(machine::BoxIcon::Information, box.icon);
  EXPECT_EQ(machine::BoxButtons::OkCancel, box.buttons);
  EXPECT_EQ("16/11/2026 09:30:00 -- " + ansi + "\r\n", logText());
}

TEST_F(WriteLog, DebugBoxComesAfterTheLineIsWrittenAndBeforeTheProgress) {
  const sim::SimFormControls controls{{"txtProgress", "lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window("frmProva", nullptr, &controls);
  machine_.makeFolders(kLogFolder);
  machine_.desktop().activate(window);
  state().debugSwitch = true;
  Lines seen;
  machine_.desktop().onBox([&](const sim::SimBox&) {
    seen = {logText(), state().lastLine, window.text("txtProgress")};
  });
  write("uno");
  EXPECT_EQ((Lines{"16/11/2026 09:30:00 -- uno\r\n", "uno", ""}), seen);
  EXPECT_EQ("uno", window.text("txtProgress"));
}

TEST_F(WriteLog, CancelTurnsTheDebugSwitchOff) {
  machine_.makeFolders(kLogFolder);
  state().debugSwitch = true;
  machine_.desktop().answer({machine::BoxAnswer::Ok, machine::BoxAnswer::Cancel});
  write("uno");
  EXPECT_TRUE(state().debugSwitch);
  write("due");
  EXPECT_FALSE(state().debugSwitch);
  write("tre");
  EXPECT_EQ(2U, machine_.boxes().size());
}

// The old log is too long and the temporary folder is there, or both folders are missing: whichever
// call fails, once or from then on, the caller goes on and the log works again afterwards.
TEST(WriteLogUnderFailures, NoFailingCallReachesTheCaller) {
  for (const bool missing : {false, true}) {
    for (const auto span : {sim::FailureSpan::Once, sim::FailureSpan::FromThenOn}) {
      bool reached = true;
      for (std::size_t number = 1; reached; ++number) {
        ASSERT_LT(number, 100U);
        sim::SimMachine machine;
        if (missing) {
          machine.removeTree(kTemp);
        } else {
          machine.putFile(kLog, std::string(102401, 'x'));
        }
        tests::RealProgram program(machine);
        {
          sim::FailingMachine failing(machine, number, span);
          EXPECT_NO_THROW(program.log().WriteLog("uno"));
          EXPECT_NO_THROW(program.log().WriteLog("due"));
          reached = failing.reached();
        }
        program.log().WriteLog("tre");
        EXPECT_EQ("tre", program.logLines().back()) << number;
        EXPECT_EQ("tre", program.state().runLog.lastLine) << number;
      }
    }
  }
}

TEST(RunLogWithoutProgram, LosesItsLines) {
  LogAndReporter log;
  log.WriteLog("uno");
  log.WriteLog("due", "C:\\x.log");
  EXPECT_EQ(0, log.VisualizzaErrore("m", "p", "t", ReportKind::ProgramError, RuntimeError()));
  EXPECT_EQ(0, log.VisualizzaErrore("m", "p", "t", ReportKind::ComponentsTool, RuntimeError()));
}

/// Counts what the log asks of the locale.
class CountingLocale : public machine::Locale {
 public:
  explicit CountingLocale(machine::Locale& inner) : inner_(inner) {}
  std::string shortDate(const machine::LocalTime& time) override {
    ++dates;
    return inner_.shortDate(time);
  }
  std::string longTime(const machine::LocalTime& time) override { return inner_.longTime(time); }
  std::string monthName(int month) override { return inner_.monthName(month); }
  std::string truthText(bool value) override { return inner_.truthText(value); }
  std::string toAnsi(const std::string& text) override {
    ++conversions;
    return inner_.toAnsi(text);
  }
  std::string fromAnsi(const std::string& bytes) override { return inner_.fromAnsi(bytes); }

  int dates = 0;
  int conversions = 0;

 private:
  machine::Locale& inner_;
};

TEST_F(WriteLog, DateIsFormattedOncePerSecondAndEachLineConvertedOnce) {
  machine_.makeFolders(kLogFolder);
  machine::Machine& real = machine_.machine();
  CountingLocale locale(real.locale);
  machine::Machine counted{real.files,       real.profiles,      real.registry, real.processes,
                           real.environment, real.system,        real.clock,    locale,
                           real.versions,    real.configuration, real.support,  real.desktop,
                           real.automation};
  LogAndReporter log;
  Program& whole = program_;
  Program program{counted, whole.state, log, log, whole.fileSystem, whole.configurationFiles};
  log.attach(program);
  log.WriteLog("uno");
  log.WriteLog("due");
  EXPECT_EQ(1, locale.dates);
  EXPECT_EQ(2, locale.conversions);
  machine_.clock().advance(1);
  log.WriteLog("tre");
  EXPECT_EQ(2, locale.dates);
  EXPECT_EQ(3, locale.conversions);
}

}  // namespace
}  // namespace trelv::modError
