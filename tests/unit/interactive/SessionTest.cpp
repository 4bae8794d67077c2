#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Golden.h"
#include "support/Texts.h"
#include "unit/interactive/MediumTest.h"

namespace trelv::tests {
namespace {

using machine::BoxAnswer;

constexpr const char* kVersions = "frmProdTrelvSinglePack";
constexpr const char* kComplete =
    "Installazione completata.\r\n\r\nI prodotti verranno installati al prossimo avvio di uno di "
    "essi.";
constexpr const char* kConfirm = "Confermi l'avvio della procedura \r";

class Session : public MediumTest {
 protected:
  std::string logText() { return joined(lines(), "\n") + "\n"; }
  /// The user gives S:\Lumo where he is asked for the server path.
  void givePath() { station_.desktop().answerInput({"S:\\Lumo"}); }
};

// --- Whole sessions

TEST_F(Session, StandardInstallationTellsItsStepsInOrder) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Nerio"});
  run();
  EXPECT_EQ(logText(), golden("session-standard.log"));
  EXPECT_THAT(boxTexts(), ElementsAre(std::string(kConfirm) + MediumStation::kStandard,
                                      std::string(kConfirm) + "Nerio"));
  EXPECT_THAT(station_.setups(),
              ElementsAre("C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\nerio\\setup.exe"));
  EXPECT_THAT(station_.namesIn(MediumStation::kTemp), ElementsAre("log", "prg"));
  EXPECT_EQ(station_.station().recordedIntegration(), "");
}

TEST_F(Session, IntegratedInstallationTellsItsStepsInOrder) {
  station_.select(MediumStation::kIntegrated);
  station_.desktop().answerInput({"S:\\Altrove", "S:\\Lumo\\"});
  station_.install(kIntegratedForm, {"Nerio", "Zeltomodelli"});
  run();
  EXPECT_EQ(logText(), golden("session-integrated.log"));
  EXPECT_EQ(boxTexts().back(), kComplete);
  EXPECT_EQ(station_.station().recordedIntegration(), "S:\\Lumo");
  EXPECT_THAT(station_.namesIn(MediumStation::kTemp), ElementsAre("ambver", "log"));
  EXPECT_THAT(station_.setups(),
              ElementsAre("E:\\prodotti\\manager\\..\\..\\prodotti\\docs\\leggimi.exe S:\\Lumo"))
      << "no set-up runs here";
  EXPECT_THAT(station_.namesIn("S:\\Lumo\\prg\\com\\setup\\aggdovra"),
              ElementsAre("agdvcomp.ini", "nerio", "nerio.ini", "zm", "zm.ini"));
  EXPECT_TRUE(machine().fileExists("S:\\Lumo\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe"));
  EXPECT_EQ(machine().fileText("S:\\Lumo\\prg\\etc\\ambver").substr(0, 21),
            "AMB000116/11/26 09:30");
}

// --- The ways between the forms

TEST_F(Session, ExitOfTheSelectionFormShowsNoOther) {
  station_.onForm(kSelect, [](SimFormWindow& form) { form.click("cmdExit"); });
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect));
  EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(Session, CloseBoxOfTheSelectionFormShowsNoOther) {
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect));
}

TEST_F(Session, BackShowsTheSelectionAgainAndWhatWasChosenBefore) {
  station_.select(MediumStation::kStandard);
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    EXPECT_TRUE(form.isEnabled("cmdback"));
    form.click("cmdback");
  });
  station_.onForm(kSelect, [](SimFormWindow& form) {
    EXPECT_EQ(form.selected("ListAmb"), 0);
    form.choose("ListAmb", 1);
    form.click("cmdExec");
  });
  givePath();
  station_.onForm(kIntegratedForm, [](SimFormWindow& form) {
    EXPECT_TRUE(form.isEnabled("cmdback"));
    form.click("cmdback");
  });
  station_.onForm(kSelect, [](SimFormWindow& form) {
    EXPECT_EQ(form.selected("ListAmb"), 1);
    form.click("cmdExit");
  });
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect, kStandalone, kSelect, kIntegratedForm, kSelect));
  EXPECT_EQ(machine().started().size(), 0U);
}

TEST_F(Session, ExitOfEitherProductFormEnds) {
  for (const char* const installation : {MediumStation::kStandard, MediumStation::kIntegrated}) {
    MediumStation station;
    station.desktop().answerInput({"S:\\Lumo"});
    station.select(installation);
    const char* const form =
        installation == MediumStation::kStandard ? kStandalone : kIntegratedForm;
    station.onForm(form, [](SimFormWindow& window) { window.click("cmdExit"); });
    station.run();
    EXPECT_THAT(station.desktop().shownForms(), ElementsAre(kSelect, form));
  }
}

TEST_F(Session, AfterAStandardInstallationTheFormComesBackWithoutBack) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Nerio"});
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    EXPECT_FALSE(form.isEnabled("cmdback"));
    EXPECT_TRUE(form.isEnabled("cmdExec"));
    EXPECT_THAT(form.selectedItems("ListProd"), IsEmpty());
    EXPECT_EQ(form.text("txtProgress"), "") << "a fresh bar";
    form.click("cmdExit");
  });
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect, kStandalone, kStandalone, kStandalone))
      << "shown, while packs are opened, and again";
  EXPECT_THAT(station_.desktop().unloadedForms(), ElementsAre(kStandalone));
}

TEST_F(Session, ASecondStandardInstallationFollowsTheFirst) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Nerio"});
  station_.install(kStandalone, {"Zeltomodelli"});
  run();
  EXPECT_THAT(station_.setups(),
              ElementsAre("C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\nerio\\setup.exe",
                          "E:\\prodotti\\manager\\..\\..\\prodotti\\docs\\leggimi.exe "
                          "C:\\Users\\mario\\Temp",
                          "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\zm\\setup.exe"));
}

TEST_F(Session, BackIsActiveAgainBehindTheSelectionForm) {
  station_.select(MediumStation::kStandard);
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    form.choose("labTab", 1);
    form.click("cmdback");
  });
  station_.select(MediumStation::kStandard);
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    EXPECT_TRUE(form.isEnabled("cmdback"));
    EXPECT_EQ(form.selected("labTab"), 0) << "and the first page is shown";
  });
  run();
  EXPECT_EQ(forms().size(), 4U);
}

TEST_F(Session, TheEntryExitOpensNothingAndTheFormComesBack) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Esci"});
  station_.onForm(kStandalone,
                  [](SimFormWindow& form) { EXPECT_FALSE(form.isEnabled("cmdback")); });
  run();
  EXPECT_THAT(lines(), Contains("Avvio apertura pacco."));
  EXPECT_THAT(lines(), Not(Contains("Avvio ciclo di copia....o esecuzione diretta applicazione ")));
  EXPECT_THAT(machine().started(), IsEmpty());
  EXPECT_THAT(boxTexts(), ElementsAre(std::string(kConfirm) + MediumStation::kStandard,
                                      std::string(kConfirm) + "Esci"));
}

TEST_F(Session, AnIntegratedInstallationEndsIt) {
  station_.select(MediumStation::kIntegrated);
  givePath();
  station_.install(kIntegratedForm, {"Nerio"});
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect, kIntegratedForm, kIntegratedForm, "frmwait"));
  EXPECT_THAT(station_.desktop().boxes().back(), isBox(BoxIcon::Information, kComplete));
}

TEST_F(Session, WithoutADesktopItEndsWithOneLine) {
  station_.desktop().setPresent(false);
  run();
  EXPECT_EQ(lines().back(),
            "Gestione ProdTrelv - Impossibile visualizzare la finestra frmSelectInstall");
}

// --- What is known of the host

TEST_F(Session, ARecordedPathIsKnownAndShownWhereTheMediumAsksForIt) {
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                "S:\\Lumo");
  station_.putMenu({"%SHOW_PATH_INTEGRATION%", "#PRIMA_LISTA#Nerio|prodotti\\packs\\nerio|NERIO"});
  station_.onForm(kSelect, [](SimFormWindow& form) {
    EXPECT_THAT(form.items("ListAmb"),
                ElementsAre("Installazione Standard", "Installazione Integrata ( S:\\Lumo ) "));
    EXPECT_EQ(form.title(), "Prodotti complementari - versione 2026.2");
    form.choose("ListAmb", 1);
    form.click("cmdExec");
  });
  run();
  EXPECT_THAT(station_.desktop().inputs(), IsEmpty());
  EXPECT_EQ(station_.session().serverPath, "S:\\Lumo");
  EXPECT_EQ(station_.session().installationType, "Installazione Integrata");
}

TEST_F(Session, AnEmptyRecordedPathIsAskedForAndStays) {
  machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", "");
  station_.select(MediumStation::kIntegrated);
  givePath();
  station_.install(kIntegratedForm, {"Nerio"});
  run();
  EXPECT_EQ(station_.desktop().inputs().size(), 1U);
  EXPECT_EQ(station_.station().recordedIntegration(), "");
  EXPECT_TRUE(station_.session().integrationFound);
}

TEST_F(Session, TheIntegratedFormOffersAllListsWithoutTheEntryExit) {
  station_.putMenu({"#QUARTA_LISTA#Zeltomodelli|packs\\zm|ZM", "#TERZA_LISTA#Fine||EXIT",
                    "#TERZA_LISTA#Bilancio|packs\\zb|ZB", "#PRIMA_LISTA#Nerio|packs\\n|NERIO",
                    "#PRIMA_LISTA#Esci||Exit"});
  station_.select(MediumStation::kIntegrated);
  givePath();
  station_.onForm(kIntegratedForm, [](SimFormWindow& form) {
    EXPECT_THAT(form.items("ListProd"), ElementsAre("Nerio", "Bilancio", "Zeltomodelli"));
  });
  run();
}

// --- Versions

TEST_F(Session, ChosenVersionsAreOpenedInTheirOrderInThePlaceOfAll) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Bilancio"});
  station_.onForm(kVersions, [](SimFormWindow& form) {
    form.toggle("ListProd", 1);
    form.click("cmdExec");
  });
  run();
  EXPECT_THAT(endsOf(lines(), "Apro lo zip "),
              ElementsAre("E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\bilancio\\b-09.94.zip "
                          "in  C:\\Users\\mario\\Temp\\~pacchi1.tmp"));
  EXPECT_THAT(endsOf(lines(), "Ordino gli zip in  "),
              ElementsAre("E:\\prodotti\\manager\\..\\..\\prodotti\\packs\\bilancio"));
}

TEST_F(Session, LeavingTheVersionFormOpensNothingAndBackStaysActive) {
  station_.select(MediumStation::kStandard);
  station_.onForm(kStandalone, [](SimFormWindow& form) {
    form.toggle("ListProd", 1);
    form.click("cmdExec");
    EXPECT_TRUE(form.isEnabled("cmdback"));
    form.click("cmdback");
  });
  run();
  EXPECT_THAT(forms(), ElementsAre(kSelect, kStandalone, kVersions, kSelect));
  EXPECT_THAT(machine().started(), IsEmpty());
}

TEST_F(Session, AnIntegratedInstallationOpensAllVersionsInOrder) {
  station_.select(MediumStation::kIntegrated);
  givePath();
  station_.install(kIntegratedForm, {"Bilancio"});
  run();
  EXPECT_THAT(
      endsOf(lines(), "Apro lo zip "),
      ElementsAre(HasSubstr("nerio.zip"), HasSubstr("b-09.93.zip"), HasSubstr("b-09.94.zip")))
      << "Bilancio brings Nerio along";
  EXPECT_THAT(forms(), Not(Contains(kVersions)));
  EXPECT_EQ(boxTexts().back(), kComplete);
}

// --- While packs are opened

TEST_F(Session, WhilePacksAreOpenedTheFormShowsEachStepAndTakesNoSecondStart) {
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Nerio"});
  std::vector<std::string> shown;
  std::size_t tried = 0;
  station_.whileInstalling([&](SimFormWindow& form) {
    const std::size_t now = station_.desktop().eventRounds();
    for (std::size_t round = now + 1; round < now + 10; ++round) {
      station_.desktop().onEvents(round, [&] {
        ++tried;
        shown.push_back(form.text("txtProgress"));
        form.click("cmdExec");
        form.click("cmdExit");
        form.closeBox();
        EXPECT_TRUE(form.isOpen());
      });
    }
  });
  run();
  EXPECT_EQ(tried, 9U);
  EXPECT_EQ(shown.front(), "Avvio apertura pacco.");
  EXPECT_EQ(endsOf(lines(), "Avvio apertura pacco.").size(), 1U);
  EXPECT_EQ(station_.setups().size(), 1U);
}

// --- Commands

TEST_F(Session, CommandsRunBehindThePacksOfTheirEntryAndOneThatFailsDoesNotStopTheOthers) {
  station_.putMenu(
      {"#PRIMA_LISTA#Modelli|prodotti\\packs\\modelli|ZM|manca.exe|"
       "E:/prodotti/docs/leggimi.exe %PATHWORK% %PATHCLIENT%"});
  machine().desktop().onEveryForm("frmError", [](SimFormWindow& form) { form.closeBox(); });
  station_.select(MediumStation::kStandard);
  station_.install(kStandalone, {"Modelli"});
  run();
  EXPECT_THAT(endsOf(lines(), "Esecuzione "),
              ElementsAre("1: manca.exe",
                          "2: E:\\prodotti\\docs\\leggimi.exe C:\\Users\\mario\\Temp "
                          "C:\\Lumo\\Client"));
  EXPECT_THAT(station_.setups(),
              ElementsAre("E:\\prodotti\\docs\\leggimi.exe C:\\Users\\mario\\Temp "
                          "C:\\Lumo\\Client",
                          "C:\\Users\\mario\\Temp\\prg\\com\\setup\\aggdovra\\zm\\setup.exe"));
  EXPECT_TRUE(machine().started()[3].waited);
}

}  // namespace
}  // namespace trelv::tests
