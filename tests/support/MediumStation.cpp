#include "support/MediumStation.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "support/SessionForms.h"

namespace trelv::tests {
namespace {

constexpr const char* kTree = "prg\\com\\setup\\aggdovra\\";

/// Toggles the item of this caption, on whatever page it stands.
void toggleCaption(sim::SimFormWindow& form, const std::string& caption) {
  const int pages = form.hasControl("labTab") ? form.itemCount("labTab") : 0;
  int page = 0;
  do {
    if (page < pages && !form.choose("labTab", page)) {
      continue;
    }
    for (int i = 0; i < form.itemCount("ListProd"); ++i) {
      if (form.itemText("ListProd", i) == caption) {
        form.toggle("ListProd", i);
        return;
      }
    }
  } while (++page < pages);
  ADD_FAILURE() << "no entry " << caption;
}

}  // namespace

std::string mediumPack(const std::string& name, const PackContent& tree) {
  PackContent files;
  for (const auto& [path, bytes] : tree) {
    files.emplace_back(kTree + path, bytes);
  }
  const std::string gz = packBytes({{kTree + name + ".zip", packBytes(files)}});
  return packBytes({{name + ".gz", gz}});
}

PackContent setupTree(const std::string& id, const std::string& version) {
  const std::string conf = lowerCase(id) + ".ini";
  const std::string program = lowerCase(id) + "\\setup.exe";
  return {{"agdvcomp.ini", catalogueText({{id, id, kTree + conf}})},
          {conf, configurationText(
                     {{"Setup01", version, {"%PATHSETUP%\\" + (kTree + program) + " " + id}, {}}})},
          {program, "MZ"}};
}

MediumStation::MediumStation() {
  station_.forgetIntegration();
  machine_.makeFolders(std::string(kTemp) + "\\log");
  declareSessionForms(desktop());
  desktop().setDefaultAnswer(machine::BoxButtons::YesNo, machine::BoxAnswer::Yes);
  for (const char* const form : {"frmSelectInstall", "frmProdTrelvStandalone",
                                 "frmProdTrelvIntegrated", "frmProdTrelvSinglePack"}) {
    desktop().onEveryForm(form, [this](sim::SimFormWindow& window) { work(window); });
  }
  desktop().declareForm("frmError", {{"txtErrDescrizioneInterna", "txtErrDescrizione"}, {}});
  desktop().onEveryForm("frmError", [this](sim::SimFormWindow& form) {
    reports_.push_back(form.text("txtErrDescrizioneInterna") + " / " +
                       form.text("txtErrDescrizione"));
  });
  putHost();
  putMedium();
}

void MediumStation::putHost() {
  share().put("S:\\Lumo\\prg\\applidir", "x");
  share().put("S:\\Lumo\\prg\\etc\\ambver", "AMB0001 01/02/08 10:11\r\n");
  for (const char* const folder : {"com\\bin\\cpy\\client", "com\\setup\\aggdovra", "tempterm"}) {
    share().makeFolders(std::string("S:\\Lumo\\prg\\") + folder);
  }
}

void MediumStation::putMedium() {
  machine_.setExecutable(std::string(kManager) + "\\TrelvManager.exe");
  putMediumFile("Versione.ver", "2026.2\r\n");
  putMenu({"#PRIMA_LISTA#Contabilità", "#PRIMA_LISTA#Nerio|prodotti\\packs\\nerio|NERIO",
           "#PRIMA_LISTA#Bilancio|prodotti\\packs\\bilancio|ZB",
           "#SECONDA_LISTA#Zeltomodelli|prodotti\\packs\\modelli|ZM|"
           "%MEDIUM%\\prodotti\\docs\\leggimi.exe %PATHSETUP%",
           "#SECONDA_LISTA#Esci||Exit"});
  putMediumFile("prodotti\\docs\\leggimi.exe", "MZ");
  putMediumFile("prodotti\\packs\\nerio\\nerio.zip",
                mediumPack("nerio", setupTree("NERIO", "03.20.30.00")));
  putMediumFile("prodotti\\packs\\bilancio\\b-09.93.zip",
                mediumPack("bilancio", setupTree("ZB", "09.93.00.00")));
  putMediumFile("prodotti\\packs\\bilancio\\b-09.94.zip",
                mediumPack("bilancio", setupTree("ZB", "09.94.00.00")));
  putMediumFile("prodotti\\packs\\modelli\\zm.zip",
                mediumPack("zm", setupTree("ZM", "06.50.30.00")));
}

void MediumStation::putMenu(const std::vector<std::string>& lines) {
  std::string text = "Prodotti complementari - versione %V%\r\n2026-11-21\r\n";
  for (const std::string& line : lines) {
    text += line + "\r\n";
  }
  putMediumFile("Setup.cmf", machine_.locale().toAnsi(text));
}

void MediumStation::putMediumFile(const std::string& path, const std::string& bytes) {
  machine_.putFile("E:\\" + path, bytes);
}

void MediumStation::run() {
  process_ = std::make_unique<RealProgram>(machine_);
  process_->run("INTERACTIVE");
}

// --- The user

void MediumStation::onForm(const std::string& form, sim::SimDesktop::UserAction action) {
  scripts_[form].push_back(std::move(action));
}

// A form in which packs are being opened has its buttons disabled.
void MediumStation::work(sim::SimFormWindow& form) {
  if (!form.isEnabled("cmdExec")) {
    if (installing_) {
      installing_(form);
    }
    return;
  }
  std::deque<sim::SimDesktop::UserAction>& scripts = scripts_[form.formName()];
  if (!scripts.empty()) {
    const sim::SimDesktop::UserAction action = std::move(scripts.front());
    scripts.pop_front();
    action(form);
  }
}

void MediumStation::select(const std::string& installation) {
  onForm("frmSelectInstall", [installation](sim::SimFormWindow& form) {
    form.choose("ListAmb", installation == kStandard ? 0 : 1);
    form.click("cmdExec");
  });
}

void MediumStation::install(const std::string& form, const std::vector<std::string>& captions) {
  onForm(form, [captions](sim::SimFormWindow& window) {
    for (const std::string& caption : captions) {
      toggleCaption(window, caption);
    }
    window.click("cmdExec");
  });
}

std::vector<std::string> MediumStation::namesIn(const std::string& folder) {
  std::vector<std::string> names = machine_.diskOf(folder).names(folder);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> MediumStation::setups() {
  std::vector<std::string> setups;
  for (const sim::StartedProgram& started : machine_.started()) {
    if (started.program.rfind(kManager, 0) != 0) {
      setups.push_back(started.commandLine);
    }
  }
  return setups;
}

}  // namespace trelv::tests
