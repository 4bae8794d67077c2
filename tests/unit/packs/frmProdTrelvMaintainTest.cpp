#include <algorithm>
#include <functional>

#include "packs/frmProdTrelvMaintain.h"
#include "support/RealProgram.h"
#include "support/Rows.h"
#include "support/StationTest.h"
#include "support/Texts.h"

namespace trelv::tests {
namespace {

using machine::BoxAnswer;
using machine::ProgressNumbers;
using sim::SimFormWindow;
using Lines = std::vector<std::string>;

constexpr const char* kForm = "frmProdTrelvMaintain";
constexpr const char* kConf = "prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kNerioConf = "prg\\com\\setup\\aggdovra\\nerio.ini";
constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";
constexpr const char* kUninstaller = "S:\\Lumo\\mv\\bilancio\\togli.exe";
constexpr const char* kClientUninstaller = "C:\\Lumo\\Bilancio\\togli.exe";
constexpr const char* kSetup = "S:\\Lumo\\prg\\setup.exe";

const Lines kControls{"cmbProduct",       "optClient",        "optServer",   "lblServerPath",
                      "lblClientVersion", "lblServerVersion", "lblRemove",   "btnRemove",
                      "optSetup",         "optUpdate",        "lstVersion",  "btnRepair",
                      "lblRepair",        "lblOutcome",       "txtProgress", "lblProgress",
                      "btnExit"};
constexpr int kNerio = 0;
constexpr int kZb = 1;

/// Everything that a user can do, at once.
void tryEverything(SimFormWindow& form) {
  for (const char* const button : {"btnRemove", "btnRepair", "btnExit"}) {
    form.click(button);
  }
  form.closeBox();
}

/// Two products: ZB with everything, NERIO without removal commands.
class MaintenanceForm : public StationTest {
 public:
  MaintenanceForm() {
    machine().desktop().declareForm(
        kForm,
        {kControls, {"prgProgress"}, {{"optClient", "optServer"}, {"optSetup", "optUpdate"}}});
    installation_.putCatalogue({{"NERIO", "Nerio", kNerioConf}, {"ZB", "Bilancio", kConf}});
    installation_.putConfiguration(
        kConf,
        configurationText(
            {{"Setup01",
              "09.93.00.00",
              {"%PATHSETUP%\\prg\\setup.exe uno", "%PATHWORK%\\prg\\setup.exe %PATHCLIENT%"},
              {"%PATHSETUP%\\prg\\setup.exe stazione"}},
             {"Setup02", "09.94.00.00", {}, {}},
             {"Update01", "09.95.00.00", {}, {"%PATHSETUP%\\prg\\setup.exe aggiorna"}},
             {"Remove", "", {"%PATHWORK%\\mv\\bilancio\\togli.exe tutto"}, {kClientUninstaller}}}));
    installation_.putConfiguration(kNerioConf,
                                   configurationText({{"Setup01", "03.20.30.00", {}, {}}}));
    installation_.putServerRecord(
        "[ZB]\r\nversion=09.93.00.00\r\n[NERIO]\r\nversion=03.20.30.00\r\n");
    station_.putClientRecord("[ZB]\r\nversion=09.92.00.00\r\n");
    for (const char* const program : {kUninstaller, kClientUninstaller, kSetup}) {
      machine().programs().define(program);
    }
    machine().mount("T:", installation_.sharedDisk());
    program_.state().startup.paths.integration = "T:\\Lumo";
    program_.state().startup.paths.programs = "C:\\Lumo\\Client";
  }

  /// Shows the form; `user` is what is done in it.
  void show(sim::SimDesktop::UserAction user) {
    machine().desktop().onForm(kForm, std::move(user));
    frmProdTrelvMaintain::showModal(program_);
    EXPECT_EQ(machine().desktop().forcedCloses(), 0U) << "the form did not close";
  }
  static void chooseZbOnTheServer(SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    form.check("optServer");
  }
  /// Puts set-up commands of the server into the place of ZB's configuration.
  void reconfigure(const std::string& section, const std::string& command) {
    installation_.putConfiguration(kConf,
                                   configurationText({{section, "09.93.00.00", {command}, {}}}));
  }
  /// What happens each time that messages are let run from now on.
  void onAllEvents(const std::function<void()>& action) {
    const std::size_t before = machine().desktop().eventRounds();
    for (std::size_t round = before + 1; round < before + 50; ++round) {
      machine().desktop().onEvents(round, action);
    }
  }
  /// The boxes so far, a line each: "?" (Ok and Cancel), "!" or "i" for the icon, then the text.
  std::string boxesShown() {
    std::string text;
    for (const sim::SimBox& box : boxes()) {
      const bool question = box.icon == BoxIcon::Question && box.buttons == BoxButtons::OkCancel;
      const bool other = box.buttons == BoxButtons::Ok;
      EXPECT_EQ(box.title, "TrelvManager");
      text += question                                    ? "? "
              : other && box.icon == BoxIcon::Exclamation ? "! "
              : other && box.icon == BoxIcon::Information ? "i "
                                                          : "unknown ";
      text += box.text + "\n";
    }
    return text;
  }
  /// What is shown of both records: "client / server".
  static std::string versionsShown(const SimFormWindow& form) {
    return form.text("lblClientVersion") + " / " + form.text("lblServerVersion");
  }
  /// Where the bar stood, in order.
  static std::size_t countOfBar(const SimFormWindow& form,
                                const std::function<bool(const ProgressNumbers&)>& is) {
    const std::vector<ProgressNumbers> states = form.progressOf("prgProgress");
    return static_cast<std::size_t>(std::count_if(states.begin(), states.end(), is));
  }

  RealProgram program_{machine()};
};

// --- What is shown

TEST_F(MaintenanceForm, ListsTheProductsOfTheCatalogueByIdentifierAndName) {
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items("cmbProduct"), ElementsAre("NERIO - Nerio", "ZB - Bilancio"));
    EXPECT_EQ(form.text("lblServerPath"), "S:\\Lumo");
  });
  installation_.putCatalogue({{"ZB", "", kConf}});
  program_.program().configurationFiles.forget();
  show([](SimFormWindow& form) { EXPECT_THAT(form.items("cmbProduct"), ElementsAre("ZB")); });
  EXPECT_EQ(boxesShown(), "");
}

TEST_F(MaintenanceForm, BeginsWithNoProductOnTheClientSideAtTheStartOfTheBar) {
  show([](SimFormWindow& form) {
    const std::vector<std::pair<std::string, std::string>> texts{
        {"lblOutcome", "Selezionare il prodotto e il lato."},
        {"lblRemove", "Nessun prodotto selezionato."},
        {"lblRepair", "Nessuna versione selezionata."},
        {"lblClientVersion", ""},
        {"lblServerVersion", ""},
        {"lblProgress", "000%"},
        {"txtProgress", ""}};
    for (const auto& [control, text] : texts) {
      EXPECT_EQ(form.text(control), text) << control;
    }
    for (const char* const button : {"btnRemove", "btnRepair", "btnExit"}) {
      EXPECT_TRUE(form.isEnabled(button)) << button;
    }
    EXPECT_EQ(form.selected("cmbProduct"), -1);
    EXPECT_TRUE(form.checked("optClient") && form.checked("optSetup"));
    EXPECT_FALSE(form.checked("optServer") || form.checked("optUpdate"));
    EXPECT_THAT(form.items("lstVersion"), IsEmpty());
    EXPECT_EQ(form.focus(), "cmbProduct");
    ProgressNumbers numbers{5, 5, 5};
    ASSERT_TRUE(form.progress("prgProgress", numbers));
    EXPECT_EQ(numbers.max, 1) << "a fresh bar";
  });
}

TEST_F(MaintenanceForm, ShowsTheVersionsRecordedForTheProductReadAnewForEach) {
  show([this](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    EXPECT_EQ(versionsShown(form),
              "versione registrata: 09.92.00.00 / versione registrata: 09.93.00.00");
    installation_.putServerRecord("[NERIO]\r\nversion=03.21.00.00\r\n");
    form.choose("cmbProduct", kNerio);
    EXPECT_EQ(versionsShown(form),
              "nessuna versione registrata / versione registrata: 03.21.00.00");
  });
}

TEST_F(MaintenanceForm, SaysThatARecordCannotBeReadOrHasNoVersion) {
  const auto expectShown = [this](const std::string& text) {
    show([&text](SimFormWindow& form) {
      form.choose("cmbProduct", kZb);
      EXPECT_EQ(versionsShown(form), "versione registrata: 09.92.00.00 / " + text);
    });
  };
  share().deny(Installation::kServerRecord);
  expectShown("versione registrata non leggibile");
  share().allow(Installation::kServerRecord);
  for (const char* const missing : {Installation::kServerRecord, "S:\\Lumo\\prg\\etc"}) {
    share().removeTree(missing);
    expectShown("nessuna versione registrata");
  }
}

TEST_F(MaintenanceForm, ListsTheVersionsOfTheChosenTypeAndForgetsTheSelectedOneWithIt) {
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    EXPECT_THAT(form.items("lstVersion"),
                ElementsAre("09.93.00.00   (Setup01)", "09.94.00.00   (Setup02)"));
    EXPECT_EQ(form.selected("lstVersion"), -1);
    form.choose("lstVersion", 0);
    form.check("optUpdate");
    EXPECT_THAT(form.items("lstVersion"), ElementsAre("09.95.00.00   (Update01)"));
    EXPECT_EQ(form.selected("lstVersion"), -1);
    EXPECT_EQ(form.text("lblRepair"), "Nessuna versione selezionata.");
    form.check("optSetup");
    EXPECT_EQ(form.itemCount("lstVersion"), 2);
    form.choose("lstVersion", 0);
    form.choose("cmbProduct", kNerio);
    EXPECT_EQ(form.selected("lstVersion"), -1);
    EXPECT_THAT(form.items("lstVersion"), ElementsAre("03.20.30.00   (Setup01)"));
  });
}

TEST_F(MaintenanceForm, TellsWhatEachButtonWillDo) {
  program_.state().startup.administrator = true;
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    EXPECT_EQ(
        form.text("lblRemove"),
        "Esegue i comandi di rimozione Client di ZB e azzera la versione registrata su questa "
        "stazione.");
    form.check("optServer");
    EXPECT_EQ(
        form.text("lblRemove"),
        "Esegue i comandi di rimozione Server di ZB, elimina le cartelle di setup e il file di "
        "configurazione, azzera la versione registrata sul server.");
    form.choose("lstVersion", 1);
    EXPECT_EQ(form.text("lblRepair"),
              "Riesegue i comandi Server della sezione Setup02 di ZB. Le versioni registrate non "
              "cambiano.");
    form.check("optClient");
    EXPECT_EQ(form.text("lblRepair"),
              "Riesegue i comandi Client della sezione Setup02 di ZB. Le versioni registrate non "
              "cambiano.");
  });
}

/// Why the form is empty, and what it says then.
struct Emptiness : Row {
  void (*arrange)(MaintenanceForm&);
  const char* serverPath;
  const char* outcome;
};

constexpr const char* kNotIntegrated =
    "Nessuna integrazione con Dovra registrata su questa stazione.";
constexpr const char* kNoProduct = "Nessun prodotto nel catalogo dell'installazione.";

const std::vector<Emptiness> kEmptinesses{
    {"WithoutIntegration", [](MaintenanceForm& t) { t.station_.forgetIntegration(); }, "",
     kNotIntegrated},
    {"RecordWithoutPath",
     [](MaintenanceForm& t) {
       t.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                       "");
     },
     "", kNotIntegrated},
    {"WithoutCatalogue", [](MaintenanceForm& t) { t.share().removeTree(Installation::kCatalogue); },
     "S:\\Lumo", kNoProduct},
    {"ShareIsGone", [](MaintenanceForm& t) { t.share().disconnect(); }, "S:\\Lumo", kNoProduct}};

class EmptyMaintenanceForm : public MaintenanceForm,
                             public testing::WithParamInterface<Emptiness> {};

TEST_P(EmptyMaintenanceForm, SaysWhyAndItsButtonsSayWhatIsMissing) {
  GetParam().arrange(*this);
  show([](SimFormWindow& form) {
    EXPECT_THAT(form.items("cmbProduct"), IsEmpty());
    EXPECT_EQ(form.text("lblServerPath"), GetParam().serverPath);
    EXPECT_EQ(form.text("lblOutcome"), GetParam().outcome);
    form.click("btnRemove");
    form.click("btnRepair");
  });
  EXPECT_EQ(boxesShown(), "! Selezionare un prodotto\n! Selezionare una versione\n");
}

INSTANTIATE_TEST_SUITE_P(Because, EmptyMaintenanceForm, testing::ValuesIn(kEmptinesses),
                         NameOfRow());

TEST_F(MaintenanceForm, ThatCannotBeShownIsToldInTheLog) {
  machine().desktop().setPresent(false);
  frmProdTrelvMaintain::showModal(program_);
  EXPECT_EQ(program_.logLines().back(),
            "Gestione ProdTrelv - Impossibile visualizzare la finestra di manutenzione");
}

TEST_F(MaintenanceForm, ExitAndCloseBoxClose) {
  show([](SimFormWindow& form) {
    form.click("btnExit");
    EXPECT_FALSE(form.isOpen());
  });
  show([](SimFormWindow& form) {
    form.closeBox();
    EXPECT_FALSE(form.isOpen());
  });
}

// --- Removal and repair

/// Choices (an option, a version of the list), a button; what is shown, asked and run.
struct Operated : Row {
  int product;
  const char* side;
  int version;
  const char* button;
  std::string boxes;
  const char* outcome;
  const char* versions;
  const char* commands = "";
  /// Happens between the choices and the button.
  void (*meanwhile)(MaintenanceForm&, SimFormWindow&) = nullptr;
};

const std::string kRemoveServer = "? Procedere con la rimozione di: ZB - Server?\n";
const std::string kRemoveClient = "? Procedere con la rimozione di: ZB - Client?\n";
const std::string kRepairServer = "? Procedere con il ripristino di: ZB - 09.93.00.00 - Server?\n";
const std::string kRepairClient = "? Procedere con il ripristino di: ZB - 09.93.00.00 - Client?\n";
const std::string kRemoved = "i Procedura di rimozione terminata correttamente\n";
const std::string kNothingRemoved = "! Nessun comando di rimozione eseguito\n";
const std::string kNothingRepaired = "! Nessun comando di ripristino eseguito\n";
constexpr const char* kBefore =
    "versione registrata: 09.92.00.00 / versione registrata: 09.93.00.00";
constexpr const char* kRemovedFromServer =
    "versione registrata: 09.92.00.00 / nessuna versione registrata";
constexpr const char* kRemovedFromClient =
    "nessuna versione registrata / versione registrata: 09.93.00.00";
constexpr const char* kRepairCommands =
    "S:\\Lumo\\prg\\setup.exe uno | T:\\Lumo\\prg\\setup.exe C:\\Lumo\\Client";

void cancel(MaintenanceForm& t, SimFormWindow&) {
  t.machine().desktop().answer({BoxAnswer::Cancel});
}
void tryDuringAnyLogLine(MaintenanceForm& t, SimFormWindow& form) {
  t.onAllEvents([&form] { tryEverything(form); });
}

const std::vector<Operated> kOperations{
    {"RemovalFromTheServer", kZb, "optServer", -1, "btnRemove", kRemoveServer + kRemoved,
     "Rimozione di ZB - Server terminata.", kRemovedFromServer,
     "T:\\Lumo\\mv\\bilancio\\togli.exe tutto"},
    {"RemovalFromTheClient", kZb, "optClient", -1, "btnRemove", kRemoveClient + kRemoved,
     "Rimozione di ZB - Client terminata.", kRemovedFromClient, "C:\\Lumo\\Bilancio\\togli.exe"},
    {"RemovalWithoutCommands", kNerio, "optServer", -1, "btnRemove",
     "? Procedere con la rimozione di: NERIO - Server?\n" + kNothingRemoved,
     "Rimozione di NERIO - Server: nessun comando eseguito.",
     "nessuna versione registrata / nessuna versione registrata"},
    {"CancelledRemoval", kZb, "optServer", -1, "btnRemove", kRemoveServer + kNothingRemoved,
     "Operazione annullata.", kBefore, "", cancel},
    {"QuestionThatCannotBeShown", kZb, "optClient", -1, "btnRemove",
     kRemoveClient + kNothingRemoved, "Operazione annullata.", kBefore, "",
     [](MaintenanceForm& t, SimFormWindow&) { t.machine().desktop().answer({BoxAnswer::None}); }},
    {"RemovalOfWhatTheConfigurationHoldsWhenTheButtonIsPressed", kZb, "optServer", -1, "btnRemove",
     kRemoveServer + kRemoved, "Rimozione di ZB - Server terminata.", kRemovedFromServer,
     "S:\\Lumo\\mv\\bilancio\\togli.exe x",
     [](MaintenanceForm& t, SimFormWindow&) {
       t.reconfigure("Remove", "%PATHSETUP%\\mv\\bilancio\\togli.exe x");
     }},
    {"RemovalThatAnotherWorkstationWasFasterWith", kZb, "optServer", -1, "btnRemove",
     kRemoveServer + kNothingRemoved, "Rimozione di ZB - Server: nessun comando eseguito.",
     kRemovedFromServer, "",
     [](MaintenanceForm& t, SimFormWindow&) { t.share().removeTree(kConfiguration); }},
    {"RemovalWhoseRecordCannotBeWritten", kZb, "optServer", -1, "btnRemove",
     kRemoveServer + kRemoved, "Rimozione di ZB - Server terminata.", kBefore,
     "T:\\Lumo\\mv\\bilancio\\togli.exe tutto",
     [](MaintenanceForm& t, SimFormWindow&) {
       t.share().denyWriting(Installation::kServerRecord);
     }},
    {"RepairOfTheServer", kZb, "optServer", 0, "btnRepair", kRepairServer,
     "Ripristino di ZB - 09.93.00.00 - Server terminato.", kBefore, kRepairCommands},
    {"RepairOfTheChosenType", kZb, "optUpdate", 0, "btnRepair",
     "? Procedere con il ripristino di: ZB - 09.95.00.00 - Client?\n",
     "Ripristino di ZB - 09.95.00.00 - Client terminato.", kBefore,
     "S:\\Lumo\\prg\\setup.exe aggiorna"},
    {"CancelledRepair", kZb, "optServer", 0, "btnRepair", kRepairServer + kNothingRepaired,
     "Operazione annullata.", kBefore, "", cancel},
    {"RepairByWhatTheConfigurationHoldsWhenTheButtonIsPressed", kZb, "optServer", 0, "btnRepair",
     kRepairServer, "Ripristino di ZB - 09.93.00.00 - Server terminato.", kBefore,
     "S:\\Lumo\\prg\\setup.exe nuovo",
     [](MaintenanceForm& t, SimFormWindow&) {
       t.reconfigure("Setup01", "%PATHSETUP%\\prg\\setup.exe nuovo");
     }},
    {"RepairThatRanNothing", kZb, "optClient", 1, "btnRepair",
     "? Procedere con il ripristino di: ZB - 09.94.00.00 - Client?\n" + kNothingRepaired,
     "Ripristino di ZB - 09.94.00.00 - Client: nessun comando eseguito.", kBefore},
    {"RepairWhoseCommandCannotBeStarted", kZb, "optClient", 0, "btnRepair",
     kRepairClient + kNothingRepaired,
     "Ripristino di ZB - 09.93.00.00 - Client: nessun comando eseguito.", kBefore, "",
     [](MaintenanceForm& t, SimFormWindow&) { t.machine().removeTree(kSetup); }},
    // Whatever is pressed while something runs starts nothing more and does not close the form.
    {"ClicksDuringAnyLogLineOfARemoval", kZb, "optServer", -1, "btnRemove",
     kRemoveServer + kRemoved, "Rimozione di ZB - Server terminata.", kRemovedFromServer,
     "T:\\Lumo\\mv\\bilancio\\togli.exe tutto", tryDuringAnyLogLine},
    {"ClicksDuringAnyLogLineOfARepair", kZb, "optServer", 0, "btnRepair", kRepairServer,
     "Ripristino di ZB - 09.93.00.00 - Server terminato.", kBefore, kRepairCommands,
     tryDuringAnyLogLine},
    {"ClicksWhileACommandRuns", kZb, "optClient", -1, "btnRemove", kRemoveClient + kRemoved,
     "Rimozione di ZB - Client terminata.", kRemovedFromClient, "C:\\Lumo\\Bilancio\\togli.exe",
     [](MaintenanceForm& t, SimFormWindow& form) {
       t.machine().programs().define(kClientUninstaller, [&form](sim::SimProcess&) {
         tryEverything(form);
         return 0U;
       });
     }},
    {"ClicksBehindAnyBox", kZb, "optClient", -1, "btnRemove", kRemoveClient + kRemoved,
     "Rimozione di ZB - Client terminata.", kRemovedFromClient, "C:\\Lumo\\Bilancio\\togli.exe",
     [](MaintenanceForm& t, SimFormWindow& form) {
       t.machine().desktop().onBox([&form](const sim::SimBox&) { tryEverything(form); });
     }}};

class MaintenanceOperation : public MaintenanceForm,
                             public testing::WithParamInterface<Operated> {};

TEST_P(MaintenanceOperation, IsAskedRunToldAndShown) {
  show([this](SimFormWindow& form) {
    const Operated& row = GetParam();
    form.choose("cmbProduct", row.product);
    form.check(row.side);
    if (row.version >= 0) {
      form.choose("lstVersion", row.version);
    }
    if (row.meanwhile != nullptr) {
      row.meanwhile(*this, form);
    }
    form.setFocus("lstVersion");
    const std::size_t rounds = machine().desktop().eventRounds();
    form.click(row.button);
    EXPECT_LT(rounds, machine().desktop().eventRounds()) << "the form stays alive";
    const bool cancelled = row.outcome == std::string("Operazione annullata.");
    EXPECT_EQ(form.text("lblOutcome"), row.outcome);
    EXPECT_EQ(versionsShown(form), row.versions);
    EXPECT_EQ(form.text("lblProgress"), cancelled ? "050%" : "100%");
    EXPECT_EQ(form.focus(), cancelled ? "lstVersion" : row.button);
    EXPECT_EQ(form.selected("cmbProduct"), row.product);
    EXPECT_EQ(form.selected("lstVersion"), row.version) << "the version stays selected";
    EXPECT_TRUE(form.isEnabled("btnRemove") && form.isEnabled("btnRepair"));
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(boxesShown(), GetParam().boxes);
  EXPECT_EQ(joined(started(), " | "), GetParam().commands);
}

INSTANTIATE_TEST_SUITE_P(Of, MaintenanceOperation, testing::ValuesIn(kOperations), NameOfRow());

TEST_F(MaintenanceForm, ButtonsPressedTooEarlySayWhatIsMissingAndLeadThere) {
  show([this](SimFormWindow& form) {
    machine().desktop().onBox([&form](const sim::SimBox&) { tryEverything(form); });
    for (const char* const button : {"btnRemove", "btnRepair"}) {
      form.setFocus(button);
      form.click(button);
      EXPECT_EQ(form.focus(), "cmbProduct");
    }
    form.choose("cmbProduct", kZb);
    form.setFocus("btnRepair");
    form.click("btnRepair");
    EXPECT_EQ(form.focus(), "lstVersion");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(boxesShown(),
            "! Selezionare un prodotto\n! Selezionare una versione\n! Selezionare una versione\n");
}

TEST_F(MaintenanceForm, RemovalFromTheServerShowsWhatIsLeft) {
  show([](SimFormWindow& form) {
    chooseZbOnTheServer(form);
    form.choose("lstVersion", 0);
    form.click("btnRemove");
    EXPECT_THAT(form.items("lstVersion"), IsEmpty()) << "its configuration file is deleted";
    EXPECT_EQ(form.itemText("cmbProduct", form.selected("cmbProduct")), "ZB - Bilancio");
  });
  EXPECT_FALSE(machine().fileExists(kConfiguration));
  EXPECT_FALSE(machine().folderExists("S:\\Lumo\\mv\\bilancio"));
}

TEST_F(MaintenanceForm, IntegrationThatIsGoneMeanwhileStopsBothOperationsAndEmptiesTheLists) {
  for (const char* const button : {"btnRemove", "btnRepair"}) {
    machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                  "S:\\Lumo");
    show([&](SimFormWindow& form) {
      chooseZbOnTheServer(form);
      form.choose("lstVersion", 0);
      station_.forgetIntegration();
      form.click(button);
      EXPECT_THAT(form.items("cmbProduct"), IsEmpty());
      EXPECT_THAT(form.items("lstVersion"), IsEmpty());
      EXPECT_EQ(form.text("lblServerPath"), "");
      EXPECT_EQ(form.text("lblOutcome"), kNotIntegrated);
    });
  }
  EXPECT_EQ(boxesShown(), kNothingRemoved + kNothingRepaired);
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_TRUE(machine().fileExists(kConfiguration));
}

TEST_F(MaintenanceForm, RemovalUsesTheServerThatIsRecordedWhenTheButtonIsPressed) {
  show([this](SimFormWindow& form) {
    chooseZbOnTheServer(form);
    machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                  "T:\\Lumo");
    form.click("btnRemove");
    EXPECT_EQ(form.text("lblServerPath"), "T:\\Lumo");
  });
  EXPECT_THAT(program_.logLines(),
              Contains("Gestione ProdTrelv - Rimozione file di configurazione: "
                       "T:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini"));
}

TEST_F(MaintenanceForm, CatalogueThatChangedMeanwhileIsShownThoughNothingRan) {
  show([this](SimFormWindow& form) {
    form.choose("cmbProduct", kNerio);
    onAllEvents([this, &form] {
      if (form.text("txtProgress").find("Azzeramento") != std::string::npos) {
        installation_.putCatalogue({{"NERIO", "Nerio", kNerioConf}, {"Q2", "Tarsena2", "q2.ini"}});
      }
    });
    form.click("btnRemove");
    EXPECT_THAT(form.items("cmbProduct"), ElementsAre("NERIO - Nerio", "Q2 - Tarsena2"));
  });
}

TEST_F(MaintenanceForm, OfTwoEntriesOfOneProductTheFirstIsSelectedAfterwards) {
  installation_.putCatalogue(
      {{"NERIO", "Nerio", kNerioConf}, {"ZB", "Bilancio", kConf}, {"ZB", "Doppio", kNerioConf}});
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", 2);
    EXPECT_EQ(form.itemCount("lstVersion"), 2) << "the first entry's configuration counts";
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_EQ(form.selected("cmbProduct"), kZb);
  });
}

TEST_F(MaintenanceForm, ShowsWhatTheCommandsChanged) {
  machine().programs().define(kSetup, [this](sim::SimProcess&) {
    station_.putClientRecord("[ZB]\r\nversion=09.99.00.00\r\n");
    installation_.putCatalogue({{"ZB", "Bilancio", kConf}, {"Q2", "Tarsena2", "q2.ini"}});
    return 0U;
  });
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    EXPECT_THAT(form.items("cmbProduct"), ElementsAre("ZB - Bilancio", "Q2 - Tarsena2"));
    EXPECT_EQ(form.selected("cmbProduct"), 0) << "the same product, at its new place";
    EXPECT_EQ(form.text("lblClientVersion"), "versione registrata: 09.99.00.00");
  });
}

// --- The bar and the account of what is done

TEST_F(MaintenanceForm, RemovalMovesTheBarByCommandsAndLogLinesAndJumpsTo200) {
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kNerio);
    form.click("btnRemove");
    EXPECT_EQ(
        countOfBar(form,
                   [](const ProgressNumbers& bar) { return bar.max == 200 && bar.value == 0; }),
        1U)
        << "reset to its start, with 200 as its maximum";
    EXPECT_EQ(
        countOfBar(form,
                   [](const ProgressNumbers& bar) { return bar.max == 200 && bar.value == 200; }),
        1U)
        << "no command: straight to 200";
    const ProgressNumbers last = form.progressOf("prgProgress").back();
    EXPECT_EQ(last.max, last.value);
    EXPECT_LT(200, last.max) << "the log lines raised it";
  });
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    form.click("btnRemove");
    EXPECT_EQ(
        countOfBar(form,
                   [](const ProgressNumbers& bar) { return bar.max > 200 && bar.value == 200; }),
        1U)
        << "whatever the log lines raised";
  });
}

TEST_F(MaintenanceForm, ProgressShowsEachLogLine) {
  show([&](SimFormWindow& form) {
    form.choose("cmbProduct", kNerio);
    Lines asked;
    machine().desktop().onBox(
        [&](const sim::SimBox&) { asked.push_back(form.text("txtProgress")); });
    form.click("btnRemove");
    EXPECT_THAT(asked,
                ElementsAre("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo",
                            "Gestione ProdTrelv - Azzeramento versione client prodotto: NERIO"))
        << "the lines before the question too";
  });
}

TEST_F(MaintenanceForm, BarStartsAnewBehindTheQuestionAndIsAtItsEndWhenTheResultIsTold) {
  Lines seen;
  show([&](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    machine().desktop().onBox([&](const sim::SimBox&) {
      seen.push_back(form.text("lblProgress") + " " + form.text("lblOutcome") + " " +
                     form.text("lblClientVersion") +
                     (form.isEnabled("btnExit") ? " (free)" : " (grey)"));
    });
    form.click("btnRemove");
    const Lines percentages = form.textsOf("lblProgress");
    const auto asked = std::find(percentages.begin(), percentages.end(), "050%");
    ASSERT_NE(asked, percentages.end());
    EXPECT_EQ(*(asked + 1), "000%");
  });
  EXPECT_THAT(
      seen,
      ElementsAre("050% In attesa di conferma. versione registrata: 09.92.00.00 (free)",
                  "100% Rimozione di ZB - Client terminata. nessuna versione registrata (free)"));
}

TEST_F(MaintenanceForm, AnotherProductEndsTheAccountOfTheOneBefore) {
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    EXPECT_EQ(form.text("lblOutcome"), "Pronto.");
    form.click("btnRemove");
    form.choose("cmbProduct", kNerio);
    EXPECT_EQ(form.text("lblOutcome"), "Pronto.");
    EXPECT_EQ(form.text("lblProgress"), "000%");
    EXPECT_EQ(form.text("txtProgress"), "");
  });
}

TEST_F(MaintenanceForm, SecondOperationBeginsWithABarAtItsStart) {
  show([](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    form.choose("lstVersion", 0);
    form.click("btnRepair");
    const std::size_t first = form.progressOf("prgProgress").size();
    form.click("btnRepair");
    const std::vector<ProgressNumbers> states = form.progressOf("prgProgress");
    ASSERT_LT(first, states.size());
    EXPECT_EQ(states[first].max, 1);
    EXPECT_EQ(states[first].value, 0);
  });
  EXPECT_EQ(started().size(), 2U);
}

// --- While something runs

TEST_F(MaintenanceForm, MessagesThatPassADisabledButtonDoNothingEither) {
  frmProdTrelvMaintain form(program_);
  SimFormWindow window(kForm, &form);
  machine().programs().define(kClientUninstaller, [&](sim::SimProcess&) {
    for (const char* const button : {"btnRemove", "btnRepair", "btnExit"}) {
      form.clicked(window, button);
    }
    form.closeRequested(window);
    return 0U;
  });
  form.loaded(window);
  window.choose("cmbProduct", kZb);
  window.choose("lstVersion", 0);
  window.click("btnRemove");
  EXPECT_TRUE(window.isOpen());
  EXPECT_EQ(started().size(), 1U);
  EXPECT_EQ(boxes().size(), 2U);
}

TEST_F(MaintenanceForm, NothingCanBeChosenOrPressedWhileACommandRuns) {
  Lines enabled;
  show([&](SimFormWindow& form) {
    machine().programs().define(kClientUninstaller, [&](sim::SimProcess&) {
      std::copy_if(kControls.begin(), kControls.end(), std::back_inserter(enabled),
                   [&form](const std::string& control) {
                     return form.isEnabled(control) && control.substr(0, 3) != "lbl";
                   });
      EXPECT_EQ(form.text("lblOutcome"), "Rimozione di ZB - Client in corso...");
      return 0U;
    });
    form.choose("cmbProduct", kZb);
    form.click("btnRemove");
    for (const std::string& control : kControls) {
      EXPECT_TRUE(form.isEnabled(control)) << control;
    }
  });
  EXPECT_THAT(enabled, ElementsAre("txtProgress")) << "what it does can be read and copied";
}

// A command may run for minutes, and its log line comes behind it.
TEST_F(MaintenanceForm, RepairIsDrawnBeforeItsFirstCommandRuns) {
  std::string drawn;
  std::string drawnWhenItRan;
  machine().programs().define(kSetup, [&](sim::SimProcess&) {
    drawnWhenItRan = drawn;
    return 0U;
  });
  show([&](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    form.choose("lstVersion", 0);
    onAllEvents([&form, &drawn] {
      drawn = form.text("lblOutcome") + (form.isEnabled("lstVersion") ? " (free)" : " (grey)");
    });
    form.click("btnRepair");
  });
  EXPECT_EQ(drawnWhenItRan, "Ripristino di ZB - 09.93.00.00 - Client in corso... (grey)");
}

TEST_F(MaintenanceForm, ChoiceThatArrivesWhileItRunsIsShownAfterwardsAlsoWhenItIsCancelled) {
  for (const BoxAnswer answer : {BoxAnswer::Cancel, BoxAnswer::Ok}) {
    machine().desktop().answer({answer});
    show([this](SimFormWindow& form) {
      form.choose("cmbProduct", kZb);
      form.choose("lstVersion", 0);
      machine().desktop().onEvents([&form] { form.choose("cmbProduct", kNerio); });
      form.click("btnRemove");
      EXPECT_EQ(form.selected("cmbProduct"), kNerio);
      EXPECT_THAT(form.items("lstVersion"), ElementsAre("03.20.30.00   (Setup01)"));
      EXPECT_EQ(form.selected("lstVersion"), -1);
      EXPECT_EQ(form.text("lblServerVersion"), "versione registrata: 03.20.30.00");
    });
  }
  // What was chosen when the button was pressed counts.
  EXPECT_EQ(boxesShown(), kRemoveClient + kNothingRemoved + kRemoveClient + kRemoved);
}

TEST_F(MaintenanceForm, ChoiceThatArrivesWhileItAsksFreesNoButton) {
  show([this](SimFormWindow& form) {
    form.choose("cmbProduct", kZb);
    const std::size_t before = machine().desktop().eventRounds();
    machine().desktop().onEvents(before + 1, [&form] {
      form.choose("cmbProduct", kNerio);
      tryEverything(form);
    });
    machine().desktop().onEvents(before + 2, [&form] { tryEverything(form); });
    form.click("btnRemove");
    EXPECT_TRUE(form.isOpen());
  });
  EXPECT_EQ(boxesShown(), kRemoveClient + kRemoved);
}

// --- From the command line

TEST_F(MaintenanceForm, MaintenanceModeShowsIt) {
  machine().desktop().onForm(
      kForm, [](SimFormWindow& form) { EXPECT_EQ(form.itemCount("cmbProduct"), 2); });
  program_.run("INTEGRATEDMAINTAIN S:\\Lumo S:\\Lumo");
  EXPECT_THAT(machine().desktop().shownForms(), ElementsAre(kForm));
}

TEST_F(MaintenanceForm, SaysBeforeARemovalThatTheUserIsNoAdministratorAndOnlyThen) {
  const auto warned = [](SimFormWindow& form) -> bool {
    return form.text("lblRemove").find("utente non amministratore") != std::string::npos;
  };
  for (const bool administrator : {true, false}) {
    program_.state().startup.administrator = administrator;
    show([&](SimFormWindow& form) {
      EXPECT_FALSE(warned(form)) << "nothing is selected";
      form.choose("cmbProduct", kZb);
      EXPECT_EQ(warned(form), !administrator);
      form.check("optServer");
      EXPECT_EQ(warned(form), !administrator);
      EXPECT_THAT(form.text("lblRemove"), testing::HasSubstr(" Server di ZB"));
    });
  }
}

}  // namespace
}  // namespace trelv::tests
