#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "support/SessionFormTest.h"
#include "ui/frmSelectInstall.h"

namespace trelv::tests {
namespace {

constexpr const char* kForm = "frmSelectInstall";
constexpr const char* kList = "ListAmb";
constexpr const char* kQuestion = "Confermi l'avvio della procedura \rInstallazione Integrata";
constexpr const char* kReport = "C:\\Users\\mario\\Temp\\log\\ProdInfo.txt";
constexpr const char* kPrompt = "Indicare il path di localizzazione del server";
constexpr const char* kNotAllowed =
    "Scelta non ammessa senza indicazione del path di localizzazione del server";
constexpr int kStandard = 0;
constexpr int kIntegrated = 1;

/// A machine without products, a host on S:\Lumo, one integrated installation without a path.
class SelectInstall : public SessionFormTest<RealProgram> {
 protected:
  SelectInstall() {
    machine_.makeFolders("C:\\Users\\mario\\Temp\\log");
    machine_.mount("S:");
    machine_.putFile("S:\\Lumo\\prg\\applidir", "x");
    machine_.putFile("C:\\WINDOWS\\notepad.exe", "MZ");
    session().hostInstallations = {{"Installazione Integrata", ""}};
    session().mediaVersion = "2026.2";
    machine_.desktop().setDefaultAnswer(BoxButtons::YesNo, BoxAnswer::Yes);
  }

  void show(sim::SimDesktop::UserAction user) {
    play(kForm, std::move(user), [this] { form_.showModal(); });
  }
  /// Chooses an item and presses the button; the form is left afterwards.
  void confirm(int item) {
    show([item](SimFormWindow& form) {
      form.choose(kList, item);
      form.click("cmdExec");
    });
  }
  void putStandalone(const std::string& ini, const std::string& section, const std::string& key) {
    machine_.setIniValue("C:\\WINDOWS\\" + ini, section, key, "C:\\Prodotto");
  }
  std::vector<std::string> promptTitles() {
    std::vector<std::string> titles;
    for (const sim::SimInput& input : machine_.desktop().inputs()) {
      titles.push_back(input.title);
    }
    return titles;
  }
  std::vector<std::string> lines() { return program_.logLines(); }

  frmSelectInstall form_{program_, help_};
};

// --- What is shown

TEST_F(SelectInstall, OffersTheStandardInstallationFirstAndSelectsNothing) {
  session().hostInstallations = {{" Uno ", "S:\\Lumo"}, {"Due", ""}};
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items(kList), ElementsAre("Installazione Standard", "Uno", "Due"));
    EXPECT_EQ(form.selected(kList), -1);
    EXPECT_EQ(form.focus(), kList);
  });
}

TEST_F(SelectInstall, APathStandsInBracketsWhereTheMediumAsksForIt) {
  session().hostInstallations = {{" Uno ", "S:\\Lumo"}, {"Due", ""}};
  session().showIntegrationPath = true;
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items(kList),
                ElementsAre("Installazione Standard", "Uno ( S:\\Lumo ) ", "Due"));
  });
}

TEST_F(SelectInstall, HeaderIsItsTitleAndPictureLiesBesideTheProgram) {
  session().formHeader = "Prodotti complementari - versione 2026.2";
  machine_.putFile("C:\\Lumo\\Programmi\\images\\setup_fase1.jpg", "\xFF\xD8\xFFx\xFF\xD9");
  show([](SimFormWindow& form) {
    EXPECT_EQ(form.title(), "Prodotti complementari - versione 2026.2");
    EXPECT_EQ(form.picture("picSetup"), "C:\\Lumo\\Programmi\\images\\setup_fase1.jpg");
  });
}

TEST_F(SelectInstall, AnEarlierChoiceIsSelectedAgain) {
  session().hostInstallations = {{"Installazione Integrata", "S:\\Lumo"}};
  session().showIntegrationPath = true;
  confirm(kIntegrated);
  ASSERT_TRUE(session().confirmed);
  session().userAction = UserAction::Back;
  show([](SimFormWindow& form) { EXPECT_EQ(form.selected(kList), kIntegrated); });
}

// --- Confirmation

TEST_F(SelectInstall, WithNothingSelectedOnlyTheMessageIsShown) {
  show([](SimFormWindow& form) {
    form.setFocus("cmdExec");
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_EQ(form.focus(), kList);
    form.doubleClick(kList, -1);
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(
      boxes(),
      AllOf(SizeIs(2), Each(isBox(BoxIcon::Information, "Selezionare preliminarmente una voce"))));
}

TEST_F(SelectInstall, StandardAsksOnceAndNeitherForAPathNorForOtherProducts) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  session().userAction = UserAction::Back;
  confirm(kStandard);
  EXPECT_THAT(boxes(),
              ElementsAre(isBox(BoxIcon::Question,
                                "Confermi l'avvio della procedura \rInstallazione Standard",
                                BoxButtons::YesNo)));
  EXPECT_TRUE(session().confirmed);
  EXPECT_EQ(session().installationType, "Installazione Standard");
  EXPECT_EQ(session().serverPath, "");
  EXPECT_EQ(session().userAction, UserAction::None) << "cleared by the confirmation";
  EXPECT_THAT(lines(), IsEmpty()) << "the form logs nothing of its own";
  EXPECT_FALSE(machine_.fileExists(kReport));
}

TEST_F(SelectInstall, ADoubleClickConfirmsToo) {
  show([](SimFormWindow& form) {
    form.doubleClick(kList, kStandard);
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_TRUE(session().confirmed);
}

TEST_F(SelectInstall, NoLeavesItOpenAndTheEarlierResultAsItWas) {
  session().installationType = "Installazione Standard";
  session().confirmed = true;
  machine_.desktop().answer({BoxAnswer::No});
  show([](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(session().installationType, "Installazione Standard");
  EXPECT_TRUE(session().confirmed);
  EXPECT_EQ(session().userAction, UserAction::Exit) << "its close box";
}

TEST_F(SelectInstall, ChoiceThatIsNotAllowedClearsTheEarlierResult) {
  session().installationType = "Installazione Standard";
  session().serverPath = "S:\\Vecchio";
  session().confirmed = true;
  session().userAction = UserAction::Back;
  show([this](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_EQ(session().userAction, UserAction::None);
  });
  EXPECT_FALSE(session().confirmed);
  EXPECT_EQ(session().installationType, "");
  EXPECT_EQ(session().serverPath, "");
}

TEST_F(SelectInstall, AKnownPathIsTakenWithoutAPromptWhetherShownOrNot) {
  for (const bool shown : {false, true}) {
    session().showIntegrationPath = shown;
    session().hostInstallations = {{"Installazione Integrata", "S:\\Altro"}};
    confirm(kIntegrated);
    EXPECT_TRUE(session().confirmed);
    EXPECT_EQ(session().installationType, "Installazione Integrata");
    EXPECT_EQ(session().serverPath, "S:\\Altro") << "not looked at";
    EXPECT_EQ(machine_.boxes().back().text,
              shown ? std::string(kQuestion) + " ( S:\\Altro ) " : kQuestion);
  }
  EXPECT_THAT(machine_.desktop().inputs(), IsEmpty());
}

// --- Server path

TEST_F(SelectInstall, AsksForAnUnknownPathWithTheMediumsVersionInItsTitle) {
  machine_.desktop().answerInput({"S:\\Lumo"});
  confirm(kIntegrated);
  ASSERT_THAT(machine_.desktop().inputs(), SizeIs(1));
  EXPECT_EQ(machine_.desktop().inputs()[0].title, "Setup Prodotti Complementari 2026.2");
  EXPECT_EQ(machine_.desktop().inputs()[0].prompt, kPrompt);
  EXPECT_EQ(session().serverPath, "S:\\Lumo");
  EXPECT_TRUE(session().confirmed);
}

TEST_F(SelectInstall, ATypedPathLosesItsBlanksAndOneTrailingBackslash) {
  machine_.desktop().answerInput({"  S:\\Lumo\\  "});
  confirm(kIntegrated);
  EXPECT_EQ(session().serverPath, "S:\\Lumo");
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
}

TEST_F(SelectInstall, TheRootOfADriveIsAPathToo) {
  machine_.putFile("S:\\prg\\applidir", "x");
  machine_.desktop().answerInput({"S:\\"});
  confirm(kIntegrated);
  EXPECT_EQ(session().serverPath, "S:");
  EXPECT_TRUE(session().confirmed);
}

TEST_F(SelectInstall, AFolderThatIsMissingIsAskedForAgain) {
  machine_.desktop().answerInput({"S:\\Manca", "S:\\Lumo"});
  confirm(kIntegrated);
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, "Path inesistente o errato"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Path immesso inesistente: S:\\Manca"));
  EXPECT_THAT(promptTitles(), SizeIs(2));
  EXPECT_EQ(session().serverPath, "S:\\Lumo");
}

TEST_F(SelectInstall, AFolderThatIsNoHostIsAskedForAgain) {
  machine_.makeFolders("S:\\Dati\\prg");
  machine_.makeFolders("S:\\Vuoto");
  machine_.desktop().answerInput({"S:\\Dati\\", "S:\\Vuoto", "S:\\", "S:\\Lumo"});
  confirm(kIntegrated);
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, "Path integrazione errato",
                                      "Path integrazione errato", "Path integrazione errato"));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Path integrazione inesistente: "
                                "S:\\Dati\\prg\\applidir"));
  EXPECT_THAT(lines(),
              Contains("Gestione ProdTrelv - Path integrazione inesistente: S:\\prg\\applidir"));
  EXPECT_TRUE(session().confirmed);
}

TEST_F(SelectInstall, TheMarkOfAHostMayBeAFileOrAFolder) {
  machine_.makeFolders("S:\\Dovra\\prg\\applidir");
  machine_.desktop().answerInput({"S:\\Dovra"});
  confirm(kIntegrated);
  EXPECT_EQ(session().serverPath, "S:\\Dovra");
}

TEST_F(SelectInstall, APathThatDependsOnTheCurrentFolderIsNone) {
  machine_.putFile("C:\\Lumo\\Programmi\\Lumo\\prg\\applidir", "x");
  machine_.putFile("C:\\prg\\applidir", "x");
  machine_.desktop().answerInput({"Lumo", "\\", "S:Lumo", "C:\\Lumo\\Programmi\\Lumo"});
  confirm(kIntegrated);
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, "Path inesistente o errato",
                                      "Path inesistente o errato", "Path inesistente o errato"));
  EXPECT_EQ(session().serverPath, "C:\\Lumo\\Programmi\\Lumo");
}

TEST_F(SelectInstall, WithoutAPathTheChoiceIsNotAllowed) {
  machine_.desktop().answerInput({std::nullopt});
  show([](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, kNotAllowed));
  EXPECT_THAT(lines(), ElementsAre("Il Prodotto non ha path definito e non è stato indicato il "
                                   "path di localizzazione del server"));
  EXPECT_FALSE(session().confirmed);
}

TEST_F(SelectInstall, BlanksEndThePromptLikeCancelAlsoAfterAWrongPath) {
  machine_.desktop().answerInput({"S:\\Manca", "   "});
  confirm(kIntegrated);
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion, "Path inesistente o errato", kNotAllowed));
  EXPECT_FALSE(session().confirmed);
}

TEST_F(SelectInstall, APathIsAskedForAnewWhenTheUserComesBack) {
  machine_.desktop().answerInput({"S:\\Lumo"});
  confirm(kIntegrated);
  session().userAction = UserAction::Back;
  machine_.desktop().answerInput({std::nullopt});
  confirm(kIntegrated);
  EXPECT_THAT(promptTitles(), SizeIs(2));
  EXPECT_FALSE(session().confirmed);
}

// --- Products on their own

const char* const kWarning =
    "Attenzione! E' stata rilevata la presenza di prodotti complementari installati in modalità "
    "Standard ( Nerio )\r\n\r\nPer installare in modalità integrata eseguire la migrazione dei "
    "dati e la successiva disinstallazione di ognuno di essi.\r\n\r\nSi desidera verificare i "
    "controlli eseguiti ?";

class SelectInstallWithPath : public SelectInstall {
 protected:
  SelectInstallWithPath() {
    session().hostInstallations = {{"Installazione Integrata", "S:\\Lumo"}};
  }
};

TEST_F(SelectInstallWithPath, WithoutProductsOnTheirOwnTheChoiceStandsAndTheReportIsDeleted) {
  confirm(kIntegrated);
  EXPECT_TRUE(session().confirmed);
  EXPECT_FALSE(machine_.fileExists(kReport));
  EXPECT_THAT(lines(), Contains("Gestione ProdTrelv - Verifica modalità installazione NERIO"));
  EXPECT_EQ(lines().back(),
            std::string("Cancellazione file: ") + kReport + " effettuata con successo");
}

TEST_F(SelectInstallWithPath, TestsTheFiveProductsInTheirOrder) {
  confirm(kIntegrated);
  std::vector<std::string> tests;
  for (const std::string& line : lines()) {
    const std::string beginning = "Gestione ProdTrelv - Verifica modalità installazione ";
    if (line.rfind(beginning, 0) == 0) {
      tests.push_back(line.substr(beginning.size()));
    }
  }
  EXPECT_THAT(tests, ElementsAre("NERIO", "Q2", "ZB", "LUDA", "ZM"));
}

TEST_F(SelectInstallWithPath, AProductOnItsOwnIsNamedAndBlocksTheChoice) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  machine_.desktop().answer({BoxAnswer::Yes, BoxAnswer::No});
  show([](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
    EXPECT_TRUE(form.isEnabled(kList));
  });
  ASSERT_THAT(machine_.boxes(), SizeIs(2));
  EXPECT_EQ(machine_.boxes()[1].text, kWarning);
  EXPECT_EQ(machine_.boxes()[1].title, "TrelvManager");
  EXPECT_EQ(machine_.boxes()[1].buttons, BoxButtons::YesNo);
  EXPECT_FALSE(session().confirmed);
  EXPECT_EQ(session().installationType, "");
  EXPECT_THAT(machine_.started(), IsEmpty());
  EXPECT_FALSE(machine_.fileExists(kReport)) << "deleted after No too";
}

TEST_F(SelectInstallWithPath, AllFiveAreNamedWithoutATrailingSeparator) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  putStandalone("LUDA.INI", "PathNames", "HomeDir");
  putStandalone("LUMOW.INI", "ARCHIVI", "Path");
  machine_.setIniValue("C:\\Prodotto\\mv\\bilancio\\mvanbil.ini", "AMBIENTE", "VRINST", "1");
  machine_.setIniValue("C:\\Prodotto\\mv\\q2\\mvq2.ini", "AMBIENTE", "VRINST", "1");
  machine_.registry().setText(machine::Hive::LocalMachine,
                              "Software\\Microsoft\\Windows\\CurrentVersion\\App "
                              "Paths\\ZeltoMod.exe",
                              "Path", "C:\\Prodotto");
  putStandalone("Zeltomodelli.INI", "Parametri", "PathModelli");
  machine_.desktop().answer({BoxAnswer::Yes, BoxAnswer::No});
  confirm(kIntegrated);
  ASSERT_THAT(machine_.boxes(), SizeIs(2));
  EXPECT_NE(machine_.boxes()[1].text.find(
                "Standard ( Nerio - Tarsena2 - Bilancio - Luda - Zeltomodelli )\r\n"),
            std::string::npos)
      << machine_.boxes()[1].text;
}

TEST_F(SelectInstallWithPath, YesShowsTheReportAndDeletesItOnceTheViewerHasReadIt) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  std::string seen;
  machine_.programs().setDeferred(true);
  machine_.programs().define("C:\\WINDOWS\\notepad.exe",
                             [&](sim::SimProcess& process) -> std::uint32_t {
                               seen = process.machine().fileText(kReport);
                               return 0;
                             });
  confirm(kIntegrated);
  EXPECT_THAT(machine_.programs().startedCommandLines(),
              ElementsAre(std::string("notepad.exe ") + kReport));
  EXPECT_FALSE(machine_.started()[0].waited) << "for its end";
  EXPECT_NE(seen.find("VERIFICA PRESENZA NERIO"), std::string::npos);
  EXPECT_NE(seen.find("VERIFICA PRESENZA BILANCIO"), std::string::npos) << "all are looked for";
  EXPECT_FALSE(machine_.fileExists(kReport));
}

TEST_F(SelectInstallWithPath, EachCheckBeginsAFreshReport) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  std::vector<std::size_t> banners;
  machine_.programs().define(
      "C:\\WINDOWS\\notepad.exe", [&](sim::SimProcess& process) -> std::uint32_t {
        const std::string text = process.machine().fileText(kReport);
        std::size_t count = 0;
        for (std::size_t at = text.find("VERIFICA PRESENZA NERIO"); at != std::string::npos;
             at = text.find("VERIFICA PRESENZA NERIO", at + 1)) {
          ++count;
        }
        banners.push_back(count);
        return 0;
      });
  show([](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    form.click("cmdExec");
  });
  EXPECT_THAT(banners, ElementsAre(1U, 1U));
}

TEST_F(SelectInstallWithPath, AReportThatIsMissingIsTold) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  machine_.desktop().onBox([this](const sim::SimBox& box) {
    if (box.text == kWarning) {
      machine_.removeTree(kReport);
    }
  });
  confirm(kIntegrated);
  ASSERT_THAT(machine_.boxes(), SizeIs(3));
  EXPECT_EQ(machine_.boxes()[2].text, std::string("File info: '") + kReport + "' non disponibile");
  EXPECT_THAT(machine_.started(), IsEmpty());
}

TEST_F(SelectInstallWithPath, TheCheckIsLeftOutWhereTheSessionSaysSo) {
  putStandalone("NERIO.INI", "Pathnames", "Homedir");
  session().suppressStandaloneCheck = true;
  confirm(kIntegrated);
  EXPECT_TRUE(session().confirmed);
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(SelectInstallWithPath, WhateverTheUserDoesDuringTheCheckChangesNothing) {
  show([this](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    for (std::size_t round = 1; round < 12; ++round) {
      machine_.desktop().onEvents(round, [&form] {
        EXPECT_FALSE(form.isEnabled(kList));
        form.click("cmdExec");
        form.click("cmdhelp");
        form.click("cmdExit");
        form.press("cmdExec", machine::Key::F10);
        form.closeBox();
        EXPECT_TRUE(form.isOpen());
      });
    }
    form.click("cmdExec");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_LT(12U, machine_.desktop().eventRounds());
  EXPECT_EQ(session().userAction, UserAction::None);
  EXPECT_EQ(session().installationType, "Installazione Integrata");
  EXPECT_THAT(boxTexts(), ElementsAre(kQuestion));
  EXPECT_THAT(machine_.desktop().shownForms(), ElementsAre(kForm));
}

TEST_F(SelectInstallWithPath, TheCheckIsSeenOnTheForm) {
  show([](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    form.click("cmdExec");
    EXPECT_THAT(form.textsOf("txtProgress"),
                Contains("Gestione ProdTrelv - Verifica modalità installazione NERIO"));
    EXPECT_NE(form.text("lblProgress"), "");
  });
}

// --- The other ways out

TEST_F(SelectInstall, ExitAndCloseBoxLeaveWithoutAChoice) {
  show([](SimFormWindow& form) {
    form.choose(kList, kStandard);
    form.click("cmdExit");
    EXPECT_FALSE(form.isOpen());
  });
  EXPECT_EQ(session().userAction, UserAction::Exit);
  EXPECT_FALSE(session().confirmed);
  session().userAction = UserAction::None;
  show([](SimFormWindow& form) { form.closeBox(); });
  EXPECT_EQ(session().userAction, UserAction::Exit);
  EXPECT_THAT(machine_.boxes(), IsEmpty());
}

TEST_F(SelectInstall, F10OnListAndButtonShowsTheInformationDialogAgainAndAgain) {
  machine_.desktop().onEveryForm("FrmInfo", [](SimFormWindow& form) { form.click("Command1"); });
  show([](SimFormWindow& form) {
    EXPECT_TRUE(form.press(kList, machine::Key::F10));
    EXPECT_TRUE(form.press("cmdExec", machine::Key::F10));
    EXPECT_FALSE(form.press("cmdExit", machine::Key::F10));
    EXPECT_FALSE(form.press("cmdhelp", machine::Key::F10));
  });
  EXPECT_THAT(machine_.desktop().shownForms(), ElementsAre(kForm, "FrmInfo", "FrmInfo"));
}

TEST_F(SelectInstall, AFailureIsReportedWithFormAndHandlerAndTheFormStaysOpen) {
  machine_.desktop().declareForm("frmError", {{"txtModulo", "txtProcedura"}, {}});
  std::vector<std::string> told;
  machine_.desktop().onForm("frmError", [&](SimFormWindow& form) {
    told = {form.text("txtModulo"), form.text("txtProcedura")};
  });
  show([this](SimFormWindow& form) {
    form.choose(kList, kIntegrated);
    session().hostInstallations.clear();
    form.click("cmdExec");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_THAT(told, ElementsAre("frmSelectInstall", "cmdExec_Click"));
}

}  // namespace
}  // namespace trelv::tests
