#include <optional>

#include "sim/FailingMachine.h"
#include "support/Matchers.h"
#include "support/RealProgram.h"
#include "support/Refusals.h"

namespace trelv::modError {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kTemp = "C:\\Users\\mario\\Temp";
constexpr const char* kLogFolder = "C:\\Users\\mario\\Temp\\log";
constexpr const char* kLog = "C:\\Users\\mario\\Temp\\log\\TrelvManager.log";
constexpr const char* kOtherLog = "C:\\Lumo\\altro.log";
constexpr const char* kFolderMade =
    "Creazione path avvenuta correttamente:C:\\Users\\mario\\Temp\\log";
constexpr const char* kOldLogDiscarded =
    "Cancellazione file: C:\\Users\\mario\\Temp\\log\\TrelvManager.log effettuata con successo";
/// What stands before a line's text while nobody sets the clock.
const std::string kNow = "16/11/2026 09:30:00 -- ";

/// A workstation on which no start has logged yet.
class FirstLog : public testing::Test {
 protected:
  void write(const std::string& text) { program_.log().WriteLog(text); }
  void writeTo(const std::string& file, const std::string& text) {
    program_.log().WriteLog(text, file);
  }
  RunLogState& state() { return program_.state().runLog; }
  std::vector<std::string> lines() { return program_.logLines(); }
  std::string logText() { return machine_.fileExists(kLog) ? machine_.fileText(kLog) : "(none)"; }
  /// A log of so many bytes from earlier starts.
  static std::string old(std::size_t bytes) { return std::string(bytes, 'x'); }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
};

/// The log folder is there. Where a test shows the window it tells the progress.
class WriteLog : public FirstLog {
 protected:
  WriteLog() { machine_.makeFolders(kLogFolder); }
  void showWindow() { machine_.desktop().activate(window_); }
  std::string progress() const { return window_.text("txtProgress"); }

  const sim::SimFormControls controls_{{"txtProgress", "lblProgress"}, {"prgProgress"}};
  sim::SimFormWindow window_{"frmProva", nullptr, &controls_};
};

// --- A line

TEST_F(WriteLog, LinesHaveDateTimeAndTextAndAreAppendedInOrder) {
  machine_.clock().set({2026, 11, 16, 1, 2, 3});
  write("Gestione ProdTrelv - Inizio procedura.");
  machine_.clock().advance(61);
  write("due");
  EXPECT_EQ(
      "16/11/2026 01:02:03 -- Gestione ProdTrelv - Inizio procedura.\r\n"
      "16/11/2026 01:03:04 -- due\r\n",
      logText());
}

TEST_F(WriteLog, DateFollowsTheUsersLanguage) {
  machine_.locale().setLanguage(sim::Language::English);
  machine_.clock().set({2026, 3, 5, 10, 5, 3});
  write("uno");
  EXPECT_EQ("3/5/2026 10:05:03 AM -- uno\r\n", logText());
}

TEST_F(WriteLog, AtMidnightTheTimeIsLeftOut) {
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
  write("modalità è così");
  EXPECT_EQ(kNow + "modalit\xE0 \xE8 cos\xEC\r\n", logText());
}

TEST_F(WriteLog, LastLineIsRememberedWithoutItsDate) {
  write("uno");
  write("due");
  EXPECT_EQ("due", state().lastLine);
}

TEST_F(WriteLog, EachFurtherLineIsOneAppendAndNothingElse) {
  write("uno");
  EXPECT_EQ(1U, machine_.openings("C:\\").looks);
  EXPECT_EQ(1U, machine_.openings("C:\\").files());
  machine_.callLog().clear();
  for (int i = 0; i < 3; ++i) {
    machine_.clock().advance(1);
    write("riga");
  }
  EXPECT_THAT(machine_.calls(), AllOf(SizeIs(3), Each(std::string("files.append ") + kLog)));
}

// --- Folder and file

TEST_F(FirstLog, IsNamedLikeTheExecutable) {
  machine_.setExecutable("C:\\Lumo\\prova.due.exe");
  write("uno");
  EXPECT_EQ(kLogFolder, state().logFolder);
  EXPECT_EQ("C:\\Users\\mario\\Temp\\log\\prova.due.log", state().logFile);
  EXPECT_TRUE(machine_.fileExists(state().logFile));
}

TEST_F(FirstLog, FolderIsMadeAtTheFirstLineAndToldBeforeIt) {
  write("uno");
  EXPECT_THAT(lines(), ElementsAre(kFolderMade, "uno"));
  EXPECT_THAT(machine_.desktop().shownForms(), IsEmpty());
}

TEST_F(FirstLog, MissingTemporaryFolderIsReportedAndMade) {
  machine_.removeTree(kTemp);
  std::vector<std::string> shown;
  machine_.desktop().onForm("frmError", [&](sim::SimFormWindow& form) {
    shown = {form.text("txtErrDescrizioneInterna"), form.text("txtModulo"),
             form.text("txtProcedura"), form.text("txtErrCodice")};
    EXPECT_FALSE(machine_.folderExists(kTemp)) << "the report comes before the folder is made";
  });
  write("uno");
  EXPECT_THAT(shown, ElementsAre("Verificare percorsi: \r\nvsPathTemp: C:\\Users\\mario\\Temp\\",
                                 "modError", "WriteLog", "0"));
  EXPECT_THAT(lines(), ElementsAre(kFolderMade, "uno"))
      << "the line about the outer folder came before there was a place for it";
}

TEST_F(FirstLog, TemporaryFolderThatCannotBeMadeIsReportedOnceForAllLines) {
  machine_.environment().put("TMP", "Z:\\manca");
  machine_.environment().put("TEMP", "Z:\\manca");
  for (int i = 0; i < 50; ++i) {
    write("riga");
  }
  EXPECT_THAT(machine_.desktop().shownForms(), ElementsAre("frmError"));
}

TEST_F(FirstLog, FolderThatCannotBeMadeLosesTheLineAndEnds) {
  machine_.diskOf(kTemp).denyWriting(kTemp);
  write("uno");
  write("due");
  EXPECT_FALSE(machine_.folderExists(kLogFolder));
  EXPECT_EQ("", state().lastLine);
  machine_.diskOf(kTemp).allow(kTemp);
  write("tre");
  EXPECT_THAT(lines(), ElementsAre(kFolderMade, "tre"));
}

TEST_F(FirstLog, FolderDeletedMeanwhileIsMadeAgain) {
  write("uno");
  machine_.removeTree(kLogFolder);
  write("due");
  EXPECT_THAT(lines(), ElementsAre(kFolderMade, "due"));
}

TEST_F(FirstLog, UnreadableTemporaryFolderLosesTheLineWithoutAReport) {
  machine_.callLog().setInjector(tests::refuse({sim::CallKind::TemporaryFolderQuery}));
  write("uno");
  EXPECT_EQ("", state().lastLine);
  EXPECT_THAT(machine_.desktop().shownForms(), IsEmpty());
  machine_.callLog().setInjector(nullptr);
  write("due");
  EXPECT_EQ("due", lines().back());
}

TEST_F(WriteLog, FolderThatAnotherSetIsKept) {
  state().logFolder = "C:\\Lumo\\registri";
  machine_.makeFolders("C:\\Lumo\\registri");
  write("uno");
  EXPECT_EQ("C:\\Lumo\\registri\\TrelvManager.log", state().logFile);
  EXPECT_THAT(lines(), ElementsAre("uno"));
}

TEST_F(WriteLog, NamedFileIsUsedForThisAndAllLaterLinesAndNeverDiscarded) {
  machine_.putFile(kOtherLog, old(102401));
  writeTo(kOtherLog, "uno");
  write("due");
  EXPECT_EQ(old(102401) + kNow + "uno\r\n" + kNow + "due\r\n", machine_.fileText(kOtherLog));
  EXPECT_FALSE(machine_.fileExists(kLog));
  EXPECT_EQ(kOtherLog, state().logFile);
  EXPECT_EQ(kLogFolder, state().logFolder);
  EXPECT_EQ(1U, machine_.openings("C:\\Users").looks) << "the log folder is there";
}

TEST_F(FirstLog, ThatIsNamedStillMakesTheLogFolder) {
  writeTo(kOtherLog, "uno");
  EXPECT_TRUE(machine_.folderExists(kLogFolder));
  EXPECT_THAT(lines(), ElementsAre(kFolderMade, "uno"));
}

// --- An old log that is too long

TEST_F(WriteLog, OldLogOf102401BytesIsDiscardedWhole) {
  machine_.putFile(kLog, old(102401));
  write("uno");
  EXPECT_THAT(lines(), ElementsAre(kOldLogDiscarded, "uno"));
}

TEST_F(WriteLog, OldLogOf102400BytesIsKept) {
  machine_.putFile(kLog, old(102400));
  write("uno");
  EXPECT_EQ(old(102400) + kNow + "uno\r\n", logText());
}

TEST_F(WriteLog, SizeIsCheckedOncePerProcess) {
  write("uno");
  machine_.putFile(kLog, old(200000));
  write("due");
  EXPECT_EQ(old(200000) + kNow + "due\r\n", logText());
  tests::RealProgram next(machine_);
  next.log().WriteLog("tre");
  EXPECT_THAT(next.logLines(), ElementsAre(kOldLogDiscarded, "tre"));
}

TEST_F(WriteLog, OldLogThatCannotBeDeletedIsContinued) {
  machine_.putFile(kLog, old(102401));
  machine_.diskOf(kLog).setReadOnly(kLog);
  write("uno");
  EXPECT_EQ(old(102401), logText());
  machine_.diskOf(kLog).setReadOnly(kLog, false);
  write("due");
  EXPECT_EQ(old(102401) + kNow + "due\r\n", logText());
}

// --- A line that cannot be written

TEST_F(WriteLog, LineThatCannotBeWrittenIsLostAndTheNextOneIsWritten) {
  showWindow();
  write("uno");
  machine_.diskOf(kLog).holdOpen(kLog, sim::Sharing::None);
  write("due");
  EXPECT_EQ("uno", state().lastLine) << "a failure ends the line's steps";
  EXPECT_EQ("uno", progress());
  machine_.diskOf(kLog).release(kLog);
  machine_.diskOf(kLog).setCapacity(machine_.diskOf(kLog).usedBytes() + 5);
  write("tre");
  machine_.diskOf(kLog).setCapacity(std::nullopt);
  write("quattro");
  EXPECT_THAT(lines(), ElementsAre("uno", "quattro"));
  EXPECT_THAT(machine_.desktop().shownForms(), IsEmpty());
}

TEST_F(WriteLog, ReaderThatSharesDoesNotDisturb) {
  write("uno");
  machine_.diskOf(kLog).holdOpen(kLog, sim::Sharing::ReadWrite);
  write("due");
  EXPECT_THAT(lines(), ElementsAre("uno", "due"));
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

// --- Progress, clicks, the debug box

TEST_F(WriteLog, ProgressComesAfterTheLineIsWritten) {
  showWindow();
  std::string written;
  machine_.desktop().onEvents([&] { written = logText(); });
  write("uno");
  EXPECT_EQ(kNow + "uno\r\n", written);
  EXPECT_EQ("uno", progress());
}

TEST_F(WriteLog, ClickDuringALineMayLogItself) {
  showWindow();
  machine_.desktop().onEvents([&] { write("clic"); });
  write("uno");
  write("due");
  EXPECT_THAT(lines(), ElementsAre("uno", "clic", "due"));
}

TEST_F(WriteLog, DebugSwitchIsOffAndShowsNothing) {
  write("uno");
  EXPECT_FALSE(state().debugSwitch);
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(WriteLog, DebugBoxShowsTheFirst200CharactersAndTheLogAll) {
  state().debugSwitch = true;
  std::string text;
  std::string ansi;
  std::string shown;
  for (int i = 0; i < 150; ++i) {
    text += "èb";
    ansi +=
        "\xE8"
        "b";
    shown += i < 100 ? "èb" : "";
  }
  write(text);
  EXPECT_THAT(
      machine_.boxes(),
      ElementsAre(tests::isBox(machine::BoxIcon::Information,
                               shown + "\r\n\r\nContinuare a visualizzare informazioni di debug?",
                               machine::BoxButtons::OkCancel, "Informazioni di debug")));
  EXPECT_EQ(kNow + ansi + "\r\n", logText());
}

TEST_F(WriteLog, DebugBoxComesAfterTheLineIsWrittenAndBeforeTheProgress) {
  showWindow();
  state().debugSwitch = true;
  std::vector<std::string> seen;
  machine_.desktop().onBox([&](const sim::SimBox&) {
    seen = {logText(), state().lastLine, progress()};
  });
  write("uno");
  EXPECT_THAT(seen, ElementsAre(kNow + "uno\r\n", "uno", ""));
  EXPECT_EQ("uno", progress());
}

TEST_F(WriteLog, CancelTurnsTheDebugSwitchOff) {
  state().debugSwitch = true;
  machine_.desktop().answer({machine::BoxAnswer::Ok, machine::BoxAnswer::Cancel});
  write("uno");
  EXPECT_TRUE(state().debugSwitch);
  write("due");
  EXPECT_FALSE(state().debugSwitch);
  write("tre");
  EXPECT_THAT(machine_.boxes(), SizeIs(2));
}

// --- What a line costs

/// Counts what the log asks for.
class CountingLocale : public sim::SimLocale {
 public:
  std::string shortDate(const machine::LocalTime& time) override {
    ++dates;
    return SimLocale::shortDate(time);
  }
  std::string toAnsi(const std::string& text) override {
    ++conversions;
    return SimLocale::toAnsi(text);
  }

  int dates = 0;
  int conversions = 0;
};

TEST_F(WriteLog, DateIsFormattedOncePerSecondAndEachLineConvertedOnce) {
  machine::Machine& real = machine_.machine();
  CountingLocale locale;
  machine::Machine counted{real.files,       real.profiles,      real.registry, real.processes,
                           real.environment, real.system,        real.clock,    locale,
                           real.versions,    real.configuration, real.support,  real.desktop,
                           real.automation,  real.exclusion};
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
