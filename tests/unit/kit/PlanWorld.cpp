#include "unit/kit/PlanWorld.h"

#include <array>
#include <random>
#include <utility>

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

/// Chooses product, side and version, repairs or removes, some times; then leaves.
void maintain(machine::Form& form, machine::FormWindow& window, unsigned hand) {
  std::mt19937 random(hand);
  for (auto actions = random() % 6; actions > 0; --actions) {
    chooseIfThere(form, window, "cmbProduct", static_cast<unsigned>(random()));
    random() % 2 == 0 ? check(form, window, "optServer", "optClient")
                      : check(form, window, "optClient", "optServer");
    random() % 2 == 0 ? check(form, window, "optUpdate", "optSetup")
                      : check(form, window, "optSetup", "optUpdate");
    chooseIfThere(form, window, "lstVersion", static_cast<unsigned>(random()));
    form.clicked(window, random() % 3 == 0 ? "btnRemove" : "btnRepair");
  }
  if (random() % 4 != 0) {
    form.clicked(window, "btnExit");
  }
}

bool isReadOnly(sim::SimMachine& machine, const std::string& path) {
  machine::FileFacts facts;
  return machine.files().look(path, facts) == system_code::kSuccess && facts.readOnly;
}

constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra";

}  // namespace

FormHand PlanWorld::user() const {
  return [hand = hand_](machine::Form& form, machine::FormWindow& window) -> void {
    if (form.name() == "frmProdTrelvMaintain") {
      maintain(form, window, hand);
    }
  };
}

std::string PlanWorld::wrongRow(const std::vector<kit::UpdateRow>& rows) {
  constexpr std::uint32_t kSize = 512;
  std::string folder(kSize, '\0');
  const bool hasStore = machine().configuration().getConfigPath(1, folder) == 0;
  for (const kit::UpdateRow& row : rows) {
    const bool server = row.side == Side::Server;
    // Without a store the workstation's record has no place, without identifier it has no section.
    if (row.product.empty() || (!server && !hasStore)) {
      continue;
    }
    const std::string recorded = machine().profiles().readValue(
        row.product, "version", "", kSize,
        server ? Installation::kServerRecord : Station::kClientRecord);
    if (recorded != row.becomes) {
      return row.product + (server ? " Server" : " Client") + " becomes " + recorded + ", not " +
             row.becomes;
    }
  }
  return "";
}

std::set<std::string> PlanWorld::traits() {
  const std::array held{
      std::pair{"a program that fails", fails() > 0},
      std::pair{"as a user", asUser()},
      std::pair{"no administrator", !machine().system().administrator()},
      std::pair{"not integrated", station().recordedIntegration().empty()},
      std::pair{"no catalogue", !share().fileExists(Installation::kCatalogue)},
      std::pair{"a lock", share().fileExists(Installation::kServerLock)},
      std::pair{"a folder in the lock's place", share().folderExists(Installation::kServerLock)},
      std::pair{"the workstation's lock", machine().fileExists(Station::kClientLock)},
      std::pair{"packs that wait", share().fileExists(std::string(kSetups) + "\\a.zip")},
      std::pair{"no 7-Zip", !machine().fileExists(PackPrograms::kSevenZip)},
      std::pair{"another session that unpacks",
                machine().fileExists("C:\\Users\\mario\\Temp\\TrelvManager.lck")},
      std::pair{"a record that can only be read", isReadOnly(machine(), Station::kClientRecord)}};
  std::set<std::string> traits{arguments().front()};
  for (const auto& [trait, holds] : held) {
    if (holds) {
      traits.insert(trait);
    }
  }
  return traits;
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
                                            .user = user()});
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
