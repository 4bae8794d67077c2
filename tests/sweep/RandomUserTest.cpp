#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "support/Cores.h"
#include "support/MediumStation.h"

namespace trelv::tests {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;
using sim::SimFormWindow;
using Names = std::vector<std::string>;

constexpr unsigned kSeed = 20261121;
constexpr std::size_t kUsers = 8;
constexpr std::size_t kStepsOfEach = 12'500;

constexpr const char* kSelect = "frmSelectInstall";
constexpr const char* kStandalone = "frmProdTrelvStandalone";
constexpr const char* kIntegratedForm = "frmProdTrelvIntegrated";
constexpr const char* kVersions = "frmProdTrelvSinglePack";
constexpr const char* kInformation = "FrmInfo";

/// How the boxes of a session begin.
constexpr std::array kBoxes{"Selezionare preliminarmente una voce",
                            "Selezionare almeno una voce",
                            "Confermi l'avvio della procedura \r",
                            "Scelta non ammessa senza indicazione del path",
                            "Path inesistente o errato",
                            "Path integrazione errato",
                            "Attenzione! E' stata rilevata la presenza",
                            "La procedura non può essere avviata su sistemi a 64 Bit",
                            "Installazione completata.",
                            "File di help: "};

/// The states of a session, and what may follow each; the forms over one form are left out.
constexpr const char* kOutside = "outside";
constexpr const char* kStandaloneAgain = "frmProdTrelvStandalone without back";
constexpr const char* kInstallingStandalone = "installing from frmProdTrelvStandalone";
constexpr const char* kInstallingIntegrated = "installing from frmProdTrelvIntegrated";
using Edges = std::map<std::string, std::set<std::string>>;
const Edges kEdges{
    {kOutside, {kSelect}},
    {kSelect, {kStandalone, kIntegratedForm, kOutside}},
    {kStandalone, {kInstallingStandalone, kSelect, kOutside}},
    {kInstallingStandalone, {kStandaloneAgain}},
    {kStandaloneAgain, {kInstallingStandalone, kOutside}},
    {kIntegratedForm, {kInstallingIntegrated, kSelect, kOutside}},
    {kInstallingIntegrated, {kOutside}},
};

std::string stateOf(const SimFormWindow& form) {
  const std::string& name = form.formName();
  if (form.hasControl("cmdExec") && !form.isEnabled("cmdExec")) {
    return "installing from " + name;
  }
  return name == kStandalone && !form.isEnabled("cmdback") ? kStandaloneAgain : name;
}

/// Does anything that a user can, at any moment.
class RandomUser {
 public:
  RandomUser(MediumStation& station, std::mt19937& random) : station_(station), random_(random) {
    for (const char* const form :
         {kSelect, kStandalone, kIntegratedForm, kVersions, kInformation}) {
      station_.desktop().onEveryForm(form, [this](SimFormWindow& window) { work(window); });
    }
    station_.desktop().onBox([this](const sim::SimBox&) { interfere(); });
    station_.desktop().onInput([this](const sim::SimInput&) { interfere(); });
    keepInterfering();
  }

  std::size_t steps() const { return steps_; }
  /// The states of the session, from its beginning to its end.
  Names states() const {
    Names states = states_;
    states.push_back(kOutside);
    return states;
  }

 private:
  /// A number from 0 on.
  std::size_t below(std::size_t count) { return random_() % count; }

  void work(SimFormWindow& form) {
    check(form);
    if (form.formName() != kVersions && form.formName() != kInformation) {
      states_.push_back(stateOf(form));
    }
    const std::size_t most = below(40);
    for (std::size_t i = 0; i < most && form.isOpen(); ++i) {
      prepareAnswers();
      act(form);
      if (form.isOpen()) {
        check(form);
      }
    }
  }

  void act(SimFormWindow& form) {
    ++steps_;
    switch (below(8)) {
      case 0:
        form.click(one({"cmdExec", "cmdback", "cmdExit", "cmdhelp", "Command1"}, form));
        break;
      case 1:
      case 2:
        form.click(one({"cmdExec", "Command1"}, form));
        break;
      case 3:
        turnPage(form);
        break;
      case 4:
        doubleClick(form);
        break;
      case 5:
        pressKey(form);
        break;
      default:
        pick(form);
    }
  }

  /// One of the controls that the form has.
  std::string one(Names controls, const SimFormWindow& form) {
    std::erase_if(controls, [&](const std::string& name) { return !form.hasControl(name); });
    return controls[below(controls.size())];
  }

  void turnPage(SimFormWindow& form) {
    if (form.hasControl("labTab")) {
      form.choose("labTab", static_cast<int>(below(4)));
    }
  }

  static std::string listOf(const SimFormWindow& form) {
    return form.hasControl("ListAmb") ? "ListAmb" : form.hasControl("ListProd") ? "ListProd" : "";
  }

  int someItem(const SimFormWindow& form, const std::string& list) {
    return static_cast<int>(below(static_cast<std::size_t>(form.itemCount(list))));
  }

  void pick(SimFormWindow& form) {
    const std::string list = listOf(form);
    if (list.empty() || form.itemCount(list) == 0) {
      return;
    }
    const int item = someItem(form, list);
    list == "ListAmb" ? form.choose(list, item) : form.toggle(list, item);
  }

  void doubleClick(SimFormWindow& form) {
    const std::string list = listOf(form);
    if (!list.empty()) {
      const bool free = form.itemCount(list) == 0 || below(5) == 0;
      form.doubleClick(list, free ? -1 : someItem(form, list));
    }
  }

  void pressKey(SimFormWindow& form) {
    form.press(one({"cmdExec", "ListAmb", "ListProd", "cmdExit", "Command1"}, form),
               machine::Key::F10);
  }

  void prepareAnswers() {
    station_.desktop().setDefaultAnswer(BoxButtons::YesNo,
                                        below(4) == 0 ? BoxAnswer::No : BoxAnswer::Yes);
    static const std::array<std::optional<std::string>, 7> kPaths{
        "S:\\Lumo", "S:\\Lumo\\ ", "S:\\Manca", "C:\\", "\\", "", std::nullopt};
    station_.desktop().answerInput({kPaths.at(below(kPaths.size()))});
  }

  /// What he does while something runs must not count.
  void interfere() {
    auto* const form = dynamic_cast<SimFormWindow*>(station_.desktop().activeForm());
    if (form == nullptr || listOf(*form).empty() || below(8) != 0) {
      return;
    }
    ++steps_;
    switch (below(4)) {
      case 0:
        form->click(one({"cmdExec", "cmdback", "cmdExit", "cmdhelp"}, *form));
        break;
      case 1:
        form->closeBox();
        break;
      case 2:
        turnPage(*form);
        break;
      default:
        pick(*form);
    }
  }

  void keepInterfering() {
    station_.desktop().onEvents([this] {
      interfere();
      keepInterfering();
    });
  }

  // --- What always holds

  void check(const SimFormWindow& form) {
    const std::string& name = form.formName();
    const bool product = name == kStandalone || name == kIntegratedForm;
    const bool installing = product && !form.isEnabled("cmdExec");
    if (product) {
      EXPECT_EQ(form.isEnabled("cmdExit"), !installing) << name;
      EXPECT_EQ(form.isEnabled("ListProd"), !installing) << name;
    }
    if (name == kStandalone) {
      const MenuPage& page =
          station_.session().menu.at(static_cast<std::size_t>(form.selected("labTab")));
      Names captions;
      for (const OfferedProduct& entry : page.entries) {
        captions.push_back(entry.caption);
      }
      EXPECT_EQ(form.items("ListProd"), captions) << "the page that is turned to";
    }
    if (!installing && name != kVersions && name != kInformation) {
      EXPECT_NE(station_.session().userAction, UserAction::Execute) << name;
    }
  }

  MediumStation& station_;
  std::mt19937& random_;
  std::size_t steps_ = 0;
  Names states_{kOutside};
};

void expectEdges(const Names& states, Edges& walked) {
  for (std::size_t i = 1; i < states.size(); ++i) {
    const std::string& from = states[i - 1];
    EXPECT_TRUE(kEdges.at(from).contains(states[i])) << from << " -> " << states[i];
    walked[from].insert(states[i]);
  }
}

void expectKnownBoxes(const std::vector<sim::SimBox>& boxes) {
  for (const sim::SimBox& box : boxes) {
    EXPECT_TRUE(std::any_of(kBoxes.begin(), kBoxes.end(), [&](const char* const beginning) {
      return box.text.rfind(beginning, 0) == 0;
    })) << box.text;
  }
}

void expectCleanEnd(MediumStation& station, const std::string& medium) {
  EXPECT_EQ(station.desktop().forcedCloses(), 0U);
  EXPECT_EQ(station.desktop().activeForm(), nullptr);
  EXPECT_FALSE(station.desktop().hourglass());
  EXPECT_EQ(station.reports(), Names());
  EXPECT_EQ(station.medium().tree(), medium);
  for (const std::string& name : station.namesIn(MediumStation::kTemp)) {
    EXPECT_TRUE(name == "log" || name == "prg" || name == "ambver") << name;
  }
  const std::string recorded = station.station().recordedIntegration();
  EXPECT_TRUE(recorded.empty() || recorded == "S:\\Lumo") << recorded;
}

/// What users did.
struct Played {
  std::size_t steps = 0;
  std::size_t installed = 0;
  Edges walked;
};

/// One session of a random user on a random machine.
void playSession(std::mt19937& random, Played& played) {
  MediumStation station;
  if (random() % 6 == 0) {
    station.machine().setIniValue("C:\\WINDOWS\\NERIO.INI", "Pathnames", "Homedir", "C:\\Nerio");
  }
  if (random() % 6 == 0) {
    station.machine().configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                                          "S:\\Lumo");
  }
  station.machine().system().setWow64(random() % 6 == 0);
  station.machine().putFile("C:\\WINDOWS\\notepad.exe", "MZ");
  const std::string medium = station.medium().tree();
  RandomUser user(station, random);
  station.run();
  expectEdges(user.states(), played.walked);
  expectKnownBoxes(station.desktop().boxes());
  expectCleanEnd(station, medium);
  played.installed += station.setups().size();
  played.steps += user.steps();
}

/// Sessions of one user, one after the other.
Played playUser(std::size_t user) {
  std::mt19937 random(kSeed + static_cast<unsigned>(user));
  Played played;
  for (std::size_t session = 0; played.steps < kStepsOfEach && !testing::Test::HasFailure();
       ++session) {
    SCOPED_TRACE("user " + std::to_string(user) + ", session " + std::to_string(session));
    playSession(random, played);
  }
  return played;
}

TEST(RandomUsers, WalkEveryEdgeAndReachNoUndefinedStateInAHundredThousandSteps) {
  std::cout << "seed " << kSeed << "\n";
  std::array<Played, kUsers> users;
  onAllCores(kUsers, [&](std::size_t user) { users.at(user) = playUser(user); });
  std::size_t installed = 0;
  Edges walked;
  for (const Played& played : users) {
    installed += played.installed;
    for (const auto& [from, to] : played.walked) {
      walked[from].insert(to.begin(), to.end());
    }
  }
  EXPECT_LT(1000U, installed) << "they did too little";
  EXPECT_EQ(walked, kEdges);
}

}  // namespace
}  // namespace trelv::tests
