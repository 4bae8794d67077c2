#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "base/Text.h"
#include "startup/HarmlessReports.h"
#include "support/RealProgram.h"

namespace trelv::modError {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kLogFolder = "C:\\Users\\mario\\Temp\\log";
constexpr const char* kComponents = "C:\\Users\\mario\\Temp\\log\\componenti.err";
constexpr const char* kUpdate = "C:\\Users\\mario\\Temp\\log\\compupd.err";

constexpr const char* kProgramHeadline =
    "Si è verificato un errore non previsto durante l'esecuzione del programma. Riportare la "
    "segnalazione al servizio di assistenza.";
constexpr const char* kConfigurationHeadline =
    "Si è verificato un errore non previsto durante la gestione del file di configurazione. "
    "Riportare la segnalazione al servizio di assistenza.";

class ErrorReport : public ::testing::Test {
 protected:
  ErrorReport() {
    machine_.makeFolders(kLogFolder);
    program_.log().WriteLog("ultima riga");
    machine_.desktop().onEveryForm("frmError", [this](sim::SimFormWindow& form) {
      for (const char* box :
           {"txtErrLabel", "txtProgetto", "txtModulo", "txtProcedura", "txtErrSource",
            "txtErrCodice", "txtErrDescrizione", "txtErrDescrizioneInterna", "txtErrTrace"}) {
        boxes_[box] = form.text(box);
      }
      form.click("btnOk");
    });
  }

  std::int16_t report(std::int32_t kind, const RuntimeError& failure = RuntimeError()) {
    return program_.log().VisualizzaErrore("modProva", "Procedura", "messaggio", ReportKind{kind},
                                           failure);
  }
  bool shows(std::int32_t kind) {
    const std::size_t before = formsShown();
    report(kind);
    return formsShown() > before;
  }
  std::size_t formsShown() { return machine_.desktop().shownForms().size(); }

  sim::SimMachine machine_;
  tests::RealProgram program_{machine_};
  std::map<std::string, std::string> boxes_;
};

TEST_F(ErrorReport, OfAProgramErrorFillsEveryBox) {
  report(0, RuntimeError(76, "sorgente", "percorso assente"));
  EXPECT_EQ((Lines{"frmError"}), machine_.desktop().shownForms());
  EXPECT_EQ(kProgramHeadline, boxes_["txtErrLabel"]);
  EXPECT_EQ("TrelvManager", boxes_["txtProgetto"]);
  EXPECT_EQ("modProva", boxes_["txtModulo"]);
  EXPECT_EQ("Procedura", boxes_["txtProcedura"]);
  EXPECT_EQ("sorgente", boxes_["txtErrSource"]);
  EXPECT_EQ("76", boxes_["txtErrCodice"]);
  EXPECT_EQ("percorso assente", boxes_["txtErrDescrizione"]);
  EXPECT_EQ("messaggio", boxes_["txtErrDescrizioneInterna"]);
  EXPECT_EQ("ultima riga", boxes_["txtErrTrace"]);
}

TEST_F(ErrorReport, OfAConfigurationFileErrorHasItsOwnHeadline) {
  report(3, RuntimeError(-99, "s", "d"));
  EXPECT_EQ(kConfigurationHeadline, boxes_["txtErrLabel"]);
  EXPECT_EQ("-99", boxes_["txtErrCodice"]);
  EXPECT_EQ("d", boxes_["txtErrDescrizione"]);
  EXPECT_EQ("messaggio", boxes_["txtErrDescrizioneInterna"]);
}

TEST_F(ErrorReport, GivesTheReporterChoice) {
  EXPECT_EQ(0, report(0));
  program_.state().runLog.reporterChoice = 7;
  EXPECT_EQ(7, report(0));
  EXPECT_EQ(7, report(3));
  EXPECT_EQ(7, report(1));
}

TEST_F(ErrorReport, WritesNoLogLine) {
  report(0);
  report(3);
  EXPECT_EQ((Lines{"ultima riga"}), program_.logLines());
}

TEST_F(ErrorReport, WithoutADesktopShowsNothingAndReturns) {
  machine_.desktop().setPresent(false);
  EXPECT_EQ(0, report(0));
  EXPECT_TRUE(boxes_.empty());
  EXPECT_EQ((Lines{"ultima riga"}), program_.logLines());
}

TEST_F(ErrorReport, OfTheComponentsToolShowsTheFirstLineOfItsFile) {
  machine_.putFile(kComponents, "Libreria non trovat\xE0\r\nseconda riga\r\n");
  report(1, RuntimeError(5, "sorgente", "descrizione"));
  EXPECT_EQ(kConfigurationHeadline, boxes_["txtErrLabel"]);
  EXPECT_EQ("TrelvManager", boxes_["txtProgetto"]);
  EXPECT_EQ("modProva", boxes_["txtModulo"]);
  EXPECT_EQ("Procedura", boxes_["txtProcedura"]);
  EXPECT_EQ("componenti.exe", boxes_["txtErrSource"]);
  EXPECT_EQ("Libreria non trovatà", boxes_["txtErrDescrizione"]);
  EXPECT_EQ("messaggio", boxes_["txtErrDescrizioneInterna"]);
  EXPECT_EQ("ultima riga", boxes_["txtErrTrace"]);
}

TEST_F(ErrorReport, OfTheUpdateToolReadsItsOwnFile) {
  machine_.putFile(kComponents, "di componenti\r\n");
  machine_.putFile(kUpdate, "di compupd");
  report(2);
  EXPECT_EQ("compupd.exe", boxes_["txtErrSource"]);
  EXPECT_EQ("di compupd", boxes_["txtErrDescrizione"]);
}

TEST_F(ErrorReport, WithAnEmptyFirstLineIsShown) {
  machine_.putFile(kComponents, "\r\naltro\r\n");
  report(1);
  EXPECT_EQ(1U, formsShown());
  EXPECT_EQ("", boxes_["txtErrDescrizione"]);
}

TEST_F(ErrorReport, OfAKnownHarmlessLibraryIsNotShown) {
  for (const std::string_view name : harmlessReports::kHostLibraries) {
    machine_.putFile(kComponents, "Errore in registrazione di c:\\lumo\\" + std::string(name));
    EXPECT_FALSE(shows(1)) << name;
    machine_.putFile(kUpdate, "x" + lowerCase(name) + "x");
    EXPECT_FALSE(shows(2)) << name << ", without regard to case and inside a word";
  }
  EXPECT_EQ((Lines{"ultima riga"}), program_.logLines());
}

TEST_F(ErrorReport, OfTheMarkerFileIsNotShown) {
  machine_.putFile(kComponents, "impossibile copiare dirvuota.txt in c:\\lumo\r\n");
  EXPECT_FALSE(shows(1));
}

TEST_F(ErrorReport, OnlyTheFirstLineDecides) {
  machine_.putFile(kComponents, "grave\r\nDIRVUOTA.TXT\r\n");
  EXPECT_TRUE(shows(1));
}

TEST_F(ErrorReport, OfASystemLibraryIsNotShownOnSystemsThatBringIt) {
  struct Case {
    sim::WindowsEdition edition;
    bool shown;
  };
  using sim::WindowsEdition;
  for (const Case& known :
       {Case{WindowsEdition::Vista, false}, Case{WindowsEdition::Seven, false},
        Case{WindowsEdition::Win2008, false}, Case{WindowsEdition::Win2008R2, false},
        Case{WindowsEdition::XP, true}, Case{WindowsEdition::Win2003, true},
        Case{WindowsEdition::Win2000Pro, true}, Case{WindowsEdition::Win8, true},
        Case{WindowsEdition::Win10, true}}) {
    sim::SimMachine machine;
    machine.setEdition(known.edition);
    tests::RealProgram program(machine);
    machine.makeFolders(kLogFolder);
    program.log().WriteLog("riga");
    for (const char* line : {"errore su msxml4.dll", "DAO360.DLL non registrata"}) {
      machine.putFile(kComponents, line);
      const std::size_t before = machine.desktop().shownForms().size();
      program.log().VisualizzaErrore("m", "p", "t", ReportKind::ComponentsTool, RuntimeError());
      EXPECT_EQ(known.shown ? 1U : 0U, machine.desktop().shownForms().size() - before)
          << line << " on edition " << static_cast<int>(known.edition);
    }
  }
}

TEST_F(ErrorReport, TraceIsTheLineBeforeThoseOfItsOwnProbes) {
  machine_.putFile(kComponents, "errore su msxml4.dll");
  report(1);
  ASSERT_EQ(1U, formsShown());
  EXPECT_EQ((Lines{"ultima riga", "IsWin2008Server = Falso"}), program_.logLines());
  EXPECT_EQ("ultima riga", boxes_["txtErrTrace"]);
}

TEST_F(ErrorReport, ThatCannotBeReadIsReportedInItsPlace) {
  report(1);
  EXPECT_EQ((Lines{"frmError"}), machine_.desktop().shownForms());
  EXPECT_EQ(kProgramHeadline, boxes_["txtErrLabel"]);
  EXPECT_EQ("modError", boxes_["txtModulo"]);
  EXPECT_EQ("VisualizzaErroreCustom", boxes_["txtProcedura"]);
  EXPECT_EQ("53", boxes_["txtErrCodice"]);
  const std::string& description = boxes_["txtErrDescrizione"];
  EXPECT_NE(std::string::npos, description.find(kComponents));
  EXPECT_EQ("Errore in apertura file di log: " + description, boxes_["txtErrDescrizioneInterna"]);
  EXPECT_EQ((Lines{"ultima riga", "Errore in apertura file di log: " + description}),
            program_.logLines());
}

TEST_F(ErrorReport, OfAnEmptyFileIsReportedAsPastItsEnd) {
  machine_.putFile(kUpdate, "");
  report(2);
  EXPECT_EQ("62", boxes_["txtErrCodice"]);
  EXPECT_EQ(0U, program_.logLines().back().find("Errore in apertura file di log: "));
}

TEST_F(ErrorReport, OfAFileThatIsHeldOpenIsReported) {
  machine_.putFile(kComponents, "riga");
  machine_.diskOf(kComponents).holdOpen(kComponents, sim::Sharing::None);
  report(1);
  EXPECT_EQ("70", boxes_["txtErrCodice"]);
}

TEST_F(ErrorReport, OfAnUnknownKindIsACustomOneWithoutAFile) {
  report(8);
  EXPECT_EQ("VisualizzaErroreCustom", boxes_["txtProcedura"]);
  EXPECT_EQ(0U, program_.logLines().back().find("Errore in apertura file di log: "));
}

TEST(HarmlessReports, TableHoldsSixNamesInUpperCase) {
  EXPECT_EQ(6U, harmlessReports::kHostLibraries.size());
  for (const std::string_view name : harmlessReports::kHostLibraries) {
    EXPECT_FALSE(name.empty());
    EXPECT_EQ(upperCase(name), name);
  }
}

}  // namespace
}  // namespace trelv::modError
