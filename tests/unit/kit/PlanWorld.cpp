#include "unit/kit/PlanWorld.h"

#include "unit/kit/RecordedRun.h"

namespace trelv::tests {
namespace {

void chooseIfThere(machine::Form& form, machine::FormWindow& window, const std::string& list,
                   unsigned index) {
  const int count = window.itemCount(list);
  if (count > 0) {
    window.select(list, static_cast<int>(index % static_cast<unsigned>(count)));
    form.selectionChanged(window, list);
  }
}

void check(machine::Form& form, machine::FormWindow& window, const std::string& option,
           const std::string& other) {
  window.setChecked(other, false);
  window.setChecked(option, true);
  form.selectionChanged(window, option);
}

}  // namespace

void useForm(machine::Form& form, machine::FormWindow& window) {
  if (form.name() != "frmProdTrelvMaintain") {
    return;
  }
  constexpr unsigned kUser = 4;
  std::mt19937 random(kUser);
  for (int action = 0; action < 4; ++action) {
    chooseIfThere(form, window, "cmbProduct", static_cast<unsigned>(random()));
    random() % 2 == 0 ? check(form, window, "optServer", "optClient")
                      : check(form, window, "optClient", "optServer");
    random() % 2 == 0 ? check(form, window, "optUpdate", "optSetup")
                      : check(form, window, "optSetup", "optUpdate");
    chooseIfThere(form, window, "lstVersion", static_cast<unsigned>(random()));
    form.clicked(window, random() % 3 == 0 ? "btnRemove" : "btnRepair");
  }
  form.clicked(window, "btnExit");
}

std::string PlanWorld::rawArguments() const {
  const std::string line = kit::commandLineOf({.manager = "", .arguments = arguments()});
  return line.substr(std::string("\"\" ").size());
}

kit::Plan PlanWorld::plan() {
  return kit::planRun(machine().machine(), {.manager = machine().system().executablePath(),
                                            .arguments = arguments(),
                                            .fails = fails(),
                                            .asUser = asUser(),
                                            .order = overlay::ListingOrder::ByMaking,
                                            .user = useForm});
}

void PlanWorld::makeTrue() {
  if (asUser()) {
    machine().system().setAdministrator(false);
    if (machine().machine().support.isAdministrator() != machine::SupportAnswer::Absent) {
      machine().support().setAdministratorAnswer(machine::SupportAnswer::No);
    }
  }
  machine().callLog().setInjector([this](const sim::SimCall& call) -> std::optional<SystemCode> {
    sim::SimProcesses::Found found;
    const bool starts = call.kind == sim::CallKind::ProcessStart && !opensPacks(call.path) &&
                        machine().programs().resolve(call.path, found) == system_code::kSuccess;
    started_ += starts ? 1 : 0;
    return starts && started_ == fails() ? std::optional(system_code::kFileNotFound) : std::nullopt;
  });
}

std::string PlanWorld::text() { return worldOf(machine(), {"C:", "S:"}); }

}  // namespace trelv::tests
