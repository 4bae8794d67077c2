#include "prove/Users.h"

#include <functional>
#include <string>

#include "support/MediumStation.h"
#include "support/SessionForms.h"

namespace trelv::tests {
namespace {

using machine::BoxAnswer;
using machine::BoxButtons;

constexpr const char* kMaintenance = "frmProdTrelvMaintain";
constexpr const char* kSelect = "frmSelectInstall";

bool oneIn(std::mt19937& random, unsigned count) { return random() % count == 0; }

void declareMaintenanceForm(sim::SimDesktop& desktop) {
  desktop.declareForm(
      kMaintenance,
      {{"cmbProduct", "optClient", "optServer", "btnRemove", "optSetup", "optUpdate", "lstVersion",
        "btnRepair", "btnExit", "lblServerPath", "lblClientVersion", "lblServerVersion",
        "lblRemove", "lblRepair", "lblOutcome", "txtProgress", "lblProgress"},
       {"prgProgress"},
       {{"optClient", "optServer"}, {"optSetup", "optUpdate"}}});
}

void chooseSome(sim::SimFormWindow& form, const std::string& list, unsigned wish) {
  const int count = form.itemCount(list);
  if (count > 0) {
    form.choose(list, static_cast<int>(wish % static_cast<unsigned>(count)));
  }
}

}  // namespace

ScriptedUser::ScriptedUser(sim::SimMachine& machine, unsigned seed)
    : machine_(machine), seed_(seed) {
  sim::SimDesktop& desktop = machine_.desktop();
  declareMaintenanceForm(desktop);
  declareSessionForms(desktop);
  desktop.declareForm("frmError", {{"txtErrDescrizioneInterna", "txtErrDescrizione", "btnOk"}, {}});
  desktop.setDefaultAnswer(BoxButtons::YesNo, BoxAnswer::Yes);
  desktop.setDefaultAnswer(BoxButtons::OkCancel, BoxAnswer::Ok);
  desktop.onEveryForm(kMaintenance, [this](sim::SimFormWindow& form) -> void { maintain(form); });
  desktop.onEveryForm(kSelect, [this](sim::SimFormWindow& form) -> void { select(form); });
  for (const char* const form :
       {"frmProdTrelvStandalone", "frmProdTrelvIntegrated", "frmProdTrelvSinglePack"}) {
    desktop.onEveryForm(form, [this](sim::SimFormWindow& window) -> void { choose(window); });
  }
}

void ScriptedUser::begin() {
  seen_.clear();
  machine_.desktop().answerInput({"S:\\Lumo", "S:\\Lumo", "S:\\Lumo"});
}

std::mt19937 ScriptedUser::wishesIn(const std::string& form) {
  return std::mt19937(seed_ + ++seen_[form] +
                      static_cast<unsigned>(std::hash<std::string>()(form) % 1000) * 1000U);
}

void ScriptedUser::maintain(sim::SimFormWindow& form) {
  std::mt19937 wishes = wishesIn(kMaintenance);
  constexpr int kActions = 3;
  for (int i = 0; i < kActions; ++i) {
    chooseSome(form, "cmbProduct", static_cast<unsigned>(wishes()));
    form.check(oneIn(wishes, 2) ? "optClient" : "optServer");
    form.check(oneIn(wishes, 2) ? "optSetup" : "optUpdate");
    chooseSome(form, "lstVersion", static_cast<unsigned>(wishes()));
    form.click(oneIn(wishes, 2) ? "btnRemove" : "btnRepair");
  }
  form.click("btnExit");
}

void ScriptedUser::select(sim::SimFormWindow& form) {
  std::mt19937 wishes = wishesIn("");
  if (seen_[""] > 1 || form.itemCount("ListAmb") == 0) {
    form.click("cmdExit");
    return;
  }
  chooseSome(form, "ListAmb", static_cast<unsigned>(wishes()));
  form.click("cmdExec");
}

/// He wants about half of what is offered, once.
void ScriptedUser::choose(sim::SimFormWindow& form) {
  if (!form.isEnabled("cmdExec")) {
    return;
  }
  std::mt19937 wishes = wishesIn(form.formName());
  if (seen_[form.formName()] > 2) {
    form.click("cmdExit");
    return;
  }
  if (form.hasControl("labTab")) {
    form.choose("labTab", static_cast<int>(wishes() % 2));
  }
  const int count = form.itemCount("ListProd");
  for (int i = 0; i < count; ++i) {
    if (oneIn(wishes, 2) && !form.itemSelected("ListProd", i)) {
      form.toggle("ListProd", i);
    }
  }
  form.click("cmdExec");
}

std::unique_ptr<PackPrograms> putMedium(sim::SimMachine& machine, unsigned seed) {
  std::mt19937 random(seed);
  machine.mount("E:");
  const std::string manager = MediumStation::kManager;
  const auto put = [&](const std::string& path, const std::string& bytes) -> void {
    machine.putFile("E:\\" + path, oneIn(random, 15) ? "no pack" : bytes);
  };
  machine.putFile("E:\\Versione.ver", "2026.2\r\n");
  std::string menu = "Prodotti complementari - versione %V%\r\n2026-11-21\r\n";
  for (const char* const line :
       {"#PRIMA_LISTA#Contabilità", "#PRIMA_LISTA#Nerio|prodotti\\packs\\nerio|NERIO",
        "#PRIMA_LISTA#Bilancio|prodotti\\packs\\bilancio|ZB",
        "#SECONDA_LISTA#Zeltomodelli|prodotti\\packs\\modelli|ZM|"
        "%MEDIUM%\\prodotti\\docs\\leggimi.exe %PATHSETUP%",
        "#SECONDA_LISTA#Manca|prodotti\\packs\\manca|Q2", "#SECONDA_LISTA#Esci||Exit"}) {
    menu += oneIn(random, 6) ? "" : std::string(line) + "\r\n";
  }
  machine.putFile("E:\\Setup.cmf", machine.locale().toAnsi(menu));
  machine.putFile("E:\\prodotti\\docs\\leggimi.exe", "MZ");
  put("prodotti\\packs\\nerio\\nerio.zip", mediumPack("nerio", setupTree("NERIO", "03.20.30.00")));
  put("prodotti\\packs\\bilancio\\b-09.93.zip",
      mediumPack("bilancio", setupTree("ZB", "09.93.00.00")));
  put("prodotti\\packs\\bilancio\\b-09.94.zip",
      mediumPack("bilancio", setupTree("ZB", "09.94.00.00")));
  put("prodotti\\packs\\modelli\\zm.zip", mediumPack("zm", setupTree("ZM", "06.50.30.00")));
  machine.setExecutable(manager + "\\TrelvManager.exe");
  return std::make_unique<PackPrograms>(machine, manager);
}

}  // namespace trelv::tests
