#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "packs/frmProdTrelvMaintain.h"
#include "support/Installation.h"
#include "support/RealProgram.h"

namespace trelv {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using machine::BoxIcon;
using Lines = std::vector<std::string>;

constexpr const char* kForm = "frmProdTrelvMaintain";
constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kUninstaller = "S:\\Lumo\\mv\\bilancio\\togli.exe";
constexpr const char* kClientUninstaller = "C:\\Lumo\\Bilancio\\togli.exe";
constexpr const char* kSetup = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe";

const Lines kControls{"cmbProduct",       "optClient",        "optServer",   "lblServerPath",
                      "lblClientVersion", "lblServerVersion", "lblRemove",   "btnRemove",
                      "optSetup",         "optUpdate",        "lstVersion",  "btnRepair",
                      "lblRepair",        "lblOutcome",       "txtProgress", "lblProgress",
                      "btnExit"};

/// Two products: ZB with everything, NERIO without removal commands.
class MaintenanceForm : public ::testing::Test {
 protected:
  MaintenanceForm() {
    machine_.desktop().declareForm(
        kForm,
        {kControls, {"prgProgress"}, {{"optClient", "optServer"}, {"optSetup", "optUpdate"}}});
    installation_.putCatalogue({{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"},
                                {"ZB", "Bilancio", "prg\\com\\setup\\aggdovra\\zb.ini"}});
    installation_.putConfiguration(
        "prg\\com\\setup\\aggdovra\\zb.ini",
        "[Setup01]\r\nversion=09.93.00.00\r\n"
        "Server01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe uno\r\n"
        "Server02=%PATHWORK%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe %PATHCLIENT%\r\n"
        "Client01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe stazione\r\n"
        "[Setup02]\r\nversion=09.94.00.00\r\n"
        "[Update01]\r\nversion=09.95.00.00\r\n"
        "Client01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe aggiorna\r\n"
        "[Remove]\r\nServer01=%PATHWORK%\\mv\\bilancio\\togli.exe tutto\r\n"
        "Client01=C:\\Lumo\\Bilancio\\togli.exe\r\n");
    installation_.putConfiguration("prg\\com\\setup\\aggdovra\\nerio.ini",
                                   "[Setup01]\r\nversion=03.20.30.00\r\n");
    installation_.putServerRecord(
        "[ZB]\r\nversion=09.93.00.00\r\n[NERIO]\r\nversion=03.20.30.00\r\n");
    station_.putClientRecord("[ZB]\r\nversion=09.92.00.00\r\n");
    for (const char* const program : {kUninstaller, kClientUninstaller, kSetup}) {
      machine_.programs().define(program);
    }
    machine_.mount("T:", installation_.sharedDisk());
    program_.state().startup.integrationPath = "T:\\Lumo";
    program_.state().startup.programsPath = "C:\\Lumo\\Client";
  }

  /// Shows the form; `user` is what is done in it.
  void show(sim::SimDesktop::UserAction user) {
    machine_.desktop().onForm(kForm, std::move(user));
    frmProdTrelvMaintain::showModal(program_);
    EXPECT_EQ(0U, machine_.desktop().forcedCloses()) << "the form did not close";
  }
  static void chooseProduct(sim::SimFormWindow& form, int index) {
    form.choose("cmbProduct", index);
  }
  static void chooseZb(sim::SimFormWindow& form) { form.choose("cmbProduct", 1); }
  static void chooseZbOnTheServer(sim::SimFormWindow& form) {
    chooseZb(form);
    form.check("optServer");
  }
  static Lines items(const sim::SimFormWindow& form, const std::string& control) {
    Lines texts;
    for (int i = 0; i < form.itemCount(control); ++i) {
      texts.push_back(form.itemText(control, i));
    }
    return texts;
  }
  Lines boxTexts() { return machine_.desktop().boxTexts(); }
  void expectBox(std::size_t index, const std::string& text, BoxIcon icon, BoxButtons buttons) {
    ASSERT_GT(machine_.boxes().size(), index);
    const sim::SimBox& box = machine_.boxes()[index];
    EXPECT_EQ(text, box.text);
    EXPECT_EQ("TrelvManager", box.title);
    EXPECT_EQ(icon, box.icon);
    EXPECT_EQ(buttons, box.buttons);
  }
  bool logHas(const std::string& line) {
    const Lines lines = program_.logLines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
  void forgetIntegration() { station_.forgetIntegration(); }

  tests::Installation installation_;
  tests::Station station_{installation_};
  sim::SimMachine& machine_ = station_.machine();
  tests::RealProgram program_{machine_};
};

// --- What is shown

TEST_F(MaintenanceForm, ListsTheProductsOfTheCatalogueByIdentifierAndName) {
  show([](sim::SimFormWindow& form) {
    EXPECT_EQ((Lines{"NERIO - Nerio", "ZB - Bilancio"}), items(form, "cmbProduct"));
    EXPECT_EQ("S:\\Lumo", form.text("lblServerPath"));
  });
  EXPECT_TRUE(boxTexts().empty());
}

TEST_F(MaintenanceForm, ProductWithoutNameStandsWithItsIdentifierAlone) {
  installation_.putCatalogue({{"ZB", "", "prg\\com\\setup\\aggdovra\\zb.ini"}});
  show([](sim::SimFormWindow& form) { EXPECT_EQ((Lines{"ZB"}), items(form, "cmbProduct")); });
}

TEST_F(MaintenanceForm, BeginsWithNoProductOnTheClientSideAtTheStartOfTheBar) {
  show([](sim::SimFormWindow& form) {
    EXPECT_EQ(-1, form.selected("cmbProduct"));
    EXPECT_TRUE(form.checked("optClient"));
    EXPECT_FALSE(form.checked("optServer"));
    EXPECT_TRUE(form.checked("optSetup"));
    EXPECT_FALSE(form.checked("optUpdate"));
    EXPECT_EQ(Lines(), items(form, "lstVersion"));
    EXPECT_EQ("cmbProduct", form.focus());
    EXPECT_EQ("Selezionare il prodotto e il lato.", form.text("lblOutcome"));
    EXPECT_EQ("Nessun prodotto selezionato.", form.text("lblRemove"));
    EXPECT_EQ("Nessuna versione selezionata.", form.text("lblRepair"));
    EXPECT_EQ("", form.text("lblClientVersion"));
    EXPECT_EQ("", form.text("lblServerVersion"));
    EXPECT_EQ("000%", form.text("lblProgress"));
    EXPECT_EQ("", form.text("txtProgress"));
    machine::ProgressNumbers numbers{5, 5, 5};
    ASSERT_TRUE(form.progress("prgProgress", numbers));
    EXPECT_EQ(1, numbers.max) << "a fresh bar";
  });
}

TEST_F(MaintenanceForm, EveryButtonIsEnabledFromTheStart) {
  show([](sim::SimFormWindow& form) {
    for (const char* const button : {"btnRemove", "btnRepair", "btnExit"}) {
      EXPECT_TRUE(form.isEnabled(button)) << button;
    }
  });
}

TEST_F(MaintenanceForm, ShowsTheVersionsRecordedForTheProductOnBothSides) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    EXPECT_EQ("versione registrata: 09.92.00.00", form.text("lblClientVersion"));
    EXPECT_EQ("versione registrata: 09.93.00.00", form.text("lblServerVersion"));
    chooseProduct(form, 0);
    EXPECT_EQ("nessuna versione registrata", form.text("lblClientVersion"));
    EXPECT_EQ("versione registrata: 03.20.30.00", form.text("lblServerVersion"));
  });
}

TEST_F(MaintenanceForm, SaysThatARecordCannotBeRead) {
  installation_.share().deny(tests::Installation::kServerRecord);
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    EXPECT_EQ("versione registrata: 09.92.00.00", form.text("lblClientVersion"));
    EXPECT_EQ("versione registrata non leggibile", form.text("lblServerVersion"));
  });
}

TEST_F(MaintenanceForm, RecordThatIsMissingHasNoVersion) {
  for (const char* const missing : {tests::Installation::kServerRecord, "S:\\Lumo\\prg\\etc"}) {
    installation_.share().removeTree(missing);
    show([missing](sim::SimFormWindow& form) {
      chooseZb(form);
      EXPECT_EQ("nessuna versione registrata", form.text("lblServerVersion")) << missing;
    });
  }
}

TEST_F(MaintenanceForm, ReadsTheRecordsAnewForEachProduct) {
  show([this](sim::SimFormWindow& form) {
    chooseZb(form);
    installation_.putServerRecord("[NERIO]\r\nversion=03.21.00.00\r\n");
    chooseProduct(form, 0);
    EXPECT_EQ("versione registrata: 03.21.00.00", form.text("lblServerVersion"));
  });
}

TEST_F(MaintenanceForm, ListsTheVersionsOfTheChosenTypeWithTheirSections) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    EXPECT_EQ((Lines{"09.93.00.00   (Setup01)", "09.94.00.00   (Setup02)"}),
              items(form, "lstVersion"));
    EXPECT_EQ(-1, form.selected("lstVersion"));
    form.check("optUpdate");
    EXPECT_EQ((Lines{"09.95.00.00   (Update01)"}), items(form, "lstVersion"));
    form.check("optSetup");
    EXPECT_EQ(2, form.itemCount("lstVersion"));
  });
}

TEST_F(MaintenanceForm, AnotherTypeOrProductForgetsTheSelectedVersion) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    form.check("optUpdate");
    EXPECT_EQ(-1, form.selected("lstVersion"));
    EXPECT_EQ("Nessuna versione selezionata.", form.text("lblRepair"));
    form.choose("lstVersion", 0);
    form.check("optSetup");
    form.choose("lstVersion", 0);
    chooseProduct(form, 0);
    EXPECT_EQ(-1, form.selected("lstVersion"));
    EXPECT_EQ((Lines{"03.20.30.00   (Setup01)"}), items(form, "lstVersion"));
  });
}

TEST_F(MaintenanceForm, TellsWhatEachButtonWillDo) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    EXPECT_EQ(
        "Esegue i comandi di rimozione Client di ZB e azzera la versione registrata su questa "
        "stazione.",
        form.text("lblRemove"));
    form.check("optServer");
    EXPECT_EQ(
        "Esegue i comandi di rimozione Server di ZB, elimina le cartelle di setup e il file di "
        "configurazione, azzera la versione registrata sul server.",
        form.text("lblRemove"));
    form.choose("lstVersion", 1);
    EXPECT_EQ(
        "Riesegue i comandi Server della sezione Setup02 di ZB. Le versioni registrate non "
        "cambiano.",
        form.text("lblRepair"));
    form.check("optClient");
    EXPECT_EQ(
        "Riesegue i comandi Client della sezione Setup02 di ZB. Le versioni registrate non "
        "cambiano.",
        form.text("lblRepair"));
  });
}

TEST_F(MaintenanceForm, WithoutIntegrationItIsEmptyAndItsButtonsSayWhatIsMissing) {
  forgetIntegration();
  show([](sim::SimFormWindow& form) {
    EXPECT_EQ(Lines(), items(form, "cmbProduct"));
    EXPECT_EQ("", form.text("lblServerPath"));
    EXPECT_EQ("Nessuna integrazione con Dovra registrata su questa stazione.",
              form.text("lblOutcome"));
    form.click("btnRemove");
    form.click("btnRepair");
  });
  EXPECT_EQ((Lines{"Selezionare un prodotto", "Selezionare una versione"}), boxTexts());
}

TEST_F(MaintenanceForm, RecordedIntegrationWithoutPathIsNone) {
  machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path", "");
  show([](sim::SimFormWindow& form) {
    EXPECT_EQ(Lines(), items(form, "cmbProduct"));
    EXPECT_EQ("Nessuna integrazione con Dovra registrata su questa stazione.",
              form.text("lblOutcome"));
  });
}

TEST_F(MaintenanceForm, WithoutCatalogueItIsEmptyAndItsButtonsSayWhatIsMissing) {
  installation_.share().removeTree(tests::Installation::kCatalogue);
  show([](sim::SimFormWindow& form) {
    EXPECT_EQ(Lines(), items(form, "cmbProduct"));
    EXPECT_EQ("Nessun prodotto nel catalogo dell'installazione.", form.text("lblOutcome"));
    form.click("btnRemove");
    form.click("btnRepair");
  });
  EXPECT_EQ((Lines{"Selezionare un prodotto", "Selezionare una versione"}), boxTexts());
}

TEST_F(MaintenanceForm, ShareThatIsGoneGivesAnEmptyList) {
  installation_.share().disconnect();
  show([](sim::SimFormWindow& form) { EXPECT_EQ(Lines(), items(form, "cmbProduct")); });
}

TEST_F(MaintenanceForm, ThatCannotBeShownIsToldInTheLog) {
  machine_.desktop().setPresent(false);
  frmProdTrelvMaintain::showModal(program_);
  EXPECT_EQ("Gestione ProdTrelv - Impossibile visualizzare la finestra di manutenzione",
            program_.logLines().back());
}

TEST_F(MaintenanceForm, ExitAndCloseBoxClose) {
  bool open = true;
  show([&](sim::SimFormWindow& form) {
    form.click("btnExit");
    open = form.isOpen();
  });
  EXPECT_FALSE(open);
  open = true;
  show([&](sim::SimFormWindow& form) {
    form.closeBox();
    open = form.isOpen();
  });
  EXPECT_FALSE(open);
}

// --- Removal

TEST_F(MaintenanceForm, RemovalWithoutProductIsTooEarly) {
  show([](sim::SimFormWindow& form) {
    form.setFocus("btnRemove");
    form.click("btnRemove");
    EXPECT_EQ("cmbProduct", form.focus());
  });
  ASSERT_EQ(1U, machine_.boxes().size());
  expectBox(0, "Selezionare un prodotto", BoxIcon::Exclamation, BoxButtons::Ok);
}

TEST_F(MaintenanceForm, RemovalAsksWithProductAndSide) {
  machine_.desktop().setDefaultAnswer(BoxButtons::OkCancel, BoxAnswer::Cancel);
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.click("btnRemove");
    form.check("optServer");
    form.click("btnRemove");
  });
  ASSERT_EQ(4U, machine_.boxes().size());
  expectBox(0, "Procedere con la rimozione di: ZB - Client?", BoxIcon::Question,
            BoxButtons::OkCancel);
  expectBox(2, "Procedere con la rimozione di: ZB - Server?", BoxIcon::Question,
            BoxButtons::OkCancel);
}

TEST_F(MaintenanceForm, CancelledRemovalSaysSoAndChangesNothing) {
  machine_.desktop().answer({BoxAnswer::Cancel});
  show([](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.click("btnRemove");
    EXPECT_EQ("Operazione annullata.", form.text("lblOutcome"));
    EXPECT_EQ("000%", form.text("lblProgress"));
    EXPECT_TRUE(form.isEnabled("btnRemove"));
    EXPECT_TRUE(form.isOpen());
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(1, "Nessun comando di rimozione eseguito", BoxIcon::Exclamation, BoxButtons::Ok);
  EXPECT_TRUE(machine_.started().empty());
  EXPECT_EQ("09.93.00.00", station_.serverVersion("ZB"));
  EXPECT_TRUE(machine_.fileExists(kConfiguration));
}

TEST_F(MaintenanceForm, QuestionThatCannotBeShownCancels) {
  machine_.desktop().answer({BoxAnswer::None});
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.click("btnRemove");
  });
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(MaintenanceForm, RemovalOnTheServerRunsItsCommandsAndShowsWhatIsLeft) {
  show([](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.click("btnRemove");
    EXPECT_EQ("Rimozione di ZB - Server terminata.", form.text("lblOutcome"));
    EXPECT_EQ("versione registrata: 09.92.00.00", form.text("lblClientVersion"));
    EXPECT_EQ("nessuna versione registrata", form.text("lblServerVersion"));
    EXPECT_EQ(Lines(), items(form, "lstVersion")) << "its configuration file is deleted";
    EXPECT_EQ("ZB - Bilancio", form.itemText("cmbProduct", form.selected("cmbProduct")));
    EXPECT_EQ("btnRemove", form.focus());
    EXPECT_EQ("100%", form.text("lblProgress"));
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(1, "Procedura di rimozione terminata correttamente", BoxIcon::Information,
            BoxButtons::Ok);
  EXPECT_EQ((Lines{"T:\\Lumo\\mv\\bilancio\\togli.exe tutto"}), station_.commandLines());
  EXPECT_EQ("", station_.serverVersion("ZB"));
  EXPECT_EQ("09.92.00.00", station_.clientVersion("ZB"));
  EXPECT_FALSE(machine_.fileExists(kConfiguration));
  EXPECT_FALSE(machine_.folderExists("S:\\Lumo\\mv\\bilancio"));
}

TEST_F(MaintenanceForm, RemovalOnTheClientLeavesTheServerAlone) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.click("btnRemove");
    EXPECT_EQ("Rimozione di ZB - Client terminata.", form.text("lblOutcome"));
    EXPECT_EQ("nessuna versione registrata", form.text("lblClientVersion"));
    EXPECT_EQ("versione registrata: 09.93.00.00", form.text("lblServerVersion"));
    EXPECT_EQ(2, form.itemCount("lstVersion"));
  });
  EXPECT_EQ((Lines{"C:\\Lumo\\Bilancio\\togli.exe"}), station_.commandLines());
  EXPECT_EQ("", station_.clientVersion("ZB"));
  EXPECT_TRUE(machine_.fileExists(kConfiguration));
  EXPECT_TRUE(machine_.fileExists(kClientUninstaller));
}

TEST_F(MaintenanceForm, RemovalWithoutCommandsSaysSoAndStillClearsTheVersion) {
  show([](sim::SimFormWindow& form) {
    chooseProduct(form, 0);
    form.check("optServer");
    form.click("btnRemove");
    EXPECT_EQ("Rimozione di NERIO - Server: nessun comando eseguito.", form.text("lblOutcome"));
    EXPECT_EQ("nessuna versione registrata", form.text("lblServerVersion"));
    EXPECT_EQ("100%", form.text("lblProgress"));
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(1, "Nessun comando di rimozione eseguito", BoxIcon::Exclamation, BoxButtons::Ok);
}

TEST_F(MaintenanceForm, RemovalMovesTheBarByCommandsAndLogLines) {
  show([](sim::SimFormWindow& form) {
    chooseProduct(form, 0);
    form.click("btnRemove");
    int begun = 0;
    int jumped = 0;
    for (const machine::ProgressNumbers& numbers : form.progressOf("prgProgress")) {
      begun += numbers.max == 200 && numbers.value == 0 ? 1 : 0;
      jumped += numbers.max == 200 && numbers.value == 200 ? 1 : 0;
    }
    EXPECT_EQ(1, begun) << "reset to its start, with 200 as its maximum";
    EXPECT_EQ(1, jumped) << "no command: straight to 200";
    const machine::ProgressNumbers last = form.progressOf("prgProgress").back();
    EXPECT_EQ(last.max, last.value);
    EXPECT_LT(200, last.max) << "the log lines raised it";
  });
}

TEST_F(MaintenanceForm, RemovalJumpsTo200WhateverTheLogLinesRaised) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.click("btnRemove");
    int jumped = 0;
    for (const machine::ProgressNumbers& numbers : form.progressOf("prgProgress")) {
      jumped += numbers.max > 200 && numbers.value == 200 ? 1 : 0;
    }
    EXPECT_EQ(1, jumped);
  });
}

TEST_F(MaintenanceForm, ProgressShowsEachLogLineOfTheOperationOnly) {
  show([](sim::SimFormWindow& form) {
    chooseProduct(form, 0);
    form.click("btnRemove");
    const Lines texts = form.textsOf("txtProgress");
    EXPECT_EQ("Gestione ProdTrelv - Azzeramento versione client prodotto: NERIO", texts.back());
    EXPECT_EQ("", texts.front());
    // What the question's own log lines showed is taken away before it is asked.
    const auto asked = std::find(texts.begin(), texts.end(),
                                 "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: "
                                 "S:\\Lumo");
    ASSERT_NE(texts.end(), asked);
    EXPECT_EQ("", *(asked + 1));
  });
}

TEST_F(MaintenanceForm, BarIsAtItsStartWhileTheUserIsAsked) {
  std::string percent;
  std::string outcome;
  machine_.desktop().answer({BoxAnswer::Cancel});
  show([&](sim::SimFormWindow& form) {
    chooseZb(form);
    machine_.desktop().onBox([&](const sim::SimBox& box) {
      if (box.buttons == BoxButtons::OkCancel) {
        percent = form.text("lblProgress");
        outcome = form.text("lblOutcome");
      }
    });
    form.click("btnRemove");
  });
  EXPECT_EQ("000%", percent);
  EXPECT_EQ("In attesa di conferma.", outcome);
}

TEST_F(MaintenanceForm, IntegrationThatIsGoneMeanwhileStopsTheRemovalAndEmptiesTheLists) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    forgetIntegration();
    form.click("btnRemove");
    EXPECT_EQ(Lines(), items(form, "cmbProduct"));
    EXPECT_EQ(Lines(), items(form, "lstVersion"));
    EXPECT_EQ("", form.text("lblServerPath"));
    EXPECT_EQ("Nessuna integrazione con Dovra registrata su questa stazione.",
              form.text("lblOutcome"));
  });
  EXPECT_EQ((Lines{"Nessun comando di rimozione eseguito"}), boxTexts());
  EXPECT_TRUE(machine_.started().empty());
  EXPECT_TRUE(machine_.fileExists(kConfiguration));
}

TEST_F(MaintenanceForm, RemovalUsesTheServerThatIsRecordedWhenTheButtonIsPressed) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                 "T:\\Lumo");
    form.click("btnRemove");
    EXPECT_EQ("T:\\Lumo", form.text("lblServerPath"));
  });
  EXPECT_TRUE(
      logHas("Gestione ProdTrelv - Rimozione file di configurazione: "
             "T:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini"));
}

TEST_F(MaintenanceForm, RemovalRunsWhatTheConfigurationHoldsWhenTheButtonIsPressed) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    installation_.putConfiguration(
        "prg\\com\\setup\\aggdovra\\zb.ini",
        "[Remove]\r\nServer01=%PATHSETUP%\\mv\\bilancio\\togli.exe x\r\n");
    form.click("btnRemove");
  });
  EXPECT_EQ((Lines{"S:\\Lumo\\mv\\bilancio\\togli.exe x"}), station_.commandLines());
}

TEST_F(MaintenanceForm, RemovalThatAnotherWorkstationWasFasterWithRunsNothing) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    installation_.share().removeTree(kConfiguration);
    form.click("btnRemove");
  });
  EXPECT_EQ("Nessun comando di rimozione eseguito", boxTexts().back());
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(MaintenanceForm, CatalogueThatChangedMeanwhileIsShownThoughNothingRan) {
  show([this](sim::SimFormWindow& form) {
    chooseProduct(form, 0);
    const std::size_t before = machine_.desktop().eventRounds();
    for (std::size_t round = before + 1; round < before + 50; ++round) {
      machine_.desktop().onEvents(round, [this, &form] {
        if (form.text("txtProgress").find("Azzeramento") != std::string::npos) {
          installation_.putCatalogue({{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"},
                                      {"Q2", "Tarsena2", "prg\\com\\setup\\aggdovra\\q2.ini"}});
        }
      });
    }
    form.click("btnRemove");
    EXPECT_EQ((Lines{"NERIO - Nerio", "Q2 - Tarsena2"}), items(form, "cmbProduct"));
  });
}

TEST_F(MaintenanceForm, RecordThatCannotBeWrittenIsStillShownAsItIs) {
  installation_.share().denyWriting(tests::Installation::kServerRecord);
  show([](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.click("btnRemove");
    EXPECT_EQ("versione registrata: 09.93.00.00", form.text("lblServerVersion"));
    EXPECT_TRUE(form.isEnabled("btnRemove"));
  });
}

// --- Repair

TEST_F(MaintenanceForm, RepairWithoutVersionIsTooEarly) {
  show([](sim::SimFormWindow& form) {
    form.setFocus("btnRepair");
    form.click("btnRepair");
    EXPECT_EQ("cmbProduct", form.focus());
    chooseZb(form);
    form.setFocus("btnRepair");
    form.click("btnRepair");
    EXPECT_EQ("lstVersion", form.focus());
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(0, "Selezionare una versione", BoxIcon::Exclamation, BoxButtons::Ok);
  expectBox(1, "Selezionare una versione", BoxIcon::Exclamation, BoxButtons::Ok);
}

TEST_F(MaintenanceForm, CancelledRepairSaysSoAndRunsNothing) {
  machine_.desktop().answer({BoxAnswer::Cancel});
  show([](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_EQ("Operazione annullata.", form.text("lblOutcome"));
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(0, "Procedere con il ripristino di: ZB - 09.93.00.00 - Server?", BoxIcon::Question,
            BoxButtons::OkCancel);
  expectBox(1, "Nessun comando di ripristino eseguito", BoxIcon::Exclamation, BoxButtons::Ok);
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(MaintenanceForm, RepairRunsTheCommandsOfTheSelectedSectionInOrder) {
  show([](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_EQ("Ripristino di ZB - 09.93.00.00 - Server terminato.", form.text("lblOutcome"));
    EXPECT_EQ("100%", form.text("lblProgress"));
    EXPECT_EQ("btnRepair", form.focus());
    EXPECT_EQ(0, form.selected("lstVersion")) << "the version stays selected";
    EXPECT_EQ("versione registrata: 09.93.00.00", form.text("lblServerVersion"));
  });
  ASSERT_EQ(1U, machine_.boxes().size()) << "only the question";
  EXPECT_EQ((Lines{"S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe uno",
                   "T:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe C:\\Lumo\\Client"}),
            station_.commandLines());
  EXPECT_TRUE(
      logHas("Gestione ProdTrelv - Esecuzione comando: "
             "S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe uno"));
}

TEST_F(MaintenanceForm, RepairTakesTheSideAndTheTypeThatAreChosen) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.check("optUpdate");
    form.choose("lstVersion", 0);
    form.click("btnRepair");
  });
  EXPECT_EQ("Procedere con il ripristino di: ZB - 09.95.00.00 - Client?", boxTexts().front());
  EXPECT_EQ((Lines{"S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe aggiorna"}),
            station_.commandLines());
}

TEST_F(MaintenanceForm, RepairRunsWhatTheConfigurationHoldsWhenTheButtonIsPressed) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    installation_.putConfiguration(
        "prg\\com\\setup\\aggdovra\\zb.ini",
        "[Setup01]\r\nversion=09.93.00.00\r\n"
        "Server01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe nuovo\r\n");
    form.click("btnRepair");
  });
  EXPECT_EQ((Lines{"S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe nuovo"}),
            station_.commandLines());
}

TEST_F(MaintenanceForm, OfTwoEntriesOfOneProductTheFirstIsSelectedAfterwards) {
  installation_.putCatalogue({{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"},
                              {"ZB", "Bilancio", "prg\\com\\setup\\aggdovra\\zb.ini"},
                              {"ZB", "Doppio", "prg\\com\\setup\\aggdovra\\nerio.ini"}});
  show([](sim::SimFormWindow& form) {
    chooseProduct(form, 2);
    EXPECT_EQ(2, form.itemCount("lstVersion")) << "the first entry's configuration counts";
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_EQ(1, form.selected("cmbProduct"));
  });
}

TEST_F(MaintenanceForm, RepairThatRanNothingSaysSo) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 1);
    form.click("btnRepair");
    EXPECT_EQ("Ripristino di ZB - 09.94.00.00 - Client: nessun comando eseguito.",
              form.text("lblOutcome"));
    EXPECT_EQ(1, form.selected("lstVersion")) << "the version stays selected";
  });
  ASSERT_EQ(2U, machine_.boxes().size());
  expectBox(1, "Nessun comando di ripristino eseguito", BoxIcon::Exclamation, BoxButtons::Ok);
}

TEST_F(MaintenanceForm, RepairWhoseCommandCannotBeStartedSaysSo) {
  machine_.removeTree(kSetup);
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_TRUE(form.isEnabled("btnRepair"));
  });
  EXPECT_EQ("Nessun comando di ripristino eseguito", boxTexts().back());
  EXPECT_TRUE(
      logHas("Gestione ProdTrelv - Comando non eseguito: "
             "S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe stazione"));
}

TEST_F(MaintenanceForm, IntegrationThatIsGoneMeanwhileStopsTheRepair) {
  show([this](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    forgetIntegration();
    form.click("btnRepair");
  });
  EXPECT_EQ((Lines{"Nessun comando di ripristino eseguito"}), boxTexts());
  EXPECT_TRUE(machine_.started().empty());
}

TEST_F(MaintenanceForm, ShowsWhatTheCommandsChanged) {
  machine_.programs().define(kSetup, [this](sim::SimProcess&) -> std::uint32_t {
    station_.putClientRecord("[ZB]\r\nversion=09.99.00.00\r\n");
    installation_.putCatalogue({{"ZB", "Bilancio", "prg\\com\\setup\\aggdovra\\zb.ini"},
                                {"Q2", "Tarsena2", "prg\\com\\setup\\aggdovra\\q2.ini"}});
    return 0;
  });
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_EQ((Lines{"ZB - Bilancio", "Q2 - Tarsena2"}), items(form, "cmbProduct"));
    EXPECT_EQ(0, form.selected("cmbProduct")) << "the same product, at its new place";
    EXPECT_EQ("versione registrata: 09.99.00.00", form.text("lblClientVersion"));
  });
}

// --- While something runs

/// Everything that a user can do, at once.
void tryEverything(sim::SimFormWindow& form) {
  form.click("btnRemove");
  form.click("btnRepair");
  form.click("btnExit");
  form.closeBox();
}

TEST_F(MaintenanceForm, AnotherProductEndsTheAccountOfTheOneBefore) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    EXPECT_EQ("Pronto.", form.text("lblOutcome"));
    form.click("btnRemove");
    EXPECT_EQ("Rimozione di ZB - Client terminata.", form.text("lblOutcome"));
    chooseProduct(form, 0);
    EXPECT_EQ("Pronto.", form.text("lblOutcome"));
    EXPECT_EQ("000%", form.text("lblProgress"));
    EXPECT_EQ("", form.text("txtProgress"));
  });
}

TEST_F(MaintenanceForm, ClicksDuringAnyLogLineStartNothingMoreAndDoNotClose) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    const std::size_t before = machine_.desktop().eventRounds();
    int tried = 0;
    for (std::size_t round = before + 1; round < before + 50; ++round) {
      machine_.desktop().onEvents(round, [&form, &tried] {
        ++tried;
        tryEverything(form);
      });
    }
    form.click("btnRemove");
    EXPECT_LT(5, tried);
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ((Lines{"Procedere con la rimozione di: ZB - Server?",
                   "Procedura di rimozione terminata correttamente"}),
            boxTexts());
  EXPECT_EQ(1U, machine_.started().size());
}

TEST_F(MaintenanceForm, ClicksDuringARepairStartNothingMoreAndDoNotClose) {
  show([this](sim::SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    const std::size_t before = machine_.desktop().eventRounds();
    for (std::size_t round = before + 1; round < before + 50; ++round) {
      machine_.desktop().onEvents(round, [&form] { tryEverything(form); });
    }
    form.click("btnRepair");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ((Lines{"Procedere con il ripristino di: ZB - 09.93.00.00 - Server?"}), boxTexts());
  EXPECT_EQ(2U, machine_.started().size());
}

TEST_F(MaintenanceForm, ClicksWhileACommandRunsStartNothingMore) {
  sim::SimFormWindow* window = nullptr;
  machine_.programs().define(kClientUninstaller, [&window](sim::SimProcess&) -> std::uint32_t {
    tryEverything(*window);
    return 0;
  });
  show([&window](sim::SimFormWindow& form) {
    window = &form;
    chooseZb(form);
    form.click("btnRemove");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(1U, machine_.started().size());
  EXPECT_EQ(2U, machine_.boxes().size());
}

TEST_F(MaintenanceForm, ClicksBehindAnyBoxStartNothingMore) {
  show([this](sim::SimFormWindow& form) {
    machine_.desktop().onBox([&form](const sim::SimBox&) { tryEverything(form); });
    form.click("btnRemove");
    EXPECT_TRUE(form.isOpen());
    chooseZb(form);
    form.click("btnRemove");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ((Lines{"Selezionare un prodotto", "Procedere con la rimozione di: ZB - Client?",
                   "Procedura di rimozione terminata correttamente"}),
            boxTexts());
  EXPECT_EQ(1U, machine_.started().size());
}

TEST_F(MaintenanceForm, MessagesThatPassADisabledButtonDoNothingEither) {
  frmProdTrelvMaintain form(program_);
  sim::SimFormWindow window(kForm, &form);
  machine_.programs().define(kClientUninstaller, [&](sim::SimProcess&) -> std::uint32_t {
    for (const char* const button : {"btnRemove", "btnRepair", "btnExit"}) {
      form.clicked(window, button);
    }
    form.closeRequested(window);
    return 0;
  });
  form.loaded(window);
  chooseZb(window);
  window.choose("lstVersion", 0);
  window.click("btnRemove");
  EXPECT_TRUE(window.isOpen());
  EXPECT_EQ(1U, machine_.started().size());
  EXPECT_EQ(2U, machine_.boxes().size());
}

TEST_F(MaintenanceForm, NothingCanBeChosenOrPressedWhileACommandRuns) {
  sim::SimFormWindow* window = nullptr;
  Lines enabled;
  std::string outcome;
  machine_.programs().define(kClientUninstaller, [&](sim::SimProcess&) -> std::uint32_t {
    for (const std::string& control : kControls) {
      if (window->isEnabled(control) && control.substr(0, 3) != "lbl") {
        enabled.push_back(control);
      }
    }
    outcome = window->text("lblOutcome");
    return 0;
  });
  show([&](sim::SimFormWindow& form) {
    window = &form;
    chooseZb(form);
    form.click("btnRemove");
    for (const std::string& control : kControls) {
      EXPECT_TRUE(form.isEnabled(control)) << control;
    }
  });
  EXPECT_EQ((Lines{"txtProgress"}), enabled) << "what it does can be read and copied";
  EXPECT_EQ("Rimozione di ZB - Client in corso...", outcome);
}

TEST_F(MaintenanceForm, RepairIsDrawnBeforeItsFirstCommandRuns) {
  std::string drawn;
  std::string drawnWhenItRan;
  machine_.programs().define(kSetup, [&](sim::SimProcess&) -> std::uint32_t {
    drawnWhenItRan = drawn;
    return 0;
  });
  show([&](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    const std::size_t before = machine_.desktop().eventRounds();
    for (std::size_t round = before + 1; round < before + 50; ++round) {
      machine_.desktop().onEvents(round, [&form, &drawn] {
        drawn = form.text("lblOutcome") + (form.isEnabled("lstVersion") ? " (free)" : " (grey)");
      });
    }
    form.click("btnRepair");
  });
  EXPECT_EQ("Ripristino di ZB - 09.93.00.00 - Client in corso... (grey)", drawnWhenItRan)
      << "a command may run for minutes, and its log line comes behind it";
}

TEST_F(MaintenanceForm, OperationFinishedBeforeItsResultIsTold) {
  bool enabled = false;
  std::string version;
  show([&](sim::SimFormWindow& form) {
    chooseZb(form);
    machine_.desktop().onBox([&](const sim::SimBox& box) {
      if (box.icon == BoxIcon::Information) {
        enabled = form.isEnabled("btnExit");
        version = form.text("lblClientVersion");
      }
    });
    form.click("btnRemove");
  });
  EXPECT_TRUE(enabled);
  EXPECT_EQ("nessuna versione registrata", version);
}

TEST_F(MaintenanceForm, ChoiceThatArrivesWhileItRunsIsShownAfterwards) {
  show([this](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    machine_.desktop().onEvents([&form] { chooseProduct(form, 0); });
    form.click("btnRemove");
    EXPECT_EQ(0, form.selected("cmbProduct"));
    EXPECT_EQ((Lines{"03.20.30.00   (Setup01)"}), items(form, "lstVersion"));
    EXPECT_EQ(-1, form.selected("lstVersion"));
    EXPECT_EQ("versione registrata: 03.20.30.00", form.text("lblServerVersion"));
  });
  EXPECT_EQ("Procedere con la rimozione di: ZB - Client?", boxTexts().front())
      << "what was chosen when the button was pressed";
}

TEST_F(MaintenanceForm, ChoiceThatArrivesBeforeACancelledQuestionIsShownToo) {
  machine_.desktop().answer({BoxAnswer::Cancel});
  show([this](sim::SimFormWindow& form) {
    chooseZb(form);
    machine_.desktop().onEvents([&form] { chooseProduct(form, 0); });
    form.click("btnRemove");
    EXPECT_EQ((Lines{"03.20.30.00   (Setup01)"}), items(form, "lstVersion"));
    EXPECT_EQ("versione registrata: 03.20.30.00", form.text("lblServerVersion"));
  });
}

TEST_F(MaintenanceForm, ChoiceThatArrivesWhileItAsksFreesNoButton) {
  show([this](sim::SimFormWindow& form) {
    chooseZb(form);
    const std::size_t before = machine_.desktop().eventRounds();
    machine_.desktop().onEvents(before + 1, [&form] {
      chooseProduct(form, 0);
      tryEverything(form);
    });
    machine_.desktop().onEvents(before + 2, [&form] { tryEverything(form); });
    form.click("btnRemove");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ((Lines{"Procedere con la rimozione di: ZB - Client?",
                   "Procedura di rimozione terminata correttamente"}),
            boxTexts());
}

TEST_F(MaintenanceForm, SecondOperationBeginsWithABarAtItsStart) {
  show([](sim::SimFormWindow& form) {
    chooseZb(form);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    const std::size_t first = form.progressOf("prgProgress").size();
    form.click("btnRepair");
    const std::vector<machine::ProgressNumbers> states = form.progressOf("prgProgress");
    ASSERT_LT(first, states.size());
    EXPECT_EQ(1, states[first].max);
    EXPECT_EQ(0, states[first].value);
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(2U, machine_.started().size());
}

// --- From the command line

TEST_F(MaintenanceForm, MaintenanceModeShowsIt) {
  show([](sim::SimFormWindow&) {});
  machine_.desktop().onForm(
      kForm, [](sim::SimFormWindow& form) { EXPECT_EQ(2, form.itemCount("cmbProduct")); });
  program_.run("INTEGRATEDMAINTAIN S:\\Lumo S:\\Lumo");
  EXPECT_EQ((Lines{kForm, kForm}), machine_.desktop().shownForms());
}

}  // namespace
}  // namespace trelv
