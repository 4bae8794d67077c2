#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Text.h"
#include "startup/HarmlessReports.h"
#include "support/RealProgram.h"

namespace trelv::modError {
namespace {

using sim::WindowsEdition;
using testing::_;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kLogFolder = "C:\\Users\\mario\\Temp\\log";
constexpr const char* kComponents = "C:\\Users\\mario\\Temp\\log\\componenti.err";
constexpr const char* kUpdate = "C:\\Users\\mario\\Temp\\log\\compupd.err";

constexpr const char* kProgramHeadline =
    "Si è verificato un errore non previsto durante l'esecuzione del programma. Riportare la "
    "segnalazione al servizio di assistenza.";
constexpr const char* kConfigurationHeadline =
    "Si è verificato un errore non previsto durante la gestione del file di configurazione. "
    "Riportare la segnalazione al servizio di assistenza.";

/// One workstation whose log has a line already.
class Reporting {
 public:
  explicit Reporting(WindowsEdition edition = WindowsEdition::XP) {
    machine_.setEdition(edition);
    machine_.makeFolders(kLogFolder);
    program_.log().WriteLog("ultima riga");
    machine_.desktop().onEveryForm("frmError", [this](sim::SimFormWindow& form) {
      texts_.clear();
      for (const char* box :
           {"txtErrLabel", "txtProgetto", "txtModulo", "txtProcedura", "txtErrSource",
            "txtErrCodice", "txtErrDescrizione", "txtErrDescrizioneInterna", "txtErrTrace"}) {
        texts_.push_back(form.text(box));
      }
      form.click("btnOk");
    });
  }

  std::int16_t report(std::int32_t kind, const RuntimeError& failure = RuntimeError()) {
    return program_.log().VisualizzaErrore("modProva", "Procedura", "messaggio", ReportKind{kind},
                                           failure);
  }
  /// Reports the first line of a tool's file; is a form shown?
  bool shows(std::int32_t kind, const std::string& file, const std::string& text) {
    machine_.putFile(file, text);
    const std::size_t before = machine_.desktop().shownForms().size();
    report(kind);
    return machine_.desktop().shownForms().size() > before;
  }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
  /// What the form showed last: headline, program, module, procedure, source, code, description,
  /// message, trace.
  std::vector<std::string> texts_;
};

class ErrorReport : public testing::Test, public Reporting {};

TEST_F(ErrorReport, OfAProgramErrorFillsEveryBox) {
  report(0, RuntimeError(76, "sorgente", "percorso assente"));
  EXPECT_THAT(machine_.desktop().shownForms(), ElementsAre("frmError"));
  EXPECT_THAT(texts_,
              ElementsAre(kProgramHeadline, "TrelvManager", "modProva", "Procedura", "sorgente",
                          "76", "percorso assente", "messaggio", "ultima riga"));
}

TEST_F(ErrorReport, OfAConfigurationFileErrorHasItsOwnHeadline) {
  report(3, RuntimeError(-99, "s", "d"));
  EXPECT_THAT(texts_, ElementsAre(kConfigurationHeadline, _, _, _, _, "-99", "d", "messaggio", _));
}

TEST_F(ErrorReport, GivesTheReporterChoice) {
  EXPECT_EQ(0, report(0));
  program_.state().runLog.reporterChoice = 7;
  for (const std::int32_t kind : {0, 3, 1}) {
    EXPECT_EQ(7, report(kind)) << kind;
  }
}

TEST_F(ErrorReport, WritesNoLogLine) {
  report(0);
  report(3);
  EXPECT_THAT(program_.logLines(), ElementsAre("ultima riga"));
}

TEST_F(ErrorReport, WithoutADesktopShowsNothingAndReturns) {
  machine_.desktop().setPresent(false);
  EXPECT_EQ(0, report(0));
  EXPECT_THAT(texts_, IsEmpty());
  EXPECT_THAT(program_.logLines(), ElementsAre("ultima riga"));
}

TEST_F(ErrorReport, OfAToolShowsTheFirstLineOfItsOwnFile) {
  machine_.putFile(kComponents, "Libreria non trovat\xE0\r\nseconda riga\r\n");
  machine_.putFile(kUpdate, "di compupd");
  report(1, RuntimeError(5, "sorgente", "descrizione"));
  EXPECT_THAT(texts_,
              ElementsAre(kConfigurationHeadline, "TrelvManager", "modProva", "Procedura",
                          "componenti.exe", _, "Libreria non trovatà", "messaggio", "ultima riga"));
  report(2);
  EXPECT_THAT(texts_, ElementsAre(_, _, _, _, "compupd.exe", _, "di compupd", _, _));
}

TEST_F(ErrorReport, WithAnEmptyFirstLineIsShown) {
  EXPECT_TRUE(shows(1, kComponents, "\r\naltro\r\n"));
  EXPECT_THAT(texts_, ElementsAre(_, _, _, _, _, _, "", _, _));
}

TEST_F(ErrorReport, OfAKnownHarmlessLibraryOrTheMarkerFileIsNotShown) {
  for (const std::string& name : SiteNames().harmlessLibraries) {
    EXPECT_FALSE(shows(1, kComponents, "Errore in registrazione di c:\\lumo\\" + name)) << name;
    EXPECT_FALSE(shows(2, kUpdate, "x" + lowerCase(name) + "x"))
        << name << ", without regard to case and inside a word";
  }
  EXPECT_FALSE(shows(1, kComponents, "impossibile copiare dirvuota.txt in c:\\lumo\r\n"));
  EXPECT_THAT(program_.logLines(), ElementsAre("ultima riga"));
  EXPECT_TRUE(shows(1, kComponents, "grave\r\nDIRVUOTA.TXT\r\n")) << "the first line decides";
}

TEST(ErrorReportOfASystemLibrary, IsNotShownOnSystemsThatBringIt) {
  for (const auto& [edition, shown] :
       std::vector<std::pair<WindowsEdition, bool>>{{WindowsEdition::Vista, false},
                                                    {WindowsEdition::Seven, false},
                                                    {WindowsEdition::Win2008, false},
                                                    {WindowsEdition::Win2008R2, false},
                                                    {WindowsEdition::XP, true},
                                                    {WindowsEdition::Win2003, true},
                                                    {WindowsEdition::Win2000Pro, true},
                                                    {WindowsEdition::Win8, true},
                                                    {WindowsEdition::Win10, true}}) {
    for (const char* line : {"errore su msxml4.dll", "DAO360.DLL non registrata"}) {
      EXPECT_EQ(shown, Reporting(edition).shows(1, kComponents, line))
          << line << " on edition " << static_cast<int>(edition);
    }
  }
}

TEST_F(ErrorReport, TraceIsTheLineBeforeThoseOfItsOwnProbes) {
  ASSERT_TRUE(shows(1, kComponents, "errore su msxml4.dll"));
  EXPECT_THAT(program_.logLines(), ElementsAre("ultima riga", "IsWin2008Server = Falso"));
  EXPECT_EQ("ultima riga", texts_.back());
}

TEST_F(ErrorReport, ThatCannotBeReadIsReportedInItsPlace) {
  report(1);
  EXPECT_THAT(machine_.desktop().shownForms(), ElementsAre("frmError"));
  ASSERT_THAT(texts_, ElementsAre(kProgramHeadline, _, "modError", "VisualizzaErroreCustom", _,
                                  "53", HasSubstr(kComponents), _, _));
  const std::string line = "Errore in apertura file di log: " + texts_[6];
  EXPECT_EQ(line, texts_[7]);
  EXPECT_THAT(program_.logLines(), ElementsAre("ultima riga", line));
}

TEST_F(ErrorReport, OfAFileThatCannotBeReadIsReportedWithItsReason) {
  machine_.putFile(kUpdate, "");
  report(2);
  EXPECT_EQ("62", texts_[5]) << "past the end of an empty file";
  EXPECT_THAT(program_.logLines().back(), StartsWith("Errore in apertura file di log: "));

  machine_.putFile(kComponents, "riga");
  machine_.diskOf(kComponents).holdOpen(kComponents, sim::Sharing::None);
  report(1);
  EXPECT_EQ("70", texts_[5]);
}

TEST_F(ErrorReport, OfAnUnknownKindIsACustomOneWithoutAFile) {
  report(8);
  EXPECT_EQ("VisualizzaErroreCustom", texts_[3]);
  EXPECT_THAT(program_.logLines().back(), StartsWith("Errore in apertura file di log: "));
}

TEST_F(ErrorReport, OfALibraryThatTheSiteNamesIsNotShownEither) {
  machine_.setExecutable("C:\\Lumo\\Manager\\TrelvManager.exe");
  machine_.putFile("C:\\Lumo\\Manager\\TrelvManager.ini",
                   "[LibrerieInnocue]\r\nLibreria2=sitoctrl.ocx\r\n");
  EXPECT_FALSE(shows(1, kComponents, "Errore in registrazione di c:\\lumo\\SitoCtrl.ocx"));
  EXPECT_TRUE(shows(1, kComponents, "Errore in registrazione di c:\\lumo\\lumogrid.ocx"))
      << "the name that it takes the place of";
}

}  // namespace
}  // namespace trelv::modError
